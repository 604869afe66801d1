// Vectors of the compiler's own, for loops that it does not hold in registers by itself. One source for every level: a vector
// wider than the processor's becomes several.
#pragma once

#include <cstddef>
#include <cstring>

namespace zetpxl {

using FloatVector [[gnu::vector_size(32)]] = float;
inline constexpr std::ptrdiff_t kFloatLanes = 8;

// By reference: a level without such registers has no way to return one.
inline void loadVector(const float* from, FloatVector* v) { std::memcpy(v, from, sizeof *v); }

// a * b + c, where the product is exact: the sum is rounded once, fused or not.
inline double exactSum(double a, double b, double c) {
#ifdef __FMA__
    return __builtin_fma(a, b, c);
#else
    return a * b + c;
#endif
}

// Adds products that are exact, as their sums are: the one rounding that fusing saves then changes nothing, and builds whose
// processors have it use it.
inline void addExactProducts(const FloatVector& samples, float weight, FloatVector* sums) {
#ifdef __FMA__
    for (std::ptrdiff_t i = 0; i < kFloatLanes; ++i) (*sums)[i] = __builtin_fmaf(samples[i], weight, (*sums)[i]);
#else
    *sums += samples * weight;
#endif
}

inline void storeVector(const FloatVector& v, float* to) { std::memcpy(to, &v, sizeof v); }

}  // namespace zetpxl
