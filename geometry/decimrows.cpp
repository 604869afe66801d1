// Decimation by the nearest sample, by lines and by cubics.
//   rows.1 positions are sums in double precision of a single precision step; they tell sample and share
//   rows.2 a position below the smallest normal number is the first sample itself, taken unchanged
//   rows.3 cubics move their four samples back at the far edge; nothing moves at the near one, which rows.2 keeps away
//   rows.4 a row of the source is interpolated along x once and serves all rows that need it
//   rows.5 8U and 16U cut the fraction off; the cubic is held within the depth's limits
//   rows.6 lines whose shares have few binary digits are exact in single precision, which is then used
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <type_traits>

#include "geometry/decimate.h"
#include "geometry/taps.h"

namespace zetpxl {

namespace {

// The smallest normal single precision number.
constexpr float kOnSample = FLT_MIN;

// Values and their neighbours' sums: whole numbers stay whole, with the same result.
template <class T>
using TapValue = std::conditional_t<std::is_integral_v<T>, std::int32_t, double>;

struct NoTaps {
    static constexpr std::ptrdiff_t kCount = 1;
    static constexpr std::ptrdiff_t kBefore = 0;

    template <class A, class V>
    static A value(const V* s, A) {
        return static_cast<A>(s[0]);
    }
};

struct LinearTaps {
    static constexpr std::ptrdiff_t kCount = 2;
    static constexpr std::ptrdiff_t kBefore = 0;

    template <class A, class V>
    static A value(const V* s, A t) {
        return static_cast<A>(s[0]) * (1 - t) + static_cast<A>(s[1]) * t;
    }
};

struct CubicTaps {
    static constexpr std::ptrdiff_t kCount = 4;
    static constexpr std::ptrdiff_t kBefore = 1;
    static constexpr double kSixth = static_cast<double>(0x1.555556p-3f);

    // Lagrange's cubic through four points, as a polynomial in t.
    template <class A, class V>
    static A value(const V* s, A t) {
        static_assert(std::is_same_v<A, double>);
        const double square = t * t;
        const double cube = square * t;
        const V first = -2 * s[0] - 3 * s[1] + 6 * s[2] - s[3];
        const V second = 3 * s[0] - 6 * s[1] + 3 * s[2];
        const V third = -s[0] + 3 * s[1] - 3 * s[2] + s[3];
        return (static_cast<double>(6 * s[1]) + t * static_cast<double>(first) + square * static_cast<double>(second) +
                cube * static_cast<double>(third)) *
               kSixth;
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

template <class T, bool Limited, class A>
T madeSample(A value) {
    if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(value);
    } else {
        // Far within 32 bits, where cutting off and limiting may change places.
        const auto whole = static_cast<std::int32_t>(value);
        if (!Limited) return static_cast<T>(whole);
        return static_cast<T>(std::clamp<std::int32_t>(whole, 0, std::numeric_limits<T>::max()));
    }
}

// Columns of a piece: their taps, and for each sample the share.
template <class A>
struct Columns {
    TapColumns taps;
    A shares[kTapPiece];
};

// Fills a piece from position `x` on and gives the position behind it.
template <class T, class Taps, class A>
double placeColumns(const DecimateBlock& block, const DecimateShape& shape, double x, std::ptrdiff_t pixels,
                    Columns<A>* columns) {
    TapColumns* taps = &columns->taps;
    taps->row = {shape.srcColumns, block.srcPixelStep, shape.nTogether};
    taps->pixels = pixels;
    for (std::ptrdiff_t i = 0; i < pixels; ++i, x += static_cast<double>(block.xStep)) {
        const Tap tap = tapAt<Taps>(x, shape.srcColumns);
        taps->first[i] = static_cast<std::int32_t>(tap.first);
        for (std::ptrdiff_t c = 0; c < shape.nTogether; ++c)
            columns->shares[i * shape.nTogether + c] = static_cast<A>(tap.share);
    }
    finishColumns<T>(Taps::kCount, taps);
    return x;
}

// Interpolates a source row along x.
template <class T, class Taps, class A>
void columnPass(const T* row, const Columns<A>& columns, A* __restrict to) {
    TapSamples<T> taps[Taps::kCount];
    gatherTaps(row, columns.taps, taps);
    const std::ptrdiff_t size = columns.taps.samples();
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        TapValue<T> s[Taps::kCount];
        for (std::ptrdiff_t k = 0; k < Taps::kCount; ++k) s[k] = static_cast<TapValue<T>>(taps[k][i]);
        to[i] = Taps::value(s, columns.shares[i]);
    }
}

// Rows of the source interpolated along x, kept while rows near them are made: each in the slot of its number.
template <class T, class XTaps, class YTaps, class A>
struct RowCache {
    std::ptrdiff_t held[YTaps::kCount];
    A rows[YTaps::kCount * kTapPiece];

