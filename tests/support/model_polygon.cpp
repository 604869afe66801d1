#include "tests/support/model_polygon.h"

#include <algorithm>
#include <cmath>

namespace zetpxl::test {
namespace {

struct Box {
    double x0, y0, x1, y1;
};

Box boxOf(const Polygon& p) {
    Box box{p[0].x, p[0].y, p[0].x, p[0].y};
    for (const Point& v : p) {
        box.x0 = std::min(box.x0, v.x);
        box.y0 = std::min(box.y0, v.y);
        box.x1 = std::max(box.x1, v.x);
        box.y1 = std::max(box.y1, v.y);
    }
    return box;
}

// Everything below the line Y = `line`, or above it, is cut off.
Polygon cutRows(const Polygon& p, double line, bool keepBelow) {
    Polygon kept;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const Point& a = p[i];
        const Point& b = p[(i + 1) % p.size()];
        if (keepBelow ? a.y >= line : a.y <= line) kept.push_back(a);
        if ((a.y < line && b.y > line) || (a.y > line && b.y < line))
            kept.push_back({(b.x - a.x) / (b.y - a.y) * (line - a.y) + a.x, line});
    }
    return kept;
}

Polygon swapped(Polygon p) {
    for (Point& v : p) std::swap(v.x, v.y);
    return p;
}

// ---- the two chains of edges from the topmost vertex

struct Chain {
    std::size_t end;  // vertex
    std::size_t step;
    Point from{};
    double slope = 0;

    double at(std::int32_t y) const { return from.x + (y - from.y) * slope; }
};

// Takes the next edge that has a height; false when there is none before the other chain's end.
bool nextEdge(const Polygon& p, Chain& chain, std::size_t otherEnd) {
    for (;;) {
        chain.from = p[chain.end];
        chain.end = (chain.end + chain.step) % p.size();
        const Point& to = p[chain.end];
        if (to.y != chain.from.y) {
            chain.slope = (to.x - chain.from.x) / (to.y - chain.from.y);
            return true;
        }
        if (chain.end == otherEnd) return false;
    }
}

Spans::Span spanOf(double l, double r, const Corners& limits) {
    double left = std::ceil(l);
    double right = std::floor(r);
    if (1 - (left - l) < 1e-14) left -= 1;
    if (1 - (r - right) < 1e-14) right += 1;
    left = std::max<double>(left, limits.x0);
    right = std::min<double>(right, limits.x1);
    if (!(left <= right)) return {};
    return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(right)};
}

void scan(const Polygon& p, const Corners& limits, bool positive, Spans& spans) {
    const auto lower = [](const Point& a, const Point& b) { return a.y < b.y; };
    const auto top = static_cast<std::size_t>(std::min_element(p.begin(), p.end(), lower) - p.begin());
    Chain forward{top, 1}, backward{top, p.size() - 1};
    std::int32_t y = spans.yFirst;
    for (;;) {
        const double forwardY = p[forward.end].y;
        const double backwardY = p[backward.end].y;
        if (forwardY <= backwardY && !nextEdge(p, forward, backward.end)) return;
        if (backwardY <= forwardY && !nextEdge(p, backward, forward.end)) return;
        const double until = std::floor(std::min(p[forward.end].y, p[backward.end].y));
        for (; y <= until; ++y) {
            const double b = backward.at(y);
            const double f = forward.at(y);
            const auto row = static_cast<std::size_t>(y - spans.yFirst);
            if (row < spans.rows.size()) spans.rows[row] = positive ? spanOf(b, f, limits) : spanOf(f, b, limits);
        }
        if (forward.end == backward.end) return;
    }
}

}  // namespace

Inverse modelInverse(const Corners& source, const Quad& q) {
    const double w = source.x1 - source.x0;
    const double h = source.y1 - source.y0;
    const auto& [p0, p1, p2, p3] = q;
    const double s = 1 / ((p2.y - p1.y) * (p1.x - p0.x) - (p1.y - p0.y) * (p2.x - p1.x));
    Inverse d{};
    d.d0 = (p2.y - p1.y) * w * s;
    d.d1 = -(p2.x - p1.x) * w * s;
    d.d2 = source.x0 - d.d0 * p0.x - d.d1 * p0.y;
    d.d3 = -(p1.y - p0.y) * h * s;
    d.d4 = (p1.x - p0.x) * h * s;
    d.d5 = source.y0 - d.d3 * p0.x - d.d4 * p0.y;
    d.positive = s > 0;
    return d;
}

Polygon modelClip(const Quad& quad, const Corners& limits) {
    Polygon p(quad.begin(), quad.end());
    for (const Point& v : p)
        if (!std::isfinite(v.x) || !std::isfinite(v.y)) return {};
    const Box box = boxOf(p);
    if (box.y0 > limits.y1 || box.y1 < limits.y0 || box.x0 > limits.x1 || box.x1 < limits.x0) return {};
    if (box.y0 < limits.y0) p = cutRows(p, limits.y0, true);
    if (box.y1 > limits.y1) p = cutRows(p, limits.y1, false);
    if (box.x0 < limits.x0) p = swapped(cutRows(swapped(p), limits.x0, true));
    if (box.x1 > limits.x1) p = swapped(cutRows(swapped(p), limits.x1, false));
    p.erase(std::unique(p.begin(), p.end()), p.end());
    return p;
}

Spans modelSpans(const Quad& quad, const Corners& limits, bool positive) {
    const Polygon p = modelClip(quad, limits);
    if (p.empty()) return {};
    const Box box = boxOf(p);
    const auto yFirst = static_cast<std::int32_t>(std::ceil(box.y0));
    const auto yLast = static_cast<std::int32_t>(std::floor(box.y1));
    if (yLast < yFirst || std::floor(box.x1) < std::ceil(box.x0)) return {};
    Spans spans{yFirst, std::vector<Spans::Span>(static_cast<std::size_t>(yLast - yFirst + 1))};
    if (p.size() == 1) {
        spans.rows[0] = {static_cast<std::int32_t>(std::floor(p[0].x)), static_cast<std::int32_t>(std::floor(p[0].x))};
        return spans;
    }
    spans.rows[0] = {static_cast<std::int32_t>(std::ceil(std::min(p[0].x, p[1].x))),
                     static_cast<std::int32_t>(std::floor(std::max(p[0].x, p[1].x)))};
    scan(p, limits, positive, spans);
    return spans;
}

}  // namespace zetpxl::test
