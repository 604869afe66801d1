// Small cases worked out by hand, which hold library and models alike.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "pixel/logic.h"
#include "pixel/rect.h"
#include "tests/support/model.h"
#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

using testing::ElementsAre;

// One row of samples, all channels of a pixel together.
class Examples : public testing::Test {
  protected:
    template <class T>
    TestImage& row(const char* name, ImageShape shape, const std::vector<T>& samples) {
        shape.width = static_cast<std::int32_t>(samples.size()) / shape.nChannels;
        TestImage& image = scene_.add(name, shape, random_);
        std::memcpy(image.record.imageData, samples.data(), samples.size() * sizeof(T));
        return image;
    }
    template <class T>
    static std::vector<T> samplesOf(const TestImage& image) {
        const auto* data = static_cast<const T*>(image.record.imageData);
        return {data, data + image.record.width * image.record.nChannels};
    }
    TestImage& bits(const char* name, std::vector<std::uint8_t> bytes, std::optional<ZetROI> roi = std::nullopt) {
        ImageShape shape{.depth = ZET_DEPTH_1U};
        shape.width = static_cast<std::int32_t>(bytes.size()) * 8;
        shape.roi = roi;
        TestImage& image = scene_.add(name, shape, random_);
        std::memcpy(image.record.imageData, bytes.data(), bytes.size());
        return image;
    }
    template <class T>
    T sum(std::uint32_t depth, T left, T right) {
        TestImage& a = row<T>("a", {.depth = depth}, {left});
        TestImage& b = row<T>("b", {.depth = depth}, {right});
        zetAdd(&a.record, &b.record, &a.record);
        return samplesOf<T>(a)[0];
    }

    Scene scene_;
    Random random_{1};
    Recorder recorder_{scene_.log};
};

TEST_F(Examples, SumsSaturate) {
    EXPECT_EQ(sum<std::uint8_t>(ZET_DEPTH_8U, 200, 100), 255);
    EXPECT_EQ(sum<std::int8_t>(ZET_DEPTH_8S, 100, 100), 127);
    EXPECT_EQ(sum<std::int8_t>(ZET_DEPTH_8S, -100, -100), -128);
    EXPECT_EQ(sum<std::uint16_t>(ZET_DEPTH_16U, 65000, 536), 65535);
    EXPECT_EQ(sum<std::int16_t>(ZET_DEPTH_16S, -32768, -1), -32768);
    EXPECT_EQ(sum<std::int32_t>(ZET_DEPTH_32S, INT32_MAX, 1), INT32_MAX);
    EXPECT_EQ(sum<std::int32_t>(ZET_DEPTH_32S, INT32_MIN, -1), INT32_MIN);
    EXPECT_EQ(sum<std::int32_t>(ZET_DEPTH_32S, INT32_MAX, INT32_MIN), -1);
    EXPECT_EQ(sum<float>(ZET_DEPTH_32F, 16777216.0f, 1.0f), 16777216.0f);
}

TEST_F(Examples, AnImagePlusItselfInPlace) {
    TestImage& a = row<std::uint8_t>("a", {.nChannels = 3}, {1, 2, 3, 100, 127, 128});
    zetAdd(&a.record, &a.record, &a.record);
    EXPECT_THAT(samplesOf<std::uint8_t>(a), ElementsAre(2, 4, 6, 200, 254, 255));
}

TEST_F(Examples, FillsAreClamped) {
    TestImage& u = row<std::uint8_t>("u", {}, {1, 2});
    TestImage& s = row<std::int8_t>("s", {.depth = ZET_DEPTH_8S}, {1, 2});
    TestImage& w = row<std::int32_t>("w", {.depth = ZET_DEPTH_32S}, {1, 2});
    zetSet(&u.record, 300);
    zetSet(&s.record, -200);
    zetSet(&w.record, 1000000);
    EXPECT_THAT(samplesOf<std::uint8_t>(u), ElementsAre(255, 255));
    EXPECT_THAT(samplesOf<std::int8_t>(s), ElementsAre(-128, -128));
    EXPECT_THAT(samplesOf<std::int32_t>(w), ElementsAre(1000000, 1000000));
}

