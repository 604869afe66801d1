// Plain models of what the frame resolves: sizes by counting pixels, addresses by asking where a pixel lies.
#pragma once

#include "core/region.h"
#include "tests/support/model.h"

namespace zetpxl::test {

// Also for records that no check has seen: offsets and sizes of any sign.
struct ModelSize {
    std::int32_t result = 0, height = 0, width = 0;
};
ModelSize modelSize(const ZetImage& image, bool clip);

// The tiles that a region of the given size touches, found by going over every column and row of it.
struct ModelGrid {
    std::int32_t startX = 0, startY = 0, tileHeight = 0, tileWidth = 0;
    std::int32_t firstCol = 0, firstRow = 0, nCols = 0, nRows = 0;
};
ModelGrid modelGrid(const ZetImage& image, std::int32_t height, std::int32_t width);

// The part of a span that lies in tile `tile`.
struct Band {
    std::int32_t start = 0, size = 0;
};
Band modelBand(std::int32_t first, std::int32_t size, std::int32_t tileSize, std::int32_t tile);

}  // namespace zetpxl::test
