// Changes of scale against the model.
#include <gtest/gtest.h>

#include "tests/geometry/draw_zoom.h"
#include "tests/support/model_zoom.h"

namespace zetpxl::test {
namespace {

Call drawZoom(Scene& scene, Random& random) {
    const ZoomImages images = drawZoomImages(scene, random, false);
    const auto [x, y] = std::pair{images.x, images.y};
    ZetImage* src = random.oneIn(150) ? nullptr : &images.src->record;
    ZetImage* dst = random.oneIn(150) ? nullptr : &images.dst->record;
    const std::int32_t mode = random.oneIn(40) ? random.pick({3, -1, 4, 16, 18}) : random.below(3);
    return {textOf(images) + "mode " + std::to_string(mode),
            [=] { return zetZoom(src, dst, x.dst, x.src, y.dst, y.src, mode), ""; },
            [=](Model& model) { return modelZoom(model, src, dst, x.dst, x.src, y.dst, y.src, mode), ""; }};
}

Call drawResize(Scene& scene, Random& random) {
    const ZoomImages images = drawZoomImages(scene, random, true);
    const auto [x, y] = std::pair{images.x, images.y};
    ZetImage* src = random.oneIn(150) ? nullptr : &images.src->record;
    ZetImage* dst = random.oneIn(150) ? nullptr : &images.dst->record;
    std::int32_t mode = random.oneIn(40) ? random.pick({-1, 4, 16, 18}) : random.below(3);
    if (random.oneIn(8)) mode = ZET_INTER_SUPER;
    return {textOf(images) + "mode " + std::to_string(mode),
            [=] { return zetResize(src, dst, x.dst, x.src, y.dst, y.src, mode), ""; },
            [=](Model& model) { return modelResize(model, src, dst, x.dst, x.src, y.dst, y.src, mode), ""; }};
}

constexpr DifferentialRules kAnyNaN{.compare = {.nanEqual = true}};

TEST(Zoom, AgreesWithTheModel) { compareWithModel(&drawZoom, kAnyNaN); }
TEST(Zoom, ResizeAgreesWithTheModel) { compareWithModel(&drawResize, kAnyNaN); }

TEST(Zoom, FailCleanlyAtEveryStep) {
    failEveryStep(&drawZoom);
    failEveryStep(&drawResize);
}

}  // namespace
}  // namespace zetpxl::test
