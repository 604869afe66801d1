//   frame.1 only windows that reach outside the image go through a working block, and so through the border rules; pixels
//           outside the region but inside the image are real pixels
//   frame.2 tiles of the destination that the region does not touch are not asked for
//   frame.3 source, destination and each mask are read from their own first pixel, over one common size
//   frame.4 edge zones are cut into bands of rows, so that scratch does not grow with the height
#include "rank/frame.h"

#include <algorithm>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"
#include "pixel/bitruns.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

constexpr std::int32_t kBandRows = 64;

struct Position {
    std::int32_t y;
    std::int32_t x;
};

struct Frame {
    ZetImage* src;
    ZetImage* dst;
    const ZetFilterParams* params;
    FilterRoutine routine;
    std::int32_t width;
    std::int32_t height;
    Position srcStart;
    Position dstStart;
    MaskPosition srcMask;
    MaskPosition dstMask;
    std::int32_t srcChannel;
    std::int32_t dstChannel;
};

// Where the destination's pixels of a piece lie.
struct Target {
    std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeStep;
};

// Output pixels from (y, x) of the region on; `inTarget` is the place of the first in the target's memory.
struct Piece {
    std::int32_t y;
    std::int32_t x;
    std::int32_t height;
    std::int32_t width;
    Position inTarget;
};

void lowerToMask(const ZetImage* mask, Frame* f, MaskPosition* position) {
    *position = {mask, 0, 0};
    if (!mask) return;
    ZetRoiRect rect;
    ownRoiRect(mask, &rect);
    *position = {mask, rect.yOffset, rect.xOffset};
    f->width = std::min(f->width, rect.width);
    f->height = std::min(f->height, rect.height);
}

bool resolveFrame(Frame* f) {
    ZetRoiRect src;
    ZetRoiRect dst;
    ownRoiRect(f->src, &src);
    ownRoiRect(f->dst, &dst);
    f->width = std::min(src.width, dst.width);
    f->height = std::min(src.height, dst.height);
    f->srcStart = {src.yOffset, src.xOffset};
    f->dstStart = {dst.yOffset, dst.xOffset};
    lowerToMask(f->src->maskImage, f, &f->srcMask);
    lowerToMask(f->dst->maskImage, f, &f->dstMask);
    return f->width > 0 && f->height > 0;
}

MaskPosition moved(const MaskPosition& mask, const Piece& piece) {
    return {mask.image, mask.y + piece.y, mask.x + piece.x};
}

FilterBlock commonBlock(const Frame& f, const Target& target, const Piece& piece) {
    FilterBlock b{};
    b.srcChannel = f.srcChannel;
    b.dstChannel = f.dstChannel;
    b.dstData = target.data;
    b.dstRowStep = target.rowStep;
    b.dstPlaneStep = target.planeStep;
    b.dstY = piece.inTarget.y;
    b.dstX = piece.inTarget.x;
    b.height = piece.height;
    b.width = piece.width;
    b.params = f.params;
    b.nChannels = f.dst->nChannels;
    b.depthIndex = depthIndex(f.dst->depth);
    b.dataOrder = f.dst->dataOrder;
    b.srcMask = moved(f.srcMask, piece);
    b.dstMask = moved(f.dstMask, piece);
    return b;
}

bool runOnBlock(const Frame& f, const Target& target, const Piece& piece) {
    FilterBlock b = commonBlock(f, target, piece);
    const std::int64_t height = std::int64_t{piece.height} + f.params->nRows - 1;
    const std::int64_t width = std::int64_t{piece.width} + f.params->nCols - 1;
    if (height > INT32_MAX || width > INT32_MAX) return false;
    std::int32_t rowStep = 0;
    const Block<std::uint8_t> block(static_cast<std::uint8_t*>(
        ownGetRect(f.src, f.srcStart.x + piece.x - f.params->anchorX, f.srcStart.y + piece.y - f.params->anchorY,
                   static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), &rowStep)));
    if (!block) return false;
    b.srcData = block.get();
    b.srcRowStep = rowStep;
    b.srcPlaneStep = rowStep * height;
    return f.routine(b);
}

bool runInPlace(const Frame& f, const Target& target, const Piece& piece) {
    FilterBlock b = commonBlock(f, target, piece);
    b.srcData = pixelData(f.src);
    b.srcY = f.srcStart.y + piece.y - f.params->anchorY;
    b.srcX = f.srcStart.x + piece.x - f.params->anchorX;
    b.srcRowStep = f.src->widthStep;
    b.srcPlaneStep = planeBytes(f.src);
    return f.routine(b);
}

