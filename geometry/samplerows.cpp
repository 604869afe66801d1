//   samplerows.1 indices and shares first, then all taps side by side, then the arithmetic over whole vectors: the same products
//                and sums, in the same order, as one position after another
//   samplerows.2 bytes are made in single precision where their results do not lie so near a half that double precision could
//                round them the other way
//   samplerows.3 taps that lie in the memory are taken as words where several share one; others one by one, brought back to the
//                edge
#include "geometry/samplerows.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "core/vectors.h"

namespace zetpxl {

namespace {

// One axis of the positions: first taps and what the weights come from.
struct TapAxis {
    alignas(kVectorAlign) std::int32_t first[kPositions];
    alignas(kVectorAlign) double share[kPositions];
};

template <class T>
inline constexpr bool kMayBeSingle = kHasFused && std::is_same_v<T, std::uint8_t>;

using SingleShares = float[kPositions];

// The bounds of single precision hold for shares between the samples' own places. Beyond them lines, which have no limits of
// their own, wrap around as well.
bool areBetween(const double* shares, std::ptrdiff_t count, double least, double most) {
    std::int64_t outside = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) outside |= (shares[i] < least - kWholeTolerance) | (shares[i] > most);
    return outside == 0;
}

void makeSingle(const double* __restrict from, std::ptrdiff_t count, float* __restrict to) {
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = static_cast<float>(from[i]);
}

// Not part of its caller, where the compiler cannot tell the arrays apart.
[[gnu::noinline]] void placeLines(const double* __restrict positions, std::ptrdiff_t count, std::int32_t last,
                                  TapAxis* __restrict axis) {
    std::int32_t ends = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(positions[i] + kWholeTolerance);
        axis->first[i] = index;
        axis->share[i] = positions[i] - static_cast<double>(index);
        ends |= index >= last;
    }
    if (!ends) return;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        if (axis->first[i] < last) continue;
        axis->first[i] = last - 1;
        axis->share[i] = 1.0;
    }
}

[[gnu::noinline]] void placeCubics(const double* __restrict positions, std::ptrdiff_t count, std::int32_t last,
                                   TapAxis* __restrict axis) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(positions[i] + kWholeTolerance);
        const std::int32_t inside = std::max(index - 1, 0);
        const std::int32_t first = index >= last - 1 ? last - 3 : inside;
        axis->first[i] = first;
        axis->share[i] = static_cast<double>(static_cast<float>((positions[i] - first) - 1));
    }
}

// Lagrange's weights at each position.
struct CubicWeights {
    alignas(kVectorAlign) double w[4][kPositions];
};

// A sixth is half of a third, exactly.
void weighCubics(const TapAxis& axis, std::ptrdiff_t count, CubicWeights* weights) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double t = axis.share[i];
        const double square = t * t;
        const double cube = square * t;
        const double cubeSixth = thirdOf(cube) / 2;
        const double third = thirdOf(t);
        weights->w[0][i] = -cubeSixth + square / 2 - third;
        weights->w[1][i] = cube / 2 - square - t / 2 + 1;
        weights->w[2][i] = -cube / 2 + square / 2 + t;
        weights->w[3][i] = cubeSixth - third / 2;
    }
}

// Square neighbourhoods of `Taps` by `Taps` samples, tap by tap. Words of bytes hold several: those of a row of taps, or of
// the channels of a tap.
enum class TapForm { Samples, RowWords, PixelWords };

template <std::int32_t Taps, TapForm Form, class T>
struct TapBlock {
    using Two = std::conditional_t<Form == TapForm::RowWords, std::uint16_t, std::uint32_t>;
    using Word = std::conditional_t<Form == TapForm::Samples, T, std::conditional_t<Taps == 2, Two, std::uint32_t>>;
    static constexpr std::int32_t kColumns = Form == TapForm::RowWords ? 1 : Taps;
    alignas(kVectorAlign) Word words[std::size_t{Taps}][std::size_t{kColumns}][kPositions];

