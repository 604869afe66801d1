// The image check: its order with two faults at once, masks and chains of masks, random records against the model, and
// the layout of the record itself.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "core/check.h"
#include "tests/support/differential.h"
#include "tests/support/draw.h"

namespace zetpxl::test {
namespace {

static_assert(sizeof(void*) != 4 || sizeof(ZetImage) == 112);
static_assert(sizeof(ZetROI) == 20 && offsetof(ZetROI, height) == 16);

#define AT(field, offset) static_assert(sizeof(void*) != 8 || offsetof(ZetImage, field) == (offset))
AT(headerSize, 0);
AT(headerId, 4);
AT(nChannels, 8);
AT(alphaChannel, 12);
AT(depth, 16);
AT(colorModel, 20);
AT(channelSeq, 24);
AT(dataOrder, 28);
AT(origin, 32);
AT(align, 36);
AT(width, 40);
AT(height, 44);
AT(roi, 48);
AT(maskImage, 56);
AT(imageTag, 64);
AT(tileInfo, 72);
AT(imageSize, 80);
AT(imageData, 88);
AT(widthStep, 96);
AT(borderMode, 100);
AT(borderConst, 116);
AT(imageDataBase, 136);
#undef AT
static_assert(sizeof(void*) != 8 || sizeof(ZetImage) == 144);
static_assert(sizeof(void*) != 8 || offsetof(ZetTileInfo, tileData) == 16);
static_assert(sizeof(void*) != 8 || (offsetof(ZetTileInfo, width) == 24 && sizeof(ZetTileInfo) == 32));

void noTile(ZetImage*, std::int32_t, std::int32_t, std::int32_t) {}

// A valid image with a valid mask, region and, on wish, tiles, to be broken by the tests.
struct Specimen {
    std::uint8_t bytes[64] = {};
    ZetROI roi{0, 0, 0, 2, 2};
    ZetROI badRoi{0, 0, 0, 2, 0};
    ZetTileInfo tiles{&noTile, nullptr, nullptr, 8, 16};
    ZetImage mask{};
    ZetImage image{};

