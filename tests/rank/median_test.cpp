// Medians against the model: every depth and window shape, and the frame's pieces over tiles.
#include <gtest/gtest.h>

#include "tests/filter/draw_filter.h"
#include "tests/rank/draw_frame.h"
#include "tests/support/model_median.h"
#include "tests/support/scratch.h"

namespace zetpxl::test {
namespace {

FrameWindow drawWindow(Random& random) {
    FrameWindow window{random.between(1, 6), random.between(1, 6), 0, 0};
    if (random.oneIn(4)) window.nCols = window.nRows = random.pick({3, 5, 7});
    if (random.oneIn(12)) window.nCols = random.between(1, 30);
    if (random.oneIn(12)) window.nRows = random.between(1, 30);
    window.anchorX = random.below(window.nCols);
    window.anchorY = random.below(window.nRows);
    if (random.oneIn(50)) (random.oneIn(2) ? window.nCols : window.nRows) = random.between(-1, 1);
    if (random.oneIn(50)) (random.oneIn(2) ? window.anchorX : window.anchorY) = random.pick({-1, 50, window.nCols});
    return window;
}

Call medianCall(const Filtered& images, const FrameWindow& w) {
    ZetImage* src = &images.src->record;
    ZetImage* dst = &images.dst->record;
    return {images.src->name + " -> dst, " + std::to_string(w.nCols) + "x" + std::to_string(w.nRows) + " anchor " +
                std::to_string(w.anchorX) + "," + std::to_string(w.anchorY),
            [=] { return zetMedianFilter(src, dst, w.nCols, w.nRows, w.anchorX, w.anchorY), ""; },
            [=](Model& model) { return modelMedian(model, src, dst, w), ""; }};
}

Call drawMedian(Scene& scene, Random& random) {
    const Filtered images = drawFrameImages(scene, random);
    return medianCall(images, drawWindow(random));
}

// Wider than the stripes and pieces that rows are cut into; windows on both sides of the bounds between methods.
Call drawWideMedian(Scene& scene, Random& random) {
    const Filtered images = drawFrameImages(scene, random, 1200);
    const std::int32_t side = random.pick({3, 5, 7, 9, 11, 15});
    FrameWindow window{side, side, random.below(side), random.below(side)};
    if (random.oneIn(3)) window.nRows = random.between(4, 7);
    window.anchorY %= window.nRows;
    return medianCall(images, window);
}

TEST(Median, AgreesWithTheModel) { compareWithModel(&drawMedian); }
TEST(Median, AgreesWithTheModelOnWideImages) { compareWithModel(&drawWideMedian, {.compare = {}, .share = 10}); }
TEST(Median, FailsCleanlyAtEveryStep) { failEveryStep(&drawMedian, {.cases = 250}); }
TEST(Median, FailsCleanlyOnWideImages) { failEveryStep(&drawWideMedian, {.cases = 20}); }

TEST(Median, MemoryIsBoundedByRows) {
    const auto call = [](ZetImage* src, ZetImage* dst) {
        zetMedianFilter(src, dst, 7, 9, 3, 4);
        zetMedianFilter(src, dst, 9, 9, 4, 4);
    };
    for (const std::uint32_t depth : {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32S})
        EXPECT_EQ(peakScratch({.depth = depth, .width = 64, .height = 10000}, false, call),
                  peakScratch({.depth = depth, .width = 64, .height = 1000}, false, call))
            << depth;
}

}  // namespace
}  // namespace zetpxl::test
