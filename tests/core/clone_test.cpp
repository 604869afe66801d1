// A clone has its own record, region and data; mask, tiles and tag stay behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/support/allocations.h"
#include "tests/support/draw.h"
#include "tests/support/model.h"

namespace zetpxl::test {
namespace {

using Lines = std::vector<std::string>;

std::string cloneLine(std::int32_t status, const char* context) {
    return reportLine(status, "zetCloneImage", context, "zetClone");
}

TestImage& drawImage(Scene& scene, Random& random) {
    ImageShape shape = drawShape(random);
    shape.roi = drawRegion(shape, random);
    TestImage& image = scene.add("image", shape, random);
    image.record.headerId = random.word();
    maybeMask(scene, image, random);
    return image;
}

void expectSameRegion(const ZetImage& clone, const ZetImage& source) {
    ASSERT_EQ(clone.roi != nullptr, source.roi != nullptr);
    if (!clone.roi) return;
    EXPECT_NE(clone.roi, source.roi);
    EXPECT_EQ(std::memcmp(clone.roi, source.roi, sizeof(ZetROI)), 0);
}

void expectCloneFields(const ZetImage& clone, const ZetImage& source) {
    ZetImage expected = source;
    expected.headerId = 0;
    expected.maskImage = nullptr;
    expected.imageTag = nullptr;
    expected.tileInfo = nullptr;
    expected.roi = clone.roi;
    expected.imageData = clone.imageData;
    expected.imageDataBase = clone.imageDataBase;
    expected.widthStep = static_cast<std::int32_t>(
        plainRowBytes(source.dataOrder, source.depth, source.align, source.nChannels, source.width));
    expected.imageSize = expected.widthStep * source.height * (source.dataOrder ? source.nChannels : 1);
    EXPECT_NE(clone.imageDataBase, nullptr);
    EXPECT_NE(clone.imageData, source.imageData);
    EXPECT_EQ(clone.widthStep, expected.widthStep);
    EXPECT_EQ(clone.imageSize, expected.imageSize);
    EXPECT_EQ(std::memcmp(&clone, &expected, offsetof(ZetImage, colorModel)), 0);
    EXPECT_EQ(
        std::memcmp(clone.colorModel, source.colorModel, offsetof(ZetImage, roi) - offsetof(ZetImage, colorModel)), 0);
    EXPECT_EQ(std::memcmp(clone.borderMode, source.borderMode, sizeof clone.borderMode), 0);
    EXPECT_EQ(std::memcmp(clone.borderConst, source.borderConst, sizeof clone.borderConst), 0);
    EXPECT_EQ(clone.maskImage, nullptr);
    EXPECT_EQ(clone.tileInfo, nullptr);
    EXPECT_EQ(clone.imageTag, nullptr);
}

TEST(Clone, RandomImages) {
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Scene scene;
        TestImage& image = drawImage(scene, random);
        const Recorder recorder(scene.log, -5);
        const AllocationWatch watch;
        ZetImage* clone = zetCloneImage(&image.record);
        ASSERT_NE(clone, nullptr);
        expectCloneFields(*clone, image.record);
        expectSameRegion(*clone, image.record);
        const auto bytes = static_cast<std::size_t>(std::min(clone->imageSize, image.record.imageSize));
        if (image.record.imageData) {
            EXPECT_EQ(std::memcmp(clone->imageData, image.record.imageData, bytes), 0);
        }
        EXPECT_TRUE(scene.log.lines.empty()) << "no report, no tile request";
        EXPECT_EQ(zetGetErrStatus(), -5);
        zetDeallocate(clone, 7);
        EXPECT_EQ(watch.live(), 0);
    }
}

TEST(Clone, RefusesABrokenImage) {
    EventLog log;
    const Recorder recorder(log);
    EXPECT_EQ(zetCloneImage(nullptr), nullptr);
    ZetImage image{};
    EXPECT_EQ(zetCloneImage(&image), nullptr);
    EXPECT_EQ(log.lines, (Lines{cloneLine(-9, "Incorrect Image"), cloneLine(-12, "Incorrect Image")}));
}

// Header, region and data in turn cannot be had.
TEST(Clone, WithoutMemory) {
    for (const std::uint32_t depth : {ZET_DEPTH_8S, ZET_DEPTH_32F}) {
        const char* allocate = depth == ZET_DEPTH_32F ? "zetAllocateImageFP" : "zetAllocateImage";
        const Lines expected[] = {{cloneLine(-4, "Not enough memory to allocate header for clone image")},
                                  {cloneLine(-4, "Not enough memory to allocate roi for clone image")},
                                  {reportLine(-4, allocate, "for allocate image data", "zetalloc"),
                                   cloneLine(-4, "Not enough memory to allocate imageData for clone image")}};
        for (std::int32_t n = 1; n <= 3; ++n) {
            Random random(9);
            Scene scene;
            ImageShape shape;
            shape.depth = depth;
            shape.roi = ZetROI{0, 0, 0, 1, 1};
            TestImage& image = scene.add("image", shape, random);
            const Recorder recorder(scene.log);
            const AllocationWatch watch(n);
            EXPECT_EQ(zetCloneImage(&image.record), nullptr);
            EXPECT_EQ(scene.log.lines, expected[n - 1]);
            EXPECT_EQ(watch.live(), 0);
        }
    }
}

// A tiled image may be larger than any block.
TEST(Clone, OfATiledImageThatFitsNoBlock) {
    Random random(9);
    Scene scene;
    ImageShape shape;
    shape.tileWidth = shape.tileHeight = 8;
    TestImage& image = scene.add("image", shape, random);
    image.record.width = image.record.height = 1000000;
    const Recorder recorder(scene.log);
    EXPECT_EQ(zetCloneImage(&image.record), nullptr);
    EXPECT_EQ(scene.log.lines, (Lines{reportLine(-10, "zetCreateImageHeader", "Incorrect data-ins", "zetalloc"),
                                      cloneLine(-4, "Not enough memory to allocate header for clone image")}));
}

}  // namespace
}  // namespace zetpxl::test
