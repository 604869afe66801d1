// Samples that lie around positions along rows, brought side by side so that arithmetic on them runs over whole vectors.
//   taps.1 a tap outside the row takes the row's first or last pixel
//   taps.2 pixels whose taps lie inside, short of the last column, are moved as whole words, which may reach into the pixel behind
//   taps.3 where the build has permutations of two vectors with indices in a third, samples whose taps fit two vectors are taken
//          by them, a vector at a time
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geometry/permutes.h"

namespace zetpxl {

// Samples that are made of a row at a time, and rows at a time: what they need stays in the first cache, and their pages
// within the processor's reach.
inline constexpr std::ptrdiff_t kTapPiece = 768;
inline constexpr std::ptrdiff_t kTapBand = 256;
inline constexpr std::ptrdiff_t kTapsAhead = 8;  // rows that are asked for ahead
inline constexpr std::ptrdiff_t kTapSlack = 16;  // samples that a word may write behind the last

// Pixels of a piece: where there is room, so many that their samples fill the longest vectors.
constexpr std::ptrdiff_t tapPixels(std::ptrdiff_t samplesOfPixel) {
    constexpr std::ptrdiff_t kMost = 512;
    constexpr std::ptrdiff_t kVector = 64;
    const std::ptrdiff_t pixels = std::min(kMost, kTapPiece / samplesOfPixel);
    return pixels < kVector ? pixels : pixels - pixels % kVector;
}

// How a row's pixels lie.
struct TapRow {
    std::ptrdiff_t columns;    // in the row
    std::ptrdiff_t pixelStep;  // samples from pixel to pixel
    std::ptrdiff_t nTogether;  // samples of a pixel that are taken
};

// The first tap of each pixel of a piece, in columns.
struct TapColumns {
    TapRow row;
    std::ptrdiff_t pixels;
    std::ptrdiff_t insideFrom, insideTo;  // a run of pixels whose taps all lie inside
    std::ptrdiff_t stride;                // between the first taps of neighbours, where it is the same for all; else 0
    bool pairs;                           // two pixels of each column, in turn
    std::int32_t first[kTapPiece];
    PermutedSamples<kTapPiece> permuted;

    std::ptrdiff_t samples() const { return pixels * row.nTogether; }
};

// Finds the groups whose taps a permutation takes: all inside the row, and the vectors too.
template <class T>
void planPermutes(std::ptrdiff_t taps, TapColumns* columns) {
    const TapRow& r = columns->row;
    const std::ptrdiff_t readable = r.columns * r.pixelStep - (r.pixelStep - r.nTogether);
    std::int32_t offsets[kTapPiece];
    for (std::ptrdiff_t i = 0; i < columns->pixels; ++i)
        for (std::ptrdiff_t c = 0; c < r.nTogether; ++c)
            offsets[i * r.nTogether + c] = static_cast<std::int32_t>(columns->first[i] * r.pixelStep + c);
    findPermutes<T>(offsets, columns->samples(), (taps - 1) * r.pixelStep, readable, &columns->permuted);
}

// Finds what the moves need to know once `first` and `pixels` are there.
template <class T>
void finishColumns(std::ptrdiff_t taps, TapColumns* columns) {
    if constexpr (kHasPermutes) planPermutes<T>(taps, columns);
    const std::ptrdiff_t last = columns->row.columns - 1 - taps;
    const auto inside = [&](std::ptrdiff_t i) { return columns->first[i] >= 0 && columns->first[i] <= last; };
    std::ptrdiff_t from = 0;
    while (from < columns->pixels && !inside(from)) ++from;
    std::ptrdiff_t to = from;
    while (to < columns->pixels && inside(to)) ++to;
    columns->insideFrom = from;
    columns->insideTo = to;
    columns->stride = columns->pixels > 1 ? columns->first[1] - columns->first[0] : 0;
    for (std::ptrdiff_t i = 1; i < columns->pixels; ++i)
        if (columns->first[i] - columns->first[i - 1] != columns->stride) columns->stride = 0;
    columns->pairs = true;
    for (std::ptrdiff_t i = 0; i < columns->pixels; ++i)
        if (columns->first[i] - columns->first[0] != i / 2) columns->pairs = false;
}

// Asks for what a piece will read of a row. Pieces of rows are too short for the processor to foresee the next one.
template <class T>
void prefetchTaps(const T* row, const TapColumns& columns) {
    constexpr std::ptrdiff_t kLine = 64;
    const TapRow& r = columns.row;
    const auto column = [&](std::ptrdiff_t i) {
        return std::clamp<std::ptrdiff_t>(columns.first[i], 0, r.columns - 1);
    };
    const auto* from = reinterpret_cast<const char*>(row + column(0) * r.pixelStep);
    const auto* to = reinterpret_cast<const char*>(row + column(columns.pixels - 1) * r.pixelStep);
    for (; from <= to; from += kLine) __builtin_prefetch(from);
}

template <class T>
using TapSamples = T[kTapPiece + kTapSlack];

// One tap of some pixels, tap by tap within the row.
template <class T>
void moveEdgePixels(const T* row, const TapColumns& columns, std::ptrdiff_t tap, std::ptrdiff_t from, std::ptrdiff_t to,
                    T* samples) {
    const TapRow& r = columns.row;
    for (std::ptrdiff_t i = from; i < to; ++i) {
        const std::ptrdiff_t column = std::clamp<std::ptrdiff_t>(columns.first[i] + tap, 0, r.columns - 1);
        for (std::ptrdiff_t c = 0; c < r.nTogether; ++c) samples[i * r.nTogether + c] = row[column * r.pixelStep + c];
    }
}

// One tap of the inside pixels, each moved as a word of `Bytes`.
template <std::size_t Bytes, class T>
void moveWords(const T* row, const TapColumns& columns, std::ptrdiff_t tap, T* samples) {
    const std::ptrdiff_t step = columns.row.pixelStep;
    const std::ptrdiff_t together = columns.row.nTogether;
    const std::ptrdiff_t to = columns.insideTo;
    const std::int32_t* const first = columns.first;
    for (std::ptrdiff_t i = columns.insideFrom; i < to; ++i)
        std::memcpy(samples + i * together, row + (first[i] + tap) * step, Bytes);
}

// Every `Stride`-th pixel of one sample.
template <std::ptrdiff_t Stride, class T>
void moveStrided(const T* row, const TapColumns& columns, std::ptrdiff_t tap, T* samples) {
    const T* from = row + columns.first[columns.insideFrom] + tap;
    const std::ptrdiff_t count = columns.insideTo - columns.insideFrom;
    T* to = samples + columns.insideFrom;
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = from[i * Stride];
}

// Pixels of one sample, each column's twice.
template <class T>
void movePairs(const T* row, const TapColumns& columns, std::ptrdiff_t tap, T* samples) {
    const std::ptrdiff_t count = columns.insideTo / 2;
    const T* __restrict const from = row + columns.first[0] + tap;
    T* __restrict const to = samples;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        to[2 * i] = from[i];
        to[2 * i + 1] = from[i];
    }
    if (columns.insideTo & 1) to[2 * count] = from[count];
}

