#include "tests/support/model.h"

#include <algorithm>
#include <cstring>

#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

bool oneOf(std::int64_t value, std::initializer_list<std::int64_t> values) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

bool knownDepth(std::uint32_t depth) {
    return oneOf(
        depth, {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_8S, ZET_DEPTH_16U, ZET_DEPTH_16S, ZET_DEPTH_32S, ZET_DEPTH_32F});
}

// A chain of masks is followed 16 deep.
constexpr std::int32_t kMaskDepth = 16;

std::int32_t checkLevel(Model& model, const ZetImage* image, std::int32_t level);

std::int32_t checkMask(Model& model, const ZetImage& mask, std::int32_t level) {
    if (level >= kMaskDepth) return -117;
    if (mask.depth != ZET_DEPTH_1U) return -117;
    if (mask.tileInfo) return ZET_StatusMaskTiled;
    const std::int32_t status = checkLevel(model, &mask, level + 1);
    return status == 0 ? 0 : status - 100;
}

std::int32_t checkTiles(const ZetTileInfo& tiles) {
    if (!tiles.callBack) return ZET_StatusNoTileCallback;
    if (tiles.width < 1 || tiles.height < 1) return ZET_StatusBadTileSize;
    return tiles.width % 8 || tiles.height % 8 ? ZET_StatusBadTileSize : 0;
}

std::int32_t checkRegion(const ZetROI& roi, std::int32_t nChannels) {
    if (roi.coi < 0 || roi.coi > nChannels) return ZET_StatusBadCoi;
    if (roi.height < 1 || roi.width < 1) return ZET_StatusBadRoiSize;
    return roi.xOffset < 0 || roi.yOffset < 0 ? ZET_StatusBadRoiOffset : 0;
}

std::int32_t firstFault(Model& model, const ZetImage* image, std::int32_t level) {
    if (!image) return ZET_StatusNullImage;
    if ((image->imageData == nullptr) == (image->tileInfo == nullptr)) return ZET_StatusNoImageData;
    if (image->imageSize < 1 && !image->tileInfo) return ZET_StatusBadImageSize;
    if (image->widthStep < 1 && !image->tileInfo) return ZET_StatusBadWidthStep;
    if (const std::int32_t status = modelCheckHeader(model, *image, level)) return status;
    if (image->tileInfo)
        if (const std::int32_t status = checkTiles(*image->tileInfo)) return status;
    return image->roi ? checkRegion(*image->roi, image->nChannels) : 0;
}

std::int32_t checkLevel(Model& model, const ZetImage* image, std::int32_t level) {
    const std::int32_t status = firstFault(model, image, level);
    if (status) model.status = status;
    return status;
}

std::int32_t bytesOf(const ZetImage& image) { return static_cast<std::int32_t>(image.depth & 0x7FFFFFFFu) / 8; }

}  // namespace

void Model::report(std::int32_t code, const char* funcName, const char* context, const char* fileName) {
    if (code != ZET_StatusBacktrace && code != ZET_StatusAutotrace) status = code;
    log.add(reportLine(code, funcName, context, fileName));
}

void Model::reportIncorrectImage(const char* funcName, const char* fileName) {
    report(status, funcName, "Incorrect Image", fileName);
}

std::int32_t Model::checkImage(const ZetImage* image) { return checkLevel(*this, image, 0); }

std::int32_t modelCheckHeader(Model& model, const ZetImage& image, std::int32_t maskLevel) {
    if (image.height < 1 || image.width < 1) return ZET_StatusBadImageSize;
    if (image.nChannels < 1) return ZET_StatusBadChannels;
    if (image.depth == ZET_DEPTH_1U && image.nChannels != 1) return ZET_StatusBadChannels1U;
    if (!knownDepth(image.depth)) return ZET_StatusBadDepth;
    if (!oneOf(image.alphaChannel, {0, image.nChannels})) return ZET_StatusBadAlpha;
    if (!oneOf(image.dataOrder, {0, 1})) return ZET_StatusBadOrder;
    if (!oneOf(image.origin, {0, 1})) return ZET_StatusBadOrigin;
    if (!oneOf(image.align, {4, 8, 16, 32})) return ZET_StatusBadAlign;
    return image.maskImage ? checkMask(model, *image.maskImage, maskLevel) : 0;
}

