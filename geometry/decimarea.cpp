// Decimation by averaging the area that a destination pixel covers.
//   area.1 sums are single precision: source rows are added up cell by cell, then the sums of a row of cells along x
//   area.2 a sample that crosses an edge is shared by two cells; its product with the share is added before it is rounded
//   area.3 the divisor is the cell's full area, also where the source ends inside the cell
//   area.4 of source pixels with samples that are not wanted all between the first wanted and the last are summed, in one run
#include <algorithm>

#include "core/alloc.h"
#include "geometry/decimalong.h"
#include "geometry/decimboxes.h"
#include "geometry/decimcells.h"
#include "geometry/decimdown.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetDecimate", "owndecim"};

struct AreaRun {
    const DecimateBlock* block;
    AreaCells rows, columns;
    std::ptrdiff_t nRows;  // to make
    std::ptrdiff_t size;   // of a row of sums
    float* sums;
    SumRow row;
    std::ptrdiff_t firstSample;  // of a pass
};

// Makes the rows of one pass from the first source row and column that they touch.
template <class T, class Put>
void areaPass(const AreaRun& run, const T* src, T* dst, Put put) {
    const AreaSource<T> source{src, run.block->srcRowStep, run.size};
    for (std::ptrdiff_t j = 0; j < run.nRows; ++j, dst += run.block->dstRowStep) {
        sumCellRows(source, j < run.rows.count ? run.rows.cells[j] : kEmptyCell, run.sums);
        put(dst);
    }
}

template <class T, class Put>
void areaPasses(const AreaRun& run, const DecimateShape& shape, Put put) {
    for (std::ptrdiff_t pass = 0; pass < shape.passes; ++pass)
        areaPass(run, reinterpret_cast<const T*>(run.block->src) + run.firstSample + pass * run.block->srcChannelStep,
                 reinterpret_cast<T*>(run.block->dst) + pass * run.block->dstChannelStep, put);
}

// False when memory cannot be had.
template <class T>
bool makeCells(const AreaRun& run, const DecimateShape& shape) {
    if (run.columns.mostSamples > kMostShort) {
        areaPasses<T>(run, shape, [&run](T* dst) { putLongCells(run.columns, run.row, dst); });
        return true;
    }
    ShortCells cells{};
    if (!planShortCells(run.columns, run.row, &cells)) return false;
    areaPasses<T>(run, shape, [&run, &cells](T* dst) { putShortCells(cells, run.row, dst); });
    return true;
}

// Source samples of an axis that the cells touch.
std::ptrdiff_t areaExtent(std::ptrdiff_t cells, float step, std::ptrdiff_t first, std::ptrdiff_t count) {
    const auto wanted = static_cast<std::ptrdiff_t>(static_cast<double>(cells + 1) * static_cast<double>(step)) + 1;
    return std::min(wanted, count - first);
}

// False when memory cannot be had.
template <class T>
bool makeAreas(const DecimateBlock& block, const DecimateShape& shape) {
    if (makeBoxes<T>(block, shape)) return true;
    const auto c0 = static_cast<std::ptrdiff_t>(block.xPos);
    const auto r0 = static_cast<std::ptrdiff_t>(block.yPos);
    const std::ptrdiff_t nColumns = areaExtent(shape.columns, block.xStep, c0, shape.srcColumns);
    const std::ptrdiff_t nRows = areaExtent(shape.rows, block.yStep, r0, shape.srcRows);
    if (nColumns < 1) return false;
    const std::ptrdiff_t size = (nColumns - 1) * block.srcPixelStep + shape.nTogether;
    const std::ptrdiff_t room = nColumns * block.srcPixelStep + cellSpare(block.srcPixelStep);
    const Block<float> sums = allocBlock<float>(room);
    const Block<AreaCell> cells = allocBlock<AreaCell>(shape.columns + shape.rows);
    if (!sums || !cells) return false;
    std::fill_n(sums.get(), room, 0.0f);
    const double inverse = 1 / (static_cast<double>(block.yStep) * static_cast<double>(block.xStep));
    AreaRun run{&block,
                {cells.get(), 0, 0},
                {cells.get() + shape.rows, 0, 0},
                shape.rows,
                size,
                sums.get(),
                {sums.get(), shape.nTogether, block.srcPixelStep, block.dstPixelStep, inverse},
                r0 * block.srcRowStep + c0 * block.srcPixelStep};
    planCells(block.yPos, block.yStep, nRows, shape.rows, &run.rows);
    planCells(block.xPos, block.xStep, nColumns, shape.columns, &run.columns);
    return makeCells<T>(run, shape);
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
