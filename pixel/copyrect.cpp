// Moves a rectangle of an image, flipped or not, to a plain block; tiles are fetched a tile row at a time.
#include <algorithm>
#include <cstring>

#include "core/check.h"
#include "core/region.h"
#include "core/tiles.h"
#include "pixel/bits.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

// Memory that pixels are read from: an image in one block, or a tile.
struct SourceMemory {
    const std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeStep;
};

struct BlockPlace {
    std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeStep;
    std::ptrdiff_t pixelBytes;  // 0 for 1U
    std::int32_t nPlanes;
    std::int32_t x;
    std::int32_t y;
};

// One axis of the rectangle from its first to its last coordinate, in either direction.
struct Axis {
    std::int32_t from;
    std::int32_t to;

    std::int32_t step() const { return to < from ? -1 : 1; }
    std::int32_t length() const { return (to < from ? from - to : to - from) + 1; }
};

void copyBitsReversed(const std::uint8_t* src, std::uint8_t* dst, std::ptrdiff_t srcBit, std::ptrdiff_t dstBit,
                      std::ptrdiff_t length) {
    for (std::ptrdiff_t i = 0; i < length; ++i) ownCopyBits(src, dst, srcBit - i, dstBit + i, 1);
}

void copyPixelsReversed(const std::uint8_t* src, std::uint8_t* dst, std::ptrdiff_t pixelBytes, std::ptrdiff_t length) {
    for (std::ptrdiff_t i = 0; i < length; ++i)
        std::memcpy(dst + i * pixelBytes, src - i * pixelBytes, static_cast<std::size_t>(pixelBytes));
}

void copyRow(const std::uint8_t* src, const Axis& x, const BlockPlace& place, std::uint8_t* dst) {
    const std::ptrdiff_t length = x.length();
    if (place.pixelBytes == 0) {
        if (x.step() > 0) return ownCopyBits(src, dst, x.from, place.x, length);
        return copyBitsReversed(src, dst, x.from, place.x, length);
    }
    const std::uint8_t* first = src + x.from * place.pixelBytes;
    std::uint8_t* target = dst + place.x * place.pixelBytes;
    if (x.step() < 0) return copyPixelsReversed(first, target, place.pixelBytes, length);
    std::memcpy(target, first, static_cast<std::size_t>(length * place.pixelBytes));
}

void copyMemory(const SourceMemory& source, const Axis& x, const Axis& y, const BlockPlace& place) {
    for (std::ptrdiff_t plane = 0; plane < place.nPlanes; ++plane) {
        std::ptrdiff_t row = y.from;
        for (std::ptrdiff_t j = 0; j < y.length(); ++j, row += y.step())
            copyRow(source.data + plane * source.planeStep + row * source.rowStep, x, place,
                    place.data + plane * place.planeStep + (place.y + j) * place.rowStep);
    }
}

// The tiles that an axis meets, walked in its direction, and the share of each.
struct TileAxis {
    Axis axis;
    std::int32_t tileSize;

    std::int32_t firstTile() const { return axis.from / tileSize; }
    std::int32_t count() const { return Axis{axis.from / tileSize, axis.to / tileSize}.length(); }
    std::int32_t tile(std::int32_t i) const { return firstTile() + i * axis.step(); }

    // Inside tile i: from its near edge, or the corner's offset, to its far edge, or the other corner's offset.
    Axis share(std::int32_t i) const {
        const bool forward = axis.step() > 0;
        const std::int32_t near = forward ? 0 : tileSize - 1;
        const std::int32_t far = tileSize - 1 - near;
        return {i == 0 ? axis.from % tileSize : near, i == count() - 1 ? axis.to % tileSize : far};
    }
};

bool fetchRow(ZetImage* image, const TileAxis& columns, std::int32_t tileRow, void** tiles) {
    bool complete = true;
    for (std::int32_t c = 0; c < columns.count(); ++c) {
        tiles[c] = fetchTile(image, columns.tile(c), tileRow, ZET_TILE_READ);
        complete = complete && tiles[c];
    }
    return complete;
}

// A tile whose fetch failed has no release.
void releaseRow(ZetImage* image, const TileAxis& columns, std::int32_t tileRow, void* const* tiles) {
    for (std::int32_t c = columns.count() - 1; c >= 0; --c) {
        if (!tiles[c]) continue;
        image->tileInfo->tileData = tiles[c];
        releaseTile(image, columns.tile(c), tileRow);
    }
}

bool copyTileRow(ZetImage* image, const TileAxis& columns, std::int32_t tileRow, const Axis& rows,
                 std::ptrdiff_t tileRowBytes, BlockPlace place, void** tiles) {
    const bool complete = fetchRow(image, columns, tileRow, tiles);
    for (std::int32_t c = 0; complete && c < columns.count(); ++c) {
        const SourceMemory tile{static_cast<const std::uint8_t*>(tiles[c]), tileRowBytes,
                                tileRowBytes * image->tileInfo->height};
        const Axis share = columns.share(c);
        copyMemory(tile, share, rows, place);
        place.x += share.length();
    }
    releaseRow(image, columns, tileRow, tiles);
    return complete;
}

bool copyTiles(ZetImage* image, const Axis& x, const Axis& y, BlockPlace place) {
    const TileAxis columns{x, image->tileInfo->width};
    const TileAxis rows{y, image->tileInfo->height};
    const std::ptrdiff_t tileRowBytes = ownTileRowBytes(image);
    const Block<void*> tiles = allocBlock<void*>(columns.count());
    if (!tiles) return false;
    for (std::int32_t r = 0; r < rows.count(); ++r) {
        const Axis share = rows.share(r);
        if (!copyTileRow(image, columns, rows.tile(r), share, tileRowBytes, place, tiles.get())) return false;
        place.y += share.length();
    }
    return true;
}

}  // namespace

std::int32_t ownCopyRect(ZetImage* image, std::int32_t x0, std::int32_t y0, std::int32_t x1, std::int32_t y1,
                         void* block, std::int32_t dstX, std::int32_t dstY, std::ptrdiff_t rowStep,
                         std::ptrdiff_t planeStep, std::int32_t pixelBytes, std::int32_t nPlanes) {
    const BlockPlace place{static_cast<std::uint8_t*>(block), rowStep, planeStep, pixelBytes, nPlanes, dstX, dstY};
    const Axis x{x0, x1};
    const Axis y{y0, y1};
    if (image->tileInfo) return copyTiles(image, x, y, place) ? 0 : 1;
    copyMemory({pixelData(image), image->widthStep, planeBytes(image)}, x, y, place);
    return 0;
}

}  // namespace zetpxl
