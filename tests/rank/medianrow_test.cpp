// Rows of medians, each method against selection in a copy of every window. Rows end with their blocks, so that a sanitizer
// sees a read past them.
#include "rank/medianrow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/random.h"

namespace zetpxl::test {
namespace {

struct RowCase {
    std::int32_t nCols;
    std::int32_t nRows;
    std::ptrdiff_t width;
    std::int32_t lanes;
    std::int32_t height;
};

template <class T>
using SampleRows = std::vector<std::unique_ptr<T[]>>;

// Many equal samples, or none in order.
template <class T>
SampleRows<T> drawRows(const RowCase& c, Random& random) {
    const std::ptrdiff_t samples = (c.width + c.nCols - 1) * c.lanes;
    const std::int32_t kinds = random.pick({2, 17, 60000});
    SampleRows<T> rows;
    for (std::int32_t r = 0; r < c.nRows + c.height - 1; ++r) {
        rows.emplace_back(new T[static_cast<std::size_t>(samples)]);
        for (std::ptrdiff_t i = 0; i < samples; ++i)
            rows.back()[static_cast<std::size_t>(i)] = static_cast<T>(random.below(kinds) * (kinds < 100 ? 2477 : 1));
    }
    return rows;
}

template <class T>
std::vector<T> filtered(const RowCase& c, const SampleRows<T>& rows, const MedianMethod<T>& method) {
    const auto samples = static_cast<std::size_t>(c.width * c.lanes);
    const auto words = static_cast<std::size_t>(method.scratchBytes) / 32 + 1;
    struct alignas(32) Word {
        std::uint8_t bytes[32];
    };
    std::vector<Word> scratch(words, Word{});
    std::vector<T> out(samples * static_cast<std::size_t>(c.height));
    for (std::int32_t y = 0; y < c.height; ++y) {
        std::vector<const T*> window;
        for (std::int32_t k = 0; k < c.nRows; ++k) window.push_back(rows[static_cast<std::size_t>(y + k)].get());
        T* to = out.data() + static_cast<std::size_t>(y) * samples;
        const T* leaving = y > 0 ? rows[static_cast<std::size_t>(y - 1)].get() : nullptr;
        method.row({window.data(), leaving, c.nRows, c.nCols, c.width, c.lanes, to, scratch.data()});
    }
    return out;
}

template <class T>
void compareRows(RowCase c, Random& random) {
    const MedianMethod<T> method = chooseMedian<T>(c.nCols, c.nRows, c.lanes, c.width);
    c.width = std::min(c.width, method.widest);
    const SampleRows<T> rows = drawRows<T>(c, random);
    EXPECT_EQ(filtered(c, rows, method), filtered(c, rows, plainMedian<T>(c.nCols, c.nRows)))
        << c.nCols << "x" << c.nRows << ", " << c.width << " pixels of " << c.lanes << ", " << sizeof(T) << " bytes";
}

void compareDepths(const RowCase& c, Random& random) {
    compareRows<std::uint8_t>(c, random);
    compareRows<std::int8_t>(c, random);
    compareRows<std::uint16_t>(c, random);
    compareRows<std::int16_t>(c, random);
    compareRows<std::int32_t>(c, random);
}

// Widths around a vector of each sample size and around the pieces of a row.
TEST(MedianRow, SquaresOfEveryMethod) {
    Random random(21);
    for (const std::int32_t side : {1, 3, 4, 5, 6, 7, 8, 9, 10})
        for (const std::int32_t lanes : {1, 3, 4, 5})
            for (const std::ptrdiff_t width : {1, 2, 7, 8, 9, 31, 32, 33, 63, 64, 127, 128, 129, 255, 257, 513, 520})
                if (side < 8 || width < 130) compareDepths({side, side, width, lanes, 1}, random);
}

TEST(MedianRow, Oblongs) {
    Random random(22);
    for (std::int32_t i = 0; i < 150; ++i)
        compareDepths({random.between(1, 12), random.between(1, 12), random.between(1, 90), random.between(1, 4), 3},
                      random);
}

}  // namespace
}  // namespace zetpxl::test
