// Area means: samples through a table of row sums, bits cell by cell.
#include <algorithm>
#include <vector>

#include "tests/support/model_decimateblock.h"
#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

constexpr double kEps = 0.0001f;

void goBehind(DecimateBlock& block) {
    block.x = static_cast<float>(block.x + static_cast<double>(block.to.width) * block.xStep);
    block.y = static_cast<float>(block.y + static_cast<double>(block.to.height) * block.yStep);
}

// Source columns or rows from `first` on that `cells` of them may touch.
std::int64_t touched(std::int32_t cells, float step, std::int64_t first, std::int32_t limit) {
    std::int64_t count = truncated((static_cast<double>(cells) + 1) * step) + 1;
    while (count + first > limit) --count;
    return count;
}

// Sums of samples over the rows of a cell, in single precision.
struct Table {
    std::int64_t nCols;
    std::vector<float> sums;

    float& at(std::int64_t row, std::int64_t col) { return sums[static_cast<std::size_t>(row * nCols + col)]; }
};

struct Pass {
    const DecimateBlock& block;
    std::int32_t channel;
    Table table;
};

enum class How { kSet, kAdd };

void takeRow(Pass& pass, How how, std::int32_t cell, std::int64_t row, double weight) {
    const std::int64_t firstCol = truncated(pass.block.x);
    for (std::int64_t col = 0; col < pass.table.nCols; ++col) {
        const double share = pass.block.value(pass.channel, row, firstCol + col) * weight;
        float& sum = pass.table.at(cell, col);
        sum = static_cast<float>(how == How::kSet ? share : static_cast<double>(sum) + share);
    }
}

void sumRows(Pass& pass) {
    const DecimateBlock& block = pass.block;
    const std::int64_t firstRow = truncated(block.y);
    const std::int64_t nRows = touched(block.to.height, block.yStep, firstRow, block.from.height);
    double edge = block.y;
    auto line = static_cast<float>(truncated(edge + kEps));
    double weight = 1 - (edge - line);
    std::int32_t cell = 0;
    for (std::int64_t row = firstRow; row < firstRow + nRows; ++row) {
        line += 1;
        if (line < edge + kEps) {
            takeRow(pass, How::kAdd, cell, row, 1);
            if (line < edge) continue;
            edge += block.yStep;
            if (++cell == block.to.height) return;
            continue;
        }
        if (row != firstRow) {
            const double fraction = edge - static_cast<double>(truncated(edge));
            takeRow(pass, How::kAdd, cell, row, fraction);
            if (++cell == block.to.height) return;
            weight = 1 - fraction;
        }
        edge += block.yStep;
        takeRow(pass, How::kSet, cell, row, weight);
    }
}

// The sums of a column of the destination while it grows.
using Column = std::vector<float>;

void takeColumn(Pass& pass, How how, Column& column, std::int64_t col, double weight) {
    for (std::size_t row = 0; row < column.size(); ++row) {
        const double share = pass.table.at(static_cast<std::int64_t>(row), col) * weight;
        float& sum = column[row];
        sum = static_cast<float>(how == How::kSet ? share : static_cast<double>(sum) + share);
    }
}

void write(const Pass& pass, std::int32_t k, std::size_t row, double sum) {
    const DecimateBlock& block = pass.block;
    const double inverse = 1 / (static_cast<double>(block.yStep) * block.xStep);
    const double mean = sum * inverse;
    const std::uint32_t sample = block.src->depth == ZET_DEPTH_32F ? floatPattern(static_cast<float>(mean))
                                                                   : static_cast<std::uint32_t>(truncated(mean + 0.5));
    block.put(pass.channel, static_cast<std::int32_t>(row), k, sample);
}

void writeColumn(const Pass& pass, const Column& column, std::int32_t k) {
    for (std::size_t row = 0; row < column.size(); ++row) write(pass, k, row, column[row]);
}

// The last share of a column is not rounded before the mean is taken.
void writeCrossed(Pass& pass, const Column& column, std::int32_t k, std::int64_t col, double fraction) {
    for (std::size_t row = 0; row < column.size(); ++row)
        write(pass, k, row, column[row] + pass.table.at(static_cast<std::int64_t>(row), col) * fraction);
}

