// Enlarges the source region into the destination region.
//   zoom.1 the first and last pixels of the regions meet, but for the nearest sample by whole factors, which repeats pixels
//   zoom.2 images narrower or lower than 4 pixels take lines for cubics, those of one pixel the nearest sample; bits always
//   zoom.3 a colour image's alpha channel is left alone unless a coi names it
#include <algorithm>

#include "core/check.h"
#include "core/region.h"
#include "geometry/zoom.h"

namespace zetpxl {

namespace {

bool checkArguments(const ZetImage* srcImage, const ZetImage* dstImage, const ZoomFactors& f,
                    std::int32_t interpolate) {
    constexpr std::int32_t bad = ZET_StatusBadArgument;
    const std::uint32_t depth = srcImage->depth;
    if (interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate != ZET_INTER_CUBIC)
        report(kZoom, bad,
               "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate != ZET_INTER_CUBIC");
    if (depth != dstImage->depth) report(kZoom, bad, "srcImage->depth != dstImage->depth");
    if (depth != ZET_DEPTH_1U && depth != ZET_DEPTH_8U && depth != ZET_DEPTH_16U && depth != ZET_DEPTH_32F)
        report(kZoom, bad,
               "srcImage->depth != ZET_DEPTH_1U && srcImage->depth != ZET_DEPTH_8U && srcImage->depth != "
               "ZET_DEPTH_16U && srcImage->depth != ZET_DEPTH_32F");
    if (srcImage->dataOrder != dstImage->dataOrder) report(kZoom, bad, "srcImage->dataOrder != dstImage->dataOrder");
    if (f.xDst < 1 || f.xSrc < 1) report(kZoom, bad, "xDst <= 0 || xSrc <= 0");
    if (f.yDst < 1 || f.ySrc < 1) report(kZoom, bad, "yDst <= 0 || ySrc <= 0");
    return zetGetErrStatus() >= 0;
}

std::int32_t chooseMode(const ZetImage* image, std::int32_t interpolate) {
    if (image->depth == ZET_DEPTH_1U || image->width < 2 || image->height < 2) return ZET_INTER_NN;
    const bool small = image->width < 4 || image->height < 4;
    return small && interpolate == ZET_INTER_CUBIC ? ZET_INTER_LINEAR : interpolate;
}

std::int32_t remainder(std::int32_t dst, std::int32_t src) { return std::max(dst, src) % std::min(dst, src); }

double stepOf(std::int32_t size, std::int32_t dst, std::int32_t src, bool repeats) {
    const double made = static_cast<double>(size) / src * dst;
    if (repeats) return size / made;
    return made > 1 ? (static_cast<double>(size) - 1) / (made - 1) : 0;
}

ZoomPlan makePlan(const ZetImage* image, const ZoomFactors& f, std::int32_t interpolate) {
    ZoomPlan plan{};
    plan.mode = chooseMode(image, interpolate);
    plan.xScale = static_cast<double>(f.xSrc) / f.xDst;
    plan.yScale = static_cast<double>(f.ySrc) / f.yDst;
    plan.xRem = remainder(f.xDst, f.xSrc);
    plan.yRem = remainder(f.yDst, f.ySrc);
    const bool nearest = plan.mode == ZET_INTER_NN;
    plan.xStep = stepOf(image->roi ? image->roi->width : image->width, f.xDst, f.xSrc, nearest && plan.xRem == 0);
    plan.yStep = stepOf(image->roi ? image->roi->height : image->height, f.yDst, f.ySrc, nearest && plan.yRem == 0);
    return plan;
}

bool hasOnlyAlpha(const ZetImage* image) { return image->alphaChannel != 0 && image->nChannels == 1; }

}  // namespace

void ownZoom(ZetImage* srcImage, ZetImage* dstImage, const ZoomFactors& factors, std::int32_t interpolate) {
    if (!checkImages(kZoom, {srcImage, dstImage})) return;
    if (!checkArguments(srcImage, dstImage, factors, interpolate)) return;
    const ZoomPlan plan = makePlan(srcImage, factors, interpolate);
    if (srcImage == dstImage) return report(kZoom, ZET_StatusBadArgument, "This function isn`t in-plase function");
    if (hasOnlyAlpha(srcImage) || hasOnlyAlpha(dstImage)) return;
    if (srcImage->tileInfo || dstImage->tileInfo) return zoomTiles(srcImage, dstImage, plan);
    ownZoomBlock(srcImage, dstImage, plan, 0.0, 0.0, 1);
}

}  // namespace zetpxl

using namespace zetpxl;

void zetZoom(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
             int32_t interpolate) {
    if (xDst < xSrc || yDst < ySrc) return report(kZoom, ZET_StatusBadArgument, "xDst < xSrc || yDst < ySrc");
    ownZoom(srcImage, dstImage, {xDst, xSrc, yDst, ySrc}, interpolate);
}
