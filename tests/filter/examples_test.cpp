// Filters worked out by hand, what they refuse, and how little memory they take.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/support/grid.h"
#include "tests/support/random.h"
#include "tests/support/scratch.h"

namespace zetpxl::test {
namespace {

struct Kernel {
    ZetConvKernel* record;
    Kernel(std::int32_t nCols, std::int32_t nRows, std::int32_t x, std::int32_t y, std::vector<std::int32_t> values,
           std::int32_t shift = 0)
        : record(zetCreateConvKernel(nCols, nRows, x, y, values.data(), shift)) {}
    ~Kernel() { zetDeleteConvKernel(record); }
    Kernel(const Kernel&) = delete;
    Kernel& operator=(const Kernel&) = delete;
};

template <class T>
std::vector<T> convolved(std::uint32_t depth, std::vector<T> samples, const std::vector<const Kernel*>& kernels,
                         std::int32_t method, std::int32_t width = 0) {
    EventLog log;
    const Recorder recorder(log);
    std::vector<const ZetConvKernel*> records;
    for (const Kernel* kernel : kernels) records.push_back(kernel->record);
    Grid<T> src(depth, width ? width : static_cast<std::int32_t>(samples.size()), samples, ZET_BORDER_REPLICATE);
    Grid<T> dst(depth, src.image.width, std::vector<T>(samples.size()));
    zetConvolve2D(&src.image, &dst.image, records.data(), static_cast<std::int32_t>(records.size()), method);
    EXPECT_TRUE(log.lines.empty()) << log.text();
    return dst.samples;
}

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::int32_t>;

TEST(ConvolveExample, WeightsAreAppliedMirrored) {
    const Kernel row(3, 1, 1, 0, {1, 10, 100});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {0, 1, 2, 0}, {&row}, 0), (Words{1, 12, 120, 200}));
    const Kernel column(1, 3, 0, 0, {1, 10, 100});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {1, 2, 3, 4}, {&column}, 0, 1), (Words{111, 112, 123, 234}));
}

TEST(ConvolveExample, ShiftRoundsDown) {
    const Kernel box(3, 3, 1, 1, std::vector<std::int32_t>(9, 1), 3);
    EXPECT_EQ(convolved<std::uint8_t>(ZET_DEPTH_8U, Bytes(9, 100), {&box}, 0, 3), Bytes(9, 112));
    const Kernel half(1, 1, 0, 0, {1}, 1);
    EXPECT_EQ(convolved<std::int8_t>(ZET_DEPTH_8S, {-3, 3}, {&half}, 0), (std::vector<std::int8_t>{-2, 1}));
}

// More weights than are summed at a time, over rows longer than a tile of sums.
TEST(ConvolveExample, LargeKernelsSumAllTheirWeights) {
    constexpr std::int32_t side = 13;
    constexpr std::int32_t width = 70;
    Random random(13);
    std::vector<std::int32_t> weights(side * side);
    for (std::int32_t& weight : weights) weight = random.between(-3, 3);
    Bytes samples(width * 5);
    for (std::uint8_t& sample : samples) sample = static_cast<std::uint8_t>(random.below(256));
    const auto at = [&](std::int32_t y, std::int32_t x) {
        return samples[static_cast<std::size_t>(std::clamp(y, 0, 4) * width + std::clamp(x, 0, width - 1))];
    };
    Bytes expected;
    for (std::int32_t i = 0; i < width * 5; ++i) {
        std::int32_t sum = 0;
        for (std::int32_t k = 0; k < side * side; ++k)
            sum += weights[static_cast<std::size_t>(k)] * at(i / width + 6 - k / side, i % width + 6 - k % side);
        expected.push_back(static_cast<std::uint8_t>(std::clamp(sum >> 4, 0, 255)));
    }
    const Kernel kernel(side, side, 6, 6, weights, 4);
    EXPECT_EQ(convolved<std::uint8_t>(ZET_DEPTH_8U, samples, {&kernel}, 0, width), expected);
}

TEST(ConvolveExample, OneKernelByMethod) {
    const Kernel minus(1, 1, 0, 0, {-1});
    const Kernel shifted(1, 1, 0, 0, {-2}, 1);
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {5}, {&minus}, 1), Words{25});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {5}, {&minus}, 2), Words{5});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {5}, {&minus}, 7), Words{-5});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {5}, {&shifted}, 1), Words{-5});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {5}, {&shifted}, 2), Words{-5});
}

