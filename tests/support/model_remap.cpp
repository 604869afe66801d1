#include "tests/support/model_remap.h"

#include <algorithm>

#include "tests/support/model_patch.h"
#include "tests/support/model_rect.h"
#include "tests/support/model_sampling.h"
#include "tests/support/model_tiles.h"
#include "tests/support/model_warp.h"

namespace zetpxl::test {
namespace {

struct Remap {
    RemapImages images;
    std::int32_t mode;
    Area from{}, to{};
};

bool channelsAgree(Model& model, const Remap& op) {
    if (modelChannels(*op.images.src).count == modelChannels(*op.images.dst).count) return true;
    model.report(ZET_StatusBadArgument, "zetRemap", kChannelWords, "zetremap");
    return false;
}

double mapValue(const ZetImage& map, std::int32_t y, std::int32_t x) {
    const Area area = modelRegion(map);
    return sampleValue(ZET_DEPTH_32F, getSample(map, 0, area.y + y, area.x + x));
}

// `x` and `y` count from the corners of the regions.
void makePixel(const Remap& op, std::int32_t y, std::int32_t x) {
    const auto& [src, xMap, yMap, dst] = op.images;
    const Position at{mapValue(*xMap, y, x), mapValue(*yMap, y, x)};
    const Corners r = cornersOf(op.from);
    if (!(at.x >= r.x0 && at.x <= r.x1 && at.y >= r.y0 && at.y <= r.y1)) return;
    const SourceView view{src, {0, 0, src->width, src->height}};
    const ChannelRange in = modelChannels(*src);
    const ChannelRange out = modelChannels(*dst);
    for (std::int32_t c = 0; c < out.count; ++c) {
        const auto sample = modelResample(view, in.first + c, op.mode, at, {r.x1, r.y1});
        if (sample) putSample(*dst, out.first + c, op.to.y + y, op.to.x + x, *sample);
    }
}

void makePart(Model& model, const Remap& op, const Area& part) {
    if (op.from.empty() || modelNothingToProcess(*op.images.src)) return;
    if (!channelsAgree(model, op)) return;
    for (std::int32_t y = part.y; y < part.y + part.height; ++y)
        for (std::int32_t x = part.x; x < part.x + part.width; ++x) makePixel(op, y, x);
}

bool mapCalls(const Model& model, ZetImage* map, const Area& part) {
    const Area area = modelRegion(*map);
    const bool had = !tiled(*map) || modelGetRectCalls(*map, area.x + part.x, area.y + part.y, part.width, part.height);
    return had && model.status >= 0;
}

bool makeCell(Model& model, const Remap& op, std::int32_t col, std::int32_t row, const Area& part) {
    ZetImage* dst = op.images.dst;
    if (tiled(*dst) && !modelFetch(*dst, col, row, ZET_TILE_WRITE)) {
        model.report(ZET_StatusError, "zetRemap", "Error get tile to write", "zetremap");
        return false;
    }
    const bool had = mapCalls(model, op.images.xMap, part) && mapCalls(model, op.images.yMap, part);
    if (had) makePart(model, op, part);
    if (tiled(*dst)) modelRelease(*dst, col, row);
    if (!had) model.report(ZET_StatusBacktrace, "zetRemap", "", "zetremap");
    return had;
}

void makeCells(Model& model, const Remap& op) {
    ZetImage* src = op.images.src;
    if (tiled(*src) && !modelGetRectCalls(*src, 0, 0, src->width, src->height))
        return model.report(ZET_StatusBacktrace, "zetRemap", "", "zetremap");
    const ModelGrid grid = modelGrid(*op.images.dst, op.to.height, op.to.width);
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row)
        for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col) {
            const Band xs = modelBand(op.to.x, op.to.width, grid.tileWidth, col);
            const Band ys = modelBand(op.to.y, op.to.height, grid.tileHeight, row);
            const Area part{xs.start - op.to.x, ys.start - op.to.y, xs.size, ys.size};
            if (!makeCell(model, op, col, row, part)) return;
        }
}

bool badMap(const ZetImage& map) { return map.depth != ZET_DEPTH_32F || map.nChannels != 1 || map.alphaChannel != 0; }

bool checks(Model& model, const RemapImages& images) {
    const auto& [src, xMap, yMap, dst] = images;
    for (const ZetImage* image : {src, dst, xMap, yMap})
        if (model.checkImage(image)) return model.reportIncorrectImage("zetRemap", "zetremap"), false;
    const auto say = [&](const char* words) { model.report(ZET_StatusBadArgument, "zetRemap", words, "zetremap"); };
    if (src->depth != dst->depth) say("srcImage->depth != dstImage->depth");
    if (src->origin != dst->origin) say("srcImage->origin != dstImage->origin");
    const bool oneChannel = src->nChannels == 1 && dst->nChannels == 1;
    if (src->depth != ZET_DEPTH_1U && !oneChannel && src->dataOrder != dst->dataOrder)
        say("srcImage->dataOrder != dstImage->dataOrder");
    if (src->depth & ZET_DEPTH_SIGN) say("(srcImage->depth & ZET_DEPTH_SIGN)");
    if (badMap(*xMap)) say("xMap->depth != ZET_DEPTH_32F || xMap->nChannels != 1 || xMap->alphaChannel != 0");
    if (badMap(*yMap)) say("yMap->depth != ZET_DEPTH_32F || yMap->nChannels != 1 || yMap->alphaChannel != 0");
    if (src == dst) say("This function is not in-place function");
    return model.status >= 0;
}

}  // namespace

void modelRemap(Model& model, const RemapImages& images, std::int32_t interpolate) {
    if (!checks(model, images)) return;
    const std::int32_t mode = interpolate & ~16;
    if (mode < 0 || mode > 2) return model.report(ZET_StatusBadArgument, "zetRemap", kModeWords, "zetremap");
    Remap op{images, modelMode(*images.src, mode), modelRegion(*images.src), modelRegion(*images.dst)};
    bool tiles = tiled(*images.src) || tiled(*images.dst);
    for (const ZetImage* map : {images.xMap, images.yMap}) {
        const Area area = modelRegion(*map);
        op.to.width = std::min(op.to.width, area.width);
        op.to.height = std::min(op.to.height, area.height);
        tiles |= tiled(*map);
    }
    if (op.to.empty()) return;
    if (tiles) return makeCells(model, op);
    if (modelNothingToProcess(*images.dst)) return;
    makePart(model, op, {0, 0, op.to.width, op.to.height});
}

}  // namespace zetpxl::test
