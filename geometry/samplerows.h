// Many positions sampled at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "geometry/sampling.h"

namespace zetpxl {

// Positions that are sampled at a time.
inline constexpr std::ptrdiff_t kPositions = 64;

// Where what vectors of 64 bytes read and write begins: across two lines they are slow, and slow to read back.
inline constexpr std::size_t kVectorAlign = 64;

// Source positions whose indices 32 bits hold, and the destination column of each.
struct PositionList {
    alignas(kVectorAlign) double x[kPositions];
    alignas(kVectorAlign) double y[kPositions];
    alignas(kVectorAlign) std::int32_t column[kPositions];
    std::ptrdiff_t count;
};

// A row of the destination.
struct SampleRow {
    std::uint8_t* row;  // column 0
    std::ptrdiff_t pixelStep;
    std::ptrdiff_t channelStep;
};

// What is sampled. Lines end on `lastColumn` and `lastRow` with the share 1; the grid's own are the memory's.
struct SampleSource {
    SampleGrid grid;
    std::int32_t lastColumn;
    std::int32_t lastRow;
    std::int32_t nProc;
};

// Writes each position's pixel: the results of nearestPixel, linearPixel and cubicPixel.
using SampleRoutine = void (*)(const SampleSource& source, const PositionList& list, const SampleRow& to);

template <class T>
void nearestPositions(const SampleSource& source, const PositionList& list, const SampleRow& to);
template <class T>
void linearPositions(const SampleSource& source, const PositionList& list, const SampleRow& to);
template <class T>
void cubicPositions(const SampleSource& source, const PositionList& list, const SampleRow& to);

}  // namespace zetpxl
