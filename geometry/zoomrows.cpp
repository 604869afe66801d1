// The rows of a zoomed block.
//   zoomrows.1 positions are sums in double precision; a position short of a whole number by the tolerance is that number
//   zoomrows.2 lines end on the last pixel with the share 1; cubics move their four samples inward at the image's edges
//   zoomrows.3 a row of the source is interpolated along x once, in single precision, and serves all rows that need it
//   zoomrows.4 8U and 16U cut the fraction off after adding the tolerance; the cubic is held within the depth's limits
//   zoomrows.5 the cubic is Newton's, through samples at -1, 0, 1 and 2; differences and weights are rounded to single precision
#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>

#include "core/depth.h"
#include "core/vectors.h"
#include "geometry/sampling.h"
#include "geometry/taps.h"
#include "geometry/zoom.h"
#include "geometry/zoomsingle.h"

namespace zetpxl {

namespace {

static_assert(tapPixels(1) <= kMaskPiece);

// Whole samples have whole differences, all of them exact in single precision too.
template <class T>
using TapValue = std::conditional_t<std::is_integral_v<T>, std::int32_t, double>;

// One position on an axis: the first tap, in the whole image, and where the position lies behind the second.
struct Tap {
    std::ptrdiff_t first;
    double share;
};

double single(double value) { return static_cast<double>(static_cast<float>(value)); }
double single(std::int32_t value) { return static_cast<double>(value); }

std::ptrdiff_t indexAt(double position) { return static_cast<std::ptrdiff_t>(position + kZoomTolerance); }

struct NearestTaps {
    static constexpr std::ptrdiff_t kCount = 1;
    static constexpr std::ptrdiff_t kWeights = 0;
    using Weight = float;

    static Tap at(const ZoomAxis& axis, double position) { return {indexAt(position) + axis.offset, 0}; }
};

struct LinearTaps {
    static constexpr std::ptrdiff_t kCount = 2;
    static constexpr std::ptrdiff_t kWeights = 1;
    using Weight = float;

    static Tap at(const ZoomAxis& axis, double position) {
        const std::ptrdiff_t index = indexAt(position);
        if (index == axis.last) return {index - 1 + axis.offset, 1.0};
        return {index + axis.offset, position - static_cast<double>(index)};
    }
    static void weigh(float share, float (&w)[kWeights]) { w[0] = share; }
    template <class V>
    static double along(const V (&s)[kCount], const float (&w)[kWeights]) {
        const auto share = static_cast<double>(w[0]);
        const auto first = static_cast<double>(s[0]);
        const auto step = static_cast<double>(s[1] - s[0]);
        // A whole step has at most 17 digits, a weight 24.
        if constexpr (std::is_integral_v<V>) return exactProductSum(share, step, first);
        return share * step + first;
    }
    static double across(const double (&s)[kCount], const float (&w)[kWeights]) {
        const auto share = static_cast<double>(w[0]);
        return exactProductSum(s[1], share, s[0] * (1 - share));
    }
};

struct CubicTaps {
    static constexpr std::ptrdiff_t kCount = 4;
    static constexpr std::ptrdiff_t kWeights = 3;
    using Weight = double;  // numbers of single precision, as wide as the sums take them
    static constexpr double kThird = static_cast<double>(0x1.555556p-2f);

