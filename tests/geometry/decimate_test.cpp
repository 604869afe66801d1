// Shrinking against the model, and worked out by hand.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/geometry/draw_scale.h"
#include "tests/support/allocations.h"
#include "tests/support/grid.h"
#include "tests/support/model_decimate.h"
#include "tests/support/refusals.h"

namespace zetpxl::test {
namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

struct Factor {
    std::int32_t dst, src;
};

Factor drawFactor(Random& random) {
    switch (random.below(12)) {
        case 0:
            return random.pick<Factor>({{kLargest, kLargest}, {kLargest - 1, kLargest}, {1000000007, 2000000000}});
        case 1:
            return {random.between(30, 60), 60};
        case 2: {
            const std::int32_t dst = random.between(1, 9);
            return {dst, dst + random.below(3 * dst)};
        }
        default:
            return random.pick<Factor>({{1, 1},
                                        {1, 2},
                                        {2, 3},
                                        {3, 7},
                                        {5, 8},
                                        {1, 9},
                                        {37, 100},
                                        {3, 4},
                                        {99, 100},
                                        {1, 3},
                                        {1, 8},
                                        {6, 9},
                                        {2, 17},
                                        {4, 5}});
    }
}

std::int32_t drawOddNumber(Random& random) {
    return random.pick({0, -1, -7, kLargest, std::numeric_limits<std::int32_t>::min(), 1});
}

Call callOf(ZetImage* src, ZetImage* dst, Factor x, Factor y, std::int32_t mode) {
    const std::string numbers = std::to_string(x.dst) + "/" + std::to_string(x.src) + " " + std::to_string(y.dst) +
                                "/" + std::to_string(y.src) + " mode " + std::to_string(mode);
    return {numbers, [=] { return zetDecimate(src, dst, x.dst, x.src, y.dst, y.src, mode), ""; },
            [=](Model& model) { return modelDecimate(model, src, dst, x.dst, x.src, y.dst, y.src, mode), ""; }};
}

Call drawDecimate(Scene& scene, Random& random) {
    const Filtered images = drawScaled(scene, random);
    ZetImage* src = random.oneIn(100) ? nullptr : &images.src->record;
    ZetImage* dst = random.oneIn(100) ? nullptr : &images.dst->record;
    Factor x = drawFactor(random);
    Factor y = random.oneIn(4) ? x : drawFactor(random);
    if (random.oneIn(25)) random.pick({&x, &y})->src = drawOddNumber(random);
    if (random.oneIn(25)) random.pick({&x, &y})->dst = drawOddNumber(random);
    return callOf(src, dst, x, y, random.oneIn(40) ? random.pick({-1, 4, 16, 18}) : random.below(4));
}

// Edges of cells drift over long rows until one cell is given more than its size; 65535 is then exceeded. Of bits with a
// factor of 5/8 every fifth cell is half of one bit and half of the next.
Call drawLongMeans(Scene& scene, Random& random) {
    ImageShape shape{.depth = random.pick({ZET_DEPTH_1U, ZET_DEPTH_16U, ZET_DEPTH_32F}),
                     .width = random.between(300, 900)};
    shape.height = random.between(4, 7);
    if (random.oneIn(4)) std::swap(shape.width, shape.height);
    TestImage& src = scene.add("src", shape, random);
    if (random.oneIn(2)) tileSmall(shape, random);
    shape.roi = ZetROI{0, random.below(8), 0, shape.width, shape.height};
    TestImage& dst = scene.add("dst", shape, random);
    if (shape.depth == ZET_DEPTH_16U) whiten(src);
    const auto draw = [&] { return random.pick<Factor>({{6, 7}, {11, 13}, {3, 7}, {99, 100}, {5, 8}, {1, 1}}); };
    const Factor x = draw(), y = draw();
    return callOf(&src.record, &dst.record, x, y, ZET_INTER_SUPER);
}

// Rows of more cells than are made side by side, of all layouts, by factors of few and of many samples; with an offset in a
// region or a tile shares of cells are numbers of many digits.
Call drawWideMeans(Scene& scene, Random& random) {
    ImageShape shape{.depth = random.pick({ZET_DEPTH_8U, ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32F}),
                     .nChannels = random.between(1, 4),
                     .dataOrder = random.oneIn(4),
                     .width = random.oneIn(3) ? random.between(900, 2300) : random.between(20, 300)};
    shape.height = random.between(3, 10);
    if (random.oneIn(4)) shape.roi = ZetROI{0, random.below(12), random.below(2), shape.width, shape.height};
    if (random.oneIn(4)) tileSmall(shape, random);
    if (shape.tileWidth) shape.tileWidth *= random.between(1, 10);
    const std::int32_t coi = random.oneIn(4) ? random.between(1, shape.nChannels) : 0;
    if (coi) shape.roi = ZetROI{coi, random.below(12), 0, shape.width, shape.height};
    TestImage& src = scene.add("src", shape, random);
    if (random.oneIn(2)) shape.tileWidth = shape.tileHeight = 0;
    shape.roi = ZetROI{coi, random.oneIn(2) ? random.below(9) : 0, 0, shape.width, shape.height};
    TestImage& dst = scene.add("dst", shape, random);
    if (random.oneIn(4)) shape.depth == ZET_DEPTH_32F ? fillNegativeZeros(src) : whiten(src);
    const auto draw = [&] {
        return random.pick<Factor>({{1, 2},
                                    {1, 2},
                                    {1, 3},
                                    {1, 3},
                                    {1, 4},
                                    {1, 5},
                                    {2, 3},
                                    {37, 100},
                                    {3, 4},
                                    {2, 5},
                                    {2, 9},
                                    {10, 31},
                                    {5, 23},
                                    {99, 100},
                                    {1, 1}});
    };
    const Factor x = draw(), y = random.oneIn(2) ? x : draw();
    return callOf(&src.record, &dst.record, x, y, ZET_INTER_SUPER);
}

TEST(Decimate, WideMeansAgreeWithTheModel) {
    compareWithModel(&drawWideMeans, {.compare = {.nanEqual = true}, .share = 10});
}
TEST(Decimate, LongMeansAgreeWithTheModel) { compareWithModel(&drawLongMeans, {.compare = {}, .share = 20}); }
TEST(Decimate, AgreesWithTheModel) { compareWithModel(&drawDecimate, {.compare = {.nanEqual = true}}); }
TEST(Decimate, FailsCleanlyAtEveryStep) { failEveryStep(&drawDecimate); }

// ---- refusals

struct Pair {
    Scene scene;
    ZetImage *src, *dst;

