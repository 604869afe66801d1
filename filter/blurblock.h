// Means of rectangles over plain rows, by running sums.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filter/blursource.h"
#include "pixel/maskrows.h"
#include "zetpxl.h"

namespace zetpxl {

// A piece to blur. The source's rectangle is as wide as the piece plus nCols, and as high as it plus nRows.
struct BlurPiece {
    BlurSource* source;
    const ZetImage* srcImage;
    std::int32_t srcChannel;  // the first, from 0
    std::uint8_t* dst;        // the first sample of the piece, or the byte of its first bit
    std::int32_t dstBit;
    std::ptrdiff_t dstRowStep;
    std::ptrdiff_t dstPlaneStep;
    std::int32_t dstPixelStep;  // samples
    std::int32_t nChannels;     // to process
    std::int32_t width;
    std::int32_t height;
    std::int32_t nCols;
    std::int32_t nRows;
    float inverse;  // of the number of samples in the rectangle
    MaskBits mask;  // no data: none
    std::ptrdiff_t maskStep;
};

// False when rows or column sums cannot be had.
bool blurBlock(const BlurPiece& piece, std::uint32_t depth);

}  // namespace zetpxl
