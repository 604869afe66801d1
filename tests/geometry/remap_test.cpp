// Remapping against the model.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/geometry/draw_warp.h"
#include "tests/support/model_remap.h"

namespace zetpxl::test {
namespace {

// Mostly positions in and around the source's region, among them its very corners.
float drawPosition(std::int32_t first, std::int32_t count, Random& random) {
    const std::int32_t last = first + count - 1;
    if (random.oneIn(40)) return static_cast<float>(drawOdd(random));
    if (random.oneIn(6)) return static_cast<float>(random.pick({first, last, last - 1, first - 1, last + 1}));
    if (random.oneIn(12))
        return std::nextafter(static_cast<float>(random.pick({first, last})), random.oneIn(2) ? 1e9f : -1e9f);
    if (random.oneIn(3)) return static_cast<float>(random.between(first * 2 - 2, last * 2 + 2)) / 2;
    return static_cast<float>(first + drawReal(random, 1) * (count * 0.7) + count * 0.5);
}

void fillMap(TestImage& map, std::int32_t first, std::int32_t count, Random& random) {
    for (const auto& buffer : map.buffers) {
        buffer->allow(GuardedBuffer::Access::kData);
        for (std::size_t i = 0; i + 4 <= buffer->size(); i += 4) {
            const float value = drawPosition(first, count, random);
            std::memcpy(buffer->data() + i, &value, 4);
        }
        if (tiled(map.record)) buffer->allow(GuardedBuffer::Access::kNone);
    }
}

ZetImage* addMap(Scene& scene, const char* name, const TestImage& dst, Random& random) {
    ImageShape shape = drawShape(random, {.tiles = random.oneIn(2), .largest = 32});
    if (!random.oneIn(60)) shape.depth = ZET_DEPTH_32F;
    if (!random.oneIn(60)) shape.nChannels = 1, shape.alphaChannel = 0;
    if (!random.oneIn(3)) {
        shape.width = dst.shape.width;
        shape.height = dst.shape.height;
    }
    if (random.oneIn(2)) shape.roi = drawRegion(shape, random);
    TestImage& map = scene.add(name, shape, random);
    maybeMask(scene, map, random);
    return &map.record;
}

Call drawRemap(Scene& scene, Random& random) {
    const Filtered images = drawWarpImages(scene, random, random.oneIn(2));
    RemapImages all{&images.src->record, nullptr, nullptr, &images.dst->record};
    all.xMap = addMap(scene, "xMap", *images.dst, random);
    all.yMap = random.oneIn(12) ? all.xMap : addMap(scene, "yMap", *images.dst, random);
    const Area from = modelRegion(*all.src);
    fillMap(*static_cast<TestImage*>(all.xMap->imageTag), from.x, from.width, random);
    if (all.yMap != all.xMap) fillMap(*static_cast<TestImage*>(all.yMap->imageTag), from.y, from.height, random);
    const std::int32_t mode = drawMode(random);
    return {"mode " + std::to_string(mode), [=] { return zetRemap(all.src, all.xMap, all.yMap, all.dst, mode), ""; },
            [=](Model& model) { return modelRemap(model, all, mode), ""; }};
}

TEST(Remap, AgreesWithTheModel) { compareWithModel(&drawRemap, {.compare = {.nanEqual = true}}); }
TEST(Remap, FailsCleanlyAtEveryStep) { failEveryStep(&drawRemap); }

}  // namespace
}  // namespace zetpxl::test