void sumColumns(Pass& pass) {
    const DecimateBlock& block = pass.block;
    Column column(static_cast<std::size_t>(block.to.height));
    double edge = block.x;
    auto line = static_cast<float>(truncated(edge + kEps));
    double weight = 1 - (edge - line);
    std::int32_t k = 0;
    for (std::int64_t col = 0; col < pass.table.nCols; ++col) {
        line += 1;
        if (edge + kEps > line) {
            takeColumn(pass, How::kAdd, column, col, 1);
            if (line < edge) continue;
            writeColumn(pass, column, k);
            std::fill(column.begin(), column.end(), 0.0f);
            edge += block.xStep;
            if (++k == block.to.width) return;
            continue;
        }
        if (col > 0) {
            const double fraction = edge - static_cast<double>(truncated(edge));
            writeCrossed(pass, column, k, col, fraction);
            if (++k == block.to.width) return;
            weight = 1 - fraction;
        }
        edge += block.xStep;
        takeColumn(pass, How::kSet, column, col, weight);
    }
    writeColumn(pass, column, k);
}

// ---- bits

// One side of a cell: the bits it touches and the shares of the first and last of them.
struct Span {
    double start, end;

    std::int64_t first() const { return truncated(start); }
    std::int64_t last() const { return truncated(end); }
    double firstShare() const { return 1 - (start - static_cast<double>(first())); }
    double lastShare() const { return end - static_cast<double>(last()); }
};

// Cells that pass the end are moved back.
Span spanFrom(double start, float step, std::int64_t limit) {
    const double end = start + step;
    if (truncated(end) < limit) return {start, end};
    const auto last = static_cast<double>(limit);
    return {last - step, last};
}

double rowShare(const Span& rows, std::int64_t row) {
    if (row == rows.first()) return rows.firstShare() <= kEps ? 0 : rows.firstShare();
    if (row == rows.last()) return rows.lastShare() <= kEps ? 0 : rows.lastShare();
    return 1;
}

// Of the left column only what lies between the first and last row is left out for being small.
double columnShare(const Span& rows, const Span& cols, std::int64_t row, std::int64_t col) {
    const bool corner = row == rows.first() || row == rows.last();
    if (col == cols.first()) return cols.firstShare() <= kEps && !corner ? 0 : cols.firstShare();
    if (col == cols.last()) return cols.lastShare() <= kEps ? 0 : cols.lastShare();
    return 1;
}

bool cellBit(const DecimateBlock& block, std::int32_t channel, const Span& rows, const Span& cols) {
    double sum = 0;
    for (std::int64_t row = rows.first(); row <= rows.last(); ++row)
        for (std::int64_t col = cols.first(); col <= cols.last(); ++col)
            sum += rowShare(rows, row) * columnShare(rows, cols, row, col) *
                   block.pattern(channel, row, col - firstBit(block));
    const double inverse = 1 / (static_cast<double>(block.xStep) * block.yStep);
    return truncated(sum * inverse + 0.5) != 0;
}

// The position behind the row.
float bitRow(const DecimateBlock& block, std::int32_t row, const Span& rows) {
    double x = block.x + static_cast<float>(firstBit(block));
    for (std::int32_t col = 0; col < block.to.width; ++col) {
        // Destination bytes end where bits of the image do, wherever the block starts.
        if ((block.to.x + col) % 8 == 0) x = static_cast<float>(x);
        const Span cols = spanFrom(x, block.xStep, firstBit(block) + block.from.width);
        block.put(0, row, col, cellBit(block, 0, rows, cols));
        x = cols.end;
    }
    return static_cast<float>(x - firstBit(block));
}

}  // namespace

void modelDecimateSuper(DecimateBlock& block) {
    if (!block.empty())
        for (std::int32_t c = 0; c < block.channels.count; ++c) {
            const std::int64_t nCols = touched(block.to.width, block.xStep, truncated(block.x), block.from.width);
            const auto size = static_cast<std::size_t>(nCols * block.to.height);
            Pass pass{block, c, {nCols, std::vector<float>(size)}};
            sumRows(pass);
            sumColumns(pass);
        }
    goBehind(block);
}

void modelDecimateSuperBits(DecimateBlock& block) {
    double y = block.y;
    float behind = block.x;
    for (std::int32_t row = 0; row < block.to.height; ++row) {
        const Span rows = spanFrom(y, block.yStep, block.from.height);
        behind = bitRow(block, row, rows);
        y = rows.end;
    }
    block.x = behind;
    block.y = static_cast<float>(y);
}

}  // namespace zetpxl::test
