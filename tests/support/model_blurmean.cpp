#include "tests/support/model_blurmean.h"

#include <cfenv>
#include <cmath>

namespace zetpxl::test {
namespace {

// Sums toward zero; the operands are volatile so that nothing is worked out under another mode.
template <class T>
T addTowardZero(T a, T b) {
    const int mode = std::fegetround();
    const volatile T left = a;
    const volatile T right = b;
    std::fesetround(FE_TOWARDZERO);
    const volatile T sum = left + right;
    std::fesetround(mode);
    return sum;
}

float loadTowardZero(std::uint32_t depth, std::uint32_t pattern) {
    const double value = sampleValue(depth, pattern);
    const auto near = static_cast<float>(value);
    return std::fabs(static_cast<double>(near)) > std::fabs(value) ? std::nextafter(near, 0.0f) : near;
}

// What a product of doubles is, as the sum of two: rounding toward zero then needs no mode.
struct Product {
    double near, rest;
    Product(double a, double b) : near(a * b), rest(std::fma(a, b, -near)) {}
    bool below(double value) const { return near < value || (near == value && rest < 0); }
    bool pulledIn() const { return near > 0 ? rest < 0 : rest > 0; }
};

std::int64_t truncated(const Product& p) {
    const double whole = std::trunc(p.near);
    const bool passed = whole == p.near && p.near != 0 && p.pulledIn();
    return static_cast<std::int64_t>(whole) - (passed ? (p.near > 0 ? 1 : -1) : 0);
}

float floatTowardZero(const Product& p) {
    const auto near = static_cast<float>(p.near);
    const double value = near;
    const bool passed = std::fabs(value) > std::fabs(p.near) || (value == p.near && p.pulledIn());
    return passed ? std::nextafter(near, 0.0f) : near;
}

std::uint32_t meanOf(std::uint32_t depth, double sum, float inv) {
    const Product product(sum, static_cast<double>(inv));
    if (depth == ZET_DEPTH_1U) return !product.below(0.5);
    if (depth == ZET_DEPTH_32F) return floatPattern(floatTowardZero(product));
    return static_cast<std::uint32_t>(truncated(product));
}

// Every rectangle is added up by itself, in 32 bits.
std::vector<std::uint32_t> wholeMeans(std::uint32_t depth, const BlurWindow& window, std::int32_t w, std::int32_t h,
                                      const BlockSample& sample) {
    std::vector<std::uint32_t> means;
    for (std::int32_t y = 0; y < h; ++y)
        for (std::int32_t x = 0; x < w; ++x) {
            std::uint32_t sum = 0;
            for (std::int32_t r = 0; r < window.nRows; ++r)
                for (std::int32_t q = 0; q < window.nCols; ++q)
                    sum +=
                        static_cast<std::uint32_t>(static_cast<std::int32_t>(sampleValue(depth, sample(y + r, x + q))));
            means.push_back(meanOf(depth, static_cast<std::int32_t>(sum), window.inv));
        }
    return means;
}

// Running sums keep their rounding from row to row and from column to column.
std::vector<std::uint32_t> runningMeans(std::uint32_t depth, const BlurWindow& window, std::int32_t w, std::int32_t h,
                                        const BlockSample& sample) {
    const auto value = [&](std::int32_t row, std::int32_t col) { return loadTowardZero(depth, sample(row, col)); };
    std::vector<float> columns(static_cast<std::size_t>(w + window.nCols));
    const auto column = [&](std::int32_t i) -> float& { return columns[static_cast<std::size_t>(i)]; };
    for (std::int32_t i = 0; i < w + window.nCols; ++i)
        for (std::int32_t r = 0; r < window.nRows; ++r) column(i) = addTowardZero(column(i), value(r, i));
    std::vector<std::uint32_t> means;
    for (std::int32_t y = 0; y < h; ++y) {
        double sum = 0;
        for (std::int32_t i = 0; i < window.nCols; ++i) sum = addTowardZero(sum, static_cast<double>(column(i)));
        for (std::int32_t x = 0; x < w; ++x) {
            means.push_back(meanOf(depth, sum, window.inv));
            sum = addTowardZero(sum, static_cast<double>(column(x + window.nCols)));
            sum = addTowardZero(sum, -static_cast<double>(column(x)));
        }
        for (std::int32_t i = 0; i < w + window.nCols; ++i) {
            column(i) = addTowardZero(column(i), value(y + window.nRows, i));
            column(i) = addTowardZero(column(i), -value(y, i));
        }
    }
    return means;
}

}  // namespace

std::vector<std::uint32_t> modelMeans(std::uint32_t depth, const BlurWindow& window, std::int32_t w, std::int32_t h,
                                      const BlockSample& sample) {
    const bool running = depth == ZET_DEPTH_32S || depth == ZET_DEPTH_32F;
    return (running ? runningMeans : wholeMeans)(depth, window, w, h, sample);
}

}  // namespace zetpxl::test
