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

template <class T>
T limitedSample(double value) {
    if constexpr (std::is_same_v<T, float>) return static_cast<float>(value);
    constexpr double greatest = std::numeric_limits<T>::max();
    if (value > greatest) return std::numeric_limits<T>::max();
    return value < 0 ? T{0} : roundedSample<T>(value);
}

// Tolerance by which a position that is meant to be whole may fall short.
inline constexpr double kWholeTolerance = 1e-7;

// Two neighbours along an axis and the share of the second.
struct LinearTap {
    std::int32_t first;
    double share;
};

// From `last` on the last interval serves, with the share 1.
inline bool linearTap(double position, std::int32_t last, LinearTap* tap) {
    if (!toIndex(position + kWholeTolerance, &tap->first)) return false;
    if (tap->first >= last) {
        *tap = {last - 1, 1.0};
    } else {
        tap->share = position - tap->first;
    }
    return true;
}

// Four neighbours along an axis and the cubic through them (Lagrange).
struct CubicTap {
    std::int32_t first;
    double weights[4];
};

inline bool cubicTap(double position, std::int32_t last, CubicTap* tap) {
    std::int32_t index = 0;
    if (!toIndex(position + kWholeTolerance, &index)) return false;
    tap->first = index >= last - 1 ? last - 3 : index <= 0 ? 0 : index - 1;
    const double t = static_cast<float>((position - tap->first) - 1);
    const double square = t * t;
    const double cube = square * t;
    tap->weights[0] = -cube / 6 + square / 2 - t / 3;
    tap->weights[1] = cube / 2 - square - t / 2 + 1;
    tap->weights[2] = -cube / 2 + square / 2 + t;
    tap->weights[3] = cube / 6 - t / 6;
    return true;
}

// Each writes `nProc` channels of one pixel; false leaves it alone.
template <class T>
bool nearestPixel(const SampleGrid& src, double x, double y, std::int32_t nProc, std::uint8_t* dst,
                  std::ptrdiff_t dstChannelStep) {
    std::int32_t column = 0;
    std::int32_t row = 0;
    if (!toIndex(x + 0.5, &column) || !toIndex(y + 0.5, &row)) return false;
    const auto* sample = reinterpret_cast<const std::uint8_t*>(sampleAt<T>(src, column, row));
    for (std::ptrdiff_t k = 0; k < nProc; ++k)
        *reinterpret_cast<T*>(dst + k * dstChannelStep) = *reinterpret_cast<const T*>(sample + k * src.channelStep);
    return true;
}

template <class T>
double linearValue(const T* a, const T* b, const T* c, const T* d, double fx, double fy) {
    const double top = (static_cast<double>(*b) - static_cast<double>(*a)) * fx + static_cast<double>(*a);
    const double bottom = (static_cast<double>(*d) - static_cast<double>(*c)) * fx + static_cast<double>(*c);
    return top + (bottom - top) * fy;
}

template <class T>
void linearPixel(const SampleGrid& src, const LinearTap& tx, const LinearTap& ty, std::int32_t nProc, std::uint8_t* dst,
                 std::ptrdiff_t dstChannelStep) {
    const T* corners[] = {sampleAt<T>(src, tx.first, ty.first), sampleAt<T>(src, tx.first + 1, ty.first),
                          sampleAt<T>(src, tx.first, ty.first + 1), sampleAt<T>(src, tx.first + 1, ty.first + 1)};
    const std::ptrdiff_t step = src.channelStep / static_cast<std::ptrdiff_t>(sizeof(T));
    for (std::ptrdiff_t k = 0; k < nProc; ++k) {
        const std::ptrdiff_t at = k * step;
        const double value =
            linearValue(corners[0] + at, corners[1] + at, corners[2] + at, corners[3] + at, tx.share, ty.share);
        *reinterpret_cast<T*>(dst + k * dstChannelStep) = roundedSample<T>(value);
    }
}

template <class T>
double cubicValue(const SampleGrid& src, const CubicTap& tx, const CubicTap& ty, std::ptrdiff_t at) {
    double value = 0;
    for (std::int32_t i = 0; i < 4; ++i) {
        double sum = 0;
        for (std::int32_t j = 0; j < 4; ++j)
            sum += tx.weights[j] * static_cast<double>(sampleAt<T>(src, tx.first + j, ty.first + i)[at]);
        value += ty.weights[i] * sum;
    }
    return value;
}

template <class T>
bool cubicPixel(const SampleGrid& src, double x, double y, std::int32_t nProc, std::uint8_t* dst,
                std::ptrdiff_t dstChannelStep) {
    CubicTap tx;
    CubicTap ty;
    if (!cubicTap(x, src.lastColumn, &tx) || !cubicTap(y, src.lastRow, &ty)) return false;
    const std::ptrdiff_t step = src.channelStep / static_cast<std::ptrdiff_t>(sizeof(T));
    for (std::ptrdiff_t k = 0; k < nProc; ++k)
        *reinterpret_cast<T*>(dst + k * dstChannelStep) = limitedSample<T>(cubicValue<T>(src, tx, ty, k * step));
    return true;
}

}  // namespace zetpxl
