#include "tests/support/model_decimateblock.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

using Pixel = std::function<std::uint32_t(std::int32_t channel, std::size_t row, std::size_t col)>;

void forEachPixel(const DecimateBlock& block, const Pixel& pixel) {
    for (std::int32_t c = 0; c < block.channels.count; ++c)
        for (std::int32_t row = 0; row < block.to.height; ++row)
            for (std::int32_t col = 0; col < block.to.width; ++col)
                block.put(c, row, col, pixel(c, static_cast<std::size_t>(row), static_cast<std::size_t>(col)));
}

// ---- positions along one axis, the one behind the block last

using Positions = std::vector<double>;

Positions summed(float start, float step, std::int32_t count) {
    double position = start;
    Positions all{position};
    for (std::int32_t i = 0; i < count; ++i) all.push_back(position += static_cast<double>(step));
    return all;
}

bool startsOnASample(float start) { return start < std::numeric_limits<float>::min(); }

Positions interpolated(float start, float step, std::int32_t count) {
    if (!startsOnASample(start) || count < 1) return summed(start, step, count);
    Positions all = summed(step, step, count - 1);
    all.insert(all.begin(), 0.0);
    return all;
}

// Rounded at each step, and counted from the start of a byte.
Positions summedBits(const DecimateBlock& block) {
    const auto bit = static_cast<float>(firstBit(block));
    float x = block.x + bit;
    Positions all{static_cast<double>(x)};
    for (std::int32_t i = 0; i < block.to.width; ++i) all.push_back(static_cast<double>(x += block.xStep));
    return all;
}

void nearestBits(DecimateBlock& block) {
    const Positions xs = summedBits(block);
    const Positions ys = summed(block.y, block.yStep, block.to.height);
    forEachPixel(block, [&](std::int32_t c, std::size_t row, std::size_t col) {
        return block.pattern(c, truncated(ys[row]), truncated(xs[col]) - firstBit(block));
    });
    block.x = static_cast<float>(xs.back() - firstBit(block));
    block.y = static_cast<float>(ys.back());
}

void nearest(DecimateBlock& block) {
    const Positions xs = summed(block.x, block.xStep, block.to.width);
    const Positions ys = summed(block.y, block.yStep, block.to.height);
    forEachPixel(block, [&](std::int32_t c, std::size_t row, std::size_t col) {
        return block.pattern(c, truncated(ys[row]), truncated(xs[col]));
    });
    block.x = static_cast<float>(xs.back());
    block.y = static_cast<float>(ys.back());
}

// ---- interpolation between samples of one axis

using Sample = std::function<double(std::int64_t index)>;

double linear(double position, const Sample& sample) {
    const std::int64_t i = truncated(position);
    const double f = position - static_cast<double>(i);
    return f * sample(i + 1) + (1 - f) * sample(i);
}

double cubic(double position, std::int32_t count, const Sample& sample) {
    constexpr double k = 0.16666667f;
    std::int64_t i = truncated(position);
    double t = position - static_cast<double>(i);
    if (i >= count - 2) {
        i -= 1;
        t += 1;
    }
    const double a = sample(i - 1), b = sample(i), c = sample(i + 1), d = sample(i + 2);
    return (6 * b + t * (-2 * a - 3 * b + 6 * c - d) + t * t * (3 * a - 6 * b + 3 * c) +
            t * t * t * (-a + 3 * b - 3 * c + d)) *
           k;
}

double along(std::int32_t mode, double position, std::int32_t count, const Sample& sample) {
    return mode == ZET_INTER_LINEAR ? linear(position, sample) : cubic(position, count, sample);
}

std::uint32_t stored(const DecimateBlock& block, std::int32_t mode, double value) {
    if (block.src->depth == ZET_DEPTH_32F) return floatPattern(static_cast<float>(value));
    std::int64_t whole = truncated(value);
    const std::int64_t highest = block.src->depth == ZET_DEPTH_8U ? 255 : 65535;
    if (mode == ZET_INTER_CUBIC) whole = std::clamp<std::int64_t>(whole, 0, highest);
    return static_cast<std::uint32_t>(whole);
}

struct Axes {
    Positions xs, ys;
    bool xExact, yExact;  // the first column or row is taken unchanged
};

// The row of a whole axis is the sample's own; so is the first one of an axis that starts on a sample.
std::uint32_t pixelAt(const DecimateBlock& block, const DecimateRoutine& routine, const Axes& axes, std::int32_t c,
                      std::size_t row, std::size_t col) {
    const double x = axes.xs[col], y = axes.ys[row];
    const bool xSample = routine.xWhole || (axes.xExact && col == 0);
    const bool ySample = routine.yWhole || (axes.yExact && row == 0);
    const std::int64_t r = truncated(y);
    if (xSample && ySample) return block.pattern(c, r, truncated(x));
    const auto across = [&](std::int64_t line) {
        if (xSample) return block.value(c, line, truncated(x));
        return along(routine.mode, x, block.from.width, [&](std::int64_t i) { return block.value(c, line, i); });
    };
    if (ySample) return stored(block, routine.mode, across(r));
    return stored(block, routine.mode, along(routine.mode, y, block.from.height, across));
}

void between(DecimateBlock& block, const DecimateRoutine& routine) {
    Axes axes{{}, {}, !routine.xWhole && startsOnASample(block.x), !routine.yWhole && startsOnASample(block.y)};
    axes.xs = (routine.xWhole ? summed : interpolated)(block.x, block.xStep, block.to.width);
    axes.ys = (routine.yWhole ? summed : interpolated)(block.y, block.yStep, block.to.height);
    forEachPixel(block, [&](std::int32_t c, std::size_t row, std::size_t col) {
        return pixelAt(block, routine, axes, c, row, col);
    });
    block.x = static_cast<float>(axes.xs.back());
    block.y = static_cast<float>(axes.ys.back());
}

}  // namespace

std::uint32_t DecimateBlock::pattern(std::int32_t channel, std::int64_t row, std::int64_t col) const {
    const auto y = static_cast<std::int32_t>(std::clamp<std::int64_t>(row, 0, from.height - 1));
    const auto x = static_cast<std::int32_t>(std::clamp<std::int64_t>(col, 0, from.width - 1));
    return getSample(*src, channels.first + channel, from.y + y, from.x + x);
}

double DecimateBlock::value(std::int32_t channel, std::int64_t row, std::int64_t col) const {
    return sampleValue(src->depth, pattern(channel, row, col));
}

void DecimateBlock::put(std::int32_t channel, std::int32_t row, std::int32_t col, std::uint32_t sample) const {
    putSample(*dst, dstChannel + channel, to.y + row, to.x + col, sample);
}

void modelDecimateBlock(DecimateBlock& block, const DecimateRoutine& routine) {
    const bool bits = block.src->depth == ZET_DEPTH_1U;
    if (routine.mode == ZET_INTER_SUPER) return bits ? modelDecimateSuperBits(block) : modelDecimateSuper(block);
    if (bits) return nearestBits(block);
    return routine.mode == ZET_INTER_NN ? nearest(block) : between(block, routine);
}

}  // namespace zetpxl::test
