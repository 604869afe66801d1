//   network.1 windows share what they have in common: each column of a window is sorted once, runs of columns are merged once
//             and used again by the windows to the right; the last merge keeps only what the median needs
//   network.2 merges are Batcher's (Knuth, "The Art of Computer Programming", 5.3.4); an exchange half of whose result nobody
//             reads is left to the compiler to drop, which it can since every index is a constant
//   network.3 sorted runs lie in planes of scratch, one plane an order, a piece of the row at a time, so that they stay in the
//             first cache
#include "rank/mediannetwork.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "rank/samplevectors.h"

namespace zetpxl {

namespace {

template <class V>
[[gnu::always_inline]] inline void exchange(V& a, V& b) {
    const V low = a < b ? a : b;
    b = a < b ? b : a;
    a = low;
}

struct Comparator {
    std::int16_t low;
    std::int16_t high;
};

constexpr std::size_t kMostWires = 256;
constexpr std::size_t kMostComparators = 1200;

struct Wires {
    std::array<std::int16_t, kMostWires> at{};
    std::size_t count = 0;

    constexpr void add(std::int16_t wire) { at[count++] = wire; }
    constexpr Wires everyOther(std::size_t first) const {
        Wires some;
        for (std::size_t i = first; i < count; i += 2) some.add(at[i]);
        return some;
    }
};

struct Comparators {
    std::array<Comparator, kMostComparators> at{};
    std::size_t count = 0;

