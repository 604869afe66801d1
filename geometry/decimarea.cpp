// Decimation by averaging the area that a destination pixel covers.
//   area.1 sums are single precision: source rows are added up cell by cell, then the sums of a row of cells along x
//   area.2 a sample that crosses a cell's edge is shared by two cells; its product with the share is double precision
//   area.3 edges within the tolerance of a sample's edge are that edge
//   area.4 the divisor is the cell's full area, also where the source ends inside the cell
//   area.5 a cell that ends with a crossing is written from the sum before that is rounded to single precision
#include <algorithm>
#include <cmath>
#include <type_traits>

#include "core/alloc.h"
#include "geometry/decimboxes.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetDecimate", "owndecim"};

// Where the next sample of an axis falls.
struct AreaStep {
    bool crosses;
    bool closes;    // the cell is complete with this sample
    double before;  // of a crossing: the share of the cell that ends, and of the one that begins
    double after;
};

// The samples of an axis in order.
struct AreaAxis {
    double edge;  // of the cell at hand
    float index;  // of the next sample
    double share;
    double step;
    bool first;
};

AreaAxis startAxis(float position, float step) {
    const double edge = static_cast<double>(position);
    const auto index = static_cast<float>(std::trunc(edge + kAreaTolerance));
    return {edge, index, 1 - (edge - static_cast<double>(index)), static_cast<double>(step), true};
}

AreaStep nextSample(AreaAxis* axis) {
    axis->index += 1;
    const auto index = static_cast<double>(axis->index);
    AreaStep step{};
    if (index < axis->edge + kAreaTolerance) {
        step.closes = !(index < axis->edge);
    } else {
        step.crosses = true;
        step.closes = !axis->first;
        step.before = axis->edge - std::trunc(axis->edge);
        if (step.closes) axis->share = 1 - step.before;
        step.after = axis->share;
    }
    if (step.crosses || step.closes) axis->edge += axis->step;
    axis->first = false;
    return step;
}

// The cells of a row: cell k begins with the crossing sample at `first`, if it has one, goes on with whole samples and may
// end with a crossing sample again.
struct AreaCells {
    std::ptrdiff_t count;
    std::int32_t* first;
    std::int32_t* wholes;
    std::int32_t* last;  // samples from the first to a crossing last one, or to the one behind the last
    double* begin;       // the first sample's share; below 0 when there is none
    double* end;
    std::int32_t mostBetween;
};

constexpr double kNoCrossing = -1;

// Cuts `nColumns` sums into at most `most` cells.
void planCells(const DecimateBlock& block, std::ptrdiff_t nColumns, std::ptrdiff_t most, AreaCells* cells) {
    AreaAxis axis = startAxis(block.xPos, block.xStep);
    std::ptrdiff_t k = 0;
    const auto open = [cells](std::ptrdiff_t cell, std::ptrdiff_t column, double share) {
        cells->first[cell] = static_cast<std::int32_t>(column);
        cells->wholes[cell] = 0;
        cells->begin[cell] = share;
        cells->end[cell] = kNoCrossing;
    };
    open(0, 0, kNoCrossing);
    for (std::ptrdiff_t column = 0; column < nColumns; ++column) {
        const AreaStep step = nextSample(&axis);
        if (!step.crosses) ++cells->wholes[k];
        if (step.crosses && step.closes) cells->end[k] = step.before;
        if (step.closes && ++k == most) break;
        if (step.crosses) open(k, column, step.after);
        if (!step.crosses && step.closes) open(k, column + 1, kNoCrossing);
    }
    cells->count = std::min(k + 1, most);
    cells->mostBetween = 0;
    for (k = 0; k < cells->count; ++k) {
        cells->last[k] = cells->wholes[k] + (cells->begin[k] >= 0);
        cells->mostBetween = std::max(cells->mostBetween, cells->last[k] - 1);
    }
}

template <class T>
T areaSample(double mean) {
    if constexpr (std::is_same_v<T, float>) return static_cast<float>(mean);
    return static_cast<T>(static_cast<std::int32_t>(mean + 0.5));
}

// Sums of `size` samples, `together` of every `pixelStep`, kept in `sums`.
struct SumRow {
    float* sums;
    std::ptrdiff_t columns;
    std::ptrdiff_t together;
    std::ptrdiff_t pixelStep;
};

// Applies `rule` to each sum and its sample.
template <class T, class Rule>
void sumRow(const SumRow& row, const T* samples, Rule rule) {
    float* const sums = row.sums;
    if (row.together == row.pixelStep) {
        for (std::ptrdiff_t i = 0; i < row.columns * row.together; ++i) sums[i] = rule(sums[i], samples[i]);
        return;
    }
    for (std::ptrdiff_t x = 0; x < row.columns; ++x)
        for (std::ptrdiff_t c = 0; c < row.together; ++c)
            sums[x * row.together + c] = rule(sums[x * row.together + c], samples[x * row.pixelStep + c]);
}

// The sum of one float and one sample is the same, rounded once, whatever wider form it is worked out in.
template <class T>
void addRow(const SumRow& row, const T* samples) {
    sumRow(row, samples, [](float sum, T sample) { return sum + static_cast<float>(sample); });
}

