// Slanted edges of a warped parallelogram, pixel by pixel.
#include <algorithm>
#include <cmath>

#include "tests/support/model_patch.h"
#include "tests/support/model_warp.h"

namespace zetpxl::test {
namespace {

struct Place {
    std::int32_t x, y;
};

double readPixel(ZetImage* image, std::int32_t channel, const Place& at) {
    if (tiled(*image)) {
        const std::int32_t col = at.x / image->tileInfo->width;
        const std::int32_t row = at.y / image->tileInfo->height;
        if (!modelFetch(*image, col, row, ZET_TILE_READ)) return 0;
        modelRelease(*image, col, row);
    }
    return sampleValue(image->depth, getSample(*image, channel, at.y, at.x));
}

void storePixel(ZetImage* image, std::int32_t channel, const Place& at, double value) {
    if (tiled(*image)) {
        const std::int32_t col = at.x / image->tileInfo->width;
        const std::int32_t row = at.y / image->tileInfo->height;
        if (!modelFetch(*image, col, row, ZET_TILE_WRITE)) return;
        modelRelease(*image, col, row);
        value = static_cast<float>(value);
    }
    const std::uint32_t pattern = image->depth == ZET_DEPTH_32F
                                      ? floatPattern(static_cast<float>(value))
                                      : static_cast<std::uint32_t>(static_cast<std::int64_t>(value + 0.5));
    putSample(*image, channel, at.y, at.x, pattern);
}

bool inside(const Corners& limits, const Place& at) {
    return at.x >= limits.x0 && at.x <= limits.x1 && at.y >= limits.y0 && at.y <= limits.y1;
}

struct Blend {
    ZetImage* image;
    Corners limits;

    void operator()(const Place& outer, const Place& inner, double outerShare, double innerShare) const {
        if (!inside(limits, outer) || !inside(limits, inner)) return;
        const ChannelRange channels = modelChannels(*image);
        for (std::int32_t c = channels.first; c < channels.first + channels.count; ++c) {
            const double outerValue = readPixel(image, c, outer);
            const double innerValue = readPixel(image, c, inner);
            storePixel(image, c, outer, outerValue * outerShare + innerValue * innerShare);
        }
    }
};

std::int32_t number(double value) { return static_cast<std::int32_t>(value); }

void flatEdge(const Blend& blend, const Point& a, const Point& b, bool positive) {
    const double slope = (b.y - a.y) / (b.x - a.x);
    const bool outerIsFloor = positive == (b.x - a.x > 0);
    for (double x = std::ceil(std::min(a.x, b.x)); x <= std::floor(std::max(a.x, b.x)); ++x) {
        const double y = (x - a.x) * slope + a.y;
        if (y == std::floor(y)) continue;
        const double outer = outerIsFloor ? std::floor(y) : std::ceil(y);
        const double inner = outerIsFloor ? std::ceil(y) : std::floor(y);
        blend({number(x), number(outer)}, {number(x), number(inner)}, std::fabs(y - outer), std::fabs(y - inner));
    }
}

void steepEdge(const Blend& blend, const Point& a, const Point& b, bool positive) {
    const double slope = (b.x - a.x) / (b.y - a.y);
    const bool outerIsCeil = positive == (b.y - a.y > 0);
    for (double y = std::ceil(std::min(a.y, b.y)); y <= std::floor(std::max(a.y, b.y)); ++y) {
        const double x = (y - a.y) * slope + a.x;
        if (x == std::floor(x)) continue;
        const double outer = outerIsCeil ? std::ceil(x) : std::floor(x);
        const double inner = outerIsCeil ? std::floor(x) : std::ceil(x);
        blend({number(outer), number(y)}, {number(inner), number(y)}, std::fabs(x - outer), std::fabs(x - inner));
    }
}

}  // namespace

void modelBlendEdges(ZetImage* dst, const Quad& quad, bool positive) {
    if (dst->depth == ZET_DEPTH_1U) return;
    const Blend blend{dst, cornersOf(modelRegion(*dst))};
    const Polygon p = modelClip(quad, blend.limits);
    if (p.size() < 3) return;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const Point& a = p[i];
        const Point& b = p[(i + 1) % p.size()];
        const double dx = std::fabs(b.x - a.x);
        const double dy = std::fabs(b.y - a.y);
        if (dx == 0 || dy == 0) continue;
        dx >= dy ? flatEdge(blend, a, b, positive) : steepEdge(blend, a, b, positive);
    }
}

}  // namespace zetpxl::test
