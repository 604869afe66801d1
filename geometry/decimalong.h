// Means of cells along a row of sums, for area averages.
//   along.1 a cell that ends with a crossing is written from the sum before that is rounded to single precision
//   along.2 a product of a sum and a share of single precision is exact in double precision, so that fusing it with its sum
//           changes nothing
#pragma once

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "core/alloc.h"
#include "core/vectors.h"
#include "geometry/decimcells.h"

namespace zetpxl {

// Sums of a row of cells, and where the means go.
struct SumRow {
    const float* sums;
    std::ptrdiff_t together;   // samples of a pixel
    std::ptrdiff_t pixelStep;  // of the sums
    std::ptrdiff_t dstPixelStep;
    double inverse;
};

template <class T>
T areaSample(double mean) {
    if constexpr (std::is_same_v<T, float>) return static_cast<float>(mean);
    return static_cast<T>(static_cast<std::int32_t>(mean + 0.5));
}

// Sum over a cell whose samples lie `step` apart.
inline double cellSum(const AreaCell& cell, const float* sums, std::ptrdiff_t step) {
    const float* at = sums + cell.first * step;
    float sum = 0;
    std::int32_t i = 0;
    if (cell.begin >= 0) {
        sum = *at * cell.begin;
        ++i;
    }
    for (; i < cell.last; ++i) sum += at[i * step];
    if (cell.end < 0) return static_cast<double>(sum);
    return exactProductSum(static_cast<double>(at[cell.last * step]), static_cast<double>(cell.end),
                           static_cast<double>(sum));
}

// Means one by one, of cells of any length.
template <class T>
void putLongCells(const AreaCells& plan, const SumRow& row, T* dst) {
    for (std::ptrdiff_t k = 0; k < plan.count; ++k)
        for (std::ptrdiff_t c = 0; c < row.together; ++c)
            dst[k * row.dstPixelStep + c] =
                areaSample<T>(cellSum(plan.cells[k], row.sums + c, row.pixelStep) * row.inverse);
}

// Samples that are made side by side, in groups that are brought together by one index, and the most samples of a cell that
// this pays for.
#ifdef __AVX512F__
inline constexpr std::ptrdiff_t kCellLanes = 16;
#else
inline constexpr std::ptrdiff_t kCellLanes = 8;
#endif
inline constexpr std::ptrdiff_t kCellPiece = 64;
inline constexpr std::int32_t kMostShort = 5;

// Floats that one index reaches, and so the sums that are looked at behind the last.
inline constexpr std::ptrdiff_t kCellReach = 4 * kCellLanes;
constexpr std::ptrdiff_t cellSpare(std::ptrdiff_t pixelStep) { return kCellReach + (kMostShort + 1) * pixelStep; }

// The cells of a row, once for each sample of their pixels and up to a whole piece: their first sum, counted from the first
// of the group.
struct ShortCells {
    std::ptrdiff_t size;
    std::int32_t mostSamples, mostWhole;
    std::int32_t fewest;  // samples before a crossing last one
    std::int32_t farthest;
    Block<std::ptrdiff_t> origins;  // of groups
    Block<std::int32_t> places;     // first ones; then lasts; then those that are crossing, or -1
    Block<float> shares;            // begins, then ends