template <class T>
bool moveAllStrided(const T* row, const TapColumns& columns, std::ptrdiff_t tap, T* samples) {
    if (columns.row.pixelStep != 1 || columns.insideFrom == columns.insideTo) return false;
    if (columns.pairs && columns.insideFrom == 0) return movePairs(row, columns, tap, samples), true;
    switch (columns.stride) {
        case 1:
            moveStrided<1>(row, columns, tap, samples);
            return true;
        case 2:
            moveStrided<2>(row, columns, tap, samples);
            return true;
        case 3:
            moveStrided<3>(row, columns, tap, samples);
            return true;
        default:
            return false;
    }
}

// One tap of all pixels: those inside first, since a word may write over what lies behind it.
template <class T>
void moveTap(const T* row, const TapColumns& columns, std::ptrdiff_t tap, T* samples) {
    if (!moveAllStrided(row, columns, tap, samples)) {
        switch (columns.row.nTogether) {
            case 1:
                moveWords<sizeof(T)>(row, columns, tap, samples);
                break;
            case 2:
                moveWords<2 * sizeof(T)>(row, columns, tap, samples);
                break;
            case 3:
            case 4:
                moveWords<4 * sizeof(T)>(row, columns, tap, samples);
                break;
            default:
                moveEdgePixels(row, columns, tap, columns.insideFrom, columns.insideTo, samples);
        }
    }
    moveEdgePixels(row, columns, tap, columns.insideTo, columns.pixels, samples);
    moveEdgePixels(row, columns, tap, 0, columns.insideFrom, samples);
}

// All taps of pixels of one sample: neighbours in the row, so one word holds those of a pixel.
template <class T, std::size_t Count>
void moveNeighbours(const T* row, const TapColumns& columns, TapSamples<T> (&taps)[Count]) {
    constexpr auto kStep = static_cast<std::ptrdiff_t>(Count);
    const std::ptrdiff_t from = columns.insideFrom;
    const std::ptrdiff_t to = columns.insideTo;
    const std::int32_t* const first = columns.first;
    T packed[Count * static_cast<std::size_t>(kTapPiece)];
    for (std::ptrdiff_t i = from; i < to; ++i) std::memcpy(packed + i * kStep, row + first[i], Count * sizeof(T));
    for (std::ptrdiff_t k = 0; k < kStep; ++k)
        for (std::ptrdiff_t i = from; i < to; ++i) taps[k][i] = packed[i * kStep + k];
    for (std::ptrdiff_t k = 0; k < kStep; ++k) {
        moveEdgePixels(row, columns, k, 0, columns.insideFrom, taps[k]);
        moveEdgePixels(row, columns, k, columns.insideTo, columns.pixels, taps[k]);
    }
}

// The taps of most samples by permutations, those near the row's ends one by one.
template <class T, std::size_t Count>
void permuteTaps(const T* row, const TapColumns& columns, TapSamples<T> (&taps)[Count]) {
    const PermutedSamples<kTapPiece>& permuted = columns.permuted;
    const std::ptrdiff_t together = columns.row.nTogether;
    permuteGroups(row, permuted, columns.row.pixelStep, taps);
    const std::ptrdiff_t before = (permuted.from + together - 1) / together;
    const std::ptrdiff_t behind = std::min(permuted.to / together, columns.pixels);
    for (std::size_t k = 0; k < Count; ++k) {
        moveEdgePixels(row, columns, static_cast<std::ptrdiff_t>(k), 0, before, taps[k]);
        moveEdgePixels(row, columns, static_cast<std::ptrdiff_t>(k), behind, columns.pixels, taps[k]);
    }
}

// Brings the taps of each pixel of a row side by side: tap k of sample i at taps[k][i].
template <class T, std::size_t Count>
void gatherTaps(const T* row, const TapColumns& columns, TapSamples<T> (&taps)[Count]) {
    if constexpr (kHasPermutes && Count > 1)
        if (columns.permuted.pays(columns.samples())) return permuteTaps(row, columns, taps);
    if (Count > 1 && columns.row.pixelStep == 1) return moveNeighbours(row, columns, taps);
    std::ptrdiff_t k = 0;
    for (TapSamples<T>& tap : taps) moveTap(row, columns, k++, tap);
}

}  // namespace zetpxl
