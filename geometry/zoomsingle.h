// Lines and cubics in single precision, where that gives what double precision gives.
//   single.1 along x the weighted step and its sum are rounded once, by fusing; in double precision they are exact, or too
//            close to the sample to round elsewhere, so that rounding them to single precision gives the same
//   single.2 between rows of bytes a result counts only where it cannot lie on the other side of a whole number
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "core/vectors.h"

namespace zetpxl {

// Of samples of n bits a step has n + 1 bits with its sign, a weight 24. From 2^(n-28) on, weighted steps reach down to
// 2^(n-51) and sums up to 2^(n+1): 53 bits hold them. Below 2^-(26+n) a weighted step is less than half of a half of what a
// sample of 1 or more can hold in its last place, and with a sample of 0 it is the sum itself.
template <class T>
bool isExactWeight(float weight) {
    constexpr std::int32_t kBits = std::numeric_limits<T>::digits;
    const float size = std::fabs(weight);
    return size >= std::ldexp(1.0f, kBits - 28) || size < std::ldexp(1.0f, -26 - kBits);
}

template <class T>
void interpolateLines(const T* __restrict first, const T* __restrict second, const float* __restrict weights,
                      std::ptrdiff_t count, float* __restrict to) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto step = static_cast<float>(std::int32_t{second[i]} - std::int32_t{first[i]});
        to[i] = std::fma(weights[i], step, static_cast<float>(first[i]));
    }
}

// Far from whole numbers single precision is good enough to tell the byte: below 256 the step and the sum are each off by at
// most 2^-17, the tolerance of 1e-7 added. Where both rows agree the result is theirs, and nothing is off below it. False when
// any result may be another.
inline bool blendLines(const float* __restrict upper, const float* __restrict lower, float weight, std::ptrdiff_t count,
                       std::uint8_t* __restrict to) {
    constexpr float kMargin = 0x1p-15f;
    std::int32_t differs = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const float step = lower[i] - upper[i];
        const float value = std::fma(weight, step, upper[i]);
        const auto least = static_cast<std::int32_t>(value - (step == 0 ? 0.0f : kMargin));
        const auto most = static_cast<std::int32_t>(value + kMargin);
        differs |= least ^ most;
        to[i] = static_cast<std::uint8_t>(least);
    }
    return differs == 0;
}

inline std::int32_t byteOf(float value) { return std::clamp(static_cast<std::int32_t>(value), 0, 255); }

// The same for the weights of a cubic at 0 to 1. Rows of bytes lie below 2^9 on both sides of 0: the first differences are
// rounded as ever, the second are off by 2^-12 at most, weighted by 1, the third by 2^-11, weighted by 1/15, and the three
// sums by 2^-13 each.
inline bool blendCubics(const float* __restrict r0, const float* __restrict r1, const float* __restrict r2,
                        const float* __restrict r3, const float (&w)[3], std::ptrdiff_t count,
                        std::uint8_t* __restrict to) {
    constexpr float kMargin = 0x1p-10f;
    const float w0 = w[0], w1 = w[1], w2 = w[2];
    std::int32_t differs = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const float first = r1[i] - r0[i];
        const float second = (r2[i] - r1[i]) - first;
        const float third = (std::fma(-2.0f, r2[i], r3[i]) + r1[i]) - second;
        const float value = std::fma(w2, second, std::fma(w1, third, std::fma(w0, first, r0[i])));
        const bool isFlat = (first == 0) & (second == 0) & (third == 0);
        const std::int32_t least = byteOf(value - (isFlat ? 0.0f : kMargin));
        differs |= least ^ byteOf(value + kMargin);
        to[i] = static_cast<std::uint8_t>(least);
    }
    return differs == 0;
}

}  // namespace zetpxl
