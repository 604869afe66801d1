#include "tests/support/model_frame.h"

#include <algorithm>

#include "tests/support/model_patch.h"
#include "tests/support/model_rect.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

struct Pass {
    std::int32_t srcChannel, dstChannel, count;
};

struct Frame {
    ZetImage* src;
    ZetImage* dst;
    FrameWindow window;
    WindowResult result;
    Area from{}, to{};
    Patch patch{};
};

Area shrunk(Area area, const Area& other) {
    area.width = std::min(area.width, other.width);
    area.height = std::min(area.height, other.height);
    return area;
}

void takeRegions(Frame& op) {
    op.from = modelRegion(*op.src);
    op.to = modelRegion(*op.dst);
    for (const ZetImage* image : {op.src, op.dst})
        if (image->maskImage) op.from = shrunk(op.from, modelRegion(*image->maskImage));
    op.from = shrunk(op.from, op.to);
    op.to = shrunk(op.to, op.from);
}

std::vector<Pass> passesOf(const Frame& op) {
    const std::int32_t coi = coiOf(*op.dst);
    const std::int32_t srcCoi = std::max(coiOf(*op.src), 1);
    if (coi > 0) return {{srcCoi - 1, coi - 1, 1}};
    if (!op.src->alphaChannel && !op.dst->alphaChannel) return {{srcCoi - 1, 0, op.dst->nChannels}};
    std::vector<Pass> passes;
    for (std::int32_t c = 0; c < op.dst->nChannels - 1; ++c) passes.push_back({c, c, 1});
    return passes;
}

// ---- pixels; `x`, `y` and `part` count from the corners of the regions

bool allowed(const Frame& op, std::int32_t x, std::int32_t y) {
    for (const ZetImage* image : {op.src, op.dst})
        if (image->maskImage && !maskBit(*image->maskImage, x, y)) return false;
    return true;
}

void pixels(const Frame& op, const Pass& pass, const Area& part) {
    for (std::int32_t i = 0; i < part.width * part.height; ++i) {
        const std::int32_t x = part.x + i % part.width;
        const std::int32_t y = part.y + i / part.width;
        if (!allowed(op, x, y)) continue;
        for (std::int32_t c = 0; c < pass.count; ++c) {
            const auto sample = [&](std::int32_t row, std::int32_t col) {
                return op.patch.at(pass.srcChannel + c, op.from.y + y - op.window.anchorY + row,
                                   op.from.x + x - op.window.anchorX + col);
            };
            putSample(*op.dst, pass.dstChannel + c, op.to.y + y, op.to.x + x, op.result(sample));
        }
    }
}

// ---- pieces

Area blockOf(const Frame& op, const Area& part) {
    return {op.from.x + part.x - op.window.anchorX, op.from.y + part.y - op.window.anchorY,
            part.width + op.window.nCols - 1, part.height + op.window.nRows - 1};
}

bool blockCalls(const Frame& op, const Area& part) {
    const Area block = blockOf(op, part);
    return !tiled(*op.src) || modelGetRectCalls(*op.src, block.x, block.y, block.width, block.height);
}

bool intoTile(const Frame& op, const Pass& pass, std::int32_t col, std::int32_t row) {
    const ZetTileInfo& tiles = *op.dst->tileInfo;
    const Band xs = modelBand(op.to.x, op.to.width, tiles.width, col);
    const Band ys = modelBand(op.to.y, op.to.height, tiles.height, row);
    const Area part{xs.start - op.to.x, ys.start - op.to.y, xs.size, ys.size};
    if (!modelFetch(*op.dst, col, row, ZET_TILE_WRITE)) return false;
    const bool had = blockCalls(op, part);
    if (had) pixels(op, pass, part);
    modelRelease(*op.dst, col, row);
    return had;
}

bool intoTiles(const Frame& op, const Pass& pass) {
    const ModelGrid grid = modelGrid(*op.dst, op.to.height, op.to.width);
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row)
        for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col)
            if (!intoTile(op, pass, col, row)) return false;
    return true;
}

// Pieces of the source's tile size, counted from the region's corner.
bool fromTiles(const Frame& op, const Pass& pass) {
    const ZetTileInfo& tiles = *op.src->tileInfo;
    for (std::int32_t y = 0; y < op.to.height; y += tiles.height)
        for (std::int32_t x = 0; x < op.to.width; x += tiles.width) {
            const Area part{x, y, std::min(tiles.width, op.to.width - x), std::min(tiles.height, op.to.height - y)};
            if (!blockCalls(op, part)) return false;
            pixels(op, pass, part);
        }
    return true;
}

bool runPass(const Frame& op, const Pass& pass) {
    if (tiled(*op.dst)) return intoTiles(op, pass);
    if (tiled(*op.src)) return fromTiles(op, pass);
    pixels(op, pass, {0, 0, op.to.width, op.to.height});
    return true;
}

std::int32_t countOf(const ZetImage& image) {
    if (coiOf(image)) return 1;
    return image.nChannels - (image.alphaChannel > 0 ? 1 : 0);
}

}  // namespace

void modelFilterFrame(ZetImage* src, ZetImage* dst, const FrameWindow& window, const WindowResult& result) {
    Frame op{src, dst, window, result};
    takeRegions(op);
    if (op.to.empty()) return;
    op.patch = takePatch(*src, blockOf(op, {0, 0, op.to.width, op.to.height}));
    for (const Pass& pass : passesOf(op))
        if (!runPass(op, pass)) return;
}

bool modelFrameChannels(Model& model, const ZetImage& src, const ZetImage& dst, const FrameChecks& checks) {
    const auto say = [&](const char* words) { model.report(checks.coiStatus, checks.name, words, "zetnlf"); };
    if (coiOf(src) > src.nChannels) say("Interst Channel of input Image more number of channels.");
    if (coiOf(dst) > dst.nChannels) say("Interst Channel of output Image more number of channels.");
    if (countOf(src) != countOf(dst)) say("Number of interset channel input and output Image is not equal.");
    return model.status >= 0 && countOf(dst) > 0;
}

}  // namespace zetpxl::test
