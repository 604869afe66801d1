// Row arithmetic of the colour conversions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zetpxl {

// Three elements of each of `width` pixels on either side, pixels `step` elements apart. RGB elements are in the order red,
// green, blue.
struct ColourRow {
    std::array<const std::uint8_t*, 3> in;
    std::array<std::uint8_t*, 3> out;
    std::ptrdiff_t inStep;
    std::ptrdiff_t outStep;
    std::ptrdiff_t width;
};

using ColourRoutine = void (*)(const ColourRow& row);

// Null for a depth that has no conversion.
ColourRoutine rgbToHlsRow(std::uint32_t depth);
ColourRoutine hlsToRgbRow(std::uint32_t depth);

}  // namespace zetpxl