// A sample that ends a cell, whose sums go to `closed`, and begins the next.
template <class T>
void shareRow(const SumRow& row, const T* samples, double before, double after, float* __restrict closed) {
    const auto share = [=](float& sum, float& whole, T sample) {
        const auto value = static_cast<double>(sample);
        whole = static_cast<float>(static_cast<double>(sum) + value * before);
        sum = static_cast<float>(value * after);
    };
    float* __restrict const sums = row.sums;
    if (row.together == row.pixelStep) {
        for (std::ptrdiff_t i = 0; i < row.columns * row.together; ++i) share(sums[i], closed[i], samples[i]);
        return;
    }
    for (std::ptrdiff_t x = 0; x < row.columns; ++x)
        for (std::ptrdiff_t c = 0; c < row.together; ++c)
            share(sums[x * row.together + c], closed[x * row.together + c], samples[x * row.pixelStep + c]);
}

template <class T>
void setShare(const SumRow& row, const T* samples, double share) {
    sumRow(row, samples, [share](float, T sample) { return static_cast<float>(static_cast<double>(sample) * share); });
}

// Sum over a cell whose samples lie `together` apart.
double cellSum(const AreaCells& cells, std::ptrdiff_t k, const float* sums, std::ptrdiff_t together) {
    const float* at = sums + cells.first[k] * together;
    float sum = 0;
    if (cells.begin[k] >= 0) {
        sum = static_cast<float>(static_cast<double>(*at) * cells.begin[k]);
        at += together;
    }
    for (std::int32_t i = 0; i < cells.wholes[k]; ++i, at += together) sum += *at;
    if (cells.end[k] < 0) return static_cast<double>(sum);
    return static_cast<double>(sum) + static_cast<double>(*at) * cells.end[k];
}

// Cells that are summed side by side, and the most samples between their outer ones that this pays for.
constexpr std::ptrdiff_t kCellPiece = 64;
constexpr std::int32_t kMostBetween = 3;

// Samples of cells, by their place in the cell.
struct CellSamples {
    float first[kCellPiece];
    float between[kMostBetween][kCellPiece];
    float last[kCellPiece];
};

void gatherCells(const AreaCells& cells, const float* sums, std::ptrdiff_t step, std::ptrdiff_t from,
                 std::ptrdiff_t count, CellSamples* samples) {
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        const float* at = sums + cells.first[from + k] * step;
        samples->first[k] = *at;
        for (std::int32_t i = 0; i < cells.mostBetween; ++i) samples->between[i][k] = at[(i + 1) * step];
        samples->last[k] = at[cells.last[from + k] * step];
    }
}

// cellSum for cells side by side: all take as many steps as the longest, and a step too many adds -0, which changes no
// number.
void sumCells(const AreaCells& cells, const CellSamples& samples, std::ptrdiff_t from, std::ptrdiff_t count,
              double* made) {
    const double* const begin = cells.begin + from;
    const double* const end = cells.end + from;
    const std::int32_t* const last = cells.last + from;
    float sum[kCellPiece];
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        const auto share = static_cast<float>(static_cast<double>(samples.first[k]) * begin[k]);
        sum[k] = begin[k] < 0 ? samples.first[k] + 0.0f : share;
    }
    for (std::int32_t i = 0; i < cells.mostBetween; ++i)
        for (std::ptrdiff_t k = 0; k < count; ++k) sum[k] += i + 1 < last[k] ? samples.between[i][k] : -0.0f;
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        const double share = static_cast<double>(samples.last[k]) * end[k];
        made[k] = static_cast<double>(sum[k]) + (end[k] < 0 ? -0.0 : share);
    }
}

template <class T>
void putCellPieces(const AreaCells& cells, const SumRow& row, double inverse, std::ptrdiff_t dstPixelStep, T* dst) {
    CellSamples samples;
    double made[kCellPiece];
    for (std::ptrdiff_t from = 0; from < cells.count; from += kCellPiece) {
        const std::ptrdiff_t count = std::min(kCellPiece, cells.count - from);
        for (std::ptrdiff_t c = 0; c < row.together; ++c) {
            gatherCells(cells, row.sums + c, row.together, from, count, &samples);
            sumCells(cells, samples, from, count, made);
            T values[kCellPiece];
            for (std::ptrdiff_t k = 0; k < count; ++k) values[k] = areaSample<T>(made[k] * inverse);
            T* to = dst + from * dstPixelStep + c;
            for (std::ptrdiff_t k = 0; k < count; ++k) to[k * dstPixelStep] = values[k];
        }
    }
}

template <class T>
void putCells(const AreaCells& cells, const SumRow& row, double inverse, std::ptrdiff_t dstPixelStep, T* dst) {
    if (cells.mostBetween <= kMostBetween) return putCellPieces(cells, row, inverse, dstPixelStep, dst);
    for (std::ptrdiff_t k = 0; k < cells.count; ++k)
        for (std::ptrdiff_t c = 0; c < row.together; ++c)
            dst[k * dstPixelStep + c] = areaSample<T>(cellSum(cells, k, row.sums + c, row.together) * inverse);
}

