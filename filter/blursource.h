// The rows that a blur reads: a rectangle of an image with borders made up, fetched in bands.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/alloc.h"
#include "pixel/rect.h"
#include "zetpxl.h"

namespace zetpxl {

// A rectangle in image coordinates.
struct BlurRect {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;
};

struct BlurBand {
    std::int64_t index;  // -1 while empty
    std::uint8_t* data;
    std::ptrdiff_t planeStep;
};

// Bands are kept as long as a window of `windowRows` rows needs them. One band of all rows is a plain block, whose tile
// requests come at once.
struct BlurSource {
    ZetImage* image;
    BlurRect rect;
    int roundingMode;  // of the caller
    std::int32_t bandRows;
    std::int32_t rowStep;
    std::int32_t nSlots;
    Block<BlurBand> slots;
    std::int32_t lateFrom;  // rows from here on are in `late`, fetched before anything was written
    BlurBand late;

    BlurSource() = default;
    BlurSource(const BlurSource&) = delete;
    BlurSource& operator=(const BlurSource&) = delete;
    ~BlurSource();
};

// Whether all the rows come in one block.
enum class BlurFetch : std::uint8_t { Whole, Banded };

// `inPlace`: the image is overwritten from the top while it is read; rows below it, which its borders make of rows
// already written, are fetched first. False when memory or a tile cannot be had.
bool openBlurSource(BlurSource* source, ZetImage* image, const BlurRect& rect, std::int32_t windowRows, BlurFetch fetch,
                    bool inPlace);

// Row `r` of the rectangle, in plane 0, and the distance to the next plane; null when it cannot be had.
const std::uint8_t* blurSourceRow(BlurSource* source, std::int64_t r, std::ptrdiff_t* planeStep);

}  // namespace zetpxl
