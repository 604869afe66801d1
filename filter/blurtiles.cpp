// Blur into and out of tiles.
//   tiles.1 tiles are walked column by column, in each from top to bottom
//   tiles.2 in place, results wait in a ring of tile-sized images until no later piece needs the tile's old pixels
//   tiles.3 a rectangle that reaches further than the neighbouring tile, or wrapped borders, need a slot for every piece
#include <algorithm>

#include "core/alloc.h"
#include "core/region.h"
#include "core/tiles.h"
#include "filter/blur.h"

namespace zetpxl {

namespace {

// A header of the tile's size without data, whose channels all count.
ZetImage* createTileView(const ZetImage* image) {
    return zetCreateImageHeader(image->nChannels, 0, image->depth, image->colorModel, image->channelSeq,
                                image->dataOrder, image->origin, image->align, image->tileInfo->width,
                                image->tileInfo->height, nullptr, nullptr, nullptr, nullptr);
}

bool noMemory() {
    report(kBlur, ZET_StatusNoMemory, "Allocation failure");
    return false;
}

bool noTile(const char* context) {
    report(kBlur, ZET_StatusError, context);
    return false;
}

BlurArea areaOf(const TileGrid& grid, std::int32_t col, std::int32_t row) {
    return {grid.x.distance(col), grid.y.distance(row), grid.x.bandSize(col), grid.y.bandSize(row)};
}

// Calls piece(col, row), both from the grid's first tile, until one gives false.
template <class Piece>
bool walkColumns(const TileGrid& grid, Piece piece) {
    for (std::int32_t col = 0; col < grid.x.count; ++col)
        for (std::int32_t row = 0; row < grid.y.count; ++row)
            if (!piece(col, row)) return false;
    return true;
}

bool blurTile(const BlurCall& call, const TileGrid& grid, ZetImage* view, std::int32_t col, std::int32_t row) {
    const BlurArea area = areaOf(grid, col, row);
    BlurSource source;
    if (!openPiece(call, area, BlurFetch::Whole, &source)) return false;
    const std::int32_t tileCol = grid.x.first + col;
    const std::int32_t tileRow = grid.y.first + row;
    view->imageData = fetchTile(call.dst, tileCol, tileRow, ZET_TILE_WRITE);
    if (!view->imageData) return noTile("Error get tile to write");
    const bool done = blurInto(call, area, &source, view, grid.x.offset(col), grid.y.offset(row));
    releaseTile(call.dst, tileCol, tileRow);
    return done;
}

struct RingSlot {
    ZetImage* image;
    std::int32_t col;
    std::int32_t row;
    bool occupied;
};

struct Ring {
    const BlurCall* call;
    ZetImage* view;
    Block<RingSlot> slots;
    std::int32_t count;
    std::int32_t next;
};

bool allocateSlot(const ZetImage* image, RingSlot* slot) {
    *slot = {createTileView(image), 0, 0, false};
    if (!slot->image) return noMemory();
    if (image->depth == ZET_DEPTH_32F) {
        zetAllocateImageFP(slot->image, 0, 0);
    } else {
        zetAllocateImage(slot->image, 0, 0);
    }
    return slot->image->imageData || noMemory();
}

bool allocateRing(Ring* ring, std::int32_t count) {
    ring->view = createTileView(ring->call->dst);
    if (!ring->view) return noMemory();
    ring->slots = allocBlock<RingSlot>(count);
    if (!ring->slots) return noMemory();
    for (ring->count = 0; ring->count < count;)
        if (!allocateSlot(ring->call->dst, &ring->slots[static_cast<std::size_t>(ring->count++)])) return false;
    return true;
}

void freeRing(Ring* ring) {
    for (std::int32_t i = 0; i < ring->count; ++i)
        zetDeallocate(ring->slots[static_cast<std::size_t>(i)].image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
    zetDeallocate(ring->view, ZET_IMAGE_HEADER);
}

bool writeBack(Ring* ring, RingSlot* slot) {
    if (!slot->occupied) return true;
    slot->occupied = false;
    ZetImage* dst = ring->call->dst;
    ring->view->imageData = fetchTile(dst, slot->col, slot->row, ZET_TILE_WRITE);
    if (!ring->view->imageData) return noTile("Error get tile to write");
    zetCopy(slot->image, ring->view);
    releaseTile(dst, slot->col, slot->row);
    return !reportBacktrace(kBlur);
}

// The tile's present pixels: those outside the piece and under clear mask bits keep their values.
bool readTile(Ring* ring, RingSlot* slot) {
    ZetImage* dst = ring->call->dst;
    ring->view->imageData = fetchTile(dst, slot->col, slot->row, ZET_TILE_READ);
    if (!ring->view->imageData) return noTile("Error get tile to read");
    zetCopy(ring->view, slot->image);
    releaseTile(dst, slot->col, slot->row);
    return !reportBacktrace(kBlur);
}

bool blurInRing(Ring* ring, const TileGrid& grid, std::int32_t col, std::int32_t row) {
    RingSlot* slot = &ring->slots[static_cast<std::size_t>(ring->next)];
    if (!writeBack(ring, slot)) return false;
    slot->col = grid.x.first + col;
    slot->row = grid.y.first + row;
    if (!readTile(ring, slot)) return false;
    const BlurArea area = areaOf(grid, col, row);
    BlurSource source;
    if (!openPiece(*ring->call, area, BlurFetch::Whole, &source)) return false;
    if (!blurInto(*ring->call, area, &source, slot->image, grid.x.offset(col), grid.y.offset(row))) return false;
    slot->occupied = true;
    ring->next = (ring->next + 1) % ring->count;
    return true;
}

bool reachesFar(const BlurCall& c) {
    const ZetTileInfo& tiles = *c.dst->tileInfo;
    const bool wraps = std::any_of(std::begin(c.src->borderMode), std::end(c.src->borderMode),
                                   [](std::int32_t mode) { return (mode & 3) == ZET_BORDER_WRAP; });
    return wraps || c.anchorX > tiles.width || c.nCols - c.anchorX - 1 > tiles.width || c.anchorY > tiles.height ||
           c.nRows - c.anchorY - 1 > tiles.height;
}

std::int32_t slotCount(const BlurCall& call, const TileGrid& grid) {
    if (!reachesFar(call)) return grid.y.count + 2;
    const std::int64_t pieces = std::int64_t{grid.x.count} * grid.y.count;
    return static_cast<std::int32_t>(std::min<std::int64_t>(pieces, INT32_MAX));
}

}  // namespace

void blurDestinationTiles(const BlurCall& call) {
    ZetImage* view = createTileView(call.dst);
    if (!view) return static_cast<void>(noMemory());
    const TileGrid grid = tileGrid(call.dst, call.height, call.width);
    walkColumns(grid, [&](std::int32_t col, std::int32_t row) { return blurTile(call, grid, view, col, row); });
    zetDeallocate(view, ZET_IMAGE_HEADER);
}

void blurSourceTiles(const BlurCall& call) {
    const TileGrid grid = tileGrid(call.src, call.height, call.width);
    walkColumns(grid, [&](std::int32_t col, std::int32_t row) {
        const BlurArea area = areaOf(grid, col, row);
        BlurSource source;
        return openPiece(call, area, BlurFetch::Whole, &source) &&
               blurInto(call, area, &source, call.dst, call.dstRegion.x + area.x, call.dstRegion.y + area.y);
    });
}

void blurTilesInPlace(const BlurCall& call) {
    if (reportBacktrace(kBlur)) return;
    const TileGrid grid = tileGrid(call.dst, call.height, call.width);
    Ring ring{&call, nullptr, {}, 0, 0};
    bool done =
        allocateRing(&ring, slotCount(call, grid)) &&
        walkColumns(grid, [&](std::int32_t col, std::int32_t row) { return blurInRing(&ring, grid, col, row); });
    for (std::int32_t i = 0; done && i < ring.count; ++i)
        done = writeBack(&ring, &ring.slots[static_cast<std::size_t>(i)]);
    freeRing(&ring);
}

}  // namespace zetpxl
