#include "tests/support/model_fixed.h"

#include "tests/support/model_copy.h"

namespace zetpxl::test {
namespace {

struct Refusal {
    std::int32_t result;
    const char* words;
};

Refusal refusalOf(const ZetImage* src, const ZetImage* dst) {
    if (src == dst) return {ZET_StatusBadArgument, "(srcImage==dstImage)"};
    if (src->depth != dst->depth) return {ZET_StatusBadDepth, "srcImage->depth!=dstImage->depth"};
    if (src->nChannels != dst->nChannels) return {ZET_StatusBadChannels, "srcImage->nChannels!=dstImage->nChannels"};
    if (src->alphaChannel != dst->alphaChannel)
        return {ZET_StatusBadAlpha, "srcImage->alphaChannel!=dstImage->alphaChannel"};
    if (src->depth != ZET_DEPTH_1U && src->dataOrder != dst->dataOrder)
        return {ZET_StatusBacktrace, "srcImage->dataOrder!=dstImage->dataOrder"};
    return {0, nullptr};
}

FrameWindow windowOf(std::int32_t filter) {
    if (filter == 5 || filter == 7 || filter == 9) return {5, 5, 2, 2};
    return {3, 3, 1, 1};
}

void say(Model& model, const char* words) { model.report(ZET_StatusBadArgument, "zetFixedFilter", words, "zetnlf"); }

}  // namespace

std::int32_t modelFixed(Model& model, ZetImage* src, ZetImage* dst, std::int32_t filter) {
    for (const ZetImage* image : {src, dst}) {
        if (!model.checkImage(image)) continue;
        model.reportIncorrectImage("zetFixedFilter", "zetnlf");
        return model.status;
    }
    const Refusal refusal = refusalOf(src, dst);
    if (refusal.words) return say(model, refusal.words), refusal.result;
    const bool goesOn = modelFrameChannels(model, *src, *dst, {"zetFixedFilter", ZET_StatusBadCoi});
    if (model.status < 0) return model.status;
    if (!goesOn) return 0;
    if (filter < 0 || filter > 10) return say(model, "Unknow filter."), ZET_StatusBadArgument;
    if (filter == 10 && src->depth == ZET_DEPTH_1U) return modelCopy(model, src, dst), 0;
    modelFilterFrame(src, dst, windowOf(filter),
                     [&](const WindowSample& sample) { return modelFixedSample(src->depth, filter, sample); });
    return 0;
}

}  // namespace zetpxl::test
