// What makes an image record valid, and the arithmetic of its rows.
//   check.1 one sequence of header tests serves creation, allocation and every operation; the first failure decides
//   check.2 a failing mask stores its own status first, then its image stores that status minus 100
//   check.3 an image check stores its failure and reports nothing
#include "core/check.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/depth.h"

namespace zetpxl {

namespace {

constexpr std::int32_t kMaskStatus = -100;
constexpr std::int32_t kMaxMaskChain = 16;

std::int32_t checkImage(const ZetImage* image, std::int32_t chain);

// `chain` counts the masks above this one: a mask that is its own mask must end.
std::int32_t checkMask(const ZetImage* mask, std::int32_t chain) {
    if (mask->depth != ZET_DEPTH_1U || chain >= kMaxMaskChain) return ZET_StatusBadDepth + kMaskStatus;
    if (mask->tileInfo) return ZET_StatusMaskTiled;
    const std::int32_t status = checkImage(mask, chain + 1);
    return status == ZET_StatusOk ? ZET_StatusOk : status + kMaskStatus;
}

std::int32_t checkFields(const HeaderFields& f, std::int32_t chain) {
    if (f.height < 1 || f.width < 1) return ZET_StatusBadImageSize;
    if (f.nChannels < 1) return ZET_StatusBadChannels;
    if (f.depth == ZET_DEPTH_1U && f.nChannels != 1) return ZET_StatusBadChannels1U;
    if (!f.colorModel || !f.channelSeq) return ZET_StatusBadColorModel;
    if (depthIndex(f.depth) == kNoDepth) return ZET_StatusBadDepth;
    if (f.alphaChannel != 0 && f.alphaChannel != f.nChannels) return ZET_StatusBadAlpha;
    if (f.dataOrder != 0 && f.dataOrder != 1) return ZET_StatusBadOrder;
    if (f.origin != 0 && f.origin != 1) return ZET_StatusBadOrigin;
    if (f.align != 4 && f.align != 8 && f.align != 16 && f.align != 32) return ZET_StatusBadAlign;
    return f.maskImage ? checkMask(f.maskImage, chain) : std::int32_t{ZET_StatusOk};
}

std::int32_t checkTiles(const ZetTileInfo& tiles) {
    if (!tiles.callBack) return ZET_StatusNoTileCallback;
    const bool sizesAreGood = tiles.width > 0 && tiles.height > 0 && tiles.width % 8 == 0 && tiles.height % 8 == 0;
    return sizesAreGood ? ZET_StatusOk : ZET_StatusBadTileSize;
}

std::int32_t checkRegion(const ZetROI& roi, std::int32_t nChannels) {
    if (roi.coi < 0 || roi.coi > nChannels) return ZET_StatusBadCoi;
    if (roi.height < 1 || roi.width < 1) return ZET_StatusBadRoiSize;
    if (roi.xOffset < 0 || roi.yOffset < 0) return ZET_StatusBadRoiOffset;
    return ZET_StatusOk;
}

std::int32_t firstFailure(const ZetImage* image, std::int32_t chain) {
    if (!image) return ZET_StatusNullImage;
    const bool tiled = image->tileInfo != nullptr;
    if ((image->imageData != nullptr) == tiled) return ZET_StatusNoImageData;
    if (image->imageSize < 1 && !tiled) return ZET_StatusBadImageSize;
    if (image->widthStep < 1 && !tiled) return ZET_StatusBadWidthStep;
    std::int32_t status = checkFields(headerFields(*image), chain);
    if (status == ZET_StatusOk && tiled) status = checkTiles(*image->tileInfo);
    if (status == ZET_StatusOk && image->roi) status = checkRegion(*image->roi, image->nChannels);
    return status;
}

std::int32_t checkImage(const ZetImage* image, std::int32_t chain) {
    const std::int32_t status = firstFailure(image, chain);
    if (status != ZET_StatusOk) zetSetErrStatus(status);
    return status;
}

constexpr std::int64_t kMaxWord = std::numeric_limits<std::int32_t>::max();

// One more than fits stands for everything that does not fit.
constexpr std::int64_t limitedProduct(std::int64_t a, std::int64_t b) {
    std::int64_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) return kMaxWord + 1;
    return std::min(product, kMaxWord + 1);
}

constexpr std::int64_t rowBytes(std::int32_t dataOrder, std::uint32_t depth, std::int32_t align, std::int32_t nChannels,
                                std::int32_t width) {
    const std::int64_t alignBits = std::int64_t{8} * align;
    const std::int64_t samples = dataOrder == 0 ? std::int64_t{width} * nChannels : std::int64_t{width};
    std::int64_t bits = 0;
    if (__builtin_mul_overflow(samples, std::int64_t{sampleBits(depth)}, &bits)) return kMaxWord + 1;
    if (bits > 8 * kMaxWord) return kMaxWord + 1;
    return std::min(((bits + alignBits - 1) & -alignBits) >> 3, kMaxWord + 1);
}
static_assert(rowBytes(0, ZET_DEPTH_8U, 4, 3, 10) == 32 && rowBytes(1, ZET_DEPTH_8U, 8, 3, 10) == 16);
static_assert(rowBytes(0, ZET_DEPTH_1U, 4, 1, 100) == 16);
static_assert(rowBytes(0, ZET_DEPTH_32S, 4, kMaxWord, kMaxWord) == kMaxWord + 1);

struct WideLayout {
    std::int64_t widthStep;
    std::int64_t imageSize;
};

WideLayout wideLayout(const HeaderFields& f) {
    const std::int64_t step = rowBytes(f.dataOrder, f.depth, f.align, f.nChannels, f.width);
    const std::int64_t plane = limitedProduct(step, f.height);
    return {step, f.dataOrder == 0 ? plane : limitedProduct(plane, f.nChannels)};
}

std::int32_t limitedWord(std::int64_t value) { return static_cast<std::int32_t>(std::min(value, kMaxWord)); }

}  // namespace

