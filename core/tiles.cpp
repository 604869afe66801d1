// The tile grid of a region and views of single tiles.
#include "core/tiles.h"

#include <algorithm>

#include "core/check.h"
#include "core/region.h"

namespace zetpxl {

namespace {

// Operations that walk an untiled image in blocks take blocks of this size.
constexpr std::int32_t kBlockSize = 128;

TileBands bandsOf(std::int32_t offset, std::int32_t size, std::int32_t tileSize) {
    const std::int32_t from = std::max(offset, 0);
    const std::int32_t first = from / tileSize;
    const auto last = static_cast<std::int32_t>((std::int64_t{from} + size - 1) / tileSize);
    return {from % tileSize, tileSize, first, last - first + 1, size};
}

}  // namespace

std::int32_t TileBands::bandSize(std::int32_t i) const {
    if (count == 1) return size;
    if (i == 0) return tileSize - start;
    if (i < count - 1) return tileSize;
    return static_cast<std::int32_t>((std::int64_t{start} + size - 1) % tileSize) + 1;
}

std::int32_t TileBands::distance(std::int32_t i) const { return i == 0 ? 0 : i * tileSize - start; }

TileGrid tileGrid(const ZetImage* image, std::int32_t height, std::int32_t width) {
    const ZetTileInfo* tiles = image->tileInfo;
    return {bandsOf(regionX(image), width, tiles ? tiles->width : kBlockSize),
            bandsOf(regionY(image), height, tiles ? tiles->height : kBlockSize)};
}

void ownTileGrid(const ZetImage* image, std::int32_t height, std::int32_t width, std::int32_t* startX,
                 std::int32_t* startY, std::int32_t* tileHeight, std::int32_t* tileWidth, std::int32_t* firstCol,
                 std::int32_t* firstRow, std::int32_t* nCols, std::int32_t* nRows) {
    const TileGrid grid = tileGrid(image, height, width);
    *startX = grid.x.start;
    *startY = grid.y.start;
    *tileWidth = grid.x.tileSize;
    *tileHeight = grid.y.tileSize;
    *firstCol = grid.x.first;
    *firstRow = grid.y.first;
    *nCols = grid.x.count;
    *nRows = grid.y.count;
}

void makeView(TileView* view, const ZetImage* image) {
    view->image = *image;
    view->image.tileInfo = nullptr;
    view->image.maskImage = nullptr;
    view->image.roi = &view->roi;
    view->roi = {regionCoi(image), 0, 0, 0, 0};
}

void setTileGeometry(TileView* view, const ZetImage* image) {
    view->image.width = image->tileInfo->width;
    view->image.height = image->tileInfo->height;
    view->image.widthStep = ownTileRowBytes(image);
}

void makeMaskView(TileView* view, const ZetImage* mask) {
    makeView(view, mask);
    view->roi.coi = 0;
}

}  // namespace zetpxl
