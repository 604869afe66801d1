#include "tests/support/model_set.h"

#include <algorithm>
#include <cstring>

#include "tests/support/model_point.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

constexpr const char* kSource = "zetsce";

std::uint32_t clamped(std::uint32_t depth, std::int32_t value) {
    const std::uint32_t bits = depth & 0x7FFFFFFFu;
    if (bits == 32) return static_cast<std::uint32_t>(value);
    const bool isSigned = (depth & ZET_DEPTH_SIGN) != 0;
    const std::int32_t low = isSigned ? -(1 << (bits - 1)) : 0;
    const std::int32_t high = (1 << (isSigned ? bits - 1 : bits)) - 1;
    return static_cast<std::uint32_t>(std::min(std::max(value, low), high));
}

void setBitsUnderMask(Model& model, ZetImage* dst, std::int32_t value) {
    ZetImage* mask = dst->maskImage;
    dst->maskImage = nullptr;
    if (value) {
        modelOr(model, dst, mask, dst);
    } else {
        modelXorS(model, mask, mask, 1);
        modelAnd(model, dst, mask, dst);
        modelXorS(model, mask, mask, 1);
    }
    dst->maskImage = mask;
    if (model.status < 0) model.report(ZET_StatusBacktrace, "zetSet", "", kSource);
}

// `x`, `y` count from the corner of the region.
void setPixel(const ZetImage& dst, std::int32_t x, std::int32_t y, std::uint32_t value) {
    if (dst.maskImage && !maskBit(*dst.maskImage, x, y)) return;
    const Area area = modelRegion(dst);
    const ChannelRange channels = modelChannels(dst);
    for (std::int32_t c = 0; c < channels.count; ++c) putSample(dst, channels.first + c, area.y + y, area.x + x, value);
}

void setOverTiles(Model& model, ZetImage* dst, const Area& common, std::uint32_t value) {
    const ModelGrid grid = modelGrid(*dst, common.height, common.width);
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row)
        for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col) {
            if (!modelFetch(*dst, col, row, ZET_TILE_WRITE))
                return model.report(ZET_StatusError, "zetSet", "Error get tile to write", kSource);
            const Band xs = modelBand(common.x, common.width, grid.tileWidth, col);
            const Band ys = modelBand(common.y, common.height, grid.tileHeight, row);
            for (std::int32_t y = ys.start; y < ys.start + ys.size; ++y)
                for (std::int32_t x = xs.start; x < xs.start + xs.size; ++x)
                    setPixel(*dst, x - common.x, y - common.y, value);
            modelRelease(*dst, col, row);
        }
}

}  // namespace

void modelSet(Model& model, ZetImage* dst, std::int32_t value) {
    if (model.checkImage(dst)) return model.reportIncorrectImage("zetSet", kSource);
    if (dst->depth == ZET_DEPTH_32F)
        return model.report(ZET_StatusBadDepth, "zetSet", "You should use zetSetFP for this image", kSource);
    const std::uint32_t pattern = clamped(dst->depth, value);
    Area common = modelRegion(*dst);
    if (dst->maskImage) {
        common.width = std::min(common.width, modelRegion(*dst->maskImage).width);
        common.height = std::min(common.height, modelRegion(*dst->maskImage).height);
    }
    if (common.empty()) return;
    if (dst->depth == ZET_DEPTH_1U && dst->maskImage)
        return setBitsUnderMask(model, dst, static_cast<std::int32_t>(pattern));
    if (tiled(*dst)) return setOverTiles(model, dst, common, pattern);
    for (std::int32_t y = 0; y < common.height; ++y)
        for (std::int32_t x = 0; x < common.width; ++x) setPixel(*dst, x, y, pattern);
}

void modelSetFP(Model& model, ZetImage* dst, float value) {
    if (!dst) return model.report(ZET_StatusBadArgument, "zetSetFP", "dstImage==0", kSource);
    if (dst->depth != ZET_DEPTH_32F)
        return model.report(ZET_StatusBadDepth, "zetSetFP", "You should use zetSet for this image", kSource);
    std::int32_t pattern = 0;
    std::memcpy(&pattern, &value, 4);
    dst->depth = ZET_DEPTH_32S;
    modelSet(model, dst, pattern);
    if (model.status < 0) model.report(ZET_StatusBacktrace, "zetSetFP", "", kSource);
    dst->depth = ZET_DEPTH_32F;
}

}  // namespace zetpxl::test
