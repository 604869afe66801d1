// The 5 by 5 smoothing of whole samples in single precision.
#pragma once

#include "filter/fixedrows.h"

namespace zetpxl {

// The weights of the 5 by 5 smoothing.
inline constexpr double kSmoothA = 2.0F / 571.0F;
inline constexpr double kSmoothB = 7.0F / 571.0F;
inline constexpr double kSmoothC = 12.0F / 571.0F;
inline constexpr double kSmoothD = 31.0F / 571.0F;
inline constexpr double kSmoothE = 52.0F / 571.0F;
inline constexpr double kSmoothF = 127.0F / 571.0F;

// A row of samples of at most 16 bits; false, with nothing made, for pixels of too many samples.
template <class T>
bool smoothRow(const FixedWindow<T>& window, float* out);

}  // namespace zetpxl
