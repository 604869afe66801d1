// Convolution into tiles.
//   tiles.1 a piece is read in place while the tile's whole rectangle, grown by the margins, lies inside the image
//   tiles.2 in place, each stripe's copy is taken while the rows that it needs are unchanged; the first stripe is written
//           last, since the second reaches into it
//   tiles.3 a kernel that reaches further than one tile row, or wrapped borders, need every stripe's copy before any write
//   tiles.4 a tile that cannot be had ends the call; every tile that was had is released
#include <algorithm>

#include "core/alloc.h"
#include "core/region.h"
#include "core/tiles.h"
#include "filter/convdriver.h"

namespace zetpxl {

namespace {

// Where regions stood before the walk moved them.
struct WalkStart {
    ZetROI src;
    ZetROI dst;
    ZetROI mask;
};

ZetImage* createTileImage(const ZetImage& dst) {
    return zetCreateImageHeader(dst.nChannels, dst.alphaChannel, dst.depth, dst.colorModel, dst.channelSeq,
                                dst.dataOrder, dst.origin, dst.align, dst.tileInfo->width, dst.tileInfo->height,
                                nullptr, dst.maskImage, dst.imageTag, nullptr);
}

bool leavesImage(const ZetROI& roi, const ConvMargins& m, const ZetImage& image) {
    const std::int64_t x = std::int64_t{roi.xOffset} - m.left;
    const std::int64_t y = std::int64_t{roi.yOffset} - m.top;
    return x < 0 || y < 0 || x + roi.width + m.extentX() - 1 > image.width ||
           y + roi.height + m.extentY() - 1 > image.height;
}

void equalise(ZetROI* a, ZetROI* b) {
    a->width = b->width = std::min(a->width, b->width);
    a->height = b->height = std::min(a->height, b->height);
}

// One tile's pixels, once the tile is held.
std::int32_t filterTile(Convolution* c, const ConvTileReading& reading, const ZetImage* tileImage, ZetROI* piece) {
    ZetROI& roi = *reading.read->roi;
    const bool copies = reading.alwaysCopy || (reading.checkEdges && leavesImage(roi, c->margins, c->src));
    if (!copies) {
        equalise(&roi, piece);
        if (roi.width < 1 || roi.height < 1) return kConvDone;
        return ownConvolveRegion(reading.direct, tileImage, &c->plan, c->margins);
    }
    BorderedCopy copy;
    if (!ownBorderedCopy(reading.read, c->margins, &copy)) return kConvNoMemory;
    equalise(&copy.roi, piece);
    const std::int32_t result = ownConvolveRegion(copy.image, tileImage, &c->plan, c->margins);
    freeBorderedCopy(&copy);
    return result;
}

// The piece of the region in a tile, first in the image, then in the tile; moves source and mask along.
ZetROI placePiece(Convolution* c, const ConvTileReading& reading, const WalkStart& start, std::int32_t col,
                  std::int32_t row) {
    const ZetTileInfo& tiles = *c->dst.tileInfo;
    const std::int32_t tileX = col * tiles.width;
    const std::int32_t tileY = row * tiles.height;
    const std::int32_t x = std::max(start.dst.xOffset, tileX);
    const std::int32_t y = std::max(start.dst.yOffset, tileY);
    const std::int64_t right =
        std::min(std::int64_t{start.dst.xOffset} + start.dst.width, std::int64_t{tileX} + tiles.width);
    const std::int64_t bottom =
        std::min(std::int64_t{start.dst.yOffset} + start.dst.height, std::int64_t{tileY} + tiles.height);
    const std::int32_t dx = x - start.dst.xOffset;
    const std::int32_t dy = y - start.dst.yOffset;
    *reading.read->roi = {start.src.coi, start.src.xOffset + dx, start.src.yOffset + dy, tiles.width, tiles.height};
    c->maskRect.xOffset = start.mask.xOffset + dx;
    c->maskRect.yOffset = start.mask.yOffset + dy;
    return {start.dst.coi, x - tileX, y - tileY, static_cast<std::int32_t>(right - x),
            static_cast<std::int32_t>(bottom - y)};
}

std::int32_t runTile(Convolution* c, const ConvTileReading& reading, const WalkStart& start, ZetImage* tileImage,
                     std::int32_t col, std::int32_t row) {
    ZetROI piece = placePiece(c, reading, start, col, row);
    tileImage->roi = &piece;
    tileImage->imageData = fetchTile(&c->dst, col, row, ZET_TILE_WRITE);
    if (!tileImage->imageData) {
        report(kConvolve2D, ZET_StatusError, "Error get tile to write");
        return kConvReported;
    }
    const std::int32_t result = filterTile(c, reading, tileImage, &piece);
    releaseTile(&c->dst, col, row);
    return result;
}

std::int32_t walkTiles(Convolution* c, const ConvTileReading& reading, ZetImage* tileImage) {
    const WalkStart start{*reading.read->roi, c->dstRect, c->maskRect};
    const TileGrid grid = tileGrid(&c->dst, start.dst.height, start.dst.width);
    std::int32_t result = kConvDone;
    for (std::int32_t r = 0; r < grid.y.count && result == kConvDone; ++r)
        for (std::int32_t t = 0; t < grid.x.count && result == kConvDone; ++t)
            result = runTile(c, reading, start, tileImage, grid.x.first + t, grid.y.first + r);
    *reading.read->roi = start.src;
    c->maskRect = start.mask;
    return result;
}

// Stripes of an in-place call: where they lie in the region and how high they are.
struct Stripes {
    ZetROI src;
    ZetROI dst;
    ZetROI mask;
    std::int32_t firstHeight;
    std::int32_t tileHeight;
    std::int32_t count;

