// What warps, turns, shears and remaps refuse, in its order.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/model_warp.h"
#include "tests/support/refusals.h"
#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

struct Pair {
    Scene scene;
    ZetImage *src, *dst, *xMap, *yMap;

    Pair() {
        Random random(9);
        const ImageShape shape{.nChannels = 2, .width = 9, .height = 6};
        const ImageShape map{.depth = ZET_DEPTH_32F, .width = 9, .height = 6};
        src = &scene.add("src", shape, random).record;
        dst = &scene.add("dst", shape, random).record;
        xMap = &scene.add("xMap", map, random).record;
        yMap = &scene.add("yMap", map, random).record;
    }
};

struct Named {
    const char *name, *source, *signedWords;
    std::function<void(Pair&, ZetImage*, ZetImage*)> run;
};

constexpr double kIdentity[6] = {1, 0, 0, 0, 1, 0};
constexpr const char* kSigned = "srcImage->depth & ZET_DEPTH_SIGN";

const Named kWarp{"zetWarpAffine", "zetwarp", kSigned,
                  [](Pair&, ZetImage* src, ZetImage* dst) { zetWarpAffine(src, dst, kIdentity, 0); }};
const Named kTurn{"zetRotate", "zetwarp", kSigned,
                  [](Pair&, ZetImage* src, ZetImage* dst) { zetRotate(src, dst, 270, 2, 2, 0); }};
const Named kRemap{"zetRemap", "zetremap", "(srcImage->depth & ZET_DEPTH_SIGN)",
                   [](Pair& p, ZetImage* src, ZetImage* dst) { zetRemap(src, p.xMap, p.yMap, dst, 0); }};

using Lines = std::vector<std::string>;

Lines linesOf(const Named& op, std::initializer_list<const char*> contexts) {
    Lines lines;
    for (const char* context : contexts) lines.push_back(reportLine(-5, op.name, context, op.source));
    return lines;
}

// These checks report one after the other.
TEST(GeometryRefusals, SeveralAtOnce) {
    for (const Named& op : {kWarp, kTurn, kRemap}) {
        Pair pair;
        pair.src->depth = ZET_DEPTH_8S;
        pair.src->origin = pair.src->dataOrder = 1;
        const Recorder recorder(pair.scene.log);
        op.run(pair, pair.src, pair.dst);
        EXPECT_EQ(pair.scene.log.lines,
                  linesOf(op, {"srcImage->depth != dstImage->depth", "srcImage->origin != dstImage->origin",
                               "srcImage->dataOrder != dstImage->dataOrder", op.signedWords}));
        pair.scene.log.lines.clear();
        op.run(pair, pair.src, pair.src);
        EXPECT_EQ(pair.scene.log.lines, linesOf(op, {op.signedWords, "This function is not in-place function"}));
    }
}

TEST(GeometryRefusals, ImagesAndMaps) {
    Pair pair;
    pair.yMap->origin = 2;
    pair.xMap->align = 2;
    pair.dst->height = 0;
    pair.src->depth = 3;
    const Recorder recorder(pair.scene.log);
    const auto run = [&] { zetRemap(pair.src, pair.xMap, pair.yMap, pair.dst, 3); };
    Lines expected;
    for (const std::int32_t status : {-17, -10, -21, -20})
        expected.push_back(reportLine(status, "zetRemap", "Incorrect Image", "zetremap"));
    for (const auto& mend :
         {std::function<void()>([&] { pair.src->depth = ZET_DEPTH_8U; }),
          std::function<void()>([&] { pair.dst->height = 6; }), std::function<void()>([&] { pair.xMap->align = 4; }),
          std::function<void()>([&] { pair.yMap->origin = 0; })}) {
        run();
        mend();
    }
    pair.xMap->depth = ZET_DEPTH_32S;
    pair.yMap->alphaChannel = 1;
    run();
    zetSetErrStatus(0);
    pair.xMap->depth = ZET_DEPTH_32F;
    pair.yMap->alphaChannel = 0;
    run();
    for (const char* words :
         {"xMap->depth != ZET_DEPTH_32F || xMap->nChannels != 1 || xMap->alphaChannel != 0",
          "yMap->depth != ZET_DEPTH_32F || yMap->nChannels != 1 || yMap->alphaChannel != 0", kModeWords})
        expected.push_back(reportLine(-5, "zetRemap", words, "zetremap"));
    EXPECT_EQ(pair.scene.log.lines, expected);
}

