#include "tests/support/model_median.h"

#include <algorithm>
#include <vector>

#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

const char* refusalOf(const ZetImage* src, const ZetImage* dst, const FrameWindow& w) {
    if (w.anchorX >= w.nCols || w.anchorX < 0) return "(anchorX>=nCols)||(anchorX<0)";
    if (w.anchorY >= w.nRows || w.anchorY < 0) return "(anchorY>=nRows)||(anchorY<0)";
    if (src == dst) return "(srcImage==dstImage)";
    if (src->depth != dst->depth) return "srcImage->depth!=dstImage->depth";
    if (src->depth == ZET_DEPTH_32F) return "srcImage->depth==32";
    if (src->nChannels != dst->nChannels) return "srcImage->nChannels!=dstImage->nChannels";
    if (src->alphaChannel != dst->alphaChannel) return "srcImage->alphaChannel!=dstImage->alphaChannel";
    if (src->depth != ZET_DEPTH_1U && src->dataOrder != dst->dataOrder)
        return "srcImage->dataOrder!=dstImage->dataOrder";
    return nullptr;
}

std::uint32_t medianOf(std::uint32_t depth, const FrameWindow& window, const WindowSample& sample) {
    std::vector<double> values;
    for (std::int32_t row = 0; row < window.nRows; ++row)
        for (std::int32_t col = 0; col < window.nCols; ++col) values.push_back(sampleValue(depth, sample(row, col)));
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(*middle));
}

}  // namespace

void modelMedian(Model& model, ZetImage* src, ZetImage* dst, const FrameWindow& window) {
    for (const ZetImage* image : {src, dst})
        if (model.checkImage(image)) return model.reportIncorrectImage("zetMedianFilter", "zetnlf");
    if (const char* words = refusalOf(src, dst, window))
        return model.report(ZET_StatusBadArgument, "zetMedianFilter", words, "zetnlf");
    if (!modelFrameChannels(model, *src, *dst, {"zetMedianFilter", ZET_StatusBadArgument})) return;
    modelFilterFrame(src, dst, window,
                     [&](const WindowSample& sample) { return medianOf(src->depth, window, sample); });
}

}  // namespace zetpxl::test
