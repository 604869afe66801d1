// Area averages by whole factors.
//   boxes.1 sums of whole samples below 2^24 are exact in single precision, so integers in any order give the same
//   boxes.2 float samples are summed down each column, then along the row, as everywhere: the sums of a box that is not at the
//           block's left or upper edge begin with +0, which a box of -0 shows
//   boxes.3 an odd area has no mean halfway between two numbers, and none so near to it that the double precision quotient
//           would miss it: division of integers gives the same
#include "geometry/decimboxes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace zetpxl {

namespace {

// Samples of column sums that are held at a time.
constexpr std::ptrdiff_t kBoxPiece = 2048;
constexpr std::ptrdiff_t kBoxSlack = 128;  // that vectors may reach behind the last

template <class T>
struct BoxSums;

template <>
struct BoxSums<std::uint8_t> {
    using Column = std::uint16_t;
    using Box = std::uint16_t;
};
template <>
struct BoxSums<std::uint16_t> {
    using Column = std::uint32_t;
    using Box = std::uint32_t;
};
template <>
struct BoxSums<float> {
    using Column = float;
    using Box = float;
};

struct BoxGrid {
    std::ptrdiff_t columns, rows;  // of a box
    std::ptrdiff_t together;
    double inverse;
};

// What sums begin with: -0 changes nothing that is added to it.
template <class Sum>
Sum emptySum(bool first) {
    if constexpr (std::is_same_v<Sum, float>) return first ? -0.0f : 0.0f;
    return 0;
}

template <std::ptrdiff_t Rows, class T, class Sum>
void beginDown(const T* src, std::ptrdiff_t rowStep, std::ptrdiff_t size, Sum empty, Sum* __restrict sums) {
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        Sum sum = empty;
        for (std::ptrdiff_t r = 0; r < Rows; ++r) sum = static_cast<Sum>(sum + static_cast<Sum>(src[r * rowStep + i]));
        sums[i] = sum;
    }
}

template <class T, class Sum>
void sumDown(const T* src, std::ptrdiff_t rowStep, std::ptrdiff_t rows, std::ptrdiff_t size, Sum empty,
             Sum* __restrict sums) {
    if (rows == 2) return beginDown<2>(src, rowStep, size, empty, sums);
    beginDown<3>(src, rowStep, size, empty, sums);
    for (std::ptrdiff_t r = 3; r < rows; ++r) {
        const T* row = src + r * rowStep;
        for (std::ptrdiff_t i = 0; i < size; ++i) sums[i] = static_cast<Sum>(sums[i] + static_cast<Sum>(row[i]));
    }
}

template <std::ptrdiff_t Columns, class Sum, class Box>
void sumAlong(const Sum* sums, std::ptrdiff_t count, Box* __restrict boxes) {
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        Box box = static_cast<Box>(emptySum<Box>(false) + static_cast<Box>(sums[k * Columns]));
        for (std::ptrdiff_t i = 1; i < Columns; ++i)
            box = static_cast<Box>(box + static_cast<Box>(sums[k * Columns + i]));
        boxes[k] = box;
    }
}

template <class Sum, class Box>
void sumAlongAny(const Sum* sums, const BoxGrid& grid, std::ptrdiff_t count, Box* boxes) {
    for (std::ptrdiff_t k = 0; k < count; ++k)
        for (std::ptrdiff_t c = 0; c < grid.together; ++c) {
            const Sum* at = sums + k * grid.columns * grid.together + c;
            Box box = emptySum<Box>(false);
            for (std::ptrdiff_t i = 0; i < grid.columns; ++i)
                box = static_cast<Box>(box + static_cast<Box>(at[i * grid.together]));
            boxes[k * grid.together + c] = box;
        }
}

// Pixels of three or four 16-bit sums, four to a word: no sum carries into the next.
void sumPixelWords(const std::uint16_t* sums, const BoxGrid& grid, std::ptrdiff_t count, std::uint16_t* boxes) {
    const std::ptrdiff_t together = grid.together;
    const std::ptrdiff_t columns = grid.columns;
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        std::uint64_t box = 0;
        for (std::ptrdiff_t i = 0; i < columns; ++i) {
            std::uint64_t pixel = 0;
            std::memcpy(&pixel, sums + (k * columns + i) * together, sizeof pixel);
            box += pixel;
        }
        std::memcpy(boxes + k * together, &box, sizeof box);
    }
}