    explicit Pair(const ImageShape& shape = {.nChannels = 3, .width = 9, .height = 6}) {
        Random random(9);
        src = &scene.add("src", shape, random).record;
        dst = &scene.add("dst", shape, random).record;
    }
};

std::vector<std::string> linesOf(std::initializer_list<std::pair<std::int32_t, const char*>> refusals) {
    std::vector<std::string> lines;
    for (const auto& [status, words] : refusals) lines.push_back(reportLine(status, "Decimate", words, "zetdecim"));
    return lines;
}

constexpr const char* kInterpolate =
    "interpolate != ZET_INTER_NN, ZET_INTER_LINEAR, ZET_INTER_CUBIC or ZET_INTER_SUPER";

// Every check after those of the records speaks, whatever others have said.
TEST(Decimate, RefusesSeveralThingsAtOnce) {
    Pair pair;
    pair.src->depth = ZET_DEPTH_16S;
    pair.src->origin = pair.src->dataOrder = 1;
    pair.dst->nChannels = 2;
    const Recorder recorder(pair.scene.log);
    zetDecimate(pair.src, pair.dst, 0, -1, -1, 0, 4);
    EXPECT_EQ(pair.scene.log.lines, linesOf({{-17, "srcImage->depth != dstImage->depth"},
                                             {-17, "depth != 1U, 8U, 16U or 32F"},
                                             {-20, "srcImage->origin != dstImage->origin"},
                                             {-19, "srcImage->dataOrder != dstImage->dataOrder"},
                                             {-15, "srcImage->nChannels != dstImage->nChannels"},
                                             {-5, kInterpolate},
                                             {-5, "xDst <= 0"},
                                             {-5, "xSrc <= 0"},
                                             {-5, "yDst <= 0"},
                                             {-5, "ySrc <= 0"},
                                             {-5, "xDst > xSrc"}}));
}

TEST(Decimate, RefusesOneThingAfterAnother) {
    Pair pair;
    ZetROI roi{2, 0, 0, 9, 6};
    ZetImage* dst = pair.src;
    pair.src->align = 5;
    std::int32_t yDst = 3;
    const auto call = [&] {
        zetDecimate(pair.src, dst, 1, 2, yDst, 2, ZET_INTER_LINEAR);
        return zetGetErrStatus();
    };
    const auto take = [&] {
        dst = pair.dst;
        pair.src->roi = &roi;
        yDst = 2;
    };
    const auto other = [&] { std::swap(pair.src->roi, pair.dst->roi); };
    expectRefusals(pair.scene.log, {"Decimate", "zetdecim", call},
                   {{-21, "Incorrect Image", [&] { pair.src->align = 4, pair.dst->height = 0, dst = pair.dst; }},
                    {-10, "Incorrect Image", [&] { pair.dst->height = 6, dst = pair.src, yDst = 2; }},
                    {-5, "srcImage == dstImage", [&] { dst = pair.dst, yDst = 3; }},
                    {-5, "yDst > ySrc", take},
                    {-24, "srcImage->roi->coi > 0 && dstImage->roi->coi == 0", other},
                    {-24, "dstImage->roi->coi > 0 && srcImage->roi->coi == 0", [&] { pair.src->roi = &roi; }}});
}

// A block that gets no memory stays as it was, and the next one is made.
TEST(Decimate, GoesOnWithoutMemory) {
    Scene scene;
    Random random(9);
    ImageShape shape{.width = 16, .height = 8};
    ZetImage* src = &scene.add("src", shape, random).record;
    shape.tileWidth = shape.tileHeight = 8;
    TestImage& dst = scene.add("dst", shape, random);
    scene.allow(GuardedBuffer::Access::kData);
    const std::uint8_t before = *dst.tileAt(0, 0)->data();
    *static_cast<std::uint8_t*>(src->imageData) = static_cast<std::uint8_t>(~before);
    const Recorder recorder(scene.log);
    {
        const AllocationWatch watch(1);
        zetDecimate(src, &dst.record, 1, 1, 1, 1, ZET_INTER_SUPER);
    }
    EXPECT_EQ(scene.log.lines,
              (std::vector<std::string>{
                  "write dst 0 0",
                  reportLine(ZET_StatusNoMemory, "zetDecimate",
                             "Can't create temporary buffer for interpolate = ZET_INTER_SUPER", "owndecim"),
                  "release dst 0 0", "write dst 1 0", "release dst 1 0"}));
    scene.allow(GuardedBuffer::Access::kData);
    EXPECT_EQ(*dst.tileAt(0, 0)->data(), before);
}

// ---- by hand

using Bytes = std::vector<std::uint8_t>;

Bytes shrunk(const Bytes& samples, std::int32_t width, Factor x, Factor y, std::int32_t mode, const Bytes& background,
             std::int32_t dstWidth) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, width, samples);
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, dstWidth, background);
    zetDecimate(&src.image, &dst.image, x.dst, x.src, y.dst, y.src, mode);
    return dst.samples;
}