    explicit Specimen(bool tiled = false) {
        image.nChannels = 3;
        image.depth = ZET_DEPTH_8U;
        image.align = 4;
        image.width = image.height = 4;
        image.imageSize = 48;
        image.widthStep = 12;
        image.imageData = bytes;
        image.roi = &roi;
        mask = image;
        mask.nChannels = 1;
        mask.depth = ZET_DEPTH_1U;
        mask.roi = nullptr;
        mask.widthStep = 4;
        mask.imageSize = 16;
        image.maskImage = &mask;
        if (!tiled) return;
        image.imageData = nullptr;
        image.imageSize = image.widthStep = 0;
        image.tileInfo = &tiles;
    }
};

struct Fault {
    const char* what;
    const char* field;  // two faults of one field exclude each other
    std::int32_t status;
    void (*apply)(Specimen&);
    enum Kind { kRecord, kBlock, kTiles } kind = kRecord;  // does the fault need pixels in one block, or in tiles?
};

// In the order of the check.
const Fault kFaults[] = {
    {"no data", "data", -12, [](Specimen& s) { s.image.imageData = nullptr, s.image.tileInfo = nullptr; }},
    {"data and tiles", "data", -12, [](Specimen& s) { s.image.imageData = s.bytes, s.image.tileInfo = &s.tiles; }},
    {"size", "size", -10, [](Specimen& s) { s.image.imageSize = 0; }, Fault::kBlock},
    {"step", "step", -13, [](Specimen& s) { s.image.widthStep = 0; }, Fault::kBlock},
    {"height", "height", -10, [](Specimen& s) { s.image.height = 0; }},
    {"width", "width", -10, [](Specimen& s) { s.image.width = -1; }},
    {"channels", "channels", -15, [](Specimen& s) { s.image.nChannels = 0; }},
    {"1U channels", "depth", -16, [](Specimen& s) { s.image.depth = ZET_DEPTH_1U; }},
    {"depth", "depth", -17, [](Specimen& s) { s.image.depth = 24; }},
    {"alpha", "alpha", -18, [](Specimen& s) { s.image.alphaChannel = 2; }},
    {"order", "order", -19, [](Specimen& s) { s.image.dataOrder = 2; }},
    {"origin", "origin", -20, [](Specimen& s) { s.image.origin = -1; }},
    {"align", "align", -21, [](Specimen& s) { s.image.align = 12; }},
    {"mask depth", "mask", -117, [](Specimen& s) { s.mask.depth = ZET_DEPTH_8U, s.mask.tileInfo = &s.tiles; }},
    {"mask tiled", "mask", ZET_StatusMaskTiled, [](Specimen& s) { s.mask.tileInfo = &s.tiles, s.mask.align = 5; }},
    {"mask data", "mask", -112, [](Specimen& s) { s.mask.imageData = nullptr; }},
    {"mask channels", "mask", -116, [](Specimen& s) { s.mask.nChannels = 2; }},
    {"mask region", "mask", -125, [](Specimen& s) { s.mask.roi = &s.badRoi; }},
    {"callback", "tiles", -22, [](Specimen& s) { s.tiles.callBack = nullptr; }, Fault::kTiles},
    {"tile width", "tile size", -23, [](Specimen& s) { s.tiles.width = 12; }, Fault::kTiles},
    {"tile height", "tile size", -23, [](Specimen& s) { s.tiles.height = 0; }, Fault::kTiles},
    {"coi", "coi", -24, [](Specimen& s) { s.roi.coi = 4; }},
    {"coi below 0", "coi", -24, [](Specimen& s) { s.roi.coi = -1; }},
    {"region height", "region height", -25, [](Specimen& s) { s.roi.height = 0; }},
    {"region width", "region width", -25, [](Specimen& s) { s.roi.width = -3; }},
    {"x offset", "x", -11, [](Specimen& s) { s.roi.xOffset = -1; }},
    {"y offset", "y", -11, [](Specimen& s) { s.roi.yOffset = -1; }},
};

void expectFirst(const Fault& first, const Fault& second, bool tiled) {
    EventLog log;
    const Recorder recorder(log);
    Specimen specimen(tiled);
    second.apply(specimen);
    first.apply(specimen);
    EXPECT_EQ(ownCheckImage(&specimen.image), first.status) << first.what << " before " << second.what;
    EXPECT_EQ(zetGetErrStatus(), first.status);
    EXPECT_TRUE(log.lines.empty()) << "the check reports nothing";
}

TEST(ImageCheck, TheFirstFaultInOrderDecides) {
    for (const bool tiled : {false, true})
        for (std::size_t i = 0; i < std::size(kFaults); ++i)
            for (std::size_t j = i; j < std::size(kFaults); ++j) {
                const Fault& a = kFaults[i];
                const Fault& b = kFaults[j];
                const Fault::Kind other = tiled ? Fault::kBlock : Fault::kTiles;
                if (a.kind == other || b.kind == other) continue;
                if (i == j || std::string(a.field) != b.field) expectFirst(a, b, tiled);
            }
}

TEST(ImageCheck, SuccessLeavesTheStatus) {
    EventLog log;
    const Recorder recorder(log, -6);
    Specimen block;
    Specimen tiles(true);
    block.roi.coi = 3;
    block.roi.width = 1000;
    EXPECT_EQ(ownCheckImage(&block.image), 0);
    EXPECT_EQ(ownCheckImage(&tiles.image), 0);
    EXPECT_EQ(zetGetErrStatus(), -6);
    EXPECT_EQ(ownCheckImage(nullptr), ZET_StatusNullImage);
    EXPECT_EQ(zetGetErrStatus(), ZET_StatusNullImage);
}

// A chain of `length` masks below an image, all valid.
struct Chain {
    Specimen head;
    std::vector<ZetImage> links;
    explicit Chain(std::size_t length) : links(length, head.mask) {
        head.image.maskImage = length ? links.data() : nullptr;
        for (std::size_t i = 0; i + 1 < length; ++i) links[i].maskImage = &links[i + 1];
    }
};

TEST(ImageCheck, EveryLevelOfMasksLowersTheStatus) {
    EventLog log;
    const Recorder recorder(log);
    for (std::size_t depth = 1; depth <= 16; ++depth) {
        Chain chain(depth);
        EXPECT_EQ(ownCheckImage(&chain.head.image), 0) << depth;
        chain.links.back().align = 5;
        EXPECT_EQ(ownCheckImage(&chain.head.image), -21 - 100 * static_cast<std::int32_t>(depth));
        chain.links.back().align = 4;
        chain.links.back().depth = ZET_DEPTH_16U;
        EXPECT_EQ(ownCheckImage(&chain.head.image), -17 - 100 * static_cast<std::int32_t>(depth));
    }
}

TEST(ImageCheck, ChainsOfMasksEnd) {
    EventLog log;
    const Recorder recorder(log);
    Chain chain(17);
    EXPECT_EQ(ownCheckImage(&chain.head.image), -1717);
    Specimen own;
    own.mask.maskImage = &own.mask;
    EXPECT_EQ(ownCheckImage(&own.image), -1717);
    EXPECT_EQ(zetGetErrStatus(), -1717);
}

// Puts a value that is often wrong into a field.
void breakField(TestImage& image, Random& random) {
    ZetImage& r = image.record;
    const std::int32_t value = random.pick({-1, 0, 1, 2, 3, 4, 5, 8, 12, 16, 17, 31, 32, 64, INT32_MAX, INT32_MIN});
    switch (random.below(19)) {
        case 0:
            r.nChannels = value;
            break;
        case 1:
            r.alphaChannel = value;
            break;
        case 2:
            r.depth = random.oneIn(2) ? drawDepth(random) : static_cast<std::uint32_t>(value);
            break;
        case 3:
            r.dataOrder = value;
            break;
        case 4:
            r.origin = value;
            break;
        case 5:
            r.align = value;
            break;
        case 6:
            r.width = value;
            break;
        case 7:
            r.height = value;
            break;
        case 8:
            r.imageSize = value;
            break;
        case 9:
            r.widthStep = value;
            break;
        case 10:
            r.imageData = random.oneIn(2) ? nullptr : &image;
            break;
        case 11:
            r.tileInfo = random.oneIn(2) ? nullptr : &image.tileInfo;
            break;
        case 12:
            image.tileInfo.width = value;
            break;
        case 13:
            image.tileInfo.height = value;
            break;
        case 14:
            image.tileInfo.callBack = nullptr;
            break;
        case 15:
            image.roi.coi = value;
            break;
        case 16:
            image.roi.width = value;
            break;
        case 17:
            image.roi.yOffset = value;
            break;
        default:
            r.maskImage = random.oneIn(2) ? nullptr : &image.scene->images()[0]->record;
            break;
    }
}

TEST(ImageCheck, RandomRecordsAgreeWithTheModel) {
    compareWithModel([](Scene& scene, Random& random) {
        ImageShape shape = drawShape(random);
        shape.roi = drawRegion(shape, random);
        TestImage& image = scene.add("image", shape, random);
        maybeMask(scene, image, random);
        for (std::int32_t i = random.below(3); i > 0; --i)
            breakField(*scene.images()[static_cast<std::size_t>(
                           random.below(static_cast<std::int32_t>(scene.images().size())))],
                       random);
        return Call{"", [&] { return std::to_string(ownCheckImage(&image.record)); },
                    [&](Model& model) { return std::to_string(model.checkImage(&image.record)); }};
    });
}

TEST(ImageCheck, RowBytes) {
    EXPECT_EQ(ownRowBytes(0, ZET_DEPTH_8U, 4, 3, 10), 32);
    EXPECT_EQ(ownRowBytes(1, ZET_DEPTH_8U, 8, 3, 10), 16);
    EXPECT_EQ(ownRowBytes(0, ZET_DEPTH_1U, 4, 1, 100), 16);
    EXPECT_EQ(ownRowBytes(0, ZET_DEPTH_32F, 32, 4, INT32_MAX), INT32_MAX);
    Random random(5);
    for (std::int32_t i = 0; i < 500; ++i) {
        const ImageShape s = drawShape(random);
        EXPECT_EQ(ownRowBytes(s.dataOrder, s.depth, s.align, s.nChannels, s.width),
                  plainRowBytes(s.dataOrder, s.depth, s.align, s.nChannels, s.width));
    }
}

TEST(ImageCheck, TileRowBytes) {
    EventLog log;
    const Recorder recorder(log);
    Specimen tiles(true);
    Specimen block;
    EXPECT_EQ(ownTileRowBytes(&tiles.image), 24);
    EXPECT_EQ(ownTileRowBytes(&block.image), 0);
    EXPECT_EQ(zetGetErrStatus(), 0);
    tiles.image.align = 3;
    EXPECT_EQ(ownTileRowBytes(&tiles.image), 0);
    EXPECT_EQ(zetGetErrStatus(), ZET_StatusBadAlign);
    EXPECT_EQ(ownTileRowBytes(nullptr), 0);
}

}  // namespace
}  // namespace zetpxl::test
