// Where a block's source pixels come from: the whole image, one tile after another, or rectangles over several tiles.
//   walk.1 a block of the nearest sample ends where its positions leave the tile
//   walk.2 interpolations look ahead of the tile, so their rectangles reach into the next ones; those of the cubic start a step
//          before the tile where the walk begins, so that a sample left of the first position is there
//   walk.3 positions are counted in pixels of the image here, and from the tile's or rectangle's corner in a kernel; on the
//          way from one to the other each is a single precision number
#include <algorithm>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"
#include "geometry/decimate.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

// A rectangle of a tiled source: one tile, held, or a copy of several.
struct DecimateRect {
    ZetImage* lockedImage;
    std::int32_t tileX, tileY;
    void* data;
    std::ptrdiff_t channelStep, pixelStep, rowStep;
    std::ptrdiff_t widthEnd, rowEnd;
};

// The share of a step by which a tile's last position may fall short of its edge.
constexpr double kNearlyOne = static_cast<double>(0x1.fffeb0p-1f);
static_assert(kNearlyOne > 0.999989 && kNearlyOne < 0.99999);

std::int32_t truncated(double value) {
    return static_cast<std::int32_t>(std::clamp(value, -2147483648.0, 2147483647.0));
}

double single(double value) { return static_cast<double>(static_cast<float>(value)); }

// One axis of a walk over tiles.
struct TileAxis {
    double start;     // of the first pixel, in pixels of the image
    double position;  // of the block's first pixel
    double step;
    std::int32_t offset;  // of the region
    std::int32_t tileSize;
    std::int32_t pad;
    std::int32_t count;  // pixels to make

    double ahead() const { return pad == 2 ? 2 * step : 0; }
    std::int32_t nearestEnd(std::int32_t tile) const;
    std::int32_t paddedEnd(std::int32_t tile, std::int32_t done, double inside) const;
};

double tileEdge(const TileAxis& axis, std::int32_t tile) { return static_cast<double>(tile) * axis.tileSize; }

// Pixels made once the tile is done.
std::int32_t TileAxis::nearestEnd(std::int32_t tile) const {
    return std::min(count, truncated((tileEdge(*this, tile + 1) - start + kNearlyOne * step) / step));
}

std::int32_t TileAxis::paddedEnd(std::int32_t tile, std::int32_t done, double inside) const {
    std::int64_t end = truncated((tileEdge(*this, tile + 1) + ahead() - start) / step);
    if (static_cast<double>(end - done) * step + inside < ahead() + tileSize) ++end;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(end, done, count));
}

// The first tile, before the pads lose their sign.
std::int32_t firstTile(const TileAxis& axis) {
    const double lead = axis.pad > 0 ? (axis.pad - 1) * axis.step : 0;
    return std::max(0, truncated((axis.start - lead) / axis.tileSize));
}

TileAxis tileAxis(float position, std::int32_t offset, float step, std::int32_t tileSize, std::int32_t pad,
                  std::ptrdiff_t count) {
    const double start = single(static_cast<double>(offset) + static_cast<double>(position));
    return {start, start, static_cast<double>(step), offset, tileSize, pad, static_cast<std::int32_t>(count)};
}

struct TileWalk {
    ZetImage* image;
    DecimateKernel kernel;
    DecimateBlock* block;  // the whole part to make; then that of the tile at hand
    DecimateRegion from;
    DecimateSteps steps;
    TileAxis x, y;
    std::uint8_t* dst;
    std::ptrdiff_t dstBit;
};

TileWalk startWalk(ZetImage* srcImage, DecimateKernel kernel, const DecimateMode& mode, DecimateBlock* block) {
    TileWalk walk{srcImage, kernel, block, decimateRegion(srcImage), decimateSteps(srcImage), {}, {}, block->dst, 0};
    const ZetTileInfo& tiles = *srcImage->tileInfo;
    walk.x = tileAxis(block->xPos, walk.from.xOffset, block->xStep, tiles.width, mode.xPad,
                      block->dstWidthEnd / block->dstPixelStep);
    walk.y = tileAxis(block->yPos, walk.from.yOffset, block->yStep, tiles.height, mode.yPad,
                      block->dstRowEnd / block->dstRowStep);
    if (srcImage->depth == ZET_DEPTH_1U) walk.dstBit = block->dstChannelStep;
    return walk;
}

// Cuts the block to pixels (x0, y0) up to (x1, y1) of the part.
void cutBlock(const TileWalk& walk, std::int32_t x0, std::int32_t x1, std::int32_t y0, std::int32_t y1) {
    DecimateBlock* block = walk.block;
    const std::ptrdiff_t bits = walk.dstBit + x0;
    const bool packed = walk.image->depth == ZET_DEPTH_1U;
    block->dst = walk.dst + sampleOffset(walk.image, y0 * block->dstRowStep) +
                 (packed ? bits >> 3 : sampleOffset(walk.image, x0 * block->dstPixelStep));
    if (packed) block->dstChannelStep = bits & 7;
    block->dstWidthEnd = (x1 - x0) * block->dstPixelStep;
    block->dstRowEnd = (y1 - y0) * block->dstRowStep;
}

