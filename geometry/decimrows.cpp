// Decimation by the nearest sample, by lines and by cubics.
//   rows.1 positions are sums in double precision of a single precision step; they tell sample and share
//   rows.2 a position below the smallest normal number is the first sample itself, taken unchanged
//   rows.3 cubics move their four samples back at the far edge; nothing moves at the near one, which rows.2 keeps away
//   rows.4 a row of the source is interpolated along x once and serves all rows that need it
//   rows.5 8U and 16U cut the fraction off; the cubic is held within the depth's limits
#include <algorithm>
#include <cfloat>
#include <limits>
#include <type_traits>

#include "geometry/decimate.h"

namespace zetpxl {

namespace {

// Samples that are made of a row at a time: their taps and interpolated rows stay in the first cache.
constexpr std::ptrdiff_t kPiece = 256;

// The smallest normal single precision number.
constexpr float kOnSample = FLT_MIN;

struct NoTaps {
    static constexpr std::ptrdiff_t kCount = 1;
    static constexpr std::ptrdiff_t kBefore = 0;
    static double value(const double* s, double) { return s[0]; }
};

struct LinearTaps {
    static constexpr std::ptrdiff_t kCount = 2;
    static constexpr std::ptrdiff_t kBefore = 0;
    static double value(const double* s, double t) { return s[0] * (1 - t) + s[1] * t; }
};

struct CubicTaps {
    static constexpr std::ptrdiff_t kCount = 4;
    static constexpr std::ptrdiff_t kBefore = 1;
    static constexpr double kSixth = static_cast<double>(0x1.555556p-3f);

    // Lagrange's cubic through four points, as a polynomial in t.
    static double value(const double* s, double t) {
        const double square = t * t;
        const double cube = square * t;
        const double first = -2 * s[0] - 3 * s[1] + 6 * s[2] - s[3];
        const double second = 3 * s[0] - 6 * s[1] + 3 * s[2];
        const double third = -s[0] + 3 * s[1] - 3 * s[2] + s[3];
        return (6 * s[1] + t * first + square * second + cube * third) * kSixth;
    }
};

// One position on an axis of `count` samples: the first of its taps and the share.
struct Tap {
    std::ptrdiff_t first;
    double share;
};

template <class Taps>
Tap tapAt(double position, std::ptrdiff_t count) {
    auto index = static_cast<std::ptrdiff_t>(position);
    double share = position - static_cast<double>(index);
    if (Taps::kCount == 4 && index >= count - 2) {
        --index;
        share += 1;
    }
    return {index - Taps::kBefore, share};
}

template <class T, bool Limited>
T madeSample(double value) {
    if constexpr (std::is_same_v<T, float>) return static_cast<float>(value);
    if (Limited) {
        constexpr double greatest = std::numeric_limits<T>::max();
        value = value > greatest ? greatest : value;
        value = value < 0 ? 0 : value;
    }
    return static_cast<T>(static_cast<std::int32_t>(value));
}

// Columns of a piece: where the taps of each sample lie in a row, and the shares.
template <class Taps>
struct Columns {
    std::ptrdiff_t size;
    std::int32_t offsets[Taps::kCount][kPiece];
    double shares[kPiece];
};

// Fills a piece from `x` on and gives the position behind it.
template <class Taps>
double placeColumns(const DecimateBlock& block, const DecimateShape& shape, double x, std::ptrdiff_t pixels,
                    Columns<Taps>* columns) {
    columns->size = pixels * shape.nTogether;
    for (std::ptrdiff_t i = 0; i < pixels; ++i) {
        const Tap tap = tapAt<Taps>(x, shape.srcColumns);
        for (std::ptrdiff_t c = 0; c < shape.nTogether; ++c) {
            const std::ptrdiff_t at = i * shape.nTogether + c;
            for (std::ptrdiff_t k = 0; k < Taps::kCount; ++k) {
                const std::ptrdiff_t column = std::clamp<std::ptrdiff_t>(tap.first + k, 0, shape.srcColumns - 1);
                columns->offsets[k][at] = static_cast<std::int32_t>(column * block.srcPixelStep + c);
            }
            columns->shares[at] = tap.share;
        }
        x += static_cast<double>(block.xStep);
    }
    return x;
}

// Interpolates a source row along x.
template <class T, class Taps>
void columnPass(const T* row, const Columns<Taps>& columns, double* to) {
    for (std::ptrdiff_t i = 0; i < columns.size; ++i) {
        double s[Taps::kCount];
        for (std::ptrdiff_t k = 0; k < Taps::kCount; ++k) s[k] = static_cast<double>(row[columns.offsets[k][i]]);
        to[i] = Taps::value(s, columns.shares[i]);
    }
}

// Rows of the source interpolated along x, kept while rows near them are made: each in the slot of its number.
template <class T, class XTaps, class YTaps>
struct RowCache {
    std::ptrdiff_t held[YTaps::kCount];
    double rows[YTaps::kCount * kPiece];

