// Lines between whole samples in single precision, where that gives what double precision gives.
//   zoomlines.1 along x the weighted step and its sum are rounded once, by fusing; in double precision they are exact, or too
//               close to the sample to round elsewhere, so that rounding them to single precision gives the same
//   zoomlines.2 between rows of bytes a result counts only where it cannot lie on the other side of a whole number
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace zetpxl {

#ifdef __FMA__
inline constexpr bool kHasFused = true;
#else
inline constexpr bool kHasFused = false;
#endif

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

}  // namespace zetpxl
