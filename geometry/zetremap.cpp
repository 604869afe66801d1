// Fills the destination from source positions that two map images hold.
//   remap.1 positions are whole-image coordinates; one outside the source's region, or no number, leaves its pixel alone
//   remap.2 the last interval of the linear interpolation ends with the region, that of the cubic with the image
//   remap.3 with tiles the destination goes band by band, a tiled source as one block
#include <algorithm>
#include <array>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"
#include "geometry/samplerows.h"
#include "geometry/warp.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetRemap", "zetremap"};

struct RemapRun {
    SampleGrid src;
    ZetRoiBounds bounds;  // of the source's region
    std::uint8_t* dst;    // the region's first pixel; 1U: its row's first byte
    std::int32_t dstBit;
    std::ptrdiff_t dstRowStep;
    std::ptrdiff_t dstPixelStep;
    std::ptrdiff_t dstChannelStep;
    const std::uint8_t* xMap;
    const std::uint8_t* yMap;
    std::ptrdiff_t xMapStep;
    std::ptrdiff_t yMapStep;
    std::int32_t nProc;
    std::int32_t width;
    std::int32_t height;
};

const float* mapRow(const std::uint8_t* map, std::ptrdiff_t step, std::ptrdiff_t y) {
    return reinterpret_cast<const float*>(map + y * step);
}

bool isInside(const ZetRoiBounds& b, double sx, double sy) {
    return sx >= b.x0 && sx <= b.x1 && sy >= b.y0 && sy <= b.y1;
}

// Widens positions; true when all lie inside the source's region.
[[gnu::noinline]] bool takePositions(const ZetRoiBounds& bounds, const float* __restrict xs, const float* __restrict ys,
                                     std::ptrdiff_t count, PositionList* __restrict list) {
    const double x0 = bounds.x0, y0 = bounds.y0, x1 = bounds.x1, y1 = bounds.y1;
    std::int64_t outside = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double sx = static_cast<double>(xs[i]);
        const double sy = static_cast<double>(ys[i]);
        list->x[i] = sx;
        list->y[i] = sy;
        const bool inside = (sx >= x0) & (sx <= x1) & (sy >= y0) & (sy <= y1);
        outside |= inside ? 0 : 1;
    }
    return outside == 0;
}

// The positions of up to kPositions columns that lie inside the source's region.
void listPositions(const RemapRun& run, const float* xs, const float* ys, std::int32_t first, PositionList* list) {
    const std::int32_t count = std::min(run.width - first, static_cast<std::int32_t>(kPositions));
    list->count = count;
    for (std::int32_t i = 0; i < count; ++i) list->column[i] = first + i;
    if (takePositions(run.bounds, xs + first, ys + first, count, list)) return;
    std::ptrdiff_t kept = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double sx = list->x[i];
        const double sy = list->y[i];
        list->x[kept] = sx;
        list->y[kept] = sy;
        list->column[kept] = list->column[i];
        kept += isInside(run.bounds, sx, sy);
    }
    list->count = kept;
}

template <SampleRoutine Make>
void remapRows(const RemapRun& run) {
    const SampleSource source{run.src, run.bounds.x1, run.bounds.y1, run.nProc};
    PositionList list;
    for (std::ptrdiff_t y = 0; y < run.height; ++y) {
        const float* xs = mapRow(run.xMap, run.xMapStep, y);
        const float* ys = mapRow(run.yMap, run.yMapStep, y);
        const SampleRow to{run.dst + y * run.dstRowStep, run.dstPixelStep, run.dstChannelStep};
        for (std::int32_t x = 0; x < run.width; x += static_cast<std::int32_t>(kPositions)) {
            listPositions(run, xs, ys, x, &list);
            Make(source, list, to);
        }
    }
}

void remapBits(const RemapRun& run) {
    for (std::ptrdiff_t y = 0; y < run.height; ++y) {
        const float* xs = mapRow(run.xMap, run.xMapStep, y);
        const float* ys = mapRow(run.yMap, run.yMapStep, y);
        for (std::int32_t x = 0; x < run.width; ++x) {
            const double sx = static_cast<double>(xs[x]);
            const double sy = static_cast<double>(ys[x]);
            if (!isInside(run.bounds, sx, sy)) continue;
            putBit(run.dst + y * run.dstRowStep, std::ptrdiff_t{run.dstBit} + x,
                   bitAt(run.src, static_cast<std::int32_t>(sx + 0.5), static_cast<std::int32_t>(sy + 0.5)));
        }
    }
}