    const double* row(const T* src, std::ptrdiff_t rowStep, std::ptrdiff_t index, const Columns<XTaps>& columns) {
        const std::ptrdiff_t slot = index % YTaps::kCount;
        if (held[slot] != index) columnPass<T, XTaps>(src + index * rowStep, columns, rows + slot * kPiece);
        held[slot] = index;
        return rows + slot * kPiece;
    }
};

template <class T, class YTaps, bool Limited>
void blendRows(const double* const (&rows)[YTaps::kCount], double share, std::ptrdiff_t size, T* to) {
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        double s[YTaps::kCount];
        for (std::ptrdiff_t k = 0; k < YTaps::kCount; ++k) s[k] = rows[k][i];
        to[i] = madeSample<T, Limited>(YTaps::value(s, share));
    }
}

// Samples to their places in the destination.
template <class T>
void putSamples(const T* from, std::ptrdiff_t size, std::ptrdiff_t nTogether, std::ptrdiff_t pixelStep, T* to) {
    if (nTogether == pixelStep) {
        std::copy_n(from, size, to);
        return;
    }
    for (std::ptrdiff_t i = 0; i < size; i += nTogether, to += pixelStep)
        for (std::ptrdiff_t c = 0; c < nTogether; ++c) to[c] = from[i + c];
}

// The rows of one piece of columns; gives the position below them.
template <class T, class XTaps, class YTaps>
double makePiece(const DecimateBlock& block, const DecimateShape& shape, const Columns<XTaps>& columns, const T* src,
                 T* dst) {
    constexpr bool kLimited = XTaps::kCount == 4 || YTaps::kCount == 4;
    RowCache<T, XTaps, YTaps> cache;
    std::fill_n(cache.held, YTaps::kCount, std::ptrdiff_t{-1});
    T made[kPiece];
    double y = static_cast<double>(block.yPos);
    for (std::ptrdiff_t j = 0; j < shape.rows; ++j, y += static_cast<double>(block.yStep), dst += block.dstRowStep) {
        const Tap tap = tapAt<YTaps>(y, shape.srcRows);
        const double* rows[YTaps::kCount];
        for (std::ptrdiff_t k = 0; k < YTaps::kCount; ++k) {
            const std::ptrdiff_t row = std::clamp<std::ptrdiff_t>(tap.first + k, 0, shape.srcRows - 1);
            rows[k] = cache.row(src, block.srcRowStep, row, columns);
        }
        blendRows<T, YTaps, kLimited>(rows, tap.share, columns.size, made);
        putSamples(made, columns.size, shape.nTogether, block.dstPixelStep, dst);
    }
    return y;
}

template <class T, class XTaps, class YTaps>
void makePasses(const DecimateBlock& block, const DecimateShape& shape, std::ptrdiff_t firstColumn,
                const Columns<XTaps>& columns, double* yEnd) {
    for (std::ptrdiff_t pass = 0; pass < shape.passes; ++pass) {
        const T* src = reinterpret_cast<const T*>(block.src) + pass * block.srcChannelStep;
        T* dst = reinterpret_cast<T*>(block.dst) + pass * block.dstChannelStep + firstColumn * block.dstPixelStep;
        if constexpr (XTaps::kCount * YTaps::kCount == 1) {
            *yEnd = copyPiece(block, shape, columns, src, dst);
        } else {
            *yEnd = makePiece<T, XTaps, YTaps>(block, shape, columns, src, dst);
        }
    }
}

// One piece of columns of the nearest sample; bits are moved as they are.
template <class T>
double copyPiece(const DecimateBlock& block, const DecimateShape& shape, const Columns<NoTaps>& columns, const T* src,
                 T* dst) {
    T made[kPiece];
    double y = static_cast<double>(block.yPos);
    for (std::ptrdiff_t j = 0; j < shape.rows; ++j, y += static_cast<double>(block.yStep), dst += block.dstRowStep) {
        const std::ptrdiff_t first = tapAt<NoTaps>(y, shape.srcRows).first;
        const T* row = src + std::clamp<std::ptrdiff_t>(first, 0, shape.srcRows - 1) * block.srcRowStep;
        T* to = shape.nTogether == block.dstPixelStep ? dst : made;
        for (std::ptrdiff_t i = 0; i < columns.size; ++i) to[i] = row[columns.offsets[0][i]];
        if (to == made) putSamples(made, columns.size, shape.nTogether, block.dstPixelStep, dst);
    }
    return y;
}

template <class T, class XTaps, class YTaps>
void makeBody(DecimateBlock* block) {
    const DecimateShape shape = decimateShape(*block);
    if (shape.columns < 1 || shape.rows < 1 || shape.srcColumns < 1 || shape.srcRows < 1) return;
    double x = static_cast<double>(block->xPos);
    double y = 0;
    Columns<XTaps> columns;
    const std::ptrdiff_t most = kPiece / shape.nTogether;
    for (std::ptrdiff_t i = 0; i < shape.columns; i += most) {
        x = placeColumns(*block, shape, x, std::min(most, shape.columns - i), &columns);
        makePasses<T, XTaps, YTaps>(*block, shape, i, columns, &y);
    }
    block->xPos = static_cast<float>(x);
    block->yPos = static_cast<float>(y);
}

// Splits the first row off: `first` has it alone.
void splitRow(DecimateBlock* block, DecimateBlock* first, std::ptrdiff_t sampleBytes) {
    *first = *block;
    first->dstRowEnd = block->dstRowStep;
    block->dst += block->dstRowStep * sampleBytes;
    block->dstRowEnd -= block->dstRowStep;
}

void splitColumn(DecimateBlock* block, DecimateBlock* first, std::ptrdiff_t sampleBytes) {
    *first = *block;
    first->dstWidthEnd = block->dstPixelStep;
    block->dst += block->dstPixelStep * sampleBytes;
    block->dstWidthEnd -= block->dstPixelStep;
}

template <class T, class XTaps, class YTaps>
void makeBlock(DecimateBlock* block) {
    if (block->dstWidthEnd < 1 || block->dstRowEnd < 1) return;
    DecimateBlock rest = *block;
    DecimateBlock first;
    if constexpr (YTaps::kCount > 1) {
        if (rest.yPos < kOnSample) {
            splitRow(&rest, &first, sizeof(T));
            makeBlock<T, XTaps, NoTaps>(&first);
            rest.yPos = block->yPos = first.yPos;
            if (rest.dstRowEnd == 0) return static_cast<void>(block->xPos = first.xPos);
        }
    }
    if constexpr (XTaps::kCount > 1) {
        if (rest.xPos < kOnSample) {
            splitColumn(&rest, &first, sizeof(T));
            makeBlock<T, NoTaps, YTaps>(&first);
            rest.xPos = block->xPos = first.xPos;
            if (rest.dstWidthEnd == 0) return static_cast<void>(block->yPos = first.yPos);
        }
    }
    makeBody<T, XTaps, YTaps>(&rest);
    block->xPos = rest.xPos;
    block->yPos = rest.yPos;
}

template <class T, class XTaps, class YTaps>
std::int32_t makeWith(DecimateBlock* block) {
    makeBlock<T, XTaps, YTaps>(block);
    return 1;
}

}  // namespace

