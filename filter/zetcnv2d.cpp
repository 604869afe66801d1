// Filters an image with one to ten kernels and combines their results.
//   conv.1 only what lies outside the image is made up by its borders; neighbours outside the region are real pixels
//   conv.2 the interior is read in place: only strips along the image's edges, images of short rows, tiled sources and
//          in-place calls are copied
//   conv.3 the caller's records are never written
//   conv.4 in place gives what a separate destination would give
#include <algorithm>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "filter/convdriver.h"
#include "pixel/logic.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

void clampBorders(ZetImage* image) {
    for (std::int32_t& constant : image->borderConst) constant = clampToDepth(image->depth, constant);
}

// Intersection with another rectangle of the same image; sizes may come out 0 or negative.
void intersect(ZetROI* rect, const ZetROI& with) {
    const std::int64_t right =
        std::min(std::int64_t{rect->xOffset} + rect->width, std::int64_t{with.xOffset} + with.width);
    const std::int64_t bottom =
        std::min(std::int64_t{rect->yOffset} + rect->height, std::int64_t{with.yOffset} + with.height);
    rect->xOffset = std::max(rect->xOffset, with.xOffset);
    rect->yOffset = std::max(rect->yOffset, with.yOffset);
    rect->width = static_cast<std::int32_t>(right - rect->xOffset);
    rect->height = static_cast<std::int32_t>(bottom - rect->yOffset);
}

bool isEmpty(const ZetROI& rect) { return rect.width < 1 || rect.height < 1; }

ZetROI workRect(const ZetImage& image) {
    ZetROI rect{0, 0, 0, image.width, image.height};
    if (image.roi) {
        intersect(&rect, *image.roi);
        rect.coi = image.roi->coi;
    }
    if (image.maskImage) {
        ZetRoiRect mask;
        ownRoiRect(image.maskImage, &mask);
        rect.width = std::min(rect.width, mask.width);
        rect.height = std::min(rect.height, mask.height);
    }
    return rect;
}

// Gives both copies the common region; false when it is empty.
bool setRegions(Convolution* c) {
    c->srcRect = workRect(c->src);
    c->dstRect = workRect(c->dst);
    c->srcRect.width = c->dstRect.width = std::min(c->srcRect.width, c->dstRect.width);
    c->srcRect.height = c->dstRect.height = std::min(c->srcRect.height, c->dstRect.height);
    c->src.roi = &c->srcRect;
    c->dst.roi = &c->dstRect;
    return !isEmpty(c->srcRect);
}

std::int32_t checkChannels(const Convolution& c) {
    const bool srcCoi = c.srcRect.coi != 0;
    const bool dstCoi = c.dstRect.coi != 0;
    if (srcCoi != dstCoi) return kConvOneCoi;
    if (srcCoi) return kConvDone;
    const std::int32_t srcCount = c.src.nChannels - (c.src.alphaChannel ? 1 : 0);
    const std::int32_t dstCount = c.dst.nChannels - (c.dst.alphaChannel ? 1 : 0);
    if (srcCount == 0 || dstCount == 0) return kConvNoChannel;
    return srcCount == dstCount ? kConvDone : kConvMismatch;
}

ZetImage* joinMasks(ZetImage* srcMask, ZetImage* dstMask, std::int32_t width, std::int32_t height) {
    ZetImage* joined = zetCreateImageHeader(
        dstMask->nChannels, dstMask->alphaChannel, dstMask->depth, dstMask->colorModel, dstMask->channelSeq,
        dstMask->dataOrder, dstMask->origin, dstMask->align, width, height, nullptr, nullptr, nullptr, nullptr);
    if (!joined) return nullptr;
    zetAllocateImage(joined, 1, 0);
    if (joined->imageData) {
        zetAnd(srcMask, dstMask, joined);
        return joined;
    }
    ownDeallocateHeader(joined);
    return nullptr;
}

