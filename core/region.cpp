// Regions, channels and masks resolved to sizes, addresses and steps.
//   region.1 a region is cut at the image's right and bottom edge; one wholly outside is empty and no failure
//   region.2 where regions differ in size, the smaller width and the smaller height count
//   region.3 coi 0 means all channels but an alpha channel, coi above 0 that channel, alpha included
//   region.4 one flat run also asks for equal row steps: rows that a record lays out by a step of its own would be paired
//            wrongly
//   region.5 sums of offset and size are formed in 64 bits: both may be as large as a word holds
#include "core/region.h"

#include <algorithm>
#include <limits>

#include "core/depth.h"

namespace zetpxl {

namespace {

// Offset and size of a region along one axis, cut to the image. False when nothing is left.
bool clipAxis(std::int32_t offset, std::int32_t size, std::int32_t imageSize, std::int32_t* clipped) {
    if (offset >= imageSize) return false;
    std::int64_t left = std::min<std::int64_t>(offset, 0) + size;
    left = std::min<std::int64_t>(left, std::int64_t{imageSize} - std::max(offset, 0));
    *clipped = static_cast<std::int32_t>(left);
    return true;
}

std::int32_t keepSmaller(const ZetImage* image, std::int32_t* height, std::int32_t* width, std::int32_t clip) {
    std::int32_t itsHeight = 0;
    std::int32_t itsWidth = 0;
    if (!ownRoiSize(image, &itsHeight, &itsWidth, clip)) return 0;
    *height = std::min(*height, itsHeight);
    *width = std::min(*width, itsWidth);
    return 1;
}

std::int32_t lastIndex(std::int32_t offset, std::int32_t size) {
    constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(std::int64_t{offset} + size - 1, limit));
}

bool clipBounds(const ZetImage* image, ZetRoiBounds* b) {
    if (b->x1 < 0 || b->y1 < 0 || b->x0 >= image->width || b->y0 >= image->height) return false;
    *b = {std::max(b->x0, 0), std::max(b->y0, 0), std::min(b->x1, image->width - 1),
          std::min(b->y1, image->height - 1)};
    return true;
}

// Size that a region keeps inside the image, 0 or negative when it lies outside.
std::int32_t overlap(std::int32_t offset, std::int32_t size, std::int32_t imageSize) {
    return static_cast<std::int32_t>(std::min<std::int64_t>(size, std::int64_t{imageSize} - offset));
}

struct Channels {
    std::int32_t count;
    std::int32_t first;
};

Channels resolveChannels(const ZetImage* image) {
    const std::int32_t coi = regionCoi(image);
    if (coi > 0) return {1, coi - 1};
    return {image->nChannels - (image->alphaChannel ? 1 : 0), 0};
}

bool hasOnlyAlpha(const ZetImage* image) { return !image->roi && image->alphaChannel && image->nChannels == 1; }

// Bytes from the image's first byte to element (x, y) of a channel; the bit of 1U is left to the caller.
std::ptrdiff_t elementOffset(const ZetImage* image, std::ptrdiff_t x, std::ptrdiff_t y, std::ptrdiff_t channel) {
    const std::ptrdiff_t bytes = sampleBytes(image->depth);
    const std::ptrdiff_t row = y * image->widthStep;
    if (image->dataOrder == 1) return row + x * bytes + channel * planeBytes(image);
    return row + (x * image->nChannels + channel) * bytes;
}

bool coversWholeImage(const ZetImage* image) {
    const ZetROI* roi = image->roi;
    if (!roi) return true;
    return roi->xOffset == 0 && roi->yOffset == 0 && roi->width >= image->width && roi->height >= image->height &&
           image->nChannels == 1 && roi->coi > 0;
}

bool haveSameLayout(const ZetImage* a, const ZetImage* b) {
    return a->imageSize == b->imageSize && a->height == b->height && a->width == b->width && a->align == b->align &&
           a->widthStep == b->widthStep;
}

}  // namespace

std::int32_t ownRoiSize(const ZetImage* image, std::int32_t* height, std::int32_t* width, std::int32_t clip) {
    *width = image->width;
    *height = image->height;
    const ZetROI* roi = image->roi;
    if (!roi) return 1;
    if (roi->width < 1 || roi->height < 1) return 0;
    *width = roi->width;
    *height = roi->height;
    if (!clip) return 1;
    const bool inX = clipAxis(roi->xOffset, roi->width, image->width, width);
    const bool inY = clipAxis(roi->yOffset, roi->height, image->height, height);
    return inX && inY ? 1 : 0;
}

std::int32_t ownCommonSize(const ZetImage* image, const ZetImage* mask, std::int32_t* height, std::int32_t* width,
                           std::int32_t clip) {
    if (!ownRoiSize(image, height, width, clip)) return 0;
    return mask ? keepSmaller(mask, height, width, clip) : 1;
}

