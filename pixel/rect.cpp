// A rectangle of any image, anywhere relative to it, as a plain block.
//   rect.1 rows above and below the image follow the top and bottom mode, corners included; columns left and right of it, in
//          rows of the image, follow the left and right mode
//   rect.2 reflection repeats the edge pixel: -1 gives 0, -2 gives 1
//   rect.3 a reflected or wrapped strip is cut at each multiple of the image's size and copied piece by piece, rows of pieces
//          from the top, in each from the left; a replicated strip copies one pixel, row or column and spreads it
//   rect.4 a constant is cut to the depth's element; for 32F it is converted by value
//   rect.5 a tile row is fetched whole before any of it is copied, and released in reverse order
#include "pixel/rect.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"
#include "pixel/bits.h"
#include "pixel/spread.h"

namespace zetpxl {

namespace {

// A rectangle of the image's coordinates and where it stands in the block.
struct Area {
    std::int64_t x;
    std::int64_t y;
    std::int64_t width;
    std::int64_t height;
};

struct RectBlock {
    ZetImage* image;
    BlockLayout layout;
    std::int64_t x;  // image position of the block's first pixel
    std::int64_t y;
};

std::int32_t blockX(const RectBlock& b, std::int64_t x) { return static_cast<std::int32_t>(x - b.x); }
std::int32_t blockY(const RectBlock& b, std::int64_t y) { return static_cast<std::int32_t>(y - b.y); }

// Copies between image corners to the block position that image position (x, y) has.
bool copyCorners(const RectBlock& b, std::int64_t x, std::int64_t y, std::int64_t x0, std::int64_t y0, std::int64_t x1,
                 std::int64_t y1) {
    const auto word = [](std::int64_t v) { return static_cast<std::int32_t>(v); };
    return ownCopyRect(b.image, word(x0), word(y0), word(x1), word(y1), b.layout.data, blockX(b, x), blockY(b, y),
                       b.layout.rowStep, b.layout.planeStep, b.layout.pixelBytes, b.layout.nPlanes) == 0;
}

// One axis of a reflected or wrapped strip: the piece that starts at `position` and stays in one period of the image's size.
struct Period {
    std::int64_t first;  // image coordinates of the piece's first and last pixel
    std::int64_t last;
    std::int64_t length;
};

Period periodAt(std::int64_t position, std::int64_t end, std::int64_t size, bool reflected) {
    const std::int64_t index = position >= 0 ? position / size : -((-position + size - 1) / size);
    const std::int64_t offset = position - index * size;
    const std::int64_t length = std::min(end - position, size - offset);
    if (reflected && (index & 1)) return {size - 1 - offset, size - offset - length, length};
    return {offset, offset + length - 1, length};
}

bool copyPeriods(const RectBlock& b, const Area& area, bool reflected) {
    const std::int64_t right = area.x + area.width;
    const std::int64_t bottom = area.y + area.height;
    for (std::int64_t y = area.y; y < bottom;) {
        const Period rows = periodAt(y, bottom, b.image->height, reflected);
        for (std::int64_t x = area.x; x < right;) {
            const Period columns = periodAt(x, right, b.image->width, reflected);
            if (!copyCorners(b, x, y, columns.first, rows.first, columns.last, rows.last)) return false;
            x += columns.length;
        }
        y += rows.length;
    }
    return true;
}

bool replicatePixel(const RectBlock& b, const Area& area, std::int64_t column, std::int64_t row) {
    if (area.width < 1) return true;
    if (!copyCorners(b, area.x, area.y, column, row, column, row)) return false;
    ownSpreadPixel(b.layout, blockX(b, area.x), blockY(b, area.y), static_cast<std::int32_t>(area.width),
                   static_cast<std::int32_t>(area.height));
    return true;
}

bool replicateRow(const RectBlock& b, const Area& area, std::int64_t row) {
    if (area.width < 1) return true;
    if (!copyCorners(b, area.x, area.y, area.x, row, area.x + area.width - 1, row)) return false;
    ownSpreadRow(b.layout, blockX(b, area.x), blockY(b, area.y), static_cast<std::int32_t>(area.width),
                 static_cast<std::int32_t>(area.height));
    return true;
}

bool replicateColumn(const RectBlock& b, const Area& area, std::int64_t column) {
    if (!copyCorners(b, area.x, area.y, column, area.y, column, area.y + area.height - 1)) return false;
    ownSpreadColumn(b.layout, blockX(b, area.x), blockY(b, area.y), static_cast<std::int32_t>(area.width),
                    static_cast<std::int32_t>(area.height));
    return true;
}

// The parts of a span of columns: left of the image, inside it, right of it. Empty parts have width 0.
struct Parts {
    Area left;
    Area inside;
    Area right;
};

Parts splitColumns(const Area& area, std::int64_t imageWidth) {
    const std::int64_t end = area.x + area.width;
    const std::int64_t in0 = std::clamp<std::int64_t>(0, area.x, end);
    const std::int64_t in1 = std::clamp<std::int64_t>(imageWidth, in0, end);
    return {{area.x, area.y, in0 - area.x, area.height},
            {in0, area.y, in1 - in0, area.height},
            {in1, area.y, end - in1, area.height}};
}

bool replicateOutsideRows(const RectBlock& b, const Area& area, std::int64_t row) {
    const Parts parts = splitColumns(area, b.image->width);
    return replicatePixel(b, parts.left, 0, row) && replicateRow(b, parts.inside, row) &&
           replicatePixel(b, parts.right, b.image->width - 1, row);
}

// Rows above (side 0) or below (side 1) the image.
bool makeOutsideRows(const RectBlock& b, const Area& area, int side) {
    if (area.height < 1) return true;
    switch (b.image->borderMode[side] & 3) {
        case ZET_BORDER_CONSTANT:
            fillBlockRows(b.layout, blockY(b, area.y), static_cast<std::int32_t>(area.height),
                          borderWord(b.image->depth, b.image->borderConst[side]));
            return true;
        case ZET_BORDER_REPLICATE:
            return replicateOutsideRows(b, area, side == 0 ? 0 : b.image->height - 1);
        case ZET_BORDER_REFLECT:
            return copyPeriods(b, area, true);
        default:
            return copyPeriods(b, area, false);
    }
}

// Columns left (side 2) or right (side 3) of the image, in rows of the image.
bool makeOutsideColumns(const RectBlock& b, const Area& area, int side) {
    if (area.width < 1) return true;
    switch (b.image->borderMode[side] & 3) {
        case ZET_BORDER_CONSTANT:
            fillBlockPixels(b.layout, blockX(b, area.x), blockY(b, area.y), static_cast<std::int32_t>(area.width),
                            static_cast<std::int32_t>(area.height),
                            borderWord(b.image->depth, b.image->borderConst[side]));
            return true;
        case ZET_BORDER_REPLICATE:
            return replicateColumn(b, area, side == 2 ? 0 : b.image->width - 1);
        case ZET_BORDER_REFLECT:
            return copyPeriods(b, area, true);
        default:
            return copyPeriods(b, area, false);
    }
}

bool copyInside(const RectBlock& b, const Area& area) {
    if (area.width < 1) return true;
    return copyCorners(b, area.x, area.y, area.x, area.y, area.x + area.width - 1, area.y + area.height - 1);
}

bool makeRows(const RectBlock& b, const Area& area) {
    if (area.height < 1) return true;
    const Parts parts = splitColumns(area, b.image->width);
    return makeOutsideColumns(b, parts.left, 2) && copyInside(b, parts.inside) && makeOutsideColumns(b, parts.right, 3);
}

bool fillBlock(const RectBlock& b, std::int64_t width, std::int64_t height) {
    const std::int64_t end = b.y + height;
    const std::int64_t in0 = std::clamp<std::int64_t>(0, b.y, end);
    const std::int64_t in1 = std::clamp<std::int64_t>(b.image->height, in0, end);
    return makeOutsideRows(b, {b.x, b.y, width, in0 - b.y}, 0) && makeRows(b, {b.x, in0, width, in1 - in0}) &&
           makeOutsideRows(b, {b.x, in1, width, end - in1}, 1);
}

bool isGoodFormat(const ZetImage* image) {
    const std::int32_t align = image->align;
    return (image->dataOrder == 0 || image->dataOrder == 1) && depthIndex(image->depth) != kNoDepth &&
           (align == 4 || align == 8 || align == 16 || align == 32);
}

// Layout of a block without its memory; false when a number does not fit.
bool layOut(const ZetImage* image, std::int32_t width, std::int32_t height, BlockLayout* layout) {
    const std::int32_t bytes = sampleBytes(image->depth);
    const std::int64_t pixelBytes = image->dataOrder == 0 ? std::int64_t{bytes} * image->nChannels : bytes;
    if (width < 1 || height < 1 || pixelBytes > INT32_MAX) return false;
    layout->pixelBytes = static_cast<std::int32_t>(pixelBytes);
    layout->nPlanes = image->dataOrder == 0 ? 1 : image->nChannels;
    const std::int64_t rowBytes = bytes == 0 ? (std::int64_t{width} + 7) / 8 : sizeProduct(width, pixelBytes);
    if (rowBytes > INT32_MAX - 31) return false;
    layout->rowStep = (rowBytes + image->align - 1) & -static_cast<std::int64_t>(image->align);
    layout->planeStep = sizeProduct(layout->rowStep, height);
    layout->elementBytes = bytes;
    return true;
}

}  // namespace

void* ownGetRect(ZetImage* image, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 std::int32_t* rowStep) {
    if (!image || !isGoodFormat(image)) return nullptr;
    RectBlock b{image, {}, x, y};
    if (!layOut(image, width, height, &b.layout)) return nullptr;
    *rowStep = static_cast<std::int32_t>(b.layout.rowStep);
    const std::ptrdiff_t size = sizeProduct(b.layout.planeStep, b.layout.nPlanes);
    Block<std::uint8_t> block = allocBlock<std::uint8_t>(size);
    if (!block) return nullptr;
    b.layout.data = block.get();
    if (image->depth == ZET_DEPTH_1U) std::memset(block.get(), 0, static_cast<std::size_t>(size));
    return fillBlock(b, width, height) ? block.release() : nullptr;
}

void ownFreeBlock(void* block) {
    if (block) zetDeleteROI(block);
}

}  // namespace zetpxl