// The mask in force becomes the destination copy's, with a region of its own that can be moved.
std::int32_t setMask(Convolution* c) {
    ZetImage* srcMask = c->src.maskImage;
    ZetImage* dstMask = c->dst.maskImage;
    if (!srcMask && !dstMask) return kConvDone;
    const std::int32_t width = c->dstRect.width;
    const std::int32_t height = c->dstRect.height;
    ZetImage* ruling = dstMask ? dstMask : srcMask;
    if (srcMask && dstMask) {
        ruling = c->joined = joinMasks(srcMask, dstMask, width, height);
        if (!ruling) return kConvNoMemory;
    }
    c->maskRect = {regionCoi(ruling), regionX(ruling), regionY(ruling), width, height};
    c->mask = *ruling;
    c->mask.roi = &c->maskRect;
    c->dst.maskImage = &c->mask;
    return kConvDone;
}

std::int32_t oneBorderedCopy(Convolution* c) {
    BorderedCopy copy;
    if (!ownBorderedCopy(&c->src, c->margins, &copy)) return kConvNoMemory;
    const std::int32_t result = ownConvolveRegion(copy.image, &c->dst, &c->plan, c->margins);
    freeBorderedCopy(&copy);
    return result;
}

constexpr std::int32_t kStripRows = 64;

// Edge strips.
struct StripRoute {
    Convolution* c;
    ZetROI dst;  // where the region began
    ZetROI mask;
};

// Moves the destination, and its mask, to the pixel that lies (dx, dy) from where the region began.
void moveDestination(const StripRoute& route, std::int32_t dx, std::int32_t dy) {
    Convolution* c = route.c;
    c->dstRect.xOffset = route.dst.xOffset + dx;
    c->dstRect.yOffset = route.dst.yOffset + dy;
    c->maskRect.xOffset = route.mask.xOffset + dx;
    c->maskRect.yOffset = route.mask.yOffset + dy;
}

std::int32_t runBand(Convolution* c, ZetROI* band) {
    BorderedCopy copy;
    c->src.roi = band;
    const bool made = ownBorderedCopy(&c->src, c->margins, &copy);
    c->src.roi = &c->srcRect;
    if (!made) return kConvNoMemory;
    const std::int32_t result = ownConvolveRegion(copy.image, &c->dst, &c->plan, c->margins);
    freeBorderedCopy(&copy);
    return result;
}

// A strip goes in bands of rows, so that its copies do not grow with the image's height.
std::int32_t runStrip(Convolution* c, const ZetROI& strip) {
    const std::int32_t bandRows = std::max(kStripRows, c->margins.top + c->margins.bottom);
    std::int32_t result = kConvDone;
    for (std::int64_t done = 0; done < strip.height && result == kConvDone; done += bandRows) {
        ZetROI band = strip;
        band.yOffset += static_cast<std::int32_t>(done);
        band.height = static_cast<std::int32_t>(std::min<std::int64_t>(bandRows, strip.height - done));
        result = runBand(c, &band);
        c->dstRect.yOffset += band.height;
        c->maskRect.yOffset += band.height;
    }
    return result;
}

// The rectangle of one strip in what is left of the region, with the region's coi.
ZetROI stripOf(const ZetROI& left, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    ZetROI z{left.coi, x, y, width, height};
    intersect(&z, left);
    return z;
}

std::int32_t topAndBottom(const StripRoute& route, std::int32_t* topHeight) {
    Convolution* c = route.c;
    ZetROI& left = c->srcRect;
    const ConvMargins& m = c->margins;
    *topHeight = 0;
    const ZetROI top = stripOf(left, 0, 0, c->src.width, m.top);
    if (!isEmpty(top)) {
        moveDestination(route, 0, 0);
        const std::int32_t result = runStrip(c, top);
        if (result != kConvDone) return result;
        left.yOffset += top.height;
        left.height -= top.height;
        *topHeight = top.height;
    }
    const ZetROI bottom = stripOf(left, 0, c->src.height - m.bottom, c->src.width, m.bottom);
    if (isEmpty(bottom) || left.height < 1) return kConvDone;
    moveDestination(route, 0, route.dst.height - bottom.height);
    left.height -= bottom.height;
    return runStrip(c, bottom);
}