#ifdef __AVX2__

#ifdef __AVX512BW__
constexpr std::ptrdiff_t kWordLanes = 32;
#else
constexpr std::ptrdiff_t kWordLanes = 16;
#endif
using Words [[gnu::vector_size(2 * kWordLanes)]] = std::uint16_t;

// The word that begins sample `i` of the boxes, of two vectors, then of those picked and a third.
template <std::ptrdiff_t Columns, std::ptrdiff_t Together>
constexpr int boxWord(std::size_t i) {
    const auto sample = static_cast<std::ptrdiff_t>(i);
    return static_cast<int>(sample / Together * Together * Columns + sample % Together);
}

constexpr int firstPick(int word) { return word < 2 * kWordLanes ? word : 0; }

constexpr int secondPick(int word, std::size_t i) {
    return word < 2 * kWordLanes ? static_cast<int>(i) : word - static_cast<int>(kWordLanes);
}

// Sums along the row from every word on.
template <std::ptrdiff_t Columns, std::ptrdiff_t Together>
void sumWords(const std::uint16_t* sums, Words* made) {
    *made = Words{};
    for (std::ptrdiff_t i = 0; i < Columns; ++i) {
        Words words;
        std::memcpy(&words, sums + Together * i, sizeof words);
        *made += words;
    }
}

// As many boxes as a vector holds: those of the sums that begin a box are picked.
template <std::ptrdiff_t Columns, std::ptrdiff_t Together, std::size_t... I>
void pickBoxes(const std::uint16_t* sums, std::index_sequence<I...>, Words* boxes) {
    Words low, high;
    sumWords<Columns, Together>(sums, &low);
    sumWords<Columns, Together>(sums + kWordLanes, &high);
    *boxes = __builtin_shufflevector(low, high, firstPick(boxWord<Columns, Together>(I))...);
    if constexpr (Columns == 3) {
        sumWords<Columns, Together>(sums + 2 * kWordLanes, &high);
        *boxes = __builtin_shufflevector(*boxes, high, secondPick(boxWord<Columns, Together>(I), I)...);
    }
}

template <std::ptrdiff_t Columns, std::ptrdiff_t Together>
[[gnu::noinline]] void sumWordBoxes(const std::uint16_t* sums, std::ptrdiff_t count, std::uint16_t* __restrict boxes) {
    for (std::ptrdiff_t k = 0; k < count; k += kWordLanes / Together) {
        Words made;
        pickBoxes<Columns, Together>(sums + k * Columns * Together, std::make_index_sequence<kWordLanes>{}, &made);
        std::memcpy(boxes + k * Together, &made, sizeof made);
    }
}

// False when such boxes have no shuffle.
bool shuffleBoxes(const std::uint16_t* sums, const BoxGrid& grid, std::ptrdiff_t count, std::uint16_t* boxes) {
    if (grid.columns == 2 && grid.together == 3) return sumWordBoxes<2, 3>(sums, count, boxes), true;
    if (grid.columns == 3 && grid.together == 3) return sumWordBoxes<3, 3>(sums, count, boxes), true;
    if (grid.columns == 3 && grid.together == 1) return sumWordBoxes<3, 1>(sums, count, boxes), true;
    return false;
}

#else

bool shuffleBoxes(const std::uint16_t*, const BoxGrid&, std::ptrdiff_t, std::uint16_t*) { return false; }

#endif

template <class Sum, class Box>
void sumBoxes(const Sum* sums, const BoxGrid& grid, std::ptrdiff_t count, Box* boxes) {
    if constexpr (std::is_same_v<Sum, std::uint16_t>) {
        if (shuffleBoxes(sums, grid, count, boxes)) return;
        if (grid.together == 3 || grid.together == 4) return sumPixelWords(sums, grid, count, boxes);
    }
    if (grid.together == 1 && grid.columns == 2) return sumAlong<2>(sums, count, boxes);
    if (grid.together == 1 && grid.columns == 3) return sumAlong<3>(sums, count, boxes);
    if (grid.together == 1 && grid.columns == 4) return sumAlong<4>(sums, count, boxes);
    sumAlongAny(sums, grid, count, boxes);
}