    static Tap at(const ZoomAxis& axis, double position) {
        std::ptrdiff_t index = indexAt(position);
        const std::ptrdiff_t whole = index + axis.offset;
        if (whole == axis.size - 1) return {whole - 3, 2.0};
        if (whole == 0) ++index;
        if (whole == axis.size - 2) --index;
        return {index - 1 + axis.offset, position - static_cast<double>(index)};
    }
    // Not part of its callers: g++ 12 leaves the rounding out where it can widen two weights as one vector.
    [[gnu::noinline]] static void weigh(float share, float (&w)[kWeights]) {
        const double t = static_cast<double>(share);
        const double u = t + 1;
        const double g = 0.5 * t * u;
        w[0] = static_cast<float>(u);
        w[1] = static_cast<float>(g * (t - 1) * kThird);
        w[2] = static_cast<float>(g);
    }
    template <class V>
    static double along(const V (&s)[kCount], const double (&w)[kWeights]) {
        const V d1 = s[1] - s[0];
        const V d2 = s[2] - s[1] - d1;
        const V d3 = s[3] - 2 * s[2] + s[1] - d2;
        const double line = exactProductSum(single(d1), w[0], static_cast<double>(s[0]));
        const double bent = exactProductSum(w[1], single(d3), line);
        return exactProductSum(w[2], single(d2), bent);
    }
    static double across(const double (&s)[kCount], const double (&w)[kWeights]) { return along(s, w); }
};

// Columns of a piece: their taps, and for each sample the weights.
template <class Taps>
struct Columns {
    TapColumns taps;
    typename Taps::Weight weights[Taps::kWeights + 1][kTapPiece];
    bool single;  // single precision gives the same sums
};

// Only lines of whole samples are short enough along x, and only bytes across.
template <class T, class Taps>
inline constexpr bool kSingleAlong = kHasFused && std::is_integral_v<T> && Taps::kCount == 2;
template <class T>
inline constexpr bool kSingleAcross = kHasFused && std::is_same_v<T, std::uint8_t>;

template <class Taps>
void weighPixel(const Tap& tap, std::ptrdiff_t nTogether, std::ptrdiff_t pixel, Columns<Taps>* columns) {
    if constexpr (Taps::kWeights > 0) {
        float w[Taps::kWeights];
        Taps::weigh(static_cast<float>(tap.share), w);
        for (std::ptrdiff_t k = 0; k < Taps::kWeights; ++k)
            std::fill_n(columns->weights[k] + pixel * nTogether, nTogether, static_cast<typename Taps::Weight>(w[k]));
    }
}

// Fills a piece from position `x` on and gives the position behind it.
template <class T, class Taps>
double placeColumns(const ZoomRun& run, double x, std::ptrdiff_t pixels, Columns<Taps>* columns) {
    TapColumns* taps = &columns->taps;
    taps->row = {run.x.size, run.srcPixelStep, run.nTogether};
    taps->pixels = pixels;
    for (std::ptrdiff_t i = 0; i < pixels; ++i, x += run.x.step) {
        const Tap tap = Taps::at(run.x, x);
        taps->first[i] = static_cast<std::int32_t>(std::clamp<std::ptrdiff_t>(tap.first, -Taps::kCount, run.x.size));
        weighPixel(tap, run.nTogether, i, columns);
    }
    finishColumns<T>(Taps::kCount, taps);
    if constexpr (kSingleAlong<T, Taps>)
        columns->single = std::all_of(columns->weights[0], columns->weights[0] + taps->samples(), isExactWeight<T>);
    return x;
}

template <class T>
const T* sourceRow(const ZoomRun& run, const std::uint8_t* src, std::ptrdiff_t row) {
    return reinterpret_cast<const T*>(src + std::clamp<std::ptrdiff_t>(row, 0, run.y.size - 1) * run.srcRowStep);
}

// Puts a piece of samples, pixels of `run.nTogether`, to its places in a row of the destination.
template <class T>
void putPixels(const ZoomRun& run, const T* made, std::ptrdiff_t pixels, const std::uint8_t* bytes, T* to) {
    if (!bytes && run.nTogether == run.dstPixelStep) {
        std::copy_n(made, pixels * run.nTogether, to);
        return;
    }
    for (std::ptrdiff_t i = 0; i < pixels; ++i, made += run.nTogether, to += run.dstPixelStep)
        if (!bytes || bytes[i]) std::copy_n(made, run.nTogether, to);
}

// A band of rows in one piece of columns, from row `first` on.
struct Window {
    std::ptrdiff_t firstColumn;
    std::ptrdiff_t firstRow;
    std::ptrdiff_t rows;
    double y;  // position of the first row
};

// Calls make(row of the source's taps, its destination row) for each row of the window that its mask leaves, and puts what
// it made.
template <class T, class Make>
void forRows(const ZoomRun& run, const Window& window, std::ptrdiff_t pixels, std::uint8_t* dst, Make make) {
    TapSamples<T> made[1];
    double y = window.y;
    for (std::ptrdiff_t j = 0; j < window.rows; ++j, y += run.y.step) {
        T* to =
            reinterpret_cast<T*>(dst + (window.firstRow + j) * run.dstRowStep) + window.firstColumn * run.dstPixelStep;
        MaskBytes bytes;
        MaskCover cover = MaskCover::All;
        if (run.mask)
            cover = spreadMask({run.mask + (window.firstRow + j) * run.maskStep, run.maskBit}, window.firstColumn,
                               pixels, &bytes);
        if (cover == MaskCover::None) continue;
        make(y, made);
        putPixels(run, made[0], pixels, cover == MaskCover::Some ? bytes.data() : nullptr, to);
    }
}

template <class T>
void copyWindow(const ZoomRun& run, const Columns<NearestTaps>& columns, const Window& window, const std::uint8_t* src,
                std::uint8_t* dst) {
    const T* made = nullptr;  // the row that was gathered last
    forRows<T>(run, window, columns.taps.pixels, dst, [&](double y, TapSamples<T>(&samples)[1]) {
        const T* row = sourceRow<T>(run, src, NearestTaps::at(run.y, y).first);
        if (row == made) return;
        gatherTaps(row, columns.taps, samples);
        made = row;
    });
}

// Interpolates a source row along x.
template <class T, class Taps>
void columnPass(const T* row, const Columns<Taps>& columns, float* __restrict to) {
    TapSamples<T> taps[Taps::kCount];
    gatherTaps(row, columns.taps, taps);
    const std::ptrdiff_t size = columns.taps.samples();
    if constexpr (kSingleAlong<T, Taps>)
        if (columns.single) return interpolateLines(taps[0], taps[1], columns.weights[0], size, to);
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        TapValue<T> s[Taps::kCount];
        typename Taps::Weight w[Taps::kWeights];
        for (std::ptrdiff_t k = 0; k < Taps::kCount; ++k) s[k] = static_cast<TapValue<T>>(taps[k][i]);
        for (std::ptrdiff_t k = 0; k < Taps::kWeights; ++k) w[k] = columns.weights[k][i];
        to[i] = static_cast<float>(Taps::along(s, w));
    }
}

template <class T, class Taps>
T madeSample(double value) {
    if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(value);
    } else {
        // Far within 32 bits, where cutting off and limiting may change places.
        const auto whole = static_cast<std::int32_t>(value + kZoomTolerance);
        if (Taps::kCount < 4) return static_cast<T>(whole);
        return static_cast<T>(std::clamp<std::int32_t>(whole, 0, std::numeric_limits<T>::max()));
    }
}