bool runZone(const Frame& f, const Target& target, const Piece& zone) {
    for (std::int32_t done = 0; done < zone.height; done += kBandRows) {
        Piece band = zone;
        band.y += done;
        band.inTarget.y += done;
        band.height = std::min(kBandRows, zone.height - done);
        if (!runOnBlock(f, target, band)) return false;
    }
    return true;
}

// Takes rows or columns off a piece, from its near edge or its far one.
Piece takeColumns(Piece* piece, std::int32_t count, bool fromLeft) {
    Piece zone = *piece;
    zone.width = count;
    if (!fromLeft) {
        zone.x += piece->width - count;
        zone.inTarget.x += piece->width - count;
    } else {
        piece->x += count;
        piece->inTarget.x += count;
    }
    piece->width -= count;
    return zone;
}

Piece takeRows(Piece* piece, std::int32_t count, bool fromTop) {
    Piece zone = *piece;
    zone.height = count;
    if (!fromTop) {
        zone.y += piece->height - count;
        zone.inTarget.y += piece->height - count;
    } else {
        piece->y += count;
        piece->inTarget.y += count;
    }
    piece->height -= count;
    return zone;
}

std::int32_t limited(std::int64_t reach, std::int32_t size) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(reach, 0, size));
}

// Zones whose windows leave the image, then the rest from the image's own memory.
bool runZones(const Frame& f, const Target& target, Piece piece) {
    const ZetFilterParams& p = *f.params;
    const std::int32_t left = limited(std::int64_t{p.anchorX} - (f.srcStart.x + piece.x), piece.width);
    if (left > 0 && !runZone(f, target, takeColumns(&piece, left, true))) return false;
    const std::int64_t rightEnd = std::int64_t{f.srcStart.x} + piece.x + piece.width - p.anchorX + p.nCols - 1;
    const std::int32_t right = limited(rightEnd - f.src->width, piece.width);
    if (right > 0 && !runZone(f, target, takeColumns(&piece, right, false))) return false;
    if (piece.width == 0) return true;
    const std::int32_t top = limited(std::int64_t{p.anchorY} - (f.srcStart.y + piece.y), piece.height);
    if (top > 0 && !runZone(f, target, takeRows(&piece, top, true))) return false;
    const std::int64_t bottomEnd = std::int64_t{f.srcStart.y} + piece.y + piece.height - p.anchorY + p.nRows - 1;
    const std::int32_t bottom = limited(bottomEnd - f.src->height, piece.height);
    if (bottom > 0 && !runZone(f, target, takeRows(&piece, bottom, false))) return false;
    return piece.height == 0 || runInPlace(f, target, piece);
}

bool runDestinationTiles(const Frame& f) {
    const TileGrid grid = tileGrid(f.dst, f.height, f.width);
    const std::ptrdiff_t rowStep = ownTileRowBytes(f.dst);
    for (std::int32_t r = 0; r < grid.y.count; ++r)
        for (std::int32_t c = 0; c < grid.x.count; ++c) {
            const Piece piece{grid.y.distance(r),
                              grid.x.distance(c),
                              grid.y.bandSize(r),
                              grid.x.bandSize(c),
                              {grid.y.offset(r), grid.x.offset(c)}};
            auto* tile =
                static_cast<std::uint8_t*>(fetchTile(f.dst, grid.x.first + c, grid.y.first + r, ZET_TILE_WRITE));
            if (!tile) return false;
            const Target target{tile, rowStep, rowStep * f.dst->tileInfo->height};
            const bool done = f.src->tileInfo ? runOnBlock(f, target, piece) : runZones(f, target, piece);
            releaseTile(f.dst, grid.x.first + c, grid.y.first + r);
            if (!done) return false;
        }
    return true;
}

// Pieces of the source's tile size, counted from the region's first pixel.
bool runSourcePieces(const Frame& f, const Target& target) {
    const ZetTileInfo& tiles = *f.src->tileInfo;
    for (std::int64_t y = 0; y < f.height; y += tiles.height)
        for (std::int64_t x = 0; x < f.width; x += tiles.width) {
            const auto py = static_cast<std::int32_t>(y);
            const auto px = static_cast<std::int32_t>(x);
            const Piece piece{py,
                              px,
                              std::min(tiles.height, f.height - py),
                              std::min(tiles.width, f.width - px),
                              {f.dstStart.y + py, f.dstStart.x + px}};
            if (!runOnBlock(f, target, piece)) return false;
        }
    return true;
}

