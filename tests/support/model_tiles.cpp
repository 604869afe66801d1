#include "tests/support/model_tiles.h"

#include <algorithm>

namespace zetpxl::test {
namespace {

std::int32_t countInside(std::int64_t offset, std::int64_t length, std::int64_t limit) {
    std::int32_t count = 0;
    for (std::int64_t i = std::max<std::int64_t>(offset, 0); i < std::min(offset + length, limit); ++i) ++count;
    return count;
}

}  // namespace

ModelSize modelSize(const ZetImage& image, bool clip) {
    if (!image.roi) return {1, image.height, image.width};
    const ZetROI& roi = *image.roi;
    if (roi.width < 1 || roi.height < 1) return {};
    if (!clip) return {1, roi.height, roi.width};
    if (roi.xOffset >= image.width || roi.yOffset >= image.height) return {};
    return {1, countInside(roi.yOffset, roi.height, image.height), countInside(roi.xOffset, roi.width, image.width)};
}

Band modelBand(std::int32_t first, std::int32_t size, std::int32_t tileSize, std::int32_t tile) {
    Band band;
    for (std::int32_t i = first; i < first + size; ++i) {
        if (i / tileSize != tile) continue;
        if (band.size++ == 0) band.start = i;
    }
    return band;
}

ModelGrid modelGrid(const ZetImage& image, std::int32_t height, std::int32_t width) {
    ModelGrid grid;
    grid.tileWidth = image.tileInfo ? image.tileInfo->width : 128;
    grid.tileHeight = image.tileInfo ? image.tileInfo->height : 128;
    const std::int32_t x = image.roi ? std::max(image.roi->xOffset, 0) : 0;
    const std::int32_t y = image.roi ? std::max(image.roi->yOffset, 0) : 0;
    grid.firstCol = x / grid.tileWidth;
    grid.firstRow = y / grid.tileHeight;
    grid.startX = x - grid.firstCol * grid.tileWidth;
    grid.startY = y - grid.firstRow * grid.tileHeight;
    for (std::int32_t col = grid.firstCol; modelBand(x, width, grid.tileWidth, col).size; ++col) ++grid.nCols;
    for (std::int32_t row = grid.firstRow; modelBand(y, height, grid.tileHeight, row).size; ++row) ++grid.nRows;
    return grid;
}

}  // namespace zetpxl::test
