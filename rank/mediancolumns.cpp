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
#include <cstring>

#include "core/alloc.h"
#include "rank/medianbins.h"

namespace zetpxl {

namespace {

constexpr std::ptrdiff_t kBins = 16;  // of each half of a sample
constexpr std::ptrdiff_t kStripe = 512;

using Counts [[gnu::vector_size(2 * kBins)]] = std::int16_t;
using HalfCounts [[gnu::vector_size(kBins)]] = std::int16_t;
using HalfBytes [[gnu::vector_size(kBins / 2)]] = std::int8_t;

// What a sample of a bin adds to running totals.
alignas(Counts) constexpr auto kSteps = [] {
    std::array<std::array<std::int16_t, kBins>, kBins> steps{};
    for (std::size_t bin = 0; bin < kBins; ++bin)
        for (std::size_t k = bin; k < kBins; ++k) steps[bin][k] = 1;
    return steps;
}();

// Counts of so many columns, the coarse ones and then each run of fine ones.
struct Columns {
    std::int16_t* counts;
    std::ptrdiff_t count;

    std::int16_t* coarse(std::ptrdiff_t column) const { return counts + column * kBins; }
    std::int16_t* fine(std::size_t run, std::ptrdiff_t column) const {
        return counts + ((static_cast<std::ptrdiff_t>(run) + 1) * count + column) * kBins;
    }
};

void add(const std::int16_t* counts, Counts* sum) {
    Counts other;
    std::memcpy(&other, counts, sizeof other);
    *sum += other;
}

void take(const std::int16_t* counts, Counts* sum) {
    Counts other;
    std::memcpy(&other, counts, sizeof other);
    *sum -= other;
}

void addStep(std::int16_t* counts, std::size_t bin) {
    Counts sum;
    std::memcpy(&sum, counts, sizeof sum);
    add(kSteps[bin].data(), &sum);
    std::memcpy(counts, &sum, sizeof sum);
}

void takeStep(std::int16_t* counts, std::size_t bin) {
    Counts sum;
    std::memcpy(&sum, counts, sizeof sum);
    take(kSteps[bin].data(), &sum);
    std::memcpy(counts, &sum, sizeof sum);
}

template <class T>
void enterRow(const Columns columns, const T* row) {
    for (std::ptrdiff_t i = 0; i < columns.count; ++i) {
        const std::size_t bin = binOf(row[i]);
        addStep(columns.coarse(i), bin / kBins);
        addStep(columns.fine(bin / kBins, i), bin % kBins);
    }
}

template <class T>
void exchangeRows(const Columns columns, const T* leaving, const T* entering) {
    for (std::ptrdiff_t i = 0; i < columns.count; ++i) {
        const std::size_t old = binOf(leaving[i]), bin = binOf(entering[i]);
        Counts sum;
        std::memcpy(&sum, columns.coarse(i), sizeof sum);
        take(kSteps[old / kBins].data(), &sum);
        add(kSteps[bin / kBins].data(), &sum);
        std::memcpy(columns.coarse(i), &sum, sizeof sum);
        takeStep(columns.fine(old / kBins, i), old % kBins);
        addStep(columns.fine(bin / kBins, i), bin % kBins);
    }
}

// How many running totals lie below `rank`. The product sums the bytes of a word.
std::size_t totalsBelow(const Counts& totals, std::int16_t rank) {
    const Counts verdicts = totals < rank;
    std::array<HalfCounts, 2> halves;
    std::memcpy(halves.data(), &verdicts, sizeof verdicts);
    const HalfBytes bytes = __builtin_convertvector(-(halves[0] + halves[1]), HalfBytes);
    std::uint64_t word;
    std::memcpy(&word, &bytes, sizeof word);
    return static_cast<std::size_t>((word * 0x0101010101010101U) >> 56);
}

// A run of fine counts and the column at which the window stood that they are of.
struct FineRun {
    Counts totals;
    std::ptrdiff_t at;
};

struct Window {
    std::ptrdiff_t step;   // from a column to the next of its lane
    std::ptrdiff_t reach;  // columns from the first to the one behind the last
};

void bringUpToDate(const Columns columns, const Window window, std::size_t run, std::ptrdiff_t at, FineRun* fine) {
    const std::int16_t* counts = columns.fine(run, 0);
    Counts totals = fine->totals;
    if (2 * (at - fine->at) > window.reach) {
        totals = Counts{};
        for (std::ptrdiff_t i = at; i < at + window.reach; i += window.step) add(counts + i * kBins, &totals);
    } else {
        for (std::ptrdiff_t i = fine->at; i < at; i += window.step) {
            add(counts + (i + window.reach) * kBins, &totals);
            take(counts + i * kBins, &totals);
        }
    }
    fine->totals = totals;
    fine->at = at;
}

// Sizes by value: bytes that are written could be any of the record's.
template <class T>
void medianLane(const Columns columns, const Window window, std::ptrdiff_t lane, std::ptrdiff_t end, std::int16_t rank,
                T* out) {
    std::array<FineRun, kBins> fine;
    for (FineRun& run : fine) run = {Counts{}, -window.reach};
    Counts coarse{};
    std::array<std::int16_t, kBins + 1> totals{};  // behind a 0
    for (std::ptrdiff_t i = lane; i < window.reach; i += window.step) add(columns.coarse(i), &coarse);
    for (std::ptrdiff_t x = lane; x < end; x += window.step) {
        std::memcpy(totals.data() + 1, &coarse, sizeof coarse);
        const std::size_t high = totalsBelow(coarse, rank);
        bringUpToDate(columns, window, high, x, &fine[high]);
        const auto rest = static_cast<std::int16_t>(rank - totals[high]);
        const std::size_t low = totalsBelow(fine[high].totals, rest);
        out[x] = sampleOf<T>(static_cast<std::uint32_t>(high * kBins + low));
        if (x + window.step >= end) break;
        add(columns.coarse(x + window.reach), &coarse);
        take(columns.coarse(x), &coarse);
    }
}

template <class T>
void columnsRow(const MedianRow<T>& row) {
    const Columns columns{static_cast<std::int16_t*>(row.scratch), (row.width + row.nCols - 1) * row.lanes};
    if (row.leaving) {
        exchangeRows(columns, row.leaving, row.rows[row.nRows - 1]);
    } else {
        std::fill_n(columns.counts, columns.count * kBins * (kBins + 1), std::int16_t{0});
        for (std::int32_t r = 0; r < row.nRows; ++r) enterRow(columns, row.rows[r]);
    }
    const Window window{row.lanes, std::ptrdiff_t{row.nCols} * row.lanes};
    const auto rank = static_cast<std::int16_t>(row.nRows * row.nCols / 2 + 1);
    for (std::ptrdiff_t lane = 0; lane < row.lanes; ++lane)
        medianLane(columns, window, lane, row.width * row.lanes, rank, row.out);
}

}  // namespace

bool servesColumns(std::int32_t nCols, std::int32_t nRows) {
    return nRows >= 5 && std::int64_t{nCols} * nRows <= INT16_MAX;
}

template <class T>
MedianMethod<T> columnsMedian(std::int32_t nCols, std::int32_t lanes, std::ptrdiff_t width) {
    const std::ptrdiff_t widest = std::max<std::ptrdiff_t>(kStripe / lanes, 1);
    const std::ptrdiff_t columns = sizeProduct(std::min(width, widest) + nCols - 1, lanes);
    return {columnsRow<T>, sizeProduct(columns, kBins * (kBins + 1), sizeof(std::int16_t)), widest};
}

template MedianMethod<std::uint8_t> columnsMedian(std::int32_t nCols, std::int32_t lanes, std::ptrdiff_t width);
template MedianMethod<std::int8_t> columnsMedian(std::int32_t nCols, std::int32_t lanes, std::ptrdiff_t width);

}  // namespace zetpxl
