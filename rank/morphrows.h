// Rows of morphology: extremes over square windows, and pixels moved between images and padded rows. One table per depth.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/depth.h"
#include "pixel/maskrows.h"

namespace zetpxl {

// The window's rows and where its results go.
struct ExtremeRow {
    const std::uint8_t* ring;  // `size` rows, in any order
    std::ptrdiff_t rowStep;
    std::uint8_t* scratch;     // a row of its own
    std::uint8_t* out;         // may be one of the ring's rows
    std::ptrdiff_t outOffset;  // pixels
    std::ptrdiff_t size;       // of the square window, at least 3
    std::ptrdiff_t width;      // results; rows hold size - 1 pixels more
};

using ExtremeRoutine = void (*)(const ExtremeRow& row);

// Pixels of one channel in an image's row, `step` samples apart. 1U: `data` is the row's first byte, and `x` a bit.
struct MorphPixels {
    std::uint8_t* data;
    std::ptrdiff_t x;
    std::ptrdiff_t step;
};

struct MorphDepth {
    std::ptrdiff_t pixelBits;  // in a padded row
    ExtremeRoutine erode;
    ExtremeRoutine dilate;
    // `count` pixels from an image to element `at` of a row, forward or backward, and from a row's start to an image.
    void (*load)(const MorphPixels& from, std::ptrdiff_t count, bool backward, std::uint8_t* row, std::ptrdiff_t at);
    void (*store)(const std::uint8_t* row, std::ptrdiff_t at, std::ptrdiff_t count, const MorphPixels& to);
    // Elements `at` to `at + count` of a row become a value, or that of element `like`.
    void (*fill)(std::uint8_t* row, std::ptrdiff_t at, std::ptrdiff_t count, std::int32_t value);
    void (*spread)(std::uint8_t* row, std::ptrdiff_t like, std::ptrdiff_t at, std::ptrdiff_t count);
    // Results enter `old` where the mask is set.
    void (*merge)(const std::uint8_t* result, const MaskBits& mask, std::ptrdiff_t count, std::uint8_t* old);
};

// Null for a depth that morphology refuses.
const MorphDepth* morphDepth(std::uint32_t depth);

}  // namespace zetpxl
