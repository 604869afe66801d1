// Fills against the model: regions, channels, masks, tiles, the detour of 1U masks, floats by bit pattern.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "tests/pixel/draw_calls.h"
#include "tests/support/allocations.h"
#include "tests/support/model_set.h"

namespace zetpxl::test {
namespace {

TestImage& drawTarget(Scene& scene, Random& random, bool floats) {
    ImageShape shape = drawShape(random);
    if (floats ? !random.oneIn(20) : shape.depth == ZET_DEPTH_32F && !random.oneIn(8))
        shape.depth = floats ? ZET_DEPTH_32F : ZET_DEPTH_1U;
    if (shape.depth == ZET_DEPTH_1U) {
        shape.nChannels = 1;
        shape.alphaChannel = shape.alphaChannel ? 1 : 0;
    }
    return addOperand(scene, "dst", shape, random);
}

Call drawSet(Scene& scene, Random& random) {
    TestImage& dst = drawTarget(scene, random, false);
    const std::int32_t value = random.pick({0, 1, 2, 0, 1, 255, 300, -200, 1000000, random.word()});
    return {"value " + std::to_string(value), [&dst, value] { return zetSet(&dst.record, value), ""; },
            [&dst, value](Model& model) { return modelSet(model, &dst.record, value), ""; }};
}

Call drawSetFP(Scene& scene, Random& random) {
    TestImage& dst = drawTarget(scene, random, true);
    const float value = random.pick({0.0f, -0.0f, 1.5f, -3e38f, std::numeric_limits<float>::infinity(),
                                     std::numeric_limits<float>::quiet_NaN(), 1e-40f});
    return {"value " + std::to_string(value), [&dst, value] { return zetSetFP(&dst.record, value), ""; },
            [&dst, value](Model& model) { return modelSetFP(model, &dst.record, value), ""; }};
}

TEST(Set, AgreesWithTheModel) { compareWithModel(&drawSet); }
TEST(Set, FloatsAgreeWithTheModel) { compareWithModel(&drawSetFP, {.compare = {}, .share = 50}); }
TEST(Set, FailsCleanlyAtEveryStep) {
    failEveryStep(&drawSet);
    failEveryStep(&drawSetFP, {.cases = 60});
}

TEST(Set, RefusesTheFirstFault) {
    Random random(1);
    Scene scene;
    TestImage& bytes = scene.add("bytes", {.width = 3, .height = 3}, random);
    TestImage& floats = scene.add("floats", {.depth = ZET_DEPTH_32F, .width = 3, .height = 3}, random);
    const Recorder recorder(scene.log);
    zetSet(nullptr, 1);
    zetSet(&floats.record, 1);
    zetSetFP(nullptr, 1);
    zetSetFP(&bytes.record, 1);
    bytes.record.align = floats.record.align = 3;
    zetSetFP(&bytes.record, 1);
    zetSet(&floats.record, 1);
    EXPECT_EQ(scene.log.lines,
              (std::vector{reportLine(-9, "zetSet", "Incorrect Image", "zetsce"),
                           reportLine(-17, "zetSet", "You should use zetSetFP for this image", "zetsce"),
                           reportLine(-5, "zetSetFP", "dstImage==0", "zetsce"),
                           reportLine(-17, "zetSetFP", "You should use zetSet for this image", "zetsce"),
                           reportLine(-17, "zetSetFP", "You should use zetSet for this image", "zetsce"),
                           reportLine(-21, "zetSet", "Incorrect Image", "zetsce")}));
}

TEST(Set, AFailedFloatFillIsTracedAndTheDepthComesBack) {
    Random random(1);
    Scene scene;
    TestImage& floats = scene.add("floats", {.depth = ZET_DEPTH_32F, .align = 3, .width = 3, .height = 3}, random);
    const Recorder recorder(scene.log);
    zetSetFP(&floats.record, 1);
    EXPECT_EQ(scene.log.lines, (std::vector{reportLine(-21, "zetSet", "Incorrect Image", "zetsce"),
                                            reportLine(-1, "zetSetFP", "", "zetsce")}));
    EXPECT_EQ(floats.record.depth, ZET_DEPTH_32F);
}

TEST(Set, PlainImagesTakeNoMemory) {
    Random random(1);
    Scene scene;
    TestImage& mask = addMask(scene, "mask", 30, 30, random);
    TestImage& plain = scene.add("plain", {.nChannels = 3, .width = 20, .height = 20}, random);
    TestImage& tiles = scene.add("tiles", {.width = 20, .height = 20, .tileWidth = 8, .tileHeight = 8}, random);
    const Recorder recorder(scene.log);
    for (TestImage* image : {&plain, &tiles})
        for (TestImage* its : {static_cast<TestImage*>(nullptr), &mask}) {
            image->setMask(its);
            std::int32_t calls = 0;
            {
                const AllocationWatch watch;
                zetSet(&image->record, 7);
                calls = watch.calls();
            }
            EXPECT_EQ(calls, 0) << image->name;
        }
}

}  // namespace
}  // namespace zetpxl::test
