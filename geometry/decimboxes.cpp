// Area averages by whole factors.
//   boxes.1 sums of whole samples below 2^24 are exact in single precision, so integers in any order give the same
//   boxes.2 float samples are summed down each column, then along the row, as everywhere: the sums of a box that is not at the
//           block's left or upper edge begin with +0, which a box of -0 shows
#include "geometry/decimboxes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace zetpxl {

namespace {

// Samples of column sums that are held at a time.
constexpr std::ptrdiff_t kBoxPiece = 2048;
constexpr std::ptrdiff_t kBoxSlack = 4;  // that a word may reach behind the last

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

template <class T, class Sum>
void sumDown(const T* src, std::ptrdiff_t rowStep, std::ptrdiff_t rows, std::ptrdiff_t size, Sum empty,
             Sum* __restrict sums) {
    const T* second = src + rowStep;
    for (std::ptrdiff_t i = 0; i < size; ++i)
        sums[i] = static_cast<Sum>(static_cast<Sum>(empty + static_cast<Sum>(src[i])) + static_cast<Sum>(second[i]));
    for (std::ptrdiff_t r = 2; r < rows; ++r) {
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

template <class Sum, class Box>
void sumBoxes(const Sum* sums, const BoxGrid& grid, std::ptrdiff_t count, Box* boxes) {
    if constexpr (std::is_same_v<Sum, std::uint16_t>)
        if (grid.together == 3 || grid.together == 4) return sumPixelWords(sums, grid, count, boxes);
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

template <class T, class Box>
void putBoxes(const Box* boxes, const BoxGrid& grid, std::ptrdiff_t size, T* __restrict to) {
    const double inverse = grid.inverse;
    if constexpr (std::is_same_v<T, float>) {
        for (std::ptrdiff_t i = 0; i < size; ++i) to[i] = static_cast<float>(static_cast<double>(boxes[i]) * inverse);
    } else {
        const auto area = static_cast<std::uint32_t>(grid.columns * grid.rows);
        if (std::has_single_bit(area)) {
            const int shift = std::countr_zero(area);
            for (std::ptrdiff_t i = 0; i < size; ++i)
                to[i] = static_cast<T>((static_cast<std::uint32_t>(boxes[i]) + area / 2) >> shift);
            return;
        }
        for (std::ptrdiff_t i = 0; i < size; ++i)
            to[i] = static_cast<T>(
                static_cast<std::int32_t>(static_cast<double>(static_cast<std::int32_t>(boxes[i])) * inverse + 0.5));
    }
}

// One row of boxes, of a pass.
template <class T>
void makeBoxRow(const DecimateBlock& block, const BoxGrid& grid, std::ptrdiff_t columns, bool firstRow, const T* src,
                T* dst) {
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
