// The warp engine, which rotations and shears lead to.
#pragma once

#include <cstdint>

#include "core/report.h"
#include "geometry/polygon.h"
#include "geometry/sampling.h"
#include "zetpxl.h"

namespace zetpxl {

inline constexpr char kWarpSource[] = "zetwarp";

// Six numbers row by row: (x, y) goes to (c[0] x + c[1] y + c[2], c[3] x + c[4] y + c[5]).
struct AffineMatrix {
    double c[6];
};

// Tests that warps and exact turns share; each fault is reported. False when the status is then negative, old or new.
bool checkGeometryImages(const Operation& op, const ZetImage* srcImage, const ZetImage* dstImage,
                         const char* signWords);

// Interpolation for an image's size and depth, from the wish without its flag.
std::int32_t usableInterpolation(const ZetImage* srcImage, std::int32_t interpolation);

// The destination position of each corner (left, top), (right, top), (right, bottom), (left, bottom).
void ownWarpInverse(const PixelRect& source, const double* quad, AffineMatrix* inverse, std::int32_t* orientation);
AffineMatrix ownWarpForward(const PixelRect& source, const double* quad);

// Softens the polygon's slanted edges.
void ownBlendEdges(ZetImage* dstImage, const double* quad, const PixelRect& rect, std::int32_t orientation);

// Pixels of the spans from the source positions that `inverse` gives.
struct WarpRun {
    SampleGrid src;
    SampleGrid dst;
    std::int32_t nProc;
    const WarpSpans* spans;
    AffineMatrix inverse;
};
void warpPixels(const WarpRun& run, std::uint32_t depth, std::int32_t interpolation);

}  // namespace zetpxl
