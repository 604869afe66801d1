// Changes of scale worked out by hand.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/grid.h"
#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Ratios {
    std::int32_t xDst, xSrc, yDst, ySrc;
};

Bytes resized(const Bytes& samples, std::int32_t width, const Ratios& r, std::int32_t mode, Bytes old,
              std::int32_t dstWidth) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, width, samples);
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, dstWidth, std::move(old));
    zetResize(&src.image, &dst.image, r.xDst, r.xSrc, r.yDst, r.ySrc, mode);
    return dst.samples;
}

TEST(ZoomExample, NearestSamples) {
    EXPECT_EQ(resized({1, 2, 3, 4}, 2, {2, 1, 2, 1}, 0, Bytes(16), 4),
              (Bytes{1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4}));
    // From 0.5 on by 3/5: the ends meet.
    EXPECT_EQ(resized({1, 2, 3, 4}, 4, {3, 2, 1, 1}, 0, Bytes(6), 6), (Bytes{1, 2, 2, 3, 3, 4}));
    // Every third one, and from 0.5 on by 5/3.
    EXPECT_EQ(resized({1, 2, 3, 4, 5, 6}, 6, {1, 3, 1, 1}, 0, Bytes(2), 2), (Bytes{1, 4}));
    EXPECT_EQ(resized({1, 2, 3, 4, 5, 6}, 6, {2, 3, 1, 1}, 0, Bytes(4), 4), (Bytes{1, 3, 4, 6}));
}

TEST(ZoomExample, OnlyWhatTheSourceGivesIsMade) {
    EXPECT_EQ(resized({1, 2, 3}, 3, {2, 1, 1, 1}, 0, Bytes(8, 9), 8), (Bytes{1, 1, 2, 2, 3, 3, 9, 9}));
    EXPECT_EQ(resized({1, 2, 3}, 3, {1, 5, 1, 7}, 0, Bytes(4, 9), 2), (Bytes{1, 9, 9, 9}));
}

TEST(ZoomExample, LinearMeetsTheLastSample) {
    const Bytes rows{0, 100, 200, 50, 150, 250};
    const Bytes wide{0, 40, 80, 120, 160, 200, 50, 90, 130, 170, 210, 250};
    EXPECT_EQ(resized(rows, 3, {2, 1, 1, 1}, ZET_INTER_LINEAR, Bytes(12), 6), wide);
    // Too narrow for four samples, too low for two.
    EXPECT_EQ(resized(rows, 3, {2, 1, 1, 1}, ZET_INTER_CUBIC, Bytes(12), 6), wide);
    EXPECT_EQ(resized({0, 100, 200, 50}, 4, {2, 1, 1, 1}, ZET_INTER_CUBIC, Bytes(8), 8),
              (Bytes{0, 0, 100, 100, 200, 200, 50, 50}));
    // Down, too, it interpolates and does not average: from end to end by 5.
    EXPECT_EQ(resized({0, 9, 9, 9, 9, 70, 10, 9, 9, 9, 9, 80}, 6, {1, 3, 1, 1}, ZET_INTER_LINEAR, Bytes(4), 2),
              (Bytes{0, 70, 10, 80}));
}

template <class T>
std::vector<T> fourTimes(const std::vector<T>& row) {
    std::vector<T> rows;
    for (std::int32_t i = 0; i < 4; ++i) rows.insert(rows.end(), row.begin(), row.end());
    return rows;
}

std::vector<float> cubicRow(const std::vector<float>& row) {
    Grid<float> src(ZET_DEPTH_32F, 4, fourTimes(row));
    Grid<float> dst(ZET_DEPTH_32F, 7, std::vector<float>(28, -9.0f));
    zetZoom(&src.image, &dst.image, 7, 4, 1, 1, ZET_INTER_CUBIC);
    return {dst.samples.begin() + 14, dst.samples.begin() + 21};
}

// Half way between samples; floats overshoot, bytes are limited.
TEST(ZoomExample, CubicThroughFourSamples) {
    const std::vector<float> made = cubicRow({0, 0, 100, 100});
    const std::vector<float> expected{0, -25, 0, 50, 100, 125, 100};
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(made[i], expected[i], 1e-4f) << i;
    EXPECT_EQ(made[0], 0.0f);
    EXPECT_EQ(made[6], 100.0f);
    const Bytes bytes = resized(fourTimes(Bytes{0, 0, 240, 240}), 4, {7, 4, 1, 1}, ZET_INTER_CUBIC, Bytes(28), 7);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 7), (Bytes{0, 0, 0, 120, 240, 255, 240}));
}