    std::ptrdiff_t padded() const { return (size + kCellPiece - 1) / kCellPiece * kCellPiece; }
};

inline void placeCell(const AreaCell& cell, std::ptrdiff_t i, ShortCells* cells) {
    const std::ptrdiff_t padded = cells->padded();
    std::int32_t* places = cells->places.get() + i;
    float* shares = cells->shares.get() + i;
    places[padded] = cell.last;
    places[2 * padded] = cell.end < 0 ? -1 : cell.last;
    shares[0] = cell.begin;
    shares[padded] = cell.end;
    cells->mostWhole = std::max(cells->mostWhole, cell.last);
    if (cell.end >= 0) cells->fewest = std::min(cells->fewest, cell.last);
}

// False when memory cannot be had.
inline bool planShortCells(const AreaCells& plan, const SumRow& row, ShortCells* cells) {
    *cells = {plan.count * row.together, std::max(plan.mostSamples, 1), 0, plan.mostSamples, 0, {}, {}, {}};
    const std::ptrdiff_t padded = cells->padded();
    cells->origins = allocBlock<std::ptrdiff_t>(padded / kCellLanes);
    cells->places = allocBlock<std::int32_t>(3 * padded);
    cells->shares = allocBlock<float>(2 * padded);
    if (!cells->origins || !cells->places || !cells->shares) return false;
    std::ptrdiff_t origin = 0;
    for (std::ptrdiff_t i = 0; i < padded; ++i) {
        const std::ptrdiff_t sample = std::min(i, cells->size - 1);
        const AreaCell& cell = plan.cells[sample / row.together];
        const std::ptrdiff_t first = cell.first * row.pixelStep + sample % row.together;
        if (i % kCellLanes == 0) cells->origins.get()[i / kCellLanes] = origin = first;
        cells->places.get()[i] = static_cast<std::int32_t>(first - origin);
        cells->farthest = std::max(cells->farthest, cells->places.get()[i]);
        placeCell(cell, i, cells);
    }
    return true;
}

// Samples of cells, by their place in the cell.
using CellSamples = float[kMostShort][kCellPiece];

// A piece of cells: origins of its groups and places in them.
struct CellPiece {
    const std::ptrdiff_t* origins;
    const std::int32_t* places;
    std::int32_t mostSamples;
};

inline void gatherSamples(const CellPiece& piece, const SumRow& row, CellSamples* samples) {
    for (std::ptrdiff_t g = 0; g < kCellPiece; g += kCellLanes) {
        const float* at = row.sums + piece.origins[g / kCellLanes];
        for (std::int32_t i = 0; i < piece.mostSamples; ++i, at += row.pixelStep)
            for (std::ptrdiff_t k = g; k < g + kCellLanes; ++k) (*samples)[i][k] = at[piece.places[k]];
    }
}

#if defined(__AVX2__) && __has_builtin(__builtin_shuffle)

using CellFloats [[gnu::vector_size(4 * kCellLanes)]] = float;
using CellIndex [[gnu::vector_size(4 * kCellLanes)]] = std::int32_t;

inline void loadFloats(const float* from, std::int32_t vector, CellFloats* v) {
    std::memcpy(v, from + vector * kCellLanes, sizeof *v);
}

// The floats at `index` of two to four vectors.
template <std::int32_t Vectors>
void pickFloats(const float* from, const CellIndex& index, float* to) {
    constexpr auto two = static_cast<std::int32_t>(2 * kCellLanes);
    CellFloats low, high;
    loadFloats(from, 0, &low);
    loadFloats(from, 1, &high);
    CellFloats picked = __builtin_shuffle(low, high, index);
    if constexpr (Vectors > 2) {
        loadFloats(from, 2, &low);
        loadFloats(from, 3, &high);
        if constexpr (Vectors == 3) picked = index < two ? picked : __builtin_shuffle(low, index);
        if constexpr (Vectors == 4) picked = index < two ? picked : __builtin_shuffle(low, high, index);
    }
    std::memcpy(to, &picked, sizeof picked);
}

template <std::int32_t Vectors>
[[gnu::noinline]] void pickSamples(const CellPiece& piece, const SumRow& row, CellSamples* samples) {
    const std::ptrdiff_t step = row.pixelStep;
    const std::int32_t mostSamples = piece.mostSamples;
    for (std::ptrdiff_t g = 0; g < kCellPiece; g += kCellLanes) {
        const float* at = row.sums + piece.origins[g / kCellLanes];
        CellIndex index;
        std::memcpy(&index, piece.places + g, sizeof index);
        for (std::int32_t i = 0; i < mostSamples; ++i, at += step) pickFloats<Vectors>(at, index, &(*samples)[i][g]);
    }
}

inline void bringSamples(const CellPiece& piece, const SumRow& row, std::int32_t farthest, CellSamples* samples) {
    if (farthest < 2 * kCellLanes) return pickSamples<2>(piece, row, samples);
    if (farthest < 3 * kCellLanes) return pickSamples<3>(piece, row, samples);
    if (farthest < 4 * kCellLanes) return pickSamples<4>(piece, row, samples);
    gatherSamples(piece, row, samples);
}

#else

inline void bringSamples(const CellPiece& piece, const SumRow& row, std::int32_t, CellSamples* samples) {
    gatherSamples(piece, row, samples);
}

#endif

// A cell's sum is that of its `sum` and of its `tail` times the share at its end.
struct CellSums {
    float sum[kCellPiece];
    float tail[kCellPiece];
};

// Loops of their own for each step: the compiler makes jumps, not vectors, of more than one choice in a loop. All cells take
// as many steps as the longest: a step too many adds -0, which changes no number. A tail of +0 is one of -0 after the product
// with a share below 0.
[[gnu::noinline]] inline void sumCells(const ShortCells& cells, std::ptrdiff_t from, const CellSamples& samples,
                                       CellSums* __restrict made) {
    const float* begin = cells.shares.get() + from;
    const std::int32_t* last = cells.places.get() + cells.padded() + from;
    const std::int32_t* crossing = last + cells.padded();
    for (std::ptrdiff_t k = 0; k < kCellPiece; ++k) {
        const float share = samples[0][k] * begin[k];
        made->sum[k] = begin[k] < 0 ? samples[0][k] + 0.0f : share;
    }
    for (std::int32_t i = 1; i < cells.mostWhole; ++i)
        for (std::ptrdiff_t k = 0; k < kCellPiece; ++k) made->sum[k] += i < last[k] ? samples[i][k] : -0.0f;
    std::fill_n(made->tail, kCellPiece, 0.0f);
    for (std::int32_t i = cells.fewest; i < cells.mostSamples; ++i)
        for (std::ptrdiff_t k = 0; k < kCellPiece; ++k)
            made->tail[k] = i == crossing[k] ? samples[i][k] : made->tail[k];
}

template <class T>
[[gnu::noinline]] void meanCells(const CellSums& made, const float* end, double inverse, T* __restrict values) {
    for (std::ptrdiff_t k = 0; k < kCellPiece; ++k) {
        const auto sum = static_cast<double>(made.sum[k]);
        const auto tail = static_cast<double>(made.tail[k]);
        const auto share = static_cast<double>(end[k]);
        values[k] = areaSample<T>(exactProductSum(tail, share, sum) * inverse);
    }
}

template <class T>
void storeSamples(const T* values, std::ptrdiff_t from, std::ptrdiff_t count, const SumRow& row, T* dst) {
    for (std::ptrdiff_t i = from; i < from + count; ++i)
        dst[i / row.together * row.dstPixelStep + i % row.together] = *values++;
}

template <class T>
void putShortCells(const ShortCells& cells, const SumRow& row, T* dst) {
    CellSamples samples;
    CellSums sums;
    T values[kCellPiece];
    const float* end = cells.shares.get() + cells.padded();
    const bool inOrder = row.dstPixelStep == row.together;
    for (std::ptrdiff_t from = 0; from < cells.size; from += kCellPiece) {
        const std::ptrdiff_t count = std::min(kCellPiece, cells.size - from);
        const bool direct = inOrder && count == kCellPiece;
        bringSamples({cells.origins.get() + from / kCellLanes, cells.places.get() + from, cells.mostSamples}, row,
                     cells.farthest, &samples);
        sumCells(cells, from, samples, &sums);
        meanCells(sums, end + from, row.inverse, direct ? dst + from : values);
        if (!direct) storeSamples(values, from, count, row, dst);
    }
}

}  // namespace zetpxl