// Hands a block's source to the kernel.
void runKernel(const TileWalk& walk, const void* data, std::ptrdiff_t channelStep, const DecimateRect& rect) {
    DecimateBlock* block = walk.block;
    block->src = static_cast<const std::uint8_t*>(data) + sampleOffset(walk.image, walk.from.channel * channelStep);
    block->srcChannelStep = walk.image->depth == ZET_DEPTH_1U ? 0 : channelStep;
    block->srcPixelStep = rect.pixelStep;
    block->srcWidthEnd = rect.widthEnd;
    block->srcRowStep = rect.rowStep;
    block->srcRowEnd = rect.rowEnd;
    walk.kernel(block);
}

// The whole part again, with the positions behind it.
std::int32_t endWalk(TileWalk* walk) {
    DecimateBlock* block = walk->block;
    block->dst = walk->dst;
    if (walk->image->depth == ZET_DEPTH_1U) block->dstChannelStep = walk->dstBit;
    block->dstWidthEnd = walk->x.count * block->dstPixelStep;
    block->dstRowEnd = walk->y.count * block->dstRowStep;
    block->xPos = static_cast<float>(walk->x.position - walk->x.offset);
    block->yPos = static_cast<float>(walk->y.position - walk->y.offset);
    return 1;
}

void fillTileRect(ZetImage* image, std::int32_t tileX, std::int32_t tileY, void* data, DecimateRect* rect) {
    const ZetTileInfo& tiles = *image->tileInfo;
    const DecimateSteps steps = decimateSteps(image);
    const std::int64_t columns = image->width - std::int64_t{tileX} * tiles.width;
    const std::int64_t rows = image->height - std::int64_t{tileY} * tiles.height;
    *rect = {image, tileX, tileY, data, steps.channelStep, steps.pixelStep, steps.rowStep, 0, 0};
    rect->widthEnd = steps.pixelStep * std::min<std::int64_t>(columns, tiles.width);
    rect->rowEnd = steps.rowStep * std::min<std::int64_t>(rows, tiles.height);
}

std::int32_t lockTile(ZetImage* image, std::int32_t tileX, std::int32_t tileY, DecimateRect* rect) {
    void* data = fetchTile(image, tileX, tileY, ZET_TILE_READ);
    if (!data) return 0;
    fillTileRect(image, tileX, tileY, data, rect);
    return 1;
}

std::int32_t copyTiles(ZetImage* image, std::int32_t tileX, std::int32_t tileY, std::int64_t width, std::int64_t height,
                       DecimateRect* rect) {
    const ZetTileInfo& tiles = *image->tileInfo;
    const std::int64_t x0 = std::int64_t{tileX} * tiles.width;
    const std::int64_t y0 = std::int64_t{tileY} * tiles.height;
    const std::int64_t spanW = tiles.width * ((width - 1) / tiles.width + 1);
    const std::int64_t spanH = tiles.height * ((height - 1) / tiles.height + 1);
    if (spanW > INT32_MAX || spanH > INT32_MAX) return 0;
    std::int32_t rowBytes = 0;
    rect->data = ownGetRect(image, static_cast<std::int32_t>(x0), static_cast<std::int32_t>(y0),
                            static_cast<std::int32_t>(spanW), static_cast<std::int32_t>(spanH), &rowBytes);
    if (!rect->data) return 0;
    const std::ptrdiff_t bytes = sampleBytes(image->depth);
    rect->rowStep = bytes == 0 ? std::ptrdiff_t{rowBytes} * 8 : rowBytes / bytes;
    rect->pixelStep = image->dataOrder == 0 ? image->nChannels : 1;
    rect->channelStep = image->dataOrder == 0 ? 1 : rect->rowStep * spanH;
    rect->widthEnd = rect->pixelStep * std::min(image->width - x0, spanW);
    rect->rowEnd = rect->rowStep * std::min(image->height - y0, spanH);
    rect->tileX = -1;
    rect->tileY = -1;
    return 1;
}

std::int32_t ownDecimateGetRect(ZetImage* srcImage, std::int32_t tileX, std::int32_t tileY, std::int32_t width,
                                std::int32_t height, DecimateRect* rect) {
    const ZetTileInfo& tiles = *srcImage->tileInfo;
    *rect = {};
    const std::int64_t w = std::min<std::int64_t>(width, srcImage->width - std::int64_t{tileX} * tiles.width);
    const std::int64_t h = std::min<std::int64_t>(height, srcImage->height - std::int64_t{tileY} * tiles.height);
    if ((w - 1) / tiles.width == 0 && (h - 1) / tiles.height == 0) return lockTile(srcImage, tileX, tileY, rect);
    return copyTiles(srcImage, tileX, tileY, w, h, rect);
}

void ownDecimateReleaseRect(DecimateRect* rect) {
    if (rect->lockedImage) {
        releaseTile(rect->lockedImage, rect->tileX, rect->tileY);
    } else {
        ownFreeBlock(rect->data);
    }
    rect->data = nullptr;
    rect->lockedImage = nullptr;
}

