// Plain model of changes of scale by whole-number ratios.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

void modelZoom(Model& model, ZetImage* src, ZetImage* dst, std::int32_t xDst, std::int32_t xSrc, std::int32_t yDst,
               std::int32_t ySrc, std::int32_t interpolate);
void modelResize(Model& model, ZetImage* src, ZetImage* dst, std::int32_t xDst, std::int32_t xSrc, std::int32_t yDst,
                 std::int32_t ySrc, std::int32_t interpolate);

constexpr const char* kZoomModeWords =
    "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate != ZET_INTER_CUBIC";
constexpr const char* kZoomDepthWords =
    "srcImage->depth != ZET_DEPTH_1U && srcImage->depth != ZET_DEPTH_8U && srcImage->depth != ZET_DEPTH_16U && "
    "srcImage->depth != ZET_DEPTH_32F";

}  // namespace zetpxl::test
