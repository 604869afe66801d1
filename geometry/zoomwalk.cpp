// The walk of zoom over tiles, block by block of the destination.
//   zoomwalk.1 a tiled destination goes tile by tile, any other over a tiled source in blocks of 64 by 64 from its corner
//   zoomwalk.2 of a tiled source each block gets a copy of the rectangle that it reads
//   zoomwalk.3 regions and masks follow the block in records of the walk's own: the caller's stay as they are
#include <algorithm>
#include <cmath>

#include "core/region.h"
#include "geometry/zoom.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

constexpr std::int32_t kBlockSize = 64;

// A copy of a record with a region of its own.
struct LocalImage {
    ZetImage image;
    ZetROI roi;

    LocalImage() = default;
    LocalImage(const LocalImage&) = delete;
    LocalImage& operator=(const LocalImage&) = delete;
};

void copyRecord(LocalImage* local, const ZetImage* image) {
    local->image = *image;
    local->roi = image->roi ? *image->roi : ZetROI{0, 0, 0, image->width, image->height};
    local->image.roi = &local->roi;
}

struct ZoomWalk {
    ZetImage* src;
    ZetImage* dst;
    ZoomPlan plan;
    TileGrid grid;
    LocalImage srcLocal, dstLocal, srcMask, dstMask;
    ZetROI srcMaskRegion, dstMaskRegion;  // as given
};

void useMask(LocalImage* image, LocalImage* mask, ZetROI* region) {
    if (!image->image.maskImage) return;
    copyRecord(mask, image->image.maskImage);
    *region = mask->roi;
    image->image.maskImage = &mask->image;
}

void startWalk(ZoomWalk* walk) {
    copyRecord(&walk->srcLocal, walk->src);
    copyRecord(&walk->dstLocal, walk->dst);
    useMask(&walk->srcLocal, &walk->srcMask, &walk->srcMaskRegion);
    useMask(&walk->dstLocal, &walk->dstMask, &walk->dstMaskRegion);
    walk->srcLocal.image.tileInfo = nullptr;
    walk->dstLocal.image.tileInfo = nullptr;
    if (!walk->dst->tileInfo) return;
    TileView view;
    makeView(&view, walk->dst);
    setTileGeometry(&view, walk->dst);
    walk->dstLocal.image.width = view.image.width;
    walk->dstLocal.image.height = view.image.height;
    walk->dstLocal.image.widthStep = view.image.widthStep;
}

// One axis of a block: its part of the destination, and where that starts in the source.
struct ZoomBand {
    std::int32_t done;
    std::int32_t size;
    std::int32_t srcStart;
    double position;
};

ZoomBand zoomBand(const TileBands& bands, std::int32_t i, std::int32_t srcOffset, double step) {
    const std::int32_t done = bands.distance(i);
    if (i == 0) return {0, bands.bandSize(0), srcOffset, 0.0};
    const double position = srcOffset + done * step;
    const std::int32_t start = zoomTrunc(position + kZoomTolerance);
    return {done, bands.bandSize(i), start, position - start};
}

// One axis of the rectangle that a block reads of a tiled source.
struct SourceSpan {
    std::int32_t start, size;
    std::int32_t regionOffset, regionSize;
};

void growForLine(SourceSpan* span) {
    span->regionOffset = span->start > 0 ? 1 : 0;
    span->start -= span->regionOffset;
    span->size += span->regionOffset;
}

// Four samples are needed wherever the block lies.
void growForCubic(SourceSpan* span, std::int32_t imageSize) {
    if (std::int64_t{span->start} + span->size < imageSize) ++span->size;
    if (span->start < 1) return;
    growForLine(span);
    const std::int32_t lacking = span->size == 2 ? 2 : span->size == 3 ? 1 : 0;
    span->start -= lacking;
    span->size += lacking;
    span->regionOffset += lacking;
}

SourceSpan sourceSpan(const ZoomBand& band, double scale, std::int32_t mode, std::int32_t imageSize) {
    const std::int32_t wanted = scale <= 1 ? band.size : zoomTrunc(std::ceil(band.size * scale));
    SourceSpan span{band.srcStart, std::min(wanted, INT32_MAX - 8) + 1, 0, 0};
    span.regionSize = span.size;
    if (mode == ZET_INTER_NN) return span;
    const bool reaches = std::int64_t{span.start} + span.size >= imageSize;
    span.size = reaches ? imageSize - span.start : span.size + 1;
    if (mode == ZET_INTER_LINEAR) growForLine(&span);
    if (mode == ZET_INTER_CUBIC) growForCubic(&span, imageSize);
    return span;
}

// How far past the image a rectangle of the nearest sample may reach. A factor that leaves one pixel of a whole image could
// ask for any number of pixels that no position comes near.
constexpr std::int32_t kMostBeyond = 4096;

std::int32_t fetchedSize(const SourceSpan& span, const ZoomBand& band, double step, std::int32_t imageSize) {
    const std::int32_t reached = zoomTrunc(std::min(band.position + (band.size - 1) * step, 1e9)) + 2;
    const std::int32_t most = zoomTrunc(static_cast<double>(imageSize) - span.start + kMostBeyond);
    return std::min(span.size, std::max(most, reached));
}

