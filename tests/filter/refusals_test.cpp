// What the linear filters refuse, in its order.
#include <gtest/gtest.h>

#include <array>

#include "tests/support/refusals.h"
#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

struct Pair {
    Scene scene;
    TestImage* src;
    TestImage* dst;

    Pair(const ImageShape& from, const ImageShape& to) {
        Random random(9);
        src = &scene.add("src", from, random);
        dst = &scene.add("dst", to, random);
    }
};

ImageShape shapeOf(std::uint32_t depth, std::int32_t nChannels, std::int32_t dataOrder) {
    return {.depth = depth, .nChannels = nChannels, .dataOrder = dataOrder, .width = 9, .height = 6};
}

TEST(Refusals, OfConvolution) {
    Pair pair(shapeOf(ZET_DEPTH_32F, 2, 0), shapeOf(ZET_DEPTH_32F, 3, 1));
    ZetImage& src = pair.src->record;
    ZetImage& dst = pair.dst->record;
    src.roi = &pair.src->roi;
    dst.roi = &pair.dst->roi;
    *src.roi = {1, 0, 6, 5, 5};
    *dst.roi = {0, 9, 0, 5, 5};
    src.align = dst.align = 5;
    std::array<std::int32_t, 9> weights{1};
    ZetConvKernel record{3, 3, 3, 0, weights.data(), 0};
    std::array<const ZetConvKernel*, 11> kernels{};
    const ZetConvKernel* const* set = nullptr;
    std::int32_t count = 0;
    std::int32_t method = 5;
    const std::int32_t bad = ZET_StatusBadArgument;
    const auto call = [&] {
        zetConvolve2D(&src, &dst, set, count, method);
        return zetGetErrStatus();
    };
    expectRefusals(
        pair.scene.log, {"zetConvolve2D", "zetcnv2d", call},
        {{-21, "Incorrect Image", [&] { src.align = 4; }},
         {-21, "Incorrect Image", [&] { dst.align = 4; }},
         {ZET_StatusBadRoiOffset, "Bad ROI offsets", [&] { src.roi->yOffset = 5; }},
         {ZET_StatusBadRoiOffset, "Bad ROI offsets", [&] { dst.roi->xOffset = 8; }},
         {bad, "kernel==0", [&] { set = kernels.data(); }},
         {bad, "(nKernels<=0 || nKernels>10)", [&] { count = 11; }},
         {bad, "(nKernels<=0 || nKernels>10)", [&] { count = 2; }},
         {bad, "Inadmissible method", [&] { method = 4; }},
         {bad, "kernel[i]==0", [&] { kernels[0] = &record; }},
         {bad, "Bad kernel structure", [&] { record.anchorX = 2; }},
         {bad, "kernel[i]==0", [&] { kernels[1] = &record; }},
         {bad, "Uncompatible images", [&] { dst.dataOrder = 0; }},
         {bad, "32F images can be processed only with FP kernel", [&] { src.depth = dst.depth = ZET_DEPTH_32S; }},
         {bad, "One of the COI is not defined", [&] { src.roi->coi = 0; }},
         {bad, "Uncompatible images", [&] { dst.alphaChannel = 3; }}});
}

TEST(Refusals, OfBlur) {
    Pair pair(shapeOf(ZET_DEPTH_8U, 1, 0), shapeOf(ZET_DEPTH_8S, 2, 1));
    ZetImage& src = pair.src->record;
    ZetImage& dst = pair.dst->record;
    Random random(4);
    ZetImage& mask = pair.scene.add("mask", shapeOf(ZET_DEPTH_1U, 1, 0), random).record;
    mask.alphaChannel = src.alphaChannel = 1;
    dst.maskImage = &mask;
    src.align = 5;
    std::int32_t nCols = 2, nRows = -1, x = -1, y = 2;
    const std::int32_t bad = ZET_StatusBadArgument;
    const auto call = [&] {
        zetBlur(&src, &dst, nCols, nRows, x, y);
        return zetGetErrStatus();
    };
    expectRefusals(pair.scene.log, {"zetBlur", "zetBlur", call},
                   {{-21, "Incorrect Image", [&] { src.align = 4; }},
                    {bad, "(srcImage->depth!=dstImage->depth)", [&] { dst.depth = ZET_DEPTH_8U; }},
                    {ZET_StatusBadOrder, "(srcImage->dataOrder!=dstImage->dataOrder)", [&] { dst.dataOrder = 0; }},
                    {bad, "(nRows<0||nCols<0)", [&] { nRows = 0; }},
                    {bad, "(anchorX<0||anchorY<0)", [&] { x = 2; }},
                    {bad, "(anchorX>=nCols||anchorY>=nRows)", [&] { x = 1; }},
                    {bad, "(anchorX>=nCols||anchorY>=nRows)", [&] { nRows = 3; }},
                    {ZET_StatusBadAlpha, "bad alpha channel's number", [&] { src.alphaChannel = 0; }},
                    {ZET_StatusBadChannels, "bad channel's number", [&] { dst.alphaChannel = 2; }},
                    {ZET_StatusBadAlpha, "bad alpha channel's number", [&] { mask.alphaChannel = 0; }}});
}

}  // namespace
}  // namespace zetpxl::test
