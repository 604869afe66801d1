// What changes of scale refuse, in its order.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/model_zoom.h"
#include "tests/support/refusals.h"
#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

using Lines = std::vector<std::string>;

struct Pair {
    Scene scene;
    ZetImage *src, *dst, *mask;

    Pair() {
        Random random(9);
        const ImageShape shape{.nChannels = 2, .width = 9, .height = 6};
        src = &scene.add("src", shape, random).record;
        dst = &scene.add("dst", shape, random).record;
        mask = &scene.add("mask", {.depth = ZET_DEPTH_1U, .width = 9, .height = 6}, random).record;
    }
    std::vector<std::uint8_t> pixels() const {
        const auto* data = static_cast<const std::uint8_t*>(dst->imageData);
        return {data, data + dst->imageSize};
    }
};

std::string bad(const char* words) { return reportLine(ZET_StatusBadArgument, "zetZoom", words, "zetZoom"); }
std::string trace(const char* name, const char* source) { return reportLine(ZET_StatusBacktrace, name, "", source); }

TEST(ZoomRefusals, RatiosComeBeforeImages) {
    EventLog log;
    const Recorder recorder(log);
    zetZoom(nullptr, nullptr, 2, 3, 1, 1, 0);
    zetZoom(nullptr, nullptr, 1, 1, 2, 3, 0);
    zetResize(nullptr, nullptr, 2, 1, 1, 1, ZET_INTER_SUPER);
    zetResize(nullptr, nullptr, 1, 1, 2, 1, ZET_INTER_SUPER);
    const std::string few = bad("xDst < xSrc || yDst < ySrc");
    const std::string many = reportLine(ZET_StatusBadArgument, "zetResize", "(xDst > xSrc || yDst > ySrc)", "zetresiz");
    EXPECT_EQ(log.lines, (Lines{few, few, many, many}));
}

// One after the other, then the call ends; a resize has the zoom's words and its own line behind them.
TEST(ZoomRefusals, SeveralAtOnce) {
    Pair pair;
    pair.src->depth = ZET_DEPTH_8S;
    pair.src->dataOrder = 1;
    const Recorder recorder(pair.scene.log);
    const auto before = pair.pixels();
    const Lines all{bad(kZoomModeWords),           bad("srcImage->depth != dstImage->depth"),
                    bad(kZoomDepthWords),          bad("srcImage->dataOrder != dstImage->dataOrder"),
                    bad("xDst <= 0 || xSrc <= 0"), bad("yDst <= 0 || ySrc <= 0")};
    zetZoom(pair.src, pair.dst, 0, -1, 3, 0, ZET_INTER_SUPER);
    EXPECT_EQ(pair.scene.log.lines, all);
    pair.scene.log.lines.clear();
    zetSetErrStatus(0);
    zetResize(pair.src, pair.dst, 0, 1, 3, 0, -1);
    Lines traced = all;
    traced.push_back(trace("zetResize", "zetresiz"));
    EXPECT_EQ(pair.scene.log.lines, traced);
    EXPECT_EQ(pair.pixels(), before);
}

// Each of them ends the call, with everything that follows still wrong.
TEST(ZoomRefusals, OneByOne) {
    Pair pair;
    pair.src->align = 5;
    pair.dst->height = 0;
    ZetROI one{2, 0, 0, 9, 6};
    pair.src->roi = &one;
    const auto call = [&] {
        zetZoom(pair.src, pair.dst, 3, 2, 3, 2, ZET_INTER_CUBIC);
        return zetGetErrStatus();
    };
    expectRefusals(pair.scene.log, {"zetZoom", "zetZoom", call},
                   {{ZET_StatusBadAlign, "Incorrect Image", [&] { pair.src->align = 4; }},
                    {ZET_StatusBadImageSize, "Incorrect Image", [&] { pair.dst->height = 6; }},
                    {ZET_StatusError, "srcImage COI != dstImage COI", [&] { pair.dst->alphaChannel = 2; }}});
    const Recorder recorder(pair.scene.log);
    zetZoom(pair.src, pair.src, 1, 1, 1, 1, 0);
    EXPECT_EQ(pair.scene.log.lines, Lines{bad("This function isn`t in-plase function")});
}