    template <class A>
    A at(std::int32_t row, std::int32_t column, std::int32_t channel, std::ptrdiff_t i) const {
        if constexpr (Form == TapForm::Samples) {
            return static_cast<A>(words[row][column][i]);
        } else {
            const std::int32_t shift = 8 * (Form == TapForm::RowWords ? column : channel);
            const std::uint32_t word = words[row][Form == TapForm::RowWords ? 0 : column][i];
            return static_cast<A>(static_cast<std::int32_t>((word >> shift) & 0xFF));
        }
    }
};

// Taps one by one, as words would hold them.
template <std::int32_t Taps, TapForm Form, class T>
void takeEdge(const SampleSource& source, std::int32_t x, std::int32_t y, std::int32_t channel, std::ptrdiff_t i,
              TapBlock<Taps, Form, T>* block) {
    using Word = typename TapBlock<Taps, Form, T>::Word;
    const std::ptrdiff_t step = source.grid.channelStep / static_cast<std::ptrdiff_t>(sizeof(T));
    for (std::int32_t r = 0; r < Taps; ++r)
        for (std::int32_t c = 0; c < Taps; ++c) {
            const T* pixel = sampleAt<T>(source.grid, x + c, y + r);
            if constexpr (Form == TapForm::Samples) {
                block->words[r][c][i] = pixel[channel * step];
            } else if constexpr (Form == TapForm::RowWords) {
                const Word before = c == 0 ? 0 : block->words[r][0][i];
                block->words[r][0][i] = static_cast<Word>(before | static_cast<Word>(pixel[channel * step] << (8 * c)));
            } else {
                Word word = 0;
                for (std::int32_t k = 0; k < source.nProc; ++k) word |= static_cast<Word>(pixel[k * step] << (8 * k));
                block->words[r][c][i] = word;
            }
        }
}

template <std::int32_t Taps, TapForm Form, class T>
void takeInside(const std::uint8_t* first, std::ptrdiff_t rowStep, std::ptrdiff_t pixelStep, std::ptrdiff_t i,
                TapBlock<Taps, Form, T>* block) {
    using Word = typename TapBlock<Taps, Form, T>::Word;
    constexpr std::int32_t kColumns = TapBlock<Taps, Form, T>::kColumns;
    for (std::int32_t r = 0; r < Taps; ++r)
        for (std::int32_t c = 0; c < kColumns; ++c) {
            Word word = 0;
            std::memcpy(&word, first + r * rowStep + c * pixelStep, sizeof word);
            block->words[r][c][i] = word;
        }
}

// Where the first taps of all positions lie, from the grid's origin; false when taps of any lie outside it.
[[gnu::noinline]] bool findTaps(const SampleGrid& grid, const TapAxis& xs, const TapAxis& ys, std::ptrdiff_t count,
                                std::int32_t lastX, std::int32_t lastY, std::ptrdiff_t* __restrict offsets) {
    const auto rowStep = static_cast<std::int32_t>(grid.rowStep);
    const auto pixelStep = static_cast<std::int32_t>(grid.pixelStep);
    std::int32_t outside = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::int32_t x = xs.first[i];
        const std::int32_t y = ys.first[i];
        outside |= (x < 0) | (x > lastX) | (y < 0) | (y > lastY);
        offsets[i] = std::ptrdiff_t{y} * rowStep + std::ptrdiff_t{x} * pixelStep;
    }
    return outside == 0;
}

// Takes the taps of all positions, of one channel where a word does not hold all.
template <std::int32_t Taps, TapForm Form, class T>
[[gnu::noinline]] void takeTaps(const SampleSource& source, const TapAxis& xs, const TapAxis& ys, std::ptrdiff_t count,
                                std::int32_t channel, TapBlock<Taps, Form, T>* block) {
    const SampleGrid& grid = source.grid;
    // A word of a pixel's channels may be longer than the pixel.
    const std::int32_t lastX = grid.lastColumn - (Taps - 1) - (Form == TapForm::PixelWords ? 1 : 0);
    const std::int32_t lastY = grid.lastRow - (Taps - 1);
    alignas(kVectorAlign) std::ptrdiff_t offsets[kPositions];
    const bool inside = findTaps(grid, xs, ys, count, lastX, lastY, offsets);
    const std::uint8_t* const origin = grid.origin + channel * grid.channelStep;
    const std::ptrdiff_t rowStep = grid.rowStep;
    const std::ptrdiff_t pixelStep = grid.pixelStep;
    if (inside) {
        for (std::ptrdiff_t i = 0; i < count; ++i) takeInside(origin + offsets[i], rowStep, pixelStep, i, block);
        return;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::int32_t x = xs.first[i];
        const std::int32_t y = ys.first[i];
        if (x >= 0 && x <= lastX && y >= 0 && y <= lastY) {
            takeInside(origin + offsets[i], rowStep, pixelStep, i, block);
        } else {
            takeEdge(source, x, y, channel, i, block);
        }
    }
}

