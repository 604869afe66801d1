// One block of zoom: sizes, masks and addresses.
//   zoomblock.1 a source mask is scaled like the image, by the nearest bit; with a mask of the destination too, both must be set
//   zoomblock.2 an axis ends where the source's mask ends
#include <algorithm>

#include "core/depth.h"
#include "core/region.h"
#include "geometry/zoom.h"
#include "pixel/logic.h"

namespace zetpxl {

namespace {

// False when the block ends here: a report callback that answers 0 lets it go on.
bool goesOn(std::source_location where = std::source_location::current()) {
    if (zetGetErrStatus() >= 0) return true;
    return zetError(ZET_StatusBacktrace, kZoom.name, "", kZoom.source, static_cast<std::int32_t>(where.line())) == 0;
}

// Source pixels that `size` pixels come from.
std::int32_t maskExtent(std::int32_t size, double scale) {
    const double extent = scale * size + kZoomTolerance;
    return zoomTrunc(extent < 1 ? size / scale + kZoomTolerance : extent);
}

ZetImage* createMask(const ZetImage* like, std::int32_t width, std::int32_t height) {
    ZetImage* mask = zetCreateImageHeader(1, 0, ZET_DEPTH_1U, "GRAY", "GRAY", 0, like->origin, 4, width, height,
                                          nullptr, nullptr, nullptr, nullptr);
    if (!mask) return nullptr;
    zetAllocateImage(mask, 1, 0);
    if (mask->imageData) return mask;
    zetDeallocate(mask, ZET_IMAGE_HEADER);
    return nullptr;
}

struct ScaledMask {
    ZetImage* image = nullptr;

    ScaledMask() = default;
    ScaledMask(const ScaledMask&) = delete;
    ScaledMask& operator=(const ScaledMask&) = delete;
    ~ScaledMask() {
        if (image) zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
    }
};

// Scales the source's mask to the block and joins the destination's to it; false ends the block.
bool scaleMask(const ZetImage* srcImage, const ZetImage* dstImage, const ZoomPlan& plan, std::int32_t width,
               std::int32_t height, ScaledMask* scaled) {
    scaled->image = createMask(srcImage->maskImage, width, height);
    if (!scaled->image) {
        report(kZoom, ZET_StatusNoMemory, "Allocation failure");
        return false;
    }
    zetResize(srcImage->maskImage, scaled->image, width, maskExtent(width, plan.xScale), height,
              maskExtent(height, plan.yScale), ZET_INTER_NN);
    if (!goesOn()) return false;
    if (!dstImage->maskImage) return true;
    zetAnd(scaled->image, dstImage->maskImage, scaled->image);
    return goesOn();
}

struct Channels {
    std::int32_t first;
    std::int32_t count;
};

Channels channelsOf(const ZetImage* image) {
    const std::int32_t coi = regionCoi(image);
    if (coi != 0) return {coi - 1, 1};
    return {0, image->nChannels - (image->alphaChannel ? 1 : 0)};
}

bool channelsAgree(const Channels& src, const Channels& dst) {
    if (src.first == 0 && dst.first == 0) return src.count == dst.count;
    return src.count == 1 && dst.count == 1;
}

// Channels beyond this many are made one by one, so that a pixel's share of a piece of a row stays small.
constexpr std::int32_t kMostTogether = 16;

void addressPixels(const ZetImage* srcImage, const ZetImage* dstImage, const Channels& src, const Channels& dst,
                   ZoomRun* run) {
    const bool planar = srcImage->dataOrder == 1;
    const std::ptrdiff_t bytes = sampleBytes(srcImage->depth);
    const bool together = !planar && src.count <= kMostTogether;
    run->src = ownPixelAddress(srcImage, 0, 0, src.first);
    run->dst = ownPixelAddress(dstImage, regionX(dstImage), regionY(dstImage), dst.first);
    run->srcRowStep = srcImage->widthStep;
    run->dstRowStep = dstImage->widthStep;
    run->srcPlaneStep = planar ? planeBytes(srcImage) : bytes;
    run->dstPlaneStep = planar ? planeBytes(dstImage) : bytes;
    run->srcPixelStep = planar ? 1 : srcImage->nChannels;
    run->dstPixelStep = planar ? 1 : dstImage->nChannels;
    run->nTogether = together ? src.count : 1;
    run->passes = together ? 1 : src.count;
    run->dstBit = regionX(dstImage) & 7;
}

void useMask(const ZetImage* mask, ZoomRun* run) {
    std::uint8_t* data = nullptr;
    std::int32_t bit = 0;
    if (!mask || !ownMaskOrigin(mask, &data, &run->maskStep, &bit)) return;
    run->mask = data;
    run->maskBit = bit;
}

// The axes of the source; false when its region or its mask's is empty.
bool placeAxes(const ZetImage* image, const ZoomPlan& plan, double xStart, double yStart, ZoomRun* run) {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t maskedWidth = 0;
    std::int32_t maskedHeight = 0;
    if (!ownRoiSize(image, &height, &width, 1)) return false;
    if (!ownCommonSize(image, image->maskImage, &maskedHeight, &maskedWidth, 1)) return false;
    const bool nearest = plan.mode == ZET_INTER_NN;
    run->x = {xStart + (nearest && plan.xRem != 0 ? 0.5 : 0.0), plan.xStep, regionX(image), image->width,
              image->width - regionX(image) - 1 - (width - maskedWidth)};
    run->y = {yStart + (nearest && plan.yRem != 0 ? 0.5 : 0.0), plan.yStep, regionY(image), image->height,
              image->height - regionY(image) - 1 - (height - maskedHeight)};
    return true;
}

}  // namespace

void ownZoomBlock(ZetImage* srcImage, ZetImage* dstImage, const ZoomPlan& plan, double xStart, double yStart,
                  std::int32_t clip) {
    ZoomRun run{};
    std::int32_t width = 0;
    std::int32_t height = 0;
    if (!placeAxes(srcImage, plan, xStart, yStart, &run)) return;
    if (!ownCommonSize(dstImage, dstImage->maskImage, &height, &width, 1)) return;
    if (clip && !zoomSize(srcImage, dstImage, plan, &height, &width)) return;
    ScaledMask scaled;
    if (srcImage->maskImage && !scaleMask(srcImage, dstImage, plan, width, height, &scaled)) return;
    const Channels src = channelsOf(srcImage);
    const Channels dst = channelsOf(dstImage);
    if (!channelsAgree(src, dst)) return report(kZoom, ZET_StatusError, "srcImage COI != dstImage COI");
    addressPixels(srcImage, dstImage, src, dst, &run);
    useMask(scaled.image ? scaled.image : dstImage->maskImage, &run);
    run.width = width;
    run.height = height;
    zoomRows(run, srcImage->depth, plan.mode);
}

}  // namespace zetpxl