// The box at the block's left edge.
template <class Sum, class Box>
void sumEdgeBox(const Sum* sums, const BoxGrid& grid, Box* boxes) {
    for (std::ptrdiff_t c = 0; c < grid.together; ++c) {
        Box box = emptySum<Box>(true);
        for (std::ptrdiff_t i = 0; i < grid.columns; ++i)
            box = static_cast<Box>(box + static_cast<Box>(sums[i * grid.together + c]));
        boxes[c] = box;
    }
}

// Division of a box's sum, and half the area, by an odd area: a product with the quotient of 2^(16 + shift) and the area,
// rounded up. 0 stands for an area whose largest sum would show the rounding.
struct BoxDivision {
    std::uint16_t factor;
    std::int32_t shift;
};

BoxDivision divisionBy(std::uint32_t area) {
    const auto shift = static_cast<std::int32_t>(std::bit_width(area)) - 1;
    const std::uint64_t whole = std::uint64_t{1} << (16 + shift);
    const std::uint64_t factor = whole / area + 1;
    const std::uint64_t largest = std::uint64_t{255} * area + area / 2;
    const bool exact = area % 2 == 1 && largest < 65536 && largest * (factor * area - whole) < whole;
    return {static_cast<std::uint16_t>(exact ? factor : 0), shift};
}

[[gnu::noinline]] void divideBoxes(const std::uint16_t* boxes, std::uint32_t area, const BoxDivision& division,
                                   std::ptrdiff_t size, std::uint8_t* __restrict to) {
    const auto half = static_cast<std::uint16_t>(area / 2);
    const std::uint32_t factor = division.factor;
    const std::int32_t shift = division.shift;
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        const auto sum = static_cast<std::uint16_t>(boxes[i] + half);
        const auto high = static_cast<std::uint16_t>((sum * factor) >> 16);
        to[i] = static_cast<std::uint8_t>(high >> shift);
    }
}

// Whole numbers by a power of two. A sum and half the area are within the sum's type.
template <class T, class Box>
void shiftBoxes(const Box* boxes, std::uint32_t area, std::ptrdiff_t size, T* __restrict to) {
    const int shift = std::countr_zero(area);
    const auto half = static_cast<Box>(area / 2);
    for (std::ptrdiff_t i = 0; i < size; ++i) to[i] = static_cast<T>(static_cast<Box>(boxes[i] + half) >> shift);
}

template <class T, class Box>
void putBoxes(const Box* boxes, const BoxGrid& grid, std::ptrdiff_t size, T* __restrict to) {
    const double inverse = grid.inverse;
    if constexpr (std::is_same_v<T, float>) {
        for (std::ptrdiff_t i = 0; i < size; ++i) to[i] = static_cast<float>(static_cast<double>(boxes[i]) * inverse);
    } else {
        const auto area = static_cast<std::uint32_t>(grid.columns * grid.rows);
        if (std::has_single_bit(area)) return shiftBoxes(boxes, area, size, to);
        if constexpr (std::is_same_v<T, std::uint8_t>)
            if (const BoxDivision division = divisionBy(area); division.factor)
                return divideBoxes(boxes, area, division, size, to);
        for (std::ptrdiff_t i = 0; i < size; ++i)
            to[i] = static_cast<T>(
                static_cast<std::int32_t>(static_cast<double>(static_cast<std::int32_t>(boxes[i])) * inverse + 0.5));
    }
}

// Boxes of four bytes: the two of a row lie in one word.
[[gnu::noinline]] void halveBytes(const std::uint8_t* src, std::ptrdiff_t rowStep, std::ptrdiff_t count,
                                  std::uint8_t* __restrict to) {
    const std::uint8_t* second = src + rowStep;
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        std::uint16_t a = 0;
        std::uint16_t b = 0;
        std::memcpy(&a, src + 2 * k, sizeof a);
        std::memcpy(&b, second + 2 * k, sizeof b);
        const auto sum = static_cast<std::uint16_t>((a & 255) + (a >> 8) + (b & 255) + (b >> 8) + 2);
        to[k] = static_cast<std::uint8_t>(sum >> 2);
    }
}

