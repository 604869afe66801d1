// Copies against the model: channels, masks on either side, bits at any offsets, tiles on either side or both.
#include <gtest/gtest.h>

#include "tests/pixel/draw_calls.h"
#include "tests/support/allocations.h"
#include "tests/support/model_copy.h"

namespace zetpxl::test {
namespace {

Call drawCopy(Scene& scene, Random& random) {
    const ImageShape first = drawShape(random);
    TestImage& src = addOperand(scene, "src", first, random);
    TestImage& dst = addOperand(scene, "dst", first, random);
    if (random.oneIn(8)) dst.setMask(src.mask);
    if (!random.oneIn(20)) dst.record.origin = src.record.origin;
    if (src.record.depth == ZET_DEPTH_1U && dst.record.depth == ZET_DEPTH_1U && random.oneIn(2))
        maybeMask(scene, dst, random);
    TestImage& from = random.oneIn(40) ? dst : src;
    return {from.name + " -> dst", [&] { return zetCopy(&from.record, &dst.record), ""; },
            [&](Model& model) { return modelCopy(model, &from.record, &dst.record), ""; }};
}

TEST(Copy, AgreesWithTheModel) { compareWithModel(&drawCopy, {.compare = {}, .share = 200}); }

// A destination's tile is held while the source's band is fetched, and stays so when that fails.
TEST(Copy, FailsCleanlyAtEveryStep) { failEveryStep(&drawCopy, {.cases = 300, .heldTiles = 1}); }

struct Pair {
    Scene scene;
    TestImage *src, *dst;

    explicit Pair(const ImageShape& shape = {.nChannels = 2, .width = 9, .height = 5}) {
        Random random(7);
        src = &scene.add("src", shape, random);
        dst = &scene.add("dst", shape, random);
    }
    std::string line(std::int32_t status, const char* context) {
        return reportLine(status, "zetCopy", context, "zetsce");
    }
};

TEST(Copy, MismatchesAreAllReported) {
    Pair pair;
    pair.src->record.depth = ZET_DEPTH_8S;
    pair.src->record.origin = 1;
    pair.src->record.dataOrder = 1;
    pair.src->record.nChannels = 1;  // also a mismatch, found later
    const Recorder recorder(pair.scene.log);
    zetCopy(&pair.src->record, &pair.dst->record);
    EXPECT_EQ(pair.scene.log.lines, (std::vector{pair.line(-5, "srcImage->depth != dstImage->depth"),
                                                 pair.line(-5, "srcImage->origin != dstImage->origin"),
                                                 pair.line(-5, "srcImage->dataOrder != dstImage->dataOrder")}));
}

TEST(Copy, BrokenImagesComeFirst) {
    Pair pair;
    pair.src->record.origin = 1;
    pair.dst->record.align = 3;
    const Recorder recorder(pair.scene.log);
    zetCopy(&pair.src->record, &pair.dst->record);
    zetCopy(&pair.src->record, nullptr);
    pair.src->record.align = 3;
    pair.src->record.origin = 5;
    zetCopy(&pair.src->record, &pair.dst->record);
    EXPECT_EQ(pair.scene.log.lines, (std::vector{pair.line(-21, "Incorrect Image"), pair.line(-9, "Incorrect Image"),
                                                 pair.line(-20, "Incorrect Image")}));
}

TEST(Copy, ChannelCountsMustAgree) {
    Pair pair;
    pair.dst->record.alphaChannel = 2;
    const Recorder recorder(pair.scene.log);
    zetCopy(&pair.src->record, &pair.dst->record);
    EXPECT_EQ(pair.scene.log.lines,
              std::vector{pair.line(
                  -5, "Number of processed channels of srcImage != Number of processed channels of dstImage")});
}

// Without memory for the joined mask, or for the plane that a masked 1U copy works in.
TEST(Copy, WithoutMemoryForTemporaryMasks) {
    for (const std::uint32_t depth : {ZET_DEPTH_8U, ZET_DEPTH_1U})
        for (std::int32_t n = 1; n < 10; ++n) {
            Pair pair({.depth = depth, .width = 9, .height = 5});
            Random random(1);
            for (TestImage* image : {pair.src, pair.dst}) {
                image->setMask(&addMask(pair.scene, "mask", 9, 5, random));
                image->mask->record.roi = nullptr;
                image->mask->record.alphaChannel = 0;
            }
            const Recorder recorder(pair.scene.log);
            const AllocationWatch watch(n);
            zetCopy(&pair.src->record, &pair.dst->record);
            EXPECT_EQ(watch.live(), 0);
            if (!watch.failed()) continue;
            EXPECT_FALSE(pair.scene.log.lines.empty());
            EXPECT_LT(zetGetErrStatus(), 0) << n;
        }
}

TEST(Copy, PlainImagesTakeNoMemory) {
    Pair pair;
    const Recorder recorder(pair.scene.log);
    const AllocationWatch watch;
    zetCopy(&pair.src->record, &pair.dst->record);
    EXPECT_EQ(watch.calls(), 0);
}

}  // namespace
}  // namespace zetpxl::test
