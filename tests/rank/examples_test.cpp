// Rank and fixed filters worked out by hand, and what they refuse, in its order.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/grid.h"
#include "tests/support/refusals.h"
#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The sample at the centre of a filtered square.
template <class T>
T fixedCentre(std::uint32_t depth, std::int32_t filter, std::vector<T> window, std::int32_t side) {
    Grid<T> src(depth, side, window);
    Grid<T> dst(depth, side, std::vector<T>(window.size()));
    EXPECT_EQ(zetFixedFilter(&src.image, &dst.image, filter), 0);
    return dst.samples[window.size() / 2];
}

std::uint8_t onePoint(std::int32_t filter, std::uint8_t value, std::int32_t side) {
    Bytes window(static_cast<std::size_t>(side * side));
    window[window.size() / 2] = value;
    return fixedCentre<std::uint8_t>(ZET_DEPTH_8U, filter, window, side);
}

TEST(FixedExample, OnePoint) {
    EXPECT_EQ(onePoint(ZET_FIXED_PEAK_3, 100, 3), 255);
    EXPECT_EQ(onePoint(ZET_FIXED_PEAK_3B, 10, 3), 80);
    EXPECT_EQ(onePoint(ZET_FIXED_CRISP_3, 100, 3), 200);
    EXPECT_EQ(onePoint(ZET_FIXED_SMOOTH_3, 100, 3), 25);
    EXPECT_EQ(onePoint(ZET_FIXED_SMOOTH_5, 100, 5), 22);
    EXPECT_EQ(onePoint(ZET_FIXED_RING_5, 3, 5), 60);
    EXPECT_EQ(onePoint(ZET_FIXED_PEAK_5, 3, 5), 72);
}

// Sums of 8, 24 and 40 sixteenths.
TEST(FixedExample, TiesGoToEven) {
    EXPECT_EQ(onePoint(ZET_FIXED_SMOOTH_3, 2, 3), 0);
    EXPECT_EQ(onePoint(ZET_FIXED_SMOOTH_3, 6, 3), 2);
    EXPECT_EQ(onePoint(ZET_FIXED_SMOOTH_3, 10, 3), 2);
}

TEST(FixedExample, LimitsOfADepth) {
    const std::vector<std::int8_t> lowest(9, -128);
    EXPECT_EQ(fixedCentre(ZET_DEPTH_8S, ZET_FIXED_SMOOTH_3, lowest, 3), -128);
    EXPECT_EQ(fixedCentre(ZET_DEPTH_8S, ZET_FIXED_CRISP_3, lowest, 3), -128);
    EXPECT_EQ(fixedCentre(ZET_DEPTH_8S, ZET_FIXED_GRAD_X_FLAT, lowest, 3), 0);
    const std::vector<std::int32_t> highest(9, INT32_MAX);
    EXPECT_EQ(fixedCentre(ZET_DEPTH_32S, ZET_FIXED_SMOOTH_3, highest, 3), INT32_MAX);
    EXPECT_EQ(fixedCentre(ZET_DEPTH_32S, ZET_FIXED_PEAK_3, highest, 3), 0);
}

template <class T>
T medianCentre(std::uint32_t depth, std::int32_t nCols, std::int32_t nRows, std::vector<T> window) {
    Grid<T> src(depth, nCols, window);
    Grid<T> dst(depth, nCols, std::vector<T>(window.size()));
    zetMedianFilter(&src.image, &dst.image, nCols, nRows, nCols / 2, nRows / 2);
    return dst.samples[static_cast<std::size_t>(nRows / 2 * nCols + nCols / 2)];
}

TEST(MedianExample, UpperOfTheMiddleTwoAndRepeats) {
    EXPECT_EQ(medianCentre<std::uint8_t>(ZET_DEPTH_8U, 2, 2, {1, 2, 3, 4}), 3);
    EXPECT_EQ(medianCentre<std::uint8_t>(ZET_DEPTH_8U, 3, 3, {5, 5, 5, 1, 1, 1, 1, 9, 9}), 5);
    EXPECT_EQ(medianCentre<std::int8_t>(ZET_DEPTH_8S, 3, 1, {-128, 127, 0}), 0);
    std::vector<std::int16_t> samples(27, -32768);
    std::fill_n(samples.begin(), 13, std::int16_t{32767});
    samples[26] = -7;
    EXPECT_EQ(medianCentre<std::int16_t>(ZET_DEPTH_16S, 9, 3, samples), -7);
}

Bytes square(std::int32_t from, std::int32_t to, std::uint8_t value) {
    Bytes image(81);
    for (std::int32_t y = from; y <= to; ++y)
        for (std::int32_t x = from; x <= to; ++x) image[static_cast<std::size_t>(9 * y + x)] = value;
    return image;
}

TEST(MorphologyExample, TheNumberIsAHalfSize) {
    Grid<std::uint8_t> image(ZET_DEPTH_8U, 9, square(4, 4, 77));
    zetDilate(&image.image, &image.image, 3);
    EXPECT_EQ(image.samples, square(1, 7, 77));
    zetErode(&image.image, &image.image, 2);
    EXPECT_EQ(image.samples, square(3, 5, 77));
    zetOpen(&image.image, &image.image, 1);
    EXPECT_EQ(image.samples, square(3, 5, 77));
    zetOpen(&image.image, &image.image, 2);
    EXPECT_EQ(image.samples, Bytes(81));
}

