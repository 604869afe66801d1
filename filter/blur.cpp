// Replaces each pixel by the mean of a rectangle around it.
//   blur.5 the rectangle covers anchorX columns left of the pixel and anchorY rows above it; nothing is mirrored
//   blur.6 source rows are taken with borders made up before any of them is overwritten: in place gives what a separate
//          destination gives
//   blur.7 untiled images are read in bands of rows, so scratch does not grow with the height
#include "filter/blur.h"

#include <algorithm>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "pixel/logic.h"

namespace zetpxl {

namespace {

// False for an image without channels to work on.
bool ownBlurRegion(const ZetImage* image, BlurRegion* region) {
    ZetRoiRect rect;
    ownRoiRect(image, &rect);
    const std::int32_t coi = regionCoi(image);
    *region = {rect.xOffset, rect.yOffset, rect.width, rect.height, coi, coi};
    if (coi != 0) return true;
    region->firstChannel = 1;
    region->lastChannel = image->nChannels - (image->alphaChannel ? 1 : 0);
    return region->lastChannel > 0;
}

void lowerSize(BlurCall* call, const BlurRegion& region) {
    call->width = std::min(call->width, region.width);
    call->height = std::min(call->height, region.height);
}

const char* argumentFault(const BlurCall& c) {
    if (c.nRows < 0 || c.nCols < 0) return "(nRows<0||nCols<0)";
    if (c.anchorX < 0 || c.anchorY < 0) return "(anchorX<0||anchorY<0)";
    if (c.anchorX >= c.nCols || c.anchorY >= c.nRows) return "(anchorX>=nCols||anchorY>=nRows)";
    return nullptr;
}

bool checkArguments(const BlurCall& c) {
    const char* fault = nullptr;
    std::int32_t status = ZET_StatusBadArgument;
    const bool oneChannel = c.src->nChannels == 1 && c.dst->nChannels == 1;
    if (c.src->depth != c.dst->depth) {
        fault = "(srcImage->depth!=dstImage->depth)";
    } else if (!oneChannel && c.src->dataOrder != c.dst->dataOrder) {
        status = ZET_StatusBadOrder;
        fault = "(srcImage->dataOrder!=dstImage->dataOrder)";
    } else {
        fault = argumentFault(c);
    }
    if (fault) report(kBlur, status, fault);
    return !fault;
}

bool badAlpha() {
    report(kBlur, ZET_StatusBadAlpha, "bad alpha channel's number");
    return false;
}

bool resolveRegions(BlurCall* c) {
    if (!ownBlurRegion(c->dst, &c->dstRegion) || !ownBlurRegion(c->src, &c->srcRegion)) return badAlpha();
    c->width = c->srcRegion.width;
    c->height = c->srcRegion.height;
    lowerSize(c, c->dstRegion);
    if (c->srcRegion.lastChannel - c->srcRegion.firstChannel != c->dstRegion.lastChannel - c->dstRegion.firstChannel) {
        report(kBlur, ZET_StatusBadChannels, "bad channel's number");
        return false;
    }
    for (const ZetImage* mask : {c->src->maskImage, c->dst->maskImage}) {
        BlurRegion region;
        if (!mask) continue;
        if (!ownBlurRegion(mask, &region)) return badAlpha();
        lowerSize(c, region);
    }
    return c->width > 0 && c->height > 0;
}

bool noMemory() {
    report(kBlur, ZET_StatusNoMemory, "Allocation failure");
    return false;
}

// One bit for each pixel of the region; bits that a mask's own mask leaves out are clear.
bool makeMask(BlurCall* c) {
    ZetImage* srcMask = c->src->maskImage;
    ZetImage* dstMask = c->dst->maskImage;
    ZetImage* like = srcMask ? srcMask : dstMask;
    if (!like) return true;
    c->mask = zetCreateImageHeader(1, 0, ZET_DEPTH_1U, "GRAY", "GRAY", like->dataOrder, like->origin, like->align,
                                   c->width, c->height, nullptr, nullptr, nullptr, nullptr);
    if (!c->mask) return noMemory();
    zetAllocateImage(c->mask, 1, 0);
    if (!c->mask->imageData) return noMemory();
    if (srcMask && dstMask) {
        zetAnd(srcMask, dstMask, c->mask);
    } else {
        zetCopy(like, c->mask);
    }
    return !reportBacktrace(kBlur);
}

void blurWhole(const BlurCall& call) {
    const BlurArea area{0, 0, call.width, call.height};
    BlurSource source;
    if (!openPiece(call, area, call.src->tileInfo ? BlurFetch::Whole : BlurFetch::Banded, &source)) return;
    blurInto(call, area, &source, call.dst, call.dstRegion.x, call.dstRegion.y);
}

void runRoute(const BlurCall& call) {
    if (!call.src->tileInfo && !call.dst->tileInfo) return blurWhole(call);
    if (!call.dst->tileInfo) return blurSourceTiles(call);
    return call.src == call.dst ? blurTilesInPlace(call) : blurDestinationTiles(call);
}

}  // namespace

bool openPiece(const BlurCall& call, const BlurArea& area, BlurFetch fetch, BlurSource* source) {
    const std::int64_t width = std::int64_t{area.width} + call.nCols;
    const std::int64_t height = std::int64_t{area.height} + call.nRows;
    if (width > INT32_MAX || height > INT32_MAX) return noMemory();
    const BlurRect rect{call.srcRegion.x + area.x - call.anchorX, call.srcRegion.y + area.y - call.anchorY,
                        static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
    const bool inPlace = call.src == call.dst && fetch == BlurFetch::Banded;
    return openBlurSource(source, call.src, rect, call.nRows, fetch, inPlace) || noMemory();
}

bool blurInto(const BlurCall& call, const BlurArea& area, BlurSource* source, const ZetImage* image, std::int32_t x,
              std::int32_t y) {
    BlurPiece piece{};
    piece.source = source;
    piece.srcImage = call.src;
    piece.srcChannel = call.srcRegion.firstChannel - 1;
    const std::int32_t dstChannel = call.dstRegion.firstChannel - 1;
    const bool isBits = image->depth == ZET_DEPTH_1U;
    piece.dst = ownPixelAddress(image, isBits ? 0 : x, y, isBits ? 0 : dstChannel);
    piece.dstBit = isBits ? x : 0;
    piece.dstRowStep = image->widthStep;
    piece.dstPlaneStep = planeBytes(image);
    piece.dstPixelStep = image->dataOrder == 0 ? image->nChannels : 1;
    piece.nChannels = call.dstRegion.lastChannel - dstChannel;
    piece.width = area.width;
    piece.height = area.height;
    piece.nCols = call.nCols;
    piece.nRows = call.nRows;
    piece.inverse = call.inverse;
    if (call.mask) {
        piece.mask = {pixelData(call.mask) + std::ptrdiff_t{area.y} * call.mask->widthStep, area.x};
        piece.maskStep = call.mask->widthStep;
    }
    return blurBlock(piece, image->depth) || noMemory();
}

}  // namespace zetpxl

using namespace zetpxl;

void zetBlur(ZetImage* srcImage, ZetImage* dstImage, int32_t nCols, int32_t nRows, int32_t anchorX, int32_t anchorY) {
    BlurCall call{};
    call.src = srcImage;
    call.dst = dstImage;
    call.nCols = nCols;
    call.nRows = nRows;
    call.anchorX = anchorX;
    call.anchorY = anchorY;
    if (!checkImages(kBlur, {srcImage, dstImage}) || !checkArguments(call)) return;
    if (nCols == 1 && nRows == 1) return zetCopy(srcImage, dstImage);
    if (!resolveRegions(&call)) return;
    std::int32_t samples = 0;
    if (__builtin_mul_overflow(nCols, nRows, &samples)) return static_cast<void>(noMemory());
    call.inverse = static_cast<float>(1.0 / samples);
    if (makeMask(&call)) runRoute(call);
    zetDeallocate(call.mask, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
}
