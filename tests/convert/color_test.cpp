// Colour conversions against the model, by hand, and what they refuse.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/differential.h"
#include "tests/support/draw.h"
#include "tests/support/model_color.h"

namespace zetpxl::test {
namespace {

void rename(TestImage& image, const char* model, const char* letters) {
    std::memcpy(image.record.colorModel, model, 4);
    std::memcpy(image.record.channelSeq, letters, 4);
}

ImageShape drawColorShape(Random& random) {
    ImageShape shape = drawShape(random);
    shape.depth = random.pick({ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32S});
    if (random.oneIn(25)) shape.depth = random.pick({ZET_DEPTH_8S, ZET_DEPTH_16S, ZET_DEPTH_32F});
    shape.alphaChannel = 0;
    return shape;
}

struct Pair {
    TestImage *src, *dst;
};

Pair drawPair(Scene& scene, Random& random) {
    ImageShape from = drawColorShape(random);
    ImageShape to = drawColorShape(random);
    to.depth = from.depth;
    to.dataOrder = from.dataOrder;
    to.origin = from.origin;
    from.nChannels = random.oneIn(25) ? 2 : random.pick({3, 3, 4, 5});
    to.nChannels = random.oneIn(25) ? random.pick({2, 4}) : 3;
    if (random.oneIn(40)) to.dataOrder ^= 1;
    if (random.oneIn(40)) to.origin ^= 1;
    if (random.oneIn(40)) to.depth = ZET_DEPTH_8S;
    if (random.oneIn(60)) (random.oneIn(2) ? from : to).roi = ZetROI{0, 0, 0, 100, 100};
    TestImage& src = scene.add("src", from, random, drawValues(random));
    TestImage& dst = scene.add("dst", to, random, drawValues(random));
    maybeMask(scene, src, random);
    maybeMask(scene, dst, random);
    if (random.oneIn(80)) (random.oneIn(2) ? src : dst).record.align = 5;
    return {&src, &dst};
}

void drawRgbNames(TestImage& image, Random& random) {
    const char* model = random.pick({"RGB", "RGBA", "RGBx"});
    const char* letters = random.pick({"RGB", "BGR", "RGBA", "BGRA", "RGBR", "BGRR", "RGBB", "BGRG"});
    if (random.oneIn(30)) model = random.pick({"rgb ", "HLS", "R\0\0", "GRBA"});
    if (random.oneIn(30)) letters = random.pick({"RBGx", "GBR", "\0GB"});
    rename(image, model, letters);
}

Call drawToHls(Scene& scene, Random& random) {
    Pair pair = drawPair(scene, random);
    if (random.oneIn(6)) pair.src = pair.dst;
    drawRgbNames(*pair.src, random);
    ZetImage* src = &pair.src->record;
    ZetImage* dst = &pair.dst->record;
    return {pair.src->name + " " + std::string(src->channelSeq, 4), [=] { return zetRGB2HLS(src, dst), ""; },
            [=](Model& model) { return modelRGB2HLS(model, src, dst), ""; }};
}

Call drawToRgb(Scene& scene, Random& random) {
    const Pair pair = drawPair(scene, random);
    const char* letters = random.oneIn(30) ? "HSL" : "HLS";
    rename(*pair.src, random.oneIn(30) ? "HSV?" : random.pick({"HLS", "HLSA"}), letters);
    drawRgbNames(*pair.dst, random);
    ZetImage* src = &pair.src->record;
    ZetImage* dst = &pair.dst->record;
    return {std::string(dst->channelSeq, 4), [=] { return zetHLS2RGB(src, dst), ""; },
            [=](Model& model) { return modelHLS2RGB(model, src, dst), ""; }};
}

TEST(Color, ToHlsAgreesWithTheModel) { compareWithModel(&drawToHls, {.compare = {}, .failingFetches = 25}); }
TEST(Color, ToRgbAgreesWithTheModel) { compareWithModel(&drawToRgb, {.compare = {}, .failingFetches = 25}); }

// The destination bears the names that it is given, so that nothing but pixels may change.
Call drawNamedToHls(Scene& scene, Random& random) {
    const Pair pair = drawPair(scene, random);
    rename(*pair.src, "RGB", "BGR");
    rename(*pair.dst, "HLS", "HLS");
    return {"", [=] { return zetRGB2HLS(&pair.src->record, &pair.dst->record), ""; }, {}};
}

TEST(Color, FailsCleanlyAtEveryStep) {
    failEveryStep(&drawNamedToHls);
    failEveryStep(&drawToRgb);
}

// ---- by hand

template <class T>
struct Pixel {
    T samples[4]{};
    ZetImage image{};

