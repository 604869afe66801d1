// median.1 small windows other than odd squares, which have networks of their own: samples enter a pool one by one, and the
//          pool's least and greatest, which can no longer be the median, leave it ("forgetful selection"); exchanges run
//          over many pixels at once
// median.2 8-bit samples in windows of few rows or very many samples: a histogram that slides along the row, and a median
//          that moves with it (Huang, Yang and Tang, "A fast two-dimensional median filtering algorithm", 1979)
// median.3 16-bit samples: the same with a coarse histogram of the high bytes above the fine one
// median.4 32-bit samples in large windows: selection in a copy of the window
#include "rank/medianrow.h"

#include <algorithm>
#include <array>
#include <limits>

#include "core/alloc.h"
#include "rank/medianbins.h"
#include "rank/mediancolumns.h"
#include "rank/mediannetwork.h"

namespace zetpxl {

namespace {

// Results that one pool serves at a time.
constexpr std::ptrdiff_t kPoolWidth = 256;

template <class T>
void exchange(T* __restrict a, T* __restrict b, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const T low = std::min(a[i], b[i]);
        b[i] = std::max(a[i], b[i]);
        a[i] = low;
    }
}

// An even window gets a sample above all others, so that its upper middle sample is the middle one.
constexpr std::ptrdiff_t oddCount(std::ptrdiff_t n) { return n | 1; }
constexpr std::ptrdiff_t poolSize(std::ptrdiff_t n) { return (oddCount(n) + 3) / 2; }

template <class T>
void takeSample(const MedianRow<T>& row, std::ptrdiff_t index, std::ptrdiff_t first, std::ptrdiff_t count, T* slot) {
    if (index >= std::ptrdiff_t{row.nRows} * row.nCols)
        return static_cast<void>(std::fill_n(slot, count, std::numeric_limits<T>::max()));
    const T* samples = row.rows[index / row.nCols] + (index % row.nCols) * row.lanes + first;
    std::copy_n(samples, count, slot);
}

// Brings the least of `size` pool rows to the first and the greatest to the last.
template <class T>
void moveExtremes(T* pool, std::ptrdiff_t size, std::ptrdiff_t count) {
    const auto slot = [pool](std::ptrdiff_t i) { return pool + i * kPoolWidth; };
    for (std::ptrdiff_t i = 0; i < size / 2; ++i) exchange(slot(i), slot(size - 1 - i), count);
    const std::ptrdiff_t half = (size + 1) / 2;
    for (std::ptrdiff_t i = 1; i < half; ++i) exchange(slot(0), slot(i), count);
    for (std::ptrdiff_t i = size - half; i < size - 1; ++i) exchange(slot(i), slot(size - 1), count);
}

template <class T>
void selectInPool(const MedianRow<T>& row, std::ptrdiff_t first, std::ptrdiff_t count) {
    T* pool = static_cast<T*>(row.scratch);
    const std::ptrdiff_t n = std::ptrdiff_t{row.nRows} * row.nCols;
    std::ptrdiff_t size = poolSize(n);
    for (std::ptrdiff_t i = 0; i < size; ++i) takeSample(row, i, first, count, pool + i * kPoolWidth);
    std::ptrdiff_t next = size;
    while (size > 3) {
        moveExtremes(pool, size, count);
        pool += kPoolWidth;  // the least leaves; the next sample takes the place of the greatest
        size -= 1;
        takeSample(row, next++, first, count, pool + (size - 1) * kPoolWidth);
    }
    moveExtremes(pool, size, count);
    std::copy_n(pool + kPoolWidth, count, row.out + first);
}

template <class T>
void poolRow(const MedianRow<T>& row) {
    const std::ptrdiff_t samples = row.width * row.lanes;
    for (std::ptrdiff_t first = 0; first < samples; first += kPoolWidth)
        selectInPool(row, first, std::min(kPoolWidth, samples - first));
}

template <class T>
void copyRow(const MedianRow<T>& row) {
    std::copy_n(row.rows[0], row.width * row.lanes, row.out);
}

// Counts of samples, and where the median stands in them: `below` counts the samples of bins before `bin`. Held by value
// while a row is filtered, so that it stays in registers beside the counts.
struct Standing {
    std::int32_t bin;
    std::int32_t below;

    void change(std::int32_t* counts, std::uint32_t sample, std::int32_t by) {
        counts[sample] += by;
        below += static_cast<std::int32_t>(sample) < bin ? by : 0;
    }
    // The least bin with `rank` samples up to it.
    void find(const std::int32_t* counts, std::int32_t rank) {
        while (below >= rank) below -= counts[--bin];
        while (below + counts[bin] < rank) below += counts[bin++];
    }
};

struct ByteHistogram {
    static constexpr std::size_t kCounts = 256;

    Standing at{0, 0};
    std::int32_t* counts;

    void change(std::uint32_t sample, std::int32_t by) { at.change(counts, sample, by); }
    std::uint32_t find(std::int32_t rank) {
        at.find(counts, rank);
        return static_cast<std::uint32_t>(at.bin);
    }
};

// The high bytes' counts stand before those of whole samples.
struct WordHistogram {
    static constexpr std::size_t kCounts = 256 + 65536;

    Standing at{0, 0};
    std::int32_t* counts;