DecimateShape decimateShape(const DecimateBlock& block) {
    constexpr std::ptrdiff_t kMostTogether = 16;
    const std::ptrdiff_t channels = block.dstChannelEnd / block.dstChannelStep;
    const bool planar = (block.srcPixelStep == 1 && block.srcChannelStep > 1) || channels > kMostTogether;
    return {block.dstWidthEnd / block.dstPixelStep,
            block.dstRowEnd / block.dstRowStep,
            block.srcWidthEnd / block.srcPixelStep,
            block.srcRowEnd / block.srcRowStep,
            planar ? 1 : channels,
            planar ? channels : 1};
}

template <class T>
std::int32_t ownDecimateNN(DecimateBlock* block) {
    return makeWith<T, NoTaps, NoTaps>(block);
}

template <class T>
std::int32_t ownDecimateLinearX(DecimateBlock* block) {
    return makeWith<T, LinearTaps, NoTaps>(block);
}

template <class T>
std::int32_t ownDecimateLinearY(DecimateBlock* block) {
    return makeWith<T, NoTaps, LinearTaps>(block);
}

template <class T>
std::int32_t ownDecimateLinearXY(DecimateBlock* block) {
    return makeWith<T, LinearTaps, LinearTaps>(block);
}

template <class T>
std::int32_t ownDecimateCubicX(DecimateBlock* block) {
    return makeWith<T, CubicTaps, NoTaps>(block);
}

template <class T>
std::int32_t ownDecimateCubicY(DecimateBlock* block) {
    return makeWith<T, NoTaps, CubicTaps>(block);
}

template <class T>
std::int32_t ownDecimateCubicXY(DecimateBlock* block) {
    return makeWith<T, CubicTaps, CubicTaps>(block);
}

template std::int32_t ownDecimateNN<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateNN<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateNN<float>(DecimateBlock*);
template std::int32_t ownDecimateLinearX<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateLinearX<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateLinearX<float>(DecimateBlock*);
template std::int32_t ownDecimateLinearY<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateLinearY<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateLinearY<float>(DecimateBlock*);
template std::int32_t ownDecimateLinearXY<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateLinearXY<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateLinearXY<float>(DecimateBlock*);
template std::int32_t ownDecimateCubicX<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateCubicX<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateCubicX<float>(DecimateBlock*);
template std::int32_t ownDecimateCubicY<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateCubicY<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateCubicY<float>(DecimateBlock*);
template std::int32_t ownDecimateCubicXY<std::uint8_t>(DecimateBlock*);
template std::int32_t ownDecimateCubicXY<std::uint16_t>(DecimateBlock*);
template std::int32_t ownDecimateCubicXY<float>(DecimateBlock*);

}  // namespace zetpxl
