// The block routines of blur, one arithmetic for each depth.
//   blur.1 a row of column sums for each channel is updated by one row added and one taken away, the sum along a row by one
//          column: the cost of a pixel does not depend on the rectangle
//   blur.2 up to 16 bits sums are 32-bit integers, and the result is the exact product with the reciprocal, truncated
//   blur.3 32S and 32F: column sums in single precision, row sums in double, every step rounded toward zero
//   blur.4 the caller's rounding mode is put back on every way out
// Compiled so that the compiler keeps to the rounding mode in force.
#include "filter/blurblock.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstring>

#include "core/depth.h"
#include "core/region.h"
#include "filter/blurmeans.h"
#include "filter/blursums.h"

namespace zetpxl {

namespace {

// Samples that column sums are kept for, and how they lie in a source row.
struct Lanes {
    std::ptrdiff_t count;     // column sums of a plane
    std::int32_t perPixel;    // column sums of a pixel
    std::int32_t sampleStep;  // from one column sum's sample to the next
    std::int32_t planes;
    std::ptrdiff_t firstByte;  // of the first channel in a row
    std::int32_t firstPlane;
    std::int32_t outPerPixel;  // of which this many are stored
};

Lanes lanesOf(const BlurPiece& p, std::ptrdiff_t bytes) {
    const std::ptrdiff_t columns = std::ptrdiff_t{p.width} + p.nCols;
    if (p.srcImage->dataOrder == 1 || bytes == 0) return {columns, 1, 1, p.nChannels, 0, p.srcChannel, 1};
    const std::int32_t step = p.srcImage->nChannels;
    if (p.nChannels == 1) return {columns, 1, step, 1, p.srcChannel * bytes, 0, 1};
    return {columns * step, step, 1, 1, p.srcChannel * bytes, 0, p.nChannels};
}

void bitsToBytes(const std::uint8_t* row, std::ptrdiff_t count, std::uint8_t* bytes) {
    for (std::ptrdiff_t i = 0; i < count; ++i) bytes[i] = (row[i >> 3] >> (7 - (i & 7))) & 1;
}

template <class Mean>
struct Work {
    const BlurPiece* piece;
    Mean mean;
    Lanes lanes;
    Block<typename Mean::Column> columns;  // lanes.count for each plane
    Block<typename Mean::Row> sums;        // one output row
    Block<std::uint8_t> added;             // 1U: rows as bytes
    Block<std::uint8_t> taken;
};

// Samples of a source row in a plane; null when the row cannot be had.
template <class Mean>
const typename Mean::T* samplesOf(const Work<Mean>& w, std::int64_t r, std::int32_t plane, std::uint8_t* unpacked) {
    std::ptrdiff_t planeStep = 0;
    const std::uint8_t* row = blurSourceRow(w.piece->source, r, &planeStep);
    if (!row) return nullptr;
    row += (w.lanes.firstPlane + plane) * planeStep + w.lanes.firstByte;
    if (unpacked) {
        bitsToBytes(row, w.lanes.count, unpacked);
        row = unpacked;
    }
    return reinterpret_cast<const typename Mean::T*>(row);
}

template <class Mean>
void addRow(const Work<Mean>& w, const typename Mean::T* samples, typename Mean::Column* columns) {
    const std::ptrdiff_t step = w.lanes.sampleStep;
    if (step == 1) {
        for (std::ptrdiff_t i = 0; i < w.lanes.count; ++i) columns[i] += Mean::column(samples[i]);
        return;
    }
    for (std::ptrdiff_t i = 0; i < w.lanes.count; ++i) columns[i] += Mean::column(samples[i * step]);
}

template <class Mean>
void exchangeRow(const Work<Mean>& w, const typename Mean::T* added, const typename Mean::T* taken,
                 typename Mean::Column* columns) {
    const std::ptrdiff_t step = w.lanes.sampleStep;
    if (step == 1) {
        for (std::ptrdiff_t i = 0; i < w.lanes.count; ++i)
            columns[i] = (columns[i] + Mean::column(added[i])) - Mean::column(taken[i]);
        return;
    }
    for (std::ptrdiff_t i = 0; i < w.lanes.count; ++i)
        columns[i] = (columns[i] + Mean::column(added[i * step])) - Mean::column(taken[i * step]);
}

// Whole numbers may take the difference first, which shortens the chain from sum to sum; other sums round at each step.
constexpr std::uint32_t nextSum(std::uint32_t sum, std::uint32_t entering, std::uint32_t leaving) {
    return sum + (entering - leaving);
}

double nextSum(double sum, double entering, double leaving) { return (sum + entering) - leaving; }

// Sums of nCols columns along a row, for each channel that is stored.
template <class Mean>
void sumAlong(const Work<Mean>& w, const typename Mean::Column* columns) {
    using Row = typename Mean::Row;
    const std::ptrdiff_t step = w.lanes.perPixel;
    const std::int32_t kept = w.lanes.outPerPixel;
    const std::ptrdiff_t reach = w.piece->nCols * step;
    for (std::ptrdiff_t c = 0; c < kept; ++c) {
        Row sum = 0;
        for (std::ptrdiff_t x = 0; x < w.piece->nCols; ++x) sum += static_cast<Row>(columns[x * step + c]);
        Row* sums = w.sums.get() + c;
        for (std::ptrdiff_t x = 0; x < w.piece->width; ++x) {
            sums[x * kept] = sum;
            const typename Mean::Column* leaving = columns + x * step + c;
            sum = nextSum(sum, static_cast<Row>(leaving[reach]), static_cast<Row>(*leaving));
        }
    }
}

template <class T>
void storeOne(const BlurPiece& p, std::uint8_t* dst, std::ptrdiff_t x, std::ptrdiff_t c, T value) {
    reinterpret_cast<T*>(dst)[x * p.dstPixelStep + c] = value;
}

void storeBit(const BlurPiece& p, std::uint8_t* dst, std::ptrdiff_t x, std::uint8_t value) {
    const std::ptrdiff_t bit = p.dstBit + x;
    const auto mask = static_cast<std::uint8_t>(0x80 >> (bit & 7));
    dst[bit >> 3] = static_cast<std::uint8_t>(value ? dst[bit >> 3] | mask : dst[bit >> 3] & ~mask);
}

template <class Mean>
void storePixels(const Work<Mean>& w, std::uint8_t* dst, std::ptrdiff_t first, std::ptrdiff_t count) {
    const BlurPiece& p = *w.piece;
    const std::int32_t kept = w.lanes.outPerPixel;
    const typename Mean::Row* sums = w.sums.get();
    if constexpr (std::is_same_v<Mean, BitMean>) {
        for (std::ptrdiff_t x = first; x < first + count; ++x) storeBit(p, dst, x, w.mean.result(sums[x]));
    } else if (kept == p.dstPixelStep) {
        auto* out = reinterpret_cast<typename Mean::T*>(dst);
        for (std::ptrdiff_t i = first * kept; i < (first + count) * kept; ++i) out[i] = w.mean.result(sums[i]);
    } else {
        for (std::ptrdiff_t x = first; x < first + count; ++x)
            for (std::ptrdiff_t c = 0; c < kept; ++c) storeOne(p, dst, x, c, w.mean.result(sums[x * kept + c]));
    }
}

template <class Mean>
void storeRow(const Work<Mean>& w, std::int32_t plane, std::ptrdiff_t y) {
    const BlurPiece& p = *w.piece;
    std::uint8_t* dst = p.dst + plane * p.dstPlaneStep + y * p.dstRowStep;
    if (!p.mask.data) return storePixels(w, dst, 0, p.width);
    forMaskPieces({p.mask.data + y * p.maskStep, p.mask.bit}, p.width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* mask) {
                      if (cover == MaskCover::All) return storePixels(w, dst, first, count);
                      for (std::ptrdiff_t x = 0; x < count; ++x)
                          if (mask[x]) storePixels(w, dst, first + x, 1);
                  });
}

template <class Mean>
bool startColumns(const Work<Mean>& w) {
    std::fill_n(w.columns.get(), w.lanes.count * w.lanes.planes, typename Mean::Column{0});
    for (std::int64_t r = 0; r < w.piece->nRows; ++r)
        for (std::int32_t plane = 0; plane < w.lanes.planes; ++plane) {
            const typename Mean::T* samples = samplesOf(w, r, plane, w.added.get());
            if (!samples) return false;
            addRow(w, samples, w.columns.get() + plane * w.lanes.count);
        }
    return true;
}

template <class Mean>
bool moveColumns(const Work<Mean>& w, std::int64_t y) {
    for (std::int32_t plane = 0; plane < w.lanes.planes; ++plane) {
        const typename Mean::T* added = samplesOf(w, y + w.piece->nRows, plane, w.added.get());
        const typename Mean::T* taken = samplesOf(w, y, plane, w.taken.get());
        if (!added || !taken) return false;
        exchangeRow(w, added, taken, w.columns.get() + plane * w.lanes.count);
    }
    return true;
}

template <class Mean>
bool runRows(const Work<Mean>& w) {
    if (!startColumns(w)) return false;
    for (std::int32_t y = 0; y < w.piece->height; ++y) {
        for (std::int32_t plane = 0; plane < w.lanes.planes; ++plane) {
            sumAlong(w, w.columns.get() + plane * w.lanes.count);
            storeRow(w, plane, y);
        }
        if (y + 1 < w.piece->height && !moveColumns(w, y)) return false;
    }
    return true;
}

// Samples of a row that are made while all that they need stays in the first cache.
constexpr std::ptrdiff_t kPiece = 1024;

// All channels of whole samples, side by side on both sides, and no mask.
template <class Mean>
bool isStraight(const Work<Mean>& w) {
    const BlurPiece& p = *w.piece;
    return !p.mask.data && w.lanes.planes == 1 && w.lanes.sampleStep == 1 && w.lanes.perPixel == w.lanes.outPerPixel &&
           w.lanes.perPixel == p.dstPixelStep && w.lanes.perPixel <= kSumLanes;
}

// A row of the destination. The columns are moved on as far as each piece needs them; a first row has nothing to add.
template <class Mean>
void makeStraightRow(const Work<Mean>& w, const typename Mean::T* added, const typename Mean::T* taken,
                     typename Mean::T* __restrict dst) {
    const std::ptrdiff_t step = w.lanes.perPixel;
    const std::ptrdiff_t size = w.piece->width * step;
    std::uint32_t* const columns = w.columns.get();
    std::uint32_t sums[kSumLanes + kPiece] = {};
    std::ptrdiff_t moved = added ? 0 : w.lanes.count;
    for (std::ptrdiff_t first = 0; first < size; first += kPiece) {
        const std::ptrdiff_t count = std::min(kPiece, size - first);
        const std::ptrdiff_t needed = std::min(w.lanes.count, first + count + w.piece->nCols * step);
        for (; moved < needed; ++moved)
            columns[moved] = (columns[moved] + Mean::column(added[moved])) - Mean::column(taken[moved]);
        sumPiece(columns + first, w.piece->nCols, step, first == 0, count, sums + kSumLanes);
        for (std::ptrdiff_t i = 0; i < count; ++i) dst[first + i] = w.mean.result(sums[kSumLanes + i]);
        std::memcpy(sums, sums + count, kSumLanes * sizeof *sums);
    }
    for (; moved < w.lanes.count; ++moved)
        columns[moved] = (columns[moved] + Mean::column(added[moved])) - Mean::column(taken[moved]);
}

template <class Mean>
bool runStraightRows(const Work<Mean>& w) {
    if (!startColumns(w)) return false;
    for (std::int32_t y = 0; y < w.piece->height; ++y) {
        const typename Mean::T* added = nullptr;
        const typename Mean::T* taken = nullptr;
        if (y > 0) {
            added = samplesOf(w, std::int64_t{y} - 1 + w.piece->nRows, 0, nullptr);
            taken = samplesOf(w, std::int64_t{y} - 1, 0, nullptr);
            if (!added || !taken) return false;
        }
        makeStraightRow(w, added, taken, reinterpret_cast<typename Mean::T*>(w.piece->dst + y * w.piece->dstRowStep));
    }
    return true;
}

// Rows whose running sums go side by side: each of them is a chain of steps that wait for one another.
constexpr std::ptrdiff_t kChains = 4;
constexpr std::ptrdiff_t kChainPiece = 256;

// Rows written later than they were summed must not be seen to be: no tile is fetched between them.
template <class Mean>
bool isChained(const Work<Mean>& w) {
    const BlurSource& source = *w.piece->source;
    return isStraight(w) && (!source.image->tileInfo || source.bandRows >= source.rect.height);
}

template <class Mean>
struct Chains {
    const typename Mean::Column* columns;  // of the first row
    std::ptrdiff_t rowStep;
    std::ptrdiff_t step;   // samples of a pixel
    std::ptrdiff_t reach;  // from the column that leaves a sum to the one that enters it
    std::array<std::array<typename Mean::Row, kChains>, kSumLanes> last;
};

// The sums of one channel for the first pixel of each row.
template <class Mean>
void beginChains(std::ptrdiff_t channel, Chains<Mean>* chains) {
    auto& sums = chains->last[static_cast<std::size_t>(channel)];
    sums = {};
    for (std::ptrdiff_t x = channel; x < chains->reach; x += chains->step)
        for (std::size_t j = 0; j < kChains; ++j)
            sums[j] +=
                static_cast<typename Mean::Row>(chains->columns[static_cast<std::ptrdiff_t>(j) * chains->rowStep + x]);
}

// The sums of one channel over a piece of each row.
template <class Mean>
void runChains(std::ptrdiff_t channel, std::ptrdiff_t first, std::ptrdiff_t count, Chains<Mean>* chains,
               typename Mean::Row* __restrict out) {
    using Row = typename Mean::Row;
    std::array<Row, kChains> sums = chains->last[static_cast<std::size_t>(channel)];
    const typename Mean::Column* const columns = chains->columns + first;
    const std::ptrdiff_t rowStep = chains->rowStep;
    const std::ptrdiff_t reach = chains->reach;
    const std::ptrdiff_t step = chains->step;
    for (std::ptrdiff_t x = channel; x < count; x += step) {
#pragma GCC unroll 4  // the sums stay in registers
        for (std::ptrdiff_t j = 0; j < kChains; ++j) {
            Row& sum = sums[static_cast<std::size_t>(j)];
            const typename Mean::Column* const leaving = columns + j * rowStep + x;
            out[j * kChainPiece + x] = sum;
            sum = nextSum(sum, static_cast<Row>(leaving[reach]), static_cast<Row>(*leaving));
        }
    }
    chains->last[static_cast<std::size_t>(channel)] = sums;
}

// `rows` rows from `y` on, whose columns are there; chains beyond them run along for nothing.
template <class Mean>
void makeChainedRows(const Work<Mean>& w, std::ptrdiff_t y, std::ptrdiff_t rows) {
    using T = typename Mean::T;
    const BlurPiece& p = *w.piece;
    const std::ptrdiff_t step = w.lanes.perPixel;
    const std::ptrdiff_t size = p.width * step;
    const std::ptrdiff_t piece = kChainPiece / step * step;
    Chains<Mean> chains{w.columns.get(), w.lanes.count, step, p.nCols * step, {}};
    typename Mean::Row sums[kChains * kChainPiece];
    for (std::ptrdiff_t c = 0; c < step; ++c) beginChains(c, &chains);
    for (std::ptrdiff_t first = 0; first < size; first += piece) {
        const std::ptrdiff_t count = std::min(piece, size - first);
        for (std::ptrdiff_t c = 0; c < step; ++c) runChains(c, first, count, &chains, sums);
        for (std::ptrdiff_t j = 0; j < rows; ++j) {
            T* __restrict dst = reinterpret_cast<T*>(p.dst + (y + j) * p.dstRowStep) + first;
            for (std::ptrdiff_t i = 0; i < count; ++i) dst[i] = w.mean.result(sums[j * kChainPiece + i]);
        }
    }
}

// The columns of row `y` from those of the row before.
template <class Mean>
bool nextColumns(const Work<Mean>& w, std::int64_t y) {
    const typename Mean::T* __restrict added = samplesOf(w, y - 1 + w.piece->nRows, 0, nullptr);
    const typename Mean::T* __restrict taken = samplesOf(w, y - 1, 0, nullptr);
    if (!added || !taken) return false;
    const typename Mean::Column* before = w.columns.get() + (y - 1) % kChains * w.lanes.count;
    typename Mean::Column* __restrict columns = w.columns.get() + y % kChains * w.lanes.count;
    for (std::ptrdiff_t i = 0; i < w.lanes.count; ++i)
        columns[i] = (before[i] + Mean::column(added[i])) - Mean::column(taken[i]);
    return true;
}

template <class Mean>
bool runChainedRows(const Work<Mean>& w) {
    std::fill_n(w.columns.get(), w.lanes.count * kChains, typename Mean::Column{0});
    if (!startColumns(w)) return false;
    for (std::ptrdiff_t y = 0; y < w.piece->height; y += kChains) {
        const std::ptrdiff_t rows = std::min(kChains, w.piece->height - y);
        for (std::ptrdiff_t j = y == 0 ? 1 : 0; j < rows; ++j)
            if (!nextColumns(w, y + j)) return false;
        makeChainedRows(w, y, rows);
    }
    return true;
}

template <class Mean>
bool blurWith(const BlurPiece& piece, const Mean& mean) {
    constexpr bool isBits = std::is_same_v<Mean, BitMean>;
    const std::ptrdiff_t bytes = isBits ? 0 : static_cast<std::ptrdiff_t>(sizeof(typename Mean::T));
    Work<Mean> w{&piece, mean, lanesOf(piece, bytes), {}, {}, {}, {}};
    const bool chained = Mean::truncatesFloats && isChained(w);
    const std::ptrdiff_t rows = chained ? kChains : w.lanes.planes;
    w.columns = allocBlock<typename Mean::Column>(sizeProduct(w.lanes.count, rows));
    w.sums = allocBlock<typename Mean::Row>(sizeProduct(piece.width, w.lanes.outPerPixel));
    if (!w.columns || !w.sums) return false;
    if (isBits) {
        w.added = allocBlock<std::uint8_t>(w.lanes.count);
        w.taken = allocBlock<std::uint8_t>(w.lanes.count);
        if (!w.added || !w.taken) return false;
    }
    if constexpr (!Mean::truncatesFloats && !isBits)
        if (isStraight(w)) return runStraightRows(w);
    if constexpr (!Mean::truncatesFloats) {
        return runRows(w);
    } else {
        const int mode = std::fegetround();
        std::fesetround(FE_TOWARDZERO);
        const bool done = chained ? runChainedRows(w) : runRows(w);
        std::fesetround(mode);
        return done;
    }
}

template <class Mean>
bool blurBy(const BlurPiece& piece) {
    return blurWith(piece, Mean(piece.inverse));
}

template <class T>
bool blurIntegers(const BlurPiece& piece) {
    constexpr std::int64_t greatest = std::int64_t{1} << (8 * sizeof(T));
    const bool isSmall = std::int64_t{piece.nCols} * piece.nRows <= (std::int64_t{1} << 29) / greatest;
    return isSmall ? blurBy<SmallSumMean<T>>(piece) : blurBy<IntegerMean<T>>(piece);
}

// Beyond, 32 bits rarely tell all means apart; below, looking for them costs more than it saves.
constexpr std::int64_t kMostWordSamples = 1024;
constexpr std::int64_t kFewestWordPixels = 1 << 14;

bool blurBytes(const BlurPiece& piece) {
    const std::int64_t samples = std::int64_t{piece.nCols} * piece.nRows;
    const bool pays = samples <= kMostWordSamples && std::int64_t{piece.width} * piece.height >= kFewestWordPixels;
    for (std::uint32_t above = 0; above < 2 && pays; ++above) {
        const WordMean quick(piece.inverse, above);
        if (servesAll(quick, piece.inverse, samples)) return blurWith(piece, quick);
    }
    return blurIntegers<std::uint8_t>(piece);
}

using BlurRoutine = bool (*)(const BlurPiece& piece);

constexpr std::array<BlurRoutine, kDepthCount> blurRoutines = {
    blurBy<BitMean>,
    blurBytes,
    blurIntegers<std::int8_t>,
    blurIntegers<std::uint16_t>,
    blurIntegers<std::int16_t>,
    blurBy<Signed32Mean>,
    blurBy<FloatMean>,
};

}  // namespace

bool blurBlock(const BlurPiece& piece, std::uint32_t depth) {
    return blurRoutines[static_cast<std::size_t>(depthIndex(depth))](piece);
}

}  // namespace zetpxl
