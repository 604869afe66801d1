// Quarter turns of pixels that lie side by side.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl {

// The source's columns go from left to right, whichever way the destination's rows then go.
struct QuarterRun {
    const std::uint8_t* src;  // the first column in the row of the destination's first
    std::ptrdiff_t srcStep;   // bytes to the row of the destination's next column
    std::uint8_t* dst;        // the first column of the row of the source's first
    std::ptrdiff_t dstStep;   // bytes to the row of the source's next column
    std::ptrdiff_t width;     // of the destination, in pixels
    std::ptrdiff_t height;
};

using QuarterRoutine = void (*)(const QuarterRun& run);

// For pixels of 1, 2, 3, 4, 6, 8, 12 or 16 bytes; null for others.
QuarterRoutine quarterRoutine(std::ptrdiff_t pixelBytes);

}  // namespace zetpxl
