// Convolutions against the model: every routine, form and way over tiles, and where sums are rounded.
#include <gtest/gtest.h>

#include "tests/filter/draw_filter.h"
#include "tests/filter/draw_kernels.h"
#include "tests/support/model_conv.h"

namespace zetpxl::test {
namespace {

Call convolveCall(const Filtered& images, const std::shared_ptr<DrawnKernels>& set) {
    ZetImage* src = &images.src->record;
    ZetImage* dst = &images.dst->record;
    return {images.src->name + " -> dst, " + set->describe(),
            [=] { return zetConvolve2D(src, dst, set->data(), set->count, set->method), ""; },
            [=](Model& model) { return modelConvolve(model, src, dst, set->data(), set->count, set->method), ""; }};
}

Call drawConvolve(Scene& scene, Random& random) {
    const Filtered images = drawFiltered(scene, random);
    return convolveCall(images, drawKernels(random, Weights::kPlain));
}

// Numbers that single precision cannot hold show where each routine rounds.
Call drawRounding(Scene& scene, Random& random) {
    const std::uint32_t depth = random.pick({ZET_DEPTH_32S, ZET_DEPTH_32S, ZET_DEPTH_16U, ZET_DEPTH_16S, ZET_DEPTH_8S});
    const Filtered images = drawFiltered(scene, random, {.depth = depth, .largest = 12});
    return convolveCall(images, drawKernels(random, random.oneIn(4) ? Weights::kPlain : Weights::kBig));
}

Call drawBounds(Scene& scene, Random& random) {
    const std::uint32_t depth = random.pick({ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_8U, ZET_DEPTH_8U, ZET_DEPTH_8S,
                                             ZET_DEPTH_8S, ZET_DEPTH_16U, ZET_DEPTH_16U, ZET_DEPTH_16S});
    const Filtered images = drawFiltered(scene, random, {.depth = depth, .largest = 16});
    return convolveCall(images, drawKernels(random, Weights::kBound, 10));
}

Call drawLongRows(Scene& scene, Random& random) {
    const Filtered images = drawFiltered(scene, random, {.isLong = true});
    return convolveCall(images, drawKernels(random, Weights::kPlain));
}

Call drawInPlaceTiles(Scene& scene, Random& random) {
    const Filtered images = drawFiltered(scene, random, {.tiledInPlace = true});
    return convolveCall(images, drawKernels(random, Weights::kPlain, 15));
}

TEST(Convolve, AgreesWithTheModel) { compareWithModel(&drawConvolve); }
TEST(Convolve, RoundsWhereTheModelDoes) { compareWithModel(&drawRounding); }
TEST(Convolve, HoldsTheSumsOfGroupsOnBothSidesOfTheirBounds) { compareWithModel(&drawBounds); }
TEST(Convolve, LongRowsAgreeWithTheModel) { compareWithModel(&drawLongRows, {.compare = {}, .share = 4}); }
TEST(Convolve, TiledInPlaceAgreesWithTheModel) { compareWithModel(&drawInPlaceTiles, {.compare = {}, .share = 50}); }
TEST(Convolve, FailsCleanlyAtEveryStep) { failEveryStep(&drawConvolve); }
TEST(Convolve, FailsCleanlyInPlaceOnTiles) { failEveryStep(&drawInPlaceTiles, {.cases = 60}); }

}  // namespace
}  // namespace zetpxl::test