// One row of boxes, of a pass.
template <class T>
void makeBoxRow(const DecimateBlock& block, const BoxGrid& grid, std::ptrdiff_t columns, bool firstRow, const T* src,
                T* dst) {
    if constexpr (std::is_same_v<T, std::uint8_t>)
        if (grid.together == 1 && grid.columns == 2 && grid.rows == 2)
            return halveBytes(src, block.srcRowStep, columns, dst);
    using Column = typename BoxSums<T>::Column;
    using Box = typename BoxSums<T>::Box;
    Column sums[kBoxPiece + kBoxSlack];
    Box boxes[kBoxPiece / 2 + kBoxSlack];
    const std::ptrdiff_t most = kBoxPiece / (grid.columns * grid.together);
    for (std::ptrdiff_t k = 0; k < columns; k += most) {
        const std::ptrdiff_t count = std::min(most, columns - k);
        const std::ptrdiff_t size = count * grid.columns * grid.together;
        std::fill_n(sums + size, kBoxSlack, Column{0});
        sumDown(src, block.srcRowStep, grid.rows, size, emptySum<Column>(firstRow), sums);
        sumBoxes(sums, grid, count, boxes);
        if (k == 0) sumEdgeBox(sums, grid, boxes);
        putBoxes(boxes, grid, count * grid.together, dst);
        src += size;
        dst += count * block.dstPixelStep;
    }
}

bool isWhole(float value) { return value == std::trunc(value); }

// Larger boxes have too few in a piece to pay.
constexpr float kMostColumns = 64;

// Factors of 1 share samples between cells, with a share of 0, as others do that are not whole.
template <class T>
bool areBoxes(const DecimateBlock& block, const DecimateShape& shape) {
    if (!isWhole(block.xStep) || !isWhole(block.yStep) || !isWhole(block.xPos) || !isWhole(block.yPos)) return false;
    if (block.xStep < 2 || block.yStep < 2 || block.xStep > kMostColumns || block.yStep > kMostColumns) return false;
    if (shape.nTogether != block.srcPixelStep || shape.nTogether != block.dstPixelStep) return false;
    if (shape.srcColumns >= (1 << 24) || shape.srcRows >= (1 << 24)) return false;
    const double area = static_cast<double>(block.xStep) * static_cast<double>(block.yStep);
    if (std::is_same_v<T, std::uint8_t> && area * 255 > 65535) return false;
    if (std::is_same_v<T, std::uint16_t> && area * 65535 > (1 << 24)) return false;
    return static_cast<double>(block.xPos) + static_cast<double>(shape.columns) * static_cast<double>(block.xStep) <=
               static_cast<double>(shape.srcColumns) &&
           static_cast<double>(block.yPos) + static_cast<double>(shape.rows) * static_cast<double>(block.yStep) <=
               static_cast<double>(shape.srcRows);
}

}  // namespace

template <class T>
bool makeBoxes(const DecimateBlock& block, const DecimateShape& shape) {
    if (!areBoxes<T>(block, shape)) return false;
    const BoxGrid grid{static_cast<std::ptrdiff_t>(block.xStep), static_cast<std::ptrdiff_t>(block.yStep),
                       shape.nTogether, 1 / (static_cast<double>(block.yStep) * static_cast<double>(block.xStep))};
    const auto first = static_cast<std::ptrdiff_t>(block.yPos) * block.srcRowStep +
                       static_cast<std::ptrdiff_t>(block.xPos) * block.srcPixelStep;
    for (std::ptrdiff_t pass = 0; pass < shape.passes; ++pass) {
        const T* src = reinterpret_cast<const T*>(block.src) + first + pass * block.srcChannelStep;
        T* dst = reinterpret_cast<T*>(block.dst) + pass * block.dstChannelStep;
        for (std::ptrdiff_t j = 0; j < shape.rows; ++j)
            makeBoxRow(block, grid, shape.columns, j == 0, src + j * grid.rows * block.srcRowStep,
                       dst + j * block.dstRowStep);
    }
    return true;
}

template bool makeBoxes<std::uint8_t>(const DecimateBlock&, const DecimateShape&);
template bool makeBoxes<std::uint16_t>(const DecimateBlock&, const DecimateShape&);
template bool makeBoxes<float>(const DecimateBlock&, const DecimateShape&);

}  // namespace zetpxl
