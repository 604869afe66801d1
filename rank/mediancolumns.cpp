//   columns.1 each column of samples has a histogram, which a new row changes by one sample; a window's histogram is that of
//             its left neighbour with one column less and one more (Perreault and Hébert, "Median filtering in constant
//             time", 2007)
//   columns.2 sixteen coarse counts find the high half of the median, sixteen fine ones below it the low half; of the fine
//             counts only the run that holds the median is brought up to date
//   columns.3 all counts are running totals, so that the place of a rank is the number of counts below it
//   columns.4 rows are cut into stripes whose histograms stay in the second cache
#include "rank/mediancolumns.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "core/alloc.h"
#include "rank/medianbins.h"

namespace zetpxl {

namespace {

constexpr std::ptrdiff_t kBins = 16;  // of each half of a sample
constexpr std::ptrdiff_t kStripe = 512;

using ColumnCounts [[gnu::vector_size(kBins)]] = std::uint8_t;
using WindowCounts [[gnu::vector_size(2 * kBins)]] = std::uint16_t;
using Verdicts [[gnu::vector_size(kBins)]] = std::int8_t;

// What a sample of a bin adds to running totals.
constexpr auto kSteps = [] {
    std::array<std::array<std::uint8_t, kBins>, kBins> steps{};
    for (std::size_t bin = 0; bin < kBins; ++bin)
        for (std::size_t k = bin; k < kBins; ++k) steps[bin][k] = 1;
    return steps;
}();

// Counts of `columns` columns, the coarse ones and then each run of fine ones.
struct Columns {
    std::uint8_t* counts;
    std::ptrdiff_t count;

