// Samples at fractional positions, shared by warp and remap.
//   sampling.1 a position is a pair of doubles on whole-image coordinates, integers on pixel centres
//   sampling.2 a position that no 32-bit index holds is outside, and its pixel is left alone
//   sampling.3 an index outside the memory handed over is brought back to its edge: nothing outside is ever read
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "zetpxl.h"

namespace zetpxl {

inline constexpr std::int32_t kBlendFlag = ZET_INTER_BLEND_EDGES;

// One channel's first sample at column 0 of row 0, and the way to others. 1U: the first byte of row 0.
struct SampleGrid {
    std::uint8_t* origin;
    std::ptrdiff_t rowStep;      // bytes
    std::ptrdiff_t pixelStep;    // bytes; 0 for 1U
    std::ptrdiff_t channelStep;  // bytes from channel to channel
    std::int32_t lastColumn;
    std::int32_t lastRow;
};

// Describes the first of an image's channels from `firstChannel` on.
SampleGrid sampleGrid(const ZetImage* image, std::int32_t firstChannel);

// Truncation toward zero; false when no index holds the result.
inline bool toIndex(double value, std::int32_t* index) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return false;
    *index = static_cast<std::int32_t>(value);
    return true;
}

template <class T>
const T* sampleAt(const SampleGrid& grid, std::int32_t column, std::int32_t row) {
    const std::ptrdiff_t x = std::clamp(column, 0, grid.lastColumn);
    const std::ptrdiff_t y = std::clamp(row, 0, grid.lastRow);
    return reinterpret_cast<const T*>(grid.origin + y * grid.rowStep + x * grid.pixelStep);
}

inline bool bitAt(const SampleGrid& grid, std::int32_t column, std::int32_t row) {
    const std::ptrdiff_t x = std::clamp(column, 0, grid.lastColumn);
    const std::ptrdiff_t y = std::clamp(row, 0, grid.lastRow);
    return (grid.origin[y * grid.rowStep + (x >> 3)] >> (7 - (x & 7))) & 1;
}

inline void putBit(std::uint8_t* row, std::ptrdiff_t x, bool value) {
    const auto mask = static_cast<std::uint8_t>(0x80 >> (x & 7));
    row[x >> 3] = static_cast<std::uint8_t>(value ? row[x >> 3] | mask : row[x >> 3] & ~mask);
}

template <class T>
T roundedSample(double value) {
    if constexpr (std::is_same_v<T, float>) return static_cast<float>(value);
    return static_cast<T>(static_cast<std::int32_t>(value + 0.5));
}

// Tolerance by which a position that is meant to be whole may fall short.
inline constexpr double kWholeTolerance = 1e-7;

}  // namespace zetpxl
