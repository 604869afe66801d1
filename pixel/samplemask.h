// Pixel masks spread over the samples of interleaved pixels.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel/maskrows.h"

namespace zetpxl {

// Pixels of more samples are taken one by one.
inline constexpr std::int32_t kMaxBlendStep = 4;

using SampleMask = std::array<std::uint8_t, static_cast<std::size_t>(kMaskPiece* kMaxBlendStep)>;

// For each of `count` pixels `step` bytes: the pixel's mask for the first `group` of them and 0 for the others. Gives the
// bytes to use: the pixels' own where a pixel is one sample.
const std::uint8_t* spreadOverSamples(const std::uint8_t* pixels, std::ptrdiff_t count, std::int32_t group,
                                      std::int32_t step, SampleMask* samples);

// Samples from the first to the last that may change; what lies behind it may be another row's, or nobody's.
constexpr std::ptrdiff_t samplesOf(std::ptrdiff_t count, std::int32_t group, std::int32_t step) {
    return (count - 1) * step + group;
}

}  // namespace zetpxl