bool isDense(const PositionList& list) {
    return list.count > 0 && list.column[list.count - 1] - list.column[0] == list.count - 1;
}

template <class T>
void putSamples(const T* made, const PositionList& list, std::int32_t channel, const SampleRow& to) {
    std::uint8_t* const row = to.row + channel * to.channelStep;
    const std::ptrdiff_t count = list.count;
    const std::ptrdiff_t step = to.pixelStep;
    if (!isDense(list)) {
        for (std::ptrdiff_t i = 0; i < count; ++i) *reinterpret_cast<T*>(row + list.column[i] * step) = made[i];
        return;
    }
    T* samples = reinterpret_cast<T*>(row + list.column[0] * step);
    if (step == sizeof(T)) {
        std::copy_n(made, count, samples);
        return;
    }
    const std::ptrdiff_t samplesStep = step / static_cast<std::ptrdiff_t>(sizeof(T));
    for (std::ptrdiff_t i = 0; i < count; ++i) samples[i * samplesStep] = made[i];
}

template <TapForm Form, class T>
void blendLines(const TapBlock<2, Form, T>& block, const TapAxis& xs, const TapAxis& ys, std::ptrdiff_t count,
                std::int32_t channel, T* __restrict made) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double a = block.template at<double>(0, 0, channel, i);
        const double b = block.template at<double>(0, 1, channel, i);
        const double c = block.template at<double>(1, 0, channel, i);
        const double d = block.template at<double>(1, 1, channel, i);
        const double top = (b - a) * xs.share[i] + a;
        const double bottom = (d - c) * xs.share[i] + c;
        made[i] = roundedSample<T>(top + (bottom - top) * ys.share[i]);
    }
}

// The byte of a value that is off by less than the margin, from which half a margin goes to rounding; sets a bit of `differs`
// where it could be another.
[[maybe_unused]] std::uint8_t certainByte(float value, float margin, std::int32_t* differs) {
    const std::int32_t least = std::clamp(static_cast<std::int32_t>(value + (0.5f - margin)), 0, 255);
    const std::int32_t most = std::clamp(static_cast<std::int32_t>(value + (0.5f + margin)), 0, 255);
    *differs |= least ^ most;
    return static_cast<std::uint8_t>(least);
}

// blendLines in single precision; false when that cannot tell a byte. Shares are off by 2^-25, steps of lines below 2^8 so by
// 2^-17, and each sum by 2^-17 more: at most 2^-14 together.
template <TapForm Form>
bool blendLinesSingle(const TapBlock<2, Form, std::uint8_t>& block, const SingleShares& xs, const SingleShares& ys,
                      std::ptrdiff_t count, std::int32_t channel, std::uint8_t* __restrict made) {
    std::int32_t differs = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto a = block.template at<float>(0, 0, channel, i);
        const auto b = block.template at<float>(0, 1, channel, i);
        const auto c = block.template at<float>(1, 0, channel, i);
        const auto d = block.template at<float>(1, 1, channel, i);
        const float top = std::fma(b - a, xs[i], a);
        const float bottom = std::fma(d - c, xs[i], c);
        made[i] = certainByte(std::fma(bottom - top, ys[i], top), 0x1p-13f, &differs);
    }
    return differs == 0;
}

