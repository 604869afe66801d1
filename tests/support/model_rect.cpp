#include "tests/support/model_rect.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace zetpxl::test {
namespace {

enum Mode { kConstant, kReplicate, kReflect, kWrap };
enum Side { kTop, kBottom, kLeft, kRight };

Mode modeOf(const ZetImage& image, Side side) { return static_cast<Mode>(image.borderMode[side] & 3); }

std::int32_t floorMod(std::int32_t value, std::int32_t size) { return (value % size + size) % size; }

std::int32_t mirrored(std::int32_t value, std::int32_t size) {
    const std::int32_t p = floorMod(value, 2 * size);
    return p < size ? p : 2 * size - 1 - p;
}

// The image position along one axis that stands for a position outside.
std::int32_t source(Mode mode, std::int32_t value, std::int32_t size) {
    if (mode == kReplicate) return std::clamp(value, 0, size - 1);
    return mode == kReflect ? mirrored(value, size) : floorMod(value, size);
}

std::uint32_t constantOf(const ZetImage& image, Side side) {
    const std::int32_t value = image.borderConst[side];
    const auto word = static_cast<std::uint32_t>(value);
    if (image.depth == ZET_DEPTH_32F) {
        const auto number = static_cast<float>(value);
        std::uint32_t pattern = 0;
        std::memcpy(&pattern, &number, 4);
        return pattern;
    }
    const std::uint32_t bits = image.depth & 0x7FFFFFFFu;
    return bits == 32 ? word : word & ((1u << bits) - 1);
}

// ---- tile calls

struct Held {
    std::int32_t col;
    void* data;
};

bool rowOfTiles(ZetImage& image, std::int32_t row, std::int32_t col0, std::int32_t col1) {
    std::vector<Held> tiles;
    bool all = true;
    const std::int32_t step = col1 >= col0 ? 1 : -1;
    for (std::int32_t col = col0; col != col1 + step; col += step) {
        if (modelFetch(image, col, row, ZET_TILE_READ))
            tiles.push_back({col, image.tileInfo->tileData});
        else
            all = false;
    }
    for (std::size_t i = tiles.size(); i-- > 0;) {
        image.tileInfo->tileData = tiles[i].data;
        modelRelease(image, tiles[i].col, row);
    }
    return all;
}

// A span of positions outside the image along one axis, cut at each multiple of the image's size.
struct Piece {
    std::int32_t first, last;  // image positions
};

std::vector<Piece> pieces(Mode mode, std::int32_t from, std::int32_t to, std::int32_t size) {
    std::vector<Piece> result;
    for (std::int32_t value = from; value < to; ++value) {
        const std::int32_t at = source(mode, value, size);
        if (value == from || floorMod(value, size) == 0)
            result.push_back({at, at});
        else
            result.back().last = at;
    }
    return result;
}

bool periodCalls(ZetImage& image, Mode mode, std::int32_t x0, std::int32_t x1, std::int32_t y0, std::int32_t y1) {
    for (const Piece& rows : pieces(mode, y0, y1, image.height))
        for (const Piece& columns : pieces(mode, x0, x1, image.width))
            if (!modelCopyRectCalls(image, columns.first, rows.first, columns.last, rows.last)) return false;
    return true;
}

// Left, inside and right of the image: the columns [x0, x1) of one replicated row.
bool replicatedRowCalls(ZetImage& image, std::int32_t x0, std::int32_t x1, std::int32_t row) {
    const std::int32_t last = image.width - 1;
    if (x0 < 0 && !modelCopyRectCalls(image, 0, row, 0, row)) return false;
    const std::int32_t in0 = std::max(x0, 0);
    const std::int32_t in1 = std::min(x1, image.width);
    if (in0 < in1 && !modelCopyRectCalls(image, in0, row, in1 - 1, row)) return false;
    return x1 <= image.width || modelCopyRectCalls(image, last, row, last, row);
}

bool outsideRowCalls(ZetImage& image, Side side, std::int32_t x0, std::int32_t x1, std::int32_t y0, std::int32_t y1) {
    if (y0 >= y1) return true;
    const Mode mode = modeOf(image, side);
    if (mode == kConstant) return true;
    if (mode == kReplicate) return replicatedRowCalls(image, x0, x1, side == kTop ? 0 : image.height - 1);
    return periodCalls(image, mode, x0, x1, y0, y1);
}

bool outsideColumnCalls(ZetImage& image, Side side, std::int32_t x0, std::int32_t x1, std::int32_t y0,
                        std::int32_t y1) {
    if (x0 >= x1) return true;
    const Mode mode = modeOf(image, side);
    if (mode == kConstant) return true;
    const std::int32_t edge = side == kLeft ? 0 : image.width - 1;
    if (mode == kReplicate) return modelCopyRectCalls(image, edge, y0, edge, y1 - 1);
    return periodCalls(image, mode, x0, x1, y0, y1);
}

bool insideRowCalls(ZetImage& image, std::int32_t x0, std::int32_t x1, std::int32_t y0, std::int32_t y1) {
    if (y0 >= y1) return true;
    if (!outsideColumnCalls(image, kLeft, x0, std::min(x1, 0), y0, y1)) return false;
    const std::int32_t in0 = std::max(x0, 0);
    const std::int32_t in1 = std::min(x1, image.width);
    if (in0 < in1 && !modelCopyRectCalls(image, in0, y0, in1 - 1, y1 - 1)) return false;
    return outsideColumnCalls(image, kRight, std::max(x0, image.width), x1, y0, y1);
}

}  // namespace

bool modelCopyRectCalls(ZetImage& image, std::int32_t x0, std::int32_t y0, std::int32_t x1, std::int32_t y1) {
    if (!tiled(image)) return true;
    const std::int32_t width = image.tileInfo->width;
    const std::int32_t height = image.tileInfo->height;
    const std::int32_t step = y1 >= y0 ? 1 : -1;
    for (std::int32_t row = y0 / height; row != y1 / height + step; row += step)
        if (!rowOfTiles(image, row, x0 / width, x1 / width)) return false;
    return true;
}

bool modelGetRectCalls(ZetImage& image, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    const std::int32_t x1 = x + width;
    const std::int32_t y1 = y + height;
    return outsideRowCalls(image, kTop, x, x1, y, std::min(y1, 0)) &&
           insideRowCalls(image, x, x1, std::max(y, 0), std::min(y1, image.height)) &&
           outsideRowCalls(image, kBottom, x, x1, std::max(y, image.height), y1);
}

std::uint32_t modelRectSample(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x) {
    const bool outsideRows = y < 0 || y >= image.height;
    const bool outsideColumns = x < 0 || x >= image.width;
    if (!outsideRows && !outsideColumns) return getSample(image, channel, y, x);
    const Side side = outsideRows ? (y < 0 ? kTop : kBottom) : (x < 0 ? kLeft : kRight);
    const Mode mode = modeOf(image, side);
    if (mode == kConstant) return constantOf(image, side);
    // A row side decides for its corners too, in both directions.
    return getSample(image, channel, source(mode, y, image.height), source(mode, x, image.width));
}

}  // namespace zetpxl::test
