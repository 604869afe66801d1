// Rectangles taken out of images, with borders made up and tiles resolved, against the model.
#include "pixel/rect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tests/pixel/draw_calls.h"
#include "tests/support/allocations.h"
#include "tests/support/model_rect.h"

namespace zetpxl::test {
namespace {

struct Rect {
    std::int32_t x, y, width, height;
};

std::string textOf(const Rect& r) {
    return std::to_string(r.x) + "," + std::to_string(r.y) + " " + std::to_string(r.width) + "x" +
           std::to_string(r.height);
}

// Near the image, so that every side and corner comes up; sometimes several periods away.
void drawSpan(Random& random, std::int32_t size, std::int32_t& start, std::int32_t& length) {
    const std::int32_t margin = random.oneIn(4) ? 2 * size + 3 : std::min(size + 1, 6);
    start = random.between(-margin, size + margin - 1);
    length = random.between(1, random.oneIn(3) ? size + 2 * margin : 8);
}

Rect drawRect(const ImageShape& shape, Random& random) {
    Rect rect{};
    drawSpan(random, shape.width, rect.x, rect.width);
    drawSpan(random, shape.height, rect.y, rect.height);
    return rect;
}

std::int32_t bytesOf(const ZetImage& image) { return static_cast<std::int32_t>(image.depth & 0x7FFFFFFFu) / 8; }
std::int32_t planesOf(const ZetImage& image) { return image.dataOrder == 1 ? image.nChannels : 1; }

// All samples of a rectangle, row by row, with the place before each row.
template <class Sample>
std::string rowsText(const ZetImage& image, const Rect& rect, const Sample& sample) {
    std::string text;
    char word[16];
    for (std::int32_t c = 0; c < image.nChannels; ++c)
        for (std::int32_t j = 0; j < rect.height; ++j) {
            text += "\n[channel " + std::to_string(c) + " row " + std::to_string(j) + "]";
            for (std::int32_t i = 0; i < rect.width; ++i) {
                std::snprintf(word, sizeof word, " %x", sample(c, j, i));
                text += word;
            }
        }
    return text;
}

// The block as an image of the library's own layout.
ZetImage blockImage(const ZetImage& image, const Rect& rect, void* block, std::int32_t rowStep) {
    ZetImage shown = image;
    shown.tileInfo = nullptr;
    shown.width = rect.width;
    shown.height = rect.height;
    shown.widthStep = rowStep;
    shown.imageData = block;
    return shown;
}

std::string takeRect(ZetImage& image, const Rect& rect) {
    std::int32_t rowStep = -1;
    const AllocationWatch watch;
    void* block = ownGetRect(&image, rect.x, rect.y, rect.width, rect.height, &rowStep);
    EXPECT_EQ(watch.live(), block ? 1 : 0);
    std::string text = "step " + std::to_string(rowStep);
    if (!block) return text + " none";
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 32, 0u);
    const ZetImage shown = blockImage(image, rect, block, rowStep);
    text += rowsText(image, rect, [&](auto c, auto j, auto i) { return getSample(shown, c, j, i); });
    ownFreeBlock(block);
    EXPECT_EQ(watch.live(), 0);
    return text;
}

std::string modelTakeRect(ZetImage& image, const Rect& rect) {
    const std::int64_t bits = std::int64_t{rect.width} * static_cast<std::int32_t>(image.depth & 0x7FFFFFFFu) *
                              (image.dataOrder == 0 ? image.nChannels : 1);
    const std::int64_t bytes = (bits + 7) / 8;
    std::string text = "step " + std::to_string((bytes + image.align - 1) / image.align * image.align);
    if (!modelGetRectCalls(image, rect.x, rect.y, rect.width, rect.height)) return text + " none";
    return text + rowsText(image, rect,
                           [&](auto c, auto j, auto i) { return modelRectSample(image, c, rect.y + j, rect.x + i); });
}

Call drawTake(Scene& scene, Random& random) {
    ImageShape shape = drawShape(random, {.largest = 20});
    shape.roi = drawRegion(shape, random);
    TestImage& image = scene.add("image", shape, random, drawValues(random));
    maybeMask(scene, image, random);
    const Rect rect = drawRect(shape, random);
    return {textOf(rect), [&image, rect] { return takeRect(image.record, rect); },
            [&image, rect](Model&) { return modelTakeRect(image.record, rect); }};
}

TEST(Rectangles, AgreeWithTheModel) { compareWithModel(&drawTake); }
TEST(Rectangles, FailCleanlyAtEveryStep) { failEveryStep(&drawTake); }

// ---- between corners

struct Corners {
    std::int32_t x0, y0, x1, y1, dstX, dstY;
};

// A block with room around the copy, the same on both sides.
struct Target {
    std::unique_ptr<GuardedBuffer> buffer;
    ZetImage shown;

