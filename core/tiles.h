// The tile grid of a region, bands over it, and the calls of the tile callback.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zetpxl.h"

namespace zetpxl {

// The grid that a region of the given size touches; 128 by 128 blocks for an untiled image.
void ownTileGrid(const ZetImage* image, std::int32_t height, std::int32_t width, std::int32_t* startX,
                 std::int32_t* startY, std::int32_t* tileHeight, std::int32_t* tileWidth, std::int32_t* firstCol,
                 std::int32_t* firstRow, std::int32_t* nCols, std::int32_t* nRows);

// One direction of a walk over a grid.
struct TileBands {
    std::int32_t start;  // offset of the region in its first tile
    std::int32_t tileSize;
    std::int32_t first;  // index of the first tile
    std::int32_t count;
    std::int32_t size;  // of the region

    // Size of band `i` (from 0), its distance from the region's start and its offset in its tile.
    std::int32_t bandSize(std::int32_t i) const;
    std::int32_t distance(std::int32_t i) const;
    std::int32_t offset(std::int32_t i) const { return i == 0 ? start : 0; }
};

struct TileGrid {
    TileBands x;
    TileBands y;
};
TileGrid tileGrid(const ZetImage* image, std::int32_t height, std::int32_t width);

// One fetch; null means failure, which has no release.
inline void* fetchTile(ZetImage* image, std::int32_t col, std::int32_t row, std::int32_t mode) {
    image->tileInfo->callBack(image, col, row, mode);
    return image->tileInfo->tileData;
}

inline void releaseTile(ZetImage* image, std::int32_t col, std::int32_t row) {
    image->tileInfo->callBack(image, col, row, ZET_TILE_RELEASE);
}

// A tiled image shown as one of its tiles. The view lives in the operation's local storage and never reaches the
// application; its region is `roi`, so a view stays where it was made.
struct TileView {
    ZetImage image;
    ZetROI roi;

    TileView() = default;
    TileView(const TileView&) = delete;
    TileView& operator=(const TileView&) = delete;
};

// Makes a view whose size, step and data are still those of the whole image: no tile record, no mask, a region of its
// own that keeps the coi.
void makeView(TileView* view, const ZetImage* image);

// Gives a view the geometry of the image's tiles.
void setTileGeometry(TileView* view, const ZetImage* image);

// A view of a mask: its region's coi is 0.
void makeMaskView(TileView* view, const ZetImage* mask);

}  // namespace zetpxl