using RemapRoutine = void (*)(const RemapRun& run);
using RemapRoutines = std::array<RemapRoutine, 3>;

template <class T>
constexpr RemapRoutines remapRoutines = {remapRows<nearestPositions<T>>, remapRows<linearPositions<T>>,
                                         remapRows<cubicPositions<T>>};

// By depth and interpolation; signed depths are refused, and bits always take the nearest.
constexpr std::array<RemapRoutines, kDepthCount> remapTable = {{
    {remapBits, nullptr, nullptr},
    remapRoutines<std::uint8_t>,
    {nullptr, nullptr, nullptr},
    remapRoutines<std::uint16_t>,
    {nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr},
    remapRoutines<float>,
}};

struct RemapImages {
    ZetImage* src;
    ZetImage* xMap;
    ZetImage* yMap;
    ZetImage* dst;
};

void remapDirect(const RemapImages& images, std::int32_t interpolation, std::int32_t height, std::int32_t width) {
    ZetRoiLayout src;
    ZetRoiLayout dst;
    ZetRoiLayout xMap;
    ZetRoiLayout yMap;
    RemapRun run{};
    if (!ownRoiBounds(images.src, &run.bounds, 1) || !ownRoiLayout(images.src, &src, 1) ||
        !ownRoiLayout(images.dst, &dst, 1) || !ownRoiLayout(images.xMap, &xMap, 1) ||
        !ownRoiLayout(images.yMap, &yMap, 1))
        return;
    if (src.nProc != dst.nProc)
        return report(op, ZET_StatusBadArgument,
                      "Number of processed channels of srcImage != Number of processed channels of dstImage");
    if (src.nProc == 0) return;
    const SampleGrid to = sampleGrid(images.dst, dst.firstChannel);
    run.src = sampleGrid(images.src, src.firstChannel);
    run.dst = dst.data;
    run.dstBit = dst.bitOffset;
    run.dstRowStep = dst.rowStep;
    run.dstPixelStep = to.pixelStep;
    run.dstChannelStep = to.channelStep;
    run.xMap = xMap.data;
    run.yMap = yMap.data;
    run.xMapStep = xMap.rowStep;
    run.yMapStep = yMap.rowStep;
    run.nProc = src.nProc;
    run.width = width;
    run.height = height;
    const auto depth = static_cast<std::size_t>(depthIndex(images.src->depth));
    remapTable[depth][static_cast<std::size_t>(interpolation)](run);
}

struct RemapWalk {
    RemapImages images;
    std::int32_t interpolation;
    ZetImage srcView;
    TileView dstView;
};

bool reportTrace() {
    report(op, ZET_StatusBacktrace, "");
    return false;
}

// The part of a map that a band needs, as an image of its own; false when it cannot be had.
bool fetchMap(ZetImage* map, std::int32_t dx, std::int32_t dy, std::int32_t width, std::int32_t height,
              ZetImage* view) {
    *view = *map;
    view->roi = nullptr;
    view->maskImage = nullptr;
    view->tileInfo = nullptr;
    view->width = width;
    view->height = height;
    view->imageData = ownGetRect(map, regionX(map) + dx, regionY(map) + dy, width, height, &view->widthStep);
    return view->imageData && zetGetErrStatus() >= 0;
}

bool remapBand(RemapWalk* walk, const TileGrid& grid, std::int32_t c, std::int32_t r) {
    const std::int32_t width = grid.x.bandSize(c);
    const std::int32_t height = grid.y.bandSize(r);
    const std::int32_t dx = grid.x.distance(c);
    const std::int32_t dy = grid.y.distance(r);
    ZetImage xMap{};
    ZetImage yMap{};
    bool done = fetchMap(walk->images.xMap, dx, dy, width, height, &xMap);
    done = done && fetchMap(walk->images.yMap, dx, dy, width, height, &yMap);
    if (done) remapDirect({&walk->srcView, &xMap, &yMap, &walk->dstView.image}, walk->interpolation, height, width);
    ownFreeBlock(xMap.imageData);
    ownFreeBlock(yMap.imageData);
    return done;
}