    const A* row(const T* src, std::ptrdiff_t rowStep, std::ptrdiff_t index, std::ptrdiff_t count,
                 const Columns<A>& columns) {
        const std::ptrdiff_t slot = index % YTaps::kCount;
        A* to = rows + slot * kTapPiece;
        if (held[slot] == index) return to;
        prefetchTaps(src + std::min(index + kTapsAhead, count - 1) * rowStep, columns.taps);
        columnPass<T, XTaps, A>(src + index * rowStep, columns, to);
        held[slot] = index;
        return to;
    }
};

template <class T, class YTaps, bool Limited, class A>
void blendRows(const A* const (&rows)[YTaps::kCount], A share, std::ptrdiff_t size, T* __restrict to) {
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        A s[YTaps::kCount];
        for (std::ptrdiff_t k = 0; k < YTaps::kCount; ++k) s[k] = rows[k][i];
        to[i] = madeSample<T, Limited>(YTaps::value(s, share));
    }
}

// Samples to their places in the destination.
template <class T>
void putSamples(const T* from, const TapColumns& taps, std::ptrdiff_t pixelStep, T* to) {
    const std::ptrdiff_t together = taps.row.nTogether;
    const std::ptrdiff_t size = taps.samples();
    if (together == pixelStep) {
        std::copy_n(from, size, to);
        return;
    }
    for (std::ptrdiff_t i = 0; i < size; i += together, to += pixelStep)
        for (std::ptrdiff_t c = 0; c < together; ++c) to[c] = from[i + c];
}

// A band of rows: the first one's position and how many.
struct RowBand {
    std::ptrdiff_t first;
    std::ptrdiff_t rows;
    double y;
};

// The rows of a band in one piece of columns; gives the position below them.
template <class T, class XTaps, class YTaps, class A>
double makePiece(const DecimateBlock& block, const DecimateShape& shape, const Columns<A>& columns, const RowBand& band,
                 const T* src, T* dst) {
    constexpr bool kLimited = XTaps::kCount == 4 || YTaps::kCount == 4;
    RowCache<T, XTaps, YTaps, A> cache;
    std::fill_n(cache.held, YTaps::kCount, std::ptrdiff_t{-1});
    T made[kTapPiece];
    double y = band.y;
    for (std::ptrdiff_t j = 0; j < band.rows; ++j, y += static_cast<double>(block.yStep), dst += block.dstRowStep) {
        const Tap tap = tapAt<YTaps>(y, shape.srcRows);
        const A* rows[YTaps::kCount];
        for (std::ptrdiff_t k = 0; k < YTaps::kCount; ++k) {
            const std::ptrdiff_t row = std::clamp<std::ptrdiff_t>(tap.first + k, 0, shape.srcRows - 1);
            rows[k] = cache.row(src, block.srcRowStep, row, shape.srcRows, columns);
        }
        blendRows<T, YTaps, kLimited, A>(rows, static_cast<A>(tap.share), columns.taps.samples(), made);
        putSamples(made, columns.taps, block.dstPixelStep, dst);
    }
    return y;
}

// The same of the nearest sample; bits are moved as they are.
template <class T, class A>
double copyPiece(const DecimateBlock& block, const DecimateShape& shape, const Columns<A>& columns, const RowBand& band,
                 const T* src, T* dst) {
    TapSamples<T> made[1];
    const double ahead = kTapsAhead * static_cast<double>(block.yStep);
    double y = band.y;
    for (std::ptrdiff_t j = 0; j < band.rows; ++j, y += static_cast<double>(block.yStep), dst += block.dstRowStep) {
        const std::ptrdiff_t first = tapAt<NoTaps>(y, shape.srcRows).first;
        const auto rowAt = [&](std::ptrdiff_t r) {
            return src + std::clamp<std::ptrdiff_t>(r, 0, shape.srcRows - 1) * block.srcRowStep;
        };
        prefetchTaps(rowAt(static_cast<std::ptrdiff_t>(y + ahead)), columns.taps);
        const T* row = rowAt(first);
        gatherTaps(row, columns.taps, made);
        putSamples(made[0], columns.taps, block.dstPixelStep, dst);
    }
    return y;
}

template <class T, class XTaps, class YTaps, class A>
double makePasses(const DecimateBlock& block, const DecimateShape& shape, std::ptrdiff_t firstColumn,
                  const Columns<A>& columns, const RowBand& band) {
    double yEnd = band.y;
    for (std::ptrdiff_t pass = 0; pass < shape.passes; ++pass) {
        const T* src = reinterpret_cast<const T*>(block.src) + pass * block.srcChannelStep;
        T* dst = reinterpret_cast<T*>(block.dst) + pass * block.dstChannelStep + firstColumn * block.dstPixelStep +
                 band.first * block.dstRowStep;
        if constexpr (XTaps::kCount * YTaps::kCount == 1) {
            yEnd = copyPiece(block, shape, columns, band, src, dst);
        } else {
            yEnd = makePiece<T, XTaps, YTaps, A>(block, shape, columns, band, src, dst);
        }
    }
    return yEnd;
}

template <class T, class XTaps, class YTaps, class A>
void makeBands(DecimateBlock* block, const DecimateShape& shape) {
    Columns<A> columns;
    const std::ptrdiff_t most = tapPixels(shape.nTogether);
    double x = 0;
    RowBand band{0, 0, static_cast<double>(block->yPos)};
    for (; band.first < shape.rows; band.first += kTapBand) {
        band.rows = std::min(kTapBand, shape.rows - band.first);
        x = static_cast<double>(block->xPos);
        double yEnd = band.y;
        for (std::ptrdiff_t i = 0; i < shape.columns; i += most) {
            x = placeColumns<T, XTaps>(*block, shape, x, std::min(most, shape.columns - i), &columns);
            yEnd = makePasses<T, XTaps, YTaps, A>(*block, shape, i, columns, band);
        }
        band.y = yEnd;
    }
    block->xPos = static_cast<float>(x);
    block->yPos = static_cast<float>(band.y);
}

// Positions that go on by this step from this start are multiples of 2 to the power of -digits.
bool hasDigits(float start, float step, std::int32_t digits) {
    const float unit = std::ldexp(1.0f, -digits);
    return std::fmod(start, unit) == 0 && std::fmod(step, unit) == 0;
}

// Lines of whole samples: two shares and a sample make a number of at most 24 digits, so every product and sum is exact in
// single precision, and so are the two factors 1 - share.
template <class T>
bool isExactInSingle(const DecimateBlock& block) {
    constexpr std::int32_t kDigits = (24 - std::numeric_limits<T>::digits) / 2;
    return hasDigits(block.xPos, block.xStep, kDigits) && hasDigits(block.yPos, block.yStep, kDigits);
}

template <class T, class XTaps, class YTaps>
void makeBody(DecimateBlock* block) {
    const DecimateShape shape = decimateShape(*block);
    if (shape.columns < 1 || shape.rows < 1 || shape.srcColumns < 1 || shape.srcRows < 1) return;
    if constexpr (std::is_integral_v<T> && XTaps::kCount < 4 && YTaps::kCount < 4)
        if (isExactInSingle<T>(*block)) return makeBands<T, XTaps, YTaps, float>(block, shape);
    makeBands<T, XTaps, YTaps, double>(block, shape);
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

float positionBehind(float position, float step, std::ptrdiff_t count) {
    auto sum = static_cast<double>(position);
    for (std::ptrdiff_t i = 0; i < count; ++i) sum += static_cast<double>(step);
    return static_cast<float>(sum);
}

// A block without pixels moves the positions on all the same.
void passBlock(DecimateBlock* block) {
    block->xPos = positionBehind(block->xPos, block->xStep, block->dstWidthEnd / block->dstPixelStep);
    block->yPos = positionBehind(block->yPos, block->yStep, block->dstRowEnd / block->dstRowStep);
}

template <class T, class XTaps, class YTaps>
void makeBlock(DecimateBlock* block) {
    if (block->dstWidthEnd < 1 || block->dstRowEnd < 1) return passBlock(block);
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
