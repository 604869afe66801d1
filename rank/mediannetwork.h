// Medians of small odd squares by sorting networks over whole vectors of neighbouring results.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rank/medianrow.h"

namespace zetpxl {

// Pixels with more samples than these go another way: the network's planes grow with them.
inline constexpr std::int32_t kNetworkLanes = 4;

// A method without a routine for windows and pixels that no network serves.
template <class T>
MedianMethod<T> networkMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes);

}  // namespace zetpxl
