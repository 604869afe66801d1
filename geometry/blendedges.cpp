// The edges of a warped region, blended into what lies around it: the pixel just outside the polygon takes on as much of the
// pixel inside as the edge covers it. Edges along rows and columns are clean already.
#include <algorithm>
#include <array>
#include <cmath>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"
#include "geometry/warp.h"

namespace zetpxl {

namespace {

struct Blender {
    ZetImage* image;
    PixelRect rect;
    std::int32_t firstChannel;
    std::int32_t nProc;
};

std::ptrdiff_t sampleOffset(const ZetImage* image, std::ptrdiff_t x, std::ptrdiff_t y, std::ptrdiff_t channel,
                            std::ptrdiff_t rowStep, std::ptrdiff_t rows) {
    const std::ptrdiff_t bytes = sampleBytes(image->depth);
    if (image->dataOrder == 1) return channel * rows * rowStep + y * rowStep + x * bytes;
    return y * rowStep + (x * image->nChannels + channel) * bytes;
}

template <class T>
double loadSample(const std::uint8_t* at) {
    return static_cast<double>(*reinterpret_cast<const T*>(at));
}

template <class T>
void storeSample(std::uint8_t* at, double value) {
    *reinterpret_cast<T*>(at) = roundedSample<T>(value);
}

struct SampleAccess {
    double (*load)(const std::uint8_t* at);
    void (*store)(std::uint8_t* at, double value);
};

template <class T>
constexpr SampleAccess access{loadSample<T>, storeSample<T>};

constexpr std::array<SampleAccess, kDepthCount> accesses = {{
    {nullptr, nullptr},
    access<std::uint8_t>,
    {nullptr, nullptr},
    access<std::uint16_t>,
    {nullptr, nullptr},
    {nullptr, nullptr},
    access<float>,
}};

const SampleAccess& accessOf(const ZetImage* image) {
    return accesses[static_cast<std::size_t>(depthIndex(image->depth))];
}

// A sample of a tile, alone: null when the tile cannot be had.
std::uint8_t* fetchSample(ZetImage* image, std::int32_t x, std::int32_t y, std::int32_t channel, std::int32_t mode) {
    const ZetTileInfo& tiles = *image->tileInfo;
    auto* data = static_cast<std::uint8_t*>(fetchTile(image, x / tiles.width, y / tiles.height, mode));
    if (!data) return nullptr;
    return data + sampleOffset(image, x % tiles.width, y % tiles.height, channel, ownTileRowBytes(image), tiles.height);
}

void releaseSample(ZetImage* image, std::int32_t x, std::int32_t y) {
    releaseTile(image, x / image->tileInfo->width, y / image->tileInfo->height);
}

double readTiled(ZetImage* image, std::int32_t x, std::int32_t y, std::int32_t channel) {
    const std::uint8_t* at = fetchSample(image, x, y, channel, ZET_TILE_READ);
    if (!at) return 0;
    const double value = accessOf(image).load(at);
    releaseSample(image, x, y);
    return value;
}

void writeTiled(ZetImage* image, std::int32_t x, std::int32_t y, std::int32_t channel, float value) {
    std::uint8_t* at = fetchSample(image, x, y, channel, ZET_TILE_WRITE);
    if (!at) return;
    accessOf(image).store(at, static_cast<double>(value));
    releaseSample(image, x, y);
}

struct Cell {
    std::int32_t x;
    std::int32_t y;
};

bool isInside(const PixelRect& r, const Cell& c) {
    return c.x >= r.xMin && c.x <= r.xMax && c.y >= r.yMin && c.y <= r.yMax;
}

// `fromOuter` and `fromInner`: distances of the edge.
void blend(const Blender& b, const Cell& outer, const Cell& inner, double fromOuter, double fromInner) {
    if (!isInside(b.rect, outer) || !isInside(b.rect, inner)) return;
    ZetImage* image = b.image;
    for (std::int32_t k = b.firstChannel; k < b.firstChannel + b.nProc; ++k) {
        if (image->tileInfo) {
            const double old = readTiled(image, outer.x, outer.y, k);
            const double value = old * fromOuter + readTiled(image, inner.x, inner.y, k) * fromInner;
            writeTiled(image, outer.x, outer.y, k, static_cast<float>(value));
            continue;
        }
        const auto at = [&](const Cell& c) {
            return pixelData(image) + sampleOffset(image, c.x, c.y, k, image->widthStep, image->height);
        };
        const SampleAccess& samples = accessOf(image);
        samples.store(at(outer), samples.load(at(outer)) * fromOuter + samples.load(at(inner)) * fromInner);
    }
}

std::int32_t whole(double v) { return static_cast<std::int32_t>(v); }

// An edge that runs along rather than down: outer and inner pixel stand above each other.
void blendFlatEdge(const Blender& b, const Point& from, const Point& to, bool outerAbove) {
    const double slope = (to.y - from.y) / (to.x - from.x);
    const std::int32_t last = whole(std::floor(std::max(from.x, to.x)));
    for (std::int32_t x = whole(std::ceil(std::min(from.x, to.x))); x <= last; ++x) {
        const double y = (x - from.x) * slope + from.y;
        const double above = std::floor(y);
        if (above == y) continue;
        const double outer = outerAbove ? above : std::ceil(y);
        const double inner = outerAbove ? std::ceil(y) : above;
        blend(b, {x, whole(outer)}, {x, whole(inner)}, std::fabs(y - outer), std::fabs(y - inner));
    }
}

void blendSteepEdge(const Blender& b, const Point& from, const Point& to, bool outerRight) {
    const double slope = (to.x - from.x) / (to.y - from.y);
    const std::int32_t last = whole(std::floor(std::max(from.y, to.y)));
    for (std::int32_t y = whole(std::ceil(std::min(from.y, to.y))); y <= last; ++y) {
        const double x = (y - from.y) * slope + from.x;
        const double left = std::floor(x);
        if (left == x) continue;
        const double outer = outerRight ? std::ceil(x) : left;
        const double inner = outerRight ? left : std::ceil(x);
        blend(b, {whole(outer), y}, {whole(inner), y}, std::fabs(x - outer), std::fabs(x - inner));
    }
}

void blendEdge(const Blender& b, const Point& from, const Point& to, std::int32_t orientation) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    if (dx == 0 || dy == 0) return;
    if (std::fabs(dx) >= std::fabs(dy)) return blendFlatEdge(b, from, to, (orientation == 1) == (dx > 0));
    blendSteepEdge(b, from, to, (orientation == 1) == (dy > 0));
}

}  // namespace

void ownBlendEdges(ZetImage* dstImage, const double* quad, const PixelRect& rect, std::int32_t orientation) {
    if (dstImage->depth == ZET_DEPTH_1U) return;
    const Polygon p = ownClipPolygon(quad, rect);
    if (p.count < 3) return;
    const std::int32_t coi = regionCoi(dstImage);
    Blender b{dstImage, rect, std::max(coi - 1, 0), 1};
    if (coi == 0) b.nProc = dstImage->nChannels - (dstImage->alphaChannel ? 1 : 0);
    for (std::int32_t i = 0; i < p.count; ++i)
        blendEdge(b, p.points[static_cast<std::size_t>(i)], p.points[static_cast<std::size_t>((i + 1) % p.count)],
                  orientation);
}

}  // namespace zetpxl