TEST(ConvolveExample, TwoKernelsByMethod) {
    const Kernel three(1, 1, 0, 0, {3});
    const Kernel minusFour(1, 1, 0, 0, {-4});
    const std::vector<std::int32_t> expected{-1, 25, 5, 3, -4};
    for (std::int32_t method = 0; method < 5; ++method)
        EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {1}, {&three, &minusFour}, method)[0],
                  expected[static_cast<std::size_t>(method)]);
}

TEST(ConvolveExample, SinglePrecisionShows) {
    const Kernel identity(1, 1, 0, 0, {1});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {16777217, 16777215, INT32_MAX, INT32_MIN}, {&identity}, 0),
              (Words{16777216, 16777215, INT32_MAX, INT32_MIN}));
    const Kernel tooLarge(1, 1, 0, 0, {16777217});
    EXPECT_EQ(convolved<std::int32_t>(ZET_DEPTH_32S, {1}, {&tooLarge}, 0), Words{16777216});
}

// 3 * 127 * 65533 lies halfway between two single-precision numbers; taken away again, it leaves 1 too few.
TEST(ConvolveExample, SumsBeyondSinglePrecisionRoundOnTheWay) {
    using Samples = std::vector<std::uint16_t>;
    const Kernel beyond(7, 1, 3, 0, {1, -127, -127, -127, 127, 127, 127});
    EXPECT_EQ(convolved<std::uint16_t>(ZET_DEPTH_16U, Samples(90, 65533), {&beyond}, 0), Samples(90, 65532));
    // 382 * 65533 after two pairs of rows is exact; 381 * 65533 between them would not be.
    const Kernel pairs(1, 8, 0, 4, {-1, -126, -127, -127, 1, 127, 127, 127});
    EXPECT_EQ(convolved<std::uint16_t>(ZET_DEPTH_16U, Samples(90, 65533), {&pairs}, 0, 1), Samples(90, 65533));
}

template <class T>
T blurredConstant(std::uint32_t depth, T value, std::int32_t side) {
    Grid<T> image(depth, 10, std::vector<T>(100, value), ZET_BORDER_REPLICATE);
    zetBlur(&image.image, &image.image, side, side, 0, side - 1);
    EXPECT_EQ(image.samples, std::vector<T>(100, image.samples[0]));
    return image.samples[0];
}

// The rounded reciprocal lies above 1/9 and below 1/25 and 1/49.
TEST(BlurExample, ConstantsMayComeOutOneLower) {
    EXPECT_EQ(blurredConstant<std::uint8_t>(ZET_DEPTH_8U, 255, 3), 255);
    EXPECT_EQ(blurredConstant<std::uint8_t>(ZET_DEPTH_8U, 255, 5), 254);
    EXPECT_EQ(blurredConstant<std::uint8_t>(ZET_DEPTH_8U, 100, 5), 99);
    EXPECT_EQ(blurredConstant<std::uint16_t>(ZET_DEPTH_16U, 65535, 7), 65534);
    EXPECT_EQ(blurredConstant<std::int8_t>(ZET_DEPTH_8S, -128, 2), -128);
}

TEST(BlurExample, TruncatesTowardZeroFromItsAnchor) {
    Grid<std::int8_t> image(ZET_DEPTH_8S, 4, {-3, -4, 7, 8}, ZET_BORDER_REPLICATE);
    zetBlur(&image.image, &image.image, 2, 1, 0, 0);
    EXPECT_EQ(image.samples, (std::vector<std::int8_t>{-3, 1, 7, 8}));
}

// Means of replicated borders by the rule itself: the exact sum times the rounded reciprocal, cut.
template <class T>
std::vector<T> exactMeans(const std::vector<T>& samples, std::int32_t width, std::int32_t nCols, std::int32_t nRows) {
    const auto height = static_cast<std::int32_t>(samples.size()) / width;
    const auto inverse = static_cast<float>(1.0 / (double{1} * nCols * nRows));
    std::vector<T> means;
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x) {
            std::int64_t sum = 0;
            for (std::int32_t r = y; r < y + nRows; ++r)
                for (std::int32_t c = x; c < x + nCols; ++c)
                    sum += samples[static_cast<std::size_t>(std::min(r, height - 1) * width + std::min(c, width - 1))];
            means.push_back(static_cast<T>(static_cast<std::int64_t>(static_cast<long double>(sum) * inverse)));
        }
    return means;
}