// One axis' part of a block.
struct Band {
    std::int32_t tile;
    std::int32_t from, to;  // pixels of the part
    double inside;          // position of the first, from the tile's corner
};

Band nearestBand(const TileAxis& axis, std::int32_t tile, std::int32_t done) {
    return {tile, done, std::max(done, axis.nearestEnd(tile)), single(axis.position - tileEdge(axis, tile))};
}

std::int32_t nearestTile(const TileWalk& walk, const Band& x, const Band& y) {
    DecimateRect rect;
    if (!lockTile(walk.image, x.tile, y.tile, &rect)) return 0;
    cutBlock(walk, x.from, x.to, y.from, y.to);
    walk.block->xPos = static_cast<float>(x.inside);
    walk.block->yPos = static_cast<float>(y.inside);
    runKernel(walk, rect.data, rect.channelStep, rect);
    ownDecimateReleaseRect(&rect);
    return 1;
}

Band paddedBand(const TileAxis& axis, std::int32_t tile, std::int32_t done) {
    const double inside = std::max(0.0, single(axis.position - tileEdge(axis, tile)));
    return {tile, done, axis.paddedEnd(tile, done, inside), inside};
}

// The source pixels that a band and its pad reach.
std::int32_t paddedSize(const TileAxis& axis, const Band& band) {
    return truncated((band.to - band.from) * axis.step + band.inside + std::abs(axis.pad));
}

std::int32_t paddedTile(const TileWalk& walk, const Band& x, const Band& y) {
    DecimateRect rect;
    if (!ownDecimateGetRect(walk.image, x.tile, y.tile, paddedSize(walk.x, x), paddedSize(walk.y, y), &rect)) return 0;
    cutBlock(walk, x.from, x.to, y.from, y.to);
    walk.block->xPos = static_cast<float>(x.inside);
    walk.block->yPos = static_cast<float>(y.inside);
    runKernel(walk, rect.data, rect.channelStep, rect);
    ownDecimateReleaseRect(&rect);
    return 1;
}

using BandRule = Band (*)(const TileAxis& axis, std::int32_t tile, std::int32_t done);
using TileRule = std::int32_t (*)(const TileWalk& walk, const Band& x, const Band& y);

// One row of tiles; the positions end behind the last.
std::int32_t walkTileRow(TileWalk* walk, const Band& y, BandRule band, TileRule make) {
    std::int32_t done = 0;
    double yNext = walk->y.position;
    for (std::int32_t tile = firstTile(walk->x); done < walk->x.count; ++tile) {
        const Band x = band(walk->x, tile, done);
        if (!make(*walk, x, y)) return 0;
        walk->x.position = single(static_cast<double>(walk->block->xPos) + tileEdge(walk->x, tile));
        yNext = single(static_cast<double>(walk->block->yPos) + tileEdge(walk->y, y.tile));
        done = x.to;
    }
    walk->y.position = yNext;
    return 1;
}

std::int32_t walkTiles(TileWalk* walk, BandRule band, TileRule make) {
    std::int32_t done = 0;
    for (std::int32_t tile = firstTile(walk->y); done < walk->y.count; ++tile) {
        const Band y = band(walk->y, tile, done);
        walk->x.position = walk->x.start;
        if (!walkTileRow(walk, y, band, make)) return 0;
        done = y.to;
    }
    return endWalk(walk);
}

}  // namespace

std::int32_t ownDecimateWalkPlain(DecimateKernel kernel, const DecimateMode&, ZetImage* srcImage,
                                  DecimateBlock* block) {
    const DecimateRegion from = decimateRegion(srcImage);
    const DecimateSteps steps = decimateSteps(srcImage);
    block->src = pixelData(srcImage) + sampleOffset(srcImage, from.yOffset * steps.rowStep) +
                 sampleOffset(srcImage, from.xOffset * steps.pixelStep) +
                 sampleOffset(srcImage, from.channel * steps.channelStep);
    block->srcChannelStep = srcImage->depth == ZET_DEPTH_1U ? from.xOffset & 7 : steps.channelStep;
    block->srcPixelStep = steps.pixelStep;
    block->srcWidthEnd = (srcImage->width - from.xOffset) * steps.pixelStep;
    block->srcRowStep = steps.rowStep;
    block->srcRowEnd = (srcImage->height - from.yOffset) * steps.rowStep;
    kernel(block);
    return 1;
}

std::int32_t ownDecimateWalkTilesNN(DecimateKernel kernel, const DecimateMode& mode, ZetImage* srcImage,
                                    DecimateBlock* block) {
    TileWalk walk = startWalk(srcImage, kernel, mode, block);
    return walkTiles(&walk, nearestBand, nearestTile);
}

std::int32_t ownDecimateWalkTiles(DecimateKernel kernel, const DecimateMode& mode, ZetImage* srcImage,
                                  DecimateBlock* block) {
    TileWalk walk = startWalk(srcImage, kernel, mode, block);
    return walkTiles(&walk, paddedBand, paddedTile);
}

}  // namespace zetpxl