    std::uint8_t* coarse(std::ptrdiff_t column) const { return counts + column * kBins; }
    std::uint8_t* fine(std::size_t run, std::ptrdiff_t column) const {
        return counts + ((static_cast<std::ptrdiff_t>(run) + 1) * count + column) * kBins;
    }
};

void load(const std::uint8_t* from, ColumnCounts* counts) { std::memcpy(counts, from, sizeof *counts); }
void store(const ColumnCounts& counts, std::uint8_t* to) { std::memcpy(to, &counts, sizeof counts); }

void addStep(std::uint8_t* counts, std::size_t bin) {
    ColumnCounts sum, step;
    load(counts, &sum);
    load(kSteps[bin].data(), &step);
    store(sum + step, counts);
}

void takeStep(std::uint8_t* counts, std::size_t bin) {
    ColumnCounts sum, step;
    load(counts, &sum);
    load(kSteps[bin].data(), &step);
    store(sum - step, counts);
}

template <class T>
void enterRow(const Columns& columns, const T* row) {
    for (std::ptrdiff_t i = 0; i < columns.count; ++i) {
        const std::size_t bin = binOf(row[i]);
        addStep(columns.coarse(i), bin / kBins);
        addStep(columns.fine(bin / kBins, i), bin % kBins);
    }
}

template <class T>
void exchangeRows(const Columns& columns, const T* leaving, const T* entering) {
    for (std::ptrdiff_t i = 0; i < columns.count; ++i) {
        const std::size_t old = binOf(leaving[i]), bin = binOf(entering[i]);
        ColumnCounts sum, less, more;
        load(columns.coarse(i), &sum);
        load(kSteps[old / kBins].data(), &less);
        load(kSteps[bin / kBins].data(), &more);
        store(sum - less + more, columns.coarse(i));
        takeStep(columns.fine(old / kBins, i), old % kBins);
        addStep(columns.fine(bin / kBins, i), bin % kBins);
    }
}

void addColumn(const std::uint8_t* column, WindowCounts* window) {
    ColumnCounts counts;
    load(column, &counts);
    *window += __builtin_convertvector(counts, WindowCounts);
}

void takeColumn(const std::uint8_t* column, WindowCounts* window) {
    ColumnCounts counts;
    load(column, &counts);
    *window -= __builtin_convertvector(counts, WindowCounts);
}

// How many running totals lie below `rank`: they are the first ones.
std::size_t totalsBelow(const WindowCounts& totals, std::uint16_t rank) {
    const Verdicts verdicts = __builtin_convertvector(totals < rank, Verdicts);
    std::array<std::uint64_t, 2> halves;
    std::memcpy(halves.data(), &verdicts, sizeof verdicts);
    return static_cast<std::size_t>(std::popcount(halves[0]) + std::popcount(halves[1])) / 8;
}

// A run of fine counts and the column at which the window stood that they are of.
struct FineRun {
    WindowCounts totals;
    std::ptrdiff_t at;
};

struct Window {
    std::ptrdiff_t step;   // from a column to the next of its lane
    std::ptrdiff_t reach;  // columns from the first to the one behind the last
};

void bringUpToDate(const Columns& columns, const Window& window, std::size_t run, std::ptrdiff_t at, FineRun* fine) {
    const std::uint8_t* counts = columns.fine(run, 0);
    WindowCounts totals = fine->totals;
    if (2 * (at - fine->at) > window.reach) {
        totals = WindowCounts{};
        for (std::ptrdiff_t i = at; i < at + window.reach; i += window.step) addColumn(counts + i * kBins, &totals);
    } else {
        for (std::ptrdiff_t i = fine->at; i < at; i += window.step) {
            addColumn(counts + (i + window.reach) * kBins, &totals);
            takeColumn(counts + i * kBins, &totals);
        }
    }
    fine->totals = totals;
    fine->at = at;
}

template <class T>
void medianLane(const MedianRow<T>& row, const Columns& columns, std::ptrdiff_t lane) {
    const Window window{row.lanes, std::ptrdiff_t{row.nCols} * row.lanes};
    const auto rank = static_cast<std::uint16_t>(row.nRows * row.nCols / 2 + 1);
    const std::ptrdiff_t end = row.width * row.lanes;
    std::array<FineRun, kBins> fine;
    for (FineRun& run : fine) run = {WindowCounts{}, -window.reach};
    WindowCounts coarse{};
    std::array<std::uint16_t, kBins + 1> totals{};  // behind a 0
    for (std::ptrdiff_t i = lane; i < window.reach; i += row.lanes) addColumn(columns.coarse(i), &coarse);
    for (std::ptrdiff_t x = lane; x < end; x += row.lanes) {
        std::memcpy(totals.data() + 1, &coarse, sizeof coarse);
        const std::size_t high = totalsBelow(coarse, rank);
        bringUpToDate(columns, window, high, x, &fine[high]);
        const auto rest = static_cast<std::uint16_t>(rank - totals[high]);
        const std::size_t low = totalsBelow(fine[high].totals, rest);
        row.out[x] = sampleOf<T>(static_cast<std::uint32_t>(high * kBins + low));
        if (x + row.lanes >= end) break;
        addColumn(columns.coarse(x + window.reach), &coarse);
        takeColumn(columns.coarse(x), &coarse);
    }
}

template <class T>
void columnsRow(const MedianRow<T>& row) {
    const Columns columns{static_cast<std::uint8_t*>(row.scratch), (row.width + row.nCols - 1) * row.lanes};
    if (row.leaving) {
        exchangeRows(columns, row.leaving, row.rows[row.nRows - 1]);
    } else {
        std::fill_n(columns.counts, columns.count * kBins * (kBins + 1), std::uint8_t{0});
        for (std::int32_t r = 0; r < row.nRows; ++r) enterRow(columns, row.rows[r]);
    }
    for (std::ptrdiff_t lane = 0; lane < row.lanes; ++lane) medianLane(row, columns, lane);
}

}  // namespace

bool servesColumns(std::int32_t nCols, std::int32_t nRows) {
    return nRows >= 5 && nRows <= UINT8_MAX && std::int64_t{nCols} * nRows <= UINT16_MAX;
}

template <class T>
MedianMethod<T> columnsMedian(std::int32_t nCols, std::int32_t lanes, std::ptrdiff_t width) {
    const std::ptrdiff_t widest = std::max<std::ptrdiff_t>(kStripe / lanes, 1);
    const std::ptrdiff_t columns = sizeProduct(std::min(width, widest) + nCols - 1, lanes);
    return {columnsRow<T>, sizeProduct(columns, kBins * (kBins + 1)), widest};
}

template MedianMethod<std::uint8_t> columnsMedian(std::int32_t nCols, std::int32_t lanes, std::ptrdiff_t width);
template MedianMethod<std::int8_t> columnsMedian(std::int32_t nCols, std::int32_t lanes, std::ptrdiff_t width);

}  // namespace zetpxl