    void change(std::uint32_t sample, std::int32_t by) {
        at.change(counts, sample >> 8, by);
        counts[256 + sample] += by;
    }
    std::uint32_t find(std::int32_t rank) {
        at.find(counts, rank);
        const std::int32_t* fine = counts + 256;
        std::uint32_t bin = static_cast<std::uint32_t>(at.bin) << 8;
        for (std::int32_t rest = rank - at.below; fine[bin] < rest;) rest -= fine[bin++];
        return bin;
    }
};

template <class T, class Histogram>
void changeColumn(const MedianRow<T>& row, std::ptrdiff_t sample, std::int32_t by, Histogram* histogram) {
    for (std::int32_t r = 0; r < row.nRows; ++r) histogram->change(binOf(row.rows[r][sample]), by);
}

template <class T, class Histogram>
void histogramLane(const MedianRow<T>& row, std::ptrdiff_t lane, Histogram histogram) {
    const auto rank = static_cast<std::int32_t>(std::int64_t{row.nRows} * row.nCols / 2 + 1);
    const std::ptrdiff_t reach = std::ptrdiff_t{row.nCols} * row.lanes;
    const std::ptrdiff_t end = row.width * row.lanes;
    for (std::ptrdiff_t q = lane; q < reach; q += row.lanes) changeColumn(row, q, 1, &histogram);
    for (std::ptrdiff_t x = lane; x < end; x += row.lanes) {
        row.out[x] = sampleOf<T>(histogram.find(rank));
        if (x + row.lanes >= end) break;
        changeColumn(row, x, -1, &histogram);
        changeColumn(row, x + reach, 1, &histogram);
    }
    // The last window leaves, which costs less than clearing all counts.
    const std::ptrdiff_t last = end - row.lanes + lane;
    for (std::ptrdiff_t q = 0; q < reach; q += row.lanes) changeColumn(row, last + q, -1, &histogram);
}

template <class T, class Histogram>
void histogramRow(const MedianRow<T>& row) {
    for (std::ptrdiff_t lane = 0; lane < row.lanes; ++lane) {
        Histogram histogram;
        histogram.counts = static_cast<std::int32_t*>(row.scratch);
        histogramLane(row, lane, histogram);
    }
}

template <class T>
void selectionRow(const MedianRow<T>& row) {
    T* window = static_cast<T*>(row.scratch);
    const std::ptrdiff_t n = std::ptrdiff_t{row.nRows} * row.nCols;
    for (std::ptrdiff_t i = 0; i < row.width * row.lanes; ++i) {
        T* end = window;
        for (std::int32_t r = 0; r < row.nRows; ++r)
            for (std::int32_t q = 0; q < row.nCols; ++q) *end++ = row.rows[r][i + std::ptrdiff_t{q} * row.lanes];
        std::nth_element(window, window + n / 2, end);
        row.out[i] = window[n / 2];
    }
}

// Window sizes up to which exchanging is cheaper than the method for large windows.
template <class T>
constexpr std::ptrdiff_t kPoolLimit = sizeof(T) == 1 ? 36 : 64;

template <class T>
MedianMethod<T> largeMethod(std::int32_t nCols, std::int32_t nRows) {
    constexpr auto word = static_cast<std::ptrdiff_t>(sizeof(std::int32_t));
    if constexpr (sizeof(T) == 1) return {histogramRow<T, ByteHistogram>, word * ByteHistogram::kCounts};
    if constexpr (sizeof(T) == 2) return {histogramRow<T, WordHistogram>, word * WordHistogram::kCounts};
    return plainMedian<T>(nCols, nRows);
}

}  // namespace

template <class T>
MedianMethod<T> plainMedian(std::int32_t nCols, std::int32_t nRows) {
    return {selectionRow<T>, sizeProduct(nCols, nRows, static_cast<std::ptrdiff_t>(sizeof(T)))};
}

template <class T>
MedianMethod<T> chooseMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes, std::ptrdiff_t width) {
    const std::ptrdiff_t n = std::ptrdiff_t{nCols} * nRows;
    if (n == 1) return {copyRow<T>, 1};
    if (const MedianMethod<T> network = networkMedian<T>(nCols, nRows, lanes); network.row) return network;
    if (n <= kPoolLimit<T>) return {poolRow<T>, poolSize(n) * kPoolWidth * static_cast<std::ptrdiff_t>(sizeof(T))};
    if constexpr (sizeof(T) == 1)
        if (servesColumns(nCols, nRows)) return columnsMedian<T>(nCols, lanes, width);
    return largeMethod<T>(nCols, nRows);
}

template MedianMethod<std::uint8_t> plainMedian(std::int32_t nCols, std::int32_t nRows);
template MedianMethod<std::uint8_t> chooseMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes,
                                                 std::ptrdiff_t width);
template MedianMethod<std::int8_t> plainMedian(std::int32_t nCols, std::int32_t nRows);
template MedianMethod<std::int8_t> chooseMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes,
                                                std::ptrdiff_t width);
template MedianMethod<std::uint16_t> plainMedian(std::int32_t nCols, std::int32_t nRows);
template MedianMethod<std::uint16_t> chooseMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes,
                                                  std::ptrdiff_t width);
template MedianMethod<std::int16_t> plainMedian(std::int32_t nCols, std::int32_t nRows);
template MedianMethod<std::int16_t> chooseMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes,
                                                 std::ptrdiff_t width);
template MedianMethod<std::int32_t> plainMedian(std::int32_t nCols, std::int32_t nRows);
template MedianMethod<std::int32_t> chooseMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes,
                                                 std::ptrdiff_t width);

}  // namespace zetpxl