template <class T, class Taps>
void blendSamples(const float* const (&rows)[Taps::kCount], const float (&w)[Taps::kWeights], std::ptrdiff_t from,
                  std::ptrdiff_t to, T* __restrict made) {
    typename Taps::Weight weights[Taps::kWeights];
    std::copy_n(w, Taps::kWeights, weights);
    for (std::ptrdiff_t i = from; i < to; ++i) {
        double s[Taps::kCount];
        for (std::ptrdiff_t k = 0; k < Taps::kCount; ++k) s[k] = static_cast<double>(rows[k][i]);
        made[i] = madeSample<T, Taps>(Taps::across(s, weights));
    }
}

// Samples that are made anew together when single precision does not tell one of them.
constexpr std::ptrdiff_t kBlendPiece = 64;

[[maybe_unused]] bool blendSingle(const float* const (&rows)[2], const float (&w)[1], std::ptrdiff_t from,
                                  std::ptrdiff_t count, std::uint8_t* made) {
    return blendLines(rows[0] + from, rows[1] + from, w[0], count, made + from);
}

[[maybe_unused]] bool blendSingle(const float* const (&rows)[4], const float (&w)[3], std::ptrdiff_t from,
                                  std::ptrdiff_t count, std::uint8_t* made) {
    return blendCubics(rows[0] + from, rows[1] + from, rows[2] + from, rows[3] + from, w, count, made + from);
}

template <class T, class Taps>
void blendRows(const float* const (&rows)[Taps::kCount], double share, std::ptrdiff_t size, T* __restrict made) {
    float w[Taps::kWeights];
    Taps::weigh(static_cast<float>(share), w);
    if constexpr (kSingleAcross<T>) {
        const bool isBetween = share >= -kZoomTolerance && share <= 1;
        for (std::ptrdiff_t i = 0; i < size; i += kBlendPiece) {
            const std::ptrdiff_t count = std::min(kBlendPiece, size - i);
            if (!isBetween || !blendSingle(rows, w, i, count, made)) blendSamples<T, Taps>(rows, w, i, i + count, made);
        }
    } else {
        blendSamples<T, Taps>(rows, w, 0, size, made);
    }
}

// Interpolated rows, each in the slot of its number.
template <class Taps>
struct RowCache {
    std::ptrdiff_t held[Taps::kCount];
    float rows[Taps::kCount * kTapPiece];
};

template <class T, class Taps>
const float* cachedRow(const ZoomRun& run, const Columns<Taps>& columns, const std::uint8_t* src, std::ptrdiff_t index,
                       RowCache<Taps>* cache) {
    const std::ptrdiff_t row = std::clamp<std::ptrdiff_t>(index, 0, run.y.size - 1);
    const std::ptrdiff_t slot = row % Taps::kCount;
    float* to = cache->rows + slot * kTapPiece;
    if (cache->held[slot] == row) return to;
    prefetchTaps(sourceRow<T>(run, src, row + kTapsAhead), columns.taps);
    columnPass<T, Taps>(sourceRow<T>(run, src, row), columns, to);
    cache->held[slot] = row;
    return to;
}