    Pixel(std::uint32_t depth, const char* names, std::vector<T> values) {
        std::copy(values.begin(), values.end(), samples);
        image.nChannels = static_cast<std::int32_t>(values.size());
        image.depth = depth;
        std::memcpy(image.colorModel, names, 3);
        std::memcpy(image.channelSeq, names, 3);
        if (names[0] == 'B') std::memcpy(image.colorModel, "RGB", 3);
        image.align = 4;
        image.width = image.height = 1;
        image.imageSize = image.widthStep = 16;
        image.imageData = samples;
    }
    Pixel(const Pixel&) = delete;
    Pixel& operator=(const Pixel&) = delete;
};

template <class T>
std::vector<T> toHls(std::uint32_t depth, std::vector<T> rgb, const char* names = "RGB") {
    Pixel<T> src(depth, names, std::move(rgb));
    Pixel<T> dst(depth, "xyz", {1, 2, 3});
    zetRGB2HLS(&src.image, &dst.image);
    return {dst.samples[0], dst.samples[1], dst.samples[2]};
}

template <class T>
std::vector<T> toRgb(std::uint32_t depth, std::vector<T> hls) {
    Pixel<T> src(depth, "HLS", std::move(hls));
    Pixel<T> dst(depth, "RGB", {1, 2, 3});
    zetHLS2RGB(&src.image, &dst.image);
    return {dst.samples[0], dst.samples[1], dst.samples[2]};
}

TEST(ColorExample, BytesToHls) {
    using Bytes = std::vector<std::uint8_t>;
    const auto hls = [](Bytes rgb, const char* names = "RGB") { return toHls(ZET_DEPTH_8U, std::move(rgb), names); };
    EXPECT_EQ(hls({255, 0, 0}), (Bytes{0, 127, 255}));
    EXPECT_EQ(hls({0, 255, 0}), (Bytes{85, 127, 255}));
    EXPECT_EQ(hls({0, 0, 255}), (Bytes{170, 127, 255}));
    EXPECT_EQ(hls({255, 255, 255}), (Bytes{0, 255, 0}));
    EXPECT_EQ(hls({77, 77, 77}), (Bytes{0, 77, 0}));
    EXPECT_EQ(hls({10, 20, 30}), (Bytes{148, 20, 127}));
    EXPECT_EQ(hls({30, 20, 10, 99}, "BGR"), (Bytes{148, 20, 127}));
    EXPECT_EQ(hls({255, 255, 0})[0], 42);
}

TEST(ColorExample, WordsAndGreys) {
    using Words = std::vector<std::int32_t>;
    EXPECT_EQ(toHls<std::int32_t>(ZET_DEPTH_32S, {5, 5, 5}), (Words{INT32_MIN, 5, INT32_MIN}));
    EXPECT_EQ(toRgb<std::int32_t>(ZET_DEPTH_32S, {123, -77, INT32_MIN}), (Words{-77, -77, -77}));
    EXPECT_EQ(toHls<std::int32_t>(ZET_DEPTH_32S, {INT32_MAX, INT32_MIN, INT32_MIN}), (Words{INT32_MIN, 0, INT32_MAX}));
    EXPECT_EQ(toRgb<std::uint16_t>(ZET_DEPTH_16U, {60000, 1234, 0}), (std::vector<std::uint16_t>{1234, 1234, 1234}));
    EXPECT_EQ(toRgb<std::uint8_t>(ZET_DEPTH_8U, {0, 127, 255}), (std::vector<std::uint8_t>{254, 0, 0}));
}

// ---- tiles that cannot be had

struct Tiles {
    std::vector<std::uint8_t> samples = std::vector<std::uint8_t>(8 * 8 * 3);
    std::string asked;
    ZetTileInfo info{&onTile, this, nullptr, 8, 8};