    constexpr void add(std::int16_t low, std::int16_t high) { at[count++] = {low, high}; }
};

// Merges two sorted runs; the result names the wires in order.
constexpr Wires merge(const Wires& a, const Wires& b, Comparators* net) {
    if (a.count == 0) return b;
    if (b.count == 0) return a;
    Wires out;
    if (a.count == 1 && b.count == 1) {
        net->add(a.at[0], b.at[0]);
        out.add(a.at[0]);
        out.add(b.at[0]);
        return out;
    }
    const Wires even = merge(a.everyOther(0), b.everyOther(0), net);
    const Wires odd = merge(a.everyOther(1), b.everyOther(1), net);
    out.add(even.at[0]);
    for (std::size_t i = 0; i < odd.count || i + 1 < even.count; ++i) {
        if (i < odd.count && i + 1 < even.count) net->add(odd.at[i], even.at[i + 1]);
        if (i < odd.count) out.add(odd.at[i]);
        if (i + 1 < even.count) out.add(even.at[i + 1]);
    }
    return out;
}

constexpr Wires wires(std::size_t first, std::size_t count) {
    Wires run;
    for (std::size_t i = 0; i < count; ++i) run.add(static_cast<std::int16_t>(first + i));
    return run;
}

constexpr Wires sort(std::size_t first, std::size_t count, Comparators* net) {
    if (count == 1) return wires(first, 1);
    return merge(sort(first, count / 2, net), sort(first + count / 2, count - count / 2, net), net);
}

struct Network {
    Comparators comparators;
    Wires order;
};

constexpr Network sortNetwork(std::size_t count) {
    Network net;
    net.order = sort(0, count, &net.comparators);
    return net;
}

constexpr Network mergeNetwork(std::size_t a, std::size_t b) {
    Network net;
    net.order = merge(wires(0, a), wires(a, b), &net.comparators);
    return net;
}

template <std::size_t kCount>
constexpr Network kSort = sortNetwork(kCount);
template <std::size_t kA, std::size_t kB>
constexpr Network kMerge = mergeNetwork(kA, kB);
static_assert(kMerge<4, 4>.comparators.count == 9 && kSort<5>.comparators.count == 9);

// Folds are cut into runs, for compilers bound their depth.
constexpr std::size_t kRun = 64;

template <const Network& kNet, std::size_t kFirst, class V, std::size_t... kAt>
[[gnu::always_inline]] inline void exchangeRun(V* v, std::index_sequence<kAt...>) {
    constexpr auto at = [](std::size_t i) { return kNet.comparators.at[kFirst + i]; };
    (exchange(v[at(kAt).low], v[at(kAt).high]), ...);
}

template <const Network& kNet, class V, std::size_t kFirst = 0>
[[gnu::always_inline]] inline void exchangeAll(V* v) {
    constexpr std::size_t rest = kNet.comparators.count - kFirst;
    if constexpr (rest <= kRun) {
        exchangeRun<kNet, kFirst>(v, std::make_index_sequence<rest>());
    } else {
        exchangeRun<kNet, kFirst>(v, std::make_index_sequence<kRun>());
        exchangeAll<kNet, V, kFirst + kRun>(v);
    }
}

// Planes of one run: order k of the sorted samples stands at `at + k * stride`.
template <class T>
struct Planes {
    T* at;
    std::ptrdiff_t stride;
};

// Results that one set of planes serves, in samples: two vectors at the least, for windows overlap.
template <class T, std::size_t kSide>
constexpr std::ptrdiff_t kPiece = (kSide <= 5 ? 32 : 4) * kVectorSamples<T>;

template <class T, std::size_t kSide>
constexpr std::ptrdiff_t planeStride(std::int32_t lanes) {
    constexpr std::ptrdiff_t vector = kVectorSamples<T>;
    const std::ptrdiff_t reach = static_cast<std::ptrdiff_t>(kSide) * lanes;
    return kPiece<T, kSide> + (reach + vector - 1) / vector * vector + 2 * vector;
}

// Columns in the runs that are kept: those of half a window, and what they are merged from.
constexpr std::size_t largerPart(std::size_t columns) { return (columns + 1) / 2; }

constexpr bool isKept(std::size_t columns, std::size_t of) {
    if (columns == of || columns == 1) return true;
    if (of == 1) return false;
    return isKept(columns, largerPart(of)) || isKept(columns, of - largerPart(of));
}

// Planes that lie before the run of so many columns.
constexpr std::size_t planesBefore(std::size_t columns, std::size_t side) {
    std::size_t planes = 0;
    for (std::size_t k = 1; k < columns; ++k) planes += isKept(k, side / 2) ? k * side : 0;
    return planes;
}

template <class T, std::size_t kSide, std::size_t kColumns>
Planes<T> planesOf(const MedianRow<T>& row) {
    const std::ptrdiff_t stride = planeStride<T, kSide>(row.lanes);
    return {static_cast<T*>(row.scratch) + static_cast<std::ptrdiff_t>(planesBefore(kColumns, kSide)) * stride, stride};
}

template <class T>
[[gnu::always_inline]] inline void loadVector(const T* from, std::ptrdiff_t count, Vector<T>* v) {
    if (count >= kVectorSamples<T>) return static_cast<void>(std::memcpy(v, from, sizeof *v));
    *v = Vector<T>{};
    std::memcpy(v, from, static_cast<std::size_t>(count) * sizeof(T));
}

template <class T, std::size_t kSide>
[[gnu::always_inline]] inline void sortColumnsAt(const std::array<const T*, kSide>& rows, std::ptrdiff_t x,
                                                 std::ptrdiff_t count, const Planes<T>& to) {
    Vector<T> v[kSide];
    unrolled<kSide>([&](auto k) { loadVector(rows[k] + x, count, &v[k]); });
    exchangeAll<kSort<kSide>>(v);
    unrolled<kSide>([&](auto k) {
        std::memcpy(to.at + static_cast<std::ptrdiff_t>(k) * to.stride + x, &v[kSort<kSide>.order.at[k]], sizeof v[0]);
    });
}

// `count` columns from sample `first` on. The last vector of a row overlaps the one before, so as to end with the row.
template <class T, std::size_t kSide>
void sortColumns(const MedianRow<T>& row, std::ptrdiff_t first, std::ptrdiff_t count) {
    constexpr std::ptrdiff_t vector = kVectorSamples<T>;
    const Planes<T> to = planesOf<T, kSide, 1>(row);
    std::array<const T*, kSide> rows;
    for (std::size_t k = 0; k < kSide; ++k) rows[k] = row.rows[k] + first;
    const std::ptrdiff_t there = (row.width + static_cast<std::ptrdiff_t>(kSide) - 1) * row.lanes - first;
    if (there < vector) return sortColumnsAt<T, kSide>(rows, 0, there, to);
    const std::ptrdiff_t whole = std::min(count + vector - 1, there) / vector * vector;
    for (std::ptrdiff_t x = 0; x < whole; x += vector) sortColumnsAt<T, kSide>(rows, x, vector, to);
    if (whole < count) sortColumnsAt<T, kSide>(rows, there - vector, vector, to);
}

template <class T, std::size_t kCount>
[[gnu::always_inline]] inline void loadRun(const Planes<T>& from, std::ptrdiff_t x, Vector<T>* v) {
    unrolled<kCount>(
        [&](auto k) { std::memcpy(&v[k], from.at + static_cast<std::ptrdiff_t>(k) * from.stride + x, sizeof v[0]); });
}

template <class T, std::size_t kA, std::size_t kB>
void mergePlanes(const Planes<T>& a, const Planes<T>& b, std::ptrdiff_t shift, const Planes<T>& to,
                 std::ptrdiff_t count) {
    for (std::ptrdiff_t x = 0; x < count; x += kVectorSamples<T>) {
        Vector<T> v[kA + kB];
        loadRun<T, kA>(a, x, v);
        loadRun<T, kB>(b, x + shift, v + kA);
        exchangeAll<kMerge<kA, kB>>(v);
        unrolled<kA + kB>([&](auto k) {
            std::memcpy(to.at + static_cast<std::ptrdiff_t>(k) * to.stride + x, &v[kMerge<kA, kB>.order.at[k]],
                        sizeof v[0]);
        });
    }
}

// Brings the planes of runs of two columns and more up to date for windows that begin at `count` samples.
template <class T, std::size_t kSide>
void mergeColumns(const MedianRow<T>& row, std::ptrdiff_t count) {
    unrolled<kSide / 2>([&](auto before) {
        constexpr std::size_t columns = before + 1;
        if constexpr (columns > 1 && isKept(columns, kSide / 2)) {
            constexpr std::size_t larger = largerPart(columns);
            constexpr std::size_t smaller = columns - larger;
            mergePlanes<T, larger * kSide, smaller * kSide>(
                planesOf<T, kSide, larger>(row), planesOf<T, kSide, smaller>(row),
                static_cast<std::ptrdiff_t>(larger) * row.lanes, planesOf<T, kSide, columns>(row),
                count + static_cast<std::ptrdiff_t>(kSide - columns) * row.lanes);
        }
    });
}

// The median of two halves and the column behind them. Of the halves' order only the middle counts, for a column holds
// fewer samples than half a window.
template <class T, std::size_t kSide>
[[gnu::always_inline]] inline void medianOfRuns(const Planes<T>& halves, const Planes<T>& column, std::ptrdiff_t x,
                                                std::ptrdiff_t lanes, Vector<T>* out) {
    constexpr std::size_t half = kSide / 2;
    constexpr std::size_t run = half * kSide;
    constexpr std::size_t middle = kSide * half + half;  // of the whole window, from 0
    Vector<T> v[2 * run];
    Vector<T> last[kSide];
    loadRun<T, run>(halves, x, v);
    loadRun<T, run>(halves, x + static_cast<std::ptrdiff_t>(half) * lanes, v + run);
    loadRun<T, kSide>(column, x + 2 * static_cast<std::ptrdiff_t>(half) * lanes, last);
    exchangeAll<kMerge<run, run>>(v);
    constexpr auto& order = kMerge<run, run>.order.at;
    // The least over all ways to take so many of both of the greatest that was taken.
    Vector<T> median = v[order[middle]];
    unrolled<kSide>([&](auto k) {
        const Vector<T> other = v[order[middle - 1 - k]];
        const Vector<T> greatest = other < last[k] ? last[k] : other;
        median = greatest < median ? greatest : median;
    });
    *out = median;
}

// Of three sorted columns: the middle one of the greatest least, the middle middle and the least greatest.
template <class T>
[[gnu::always_inline]] inline void medianOfThree(const Planes<T>& columns, std::ptrdiff_t x, std::ptrdiff_t lanes,
                                                 Vector<T>* out) {
    Vector<T> v[9];
    unrolled<3>([&](auto k) { loadRun<T, 3>(columns, x + static_cast<std::ptrdiff_t>(k) * lanes, v + 3 * k); });
    exchange(v[0], v[3]);
    exchange(v[3], v[6]);  // v[6]: the greatest of the least
    exchange(v[1], v[4]);
    exchange(v[4], v[7]);
    exchange(v[1], v[4]);  // v[4]: the middle of the middle
    exchange(v[5], v[8]);
    exchange(v[2], v[5]);  // v[2]: the least of the greatest
    exchange(v[2], v[4]);
    exchange(v[4], v[6]);
    exchange(v[2], v[4]);
    *out = v[4];
}

// Where windows find their columns: fixed before the loop, since bytes that are written could be any of a record's.
template <class T>
struct Runs {
    Planes<T> columns;
    Planes<T> halves;
    std::ptrdiff_t lanes;
};

template <class T, std::size_t kSide>
[[gnu::always_inline]] inline void medianAt(const Runs<T>& runs, std::ptrdiff_t x, Vector<T>* out) {
    if constexpr (kSide == 3) {
        medianOfThree<T>(runs.columns, x, runs.lanes, out);
    } else {
        medianOfRuns<T, kSide>(runs.halves, runs.columns, x, runs.lanes, out);
    }
}

template <class T, std::size_t kSide>
void medianPiece(const MedianRow<T>& row, std::ptrdiff_t count, T* out) {
    const Runs<T> runs{planesOf<T, kSide, 1>(row), planesOf<T, kSide, kSide / 2>(row), row.lanes};
    std::ptrdiff_t x = 0;
    for (; x + kVectorSamples<T> <= count; x += kVectorSamples<T>) {
        Vector<T> median;
        medianAt<T, kSide>(runs, x, &median);
        std::memcpy(out + x, &median, sizeof median);
    }
    if (x == count) return;
    Vector<T> median;
    medianAt<T, kSide>(runs, x, &median);
    std::memcpy(out + x, &median, static_cast<std::size_t>(count - x) * sizeof(T));
}

template <class T, std::size_t kSide>
void networkRow(const MedianRow<T>& row) {
    const std::ptrdiff_t samples = row.width * row.lanes;
    for (std::ptrdiff_t first = 0; first < samples; first += kPiece<T, kSide>) {
        const std::ptrdiff_t count = std::min(kPiece<T, kSide>, samples - first);
        sortColumns<T, kSide>(row, first, count + static_cast<std::ptrdiff_t>(kSide - 1) * row.lanes);
        mergeColumns<T, kSide>(row, count);
        medianPiece<T, kSide>(row, count, row.out + first);
    }
}

template <class T, std::size_t kSide>
MedianMethod<T> methodOf(std::int32_t lanes) {
    const auto planes = static_cast<std::ptrdiff_t>(planesBefore(kSide / 2 + 1, kSide));
    return {networkRow<T, kSide>, planes * planeStride<T, kSide>(lanes) * static_cast<std::ptrdiff_t>(sizeof(T))};
}

}  // namespace

template <class T>
MedianMethod<T> networkMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes) {
    if (nCols != nRows || lanes > kNetworkLanes) return {};
    if (nCols == 3) return methodOf<T, 3>(lanes);
    if (nCols == 5) return methodOf<T, 5>(lanes);
    if (nCols == 7) return methodOf<T, 7>(lanes);
    if (nCols == 9) return methodOf<T, 9>(lanes);
    if constexpr (sizeof(T) == 2)
        if (nCols == 15) return methodOf<T, 15>(lanes);
    return {};
}

template MedianMethod<std::uint8_t> networkMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes);
template MedianMethod<std::int8_t> networkMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes);
template MedianMethod<std::uint16_t> networkMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes);
template MedianMethod<std::int16_t> networkMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes);
template MedianMethod<std::int32_t> networkMedian(std::int32_t nCols, std::int32_t nRows, std::int32_t lanes);

}  // namespace zetpxl