bool modelFits(const ZetImage& image) {
    const __int128 step = plainRowBytes(image.dataOrder, image.depth, image.align, image.nChannels, image.width);
    const __int128 size = step * image.height * (image.dataOrder == 1 ? image.nChannels : 1);
    return step <= INT32_MAX && size <= INT32_MAX;
}

Area modelRegion(const ZetImage& image) {
    if (!image.roi) return {0, 0, image.width, image.height};
    const ZetROI& roi = *image.roi;
    Area area{roi.xOffset, roi.yOffset, 0, 0};
    for (std::int64_t x = roi.xOffset; x < std::int64_t{roi.xOffset} + roi.width && x < image.width; ++x) ++area.width;
    for (std::int64_t y = roi.yOffset; y < std::int64_t{roi.yOffset} + roi.height && y < image.height; ++y)
        ++area.height;
    return area;
}

std::int32_t coiOf(const ZetImage& image) { return image.roi ? image.roi->coi : 0; }

ChannelRange modelChannels(const ZetImage& image) {
    if (coiOf(image) > 0) return {coiOf(image) - 1, 1};
    return {0, image.alphaChannel ? image.nChannels - 1 : image.nChannels};
}

std::uint8_t* sampleByte(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x) {
    auto* base = static_cast<std::uint8_t*>(image.imageData);
    std::int64_t step = image.widthStep;
    std::int64_t height = image.height;
    if (image.tileInfo) {
        const ZetTileInfo& tiles = *image.tileInfo;
        base = static_cast<TestImage*>(tiles.id)->tileAt(x / tiles.width, y / tiles.height)->data();
        step = plainRowBytes(image.dataOrder, image.depth, image.align, image.nChannels, tiles.width);
        height = tiles.height;
        x %= tiles.width;
        y %= tiles.height;
    }
    if (image.depth == ZET_DEPTH_1U) return base + y * step + x / 8;
    if (image.dataOrder == 1) return base + channel * height * step + y * step + std::int64_t{x} * bytesOf(image);
    return base + y * step + (std::int64_t{x} * image.nChannels + channel) * bytesOf(image);
}

std::uint32_t getSample(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x) {
    const std::uint8_t* byte = sampleByte(image, channel, y, x);
    if (image.depth == ZET_DEPTH_1U) {
        const std::int32_t column = image.tileInfo ? x % image.tileInfo->width : x;
        return (*byte >> (7 - column % 8)) & 1u;
    }
    std::uint32_t pattern = 0;
    std::memcpy(&pattern, byte, static_cast<std::size_t>(bytesOf(image)));
    return pattern;
}

void putSample(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x, std::uint32_t pattern) {
    std::uint8_t* byte = sampleByte(image, channel, y, x);
    if (image.depth != ZET_DEPTH_1U) {
        std::memcpy(byte, &pattern, static_cast<std::size_t>(bytesOf(image)));
        return;
    }
    const std::int32_t column = image.tileInfo ? x % image.tileInfo->width : x;
    const std::uint32_t bit = 0x80u >> (column % 8);
    *byte = static_cast<std::uint8_t>(pattern & 1u ? *byte | bit : *byte & ~bit);
}

bool maskBit(const ZetImage& mask, std::int32_t x, std::int32_t y) {
    const Area area = modelRegion(mask);
    return getSample(mask, 0, area.y + y, area.x + x) != 0;
}

bool modelFetch(ZetImage& image, std::int32_t col, std::int32_t row, std::int32_t mode) {
    image.tileInfo->callBack(&image, col, row, mode);
    return image.tileInfo->tileData != nullptr;
}

void modelRelease(ZetImage& image, std::int32_t col, std::int32_t row) {
    image.tileInfo->callBack(&image, col, row, ZET_TILE_RELEASE);
}

}  // namespace zetpxl::test
