// Medians of 8-bit samples at a cost that does not depend on the window, by histograms of columns.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rank/medianrow.h"

namespace zetpxl {

// Counts fit in 16 bits with a sign. Lower windows are cheaper to slide along the row.
bool servesColumns(std::int32_t nCols, std::int32_t nRows);

// The histograms pass from row to row: each row goes to the routine after the one above it.
template <class T>
MedianMethod<T> columnsMedian(std::int32_t nCols, std::int32_t lanes, std::ptrdiff_t width);

}  // namespace zetpxl
