#include "tests/support/model_sampling.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

std::optional<std::int64_t> whole(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

struct Line {
    std::int64_t first;
    double fraction;
};

Line linearLine(double position, std::int64_t index, std::int32_t last) {
    if (index >= last) return {last - 1, 1.0};
    return {index, position - static_cast<double>(index)};
}

std::int64_t cubicFirst(std::int64_t index, std::int32_t last) {
    if (index >= last - 1) return last - 3;
    return index <= 0 ? 0 : index - 1;
}

std::array<double, 4> cubicWeights(double position, std::int64_t first) {
    const double t = static_cast<float>((position - static_cast<double>(first)) - 1);
    const double t2 = t * t;
    const double t3 = t2 * t;
    return {-t3 / 6 + t2 / 2 - t / 3, t3 / 2 - t2 - t / 2 + 1, -t3 / 2 + t2 / 2 + t, t3 / 6 - t / 6};
}

std::uint32_t rounded(std::uint32_t depth, double value) {
    if (depth == ZET_DEPTH_32F) return floatPattern(static_cast<float>(value));
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(value + 0.5));
}

std::uint32_t limited(std::uint32_t depth, double value) {
    if (depth == ZET_DEPTH_32F) return rounded(depth, value);
    const double highest = depth == ZET_DEPTH_8U ? 255 : 65535;
    if (value > highest) return static_cast<std::uint32_t>(highest);
    return value < 0 ? 0 : rounded(depth, value);
}

}  // namespace

std::uint32_t SourceView::at(std::int32_t channel, std::int64_t row, std::int64_t col) const {
    const auto y = static_cast<std::int32_t>(std::clamp<std::int64_t>(row, 0, lastRow()));
    const auto x = static_cast<std::int32_t>(std::clamp<std::int64_t>(col, 0, lastCol()));
    return getSample(*image, channel, area.y + y, area.x + x);
}

std::optional<std::uint32_t> modelResample(const SourceView& view, std::int32_t channel, std::int32_t mode,
                                           const Position& at, const LastSample& linearLimit) {
    const double nudge = mode == 0 ? 0.5 : 1e-7;
    const auto x = whole(at.x + nudge);
    const auto y = whole(at.y + nudge);
    if (!x || !y) return std::nullopt;
    if (mode == 0) return view.at(channel, *y, *x);
    const std::uint32_t depth = view.image->depth;
    const auto sample = [&](std::int64_t row, std::int64_t col) {
        return sampleValue(depth, view.at(channel, row, col));
    };
    if (mode == 1) {
        const Line col = linearLine(at.x, *x, linearLimit.col);
        const Line row = linearLine(at.y, *y, linearLimit.row);
        const double a = sample(row.first, col.first), b = sample(row.first, col.first + 1);
        const double c = sample(row.first + 1, col.first), d = sample(row.first + 1, col.first + 1);
        const double top = (b - a) * col.fraction + a;
        const double bottom = (d - c) * col.fraction + c;
        return rounded(depth, top + (bottom - top) * row.fraction);
    }
    const std::int64_t firstCol = cubicFirst(*x, view.lastCol());
    const std::int64_t firstRow = cubicFirst(*y, view.lastRow());
    const std::array<double, 4> across = cubicWeights(at.x, firstCol);
    const std::array<double, 4> down = cubicWeights(at.y, firstRow);
    double value = 0;
    for (std::int32_t i = 0; i < 4; ++i) {
        double sum = 0;
        for (std::int32_t j = 0; j < 4; ++j)
            sum += across[static_cast<std::size_t>(j)] * sample(firstRow + i, firstCol + j);
        value += down[static_cast<std::size_t>(i)] * sum;
    }
    return limited(depth, value);
}

std::int32_t modelMode(const ZetImage& src, std::int32_t mode) {
    if (src.depth == ZET_DEPTH_1U || src.width == 1 || src.height == 1) return 0;
    return mode == 2 && (src.width < 4 || src.height < 4) ? 1 : mode;
}

}  // namespace zetpxl::test