// Each of them ends the call, with everything that follows still wrong.
TEST(GeometryRefusals, OfTheWarpInOrder) {
    Pair pair;
    ZetROI roi{0, 20, 0, 1, 1};
    pair.src->roi = &roi;
    pair.dst->alphaChannel = 2;
    double matrix[6] = {1, 1, 0, 1, 1 + 1e-8, 0};
    std::int32_t mode = 19;
    const Recorder recorder(pair.scene.log);
    const auto run = [&] {
        pair.scene.log.lines.clear();
        zetSetErrStatus(0);
        zetWarpAffine(pair.src, pair.dst, matrix, mode);
        return pair.scene.log.lines;
    };
    EXPECT_EQ(run(), linesOf(kWarp, {"Determinant of transform matrix == 0.0"}));
    matrix[1] = 0;
    EXPECT_EQ(run(), (Lines{reportLine(-5, "zetGetAffineQuad", "Bad rect ROI", "zetwarp"),
                            reportLine(-1, "zetWarpAffine", "", "zetwarp")}));
    roi.xOffset = 5;
    EXPECT_EQ(run(), linesOf(kWarp, {kModeWords}));
    mode = 18;
    EXPECT_EQ(run(), linesOf(kWarp, {"srcImage Rectangle ROI is degenerate to length or point"}));
    roi.width = roi.height = 2;
    EXPECT_EQ(run(), linesOf(kWarp, {kChannelWords}));
    pair.src->alphaChannel = 2;
    EXPECT_EQ(run(), Lines{});
}

TEST(GeometryRefusals, CallersAddABacktrace) {
    Pair pair;
    const Recorder recorder(pair.scene.log);
    zetShear(pair.src, pair.dst, 2, 0.5, 0, 0, 0);
    zetSetErrStatus(0);
    zetRotate(pair.src, pair.dst, 90, 0.5, 0, 5);
    EXPECT_EQ(pair.scene.log.lines,
              (Lines{reportLine(-5, "zetWarpAffine", "Determinant of transform matrix == 0.0", "zetwarp"),
                     reportLine(-1, "zetShear", "", "zetwarp"), reportLine(-5, "zetWarpAffine", kModeWords, "zetwarp"),
                     reportLine(-1, "zetRotate", "", "zetwarp")}));
}

TEST(GeometryRefusals, OfTheAffineTransform) {
    Pair pair;
    ZetROI roi{0, 9, 0, 1, 1};
    pair.src->roi = &roi;
    pair.src->align = 5;
    std::array<double, 8> quad{0, 0, 1, 0, 2, 0, 1, 1};
    double coeffs[6];
    const auto call = [&] {
        zetGetAffineTransform(pair.src, coeffs, quad.data());
        return zetGetErrStatus();
    };
    expectRefusals(
        pair.scene.log, {"zetGetAffineTransform", "zetwarp", call},
        {{-21, "Incorrect Image", [&] { pair.src->align = 4; }},
         {-5, "Quadrangle is degenerate to triangle or length or point", [&] { quad = {0, 0, 8, 4, 8, 0, 0, 3}; }},
         {-5, "Quadrangle is concave", [&] { quad = {0, 0, 8, 0, 9, 5, 0, 4}; }},
         {-5, "Quadrangle is not parallelogram", [&] { quad = {1, 2, 9, 2, 12, 12, 4, 12}; }},
         {-5, "Bad rect ROI", [&] { roi.xOffset = 3; }},
         {-5, "srcImage Rectangle ROI is degenerate to length or point", [&] { roi.width = roi.height = 5; }}});
    EXPECT_EQ((std::array{coeffs[0], coeffs[1], coeffs[2]}), (std::array{2.0, 0.75, -5.0}));
    EXPECT_EQ((std::array{coeffs[3], coeffs[4], coeffs[5]}), (std::array{0.0, 2.5, 2.0}));
}

}  // namespace
}  // namespace zetpxl::test