template <class T>
T limitedOf(double value) {
    if constexpr (!std::is_same_v<T, float>) {
        constexpr double greatest = std::numeric_limits<T>::max();
        value = value > greatest ? greatest : value;
        value = value < 0 ? 0 : value;
    }
    return roundedSample<T>(value);
}

template <TapForm Form, class T>
void blendCubics(const TapBlock<4, Form, T>& block, const CubicWeights& xs, const CubicWeights& ys,
                 std::ptrdiff_t count, std::int32_t channel, T* __restrict made) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        double value = 0;
        for (std::int32_t r = 0; r < 4; ++r) {
            double sum = 0;
            for (std::int32_t c = 0; c < 4; ++c) sum += xs.w[c][i] * block.template at<double>(r, c, channel, i);
            value += ys.w[r][i] * sum;
        }
        made[i] = limitedOf<T>(value);
    }
}

struct SingleWeights {
    alignas(kVectorAlign) SingleShares w[4];
};

void makeSingle(const CubicWeights& from, std::ptrdiff_t count, SingleWeights* to) {
    for (std::ptrdiff_t k = 0; k < 4; ++k) makeSingle(from.w[k], count, to->w[k]);
}

// blendCubics in single precision; false when that cannot tell a byte. Absolute weights add up to less than 1.64, also
// beyond the middle of their samples. So sums along a row stay below 2^9, four roundings of 2^-16 and weights off by 2^-25
// of themselves put them off by less than 2^-13.7; sums of rows stay below 2^10, and four roundings of 2^-15 more make less
// than 2^-11.8 together, of which the limits take nothing back.
template <TapForm Form>
bool blendCubicsSingle(const TapBlock<4, Form, std::uint8_t>& block, const SingleWeights& xs, const SingleWeights& ys,
                       std::ptrdiff_t count, std::int32_t channel, std::uint8_t* __restrict made) {
    std::int32_t differs = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        float value = 0;
        for (std::int32_t r = 0; r < 4; ++r) {
            float sum = 0;
            for (std::int32_t c = 0; c < 4; ++c)
                sum = std::fma(xs.w[c][i], block.template at<float>(r, c, channel, i), sum);
            value = std::fma(ys.w[r][i], sum, value);
        }
        made[i] = certainByte(value, 0x1p-11f, &differs);
    }
    return differs == 0;
}

// Both interpolations: the weights of the axes, and the blend of a channel.
struct Lines {
    static constexpr std::int32_t kTaps = 2;
    TapAxis x, y;
    alignas(kVectorAlign) SingleShares xSingle;
    alignas(kVectorAlign) SingleShares ySingle;
    bool single;

    template <class T>
    void place(const SampleSource& source, const PositionList& list) {
        placeLines(list.x, list.count, source.lastColumn, &x);
        placeLines(list.y, list.count, source.lastRow, &y);
        if (!kMayBeSingle<T>) return;
        single = areBetween(x.share, list.count, 0, 1) && areBetween(y.share, list.count, 0, 1);
        makeSingle(x.share, list.count, xSingle);
        makeSingle(y.share, list.count, ySingle);
    }
    template <TapForm Form, class T>
    void blend(const TapBlock<2, Form, T>& block, std::ptrdiff_t count, std::int32_t channel, T* made) const {
        if constexpr (kMayBeSingle<T>)
            if (single && blendLinesSingle(block, xSingle, ySingle, count, channel, made)) return;
        blendLines(block, x, y, count, channel, made);
    }
};

struct Cubics {
    static constexpr std::int32_t kTaps = 4;
    TapAxis x, y;
    CubicWeights xWeights, yWeights;
    SingleWeights xSingle, ySingle;
    bool single;

    template <class T>
    void place(const SampleSource& source, const PositionList& list) {
        placeCubics(list.x, list.count, source.grid.lastColumn, &x);
        placeCubics(list.y, list.count, source.grid.lastRow, &y);
        weighCubics(x, list.count, &xWeights);
        weighCubics(y, list.count, &yWeights);
        if (!kMayBeSingle<T>) return;
        single = areBetween(x.share, list.count, -1, 2) && areBetween(y.share, list.count, -1, 2);
        makeSingle(xWeights, list.count, &xSingle);
        makeSingle(yWeights, list.count, &ySingle);
    }
    template <TapForm Form, class T>
    void blend(const TapBlock<4, Form, T>& block, std::ptrdiff_t count, std::int32_t channel, T* made) const {
        if constexpr (kMayBeSingle<T>)
            if (single && blendCubicsSingle(block, xSingle, ySingle, count, channel, made)) return;
        blendCubics(block, xWeights, yWeights, count, channel, made);
    }
};

