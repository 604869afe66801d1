// Ways to the median of every window along a row; all give the same samples.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl {

// A row of windows. `rows` holds nRows pointers to the first window's samples; neighbouring columns lie `lanes` samples
// apart, and lane c of every pixel forms windows of its own. The result is the (n / 2 + 1)-th smallest of n samples.
template <class T>
struct MedianRow {
    const T* const* rows;
    const T* leaving;  // the first row of the window above, if that was the row before
    std::int32_t nRows;
    std::int32_t nCols;
    std::ptrdiff_t width;
    std::int32_t lanes;
    T* out;         // width * lanes samples
    void* scratch;  // of the method, cleared before the first call
};

template <class T>
struct MedianMethod {
    void (*row)(const MedianRow<T>& row);
    std::ptrdiff_t scratchBytes;
    std::ptrdiff_t widest = PTRDIFF_MAX;  // pixels that a row may have
};

// Selection in a copy of each window: slow, for any window.
template <class T>
MedianMethod<T> plainMedian(std::int32_t nCols, std::int32_t nRows);

// The cheapest method for a window of such a size, and rows of such a width or of the widest that it takes.
template <class T>
MedianMethod<T> chooseMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes, std::ptrdiff_t width);

}  // namespace zetpxl