std::int32_t ownCommonSize3(const ZetImage* a, const ZetImage* b, const ZetImage* mask, std::int32_t* height,
                            std::int32_t* width, std::int32_t clip) {
    if (!ownCommonSize(a, b, height, width, clip)) return 0;
    return mask ? keepSmaller(mask, height, width, clip) : 1;
}

std::int32_t ownRoiBounds(const ZetImage* image, ZetRoiBounds* bounds, std::int32_t clip) {
    *bounds = {0, 0, image->width - 1, image->height - 1};
    const ZetROI* roi = image->roi;
    if (!roi) return 1;
    if (roi->width < 1 || roi->height < 1) return 0;
    *bounds = {roi->xOffset, roi->yOffset, lastIndex(roi->xOffset, roi->width), lastIndex(roi->yOffset, roi->height)};
    return !clip || clipBounds(image, bounds) ? 1 : 0;
}

void ownRoiRect(const ZetImage* image, ZetRoiRect* rect) {
    const ZetROI* roi = image->roi;
    rect->xOffset = regionX(image);
    rect->yOffset = regionY(image);
    rect->width = roi ? overlap(roi->xOffset, roi->width, image->width) : image->width;
    rect->height = roi ? overlap(roi->yOffset, roi->height, image->height) : image->height;
}

std::int32_t ownRoiOrigin(const ZetImage* image, std::uint8_t** data, std::ptrdiff_t* rowStep, std::int32_t* nProc,
                          std::ptrdiff_t* planeStep, std::int32_t* bitOffset) {
    if (hasOnlyAlpha(image)) return 0;
    ZetRoiLayout layout;
    ownRoiLayout(image, &layout, 1);
    *data = layout.data;
    *rowStep = layout.rowStep;
    *nProc = layout.nProc;
    *planeStep = layout.planeStep;
    if (image->depth == ZET_DEPTH_1U) *bitOffset = layout.bitOffset;
    return 1;
}

std::int32_t ownRoiLayout(const ZetImage* image, ZetRoiLayout* layout, std::int32_t clip) {
    if (hasOnlyAlpha(image)) return 0;
    const std::int32_t x = clip ? std::max(regionX(image), 0) : regionX(image);
    const std::int32_t y = clip ? std::max(regionY(image), 0) : regionY(image);
    const Channels channels = resolveChannels(image);
    layout->data = pixelData(image) + elementOffset(image, x, y, channels.first);
    layout->rowStep = image->widthStep;
    layout->planeStep = planeBytes(image);
    layout->nProc = channels.count;
    layout->nChannels = image->nChannels;
    layout->firstChannel = channels.first;
    layout->bitOffset = image->depth == ZET_DEPTH_1U ? x : 0;
    return 1;
}

std::uint8_t* ownRoiStart(const ZetImage* image, std::int32_t* width, std::int32_t* height, std::int32_t channel,
                          std::int32_t* bitOffset) {
    ZetRoiRect rect;
    ownRoiRect(image, &rect);
    *width = std::max(rect.width, 0);
    *height = std::max(rect.height, 0);
    *bitOffset = rect.xOffset & 7;
    if (!image->roi) return pixelData(image);
    const std::ptrdiff_t bits = sampleBits(image->depth);
    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(rect.yOffset) * image->widthStep;
    const std::ptrdiff_t x = rect.xOffset;
    if (image->dataOrder == 1) return pixelData(image) + planeBytes(image) * channel + row + ((x * bits) >> 3);
    return pixelData(image) + row + (((x * image->nChannels + channel) * bits) >> 3);
}

std::uint8_t* ownPixelAddress(const ZetImage* image, std::int32_t x, std::int32_t y, std::int32_t channel) {
    const std::ptrdiff_t bitByte = image->depth == ZET_DEPTH_1U ? x >> 3 : 0;
    return pixelData(image) + elementOffset(image, x, y, channel) + bitByte;
}

std::int32_t ownMaskOrigin(const ZetImage* mask, std::uint8_t** data, std::ptrdiff_t* step, std::int32_t* bit) {
    if (mask->depth != ZET_DEPTH_1U) return 0;
    const std::int32_t x = std::max(regionX(mask), 0);
    const std::ptrdiff_t y = std::max(regionY(mask), 0);
    *data = pixelData(mask) + y * mask->widthStep + (x >> 3);
    *step = mask->widthStep;
    *bit = x & 7;
    return 1;
}

std::int32_t ownSameBlock(const ZetImage* a, const ZetImage* b, const ZetImage* c, std::int32_t hasAlpha) {
    if (hasAlpha || !haveSameLayout(a, b) || (c && !haveSameLayout(a, c))) return 0;
    return coversWholeImage(a) && coversWholeImage(b) && (!c || coversWholeImage(c)) ? 1 : 0;
}

}  // namespace zetpxl