const Bytes kRow{10, 20, 41, 80, 150, 101, 60, 31};

Bytes rows(std::initializer_list<Bytes> all) {
    Bytes samples;
    for (const Bytes& row : all) samples.insert(samples.end(), row.begin(), row.end());
    return samples;
}

const Bytes kRows = rows({kRow, kRow, kRow, kRow});
const Bytes kSevens(24, 7);

TEST(DecimateExample, PositionsOfEachMode) {
    const auto firstRow = [](std::int32_t mode, Factor x) {
        const Bytes all = shrunk(kRows, 8, x, {1, 1}, mode, kSevens, 6);
        return Bytes(all.begin(), all.begin() + 6);
    };
    EXPECT_EQ(firstRow(ZET_INTER_NN, {2, 3}), (Bytes{10, 41, 80, 101, 60, 7}));
    EXPECT_EQ(firstRow(ZET_INTER_LINEAR, {2, 3}), (Bytes{10, 30, 80, 125, 60, 7}));
    EXPECT_EQ(firstRow(ZET_INTER_CUBIC, {2, 4}), (Bytes{10, 41, 150, 60, 7, 7}));
    EXPECT_EQ(firstRow(ZET_INTER_LINEAR, {1, 2}), (Bytes{10, 41, 150, 60, 7, 7}));
    // 15, 60.5, 125.5, 45.5
    EXPECT_EQ(firstRow(ZET_INTER_SUPER, {1, 2}), (Bytes{15, 61, 126, 46, 7, 7}));
    EXPECT_EQ(firstRow(ZET_INTER_SUPER, {2, 3}), (Bytes{13, 34, 103, 117, 50, 7}));
}

