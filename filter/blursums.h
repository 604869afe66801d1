// Sums of whole columns along a row, several pixels at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zetpxl {

// Whole numbers may be added in any order: a few columns each time anew, several pixels at once.
template <std::ptrdiff_t Columns>
void sumAnew(const std::uint32_t* __restrict columns, std::ptrdiff_t step, std::ptrdiff_t size,
             std::uint32_t* __restrict sums) {
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        std::uint32_t sum = columns[i];
        for (std::ptrdiff_t k = 1; k < Columns; ++k) sum += columns[i + k * step];
        sums[i] = sum;
    }
}

using SumVector [[gnu::vector_size(16)]] = std::uint32_t;

// Differences summed up within a vector of interleaved channels.
template <std::ptrdiff_t Step>
SumVector runningSums(SumVector d) {
    const SumVector zero{};
    if constexpr (Step == 1) d += __builtin_shufflevector(zero, d, 0, 4, 5, 6);
    if constexpr (Step <= 2) d += __builtin_shufflevector(zero, d, 0, 1, 4, 5);
    if constexpr (Step == 3) d += __builtin_shufflevector(zero, d, 0, 1, 2, 4);
    return d;
}

// The last sum of each lane's channel.
template <std::ptrdiff_t Step>
SumVector lastSums(SumVector sums) {
    if constexpr (Step == 1) return __builtin_shufflevector(sums, sums, 3, 3, 3, 3);
    if constexpr (Step == 2) return __builtin_shufflevector(sums, sums, 2, 3, 2, 3);
    if constexpr (Step == 3) return __builtin_shufflevector(sums, sums, 1, 2, 3, 1);
    return sums;
}

inline constexpr std::ptrdiff_t kSumLanes = 4;

// Sums `from` up to `size` of a row or a piece of it, a vector at a time: what enters and leaves is summed up within the
// vector first, so that one addition a vector waits for the one before. The kSumLanes sums in front of `from` are there.
template <std::ptrdiff_t Step>
void sumInVectors(const std::uint32_t* columns, std::ptrdiff_t nCols, std::ptrdiff_t from, std::ptrdiff_t size,
                  std::uint32_t* sums) {
    const std::uint32_t* const entering = columns + nCols * Step;
    SumVector last;
    std::memcpy(&last, sums + from - kSumLanes, sizeof last);
    std::ptrdiff_t i = from;
    for (; i + kSumLanes <= size; i += kSumLanes) {
        SumVector in;
        SumVector out;
        std::memcpy(&in, entering + i - Step, sizeof in);
        std::memcpy(&out, columns + i - Step, sizeof out);
        last = runningSums<Step>(in - out) + lastSums<Step>(last);
        std::memcpy(sums + i, &last, sizeof last);
    }
    for (; i < size; ++i) sums[i] = sums[i - Step] + (entering[i - Step] - columns[i - Step]);
}

// The sums of a row's first pixel.
inline void sumFirst(const std::uint32_t* columns, std::ptrdiff_t nCols, std::ptrdiff_t step, std::uint32_t* sums) {
    for (std::ptrdiff_t c = 0; c < step; ++c) {
        std::uint32_t sum = 0;
        for (std::ptrdiff_t x = 0; x < nCols; ++x) sum += columns[x * step + c];
        sums[c] = sum;
    }
}

// A piece of a row's sums: `isFirst` begins the row, others go on from the sums in front.
inline void sumPiece(const std::uint32_t* columns, std::ptrdiff_t nCols, std::ptrdiff_t step, bool isFirst,
                     std::ptrdiff_t size, std::uint32_t* sums) {
    if (nCols == 3) return sumAnew<3>(columns, step, size, sums);
    if (nCols == 5) return sumAnew<5>(columns, step, size, sums);
    if (isFirst) sumFirst(columns, nCols, step, sums);
    const std::ptrdiff_t from = isFirst ? step : 0;
    if (step == 1) return sumInVectors<1>(columns, nCols, from, size, sums);
    if (step == 2) return sumInVectors<2>(columns, nCols, from, size, sums);
    if (step == 3) return sumInVectors<3>(columns, nCols, from, size, sums);
    sumInVectors<4>(columns, nCols, from, size, sums);
}

}  // namespace zetpxl