std::int32_t leftAndRight(const StripRoute& route, std::int32_t topHeight, std::int32_t* leftWidth) {
    Convolution* c = route.c;
    ZetROI& left = c->srcRect;
    const ConvMargins& m = c->margins;
    const std::int32_t rows = c->src.height - m.top - m.bottom;
    *leftWidth = 0;
    const ZetROI first = stripOf(left, 0, m.top, m.left, rows);
    if (!isEmpty(first)) {
        moveDestination(route, 0, topHeight);
        const std::int32_t result = runStrip(c, first);
        if (result != kConvDone) return result;
        left.xOffset += first.width;
        left.width -= first.width;
        *leftWidth = first.width;
    }
    const ZetROI last = stripOf(left, c->src.width - m.right, m.top, m.right, rows);
    if (isEmpty(last)) return kConvDone;
    moveDestination(route, route.dst.width - last.width, topHeight);
    left.width -= last.width;
    return runStrip(c, last);
}

// Samples of a row from which on an interior pays for strips beside it.
constexpr std::int64_t kLongRow = 1024;

// Whether short rows need pixels beside the image; then whole bands are copied with them.
bool isNarrow(const Convolution& c) {
    const std::int64_t right = std::int64_t{c.srcRect.xOffset} + c.srcRect.width + c.margins.right;
    const bool leaves = c.srcRect.xOffset < c.margins.left || right > c.src.width;
    return leaves && std::int64_t{c.srcRect.width} * c.src.nChannels <= kLongRow;
}

std::int32_t stripsAndInterior(Convolution* c) {
    const StripRoute route{c, c->dstRect, c->maskRect};
    std::int32_t topHeight = 0;
    std::int32_t leftWidth = 0;
    std::int32_t result = topAndBottom(route, &topHeight);
    if (result == kConvDone) result = leftAndRight(route, topHeight, &leftWidth);
    if (result != kConvDone || isEmpty(c->srcRect)) return result;
    moveDestination(route, leftWidth, topHeight);
    return ownConvolveRegion(&c->src, &c->dst, &c->plan, c->margins);
}

std::int32_t runRoute(Convolution* c, bool sameImage) {
    const bool srcTiled = c->src.tileInfo != nullptr;
    const bool dstTiled = c->dst.tileInfo != nullptr;
    if (sameImage && srcTiled) return convolveStripes(c);
    if (dstTiled) return ownConvolveTiles(c, {&c->src, srcTiled ? nullptr : &c->src, srcTiled, !srcTiled});
    if (sameImage) return convolveInPlace(c);
    if (srcTiled) return oneBorderedCopy(c);
    return isNarrow(*c) ? runStrip(c, c->srcRect) : stripsAndInterior(c);
}

