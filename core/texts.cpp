// Texts of statuses, and the version record.
//   texts.1 a status of an image check and that of the same check on a mask share one text: the image's is the mask's
//           behind its prefix
//   texts.2 a value without a text of its own has the unknown text
#include <array>
#include <cstddef>
#include <cstdint>

#include "zetpxl.h"

namespace {

struct StatusText {
    std::int32_t status;
    const char* text;
    bool sharedWithMask;  // the text begins with maskPrefix and serves status - 100 as a whole
};

constexpr char maskPrefix[] = "Mask. ";
constexpr std::size_t maskPrefixLength = sizeof maskPrefix - 1;
constexpr std::int32_t maskStatusOffset = 100;
constexpr char unknownText[] = "Unknown error or status code";

// Ordered: the text of status s stands at index -s.
constexpr std::array<StatusText, 32> statusTexts = {{
    {ZET_StatusOk, "No Error", false},
    {ZET_StatusBacktrace, "Backtrace", false},
    {ZET_StatusError, unknownText, false},
    {ZET_StatusInternal, "Internal error (bad state)", false},
    {ZET_StatusNoMemory, "Insufficient memory", false},
    {ZET_StatusBadArgument, "Bad argument", false},
    {ZET_StatusUnsupported, "Unsupported function", false},
    {ZET_StatusNoConvergence, "Iteration convergence failed", false},
    {ZET_StatusAutotrace, "Autotrace call", false},
    {ZET_StatusNullImage, "Null pointer to an image header", false},
    {ZET_StatusBadImageSize, "Mask. Incorrect image size", true},
    {ZET_StatusBadRoiOffset, "Mask. Incorrect offset of ROI of the image", true},
    {ZET_StatusNoImageData, "Mask. Image must be tiled or must have nonzero data pointer", true},
    {ZET_StatusBadWidthStep, "Mask. Incorrect widthStep of the image", true},
    {ZET_StatusBadColorModel, "Mask. Incorrect Color model or channel sequence of the image", true},
    {ZET_StatusBadChannels, "Mask. Incorrect number of channels in the image", true},
    {ZET_StatusBadChannels1U, "Number of channels for 1U depth image must be one", false},
    {ZET_StatusBadDepth, "Mask. Incorrect depth value in the image header", true},
    {ZET_StatusBadAlpha, "Mask. Incorrect alpha channel number in the image header", true},
    {ZET_StatusBadOrder, "Mask. Incorrect data order value in the image header", true},
    {ZET_StatusBadOrigin, "Mask. Incorrect data origin value in the image header", true},
    {ZET_StatusBadAlign, "Mask. Incorrect data alignment value in the image header", true},
    {ZET_StatusNoTileCallback, "Null pointer to callback function", false},
    {ZET_StatusBadTileSize, "Incorrect size of the tile", false},
    {ZET_StatusBadCoi, "Mask. Incorrect COI of the image", true},
    {ZET_StatusBadRoiSize, "Mask. Incorrect size of ROI in the image header", true},
    {ZET_StatusMaskTiled, "Mask image is taled", false},
    {ZET_StatusNullPointer, "Null pointer", false},
    {ZET_StatusBadVectorLength, "Incorrect vector length", false},
    {ZET_StatusBadFilter, "Incorrect filter structure content", false},
    {ZET_StatusBadTransformKernel, "Incorrect transform kernel content", false},
    {ZET_StatusBadFilterOffset, "Incorrect filter ofset value", false},
}};

constexpr bool isOrdered() {
    for (std::size_t i = 0; i < statusTexts.size(); ++i)
        if (statusTexts[i].status != -static_cast<std::int32_t>(i)) return false;
    return true;
}
static_assert(isOrdered());

constexpr bool hasText(std::int32_t status) {
    return status <= 0 && status > -static_cast<std::int32_t>(statusTexts.size());
}

const StatusText& textOf(std::int32_t status) { return statusTexts[static_cast<std::size_t>(-status)]; }

constexpr ZetLibVersion libVersion = {
    2, 5, 2, "zetpxl.lib", "2.5 Release", "[2.5.2.82, 09/05/2000]", "Sep  7 2000", "Microsoft*",
};

}  // namespace

const char* zetErrorStr(int32_t status) {
    if (hasText(status)) {
        const StatusText& entry = textOf(status);
        return entry.sharedWithMask ? entry.text + maskPrefixLength : entry.text;
    }
    if (status >= -maskStatusOffset) return unknownText;
    const std::int32_t imageStatus = status + maskStatusOffset;
    const bool ofMask = hasText(imageStatus) && textOf(imageStatus).sharedWithMask;
    return ofMask ? textOf(imageStatus).text : unknownText;
}

const ZetLibVersion* zetGetLibVersion(void) { return &libVersion; }
