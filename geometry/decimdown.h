// Sums of a cell's rows, sample by sample, for area averages.
//   down.1 a sum is rounded to single precision after each row; a product with a share is so when it begins a cell, and is
//          added in double precision when it ends one
//   down.2 a product of a sample and a share of single precision is exact in double precision: its rounding is that of the
//          single precision product
//   down.3 whole samples of 16 bits and shares that are multiples of 2^-24 have sums, of a few rows, that double precision
//           holds: fusing the last product with its sum rounds once, as the longer way does
#pragma once

#include <algorithm>
#include <array>
#include <type_traits>

#include "core/vectors.h"
#include "geometry/decimcells.h"

namespace zetpxl {

// Samples of the rows that a block touches: `size` of each row.
template <class T>
struct AreaSource {
    const T* samples;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t size;
};

// Shares of a cell's outer rows. A whole first row is added to +0, which tells of -0; any other to -0, which changes nothing.
struct RowShares {
    float begin, end, base;
};

template <class T>
float endSum(float sum, T sample, float share) {
    return static_cast<float>(
        exactProductSum(static_cast<double>(sample), static_cast<double>(share), static_cast<double>(sum)));
}

// Of a cell of few rows.
template <class T>
float endShortSum(float sum, T sample, float share) {
#ifdef __FMA__
    if constexpr (!std::is_same_v<T, float>) return __builtin_fmaf(static_cast<float>(sample), share, sum);
#endif
    return endSum(sum, sample, share);
}

// The first row, `Plain` whole ones and, if it is crossing, the last.
template <std::ptrdiff_t Plain, bool End, class T>
[[gnu::noinline]] void beginSums(const AreaSource<T>& source, const RowShares& shares, float* __restrict sums) {
    const T* const rows = source.samples;
    const std::ptrdiff_t step = source.rowStep;
    const std::ptrdiff_t size = source.size;
    const RowShares by = shares;
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        float sum = static_cast<float>(rows[i]) * by.begin;
        if constexpr (std::is_same_v<T, float>) sum += by.base;
        if constexpr (Plain > 0) sum += static_cast<float>(rows[step + i]);
        if constexpr (Plain > 1) sum += static_cast<float>(rows[2 * step + i]);
        if constexpr (End) sum = endShortSum(sum, rows[(Plain + 1) * step + i], by.end);
        sums[i] = sum;
    }
}

template <class T>
[[gnu::noinline]] void addRow(const T* row, std::ptrdiff_t size, float* __restrict sums) {
    for (std::ptrdiff_t i = 0; i < size; ++i) sums[i] += static_cast<float>(row[i]);
}

template <class T>
[[gnu::noinline]] void endRow(const T* row, float share, std::ptrdiff_t size, float* __restrict sums) {
    for (std::ptrdiff_t i = 0; i < size; ++i) sums[i] = endSum(sums[i], row[i], share);
}

constexpr std::int32_t kMostPlain = 2;

template <class T>
using BeginSums = void (*)(const AreaSource<T>&, const RowShares&, float*);

// By the number of whole rows and whether a crossing one ends them.
template <class T>
inline constexpr std::array<std::array<BeginSums<T>, 2>, kMostPlain + 1> kBeginSums{{
    {&beginSums<0, false, T>, &beginSums<0, true, T>},
    {&beginSums<1, false, T>, &beginSums<1, true, T>},
    {&beginSums<2, false, T>, &beginSums<2, true, T>},
}};

// The sums of one cell's rows.
template <class T>
void sumCellRows(const AreaSource<T>& source, const AreaCell& cell, float* sums) {
    if (cell.samples() == 0) {
        std::fill_n(sums, source.size, 0.0f);
        return;
    }
    const bool whole = cell.begin < 0;
    const bool ends = cell.end >= 0;
    const RowShares shares{whole ? 1 : cell.begin, cell.end, whole ? 0.0f : -0.0f};
    const AreaSource<T> rows{source.samples + cell.first * source.rowStep, source.rowStep, source.size};
    const std::int32_t plain = cell.last - 1;
    if (plain <= kMostPlain) return kBeginSums<T>[static_cast<std::size_t>(plain)][ends](rows, shares, sums);
    kBeginSums<T>[kMostPlain][0](rows, shares, sums);
    for (std::int32_t r = kMostPlain + 1; r < cell.last; ++r) addRow(rows.samples + r * rows.rowStep, rows.size, sums);
    if (ends) endRow(rows.samples + cell.last * rows.rowStep, shares.end, rows.size, sums);
}

}  // namespace zetpxl