std::int32_t ownConvolve2D(ZetImage* srcImage, ZetImage* dstImage, const ZetConvKernel* const* kernel,
                           std::int32_t nKernels, std::int32_t method) {
    Convolution c{};
    c.src = *srcImage;
    c.dst = *dstImage;
    clampBorders(&c.src);
    clampBorders(&c.dst);
    if (!setRegions(&c)) return kConvDone;
    std::int32_t result = checkChannels(c);
    if (result == kConvDone) result = setMask(&c);
    if (result == kConvDone) result = ownConvPrepare(&c.plan, kernel, nKernels, method);
    if (result == kConvDone) {
        c.margins = convMargins(c.plan);
        result = runRoute(&c, srcImage == dstImage);
    }
    zetDeallocate(c.joined, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
    return result;
}

bool checkRegions(const ZetImage* srcImage, const ZetImage* dstImage) {
    for (const ZetImage* image : {srcImage, dstImage}) {
        const ZetROI* roi = image->roi;
        if (!roi ||
            (roi->xOffset >= 0 && roi->yOffset >= 0 && roi->xOffset < image->width && roi->yOffset < image->height))
            continue;
        report(kConvolve2D, ZET_StatusBadRoiOffset, "Bad ROI offsets");
        return false;
    }
    return true;
}

bool isGoodKernel(const ZetConvKernel& k) {
    return k.nRows >= 1 && k.nCols >= 1 && k.anchorX >= 0 && k.anchorY >= 0 && k.nRows > k.anchorY &&
           k.nCols > k.anchorX;
}

const char* kernelFault(const ZetConvKernel* const* kernel, std::int32_t nKernels, std::int32_t method) {
    if (!kernel) return "kernel==0";
    if (nKernels < 1 || nKernels > kMaxKernels) return "(nKernels<=0 || nKernels>10)";
    if (nKernels > 1 && (method < 0 || method > 4)) return "Inadmissible method";
    for (std::int32_t k = 0; k < nKernels; ++k) {
        if (!kernel[k]) return "kernel[i]==0";
        if (!isGoodKernel(*kernel[k])) return "Bad kernel structure";
    }
    return nullptr;
}

void reportResult(std::int32_t result) {
    switch (result) {
        case kConvNoChannel:
            return report(kConvolve2D, ZET_StatusBadArgument, "No channel to operate");
        case kConvMismatch:
            return report(kConvolve2D, ZET_StatusBadArgument, "Uncompatible images");
        case kConvNoMemory:
            return report(kConvolve2D, ZET_StatusNoMemory, "Allocation failure");
        case kConvOneCoi:
            return report(kConvolve2D, ZET_StatusBadArgument, "One of the COI is not defined");
        default:
            return;
    }
}

}  // namespace

bool ownBorderedCopy(ZetImage* image, const ConvMargins& margins, BorderedCopy* copy) {
    const ZetROI& roi = *image->roi;
    const std::int64_t width = roi.width + margins.extentX() - 1;
    const std::int64_t height = roi.height + margins.extentY() - 1;
    if (width > INT32_MAX || height > INT32_MAX) return false;
    const auto w = static_cast<std::int32_t>(width);
    const auto h = static_cast<std::int32_t>(height);
    copy->image = zetCreateImageHeader(image->nChannels, image->alphaChannel, image->depth, image->colorModel,
                                       image->channelSeq, image->dataOrder, image->origin, image->align, w, h, nullptr,
                                       image->maskImage, image->imageTag, nullptr);
    if (!copy->image) return false;
    copy->image->imageData =
        ownGetRect(image, roi.xOffset - margins.left, roi.yOffset - margins.top, w, h, &copy->image->widthStep);
    copy->roi = {roi.coi, margins.left, margins.top, roi.width, roi.height};
    copy->image->roi = &copy->roi;
    if (copy->image->imageData) return true;
    ownDeallocateHeader(copy->image);
    return false;
}

void freeBorderedCopy(BorderedCopy* copy) {
    ownFreeBlock(copy->image->imageData);
    ownDeallocateHeader(copy->image);
}

}  // namespace zetpxl

using namespace zetpxl;

void zetConvolve2D(ZetImage* srcImage, ZetImage* dstImage, const ZetConvKernel* const* kernel, int32_t nKernels,
                   int32_t method) {
    if (!checkImages(kConvolve2D, {srcImage, dstImage}) || !checkRegions(srcImage, dstImage)) return;
    if (const char* fault = kernelFault(kernel, nKernels, method))
        return report(kConvolve2D, ZET_StatusBadArgument, fault);
    if (srcImage->depth != dstImage->depth || srcImage->dataOrder != dstImage->dataOrder)
        return report(kConvolve2D, ZET_StatusBadArgument, "Uncompatible images");
    if (srcImage->depth == ZET_DEPTH_32F)
        return report(kConvolve2D, ZET_StatusBadArgument, "32F images can be processed only with FP kernel");
    reportResult(ownConvolve2D(srcImage, dstImage, kernel, nKernels, method));
}