TEST(MorphologyExample, OnlyTheFrameBesideTheRegionCounts) {
    Bytes samples{9, 0, 0, 0, 0, 0, 8};
    ZetROI roi{0, 2, 0, 3, 1};
    Grid<std::uint8_t> image(ZET_DEPTH_8U, 7, samples);
    image.image.roi = &roi;
    zetDilate(&image.image, &image.image, 5);
    EXPECT_EQ(image.samples, samples);
    roi.xOffset = 1;
    zetDilate(&image.image, &image.image, 5);
    EXPECT_EQ(image.samples, (Bytes{9, 9, 9, 9, 0, 0, 8}));
}

// ---- refusals

struct Faulty {
    Scene scene;
    ZetImage* src;
    ZetImage* dst;

    Faulty() {
        Random random(9);
        const ImageShape shape{.depth = ZET_DEPTH_32F, .nChannels = 2, .width = 9, .height = 6};
        src = &scene.add("src", shape, random).record;
        dst = &scene.add("dst", shape, random).record;
        dst->align = 5;
        dst->depth = ZET_DEPTH_16U;
        dst->nChannels = dst->alphaChannel = 1;
        dst->dataOrder = 1;
    }
};

TEST(RankRefusals, OfTheMedian) {
    Faulty f;
    ZetImage* from = f.dst;
    std::int32_t x = 3, y = -1;
    const auto call = [&] {
        zetMedianFilter(from, f.dst, 3, 2, x, y);
        return zetGetErrStatus();
    };
    expectRefusals(f.scene.log, {"zetMedianFilter", "zetnlf", call},
                   {{-21, "Incorrect Image", [&] { f.dst->align = 4; }},
                    {-5, "(anchorX>=nCols)||(anchorX<0)", [&] { x = 2; }},
                    {-5, "(anchorY>=nRows)||(anchorY<0)", [&] { y = 1; }},
                    {-5, "(srcImage==dstImage)", [&] { from = f.src; }},
                    {-5, "srcImage->depth!=dstImage->depth", [&] { f.dst->depth = ZET_DEPTH_32F; }},
                    {-5, "srcImage->depth==32", [&] { f.dst->depth = f.src->depth = ZET_DEPTH_32S; }},
                    {-5, "srcImage->nChannels!=dstImage->nChannels", [&] { f.src->nChannels = 1; }},
                    {-5, "srcImage->alphaChannel!=dstImage->alphaChannel", [&] { f.dst->alphaChannel = 0; }},
                    {-5, "srcImage->dataOrder!=dstImage->dataOrder", [&] { f.dst->dataOrder = 0; }}});
}

TEST(RankRefusals, OfTheFixedFilters) {
    Faulty f;
    ZetImage* from = f.dst;
    std::int32_t filter = 11;
    ZetROI roi{1, 0, 0, 4, 4};
    const auto useChannels = [&] {
        f.src->roi = &roi;
        f.src->nChannels = f.dst->nChannels = 2;
    };
    expectRefusals(
        f.scene.log, {"zetFixedFilter", "zetnlf", [&] { return zetFixedFilter(from, f.dst, filter); }},
        {{-21, "Incorrect Image", [&] { f.dst->align = 4; }},
         {-5, "(srcImage==dstImage)", [&] { from = f.src; }},
         {-17, "srcImage->depth!=dstImage->depth", [&] { f.src->depth = ZET_DEPTH_16U; }},
         {-15, "srcImage->nChannels!=dstImage->nChannels", [&] { f.src->nChannels = 1; }},
         {-18, "srcImage->alphaChannel!=dstImage->alphaChannel", [&] { f.dst->alphaChannel = 0; }},
         {-1, "srcImage->dataOrder!=dstImage->dataOrder",
          [&] {
              f.dst->dataOrder = 0;
              useChannels();
          }},
         {-24, "Number of interset channel input and output Image is not equal.", [&] { f.src->roi = nullptr; }},
         {-5, "Unknow filter.", [&] { filter = 10; }}});
}

TEST(RankRefusals, OfMorphology) {
    Faulty f;
    f.dst->depth = ZET_DEPTH_8U;
    f.dst->alphaChannel = 0;
    f.dst->origin = 1;
    std::int32_t n = 0;
    const auto call = [&] {
        zetClose(f.src, f.dst, n);
        return zetGetErrStatus();
    };
    expectRefusals(f.scene.log, {"zetClose", "ownMorph", call},
                   {{-21, "Incorrect Image", [&] { f.dst->align = 4; }},
                    {-5, "Illegal number of iterations", [&] { n = 1; }},
                    {-5, "Illegal image depth", [&] { f.src->depth = ZET_DEPTH_16U; }},
                    {-5, "SRC and DST depth are different", [&] { f.src->depth = ZET_DEPTH_8U; }},
                    {-5, "SRC and DST order are different", [&] { f.dst->dataOrder = 0; }},
                    {-5, "SRC and DST orign are different", [&] { f.dst->origin = 0; }},
                    {-5, "SRC and DST number of channels are different", [&] { f.src->alphaChannel = 2; }}});
}

// A status left by an earlier call ends the frame's operations, and is forgotten by morphology.
TEST(RankRefusals, AnOldStatus) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 3, Bytes(9, 50));
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, 3, Bytes(9, 1));
    EventLog log;
    const Recorder recorder(log, -110);
    zetMedianFilter(&src.image, &dst.image, 1, 1, 0, 0);
    EXPECT_EQ(zetFixedFilter(&src.image, &dst.image, 6), -110);
    EXPECT_EQ(dst.samples, Bytes(9, 1));
    zetErode(&src.image, &dst.image, 1);
    EXPECT_EQ(zetGetErrStatus(), 0);
    EXPECT_EQ(dst.samples, (Bytes{0, 0, 0, 0, 50, 0, 0, 0, 0}));
    EXPECT_TRUE(log.lines.empty());
}

}  // namespace
}  // namespace zetpxl::test
