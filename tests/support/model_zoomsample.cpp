#include "tests/support/model_zoomsample.h"

#include <algorithm>
#include <bit>

#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

double rounded(double value) { return static_cast<double>(static_cast<float>(value)); }

// One channel of the source; what lies outside is the nearest sample inside.
struct Channel {
    const ZetImage* image;
    std::int32_t number;

    std::uint32_t pattern(std::int32_t row, std::int32_t col) const {
        return getSample(*image, number, std::clamp(row, 0, image->height - 1), std::clamp(col, 0, image->width - 1));
    }
    double at(std::int32_t row, std::int32_t col) const { return sampleValue(image->depth, pattern(row, col)); }
};

// ---- linear

double linearRow(const Channel& s, std::int32_t row, const ZoomTap& col) {
    const double left = s.at(row, col.index);
    const double right = s.at(row, col.index + 1);
    return rounded(static_cast<double>(col.weight) * (right - left) + left);
}

double linear(const Channel& s, const ZoomTap& row, const ZoomTap& col) {
    const auto weight = static_cast<double>(row.weight);
    return linearRow(s, row.index, col) * (1 - weight) + linearRow(s, row.index + 1, col) * weight;
}

// ---- cubic, through four samples one apart; the weight counts from the second

double cubicThrough(double a, double b, double c, double d, float weight) {
    const auto t = static_cast<double>(weight);
    const auto third = static_cast<double>(std::bit_cast<float>(0x3EAAAAABu));
    const double u = t + 1;
    const double g = 0.5 * t * u;
    const double q = g * (t - 1) * third;
    const double d1 = b - a;
    const double d2 = c - b - d1;
    const double d3 = d - 2 * c + b - d2;
    return a + rounded(d1) * rounded(u) + rounded(q) * rounded(d3) + rounded(g) * rounded(d2);
}

double cubicRow(const Channel& s, std::int32_t row, const ZoomTap& col) {
    return rounded(cubicThrough(s.at(row, col.index - 1), s.at(row, col.index), s.at(row, col.index + 1),
                                s.at(row, col.index + 2), col.weight));
}

double cubic(const Channel& s, const ZoomTap& row, const ZoomTap& col) {
    return cubicThrough(cubicRow(s, row.index - 1, col), cubicRow(s, row.index, col), cubicRow(s, row.index + 1, col),
                        cubicRow(s, row.index + 2, col), row.weight);
}

std::uint32_t stored(std::uint32_t depth, std::int32_t mode, double value) {
    if (depth == ZET_DEPTH_32F) return floatPattern(static_cast<float>(value));
    const auto whole = static_cast<std::int64_t>(value + 1e-7);
    if (mode == ZET_INTER_LINEAR) return static_cast<std::uint32_t>(whole);
    const std::int64_t highest = depth == ZET_DEPTH_8U ? 255 : 65535;
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(whole, 0, highest));
}

}  // namespace

std::uint32_t modelZoomSample(const ZetImage& src, std::int32_t channel, std::int32_t mode, const ZoomTap& row,
                              const ZoomTap& col) {
    const Channel s{&src, channel};
    if (mode == ZET_INTER_NN) return s.pattern(row.index, col.index);
    return stored(src.depth, mode, mode == ZET_INTER_LINEAR ? linear(s, row, col) : cubic(s, row, col));
}

}  // namespace zetpxl::test