template <TapForm Form, class Rule, class T>
void makePixels(const SampleSource& source, const Rule& rule, const PositionList& list, const SampleRow& to) {
    TapBlock<Rule::kTaps, Form, T> block;
    alignas(kVectorAlign) T made[kPositions];
    for (std::int32_t channel = 0; channel < source.nProc; ++channel) {
        if (channel == 0 || Form != TapForm::PixelWords) takeTaps(source, rule.x, rule.y, list.count, channel, &block);
        rule.blend(block, list.count, channel, made);
        putSamples(made, list, channel, to);
    }
}

// Three channels side by side, put together as words of four bytes: what a word writes too much its neighbour mends.
void putThrees(const std::uint8_t (&made)[3][kPositions], std::ptrdiff_t count, std::uint8_t* pixels) {
    alignas(kVectorAlign) std::uint8_t words[kPositions][4];
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::uint32_t word = made[0][i] | std::uint32_t{made[1][i]} << 8 | std::uint32_t{made[2][i]} << 16;
        const std::uint32_t ordered = std::endian::native == std::endian::little ? word : __builtin_bswap32(word);
        std::memcpy(words[i], &ordered, sizeof ordered);
    }
    for (std::ptrdiff_t i = 0; i < count - 1; ++i) std::memcpy(pixels + 3 * i, words[i], 4);
    std::memcpy(pixels + 3 * (count - 1), words[count - 1], 3);
}

template <class Rule>
void makeThrees(const SampleSource& source, const Rule& rule, const PositionList& list, const SampleRow& to) {
    TapBlock<Rule::kTaps, TapForm::PixelWords, std::uint8_t> block;
    alignas(kVectorAlign) std::uint8_t made[3][kPositions];
    takeTaps(source, rule.x, rule.y, list.count, 0, &block);
    for (std::int32_t channel = 0; channel < 3; ++channel) rule.blend(block, list.count, channel, made[channel]);
    putThrees(made, list.count, to.row + std::ptrdiff_t{3} * list.column[0]);
}

template <class Rule, class T>
void samplePositions(const SampleSource& source, const PositionList& list, const SampleRow& to) {
    Rule rule;
    rule.template place<T>(source, list);
    if constexpr (std::is_same_v<T, std::uint8_t>) {
        const SampleGrid& grid = source.grid;
        if (grid.pixelStep == 1) return makePixels<TapForm::RowWords, Rule, T>(source, rule, list, to);
        const bool together = grid.channelStep == 1 && grid.pixelStep >= 3;
        const bool isDenseThree = source.nProc == 3 && to.channelStep == 1 && to.pixelStep == 3 && isDense(list);
        if (together && isDenseThree) return makeThrees(source, rule, list, to);
        if (together && source.nProc > 1 && source.nProc <= 4)
            return makePixels<TapForm::PixelWords, Rule, T>(source, rule, list, to);
    }
    makePixels<TapForm::Samples, Rule, T>(source, rule, list, to);
}

// Where the nearest samples lie, from the grid's origin; true when there is a column behind each.
[[gnu::noinline]] bool findNearest(const SampleGrid& grid, const PositionList& list,
                                   std::ptrdiff_t* __restrict offsets) {
    const auto rowStep = static_cast<std::int32_t>(grid.rowStep);
    const auto pixelStep = static_cast<std::int32_t>(grid.pixelStep);
    const std::int32_t lastColumn = grid.lastColumn;
    const std::int32_t lastRow = grid.lastRow;
    const std::ptrdiff_t count = list.count;
    std::int32_t greatest = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::int32_t x = std::min(std::max(static_cast<std::int32_t>(list.x[i] + 0.5), 0), lastColumn);
        const std::int32_t y = std::min(std::max(static_cast<std::int32_t>(list.y[i] + 0.5), 0), lastRow);
        offsets[i] = std::ptrdiff_t{y} * rowStep + std::ptrdiff_t{x} * pixelStep;
        greatest = std::max(greatest, x);
    }
    return greatest < lastColumn;
}