    Target(const ZetImage& image, const Corners& c, Random& random) {
        const Rect size{0, 0, std::abs(c.x1 - c.x0) + 1 + c.dstX + 3, std::abs(c.y1 - c.y0) + 1 + c.dstY + 2};
        const auto step = static_cast<std::int32_t>(
            plainRowBytes(image.dataOrder, image.depth, image.align, image.nChannels, size.width));
        const auto bytes = static_cast<std::size_t>(step * size.height * planesOf(image));
        buffer = std::make_unique<GuardedBuffer>(bytes, 4, random);
        if (image.depth == ZET_DEPTH_1U) std::memset(buffer->data(), 0, bytes);
        buffer->allow(GuardedBuffer::Access::kData);
        shown = blockImage(image, size, buffer->data(), step);
    }
    std::string text() const {
        return rowsText(shown, {0, 0, shown.width, shown.height},
                        [&](auto c, auto j, auto i) { return getSample(shown, c, j, i); });
    }
};

std::string copyCorners(ZetImage& image, const Corners& c, const Target& target) {
    const ZetImage& t = target.shown;
    const std::int32_t pixelBytes = bytesOf(image) * (image.dataOrder == 0 ? image.nChannels : 1);
    const std::int32_t result = ownCopyRect(&image, c.x0, c.y0, c.x1, c.y1, t.imageData, c.dstX, c.dstY, t.widthStep,
                                            std::ptrdiff_t{t.widthStep} * t.height, pixelBytes, planesOf(image));
    return result == 0 ? target.text() : "failed";
}

std::string modelCopyCorners(ZetImage& image, const Corners& c, const Target& target) {
    if (!modelCopyRectCalls(image, c.x0, c.y0, c.x1, c.y1)) return "failed";
    const std::int32_t stepX = c.x1 >= c.x0 ? 1 : -1;
    const std::int32_t stepY = c.y1 >= c.y0 ? 1 : -1;
    for (std::int32_t ch = 0; ch < image.nChannels; ++ch)
        for (std::int32_t j = 0; j <= std::abs(c.y1 - c.y0); ++j)
            for (std::int32_t i = 0; i <= std::abs(c.x1 - c.x0); ++i)
                putSample(target.shown, ch, c.dstY + j, c.dstX + i,
                          getSample(image, ch, c.y0 + j * stepY, c.x0 + i * stepX));
    return target.text();
}

Call drawCorners(Scene& scene, Random& random) {
    const ImageShape shape = drawShape(random);
    TestImage& image = scene.add("image", shape, random, drawValues(random));
    const Corners c{random.below(shape.width),  random.below(shape.height), random.below(shape.width),
                    random.below(shape.height), random.below(12),           random.below(3)};
    const auto target = std::make_shared<Target>(image.record, c, random);
    return {textOf({c.x0, c.y0, c.x1, c.y1}), [&image, c, target] { return copyCorners(image.record, c, *target); },
            [&image, c, target](Model&) { return modelCopyCorners(image.record, c, *target); }};
}

TEST(Rectangles, CornersInAnyOrder) { compareWithModel(&drawCorners); }
TEST(Rectangles, CornersFailCleanlyAtEveryStep) { failEveryStep(&drawCorners, {.cases = 80}); }

// ---- single cases

TEST(Rectangles, RefuseWithoutAReport) {
    EventLog log;
    const Recorder recorder(log);
    std::int32_t rowStep = 0;
    EXPECT_EQ(ownGetRect(nullptr, 0, 0, 1, 1, &rowStep), nullptr);
    for (void (*spoil)(ZetImage&) : {+[](ZetImage& i) { i.dataOrder = 2; }, +[](ZetImage& i) { i.depth = 24; },
                                     +[](ZetImage& i) { i.align = 6; }}) {
        Random random(1);
        Scene scene;
        TestImage& image = scene.add("image", {.width = 4, .height = 4}, random);
        spoil(image.record);
        EXPECT_EQ(ownGetRect(&image.record, 0, 0, 2, 2, &rowStep), nullptr);
    }
    EXPECT_TRUE(log.lines.empty());
    EXPECT_EQ(zetGetErrStatus(), 0);
    ownFreeBlock(nullptr);
}

TEST(Rectangles, TheStepIsKnownEvenWithoutMemory) {
    Random random(1);
    Scene scene;
    TestImage& image = scene.add("image", {.nChannels = 3, .align = 8, .width = 4, .height = 4}, random);
    std::int32_t rowStep = 0;
    const AllocationWatch watch(1);
    EXPECT_EQ(ownGetRect(&image.record, 0, 0, 5, 2, &rowStep), nullptr);
    EXPECT_EQ(rowStep, 16);
}

TEST(Rectangles, ConstantRowsReachToTheEndOfTheStep) {
    Random random(1);
    Scene scene;
    ImageShape shape{.align = 32, .width = 4, .height = 4};
    shape.borderConst = {300, 300, 0, 0};
    TestImage& image = scene.add("image", shape, random);
    std::int32_t rowStep = 0;
    for (const std::int32_t y : {-2, 4}) {
        void* block = ownGetRect(&image.record, 1, y, 2, 2, &rowStep);
        ASSERT_EQ(rowStep, 32);
        const auto* bytes = static_cast<const std::uint8_t*>(block);
        for (std::int32_t i = 0; i < 64; ++i) EXPECT_EQ(bytes[i], 44);
        ownFreeBlock(block);
    }
}

TEST(Rectangles, PaddingOfBitsIsClear) {
    Random random(1);
    Scene scene;
    TestImage& image = scene.add("image", {.depth = ZET_DEPTH_1U, .width = 40, .height = 4}, random);
    std::memset(image.record.imageData, 0xFF, static_cast<std::size_t>(image.record.imageSize));
    std::int32_t rowStep = 0;
    void* block = ownGetRect(&image.record, 5, 0, 11, 1, &rowStep);
    EXPECT_EQ(std::memcmp(block, "\xFF\xE0\0\0", 4), 0);
    ownFreeBlock(block);
}

}  // namespace
}  // namespace zetpxl::test
