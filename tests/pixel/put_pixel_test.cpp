// One pixel written, against the model; two faults at once.
#include <gtest/gtest.h>

#include <array>

#include "tests/support/allocations.h"
#include "tests/support/differential.h"
#include "tests/support/draw.h"
#include "tests/support/model_put.h"

namespace zetpxl::test {
namespace {

Call drawCall(Scene& scene, Random& random) {
    ImageShape shape = drawShape(random);
    shape.roi = drawRegion(shape, random);
    TestImage& image = scene.add("image", shape, random);
    maybeMask(scene, image, random);
    if (random.oneIn(30)) image.record.align = 5;
    if (random.oneIn(30)) image.roi.width = 0;
    const std::int32_t x = random.between(random.oneIn(9) ? -1 : 0, shape.width - (random.oneIn(9) ? 0 : 1));
    const std::int32_t y = random.between(random.oneIn(9) ? -1 : 0, shape.height - (random.oneIn(9) ? 0 : 1));
    std::array<std::uint32_t, 8> pixel{};
    for (std::uint32_t& word : pixel) word = static_cast<std::uint32_t>(random.next());
    return {
        std::to_string(x) + "," + std::to_string(y),
        [&image, x, y, pixel] { return zetPutPixel(&image.record, x, y, pixel.data()), ""; },
        [&image, x, y, pixel](Model& model) { return modelPutPixel(model, &image.record, x, y, pixel.data()), ""; }};
}

TEST(PutPixel, AgreesWithTheModel) { compareWithModel(&drawCall); }

TEST(PutPixel, FailsCleanlyAtEveryStep) { failEveryStep(&drawCall); }

TEST(PutPixel, RefusesTheFirstFault) {
    struct Case {
        std::int32_t align, x, y, status;
        const char* context;
    };
    constexpr Case kCases[] = {{5, 9, 9, ZET_StatusBadAlign, "Incorrect Image"},
                               {4, 3, 3, ZET_StatusBadArgument, "((x>img->width-1) || (x<0))"},
                               {4, INT32_MIN, -1, ZET_StatusBadArgument, "((x>img->width-1) || (x<0))"},
                               {4, 2, INT32_MAX, ZET_StatusBadArgument, "((y>img->height-1) || (y<0))"},
                               {4, 0, -1, ZET_StatusBadArgument, "((y>img->height-1) || (y<0))"}};
    for (const Case& c : kCases) {
        Random random(1);
        Scene scene;
        TestImage& image = scene.add("image", {.align = c.align, .width = 3, .height = 3}, random);
        const Recorder recorder(scene.log);
        zetPutPixel(&image.record, c.x, c.y, "x");
        EXPECT_EQ(scene.log.lines, std::vector{reportLine(c.status, "zetPutPixel", c.context, "zetPutPx")});
        EXPECT_EQ(zetGetErrStatus(), c.status);
    }
    EventLog log;
    const Recorder recorder(log);
    zetPutPixel(nullptr, 0, 0, "x");
    EXPECT_EQ(log.lines, std::vector{reportLine(-9, "zetPutPixel", "Incorrect Image", "zetPutPx")});
}

TEST(PutPixel, TakesNoMemory) {
    Random random(1);
    Scene scene;
    TestImage& image = scene.add("image", {.width = 3, .height = 3}, random);
    const Recorder recorder(scene.log);
    const AllocationWatch watch;
    zetPutPixel(&image.record, 1, 1, "x");
    EXPECT_EQ(watch.calls(), 0);
}

}  // namespace
}  // namespace zetpxl::test