// Moves whole pixels.
template <std::size_t Bytes>
void copyPixels(const std::uint8_t* origin, const std::ptrdiff_t* offsets, const PositionList& list,
                const SampleRow& to) {
    const std::ptrdiff_t count = list.count;
    const std::ptrdiff_t step = to.pixelStep;
    if (isDense(list)) {
        std::uint8_t* pixel = to.row + list.column[0] * step;
        for (std::ptrdiff_t i = 0; i < count; ++i, pixel += step) std::memcpy(pixel, origin + offsets[i], Bytes);
        return;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i) std::memcpy(to.row + list.column[i] * step, origin + offsets[i], Bytes);
}

// Moves pixels of three samples that lie side by side as words of four: what a word writes too much its neighbour mends.
template <std::size_t Bytes>
void copyThrees(const std::uint8_t* origin, const std::ptrdiff_t* offsets, const PositionList& list,
                const SampleRow& to) {
    constexpr auto kStep = static_cast<std::ptrdiff_t>(Bytes);
    std::uint8_t* const pixels = to.row + list.column[0] * kStep;
    const std::ptrdiff_t last = list.count - 1;
    for (std::ptrdiff_t i = 0; i < last; ++i) std::memcpy(pixels + i * kStep, origin + offsets[i], Bytes / 3 * 4);
    std::memcpy(pixels + last * kStep, origin + offsets[last], Bytes);
}

}  // namespace

template <class T>
void nearestPositions(const SampleSource& source, const PositionList& list, const SampleRow& to) {
    const SampleGrid& grid = source.grid;
    alignas(kVectorAlign) std::ptrdiff_t offsets[kPositions];
    const bool isInside = findNearest(grid, list, offsets);
    const bool together = grid.channelStep == sizeof(T) && to.channelStep == sizeof(T);
    if (together && source.nProc == 3 && to.pixelStep == 3 * sizeof(T) && isInside && isDense(list))
        return copyThrees<3 * sizeof(T)>(grid.origin, offsets, list, to);
    if (together && source.nProc == 3) return copyPixels<3 * sizeof(T)>(grid.origin, offsets, list, to);
    if (together && source.nProc == 4) return copyPixels<4 * sizeof(T)>(grid.origin, offsets, list, to);
    for (std::ptrdiff_t k = 0; k < source.nProc; ++k)
        copyPixels<sizeof(T)>(grid.origin + k * grid.channelStep, offsets, list,
                              {to.row + k * to.channelStep, to.pixelStep, to.channelStep});
}

template <class T>
void linearPositions(const SampleSource& source, const PositionList& list, const SampleRow& to) {
    samplePositions<Lines, T>(source, list, to);
}

template <class T>
void cubicPositions(const SampleSource& source, const PositionList& list, const SampleRow& to) {
    samplePositions<Cubics, T>(source, list, to);
}

template void nearestPositions<std::uint8_t>(const SampleSource&, const PositionList&, const SampleRow&);
template void nearestPositions<std::uint16_t>(const SampleSource&, const PositionList&, const SampleRow&);
template void nearestPositions<float>(const SampleSource&, const PositionList&, const SampleRow&);
template void linearPositions<std::uint8_t>(const SampleSource&, const PositionList&, const SampleRow&);
template void linearPositions<std::uint16_t>(const SampleSource&, const PositionList&, const SampleRow&);
template void linearPositions<float>(const SampleSource&, const PositionList&, const SampleRow&);
template void cubicPositions<std::uint8_t>(const SampleSource&, const PositionList&, const SampleRow&);
template void cubicPositions<std::uint16_t>(const SampleSource&, const PositionList&, const SampleRow&);
template void cubicPositions<float>(const SampleSource&, const PositionList&, const SampleRow&);

}  // namespace zetpxl