TEST_F(Examples, FillsOfOneChannelAndAroundAlpha) {
    ImageShape one{.nChannels = 3};
    one.roi = ZetROI{2, 0, 0, 2, 1};
    TestImage& a = row<std::uint8_t>("a", one, {1, 2, 3, 4, 5, 6});
    TestImage& b = row<std::uint8_t>("b", {.nChannels = 4, .alphaChannel = 4}, {1, 2, 3, 4, 5, 6, 7, 8});
    TestImage& c = row<std::uint8_t>("c", {.nChannels = 1, .alphaChannel = 1}, {1, 2});
    for (TestImage* image : {&a, &b, &c}) zetSet(&image->record, 9);
    EXPECT_THAT(samplesOf<std::uint8_t>(a), ElementsAre(1, 9, 3, 4, 9, 6));
    EXPECT_THAT(samplesOf<std::uint8_t>(b), ElementsAre(9, 9, 9, 4, 9, 9, 9, 8));
    EXPECT_THAT(samplesOf<std::uint8_t>(c), ElementsAre(1, 2));
}

TEST_F(Examples, FillOfBitsWithinOneByteAndUnderAMask) {
    TestImage& a = bits("a", {0x00, 0x81}, ZetROI{0, 2, 0, 3, 1});
    zetSet(&a.record, 2);
    EXPECT_EQ(*static_cast<std::uint8_t*>(a.record.imageData), 0x38);
    TestImage& b = bits("b", {0xFF});
    TestImage& mask = bits("mask", {0xA5});
    b.setMask(&mask);
    zetSet(&b.record, 0);
    EXPECT_EQ(*static_cast<std::uint8_t*>(b.record.imageData), 0x5A);
    EXPECT_EQ(*static_cast<std::uint8_t*>(mask.record.imageData), 0xA5);
}

TEST_F(Examples, CopiesBetweenChannels) {
    TestImage& four = row<std::uint8_t>("four", {.nChannels = 4, .alphaChannel = 4}, {1, 2, 3, 4, 5, 6, 7, 8});
    TestImage& three = row<std::uint8_t>("three", {.nChannels = 3}, {0, 0, 0, 0, 0, 0});
    zetCopy(&four.record, &three.record);
    EXPECT_THAT(samplesOf<std::uint8_t>(three), ElementsAre(1, 2, 3, 5, 6, 7));
    ImageShape alpha{.nChannels = 4, .alphaChannel = 4};
    alpha.roi = ZetROI{4, 0, 0, 2, 1};
    TestImage& from = row<std::uint8_t>("from", alpha, {1, 2, 3, 4, 5, 6, 7, 8});
    TestImage& single = row<std::uint8_t>("single", {}, {0, 0});
    zetCopy(&from.record, &single.record);
    EXPECT_THAT(samplesOf<std::uint8_t>(single), ElementsAre(4, 8));
    TestImage& planar = row<std::uint8_t>("planar", {.dataOrder = 1}, {0, 0});
    zetCopy(&single.record, &planar.record);
    EXPECT_THAT(samplesOf<std::uint8_t>(planar), ElementsAre(4, 8));
    EXPECT_TRUE(scene_.log.lines.empty());
}

TEST_F(Examples, CopyOfBitsKeepsItsNeighbours) {
    TestImage& src = bits("src", {0x1F, 0x80}, ZetROI{0, 3, 0, 6, 1});
    TestImage& dst = bits("dst", {0xFC, 0x0F}, ZetROI{0, 6, 0, 6, 1});
    src.roi.width = dst.roi.width = 4;
    zetCopy(&src.record, &dst.record);
    const auto* bytes = static_cast<const std::uint8_t*>(dst.record.imageData);
    EXPECT_EQ(bytes[0], 0xFF);
    EXPECT_EQ(bytes[1], 0xCF);
}

TEST_F(Examples, ExclusiveOrTakesTheLowBitsOfItsConstant) {
    TestImage& a = row<std::uint8_t>("a", {}, {0x0F, 0xFF});
    zetXorS(&a.record, &a.record, 0x1FF);
    EXPECT_THAT(samplesOf<std::uint8_t>(a), ElementsAre(0xF0, 0x00));
    TestImage& from = bits("from", {0x5C});
    TestImage& to = bits("to", {0xFF});
    zetXorS(&from.record, &to.record, 2);
    EXPECT_EQ(*static_cast<std::uint8_t*>(to.record.imageData), 0x5C);
}

