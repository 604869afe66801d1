// Warps, turns and remaps worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/grid.h"

namespace zetpxl::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes warped(const Bytes& samples, std::int32_t width, const std::vector<double>& coeffs, std::int32_t mode,
             const Bytes& background, std::int32_t dstWidth) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, width, samples);
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, dstWidth, background);
    zetWarpAffine(&src.image, &dst.image, coeffs.data(), mode);
    return dst.samples;
}

const Bytes kRows{10, 20, 40, 80, 11, 21, 41, 81};
const Bytes kSevens(8, 7);

TEST(WarpExample, ShiftsAndMirrors) {
    EXPECT_EQ(warped(kRows, 4, {1, 0, 0, 0, 1, 0}, ZET_INTER_CUBIC, kSevens, 4), kRows);
    const Bytes between{7, 15, 30, 60, 7, 16, 31, 61};
    EXPECT_EQ(warped(kRows, 4, {1, 0, 0.5, 0, 1, 0}, ZET_INTER_LINEAR, kSevens, 4), between);
    // Upright edges are not blended.
    EXPECT_EQ(warped(kRows, 4, {1, 0, 0.5, 0, 1, 0}, ZET_INTER_LINEAR | ZET_INTER_BLEND_EDGES, kSevens, 4), between);
    EXPECT_EQ(warped(kRows, 4, {-1, 0, 3, 0, 1, 0}, ZET_INTER_NN, kSevens, 4), (Bytes{80, 40, 20, 10, 81, 41, 21, 11}));
    EXPECT_EQ(warped(kRows, 4, {1, 0, 4, 0, 1, 0}, ZET_INTER_LINEAR | ZET_INTER_BLEND_EDGES, kSevens, 4), kSevens);
}

TEST(WarpExample, SlantedEdgesTakeTheirShare) {
    EXPECT_EQ(warped(Bytes(12, 100), 4, {1, 0.5, 0, 0, 1, 0}, ZET_INTER_NN | ZET_INTER_BLEND_EDGES, Bytes(18), 6),
              (Bytes{100, 100, 100, 100, 0, 0, 50, 100, 100, 100, 50, 0, 0, 100, 100, 100, 100, 0}));
}

TEST(WarpExample, OnlyTheSourceRegionShows) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 4, Bytes(16, 9));
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, 4, Bytes(16, 1));
    ZetROI roi{0, 1, 2, 2, 9};
    src.image.roi = &roi;
    const double identity[6] = {1, 0, 0, 0, 1, 0};
    zetWarpAffine(&src.image, &dst.image, identity, ZET_INTER_LINEAR);
    EXPECT_EQ(dst.samples, (Bytes{1, 1, 1, 1, 1, 1, 1, 1, 1, 9, 9, 1, 1, 9, 9, 1}));
}

// ---- turns

TEST(RotateExample, QuartersAreCopies) {
    for (const double angle : {90.0, 450.0, -270.0}) {
        Grid<std::uint8_t> src(ZET_DEPTH_8U, 3, {1, 2, 3, 4, 5, 6});
        Grid<std::uint8_t> dst(ZET_DEPTH_8U, 2, Bytes(6));
        zetRotate(&src.image, &dst.image, angle, 0, 2, 77);
        EXPECT_EQ(dst.samples, (Bytes{3, 6, 2, 5, 1, 4})) << angle;
    }
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 3, {1, 2, 3, 4, 5, 6});
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, 3, Bytes(6));
    zetRotate(&src.image, &dst.image, 180, 2, 1, 0);
    EXPECT_EQ(dst.samples, (Bytes{6, 5, 4, 3, 2, 1}));
    zetRotate(&src.image, &dst.image, -360, 0, 0, 0);
    EXPECT_EQ(dst.samples, src.samples);
}

std::vector<double> shiftOf(double angle, double xShift, double yShift) {
    zetGetRotateShift(10, 20, angle, &xShift, &yShift);
    return {xShift, yShift};
}

TEST(RotateExample, ShiftsAreAdded) {
    EXPECT_EQ(shiftOf(0, 5, 6), (std::vector<double>{5, 6}));
    EXPECT_EQ(shiftOf(720, 5, 6), (std::vector<double>{5, 6}));
    EXPECT_EQ(shiftOf(90, 0, 0), (std::vector<double>{-10, 30}));
    EXPECT_EQ(shiftOf(180, 1, 1), (std::vector<double>{21, 41}));
    EXPECT_EQ(shiftOf(-90, 0, 0), (std::vector<double>{30, 10}));
    EXPECT_NEAR(shiftOf(30, 0, 0)[0], 10 - 10 * std::sqrt(0.75) - 10, 1e-12);
    EXPECT_NEAR(shiftOf(30, 0, 0)[1], 5 + 20 - 20 * std::sqrt(0.75), 1e-12);
}

// ---- maps

Bytes remapped(ZetROI* roi, const std::vector<float>& columns, const std::vector<float>& rows, std::int32_t mode) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 4, {10, 20, 30, 40, 50, 60, 70, 80});
    src.image.roi = roi;
    const auto width = static_cast<std::int32_t>(columns.size());
    Grid<float> xMap(ZET_DEPTH_32F, width, columns);
    Grid<float> yMap(ZET_DEPTH_32F, width, rows);
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, width + 1, Bytes(columns.size() + 1, 1));
    zetRemap(&src.image, &xMap.image, &yMap.image, &dst.image, mode);
    return dst.samples;
}

TEST(RemapExample, PositionsInsideAndOutside) {
    const std::vector<float> columns{3, 3.00001f, -0.001f, NAN, 1.5f, 0, 2};
    const std::vector<float> rows{0, 0, 0, 0, 0.5f, INFINITY, 1};
    EXPECT_EQ(remapped(nullptr, columns, rows, ZET_INTER_LINEAR), (Bytes{40, 1, 1, 1, 45, 1, 70, 1}));
    EXPECT_EQ(remapped(nullptr, columns, rows, ZET_INTER_NN), (Bytes{40, 1, 1, 1, 70, 1, 70, 1}));
}

// The last column of the region has all the weight, also where there is none before it.
TEST(RemapExample, RegionsOfOneColumn) {
    ZetROI roi{0, 0, 0, 1, 2};
    EXPECT_EQ(remapped(&roi, {0, 0, 0.25f}, {0, 0.5f, 0}, ZET_INTER_LINEAR), (Bytes{10, 30, 1, 1}));
    roi.xOffset = 2;
    EXPECT_EQ(remapped(&roi, {2, 2, 1.75f}, {1, 0.5f, 0}, ZET_INTER_LINEAR | 16), (Bytes{70, 50, 1, 1}));
}

}  // namespace
}  // namespace zetpxl::test
