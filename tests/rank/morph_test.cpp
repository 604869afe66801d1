// Morphology against the model: four operations, frames and borders, masks, tiles in place and apart.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "tests/filter/draw_filter.h"
#include "tests/support/allocations.h"
#include "tests/support/model_morph.h"
#include "tests/support/scratch.h"

namespace zetpxl::test {
namespace {

using Operation = void (*)(ZetImage*, ZetImage*, std::int32_t);
constexpr std::array<Operation, 4> kOperations{&zetDilate, &zetErode, &zetOpen, &zetClose};

Call morphCall(const Filtered& images, std::int32_t kind, std::int32_t n) {
    ZetImage* src = &images.src->record;
    ZetImage* dst = &images.dst->record;
    return {images.src->name + " -> dst, operation " + std::to_string(kind) + ", " + std::to_string(n),
            [=] { return kOperations[static_cast<std::size_t>(kind)](src, dst, n), ""; },
            [=](Model& model) { return modelMorph(model, static_cast<Morph>(kind), src, dst, n), ""; }};
}

std::int32_t drawIterations(Random& random) {
    if (random.oneIn(50)) return random.between(-1, 0);
    return random.oneIn(8) ? random.between(4, 30) : random.between(1, 3);
}

std::uint32_t drawMorphDepth(Random& random) {
    return random.oneIn(20) ? drawDepth(random) : random.pick({ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16U});
}

Call drawMorph(Scene& scene, Random& random) {
    const Filtered images = drawFiltered(scene, random, {.depth = drawMorphDepth(random), .largest = 20});
    if (!random.oneIn(20)) images.dst->record.origin = images.src->record.origin;
    return morphCall(images, random.below(4), drawIterations(random));
}

Call drawInPlaceTiles(Scene& scene, Random& random) {
    const Filtered images =
        drawFiltered(scene, random, {.depth = drawMorphDepth(random), .largest = 20, .tiledInPlace = true});
    return morphCall(images, random.below(4), drawIterations(random));
}

ImageShape drawPlainShape(Random& random) {
    ImageShape shape{.depth = random.pick({ZET_DEPTH_8U, ZET_DEPTH_16U}), .nChannels = random.between(1, 5)};
    shape.width = random.oneIn(2) ? random.between(1, 70) : random.between(300, 1700) / shape.nChannels;
    shape.height = random.between(1, 40);
    for (std::int32_t& mode : shape.borderMode) mode = random.below(4);
    for (std::int32_t& value : shape.borderConst) value = random.below(300);
    if (random.oneIn(3)) shape.roi = drawRegion(shape, random);
    return shape;
}

// Apart from its source the result goes by planes, in place by rings. Squares on both sides of the sizes at which rows come
// in larger groups and planes end, and of the height.
TEST(Morphology, PlanesAgreeWithRings) {
    Random random(31);
    for (std::int32_t i = 0; i < 600; ++i) {
        Scene scene;
        const ImageShape shape = drawPlainShape(random);
        ZetImage* src = &scene.add("src", shape, random, drawValues(random)).record;
        ZetImage* apart = &scene.add("apart", shape, random).record;
        ZetImage* inPlace = &scene.add("inPlace", shape, random).record;
        for (ZetImage* image : {apart, inPlace})
            std::memcpy(image->imageData, src->imageData, static_cast<std::size_t>(src->imageSize));
        const Operation operation = kOperations[static_cast<std::size_t>(random.below(4))];
        const std::int32_t n = random.oneIn(4) ? random.between(5, 130) : random.between(1, 5);
        operation(src, apart, n);
        operation(inPlace, inPlace, n);
        EXPECT_EQ(std::memcmp(apart->imageData, inPlace->imageData, static_cast<std::size_t>(src->imageSize)), 0)
            << i << ": " << shape.width << "x" << shape.height << "x" << shape.nChannels << ", " << n;
    }
}

TEST(Morphology, AgreesWithTheModel) { compareWithModel(&drawMorph); }
TEST(Morphology, TiledInPlaceAgreesWithTheModel) { compareWithModel(&drawInPlaceTiles); }
TEST(Morphology, FailsCleanlyAtEveryStep) { failEveryStep(&drawMorph); }
TEST(Morphology, FailsCleanlyInPlaceOnTiles) { failEveryStep(&drawInPlaceTiles, {.cases = 60}); }

TEST(Morphology, MemoryIsBoundedByRows) {
    for (const Operation operation : kOperations)
        for (const std::uint32_t depth : {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16U})
            for (const bool inPlace : {false, true}) {
                const auto call = [=](ZetImage* src, ZetImage* dst) { operation(src, dst, 3); };
                EXPECT_EQ(peakScratch({.depth = depth, .width = 64, .height = 20000}, inPlace, call),
                          peakScratch({.depth = depth, .width = 64, .height = 2000}, inPlace, call));
            }
}

// A ring that cannot be counted, or cannot be had, is a status without a word.
TEST(Morphology, SquaresBeyondMemory) {
    Scene scene;
    Random random(5);
    ZetImage* image = &scene.add("image", {.width = 9, .height = 4}, random).record;
    for (const Operation operation : kOperations)
        for (const std::int32_t n : {INT32_MAX, INT32_MAX / 2, 1 << 30}) {
            const Recorder recorder(scene.log, 5);
            operation(image, image, n);
            EXPECT_EQ(zetGetErrStatus(), ZET_StatusNoMemory) << n;
        }
    EXPECT_TRUE(scene.log.lines.empty()) << scene.log.text();
}

TEST(Morphology, WithoutMemory) {
    Scene scene;
    Random random(5);
    ZetImage* image = &scene.add("image", {.width = 9, .height = 4}, random).record;
    for (std::int32_t n = 1; n < 20; ++n) {
        const Recorder recorder(scene.log, -5);
        const AllocationWatch watch(n);
        zetOpen(image, image, 1);
        if (!watch.failed()) continue;
        EXPECT_EQ(zetGetErrStatus(), ZET_StatusNoMemory) << n;
        EXPECT_TRUE(scene.log.lines.empty()) << scene.log.text();
    }
}

}  // namespace
}  // namespace zetpxl::test