std::vector<std::uint8_t> rectangle(TestImage& image, std::int32_t x, std::int32_t y, std::int32_t width) {
    std::int32_t rowStep = 0;
    auto* block = static_cast<std::uint8_t*>(ownGetRect(&image.record, x, y, width, 1, &rowStep));
    std::vector<std::uint8_t> bytes(block, block + width);
    ownFreeBlock(block);
    return bytes;
}

TEST_F(Examples, BordersOfARowOfThree) {
    ImageShape shape;
    shape.borderConst = {300, 7, 8, 9};
    TestImage& image = row<std::uint8_t>("image", shape, {10, 11, 12});
    auto& mode = image.record.borderMode;
    EXPECT_THAT(rectangle(image, -2, 0, 7), ElementsAre(8, 8, 10, 11, 12, 9, 9));
    EXPECT_THAT(rectangle(image, -1, -1, 5), ElementsAre(44, 44, 44, 44, 44));
    mode[2] = mode[3] = ZET_BORDER_REFLECT;
    EXPECT_THAT(rectangle(image, -2, 0, 2), ElementsAre(11, 10));
    EXPECT_THAT(rectangle(image, 3, 0, 4), ElementsAre(12, 11, 10, 10));
    mode[2] = mode[3] = ZET_BORDER_WRAP;
    EXPECT_THAT(rectangle(image, -4, 0, 4), ElementsAre(12, 10, 11, 12));
    mode[2] = mode[3] = ZET_BORDER_REPLICATE + 4;
    EXPECT_THAT(rectangle(image, -2, 0, 7), ElementsAre(10, 10, 10, 11, 12, 12, 12));
    EXPECT_THAT(rectangle(image, -3, 1, 3), ElementsAre(7, 7, 7)) << "a corner belongs to the side below";
}

TEST_F(Examples, AConstantBorderOfFloatsIsANumber) {
    ImageShape shape{.depth = ZET_DEPTH_32F};
    shape.borderConst = {3, 3, 3, 3};
    TestImage& image = row<float>("image", shape, {1.0f});
    std::int32_t rowStep = 0;
    for (const auto& [x, y] : {std::pair{-1, 0}, {0, -1}, {1, 0}, {0, 1}}) {
        auto* block = static_cast<float*>(ownGetRect(&image.record, x, y, 1, 1, &rowStep));
        EXPECT_EQ(*block, 3.0f);
        ownFreeBlock(block);
    }
}

TEST_F(Examples, BitsOfARectangleStartAtTheTop) {
    TestImage& image = bits("image", {0x05, 0xA0});
    EXPECT_THAT(rectangle(image, 5, 0, 1), ElementsAre(0x80));
    EXPECT_THAT(rectangle(image, 6, 0, 1), ElementsAre(0x00));
}

TEST_F(Examples, PixelsCountFromTheLastRowWhereTheOriginSaysSo) {
    ImageShape shape{.width = 1, .height = 10};
    shape.origin = 1;
    TestImage& image = scene_.add("image", shape, random_);
    std::memset(image.record.imageData, 0, static_cast<std::size_t>(image.record.imageSize));
    zetPutPixel(&image.record, 0, 0, "\x07");
    EXPECT_EQ(getSample(image.record, 0, 9, 0), 7u);
    EXPECT_EQ(getSample(image.record, 0, 0, 0), 0u);
    TestImage& flags = bits("flags", {0xFF});
    zetPutPixel(&flags.record, 0, 0, "\x02");
    EXPECT_EQ(*static_cast<std::uint8_t*>(flags.record.imageData), 0x7F);
}

// Bands of 8 rows by the lower tiles; each tile comes once a band.
TEST_F(Examples, TileRequestsOfALockStepWalk) {
    ImageShape low{.width = 16, .height = 16, .tileWidth = 16, .tileHeight = 8};
    ImageShape high{.width = 16, .height = 16, .tileWidth = 8, .tileHeight = 16};
    TestImage& a = scene_.add("a", low, random_);
    TestImage& b = scene_.add("b", {.width = 16, .height = 16}, random_);
    TestImage& dst = scene_.add("dst", high, random_);
    zetAdd(&a.record, &b.record, &dst.record);
    EXPECT_THAT(scene_.log.lines, ElementsAre("read a 0 0", "write dst 0 0", "release dst 0 0", "write dst 1 0",
                                              "release a 0 0", "release dst 1 0", "read a 0 1", "write dst 0 0",
                                              "release dst 0 0", "write dst 1 0", "release a 0 1", "release dst 1 0"));
}

}  // namespace
}  // namespace zetpxl::test
