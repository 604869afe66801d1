//   polygon.1 a polygon is clipped against the rectangle's lines in the order top, bottom, left, right (Sutherland and Hodgman,
//             1974); an edge that only touches a line does not cross it
//   polygon.2 two chains of edges run down from the topmost corner and give a span's two ends in each row
//   polygon.3 a span's end that misses a whole column by a rounding error takes it in
#include "geometry/polygon.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zetpxl.h"

namespace zetpxl {

namespace {

constexpr double kSpanTolerance = 1e-14;

struct Box {
    Point least;
    Point greatest;
};

Box boundsOf(const Polygon& p) {
    Box box{p.points[0], p.points[0]};
    for (std::int32_t i = 1; i < p.count; ++i) {
        const Point& q = p.points[static_cast<std::size_t>(i)];
        box.least = {std::min(box.least.x, q.x), std::min(box.least.y, q.y)};
        box.greatest = {std::max(box.greatest.x, q.x), std::max(box.greatest.y, q.y)};
    }
    return box;
}

bool allFinite(const Polygon& p) {
    for (std::int32_t i = 0; i < p.count; ++i) {
        const Point& q = p.points[static_cast<std::size_t>(i)];
        if (!std::isfinite(q.x) || !std::isfinite(q.y)) return false;
    }
    return true;
}

// A clipping line: the coordinate that it fixes, and the side that stays.
struct Line {
    double Point::*fixed;
    double Point::*other;
    double at;
    double sign;  // 1: greater coordinates stay; -1: lesser ones
};

Point crossing(const Point& a, const Point& b, const Line& line) {
    const double slope = (b.*line.other - a.*line.other) / (b.*line.fixed - a.*line.fixed);
    Point p{};
    p.*line.fixed = line.at;
    p.*line.other = slope * (line.at - a.*line.fixed) + a.*line.other;
    return p;
}

void append(Polygon* p, const Point& point) {
    if (static_cast<std::size_t>(p->count) < p->points.size()) p->points[static_cast<std::size_t>(p->count++)] = point;
}

Polygon clipAt(const Polygon& p, const Line& line) {
    Polygon kept{};
    for (std::int32_t i = 0; i < p.count; ++i) {
        const Point& a = p.points[static_cast<std::size_t>(i)];
        const Point& b = p.points[static_cast<std::size_t>((i + 1) % p.count)];
        const double fromA = (a.*line.fixed - line.at) * line.sign;
        const double fromB = (b.*line.fixed - line.at) * line.sign;
        if (fromA >= 0) append(&kept, a);
        if ((fromA > 0 && fromB < 0) || (fromA < 0 && fromB > 0)) append(&kept, crossing(a, b, line));
    }
    return kept;
}

void removeRepeats(Polygon* p) {
    std::int32_t kept = 0;
    for (std::int32_t i = 0; i < p->count; ++i) {
        const Point q = p->points[static_cast<std::size_t>(i)];
        if (kept > 0) {
            const Point& before = p->points[static_cast<std::size_t>(kept - 1)];
            if (q.x == before.x && q.y == before.y) continue;
        }
        p->points[static_cast<std::size_t>(kept++)] = q;
    }
    p->count = kept;
}

// One of the two chains of edges.
struct Chain {
    std::int32_t step;  // 1 forward, -1 backward through the corners
    std::int32_t end;   // corner that the current edge leads to
    Point start;
    double slope;

