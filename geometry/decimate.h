// Shrinking a block of pixels: what the walks over images and tiles hand to a kernel.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/report.h"
#include "zetpxl.h"

namespace zetpxl {

inline constexpr Operation kDecimate{"zetDecimate", "zetdecim"};

// A block to make. Steps and ends are counted in samples of the depth, bits for 1U; an end is a step times a count. The
// source's ends are those of the memory behind `src`: a position past them takes the last pixel. Interleaved channels have
// the channel step 1; for 1U it is the first pixel's bit in its byte.
struct DecimateBlock {
    const std::uint8_t* src;
    std::uint8_t* dst;
    std::ptrdiff_t dstChannelStep, dstChannelEnd, dstPixelStep, dstWidthEnd, dstRowStep, dstRowEnd;
    std::ptrdiff_t srcChannelStep, srcPixelStep, srcWidthEnd, srcRowStep, srcRowEnd;
    float xStep, yStep;  // source columns and rows per destination column and row, 1 or more
    float xPos, yPos;    // source position of the first pixel, then the position behind the block
};

// 0 when memory cannot be had; the block is then as it was.
using DecimateKernel = std::int32_t (*)(DecimateBlock* block);

// Kernels by the number of the interpolation and, between nearest and area, by which factors are whole: an axis with a
// whole factor meets samples exactly.
struct DecimateKernels {
    DecimateKernel nearest;
    DecimateKernel linearX, linearY, linearXY;
    DecimateKernel cubicX, cubicY, cubicXY;
    DecimateKernel area;
};

template <class T>
std::int32_t ownDecimateNN(DecimateBlock* block);
std::int32_t ownDecimateNN1U(DecimateBlock* block);

template <class T>
std::int32_t ownDecimateLinearX(DecimateBlock* block);
template <class T>
std::int32_t ownDecimateLinearY(DecimateBlock* block);
template <class T>
std::int32_t ownDecimateLinearXY(DecimateBlock* block);
template <class T>
std::int32_t ownDecimateCubicX(DecimateBlock* block);
template <class T>
std::int32_t ownDecimateCubicY(DecimateBlock* block);
template <class T>
std::int32_t ownDecimateCubicXY(DecimateBlock* block);

// Sums and tests of the area average treat positions this close as equal.
inline constexpr double kAreaTolerance = static_cast<double>(0x1.a36e2ep-14f);

template <class T>
std::int32_t ownDecimateSuper(DecimateBlock* block);
std::int32_t ownDecimateSuper1U(DecimateBlock* block);

// A block as its kernels go over it: interleaved channels side by side in one pass, planes in a pass each.
struct DecimateShape {
    std::ptrdiff_t columns, rows;        // to make
    std::ptrdiff_t srcColumns, srcRows;  // that may be read
    std::ptrdiff_t nTogether;            // samples of a pixel that lie side by side
    std::ptrdiff_t passes;
};
DecimateShape decimateShape(const DecimateBlock& block);

// Which pixels of the source the walk over its tiles needs around a block.
struct DecimateMode {
    std::int32_t mode;  // the interpolation in force
    std::int32_t xWhole, yWhole;
    std::int32_t xPad, yPad;  // below 0: the size of an area
};

// Makes the destination part that `block` tells of, from the positions and on to those behind it; 0 when a source tile
// cannot be had.
using DecimateWalker = std::int32_t (*)(DecimateKernel kernel, const DecimateMode& mode, ZetImage* srcImage,
                                        DecimateBlock* block);
std::int32_t ownDecimateWalkPlain(DecimateKernel kernel, const DecimateMode& mode, ZetImage* srcImage,
                                  DecimateBlock* block);
std::int32_t ownDecimateWalkTilesNN(DecimateKernel kernel, const DecimateMode& mode, ZetImage* srcImage,
                                    DecimateBlock* block);
std::int32_t ownDecimateWalkTiles(DecimateKernel kernel, const DecimateMode& mode, ZetImage* srcImage,
                                  DecimateBlock* block);

// Steps of an image or its tiles, in samples, and of its region.
struct DecimateSteps {
    std::ptrdiff_t channelStep, pixelStep, rowStep;
};
DecimateSteps decimateSteps(const ZetImage* image);

struct DecimateRegion {
    std::int32_t channel;  // index of the first
    std::int32_t xOffset, yOffset;
    std::int32_t width, height;
    std::int32_t nChannels;
};
DecimateRegion decimateRegion(const ZetImage* image);

// Bytes of so many samples.
inline std::ptrdiff_t sampleOffset(const ZetImage* image, std::ptrdiff_t samples) {
    const std::ptrdiff_t bytes = static_cast<std::ptrdiff_t>(image->depth & ~ZET_DEPTH_SIGN) / 8;
    return bytes == 0 ? samples >> 3 : samples * bytes;
}

}  // namespace zetpxl