    std::int32_t top(std::int32_t k) const { return k == 0 ? 0 : firstHeight + (k - 1) * tileHeight; }
    std::int32_t height(std::int32_t k) const {
        return k == 0 ? firstHeight : std::min(tileHeight, dst.height - top(k));
    }
};

Stripes cutStripes(const Convolution& c) {
    Stripes s{c.srcRect, c.dstRect, c.maskRect, 0, c.dst.tileInfo->height, 0};
    s.firstHeight = std::min(s.tileHeight - s.dst.yOffset % s.tileHeight, s.dst.height);
    const std::int64_t rest = std::int64_t{s.dst.height} - s.firstHeight;
    s.count = static_cast<std::int32_t>(1 + (rest + s.tileHeight - 1) / s.tileHeight);
    return s;
}

bool copyStripe(Convolution* c, const Stripes& s, std::int32_t k, BorderedCopy* copy) {
    c->srcRect.yOffset = s.src.yOffset + s.top(k);
    c->srcRect.height = s.height(k);
    return ownBorderedCopy(&c->src, c->margins, copy);
}

// Writes stripe k from its copy and releases that.
std::int32_t writeStripe(Convolution* c, const Stripes& s, std::int32_t k, BorderedCopy* copy) {
    c->dstRect.yOffset = s.dst.yOffset + s.top(k);
    c->dstRect.height = s.height(k);
    c->maskRect.yOffset = s.mask.yOffset + s.top(k);
    copy->image->roi = &copy->roi;
    const std::int32_t result = ownConvolveTiles(c, {copy->image, copy->image, false, false});
    freeBorderedCopy(copy);
    return result;
}

// Stripes from the second on, one copy ahead of the writes.
std::int32_t writeLaterStripes(Convolution* c, const Stripes& s) {
    BorderedCopy current;
    if (s.count > 1 && !copyStripe(c, s, 1, &current)) return kConvNoMemory;
    for (std::int32_t k = 1; k < s.count; ++k) {
        BorderedCopy next;
        const bool isLast = k + 1 == s.count;
        if (!isLast && !copyStripe(c, s, k + 1, &next)) {
            freeBorderedCopy(&current);
            return kConvNoMemory;
        }
        const std::int32_t result = writeStripe(c, s, k, &current);
        if (result != kConvDone) {
            if (!isLast) freeBorderedCopy(&next);
            return result;
        }
        current = next;
    }
    return kConvDone;
}

std::int32_t stripesOneAhead(Convolution* c, const Stripes& s) {
    BorderedCopy first;
    if (!copyStripe(c, s, 0, &first)) return kConvNoMemory;
    const std::int32_t later = writeLaterStripes(c, s);
    if (later == kConvReported) {
        freeBorderedCopy(&first);
        return later;
    }
    const std::int32_t result = writeStripe(c, s, 0, &first);
    return later != kConvDone ? later : result;
}

// Copies of all stripes, or of none.
bool copyAllStripes(Convolution* c, const Stripes& s, BorderedCopy* copies) {
    for (std::int32_t k = 0; k < s.count; ++k) {
        if (copyStripe(c, s, k, copies + k)) continue;
        while (k-- > 0) freeBorderedCopy(copies + k);
        return false;
    }
    return true;
}

std::int32_t stripesAllCopied(Convolution* c, const Stripes& s) {
    const Block<BorderedCopy> copies = allocBlock<BorderedCopy>(s.count);
    if (!copies || !copyAllStripes(c, s, copies.get())) return kConvNoMemory;
    std::int32_t result = kConvDone;
    for (std::int32_t i = 1; i <= s.count; ++i) {
        const std::int32_t k = i % s.count;  // the first stripe comes last
        BorderedCopy* copy = copies.get() + k;
        if (result == kConvDone) {
            result = writeStripe(c, s, k, copy);
        } else {
            freeBorderedCopy(copy);
        }
    }
    return result;
}

bool reachesFar(const Convolution& c) {
    const std::int32_t tileHeight = c.dst.tileInfo->height;
    const bool wraps = std::any_of(std::begin(c.src.borderMode), std::end(c.src.borderMode),
                                   [](std::int32_t mode) { return (mode & 3) == ZET_BORDER_WRAP; });
    return wraps || c.margins.top > tileHeight || c.margins.bottom > tileHeight;
}

}  // namespace

std::int32_t ownConvolveTiles(Convolution* c, const ConvTileReading& reading) {
    ZetImage* tileImage = createTileImage(c->dst);
    if (!tileImage) return kConvNoMemory;
    const std::int32_t result = walkTiles(c, reading, tileImage);
    ownDeallocateHeader(tileImage);
    return result;
}

std::int32_t convolveStripes(Convolution* c) {
    const Stripes stripes = cutStripes(*c);
    return reachesFar(*c) ? stripesAllCopied(c, stripes) : stripesOneAhead(c, stripes);
}

}  // namespace zetpxl
