#include "tests/support/model_copy.h"

#include <algorithm>
#include <vector>

#include "tests/support/model_patch.h"
#include "tests/support/model_point.h"
#include "tests/support/model_rect.h"
#include "tests/support/model_set.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

constexpr const char* kName = "zetCopy";
constexpr const char* kSource = "zetsce";

void say(Model& model, std::int32_t status, const char* words) { model.report(status, kName, words, kSource); }

Area commonArea(const std::vector<const ZetImage*>& images) {
    Area common{0, 0, INT32_MAX, INT32_MAX};
    for (const ZetImage* image : images) {
        if (!image) continue;
        const Area area = modelRegion(*image);
        if (area.empty()) return {};
        common.width = std::min(common.width, area.width);
        common.height = std::min(common.height, area.height);
    }
    return common;
}

bool checks(Model& model, ZetImage* src, ZetImage* dst) {
    for (const ZetImage* image : {src, dst}) {
        if (!model.checkImage(image)) continue;
        model.reportIncorrectImage(kName, kSource);
        return false;
    }
    if (src->depth != dst->depth) say(model, ZET_StatusBadArgument, "srcImage->depth != dstImage->depth");
    if (src->origin != dst->origin) say(model, ZET_StatusBadArgument, "srcImage->origin != dstImage->origin");
    const bool oneChannel = src->nChannels == 1 && dst->nChannels == 1;
    if (src->depth != ZET_DEPTH_1U && !oneChannel && src->dataOrder != dst->dataOrder)
        say(model, ZET_StatusBadArgument, "srcImage->dataOrder != dstImage->dataOrder");
    return model.status >= 0 && src != dst;
}

void copyBitsUnderMask(Model& model, ZetImage* src, ZetImage* dst, ZetImage* mask, const Area& common) {
    Plane plane(common.width, common.height, mask->dataOrder, mask->origin, mask->align);
    ZetImage* t = &plane.image;
    ZetImage* const maskOfMask = mask->maskImage;
    mask->maskImage = nullptr;
    modelCopy(model, mask, t);
    mask->maskImage = maskOfMask;
    ZetImage* const srcMask = src->maskImage;
    ZetImage* const dstMask = dst->maskImage;
    dst->maskImage = t;
    modelSet(model, dst, 0);
    src->maskImage = nullptr;
    modelAnd(model, src, t, t);
    modelOr(model, dst, t, dst);
    src->maskImage = srcMask;
    dst->maskImage = dstMask;
    if (model.status < 0) say(model, ZET_StatusBacktrace, "");
}

struct Copy {
    ZetImage* src;
    ZetImage* dst;
    const ZetImage* mask;
    Area common;
};

// `x`, `y` count from the corners of the regions.
void copyPixel(const Copy& copy, std::int32_t x, std::int32_t y) {
    if (copy.mask && !maskBit(*copy.mask, x, y)) return;
    const Area from = modelRegion(*copy.src);
    const Area to = modelRegion(*copy.dst);
    const ChannelRange source = modelChannels(*copy.src);
    const ChannelRange target = modelChannels(*copy.dst);
    for (std::int32_t c = 0; c < target.count; ++c)
        putSample(*copy.dst, target.first + c, to.y + y, to.x + x,
                  getSample(*copy.src, source.first + c, from.y + y, from.x + x));
}

// The step of a copy in one block, or in one band of a walk over tiles, whose channels must agree.
void copyPart(Model& model, const Copy& copy, const Area& part) {
    if (model.status < 0) return;
    if (modelChannels(*copy.src).count != modelChannels(*copy.dst).count)
        return say(model, ZET_StatusBadArgument,
                   "Number of processed channels of srcImage != Number of processed channels of dstImage");
    for (std::int32_t y = 0; y < part.height; ++y)
        for (std::int32_t x = 0; x < part.width; ++x) copyPixel(copy, part.x + x, part.y + y);
}

bool nothingToProcess(const ZetImage& image) { return !image.roi && image.alphaChannel && image.nChannels == 1; }

// Fetches what the band needs; false ends the walk.
bool fetchBand(Model& model, const Copy& copy, std::int32_t col, std::int32_t row, const Area& part) {
    if (!tiled(*copy.dst)) {
        if (modelFetch(*copy.src, col, row, ZET_TILE_READ)) return true;
        say(model, ZET_StatusError, "Error get tile to read");
        return false;
    }
    if (!modelFetch(*copy.dst, col, row, ZET_TILE_WRITE)) {
        say(model, ZET_StatusError, "Error get tile to write");
        return false;
    }
    if (!tiled(*copy.src)) return true;
    const Area from = modelRegion(*copy.src);
    const bool had = modelGetRectCalls(*copy.src, from.x + part.x, from.y + part.y, part.width, part.height);
    if (had && model.status >= 0) return true;
    say(model, ZET_StatusBacktrace, "");
    return false;
}

void copyOverTiles(Model& model, const Copy& copy) {
    ZetImage& gridImage = tiled(*copy.dst) ? *copy.dst : *copy.src;
    const Area origin = modelRegion(gridImage);
    const ModelGrid grid = modelGrid(gridImage, copy.common.height, copy.common.width);
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row)
        for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col) {
            const Band xs = modelBand(origin.x, copy.common.width, grid.tileWidth, col);
            const Band ys = modelBand(origin.y, copy.common.height, grid.tileHeight, row);
            const Area part{xs.start - origin.x, ys.start - origin.y, xs.size, ys.size};
            if (!fetchBand(model, copy, col, row, part)) return;
            copyPart(model, copy, part);
            modelRelease(gridImage, col, row);
        }
}

void copyUnder(Model& model, ZetImage* src, ZetImage* dst, ZetImage* mask) {
    const Area common = commonArea({src, dst, mask});
    if (common.empty()) return;
    if (dst->depth == ZET_DEPTH_1U && mask) return copyBitsUnderMask(model, src, dst, mask, common);
    const Copy copy{src, dst, mask, common};
    if (tiled(*src) || tiled(*dst)) return copyOverTiles(model, copy);
    if (nothingToProcess(*src) || nothingToProcess(*dst)) return;
    copyPart(model, copy, common);
}

}  // namespace

void modelCopy(Model& model, ZetImage* src, ZetImage* dst) {
    if (!checks(model, src, dst)) return;
    if (!src->maskImage || !dst->maskImage || src->maskImage == dst->maskImage)
        return copyUnder(model, src, dst, src->maskImage ? src->maskImage : dst->maskImage);
    const Area common = commonArea({src->maskImage, dst->maskImage});
    if (common.empty()) return;
    Plane joined(common.width, common.height, 1, src->maskImage->origin, 4);
    modelAnd(model, src->maskImage, dst->maskImage, &joined.image);
    if (model.status < 0) return say(model, ZET_StatusBacktrace, "");
    copyUnder(model, src, dst, &joined.image);
}

}  // namespace zetpxl::test