// Fetches what the block reads; false ends the walk.
bool fetchSource(ZoomWalk* walk, const ZoomBand& x, const ZoomBand& y) {
    const SourceSpan across = sourceSpan(x, walk->plan.xScale, walk->plan.mode, walk->src->width);
    const SourceSpan down = sourceSpan(y, walk->plan.yScale, walk->plan.mode, walk->src->height);
    ZetImage* local = &walk->srcLocal.image;
    local->width = fetchedSize(across, x, walk->plan.xStep, walk->src->width);
    local->height = fetchedSize(down, y, walk->plan.yStep, walk->src->height);
    ownSetROI(local->roi, local->roi->coi, across.regionOffset, down.regionOffset, across.regionSize, down.regionSize);
    if (!walk->dst->tileInfo) {
        walk->srcMask.roi.width = across.size;
        walk->srcMask.roi.height = down.size;
    }
    local->imageData = ownGetRect(walk->src, across.start, down.start, local->width, local->height, &local->widthStep);
    return local->imageData && zetGetErrStatus() >= 0;
}

void placeMasks(ZoomWalk* walk, const ZoomBand& x, const ZoomBand& y) {
    const ZetROI& src = walk->srcMaskRegion;
    const ZetROI& dst = walk->dstMaskRegion;
    walk->srcMask.roi.xOffset = zoomTrunc(src.xOffset + x.done * walk->plan.xStep + kZoomTolerance);
    walk->srcMask.roi.yOffset = zoomTrunc(src.yOffset + y.done * walk->plan.yStep + kZoomTolerance);
    walk->dstMask.roi = {dst.coi, dst.xOffset + x.done, dst.yOffset + y.done, x.size, y.size};
}

bool makeBlock(ZoomWalk* walk, const ZoomBand& x, const ZoomBand& y) {
    placeMasks(walk, x, y);
    const bool copied = walk->src->tileInfo != nullptr;
    if (copied && !fetchSource(walk, x, y)) {
        ownFreeBlock(walk->srcLocal.image.imageData);
        return false;
    }
    if (!copied) {
        walk->srcLocal.roi.xOffset = x.srcStart;
        walk->srcLocal.roi.yOffset = y.srcStart;
    }
    ownZoomBlock(&walk->srcLocal.image, &walk->dstLocal.image, walk->plan, x.position, y.position, 0);
    if (copied) ownFreeBlock(walk->srcLocal.image.imageData);
    return true;
}

bool makeCell(ZoomWalk* walk, std::int32_t c, std::int32_t r) {
    const ZoomBand x = zoomBand(walk->grid.x, c, regionX(walk->src), walk->plan.xStep);
    const ZoomBand y = zoomBand(walk->grid.y, r, regionY(walk->src), walk->plan.yStep);
    ZetROI* roi = &walk->dstLocal.roi;
    if (!walk->dst->tileInfo) {
        ownSetROI(roi, roi->coi, regionX(walk->dst) + x.done, regionY(walk->dst) + y.done, x.size, y.size);
        return makeBlock(walk, x, y);
    }
    const std::int32_t column = walk->grid.x.first + c;
    const std::int32_t row = walk->grid.y.first + r;
    walk->dstLocal.image.imageData = fetchTile(walk->dst, column, row, ZET_TILE_WRITE);
    if (!walk->dstLocal.image.imageData) {
        report(kZoom, ZET_StatusError, "Error get tile to write");
        return false;
    }
    ownSetROI(roi, roi->coi, walk->grid.x.offset(c), walk->grid.y.offset(r), x.size, y.size);
    const bool done = makeBlock(walk, x, y);
    releaseTile(walk->dst, column, row);
    return done;
}

// The most that is made of an axis.
std::int32_t cutSize(std::int32_t dstSize, std::int32_t srcSize, double scale) {
    return std::min(dstSize, std::max(1, zoomTrunc(srcSize / scale + kZoomTolerance)));
}

}  // namespace

std::int32_t zoomTrunc(double value) {
    return static_cast<std::int32_t>(std::clamp(value, -2147483648.0, 2147483647.0));
}

std::int32_t zoomSize(const ZetImage* srcImage, const ZetImage* dstImage, const ZoomPlan& plan, std::int32_t* height,
                      std::int32_t* width) {
    std::int32_t srcHeight = 0;
    std::int32_t srcWidth = 0;
    if (!ownCommonSize(srcImage, srcImage->maskImage, &srcHeight, &srcWidth, 1)) return 0;
    if (!ownCommonSize(dstImage, dstImage->maskImage, height, width, 1)) return 0;
    *width = cutSize(*width, srcWidth, plan.xScale);
    *height = cutSize(*height, srcHeight, plan.yScale);
    return 1;
}

std::int32_t ownZoomGrid(const ZetImage* srcImage, const ZetImage* dstImage, const ZoomPlan& plan, TileGrid* grid) {
    std::int32_t height = 0;
    std::int32_t width = 0;
    if (!zoomSize(srcImage, dstImage, plan, &height, &width)) return 0;
    ZetTileInfo blocks{};
    blocks.width = kBlockSize;
    blocks.height = kBlockSize;
    ZetImage seen = *dstImage;
    if (!seen.tileInfo) seen.tileInfo = &blocks;
    *grid = tileGrid(&seen, height, width);
    return 1;
}

void zoomTiles(ZetImage* srcImage, ZetImage* dstImage, const ZoomPlan& plan) {
    ZoomWalk walk{};
    walk.src = srcImage;
    walk.dst = dstImage;
    walk.plan = plan;
    if (!ownZoomGrid(srcImage, dstImage, plan, &walk.grid)) return;
    startWalk(&walk);
    for (std::int32_t r = 0; r < walk.grid.y.count; ++r)
        for (std::int32_t c = 0; c < walk.grid.x.count; ++c)
            if (!makeCell(&walk, c, r)) return;
}

}  // namespace zetpxl
