// The polygon that a warp fills: clipped to a rectangle and turned into spans of columns.
#pragma once

#include <array>
#include <cstdint>

#include "core/alloc.h"

namespace zetpxl {

struct Point {
    double x;
    double y;
};

// A convex quadrangle gains at most one corner at each of the four lines that clip it.
struct Polygon {
    std::array<Point, 12> points;
    std::int32_t count;
};

// Inclusive.
struct PixelRect {
    std::int32_t xMin;
    std::int32_t yMin;
    std::int32_t xMax;
    std::int32_t yMax;
};

// Row yFirst + i goes from left[i] to right[i], both inclusive; a left above its right is empty.
struct WarpSpans {
    Block<std::int32_t> left;
    Block<std::int32_t> right;
    std::int32_t yFirst;
    std::int32_t yLast;
};

// `quad` holds four corners (x, y). Corners that are no numbers leave nothing.
Polygon ownClipPolygon(const double* quad, const PixelRect& rect);

// 1 when there are spans; 0 when the clipped polygon has no pixel or memory cannot be had, which sets the status.
// `orientation` is 1 if the corners run clockwise on the screen, whose rows go downward.
std::int32_t ownWarpSpans(const double* quad, const PixelRect& rect, std::int32_t orientation, WarpSpans* spans);

}  // namespace zetpxl
