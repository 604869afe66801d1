// Changes the scale of the source region in either direction: areas by decimation, all else by the engine of zoom.
#include "geometry/zoom.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetResize", "zetresiz"};

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

void zetResize(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
               int32_t interpolate) {
    if (interpolate == ZET_INTER_SUPER) {
        if (xDst > xSrc || yDst > ySrc) return report(op, ZET_StatusBadArgument, "(xDst > xSrc || yDst > ySrc)");
        zetDecimate(srcImage, dstImage, xDst, xSrc, yDst, ySrc, interpolate);
    } else {
        ownZoom(srcImage, dstImage, {xDst, xSrc, yDst, ySrc}, interpolate);
    }
    reportBacktrace(op);
}
