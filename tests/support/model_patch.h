// Plain models' view of pixels around a region: a snapshot, and samples as numbers.
#pragma once

#include <vector>

#include "tests/support/model.h"

namespace zetpxl::test {

// The samples of a rectangle anywhere relative to an image, taken before anything is written, so that a model need not
// care whether it works in place.
struct Patch {
    Area area;
    std::vector<std::uint32_t> samples;

    std::uint32_t at(std::int32_t channel, std::int32_t y, std::int32_t x) const {
        const std::int64_t row = std::int64_t{channel} * area.height + y - area.y;
        return samples[static_cast<std::size_t>(row * area.width + x - area.x)];
    }
};
Patch takePatch(const ZetImage& image, const Area& area);

// The number that a sample stands for; exact in double for every depth.
double sampleValue(std::uint32_t depth, std::uint32_t pattern);
std::uint32_t floatPattern(float value);

// The sample nearest to a number, ties to even, within the limits of an integer depth.
std::uint32_t nearestSample(std::uint32_t depth, double value);

// A 1U image of the model's own, cleared.
struct Plane {
    std::vector<std::uint8_t> bytes;
    ZetImage image{};

    Plane(std::int32_t width, std::int32_t height, std::int32_t dataOrder, std::int32_t origin, std::int32_t align);
};

}  // namespace zetpxl::test
