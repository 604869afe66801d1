// Blocks, regions, the release of an image's parts, and border words.
#include <gtest/gtest.h>

#include <cstring>

#include "core/alloc.h"
#include "tests/support/allocations.h"
#include "tests/support/events.h"

namespace zetpxl::test {
namespace {

class Release : public testing::Test {
  protected:
    EventLog log_;
    Recorder recorder_{log_};
};

TEST_F(Release, BlocksAreAlignedAndReleasedAlike) {
    const AllocationWatch watch;
    for (const std::ptrdiff_t size : {1, 31, 32, 33, 1000}) {
        void* bytes = ownAlloc(size);
        void* words = ownAllocWords(size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 32, 0u);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(words) % 32, 0u);
        std::memset(bytes, 1, static_cast<std::size_t>(size));
        std::memset(words, 1, static_cast<std::size_t>(size) * 4);
        zetDeleteROI(bytes);
        zetDeleteROI(words);
    }
    for (const std::ptrdiff_t size :
         {std::ptrdiff_t{0}, std::ptrdiff_t{-1}, PTRDIFF_MIN, PTRDIFF_MAX, PTRDIFF_MAX - 30}) {
        EXPECT_EQ(ownAlloc(size), nullptr);
        EXPECT_EQ(ownAllocWords(size), nullptr);
    }
    EXPECT_EQ(ownAllocWords(PTRDIFF_MAX / 4), nullptr);
    zetDeleteROI(nullptr);
    EXPECT_EQ(watch.live(), 0);
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(Release, RegionsAreStoredUnchecked) {
    ZetROI* roi = zetCreateROI(-1, -2, -3, 0, INT32_MIN);
    ASSERT_NE(roi, nullptr);
    const ZetROI expected{-1, -2, -3, 0, INT32_MIN};
    EXPECT_EQ(std::memcmp(roi, &expected, sizeof expected), 0);
    ownSetROI(roi, 1, 2, 3, 4, 5);
    const ZetROI set{1, 2, 3, 4, 5};
    EXPECT_EQ(std::memcmp(roi, &set, sizeof set), 0);
    ownSetROI(nullptr, 1, 2, 3, 4, 5);
    zetDeleteROI(roi);
    const AllocationWatch watch(1);
    EXPECT_EQ(zetCreateROI(0, 0, 0, 1, 1), nullptr);
    EXPECT_TRUE(log_.lines.empty());
}

// An image of library blocks throughout, with a mask that has a region and a mask itself.
ZetImage* makeWhole(ZetImage* innerMask) {
    const auto make = [](std::uint32_t depth, ZetImage* mask) {
        ZetImage* image = zetCreateImageHeader(1, 0, depth, "GRAY", "G   ", 0, 0, 4, 9, 9, zetCreateROI(0, 0, 0, 1, 1),
                                               mask, nullptr, nullptr);
        zetAllocateImage(image, 1, 0);
        return image;
    };
    ZetImage* image = make(ZET_DEPTH_8U, make(ZET_DEPTH_1U, innerMask));
    image->tileInfo = static_cast<ZetTileInfo*>(ownAlloc(sizeof(ZetTileInfo)));
    image->maskImage->tileInfo = static_cast<ZetTileInfo*>(ownAlloc(sizeof(ZetTileInfo)));
    return image;
}

TEST_F(Release, EachFlagReleasesItsPartAndClearsIt) {
    for (std::int32_t flags = 0; flags < 64; flags += 2) {
        ZetImage inner{};
        inner.depth = ZET_DEPTH_1U;
        inner.nChannels = inner.width = inner.height = inner.imageSize = inner.widthStep = 1;
        inner.align = 4;
        inner.imageData = &inner;
        const AllocationWatch watch;
        ZetImage* image = makeWhole(&inner);
        const ZetImage before = *image;
        ASSERT_EQ(watch.live(), 8);
        zetDeallocate(image, flags);
        const auto expected = [&](std::int32_t flag, auto* field) { return flags & flag ? nullptr : field; };
        EXPECT_EQ(image->roi, expected(ZET_IMAGE_ROI, before.roi));
        EXPECT_EQ(image->maskImage, expected(ZET_IMAGE_MASK, before.maskImage));
        EXPECT_EQ(image->tileInfo, expected(ZET_IMAGE_TILE, before.tileInfo));
        EXPECT_EQ(image->imageData, expected(ZET_IMAGE_DATA, before.imageData));
        EXPECT_EQ(image->imageDataBase, expected(ZET_IMAGE_DATA, before.imageDataBase));
        const auto one = [&](std::int32_t flag) { return flags & flag ? 1 : 0; };
        EXPECT_EQ(watch.live(), 8 - one(2) - one(4) - one(8) - 4 * one(16));
        zetDeallocate(image, 31);
        EXPECT_EQ(watch.live(), 0);
        EXPECT_EQ(inner.imageData, &inner) << "the mask of a mask stays";
    }
}

TEST_F(Release, DataOfTheApplicationStays) {
    std::uint8_t bytes[8] = {};
    ZetImage* image =
        zetCreateImageHeader(1, 0, ZET_DEPTH_8U, "GRAY", "G   ", 0, 0, 4, 8, 1, nullptr, nullptr, nullptr, nullptr);
    image->imageData = bytes;
    zetDeallocate(image, ZET_IMAGE_DATA);
    EXPECT_EQ(image->imageData, bytes);
    ownDeallocateHeader(image);
    zetDeallocate(nullptr, 31);
    EXPECT_TRUE(log_.lines.empty());
}

struct BorderCase {
    std::uint32_t depth;
    std::int32_t given, stored;
};

TEST(Borders, BorderConstantIsClampedToTheDepth) {
    constexpr BorderCase kCases[] = {
        {ZET_DEPTH_1U, 2, 1},
        {ZET_DEPTH_1U, -2, 0},
        {ZET_DEPTH_8U, 300, 255},
        {ZET_DEPTH_8U, -1, 0},
        {ZET_DEPTH_8S, 128, 127},
        {ZET_DEPTH_8S, -129, -128},
        {ZET_DEPTH_16U, 65536, 65535},
        {ZET_DEPTH_16U, -5, 0},
        {ZET_DEPTH_16S, 32768, 32767},
        {ZET_DEPTH_16S, -32769, -32768},
        {ZET_DEPTH_32S, INT32_MIN, INT32_MIN},
        {ZET_DEPTH_32F, 70000, 70000},
        {ZET_DEPTH_32F, INT32_MIN, INT32_MIN},
        {99u, 1000, 1000},
    };
    for (const BorderCase& c : kCases) {
        ZetImage image{};
        image.depth = c.depth;
        zetSetBorderMode(&image, 0x7FFF, 15, c.given);
        for (int side = 0; side < 4; ++side) {
            EXPECT_EQ(image.borderConst[side], c.stored);
            EXPECT_EQ(image.borderMode[side], 0x7FFF);
        }
    }
}

TEST(Borders, BorderWordsOfNamedSidesOnly) {
    for (std::int32_t sides = 0; sides < 32; ++sides) {
        ZetImage image{};
        image.depth = ZET_DEPTH_8U;
        zetSetBorderMode(&image, 3, sides, 7);
        for (int side = 0; side < 4; ++side) {
            EXPECT_EQ(image.borderMode[side], sides >> side & 1 ? 3 : 0);
            EXPECT_EQ(image.borderConst[side], sides >> side & 1 ? 7 : 0);
        }
    }
    zetSetBorderMode(nullptr, 1, 15, 1);
}

}  // namespace
}  // namespace zetpxl::test
