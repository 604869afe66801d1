// The life of an image: header, data, borders, clone, release, and what each step refuses.
#include <gtest/gtest.h>

#include <cstring>

#include "core/alloc.h"
#include "tests/support/allocations.h"
#include "tests/support/draw.h"
#include "tests/support/model.h"

namespace zetpxl::test {
namespace {

using Lines = std::vector<std::string>;

std::string line(std::int32_t status, const char* operation, const char* context) {
    const char* source = std::string(operation) == "zetCloneImage" ? "zetClone" : "zetalloc";
    return reportLine(status, operation, context, source);
}

class Images : public testing::Test {
  protected:
    EventLog log_;
    Recorder recorder_{log_};
};

struct HeaderArguments {
    std::int32_t nChannels = 3, alphaChannel = 0;
    std::uint32_t depth = ZET_DEPTH_8U;
    const char *colorModel = "RGBA", *channelSeq = "BGRA-and-more";
    std::int32_t dataOrder = 0, origin = 0, align = 4, width = 10, height = 5;
    ZetROI* roi = nullptr;
    ZetImage* maskImage = nullptr;
    void* imageTag = nullptr;
    ZetTileInfo* tileInfo = nullptr;

    ZetImage* create() const {
        return zetCreateImageHeader(nChannels, alphaChannel, depth, colorModel, channelSeq, dataOrder, origin, align,
                                    width, height, roi, maskImage, imageTag, tileInfo);
    }
};

struct Fault {
    const char* what;
    const char* field;
    std::int32_t status;
    void (*apply)(HeaderArguments&);
};

ZetImage& badMask() {
    static ZetImage mask{};
    mask.depth = ZET_DEPTH_1U;
    return mask;
}

const Fault kFaults[] = {
    {"height", "height", -10, [](HeaderArguments& a) { a.height = 0; }},
    {"width", "width", -10, [](HeaderArguments& a) { a.width = 0; }},
    {"channels", "channels", -15, [](HeaderArguments& a) { a.nChannels = -1; }},
    {"1U", "depth", -16, [](HeaderArguments& a) { a.depth = ZET_DEPTH_1U; }},
    {"model", "model", -14, [](HeaderArguments& a) { a.colorModel = nullptr; }},
    {"sequence", "sequence", -14, [](HeaderArguments& a) { a.channelSeq = nullptr; }},
    {"depth", "depth", -17, [](HeaderArguments& a) { a.depth = 0x80000001u; }},
    {"alpha", "alpha", -18, [](HeaderArguments& a) { a.alphaChannel = 1; }},
    {"order", "order", -19, [](HeaderArguments& a) { a.dataOrder = 2; }},
    {"origin", "origin", -20, [](HeaderArguments& a) { a.origin = 2; }},
    {"align", "align", -21, [](HeaderArguments& a) { a.align = 64; }},
    {"mask", "mask", -112, [](HeaderArguments& a) { a.maskImage = &badMask(); }},
    {"row too long", "width", -10, [](HeaderArguments& a) { a.width = INT32_MAX; }},
    {"data too long", "height", -10, [](HeaderArguments& a) { a.height = INT32_MAX; }},
};

TEST_F(Images, HeaderRefusesTheFirstFault) {
    for (std::size_t i = 0; i < std::size(kFaults); ++i)
        for (std::size_t j = i; j < std::size(kFaults); ++j) {
            const Fault& a = kFaults[i];
            const Fault& b = kFaults[j];
            if (i != j && std::string(a.field) == b.field) continue;
            HeaderArguments arguments;
            b.apply(arguments);
            a.apply(arguments);
            log_.lines.clear();
            const AllocationWatch watch;
            EXPECT_EQ(arguments.create(), nullptr);
            EXPECT_EQ(log_.lines, Lines{line(a.status, "zetCreateImageHeader", "Incorrect data-ins")})
                << a.what << " before " << b.what;
            EXPECT_EQ(watch.live(), 0);
        }
}

TEST_F(Images, HeaderHoldsWhatItWasGiven) {
    Random random(1);
    ZetROI roi{9, -1, -1, 0, 0};  // not looked at
    ZetTileInfo tiles{};
    for (std::int32_t i = 0; i < 300; ++i) {
        const ImageShape s = drawShape(random);
        const bool tiled = random.oneIn(2);
        ZetImage* image =
            zetCreateImageHeader(s.nChannels, s.alphaChannel, s.depth, "RGBA", "BGRA-", s.dataOrder, s.origin, s.align,
                                 s.width, s.height, &roi, nullptr, &roi, tiled ? &tiles : nullptr);
        ASSERT_NE(image, nullptr);
        const std::int64_t step = plainRowBytes(s.dataOrder, s.depth, s.align, s.nChannels, s.width);
        EXPECT_EQ(image->headerSize, static_cast<std::int32_t>(sizeof(ZetImage)));
        EXPECT_EQ(image->headerId, 0);
        EXPECT_EQ(image->nChannels, s.nChannels);
        EXPECT_EQ(image->alphaChannel, s.alphaChannel);
        EXPECT_EQ(image->depth, s.depth);
        EXPECT_EQ(std::string(image->colorModel, 4) + std::string(image->channelSeq, 4), "RGBABGRA");
        EXPECT_EQ(image->dataOrder, s.dataOrder);
        EXPECT_EQ(image->origin, s.origin);
        EXPECT_EQ(image->align, s.align);
        EXPECT_EQ(image->width, s.width);
        EXPECT_EQ(image->height, s.height);
        EXPECT_EQ(image->roi, &roi);
        EXPECT_EQ(image->maskImage, nullptr);
        EXPECT_EQ(image->imageTag, &roi);
        EXPECT_EQ(image->tileInfo, tiled ? &tiles : nullptr);
        EXPECT_EQ(image->widthStep, step);
        EXPECT_EQ(image->imageSize, step * s.height * (s.dataOrder ? s.nChannels : 1));
        EXPECT_EQ(image->imageData, nullptr);
        EXPECT_EQ(image->imageDataBase, nullptr);
        for (int side = 0; side < 4; ++side) EXPECT_EQ(image->borderMode[side] | image->borderConst[side], 0);
        zetDeallocate(image, ZET_IMAGE_HEADER);
    }
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(Images, TiledHeaderStoresTheLargestWordWhereASizeDoesNotFit) {
    ZetTileInfo tiles{};
    HeaderArguments a;
    a.tileInfo = &tiles;
    a.width = a.height = 100000;
    ZetImage* wide = a.create();
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(wide->widthStep, 300000);
    EXPECT_EQ(wide->imageSize, INT32_MAX);
    a.width = a.height = a.nChannels = INT32_MAX;
    a.depth = ZET_DEPTH_32S;
    for (const std::int32_t order : {0, 1}) {
        a.dataOrder = order;
        ZetImage* widest = a.create();
        ASSERT_NE(widest, nullptr);
        EXPECT_EQ(widest->widthStep, INT32_MAX);
        EXPECT_EQ(widest->imageSize, INT32_MAX);
        zetDeallocate(widest, ZET_IMAGE_HEADER);
    }
    zetDeallocate(wide, ZET_IMAGE_HEADER);
}

TEST_F(Images, TheLargestSizeThatFits) {
    HeaderArguments a;
    a.nChannels = 1;
    a.width = 4;
    a.height = INT32_MAX / 4;
    ZetImage* fits = a.create();
    ASSERT_NE(fits, nullptr);
    EXPECT_EQ(fits->imageSize, INT32_MAX - 3);
    a.height += 1;
    EXPECT_EQ(a.create(), nullptr);
    EXPECT_EQ(zetGetErrStatus(), ZET_StatusBadImageSize);
    zetDeallocate(fits, ZET_IMAGE_HEADER);
}

TEST_F(Images, HeaderWithoutMemoryIsSilent) {
    const AllocationWatch watch(1);
    EXPECT_EQ(HeaderArguments{}.create(), nullptr);
    EXPECT_TRUE(watch.failed());
    EXPECT_TRUE(log_.lines.empty());
    EXPECT_EQ(watch.live(), 0);
}

// ---- data

struct DataFault {
    std::int32_t status;
    const char* context;
    void (*apply)(ZetImage&);
};

ZetTileInfo someTiles{};

const DataFault kDataFaults[] = {
    {-5, "( image->imageData != ((void *)0) )", [](ZetImage& i) { i.imageData = &i; }},
    {-5, "( image->tileInfo != ((void *)0) )", [](ZetImage& i) { i.tileInfo = &someTiles; }},
    {-5, "( image->depth == 32 )", [](ZetImage& i) { i.depth = ZET_DEPTH_32F; }},
    {-10, "Incorrect data-ins", [](ZetImage& i) { i.height = 0; }},
    {-18, "Incorrect data-ins", [](ZetImage& i) { i.alphaChannel = 2; }},
    {-21, "Incorrect data-ins", [](ZetImage& i) { i.align = 1; }},
    {-112, "Incorrect data-ins", [](ZetImage& i) { i.maskImage = &badMask(); }},
    {-10, "Incorrect data-ins", [](ZetImage& i) { i.width = 2000000000; }},
};

TEST_F(Images, DataRefusesTheFirstFaultAndChangesNothing) {
    for (std::size_t i = 0; i < std::size(kDataFaults); ++i)
        for (std::size_t j = i; j < std::size(kDataFaults); ++j) {
            ZetImage* image = HeaderArguments{}.create();
            kDataFaults[j].apply(*image);
            kDataFaults[i].apply(*image);
            image->widthStep = image->imageSize = -77;
            const ZetImage before = *image;
            log_.lines.clear();
            zetAllocateImage(image, 1, 1);
            EXPECT_EQ(log_.lines, Lines{line(kDataFaults[i].status, "zetAllocateImage", kDataFaults[i].context)});
            EXPECT_EQ(std::memcmp(&before, image, sizeof before), 0);
            zetDeleteROI(image);
        }
    log_.lines.clear();
    zetAllocateImage(nullptr, 0, 0);
    zetAllocateImageFP(nullptr, 0, 0);
    EXPECT_EQ(log_.lines, (Lines{line(-5, "zetAllocateImage", "( image == ((void *)0) )"),
                                 line(-5, "zetAllocateImageFP", "( image == ((void *)0) )")}));
}

TEST_F(Images, FloatDataRefusesOtherDepths) {
    for (const std::uint32_t depth : {ZET_DEPTH_32S, ZET_DEPTH_8U, 77u}) {
        ZetImage* image = HeaderArguments{}.create();
        image->depth = depth;
        image->align = 0;
        log_.lines.clear();
        zetAllocateImageFP(image, 0, 0);
        EXPECT_EQ(log_.lines, Lines{line(-5, "zetAllocateImageFP", "( image->depth != 32 )")});
        zetDeleteROI(image);
    }
}

void allocateAny(ZetImage* image, std::int32_t doFill, std::int32_t value) {
    float bits = 0;
    std::memcpy(&bits, &value, 4);
    image->depth == ZET_DEPTH_32F ? zetAllocateImageFP(image, doFill, bits) : zetAllocateImage(image, doFill, value);
}

TEST_F(Images, DataWithoutMemory) {
    for (const std::uint32_t depth : {ZET_DEPTH_16U, ZET_DEPTH_32F}) {
        HeaderArguments a;
        a.depth = depth;
        ZetImage* image = a.create();
        image->widthStep = image->imageSize = -77;
        image->imageDataBase = &a;
        log_.lines.clear();
        {
            const AllocationWatch watch(1);
            allocateAny(image, 1, 5);
        }
        const char* name = depth == ZET_DEPTH_32F ? "zetAllocateImageFP" : "zetAllocateImage";
        EXPECT_EQ(log_.lines, Lines{line(-4, name, "for allocate image data")});
        EXPECT_EQ(image->imageData, nullptr);
        EXPECT_EQ(image->imageDataBase, nullptr);
        EXPECT_EQ(image->widthStep, -77);
        EXPECT_EQ(image->imageSize, -77);
        zetDeallocate(image, ZET_IMAGE_HEADER);
    }
}

std::uint8_t fillByte(std::uint32_t depth, std::int32_t value, std::int32_t index) {
    if (depth == ZET_DEPTH_1U) return value & 1 ? 0xFF : 0;
    const std::int32_t bytes = static_cast<std::int32_t>(depth & 0x7FFFFFFFu) / 8;
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> (8 * (index % bytes)));
}

TEST_F(Images, FillReachesEveryByteOfTheBlock) {
    Random random(3);
    for (std::int32_t i = 0; i < 400; ++i) {
        const ImageShape s = drawShape(random);
        const std::int32_t value = random.pick({0x1234, 2, 3, -1, random.word()});
        ZetImage* image =
            zetCreateImageHeader(s.nChannels, s.alphaChannel, s.depth, "RGBA", "BGRA", s.dataOrder, s.origin, s.align,
                                 s.width, s.height, nullptr, nullptr, nullptr, nullptr);
        const std::int32_t step = image->widthStep;
        const std::int32_t size = image->imageSize;
        image->widthStep = image->imageSize = 1;
        allocateAny(image, random.pick({1, -1, 256}), value);
        ASSERT_NE(image->imageData, nullptr);
        EXPECT_EQ(image->widthStep, step);
        EXPECT_EQ(image->imageSize, size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image->imageData) % static_cast<std::uintptr_t>(s.align), 0u);
        const auto* bytes = static_cast<const std::uint8_t*>(image->imageData);
        for (std::int32_t k = 0; k < size; ++k) ASSERT_EQ(bytes[k], fillByte(s.depth, value, k)) << s.depth << " " << k;
        allocateAny(image, 1, 0);
        EXPECT_EQ(zetGetErrStatus(), ZET_StatusBadArgument) << "a second allocation";
        EXPECT_EQ(image->imageData, bytes);
        zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
    }
}

TEST_F(Images, FloatFillTakesTheValue) {
    HeaderArguments a;
    a.depth = ZET_DEPTH_32F;
    ZetImage* image = a.create();
    zetAllocateImageFP(image, 1, -2.5f);
    const auto* values = static_cast<const float*>(image->imageData);
    for (std::int32_t i = 0; i < image->imageSize / 4; ++i) ASSERT_EQ(values[i], -2.5f);
    zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
}

// ---- blocks, regions, release

TEST_F(Images, BlocksAreAlignedAndReleasedAlike) {
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

TEST_F(Images, RegionsAreStoredUnchecked) {
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

TEST_F(Images, EachFlagReleasesItsPartAndClearsIt) {
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

TEST_F(Images, DataOfTheApplicationStays) {
    std::uint8_t bytes[8] = {};
    ZetImage* image = HeaderArguments{}.create();
    image->imageData = bytes;
    zetDeallocate(image, ZET_IMAGE_DATA);
    EXPECT_EQ(image->imageData, bytes);
    ownDeallocateHeader(image);
    zetDeallocate(nullptr, 31);
    EXPECT_TRUE(log_.lines.empty());
}

// ---- borders

struct BorderCase {
    std::uint32_t depth;
    std::int32_t given, stored;
};

TEST_F(Images, BorderConstantIsClampedToTheDepth) {
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

TEST_F(Images, BorderWordsOfNamedSidesOnly) {
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