    static void onTile(ZetImage* image, std::int32_t col, std::int32_t row, std::int32_t mode) {
        auto& self = *static_cast<Tiles*>(image->tileInfo->id);
        if (mode == ZET_TILE_RELEASE) return;
        self.asked += std::to_string(col) + std::to_string(row) + " ";
        const bool had = self.asked == "00 ";
        image->tileInfo->tileData = had ? self.samples.data() : nullptr;
    }
};

TEST(Color, TheWalkEndsWithTwoRowsThatCannotBeHad) {
    Random random(1);
    Scene scene;
    ZetImage& src = scene.add("src", {.nChannels = 3, .width = 40, .height = 40}, random).record;
    ZetImage& dst = scene.add("dst", {.nChannels = 3, .width = 40, .height = 40}, random).record;
    std::memcpy(src.channelSeq, "RGB", 4);
    Tiles tiles;
    dst.imageData = nullptr;
    dst.tileInfo = &tiles.info;
    const Recorder recorder(scene.log);
    zetRGB2HLS(&src, &dst);
    EXPECT_EQ(tiles.asked, "00 10 01 ");
    EXPECT_TRUE(scene.log.lines.empty());
}

// ---- refusals, two faults at once

struct Fault {
    const char* source;
    std::int32_t status;
    const char* context;
    void (*apply)(ZetImage& rgb, ZetImage& hls);
};

constexpr const char* kFormats =
    "(src->nChannels < 3 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) || (src->dataOrder != "
    "dst->dataOrder) || (src->origin != dst->origin)";
ZetROI wholeImage{0, 0, 0, 9, 6};

const Fault kRgbModel{"owncolor", -5, "colorModel must be RGB instead of GRB? ",
                      [](ZetImage& rgb, ZetImage&) { std::memcpy(rgb.colorModel, "GRB?", 4); }};
const Fault kRgbLetters{"owncolor", -5, "channelSeq must be RGB or BGR instead of RB ",
                        [](ZetImage& rgb, ZetImage&) { std::memcpy(rgb.channelSeq, "RB", 3); }};
const Fault kHlsModel{"owncolor", -5, "src-> colorModel must be HLS instead of HSV?",
                      [](ZetImage&, ZetImage& hls) { std::memcpy(hls.colorModel, "HSV?", 4); }};
const Fault kHlsLetters{"owncolor", -5, "src-> channelSeq must be HLS instead of HSL",
                        [](ZetImage&, ZetImage& hls) { std::memcpy(hls.channelSeq, "HSL", 4); }};
const Fault kRegion{"owncolor", -5, "src & dst roi must be NULL",
                    [](ZetImage& rgb, ZetImage&) { rgb.roi = &wholeImage; }};
const Fault kOtherRegion{"owncolor", -5, "src & dst roi must be NULL",
                         [](ZetImage&, ZetImage& hls) { hls.roi = &wholeImage; }};
const Fault kChannels{"owncolor", -5, kFormats, [](ZetImage& rgb, ZetImage&) { rgb.nChannels = 2; }};
const Fault kDepth{"owncolor", -5, kFormats, [](ZetImage&, ZetImage& hls) { hls.depth = ZET_DEPTH_8S; }};
const Fault kOrder{"owncolor", -5, kFormats, [](ZetImage& rgb, ZetImage&) { rgb.dataOrder = 1; }};
const Fault kOrigin{"owncolor", -5, kFormats, [](ZetImage&, ZetImage& hls) { hls.origin = 1; }};

using Operation = void (*)(ZetImage*, ZetImage*);

struct Sides {
    Scene scene;
    TestImage *rgb, *hls;

    Sides() {
        Random random(3);
        rgb = &scene.add("rgb", {.nChannels = 3, .width = 9, .height = 6}, random);
        hls = &scene.add("hls", {.nChannels = 3, .width = 9, .height = 6}, random);
        rename(*rgb, "RGBA", "BGR");
        rename(*hls, "HLSA", "HLS");
    }
    void run(Operation operation) {
        const bool fromRgb = operation == &zetRGB2HLS;
        operation(fromRgb ? &rgb->record : &hls->record, fromRgb ? &hls->record : &rgb->record);
    }
};

void expectFirstFault(Operation operation, const char* name, const std::vector<Fault>& faults) {
    for (std::size_t i = 0; i < faults.size(); ++i)
        for (std::size_t j = i; j < faults.size(); ++j) {
            Sides sides;
            faults[j].apply(sides.rgb->record, sides.hls->record);
            faults[i].apply(sides.rgb->record, sides.hls->record);
            const Recorder recorder(sides.scene.log);
            sides.run(operation);
            EXPECT_EQ(sides.scene.log.lines,
                      std::vector{reportLine(faults[i].status, name, faults[i].context, faults[i].source)});
        }
}

TEST(ColorRefusals, TheFirstFaultInOrder) {
    const Fault badRgb{"zetcolor", -21, "Incorrect Image", [](ZetImage& rgb, ZetImage&) { rgb.align = 5; }};
    const Fault badHls{"zetcolor", -20, "Incorrect Image", [](ZetImage&, ZetImage& hls) { hls.origin = 2; }};
    expectFirstFault(&zetRGB2HLS, "zetRGB2HLS",
                     {badRgb, badHls, kRgbModel, kRgbLetters, kRegion, kOtherRegion, kDepth, kOrder, kOrigin});
    expectFirstFault(&zetHLS2RGB, "zetHLS2RGB",
                     {badHls, badRgb, kRgbModel, kRgbLetters, kHlsModel, kHlsLetters, kOtherRegion, kRegion, kChannels,
                      kDepth, kOrder, kOrigin});
}

// The depth is refused only after the names have been written.
TEST(ColorRefusals, DepthsComeLast) {
    Sides sides;
    for (TestImage* image : {sides.rgb, sides.hls}) image->record.depth = ZET_DEPTH_8S;
    std::memcpy(sides.hls->record.colorModel, "HLSA", 4);
    const char* words = "Error input depth. 32S,16U,8U are valid now";
    const Recorder recorder(sides.scene.log);
    sides.run(&zetHLS2RGB);
    EXPECT_EQ(std::string(sides.rgb->record.colorModel, 4), "RGBA");
    sides.run(&zetRGB2HLS);
    EXPECT_EQ(std::string(sides.hls->record.colorModel, 4), std::string("HLS\0", 4));
    EXPECT_EQ(sides.scene.log.lines, (std::vector{reportLine(-5, "ownHLS2RGB", words, "ownhls"),
                                                  reportLine(-5, "ownRGB2HLS", words, "ownhls")}));
}

}  // namespace
}  // namespace zetpxl::test