// Between two samples of 255 the curve would reach 286, beside one of them -15.
TEST(DecimateExample, CubicsStayWithinTheDepth) {
    const Bytes row{0, 255, 255, 0, 0, 0, 255, 255};
    const Bytes made = shrunk(rows({row, row, row, row}), 8, {2, 3}, {1, 1}, ZET_INTER_CUBIC, Bytes(20), 5);
    EXPECT_EQ((Bytes(made.begin(), made.begin() + 5)), (Bytes{0, 255, 0, 0, 255}));
}

// Twice a row with one box for each sum that samples of `columns` by `rows` can have.
Bytes boxesOfAllSums(std::int32_t columns, std::int32_t rows, std::int32_t width) {
    Bytes samples(static_cast<std::size_t>(2 * width) * static_cast<std::size_t>(rows));
    const std::int32_t area = columns * rows;
    for (std::int32_t sum = 0; sum <= 255 * area; ++sum)
        for (std::int32_t i = 0; i < 2 * area; ++i)
            samples[static_cast<std::size_t>(i / columns * width + sum * columns + i % columns)] =
                static_cast<std::uint8_t>(sum / area + (i % area < sum % area));
    return samples;
}

TEST(DecimateExample, MeansOfEverySum) {
    constexpr std::int32_t kBoxes[][2] = {{2, 2}, {2, 3}, {3, 3}, {3, 5}, {5, 5}, {7, 9}, {9, 5}, {13, 15}, {17, 15}};
    for (const auto& [columns, rows] : kBoxes) {
        const std::int32_t sums = 255 * columns * rows + 1;
        const std::int32_t width = (sums * columns + 3) / 4 * 4;
        const std::int32_t dstWidth = (sums + 3) / 4 * 4;
        const Bytes means = shrunk(boxesOfAllSums(columns, rows, width), width, {1, columns}, {1, rows},
                                   ZET_INTER_SUPER, Bytes(2 * static_cast<std::size_t>(dstWidth)), dstWidth);
        std::int32_t wrong = 0;
        for (std::int32_t sum = 0; sum < sums; ++sum) {
            const auto mean = static_cast<std::uint8_t>(sum * (1.0 / (columns * rows)) + 0.5);
            wrong += means[static_cast<std::size_t>(sum)] != mean;
            wrong += means[static_cast<std::size_t>(dstWidth + sum)] != mean;
        }
        EXPECT_EQ(wrong, 0) << columns << " by " << rows;
    }
}