HeaderFields headerFields(const ZetImage& image) {
    return {image.nChannels, image.alphaChannel, image.depth, image.colorModel, image.channelSeq, image.dataOrder,
            image.origin,    image.align,        image.width, image.height,     image.maskImage};
}

std::int32_t checkHeader(const HeaderFields& fields, bool tiled) {
    const std::int32_t status = checkFields(fields, 0);
    if (status != ZET_StatusOk || tiled) return status;
    const WideLayout layout = wideLayout(fields);
    const bool fits = layout.widthStep <= kMaxWord && layout.imageSize <= kMaxWord;
    return fits ? ZET_StatusOk : ZET_StatusBadImageSize;
}

DataLayout dataLayout(const HeaderFields& fields) {
    const WideLayout layout = wideLayout(fields);
    return {limitedWord(layout.widthStep), limitedWord(layout.imageSize)};
}

std::int32_t ownCheckImage(const ZetImage* image) { return checkImage(image, 0); }

bool checkImages(const Operation& op, std::initializer_list<const ZetImage*> images, std::source_location where) {
    for (const ZetImage* image : images) {
        if (ownCheckImage(image) == ZET_StatusOk) continue;
        reportIncorrectImage(op, where);
        return false;
    }
    return true;
}

std::int32_t ownRowBytes(std::int32_t dataOrder, std::uint32_t depth, std::int32_t align, std::int32_t nChannels,
                         std::int32_t width) {
    return limitedWord(rowBytes(dataOrder, depth, align, nChannels, width));
}

std::int32_t ownTileRowBytes(const ZetImage* image) {
    if (ownCheckImage(image) != ZET_StatusOk || !image->tileInfo) return 0;
    return ownRowBytes(image->dataOrder, image->depth, image->align, image->nChannels, image->tileInfo->width);
}

}  // namespace zetpxl