TEST(ZoomRefusals, OldFailuresEndTheCall) {
    Pair pair;
    const Recorder recorder(pair.scene.log, -4);
    const auto before = pair.pixels();
    zetZoom(pair.src, pair.dst, 1, 1, 1, 1, 0);
    zetResize(pair.src, pair.dst, 1, 1, 1, 1, 0);
    EXPECT_EQ(pair.scene.log.lines, Lines{trace("zetResize", "zetresiz")});
    EXPECT_EQ(pair.pixels(), before);
}

TEST(ZoomRefusals, NothingButAlphaIsSilent) {
    Pair pair;
    for (ZetImage* image : {pair.src, pair.dst}) {
        image->nChannels = 1;
        image->alphaChannel = image == pair.dst;
    }
    const Recorder recorder(pair.scene.log);
    const auto before = pair.pixels();
    zetZoom(pair.src, pair.dst, 1, 1, 1, 1, 0);
    zetZoom(pair.dst, pair.src, 1, 1, 1, 1, 0);
    EXPECT_EQ(pair.scene.log.lines, Lines{});
    EXPECT_EQ(pair.pixels(), before);
}

// ---- masks that cannot be scaled or joined

TEST(ZoomRefusals, PlanarMasksOfTheSource) {
    Pair pair;
    pair.mask->dataOrder = 1;
    pair.src->maskImage = pair.mask;
    const Recorder recorder(pair.scene.log);
    const auto before = pair.pixels();
    zetZoom(pair.src, pair.dst, 1, 1, 1, 1, 0);
    EXPECT_EQ(pair.scene.log.lines, (Lines{bad("srcImage->dataOrder != dstImage->dataOrder"),
                                           trace("zetResize", "zetresiz"), trace("zetZoom", "zetZoom")}));
    EXPECT_EQ(pair.pixels(), before);
    pair.src->maskImage = nullptr;
    pair.dst->maskImage = pair.mask;
    zetSetErrStatus(0);
    zetZoom(pair.src, pair.dst, 1, 1, 1, 1, 0);
    EXPECT_EQ(zetGetErrStatus(), 0);
    EXPECT_NE(pair.pixels(), before);
}

std::int32_t waveThrough(std::int32_t, const char*, const char*, const char*, std::int32_t) { return 0; }

// The mask of the destination has nothing but alpha and cannot be joined; who waves the report through goes without it.
TEST(ZoomRefusals, ReportsWavedThroughLetTheBlockGoOn) {
    Pair pair;
    auto* bits = static_cast<std::uint8_t*>(pair.mask->imageData);
    std::fill(bits, bits + pair.mask->imageSize, std::uint8_t{0xFF});
    ZetImage alpha = *pair.mask;
    alpha.alphaChannel = 1;
    pair.src->maskImage = pair.mask;
    pair.dst->maskImage = &alpha;
    const auto before = pair.pixels();
    const Recorder recorder(pair.scene.log);
    zetZoom(pair.src, pair.dst, 1, 1, 1, 1, 0);
    EXPECT_EQ(pair.scene.log.lines, (Lines{reportLine(ZET_StatusBadArgument, "zetAnd", "(nChSrcB != nChDst)", "zetand"),
                                           trace("zetZoom", "zetZoom")}));
    EXPECT_EQ(pair.pixels(), before);
    zetSetErrStatus(0);
    const ZetErrorCallback previous = zetRedirectError(&waveThrough);
    zetZoom(pair.src, pair.dst, 1, 1, 1, 1, 0);
    zetRedirectError(previous);
    EXPECT_NE(pair.pixels(), before);
}

}  // namespace
}  // namespace zetpxl::test