TEST(DecimateExample, EqualNumbersCopy) {
    for (const std::int32_t mode : {ZET_INTER_NN, ZET_INTER_LINEAR, ZET_INTER_CUBIC, ZET_INTER_SUPER})
        EXPECT_EQ(shrunk(kRows, 8, {5, 5}, {kLargest, kLargest}, mode, Bytes(32), 8), kRows) << mode;
}

TEST(DecimateExample, SmallSourcesAndSmallResults) {
    const Bytes three{10, 20, 30, 10, 20, 30, 10, 20, 30, 10, 20, 30};
    EXPECT_EQ(shrunk(three, 3, {2, 3}, {1, 2}, ZET_INTER_SUPER, Bytes(4), 2), (Bytes{10, 30, 10, 30}));
    EXPECT_EQ(shrunk(kRows, 8, {1, 9}, {1, 1}, ZET_INTER_SUPER, kSevens, 6), kSevens);
    // Only the corner that the destination has room for, from the same positions.
    EXPECT_EQ(shrunk(kRows, 8, {1, 2}, {1, 2}, ZET_INTER_SUPER, Bytes(3), 3), (Bytes{15, 61, 126}));
}

// The last position is two thirds behind the region's third column; the curve takes the column behind the region too.
TEST(DecimateExample, ReadsBehindTheRegion) {
    Grid<std::uint8_t> src(ZET_DEPTH_8U, 8, kRows);
    Grid<std::uint8_t> dst(ZET_DEPTH_8U, 6, kSevens);
    ZetROI roi{0, 1, 0, 4, 1};
    src.image.roi = &roi;
    zetDecimate(&src.image, &dst.image, 3, 4, 1, 1, ZET_INTER_CUBIC);
    EXPECT_EQ((Bytes(dst.samples.begin(), dst.samples.begin() + 7)), (Bytes{20, 51, 132, 7, 7, 7, 7}));
}

TEST(DecimateExample, BitsBesideTheRegionStay) {
    Grid<std::uint8_t> src(ZET_DEPTH_1U, 4, Bytes(32, 0xFF));
    Grid<std::uint8_t> dst(ZET_DEPTH_1U, 4, Bytes(16, 0x00));
    for (ZetImage* image : {&src.image, &dst.image}) image->width = 32;
    ZetROI roi{0, 3, 1, 15, 2};
    dst.image.roi = &roi;
    zetDecimate(&src.image, &dst.image, 1, 2, 1, 2, ZET_INTER_SUPER);
    const Bytes row{0x1F, 0xFF, 0xC0, 0x00};
    EXPECT_EQ(dst.samples, rows({Bytes(4), row, row, Bytes(4)}));
}

// Two of the four bits are half of a cell, one is not.
TEST(DecimateExample, BitsOfAtLeastHalf) {
    Grid<std::uint8_t> src(ZET_DEPTH_1U, 4, {0xA4, 0, 0, 0, 0xA0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0, 0, 0});
    Grid<std::uint8_t> dst(ZET_DEPTH_1U, 4, Bytes(8, 0xFF));
    for (ZetImage* image : {&src.image, &dst.image}) image->width = 8;
    zetDecimate(&src.image, &dst.image, 1, 2, 1, 2, ZET_INTER_SUPER);
    EXPECT_EQ(dst.samples, (Bytes{0xCF, 0xFF, 0xFF, 0xFF, 0xCF, 0xFF, 0xFF, 0xFF}));
}

TEST(DecimateExample, OldFailuresStopIt) {
    Pair pair;
    const auto* sample = static_cast<std::uint8_t*>(pair.dst->imageData);
    const std::uint8_t before = *sample;
    *static_cast<std::uint8_t*>(pair.src->imageData) = static_cast<std::uint8_t>(~before);
    {
        const Recorder recorder(pair.scene.log, -3);
        zetDecimate(pair.src, pair.dst, 1, 1, 1, 1, ZET_INTER_NN);
    }
    EXPECT_TRUE(pair.scene.log.lines.empty());
    EXPECT_EQ(*sample, before);
}

}  // namespace
}  // namespace zetpxl::test
