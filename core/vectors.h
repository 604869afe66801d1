// Vectors of the compiler's own, for loops that it does not hold in registers by itself. One source for every level: a vector
// wider than the processor's becomes several.
#pragma once

#include <cstddef>
#include <cstring>

namespace zetpxl {

#ifdef __AVX512F__
inline constexpr std::ptrdiff_t kFloatLanes = 16;
#else
inline constexpr std::ptrdiff_t kFloatLanes = 8;
#endif
using FloatVector [[gnu::vector_size(4 * kFloatLanes)]] = float;

// By reference: a level without such registers has no way to return one.
inline void loadVector(const float* from, FloatVector* v) { std::memcpy(v, from, sizeof *v); }

#ifdef __FMA__
inline constexpr bool kHasFused = true;
#else
inline constexpr bool kHasFused = false;
#endif

// a * b + c, where the product is exact: fusing then rounds what is rounded anyway, the sum.
inline double exactProductSum(double a, double b, double c) {
#ifdef __FMA__
    return __builtin_fma(a, b, c);
#else
    return a * b + c;
#endif
}

// a / 3 rounded to nearest. The reciprocal is rounded to nearest, its product with `a` is less than a unit in the last place
// off, and so the fused remainder gives the quotient itself (P. Markstein, "Computation of elementary functions on the IBM
// RISC System/6000 processor", 1990).
inline double thirdOf(double a) {
#ifdef __FMA__
    constexpr double reciprocal = 1.0 / 3.0;
    const double near = a * reciprocal;
    return __builtin_fma(__builtin_fma(-3.0, near, a), reciprocal, near);
#else
    return a / 3;
#endif
}

// Adds products that are exact, as their sums are: the one rounding that fusing saves then changes nothing. Vectors of 64 bytes
// are as quick without it, and g++ 12 takes them to pieces with it.
inline void addExactProducts(const FloatVector& samples, float weight, FloatVector* sums) {
#if defined(__FMA__) && !defined(__AVX512F__)
    for (std::ptrdiff_t i = 0; i < kFloatLanes; ++i) (*sums)[i] = __builtin_fmaf(samples[i], weight, (*sums)[i]);
#else
    *sums += samples * weight;
#endif
}

inline void storeVector(const FloatVector& v, float* to) { std::memcpy(to, &v, sizeof v); }

}  // namespace zetpxl
