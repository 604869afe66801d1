// The engine of zoom and resize: a plan, a walk over tiles, blocks of pixels and the rows inside them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/report.h"
#include "core/tiles.h"
#include "pixel/maskrows.h"
#include "zetpxl.h"

namespace zetpxl {

inline constexpr Operation kZoom{"zetZoom", "zetZoom"};

// By how much a number that is meant to be whole may fall short.
inline constexpr double kZoomTolerance = 1e-7;

struct ZoomFactors {
    std::int32_t xDst, xSrc, yDst, ySrc;
};

struct ZoomPlan {
    std::int32_t mode;        // the interpolation in force
    double xScale, yScale;    // source pixels per destination pixel, as the factors say
    double xStep, yStep;      // and as the ends of the regions meet
    std::int32_t xRem, yRem;  // 0: the factor or its reciprocal is whole
};

void ownZoom(ZetImage* srcImage, ZetImage* dstImage, const ZoomFactors& factors, std::int32_t interpolate);

// Toward zero, within 32 bits.
std::int32_t zoomTrunc(double value);

// What of the destination is made, cut to what the source gives, and the grid over it. 0 when it is nothing.
std::int32_t ownZoomGrid(const ZetImage* srcImage, const ZetImage* dstImage, const ZoomPlan& plan, TileGrid* grid);
std::int32_t zoomSize(const ZetImage* srcImage, const ZetImage* dstImage, const ZoomPlan& plan, std::int32_t* height,
                      std::int32_t* width);

void zoomTiles(ZetImage* srcImage, ZetImage* dstImage, const ZoomPlan& plan);

// Makes one block from source positions (xStart, yStart) of the source's region on; `clip` 1 cuts it to what the source
// gives.
void ownZoomBlock(ZetImage* srcImage, ZetImage* dstImage, const ZoomPlan& plan, double xStart, double yStart,
                  std::int32_t clip);

// Positions along one axis of the source image.
struct ZoomAxis {
    double start, step;
    std::int32_t offset;  // of the region
    std::int32_t size;    // of the image
    std::int32_t last;    // of the region's pixels, as far as its mask goes
};

// A block resolved to addresses.
struct ZoomRun {
    const std::uint8_t* src;                    // first channel of the image's pixel (0, 0)
    std::uint8_t* dst;                          // of the region's first pixel; 1U: its byte
    std::ptrdiff_t srcRowStep, dstRowStep;      // bytes
    std::ptrdiff_t srcPlaneStep, dstPlaneStep;  // bytes from pass to pass
    std::ptrdiff_t srcPixelStep, dstPixelStep;  // samples
    std::ptrdiff_t nTogether;                   // samples of a pixel that are made together
    std::ptrdiff_t passes;
    std::ptrdiff_t dstBit;
    ZoomAxis x, y;
    std::ptrdiff_t width, height;
    const std::uint8_t* mask;  // null: every pixel
    std::ptrdiff_t maskStep, maskBit;
};

void zoomRows(const ZoomRun& run, std::uint32_t depth, std::int32_t mode);

}  // namespace zetpxl