    double at(double y) const { return start.x + (y - start.y) * slope; }
};

// Goes on to the next edge with a height; false when it meets the other chain's end on the way.
bool nextEdge(const Polygon& p, Chain* chain, std::int32_t otherEnd) {
    for (std::int32_t tries = 0; tries <= p.count; ++tries) {
        const Point& from = p.points[static_cast<std::size_t>(chain->end)];
        chain->end = (chain->end + chain->step + p.count) % p.count;
        const Point& to = p.points[static_cast<std::size_t>(chain->end)];
        if (from.y != to.y) {
            chain->start = from;
            chain->slope = (to.x - from.x) / (to.y - from.y);
            return true;
        }
        if (chain->end == otherEnd) return false;
    }
    return false;
}

std::int32_t topCorner(const Polygon& p) {
    std::int32_t top = 0;
    for (std::int32_t i = 1; i < p.count; ++i)
        if (p.points[static_cast<std::size_t>(i)].y < p.points[static_cast<std::size_t>(top)].y) top = i;
    return top;
}

void putSpan(WarpSpans* spans, const PixelRect& rect, std::int32_t y, double l, double r) {
    double left = std::ceil(l);
    double right = std::floor(r);
    if (1 - (left - l) < kSpanTolerance) left -= 1;
    if (1 - (r - right) < kSpanTolerance) right += 1;
    const auto i = static_cast<std::size_t>(y - spans->yFirst);
    if (!(left <= right)) {
        spans->left[i] = 0;
        spans->right[i] = -1;
        return;
    }
    spans->left[i] = static_cast<std::int32_t>(std::clamp<double>(left, rect.xMin, rect.xMax));
    spans->right[i] = static_cast<std::int32_t>(std::clamp<double>(right, rect.xMin, rect.xMax));
}

void convert(const Polygon& p, const PixelRect& rect, std::int32_t orientation, WarpSpans* spans) {
    const std::int32_t top = topCorner(p);
    Chain forward{1, top, {}, 0};
    Chain backward{-1, top, {}, 0};
    const auto yOf = [&](const Chain& c) { return p.points[static_cast<std::size_t>(c.end)].y; };
    std::int32_t y = spans->yFirst;
    double reached = p.points[static_cast<std::size_t>(top)].y;
    for (std::int32_t edges = 0; edges <= 2 * p.count; ++edges) {
        if (yOf(forward) <= reached && !nextEdge(p, &forward, backward.end)) return;
        if (yOf(backward) <= reached && !nextEdge(p, &backward, forward.end)) return;
        reached = std::min(yOf(forward), yOf(backward));
        const auto last = static_cast<std::int32_t>(std::clamp<double>(std::floor(reached), y - 1.0, spans->yLast));
        for (; y <= last; ++y) {
            const double b = backward.at(y);
            const double f = forward.at(y);
            putSpan(spans, rect, y, orientation ? b : f, orientation ? f : b);
        }
        if (forward.end == backward.end) return;
    }
}

// What remains where no row is reached.
void presetSpans(const Polygon& p, const PixelRect& rect, WarpSpans* spans) {
    const std::int32_t rows = spans->yLast - spans->yFirst + 1;
    std::fill_n(spans->left.get(), rows, 0);
    std::fill_n(spans->right.get(), rows, -1);
    const double x0 = p.points[0].x;
    const double x1 = p.points[p.count > 1 ? 1 : 0].x;
    const double left = p.count > 1 ? std::ceil(std::min(x0, x1)) : std::floor(x0);
    const double right = p.count > 1 ? std::floor(std::max(x0, x1)) : std::floor(x0);
    if (left > right) return;
    spans->left[0] = static_cast<std::int32_t>(std::clamp<double>(left, rect.xMin, rect.xMax));
    spans->right[0] = static_cast<std::int32_t>(std::clamp<double>(right, rect.xMin, rect.xMax));
}

}  // namespace

Polygon ownClipPolygon(const double* quad, const PixelRect& rect) {
    Polygon p{{}, 4};
    for (std::size_t i = 0; i < 4; ++i) p.points[i] = {quad[2 * i], quad[2 * i + 1]};
    if (!allFinite(p)) return {{}, 0};
    const Box box = boundsOf(p);
    if (box.least.x > rect.xMax || box.greatest.x < rect.xMin || box.least.y > rect.yMax || box.greatest.y < rect.yMin)
        return {{}, 0};
    const Line lines[] = {{&Point::y, &Point::x, static_cast<double>(rect.yMin), 1},
                          {&Point::y, &Point::x, static_cast<double>(rect.yMax), -1},
                          {&Point::x, &Point::y, static_cast<double>(rect.xMin), 1},
                          {&Point::x, &Point::y, static_cast<double>(rect.xMax), -1}};
    for (const Line& line : lines)
        if (p.count > 0) p = clipAt(p, line);
    removeRepeats(&p);
    return allFinite(p) ? p : Polygon{{}, 0};
}

std::int32_t ownWarpSpans(const double* quad, const PixelRect& rect, std::int32_t orientation, WarpSpans* spans) {
    const Polygon p = ownClipPolygon(quad, rect);
    if (p.count == 0) return 0;
    const Box box = boundsOf(p);
    const double firstRow = std::max<double>(std::ceil(box.least.y), rect.yMin);
    const double lastRow = std::min<double>(std::floor(box.greatest.y), rect.yMax);
    if (lastRow < firstRow || std::floor(box.greatest.x) < std::ceil(box.least.x)) return 0;
    spans->yFirst = static_cast<std::int32_t>(firstRow);
    spans->yLast = static_cast<std::int32_t>(lastRow);
    const std::ptrdiff_t rows = std::ptrdiff_t{spans->yLast} - spans->yFirst + 1;
    spans->left = Block<std::int32_t>(static_cast<std::int32_t*>(ownAllocWords(rows)));
    spans->right = Block<std::int32_t>(static_cast<std::int32_t*>(ownAllocWords(rows)));
    if (!spans->left || !spans->right) {
        zetSetErrStatus(ZET_StatusNoMemory);
        return 0;
    }
    presetSpans(p, rect, spans);
    if (p.count > 1) convert(p, rect, orientation, spans);
    return 1;
}

}  // namespace zetpxl
