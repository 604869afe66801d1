// Fills and spreads inside a plain block: what constant and replicated borders are made of.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zetpxl.h"

namespace zetpxl {

// A plain block: planes of rows of pixels. `pixelBytes` is the step of one pixel, 0 for 1U.
struct BlockLayout {
    std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeStep;
    std::int32_t pixelBytes;
    std::int32_t elementBytes;
    std::int32_t nPlanes;
};

// Every pixel of the w by h rectangle at (i, j) takes the value of pixel (i, j); of its row's first pixel; of the pixel in
// its column of the rectangle's first row.
void ownSpreadPixel(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h);
void ownSpreadColumn(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h);
void ownSpreadRow(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h);

// The 32-bit word that a border constant fills rows with; its low bytes are the element.
std::uint32_t borderWord(std::uint32_t depth, std::int32_t constant);

// Whole rows up to their step, and a rectangle of pixels, of all planes.
void fillBlockRows(const BlockLayout& block, std::int32_t j, std::int32_t h, std::uint32_t word);
void fillBlockPixels(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h,
                     std::uint32_t word);

}  // namespace zetpxl