TEST(ZoomExample, SuperAverages) {
    const Bytes rows = fourTimes(Bytes{10, 20, 30, 60});
    EXPECT_EQ(resized(rows, 4, {1, 2, 1, 2}, ZET_INTER_SUPER, Bytes(4), 2), (Bytes{15, 45, 15, 45}));
}

// ---- masks, alpha, bits

TEST(ZoomExample, BothMasksLetAPixelThrough) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 3, {1, 2, 3});
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, 6, Bytes(6, 9));
    Plane few(3, 1, 0, 0, 4), many(6, 1, 0, 0, 4);
    few.bytes[0] = 0b10100000;
    many.bytes[0] = 0b01101000;
    src.image.maskImage = &few.image;
    zetZoom(&src.image, &dst.image, 2, 1, 1, 1, ZET_INTER_NN);
    EXPECT_EQ(dst.samples, (Bytes{1, 1, 9, 9, 3, 3}));
    dst.samples.assign(6, 9);
    dst.image.maskImage = &many.image;
    zetZoom(&src.image, &dst.image, 2, 1, 1, 1, ZET_INTER_NN);
    EXPECT_EQ(dst.samples, (Bytes{9, 1, 9, 9, 3, 9}));
    EXPECT_EQ(few.bytes[0], 0b10100000);
    EXPECT_EQ(many.bytes[0], 0b01101000);
}

// The last column of the source is the last one that its mask has; it stays as it is, even with none before.
TEST(ZoomExample, MasksCutTheSource) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 4, {0, 100, 200, 240, 1, 101, 201, 241});
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, 8, Bytes(16, 7));
    Plane two(2, 2, 0, 0, 4), one(1, 2, 0, 0, 4);
    two.bytes = one.bytes = {0xC0, 0xC0};
    src.image.maskImage = &two.image;
    zetZoom(&src.image, &dst.image, 2, 1, 1, 1, ZET_INTER_LINEAR);
    EXPECT_EQ(dst.samples, (Bytes{0, 42, 85, 100, 7, 7, 7, 7, 1, 43, 86, 101, 7, 7, 7, 7}));
    src.image.maskImage = &one.image;
    zetZoom(&src.image, &dst.image, 1, 1, 1, 1, ZET_INTER_LINEAR);
    EXPECT_EQ(dst.samples, (Bytes{0, 42, 85, 100, 7, 7, 7, 7, 1, 43, 86, 101, 7, 7, 7, 7}));
}

TEST(ZoomExample, AlphaStaysUnlessItIsChosen) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 4, {1, 2, 3, 4});
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, 8, Bytes(8, 9));
    for (ZetImage* image : {&src.image, &dst.image}) {
        image->nChannels = image->alphaChannel = 2;
        image->width /= 2;
    }
    zetZoom(&src.image, &dst.image, 2, 1, 1, 1, ZET_INTER_NN);
    EXPECT_EQ(dst.samples, (Bytes{1, 9, 1, 9, 3, 9, 3, 9}));
    ZetROI alpha{2, 0, 0, 2, 1}, colour{1, 1, 0, 3, 1};
    src.image.roi = &alpha;
    dst.image.roi = &colour;
    zetZoom(&src.image, &dst.image, 2, 1, 1, 1, ZET_INTER_NN);
    EXPECT_EQ(dst.samples, (Bytes{1, 9, 2, 9, 2, 9, 4, 9}));
}

TEST(ZoomExample, BitsAreNeverInterpolated) {
    Plane src(4, 2, 0, 0, 4), dst(8, 2, 0, 0, 4);
    src.bytes = {0b01100000, 0b10110000};
    zetZoom(&src.image, &dst.image, 2, 1, 1, 1, ZET_INTER_CUBIC);
    EXPECT_EQ(dst.bytes, (Bytes{0b00111100, 0b11001111}));
    ZetROI from{0, 1, 0, 3, 2}, to{0, 2, 1, 3, 1};
    src.image.roi = &from;
    dst.image.roi = &to;
    zetResize(&src.image, &dst.image, 1, 1, 1, 2, ZET_INTER_LINEAR);
    EXPECT_EQ(dst.bytes, (Bytes{0b00111100, 0b11110111}));
}

}  // namespace
}  // namespace zetpxl::test