// Windows on both sides of the size from which sums need more than a double's exact products.
template <class T>
void expectExactMeans(std::uint32_t depth, std::int32_t width, std::int32_t nCols, std::int32_t nRows) {
    Random random(static_cast<std::uint64_t>(nCols) * 1000 + depth);
    std::vector<T> samples;
    for (std::int32_t i = 0; i < width * 3; ++i)
        samples.push_back(
            static_cast<T>(random.oneIn(3) ? std::numeric_limits<T>::max() - random.below(9) : random.word()));
    const std::vector<T> expected = exactMeans(samples, width, nCols, nRows);
    Grid<T> image(depth, width, samples, ZET_BORDER_REPLICATE);
    zetBlur(&image.image, &image.image, nCols, nRows, 0, 0);
    EXPECT_EQ(image.samples, expected) << depth << " by " << nCols << "x" << nRows;
}

TEST(BlurExample, LargeWindowsAreExactOnBothSidesOfTheBound) {
    for (const std::int32_t nRows : {63, 64, 65, 130}) {
        expectExactMeans<std::uint16_t>(ZET_DEPTH_16U, 40, 128, nRows);
        expectExactMeans<std::int16_t>(ZET_DEPTH_16S, 40, 128, nRows);
    }
    for (const std::int32_t nRows : {1023, 1024, 1025}) {
        expectExactMeans<std::uint8_t>(ZET_DEPTH_8U, 3, 2048, nRows);
        expectExactMeans<std::int8_t>(ZET_DEPTH_8S, 3, 2048, nRows);
    }
}

// Wide enough for means by 32-bit products, in windows whose means these do and do not give.
TEST(BlurExample, MeansOfBytesAreExactByEitherProduct) {
    for (const std::int32_t nRows : {1, 2, 3, 5, 7, 13, 14, 15, 16, 19})
        for (const std::int32_t nCols : {nRows, 15}) expectExactMeans<std::uint8_t>(ZET_DEPTH_8U, 6000, nCols, nRows);
}

TEST(BlurExample, MoreThanCanBeCounted) {
    EventLog log;
    const Recorder recorder(log);
    Grid<std::uint8_t> image(ZET_DEPTH_8U, 4, {1, 2, 3, 4});
    zetBlur(&image.image, &image.image, 65536, 65536, 0, 0);
    EXPECT_EQ(log.lines, std::vector{reportLine(ZET_StatusNoMemory, "zetBlur", "Allocation failure", "zetBlur")});
    EXPECT_EQ(image.samples, (Bytes{1, 2, 3, 4}));
}

// ---- memory

void convolveWide(ZetImage* src, ZetImage* dst) {
    const Kernel kernel(5, 7, 2, 3, std::vector<std::int32_t>(35, 2), 5);
    const ZetConvKernel* record = kernel.record;
    zetConvolve2D(src, dst, &record, 1, 0);
}

void blurWide(ZetImage* src, ZetImage* dst) { zetBlur(src, dst, 5, 7, 2, 3); }

void expectBoundedByRows(bool inPlace, void (*call)(ZetImage*, ZetImage*)) {
    for (const std::uint32_t depth : {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_32S}) {
        const std::size_t low = peakScratch({.depth = depth, .width = 64, .height = 2000}, inPlace, call);
        EXPECT_GT(low, 0U);
        EXPECT_EQ(peakScratch({.depth = depth, .width = 64, .height = 20000}, inPlace, call), low) << depth;
    }
}

TEST(FilterMemory, ConvolutionIsBoundedByRows) { expectBoundedByRows(false, &convolveWide); }
TEST(FilterMemory, InPlaceConvolutionIsBoundedByRows) { expectBoundedByRows(true, &convolveWide); }
TEST(FilterMemory, BlurIsBoundedByRows) { expectBoundedByRows(false, &blurWide); }
TEST(FilterMemory, InPlaceBlurIsBoundedByRows) { expectBoundedByRows(true, &blurWide); }

}  // namespace
}  // namespace zetpxl::test
