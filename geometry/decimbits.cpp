// Decimation of 1-bit images.
//   bits.1 columns are bit numbers from the first byte's top bit on, held in single precision: from bit to bit for the nearest
//          bit, from byte to byte of the destination for areas
//   bits.2 an area's bit is 1 when at least half of it is set; edge bits count by their share, and not at all within the
//          tolerance
#include <algorithm>
#include <bit>

#include "geometry/decimate.h"
#include "geometry/sampling.h"

namespace zetpxl {

namespace {

struct BitRows {
    const std::uint8_t* origin;
    std::ptrdiff_t rowBytes;
    std::ptrdiff_t columns;  // one past the last bit
    std::ptrdiff_t rows;
};

BitRows sourceBits(const DecimateBlock& block) {
    return {block.src, block.srcRowStep >> 3, block.srcChannelStep + block.srcWidthEnd,
            block.srcRowEnd / block.srcRowStep};
}

const std::uint8_t* bitRow(const BitRows& bits, std::ptrdiff_t row) {
    return bits.origin + std::clamp<std::ptrdiff_t>(row, 0, bits.rows - 1) * bits.rowBytes;
}

bool bitOf(const BitRows& bits, const std::uint8_t* row, std::ptrdiff_t column) {
    const std::ptrdiff_t x = std::clamp<std::ptrdiff_t>(column, 0, bits.columns - 1);
    return (row[x >> 3] >> (7 - (x & 7))) & 1;
}

std::ptrdiff_t truncated(double value) { return static_cast<std::ptrdiff_t>(value); }

// Set bits of a row from one column up to another.
std::int32_t countBits(const BitRows& bits, const std::uint8_t* row, std::ptrdiff_t from, std::ptrdiff_t to) {
    std::int32_t count = 0;
    for (; from < to && (from < 0 || (from & 7)); ++from) count += bitOf(bits, row, from);
    for (; from + 8 <= std::min(to, bits.columns); from += 8) count += std::popcount(row[from >> 3]);
    for (; from < to; ++from) count += bitOf(bits, row, from);
    return count;
}

// One axis of a cell: the samples at its ends and their shares.
struct CellSpan {
    std::ptrdiff_t first, last;
    double begin, end;
};

// Moves `position` on to the end of the cell. A cell that would reach past the last sample is moved back.
CellSpan nextCell(double* position, double step, std::ptrdiff_t count) {
    double from = *position;
    double to = from + step;
    if (truncated(to) >= count) {
        to = static_cast<double>(count);
        from = to - step;
    }
    *position = to;
    const std::ptrdiff_t first = truncated(from);
    const std::ptrdiff_t last = truncated(to);
    return {first, last, 1 - (from - static_cast<double>(first)), to - static_cast<double>(last)};
}

bool counts(double share) { return share > kAreaTolerance; }

// An outer row of a cell with its corners; `share` is the row's.
struct OuterRow {
    double sum;  // of the bits between the corners
    double corners;
};

OuterRow outerRow(const BitRows& bits, std::ptrdiff_t index, double share, const CellSpan& x) {
    if (!counts(share)) return {};
    const std::uint8_t* row = bitRow(bits, index);
    OuterRow outer{share * countBits(bits, row, x.first + 1, x.last), 0};
    if (bitOf(bits, row, x.first)) outer.corners += share * x.begin;
    if (counts(x.end) && bitOf(bits, row, x.last)) outer.corners += share * x.end;
    return outer;
}

double cellSum(const BitRows& bits, const CellSpan& x, const CellSpan& y) {
    std::int64_t inside = 0;
    std::int64_t left = 0;
    std::int64_t right = 0;
    for (std::ptrdiff_t r = y.first + 1; r < y.last; ++r) {
        const std::uint8_t* row = bitRow(bits, r);
        inside += countBits(bits, row, x.first + 1, x.last);
        left += counts(x.begin) && bitOf(bits, row, x.first);
        right += counts(x.end) && bitOf(bits, row, x.last);
    }
    const OuterRow top = outerRow(bits, y.first, y.begin, x);
    const OuterRow bottom = outerRow(bits, y.last, y.end, x);
    return static_cast<double>(inside) + top.sum + bottom.sum + static_cast<double>(left) * x.begin +
           static_cast<double>(right) * x.end + top.corners + bottom.corners;
}

bool hasNoSource(const DecimateBlock& block) { return block.srcWidthEnd < 1 || block.srcRowEnd < 1; }

}  // namespace

std::int32_t ownDecimateNN1U(DecimateBlock* block) {
    if (hasNoSource(*block)) return 1;
    const BitRows bits = sourceBits(*block);
    const float start = block->xPos + static_cast<float>(block->srcChannelStep);
    float x = start;
    for (std::ptrdiff_t i = 0; i < block->dstWidthEnd; ++i) x += block->xStep;
    block->xPos = x - static_cast<float>(block->srcChannelStep);
    double y = static_cast<double>(block->yPos);
    std::uint8_t* dst = block->dst;
    for (std::ptrdiff_t j = 0; j < block->dstRowEnd; j += block->dstRowStep, dst += block->dstRowStep >> 3) {
        const std::uint8_t* row = bitRow(bits, truncated(y));
        x = start;
        for (std::ptrdiff_t i = 0; i < block->dstWidthEnd; ++i, x += block->xStep)
            putBit(dst, block->dstChannelStep + i, bitOf(bits, row, static_cast<std::ptrdiff_t>(x)));
        y += static_cast<double>(block->yStep);
    }
    block->yPos = static_cast<float>(y);
    return 1;
}

std::int32_t ownDecimateSuper1U(DecimateBlock* block) {
    if (hasNoSource(*block)) return 1;
    const BitRows bits = sourceBits(*block);
    const auto xStep = static_cast<double>(block->xStep);
    const auto yStep = static_cast<double>(block->yStep);
    const double inverse = 1 / (xStep * yStep);
    const float start = block->xPos + static_cast<float>(block->srcChannelStep);
    double x = 0;
    double y = static_cast<double>(block->yPos);
    std::uint8_t* dst = block->dst;
    for (std::ptrdiff_t j = 0; j < block->dstRowEnd; j += block->dstRowStep, dst += block->dstRowStep >> 3) {
        const CellSpan rows = nextCell(&y, yStep, bits.rows);
        x = static_cast<double>(start);
        for (std::ptrdiff_t i = 0; i < block->dstWidthEnd; ++i) {
            const std::ptrdiff_t at = block->dstChannelStep + i;
            if ((at & 7) == 0) x = static_cast<double>(static_cast<float>(x));
            const CellSpan columns = nextCell(&x, xStep, bits.columns);
            putBit(dst, at, truncated(cellSum(bits, columns, rows) * inverse + 0.5) != 0);
        }
    }
    block->xPos = static_cast<float>(x - static_cast<double>(block->srcChannelStep));
    block->yPos = static_cast<float>(y);
    return 1;
}

}  // namespace zetpxl