bool runPass(const Frame& f) {
    if (f.dst->tileInfo) return runDestinationTiles(f);
    const Target target{pixelData(f.dst), f.dst->widthStep, planeBytes(f.dst)};
    if (f.src->tileInfo) return runSourcePieces(f, target);
    return runZones(f, target, {0, 0, f.height, f.width, f.dstStart});
}

}  // namespace

void ownFilterFrame(ZetImage* srcImage, ZetImage* dstImage, const ZetFilterParams& params, FilterRoutine routine) {
    Frame f{};
    f.src = srcImage;
    f.dst = dstImage;
    f.params = &params;
    f.routine = routine;
    if (!resolveFrame(&f)) return;
    f.srcChannel = regionCoi(srcImage);
    f.dstChannel = regionCoi(dstImage);
    if (f.dstChannel != 0) {
        f.srcChannel = std::max(f.srcChannel, 1);
        runPass(f);
        return;
    }
    if (!srcImage->alphaChannel && !dstImage->alphaChannel) return static_cast<void>(runPass(f));
    for (std::int32_t channel = 1; channel < dstImage->nChannels; ++channel) {
        f.srcChannel = f.dstChannel = channel;
        if (!runPass(f)) return;
    }
}

const std::uint8_t* ownMaskPosition(const ZetImage* mask, std::int32_t y, std::int32_t x, std::uint8_t* bit) {
    *bit = static_cast<std::uint8_t>(0x80 >> (x & 7));
    return pixelData(mask) + std::ptrdiff_t{y} * mask->widthStep + (x >> 3);
}

void placeBlockMask(const FilterBlock& block, BlockMask* mask) {
    mask->one = block.srcMask.image ? block.srcMask : block.dstMask;
    mask->other = block.srcMask.image ? block.dstMask : MaskPosition{};
}

bool openBlockMask(const FilterBlock& block, BlockMask* mask) {
    placeBlockMask(block, mask);
    if (!mask->other.image) return true;
    mask->joined = allocBlock<std::uint8_t>(std::ptrdiff_t{block.width} / 8 + 1);
    return mask->joined != nullptr;
}

MaskBits maskBitsOfRow(const BlockMask& mask, std::int32_t width, std::ptrdiff_t row) {
    const auto bits = [row](const MaskPosition& m) -> BitSource {
        return {pixelData(m.image) + (m.y + row) * m.image->widthStep, m.x};
    };
    const BitSource one = bits(mask.one);
    if (!mask.other.image) return {one.data, one.bit};
    const std::array<BitSource, 2> both = {one, bits(mask.other)};
    std::uint8_t* joined = mask.joined.get();
    joined[width / 8] = 0;  // its last bits are no part of the run and are merged
    combineBits(both, joined, 0, width, [](std::uint64_t, const auto& s) { return s[0] & s[1]; });
    return {joined, 0};
}

FilterLanes filterLanes(const FilterBlock& b) {
    const std::ptrdiff_t bytes = sampleBytes(kDepths[static_cast<std::size_t>(b.depthIndex)]);
    const bool pixelOrder = b.dataOrder == 0 && b.nChannels > 1;
    const std::int32_t step = pixelOrder ? b.nChannels : 1;
    const std::ptrdiff_t srcChannel = std::max(b.srcChannel - 1, 0);
    const std::ptrdiff_t dstChannel = std::max(b.dstChannel - 1, 0);
    const std::uint8_t* src = b.srcData + b.srcY * b.srcRowStep + b.srcX * step * bytes;
    std::uint8_t* dst = b.dstData + b.dstY * b.dstRowStep + b.dstX * step * bytes;
    if (pixelOrder) return {1, b.dstChannel == 0 ? step : 1, step, src + srcChannel * bytes, dst + dstChannel * bytes};
    const std::int32_t planes = b.dstChannel == 0 ? b.nChannels : 1;
    return {planes, 1, 1, src + srcChannel * b.srcPlaneStep, dst + dstChannel * b.dstPlaneStep};
}

}  // namespace zetpxl
