// Blurs against the model: all depths, routes over tiles, masks, and rounding modes of the caller.
#include <gtest/gtest.h>

#include <cfenv>

#include "tests/filter/draw_filter.h"
#include "tests/support/model_blur.h"

namespace zetpxl::test {
namespace {

BlurSize drawBlurSize(Random& random) {
    BlurSize size{random.between(1, 6), random.between(1, 6), 0, 0};
    if (random.oneIn(4)) size.nCols = size.nRows = random.pick({2, 3, 5, 7});
    if (random.oneIn(12)) size.nCols = random.between(1, 40);
    if (random.oneIn(12)) size.nRows = random.between(1, 40);
    size.anchorX = random.below(size.nCols);
    size.anchorY = random.below(size.nRows);
    if (random.oneIn(50)) (random.oneIn(2) ? size.nCols : size.nRows) = random.between(-1, 1);
    if (random.oneIn(50)) (random.oneIn(2) ? size.anchorX : size.anchorY) = random.pick({-1, 50, size.nCols});
    return size;
}

std::string runUnder(int rounding, const std::function<void()>& call) {
    std::fesetround(rounding);
    call();
    const bool kept = std::fegetround() == rounding;
    std::fesetround(FE_TONEAREST);
    return kept ? "mode kept" : "MODE LOST";
}

Call blurCall(const Filtered& images, const BlurSize& size, int rounding) {
    ZetImage* src = &images.src->record;
    ZetImage* dst = &images.dst->record;
    const std::string text = images.src->name + " -> dst, " + std::to_string(size.nCols) + "x" +
                             std::to_string(size.nRows) + " anchor " + std::to_string(size.anchorX) + "," +
                             std::to_string(size.anchorY) + " rounding " + std::to_string(rounding);
    return {text,
            [=] {
                return runUnder(rounding,
                                [&] { zetBlur(src, dst, size.nCols, size.nRows, size.anchorX, size.anchorY); });
            },
            [=](Model& model) { return modelBlur(model, src, dst, size, rounding), "mode kept"; }};
}

int drawRounding(Random& random) {
    return random.oneIn(3) ? random.pick({FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) : FE_TONEAREST;
}

Call drawBlur(Scene& scene, Random& random) {
    const Filtered images = drawFiltered(scene, random);
    const BlurSize size = drawBlurSize(random);
    return blurCall(images, size, drawRounding(random));
}

// Sums whose rounding runs on from pixel to pixel.
Call drawRunningSums(Scene& scene, Random& random) {
    const Filtered images = drawFiltered(scene, random, {.depth = random.pick({ZET_DEPTH_32S, ZET_DEPTH_32F})});
    const BlurSize size = drawBlurSize(random);
    return blurCall(images, size, drawRounding(random));
}

Call drawInPlaceTiles(Scene& scene, Random& random) {
    const Filtered images = drawFiltered(scene, random, {.tiledInPlace = true});
    const BlurSize size = drawBlurSize(random);
    return blurCall(images, size, drawRounding(random));
}

const DifferentialRules kRules{.compare = {.nanEqual = true}};

TEST(Blur, AgreesWithTheModel) { compareWithModel(&drawBlur, kRules); }
TEST(Blur, RunningSumsAgreeWithTheModel) { compareWithModel(&drawRunningSums, kRules); }
TEST(Blur, TiledInPlaceAgreesWithTheModel) { compareWithModel(&drawInPlaceTiles, kRules); }
TEST(Blur, FailsCleanlyAtEveryStep) { failEveryStep(&drawBlur, {.cases = 200}); }
TEST(Blur, FailsCleanlyInPlaceOnTiles) { failEveryStep(&drawInPlaceTiles, {.cases = 60}); }

}  // namespace
}  // namespace zetpxl::test