struct AreaRun {
    const DecimateBlock* block;
    AreaCells cells;
    SumRow row;
    float* closed;           // sums of the cells that a row has ended
    std::ptrdiff_t rows;     // to make
    std::ptrdiff_t srcRows;  // to read
    double inverse;
};

void clearSums(const SumRow& row) { std::fill_n(row.sums, row.columns * row.together, 0.0f); }

// Makes the rows of one pass from the first source row and column that they touch.
template <class T>
void areaPass(const AreaRun& run, const T* src, T* dst) {
    const DecimateBlock& block = *run.block;
    AreaAxis axis = startAxis(block.yPos, block.yStep);
    SumRow closed = run.row;
    closed.sums = run.closed;
    std::ptrdiff_t j = 0;
    const auto put = [&](const SumRow& row) {
        putCells(run.cells, row, run.inverse, block.dstPixelStep, dst + j++ * block.dstRowStep);
    };
    clearSums(run.row);
    for (std::ptrdiff_t r = 0; r < run.srcRows && j < run.rows; ++r, src += block.srcRowStep) {
        const AreaStep step = nextSample(&axis);
        if (!step.crosses) {
            addRow(run.row, src);
            if (!step.closes) continue;
            put(run.row);
            clearSums(run.row);
        } else if (step.closes) {
            shareRow(run.row, src, step.before, step.after, run.closed);
            put(closed);
        } else {
            setShare(run.row, src, step.after);
        }
    }
    for (; j < run.rows; clearSums(run.row)) put(run.row);
}

// Source samples of an axis that the cells touch.
std::ptrdiff_t areaExtent(std::ptrdiff_t cells, float step, std::ptrdiff_t first, std::ptrdiff_t count) {
    const auto wanted = static_cast<std::ptrdiff_t>(static_cast<double>(cells + 1) * static_cast<double>(step)) + 1;
    return std::min(wanted, count - first);
}

template <class T>
void areaPasses(const AreaRun& run, const DecimateShape& shape, std::ptrdiff_t firstSample) {
    for (std::ptrdiff_t pass = 0; pass < shape.passes; ++pass)
        areaPass(run, reinterpret_cast<const T*>(run.block->src) + firstSample + pass * run.block->srcChannelStep,
                 reinterpret_cast<T*>(run.block->dst) + pass * run.block->dstChannelStep);
}

// False when memory cannot be had.
template <class T>
bool makeAreas(const DecimateBlock& block, const DecimateShape& shape) {
    if (makeBoxes<T>(block, shape)) return true;
    const auto c0 = static_cast<std::ptrdiff_t>(block.xPos);
    const auto r0 = static_cast<std::ptrdiff_t>(block.yPos);
    const std::ptrdiff_t nColumns = areaExtent(shape.columns, block.xStep, c0, shape.srcColumns);
    const std::ptrdiff_t nRows = areaExtent(shape.rows, block.yStep, r0, shape.srcRows);
    // Some columns more than there are: cells are looked at by the longest of them.
    const std::ptrdiff_t spare = (kMostBetween + 2) * shape.nTogether;
    const std::ptrdiff_t size = nColumns < 1 ? 0 : nColumns * shape.nTogether + spare;
    const Block<float> sums = allocBlock<float>(2 * size);
    const Block<std::int32_t> counts = allocBlock<std::int32_t>(shape.columns * 3);
    const Block<double> shares = allocBlock<double>(shape.columns * 2);
    if (!sums || !counts || !shares) return false;
    AreaRun run{&block,
                {0, counts.get(), counts.get() + shape.columns, counts.get() + 2 * shape.columns, shares.get(),
                 shares.get() + shape.columns, 0},
                {sums.get(), nColumns, shape.nTogether, block.srcPixelStep},
                sums.get() + size,
                shape.rows,
                nRows,
                1 / (static_cast<double>(block.yStep) * static_cast<double>(block.xStep))};
    std::fill_n(sums.get(), 2 * size, 0.0f);
    planCells(block, nColumns, shape.columns, &run.cells);
    areaPasses<T>(run, shape, r0 * block.srcRowStep + c0 * block.srcPixelStep);
    return true;
}

}  // namespace

template <class T>
std::int32_t ownDecimateSuper(DecimateBlock* block) {
    const DecimateShape shape = decimateShape(*block);
    if (shape.columns > 0 && shape.rows > 0 && !makeAreas<T>(*block, shape)) {
        report(op, ZET_StatusNoMemory, "Can't create temporary buffer for interpolate = ZET_INTER_SUPER");
        return 0;
    }
    block->xPos = static_cast<float>(static_cast<double>(block->xPos) +
                                     static_cast<double>(shape.columns) * static_cast<double>(block->xStep));
    block->yPos = static_cast<float>(static_cast<double>(block->yPos) +
                                     static_cast<double>(shape.rows) * static_cast<double>(block->yStep));
    return 1;
}

template std::int32_t ownDecimateSuper<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateSuper<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateSuper<float>(DecimateBlock*);

}  // namespace zetpxl