bool remapCell(RemapWalk* walk, const TileGrid& grid, std::int32_t c, std::int32_t r) {
    ZetImage* dst = walk->images.dst;
    const bool tiled = dst->tileInfo != nullptr;
    walk->dstView.roi.xOffset = tiled ? grid.x.offset(c) : regionX(dst) + grid.x.distance(c);
    walk->dstView.roi.yOffset = tiled ? grid.y.offset(r) : regionY(dst) + grid.y.distance(r);
    walk->dstView.roi.width = grid.x.bandSize(c);
    walk->dstView.roi.height = grid.y.bandSize(r);
    if (tiled) {
        walk->dstView.image.imageData = fetchTile(dst, grid.x.first + c, grid.y.first + r, ZET_TILE_WRITE);
        if (!walk->dstView.image.imageData) {
            report(op, ZET_StatusError, "Error get tile to write");
            return false;
        }
    }
    const bool done = remapBand(walk, grid, c, r);
    if (tiled) releaseTile(dst, grid.x.first + c, grid.y.first + r);
    return done || reportTrace();
}

void remapTiles(const RemapImages& images, std::int32_t interpolation, std::int32_t height, std::int32_t width) {
    RemapWalk walk{images, interpolation, *images.src, {}};
    Block<std::uint8_t> block;
    if (images.src->tileInfo) {
        block.reset(static_cast<std::uint8_t*>(
            ownGetRect(images.src, 0, 0, images.src->width, images.src->height, &walk.srcView.widthStep)));
        if (!block || zetGetErrStatus() < 0) return static_cast<void>(reportTrace());
        walk.srcView.imageData = block.get();
        walk.srcView.tileInfo = nullptr;
    }
    makeView(&walk.dstView, images.dst);
    if (images.dst->tileInfo) setTileGeometry(&walk.dstView, images.dst);
    const TileGrid grid = tileGrid(images.dst, height, width);
    for (std::int32_t r = 0; r < grid.y.count; ++r)
        for (std::int32_t c = 0; c < grid.x.count; ++c)
            if (!remapCell(&walk, grid, c, r)) return;
}

void ownRemap(const RemapImages& images, std::int32_t interpolation) {
    std::int32_t height = 0;
    std::int32_t width = 0;
    if (!ownCommonSize3(images.dst, images.xMap, images.yMap, &height, &width, 1)) return;
    const bool tiled = images.src->tileInfo || images.dst->tileInfo || images.xMap->tileInfo || images.yMap->tileInfo;
    if (tiled) return remapTiles(images, interpolation, height, width);
    remapDirect(images, interpolation, height, width);
}

bool isMap(const ZetImage* map) { return map->depth == ZET_DEPTH_32F && map->nChannels == 1 && map->alphaChannel == 0; }

// Every fault is reported; false with a negative status, old or new.
bool checkArguments(const RemapImages& images) {
    constexpr std::int32_t bad = ZET_StatusBadArgument;
    const ZetImage* src = images.src;
    const ZetImage* dst = images.dst;
    if (src->depth != dst->depth) report(op, bad, "srcImage->depth != dstImage->depth");
    if (src->origin != dst->origin) report(op, bad, "srcImage->origin != dstImage->origin");
    const bool oneChannel = src->nChannels == 1 && dst->nChannels == 1;
    if (src->depth != ZET_DEPTH_1U && !oneChannel && src->dataOrder != dst->dataOrder)
        report(op, bad, "srcImage->dataOrder != dstImage->dataOrder");
    if (src->depth & ZET_DEPTH_SIGN) report(op, bad, "(srcImage->depth & ZET_DEPTH_SIGN)");
    if (!isMap(images.xMap))
        report(op, bad, "xMap->depth != ZET_DEPTH_32F || xMap->nChannels != 1 || xMap->alphaChannel != 0");
    if (!isMap(images.yMap))
        report(op, bad, "yMap->depth != ZET_DEPTH_32F || yMap->nChannels != 1 || yMap->alphaChannel != 0");
    if (src == dst) report(op, bad, "This function is not in-place function");
    return zetGetErrStatus() >= 0;
}

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

void zetRemap(ZetImage* srcImage, ZetImage* xMap, ZetImage* yMap, ZetImage* dstImage, int32_t interpolate) {
    if (!checkImages(op, {srcImage, dstImage, xMap, yMap})) return;
    const RemapImages images{srcImage, xMap, yMap, dstImage};
    if (!checkArguments(images)) return;
    const std::int32_t m = interpolate & ~kBlendFlag;
    if (m != ZET_INTER_NN && m != ZET_INTER_LINEAR && m != ZET_INTER_CUBIC)
        return report(op, ZET_StatusBadArgument,
                      "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate != "
                      "ZET_INTER_CUBIC");
    ownRemap(images, usableInterpolation(srcImage, m));
}
