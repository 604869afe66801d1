// Plain model of a parallelogram cut to a rectangle and of the columns that each row of it covers.
#pragma once

#include <array>
#include <vector>

#include "tests/support/model.h"

namespace zetpxl::test {

struct Point {
    double x, y;
    bool operator==(const Point&) const = default;
};
using Polygon = std::vector<Point>;
using Quad = std::array<Point, 4>;

struct Corners {
    std::int32_t x0, y0, x1, y1;  // inclusive
};
inline Corners cornersOf(const Area& area) {
    return {area.x, area.y, area.x + area.width - 1, area.y + area.height - 1};
}

// d0 to d5, and whether the quadrangle keeps its turning sense.
struct Inverse {
    double d0, d1, d2, d3, d4, d5;
    bool positive;
};
Inverse modelInverse(const Corners& source, const Quad& quad);

Polygon modelClip(const Quad& quad, const Corners& limits);

struct Spans {
    struct Span {
        std::int32_t left = 0, right = -1;
    };
    std::int32_t yFirst = 0;
    std::vector<Span> rows;
};
Spans modelSpans(const Quad& quad, const Corners& limits, bool positive);

}  // namespace zetpxl::test