template <class T, class Taps>
void blendWindow(const ZoomRun& run, const Columns<Taps>& columns, const Window& window, const std::uint8_t* src,
                 std::uint8_t* dst) {
    RowCache<Taps> cache;
    std::fill_n(cache.held, Taps::kCount, std::ptrdiff_t{-1});
    forRows<T>(run, window, columns.taps.pixels, dst, [&](double y, TapSamples<T>(&made)[1]) {
        const Tap tap = Taps::at(run.y, y);
        const float* rows[Taps::kCount];
        for (std::ptrdiff_t k = 0; k < Taps::kCount; ++k)
            rows[k] = cachedRow<T, Taps>(run, columns, src, tap.first + k, &cache);
        blendRows<T, Taps>(rows, tap.share, columns.taps.samples(), made[0]);
    });
}

template <class T, class Taps>
void makeWindow(const ZoomRun& run, const Columns<Taps>& columns, const Window& window) {
    for (std::ptrdiff_t pass = 0; pass < run.passes; ++pass) {
        const std::uint8_t* src = run.src + pass * run.srcPlaneStep;
        std::uint8_t* dst = run.dst + pass * run.dstPlaneStep;
        if constexpr (Taps::kCount == 1) {
            copyWindow<T>(run, columns, window, src, dst);
        } else {
            blendWindow<T, Taps>(run, columns, window, src, dst);
        }
    }
}

template <class T, class Taps>
void makeRows(const ZoomRun& run) {
    Columns<Taps> columns;
    const std::ptrdiff_t most = tapPixels(run.nTogether);
    Window window{0, 0, 0, run.y.start};
    for (; window.firstRow < run.height; window.firstRow += kTapBand) {
        window.rows = std::min(kTapBand, run.height - window.firstRow);
        double x = run.x.start;
        for (window.firstColumn = 0; window.firstColumn < run.width; window.firstColumn += most) {
            x = placeColumns<T>(run, x, std::min(most, run.width - window.firstColumn), &columns);
            makeWindow<T, Taps>(run, columns, window);
        }
        for (std::ptrdiff_t j = 0; j < window.rows; ++j) window.y += run.y.step;
    }
}

bool maskBit(const ZoomRun& run, std::ptrdiff_t column, std::ptrdiff_t row) {
    if (!run.mask) return true;
    const std::ptrdiff_t bit = run.maskBit + column;
    return (run.mask[row * run.maskStep + (bit >> 3)] >> (7 - (bit & 7))) & 1;
}

void ownZoomNNBits(const ZoomRun& run) {
    double y = run.y.start;
    for (std::ptrdiff_t j = 0; j < run.height; ++j, y += run.y.step) {
        const auto* row = sourceRow<std::uint8_t>(run, run.src, NearestTaps::at(run.y, y).first);
        double x = run.x.start;
        for (std::ptrdiff_t i = 0; i < run.width; ++i, x += run.x.step) {
            if (!maskBit(run, i, j)) continue;
            const std::ptrdiff_t column =
                std::clamp<std::ptrdiff_t>(NearestTaps::at(run.x, x).first, 0, run.x.size - 1);
            putBit(run.dst + j * run.dstRowStep, run.dstBit + i, (row[column >> 3] >> (7 - (column & 7))) & 1);
        }
    }
}

using ZoomRoutine = void (*)(const ZoomRun& run);

template <class T>
constexpr ZoomRoutine ownZoomNN = makeRows<T, NearestTaps>;
template <class T>
constexpr ZoomRoutine ownZoomLinear = makeRows<T, LinearTaps>;
template <class T>
constexpr ZoomRoutine ownZoomCubic = makeRows<T, CubicTaps>;

using ZoomRoutines = std::array<ZoomRoutine, 3>;

template <class T>
constexpr ZoomRoutines zoomRoutines = {ownZoomNN<T>, ownZoomLinear<T>, ownZoomCubic<T>};

// By depth and interpolation; signed depths are refused, and bits always take the nearest.
constexpr std::array<ZoomRoutines, kDepthCount> zoomTable = {{
    {ownZoomNNBits, nullptr, nullptr},
    zoomRoutines<std::uint8_t>,
    {},
    zoomRoutines<std::uint16_t>,
    {},
    {},
    zoomRoutines<float>,
}};

}  // namespace

void zoomRows(const ZoomRun& run, std::uint32_t depth, std::int32_t mode) {
    zoomTable[static_cast<std::size_t>(depthIndex(depth))][static_cast<std::size_t>(mode)](run);
}

}  // namespace zetpxl
