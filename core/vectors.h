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

inline void storeVector(const FloatVector& v, float* to) { std::memcpy(to, &v, sizeof v); }

}  // namespace zetpxl
