// One result of a built-in filter: whole numbers by the table of weights, single precision stage by stage.
#include <algorithm>
#include <array>
#include <cmath>

#include "tests/support/model_fixed.h"
#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

using Weights = std::array<std::array<std::int32_t, 5>, 5>;

constexpr Weights kPeak3{{{-1, -1, -1}, {-1, 8, -1}, {-1, -1, -1}}};
constexpr std::array<Weights, 11> kWeights{{
    {{{1, 0, -1}, {1, 0, -1}, {1, 0, -1}}},
    {{{-1, -1, -1}, {0, 0, 0}, {1, 1, 1}}},
    {{{1, 0, -1}, {2, 0, -2}, {1, 0, -1}}},
    {{{-1, -2, -1}, {0, 0, 0}, {1, 2, 1}}},
    kPeak3,
    {{{-1, -3, -4, -3, -1}, {-3, 0, 6, 0, -3}, {-4, 6, 20, 6, -4}, {-3, 0, 6, 0, -3}, {-1, -3, -4, -3, -1}}},
    {{{1, 2, 1}, {2, 4, 2}, {1, 2, 1}}},
    {{{2, 7, 12, 7, 2}, {7, 31, 52, 31, 7}, {12, 52, 127, 52, 12}, {7, 31, 52, 31, 7}, {2, 7, 12, 7, 2}}},
    kPeak3,
    {{{-1, -1, -1, -1, -1}, {-1, -1, -1, -1, -1}, {-1, -1, 24, -1, -1}, {-1, -1, -1, -1, -1}, {-1, -1, -1, -1, -1}}},
    {{{-1, -1, -1}, {-1, 16, -1}, {-1, -1, -1}}},
}};

std::int32_t sideOf(std::int32_t filter) { return filter == 5 || filter == 7 || filter == 9 ? 5 : 3; }

std::int64_t weightedSum(std::uint32_t depth, std::int32_t filter, const WindowSample& sample) {
    std::int64_t sum = 0;
    for (std::int32_t r = 0; r < sideOf(filter); ++r)
        for (std::int32_t c = 0; c < sideOf(filter); ++c)
            sum +=
                kWeights[static_cast<std::size_t>(filter)][static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] *
                static_cast<std::int64_t>(sampleValue(depth, sample(r, c)));
    return sum;
}

// A set pixel with a clear one in its window.
bool edgePixel(std::int32_t side, const WindowSample& sample) {
    bool all = true;
    for (std::int32_t i = 0; i < side * side; ++i) all = all && sample(i / side, i % side);
    return sample(side / 2, side / 2) && !all;
}

std::uint32_t bitResult(std::int32_t filter, const WindowSample& sample) {
    if (filter == 4 || filter == 8 || filter == 9) return edgePixel(sideOf(filter), sample);
    const std::int64_t above = filter == 6 ? 7 : filter == 7 ? 285 : 0;
    return weightedSum(ZET_DEPTH_1U, filter, sample) > above;
}

std::uint32_t wholeResult(std::uint32_t depth, std::int32_t filter, const WindowSample& sample) {
    const auto sum = static_cast<double>(weightedSum(depth, filter, sample));
    return nearestSample(depth, filter == 6 ? sum / 16 : filter == 10 ? sum / 8 : sum);
}

// ---- single precision

using Row = std::array<double, 5>;
using Rows = std::array<Row, 5>;

double rounded(double value) { return static_cast<double>(static_cast<float>(value)); }

// Terms are added from the left and the sum is rounded once.
double sumOf(const Row& factors, const Row& values, std::size_t count) {
    double sum = factors[0] * values[0];
    for (std::size_t i = 1; i < count; ++i)
        if (factors[i] != 0) sum += factors[i] * values[i];
    return rounded(sum);
}

Row stage(const Rows& rows, const Row& factors, std::size_t side) {
    Row results{};
    for (std::size_t r = 0; r < side; ++r) results[r] = sumOf(factors, rows[r], side);
    return results;
}

double centred(const Rows& rows, double factor, std::size_t side) {
    const Row t = stage(rows, {1, 1, 1, 1, 1}, side);
    double sum = t[0];
    for (std::size_t r = 1; r < side; ++r) sum += t[r];
    return rounded(factor * rows[side / 2][side / 2] - sum);
}

// Q leaves out the two samples beside its centre.
double rowQ(const Row& v) { return rounded(6 * v[2] - 3 * v[0] - 3 * v[4]); }
double rowR(const Row& v) { return rounded(6 * v[1] - 4 * v[0] + 20 * v[2] + 6 * v[3] - 4 * v[4]); }
double rowP(const Row& v) { return -sumOf({1, 3, 4, 3, 1}, v, 5); }

double ring(const Rows& v) { return rounded(rowP(v[0]) + rowQ(v[1]) + rowR(v[2]) + rowQ(v[3]) + rowP(v[4])); }

double smooth5(const Rows& v) {
    const auto part = [](double weight) { return rounded(weight / 571); };
    const double a = part(2), b = part(7), c = part(12), d = part(31), e = part(52), f = part(127);
    const Row t0{a, b, c, b, a}, t1{b, d, e, d, b}, t2{c, e, f, e, c};
    return rounded(sumOf(t0, v[0], 5) + sumOf(t1, v[1], 5) + sumOf(t2, v[2], 5) + sumOf(t1, v[3], 5) +
                   sumOf(t0, v[4], 5));
}

double floatResult(std::int32_t filter, const Rows& v) {
    switch (filter) {
        case 0:
            return sumOf({1, 1, 1}, stage(v, {1, 0, -1}, 3), 3);
        case 2:
            return sumOf({1, 2, 1}, stage(v, {1, 0, -1}, 3), 3);
        case 1:
            return sumOf({-1, 0, 1}, stage(v, {1, 1, 1}, 3), 3);
        case 3:
            return sumOf({-1, 0, 1}, stage(v, {1, 2, 1}, 3), 3);
        case 5:
            return ring(v);
        case 6:
            return rounded(sumOf({1, 2, 1}, stage(v, {1, 2, 1}, 3), 3) * 0.0625);
        case 7:
            return smooth5(v);
        case 9:
            return centred(v, 25, 5);
        case 10:
            return rounded(centred(v, 17, 3) * 0.125);
        default:
            return centred(v, 9, 3);
    }
}

std::uint32_t singleResult(std::uint32_t depth, std::int32_t filter, const WindowSample& sample) {
    Rows values{};
    for (std::int32_t r = 0; r < sideOf(filter); ++r)
        for (std::int32_t c = 0; c < sideOf(filter); ++c)
            values[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] =
                rounded(sampleValue(depth, sample(r, c)));
    const double result = floatResult(filter, values);
    return depth == ZET_DEPTH_32F ? floatPattern(static_cast<float>(result)) : nearestSample(depth, result);
}

}  // namespace

std::uint32_t modelFixedSample(std::uint32_t depth, std::int32_t filter, const WindowSample& sample) {
    if (depth == ZET_DEPTH_1U) return bitResult(filter, sample);
    const bool single = filter == 7 || depth == ZET_DEPTH_32S || depth == ZET_DEPTH_32F;
    return (single ? singleResult : wholeResult)(depth, filter, sample);
}

}  // namespace zetpxl::test
