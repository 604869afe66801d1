// The built-in filters against the model: every kind in every depth, stage by stage.
#include <gtest/gtest.h>

#include <cfenv>

#include "tests/rank/draw_frame.h"
#include "tests/support/model_fixed.h"
#include "tests/support/scratch.h"

namespace zetpxl::test {
namespace {

Call drawFixed(Scene& scene, Random& random) {
    const Filtered images = drawFrameImages(scene, random);
    const std::int32_t filter = random.oneIn(40) ? random.pick({-1, 11, 99}) : random.below(11);
    ZetImage* src = &images.src->record;
    ZetImage* dst = &images.dst->record;
    return {images.src->name + " -> dst, filter " + std::to_string(filter),
            [=] { return std::to_string(zetFixedFilter(src, dst, filter)); },
            [=](Model& model) { return std::to_string(modelFixed(model, src, dst, filter)); }};
}

TEST(FixedFilter, AgreesWithTheModel) { compareWithModel(&drawFixed, {.compare = {.nanEqual = true}, .share = 150}); }
TEST(FixedFilter, FailsCleanlyAtEveryStep) { failEveryStep(&drawFixed, {.cases = 250, .heldTiles = 1}); }

TEST(FixedFilter, MemoryIsBoundedByRows) {
    for (const std::int32_t filter : {0, 4, 5, 6, 7, 9, 10})
        for (const std::uint32_t depth : {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16S, ZET_DEPTH_32F}) {
            if (filter == 10 && depth == ZET_DEPTH_1U) continue;
            const auto call = [=](ZetImage* src, ZetImage* dst) { zetFixedFilter(src, dst, filter); };
            EXPECT_EQ(peakScratch({.depth = depth, .width = 64, .height = 20000}, false, call),
                      peakScratch({.depth = depth, .width = 64, .height = 2000}, false, call))
                << depth << " " << filter;
        }
}

// The float store sets a mode of its own.
TEST(FixedFilter, KeepsTheRoundingMode) {
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        Scene scene;
        Random random(3);
        const ImageShape shape{.width = 20, .height = 20};
        ZetImage* src = &scene.add("src", shape, random).record;
        ZetImage* dst = &scene.add("dst", shape, random).record;
        std::fesetround(mode);
        const std::int32_t result = zetFixedFilter(src, dst, ZET_FIXED_SMOOTH_5);
        const int after = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(after, mode);
    }
}

}  // namespace
}  // namespace zetpxl::test
