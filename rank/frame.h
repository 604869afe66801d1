// The frame of neighbourhood filters: regions, channel passes, tiles and borders. An operation brings two checked images,
// its window and a block routine, which sees only plain memory in which every window lies.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/alloc.h"
#include "pixel/maskrows.h"
#include "zetpxl.h"

namespace zetpxl {

enum FilterFamily : std::int32_t { kFamilyMedian = 2, kFamilyFixed = 3 };

struct ZetFilterParams {
    std::int32_t nCols;
    std::int32_t nRows;
    std::int32_t anchorX;  // columns of the window left of the output pixel
    std::int32_t anchorY;  // rows of the window above it
    std::int32_t family;
    std::int32_t kind;  // of a fixed filter
};

// Where a mask stands for the first output pixel; no image: no mask.
struct MaskPosition {
    const ZetImage* image;
    std::int32_t y;
    std::int32_t x;
};

struct FilterBlock {
    const std::uint8_t* srcData;
    std::int32_t srcY;  // top left of the first output pixel's window
    std::int32_t srcX;
    std::ptrdiff_t srcRowStep;
    std::ptrdiff_t srcPlaneStep;
    std::int32_t srcChannel;  // from 1; 0: all channels in one pass
    std::uint8_t* dstData;
    std::int32_t dstY;
    std::int32_t dstX;
    std::ptrdiff_t dstRowStep;
    std::ptrdiff_t dstPlaneStep;
    std::int32_t dstChannel;
    std::int32_t height;
    std::int32_t width;
    const ZetFilterParams* params;
    std::int32_t nChannels;
    std::int32_t depthIndex;
    std::int32_t dataOrder;
    MaskPosition srcMask;
    MaskPosition dstMask;
};

// Writes the output pixels whose bits are set in every mask present. False ends the frame.
using FilterRoutine = bool (*)(const FilterBlock& block);

// Reports nothing: a tile or block that cannot be had ends the frame, and pieces already done stay.
void ownFilterFrame(ZetImage* srcImage, ZetImage* dstImage, const ZetFilterParams& params, FilterRoutine routine);

// The byte of mask pixel (x, y), and in `bit` its bit.
const std::uint8_t* ownMaskPosition(const ZetImage* mask, std::int32_t y, std::int32_t x, std::uint8_t* bit);

// The masks of a block as one row of bits at a time.
struct BlockMask {
    MaskPosition one;
    MaskPosition other;
    Block<std::uint8_t> joined;  // with two masks
};

// False when memory cannot be had.
bool openBlockMask(const FilterBlock& block, BlockMask* mask);
// Moves an open mask to a part of its block.
void placeBlockMask(const FilterBlock& block, BlockMask* mask);
inline bool isMasked(const BlockMask& mask) { return mask.one.image != nullptr; }
MaskBits maskBitsOfRow(const BlockMask& mask, std::int32_t width, std::ptrdiff_t row);

// The samples that a block's pass works on, as runs: `lanes` samples of a pixel stand together, pixels `step` samples apart.
struct FilterLanes {
    std::int32_t planes;  // runs one after the other
    std::int32_t lanes;
    std::int32_t step;
    const std::uint8_t* src;  // the first window's first sample; 1U: the row's first byte
    std::uint8_t* dst;        // the first output sample; 1U: the row's first byte
};
FilterLanes filterLanes(const FilterBlock& block);

}  // namespace zetpxl
