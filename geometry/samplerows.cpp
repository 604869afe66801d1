//   samplerows.1 indices and shares first, then all taps side by side, then the arithmetic over whole vectors: the same products
//                and sums, in the same order, as one position after another
//   samplerows.2 taps that lie in the memory are taken as words where several share one; others one by one, brought back to the
//                edge
#include "geometry/samplerows.h"

#include <cstring>

namespace zetpxl {

namespace {

// One axis of the positions: first taps and what the weights come from.
struct TapAxis {
    std::int32_t first[kPositions];
    double share[kPositions];
};

void placeLines(const double* positions, std::ptrdiff_t count, std::int32_t last, TapAxis* axis) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(positions[i] + kWholeTolerance);
        const bool ends = index >= last;
        axis->first[i] = ends ? last - 1 : index;
        axis->share[i] = ends ? 1.0 : positions[i] - index;
    }
}

void placeCubics(const double* positions, std::ptrdiff_t count, std::int32_t last, TapAxis* axis) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(positions[i] + kWholeTolerance);
        std::int32_t first = index <= 0 ? 0 : index - 1;
        first = index >= last - 1 ? last - 3 : first;
        axis->first[i] = first;
        axis->share[i] = static_cast<double>(static_cast<float>((positions[i] - first) - 1));
    }
}

// Lagrange's weights at each position.
struct CubicWeights {
    double w[4][kPositions];
};

void weighCubics(const TapAxis& axis, std::ptrdiff_t count, CubicWeights* weights) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double t = axis.share[i];
        const double square = t * t;
        const double cube = square * t;
        weights->w[0][i] = -cube / 6 + square / 2 - t / 3;
        weights->w[1][i] = cube / 2 - square - t / 2 + 1;
        weights->w[2][i] = -cube / 2 + square / 2 + t;
        weights->w[3][i] = cube / 6 - t / 6;
    }
}

// Square neighbourhoods of `Taps` by `Taps` samples, tap by tap. Words of bytes hold several: those of a row of taps, or of
// the channels of a tap.
enum class TapForm { Samples, RowWords, PixelWords };

template <std::int32_t Taps, TapForm Form, class T>
struct TapBlock {
    using Word = std::conditional_t<Form == TapForm::Samples, T, std::uint32_t>;
    static constexpr std::int32_t kColumns = Form == TapForm::RowWords ? 1 : Taps;
    Word words[std::size_t{Taps}][std::size_t{kColumns}][kPositions];

    double at(std::int32_t row, std::int32_t column, std::int32_t channel, std::ptrdiff_t i) const {
        if constexpr (Form == TapForm::Samples) {
            return static_cast<double>(words[row][column][i]);
        } else {
            const std::int32_t shift = 8 * (Form == TapForm::RowWords ? column : channel);
            const std::uint32_t word = words[row][Form == TapForm::RowWords ? 0 : column][i];
            return static_cast<double>(static_cast<std::int32_t>((word >> shift) & 0xFF));
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
                block->words[r][0][i] = before | static_cast<Word>(pixel[channel * step]) << (8 * c);
            } else {
                Word word = 0;
                for (std::int32_t k = 0; k < source.nProc; ++k) word |= static_cast<Word>(pixel[k * step]) << (8 * k);
                block->words[r][c][i] = word;
            }
        }
}

template <std::int32_t Taps, TapForm Form, class T>
void takeInside(const SampleGrid& grid, const std::uint8_t* first, std::ptrdiff_t i, TapBlock<Taps, Form, T>* block) {
    using Word = typename TapBlock<Taps, Form, T>::Word;
    constexpr std::int32_t kColumns = TapBlock<Taps, Form, T>::kColumns;
    constexpr std::size_t kBytes = Form == TapForm::RowWords ? std::size_t{Taps} : sizeof(Word);
    for (std::int32_t r = 0; r < Taps; ++r)
        for (std::int32_t c = 0; c < kColumns; ++c) {
            Word word = 0;
            std::memcpy(&word, first + r * grid.rowStep + c * grid.pixelStep, kBytes);
            block->words[r][c][i] = word;
        }
}

// Takes the taps of all positions, of one channel where a word does not hold all.
template <std::int32_t Taps, TapForm Form, class T>
void takeTaps(const SampleSource& source, const TapAxis& xs, const TapAxis& ys, std::ptrdiff_t count,
              std::int32_t channel, TapBlock<Taps, Form, T>* block) {
    const SampleGrid grid = source.grid;
    // A word of a pixel's channels may be longer than the pixel.
    const std::int32_t lastX = grid.lastColumn - (Taps - 1) - (Form == TapForm::PixelWords ? 1 : 0);
    const std::int32_t lastY = grid.lastRow - (Taps - 1);
    const std::uint8_t* const origin = grid.origin + channel * grid.channelStep;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::int32_t x = xs.first[i];
        const std::int32_t y = ys.first[i];
        if (x >= 0 && x <= lastX && y >= 0 && y <= lastY) {
            takeInside(grid, origin + y * grid.rowStep + x * grid.pixelStep, i, block);
        } else {
            takeEdge(source, x, y, channel, i, block);
        }
    }
}

template <class T>
void putSamples(const T* made, const PositionList& list, std::int32_t channel, const SampleRow& to) {
    std::uint8_t* const row = to.row + channel * to.channelStep;
    for (std::ptrdiff_t i = 0; i < list.count; ++i)
        *reinterpret_cast<T*>(row + list.column[i] * to.pixelStep) = made[i];
}

template <TapForm Form, class T>
void blendLines(const TapBlock<2, Form, T>& block, const TapAxis& xs, const TapAxis& ys, std::ptrdiff_t count,
                std::int32_t channel, T* __restrict made) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double a = block.at(0, 0, channel, i);
        const double b = block.at(0, 1, channel, i);
        const double c = block.at(1, 0, channel, i);
        const double d = block.at(1, 1, channel, i);
        const double top = (b - a) * xs.share[i] + a;
        const double bottom = (d - c) * xs.share[i] + c;
        made[i] = roundedSample<T>(top + (bottom - top) * ys.share[i]);
    }
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
            for (std::int32_t c = 0; c < 4; ++c) sum += xs.w[c][i] * block.at(r, c, channel, i);
            value += ys.w[r][i] * sum;
        }
        made[i] = limitedOf<T>(value);
    }
}

// Both interpolations: the weights of the axes, and the blend of a channel.
struct Lines {
    static constexpr std::int32_t kTaps = 2;
    TapAxis x, y;

    void place(const SampleSource& source, const PositionList& list) {
        placeLines(list.x, list.count, source.lastColumn, &x);
        placeLines(list.y, list.count, source.lastRow, &y);
    }
    template <TapForm Form, class T>
    void blend(const TapBlock<2, Form, T>& block, std::ptrdiff_t count, std::int32_t channel, T* made) const {
        blendLines(block, x, y, count, channel, made);
    }
};

struct Cubics {
    static constexpr std::int32_t kTaps = 4;
    TapAxis x, y;
    CubicWeights xWeights, yWeights;

    void place(const SampleSource& source, const PositionList& list) {
        placeCubics(list.x, list.count, source.grid.lastColumn, &x);
        placeCubics(list.y, list.count, source.grid.lastRow, &y);
        weighCubics(x, list.count, &xWeights);
        weighCubics(y, list.count, &yWeights);
    }
    template <TapForm Form, class T>
    void blend(const TapBlock<4, Form, T>& block, std::ptrdiff_t count, std::int32_t channel, T* made) const {
        blendCubics(block, xWeights, yWeights, count, channel, made);
    }
};

template <TapForm Form, class Rule, class T>
void makePixels(const SampleSource& source, const Rule& rule, const PositionList& list, const SampleRow& to) {
    TapBlock<Rule::kTaps, Form, T> block;
    T made[kPositions];
    for (std::int32_t channel = 0; channel < source.nProc; ++channel) {
        if (channel == 0 || Form != TapForm::PixelWords) takeTaps(source, rule.x, rule.y, list.count, channel, &block);
        rule.blend(block, list.count, channel, made);
        putSamples(made, list, channel, to);
    }
}

template <class Rule, class T>
void samplePositions(const SampleSource& source, const PositionList& list, const SampleRow& to) {
    Rule rule;
    rule.place(source, list);
    if constexpr (std::is_same_v<T, std::uint8_t>) {
        const SampleGrid& grid = source.grid;
        if (grid.pixelStep == 1) return makePixels<TapForm::RowWords, Rule, T>(source, rule, list, to);
        if (grid.channelStep == 1 && grid.pixelStep >= 3 && source.nProc > 1 && source.nProc <= 4)
            return makePixels<TapForm::PixelWords, Rule, T>(source, rule, list, to);
    }
    makePixels<TapForm::Samples, Rule, T>(source, rule, list, to);
}

void nearestIndices(const double* positions, std::ptrdiff_t count, std::int32_t last, std::int32_t* indices) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(positions[i] + 0.5);
        indices[i] = std::clamp(index, 0, last);
    }
}

template <class T, std::int32_t Channels>
void copyPixels(const SampleGrid& grid, const PositionList& list, const std::int32_t* xs, const std::int32_t* ys,
                const SampleRow& to) {
    for (std::ptrdiff_t i = 0; i < list.count; ++i)
        std::memcpy(to.row + list.column[i] * to.pixelStep, grid.origin + ys[i] * grid.rowStep + xs[i] * grid.pixelStep,
                    sizeof(T) * Channels);
}

}  // namespace

template <class T>
void nearestPositions(const SampleSource& source, const PositionList& list, const SampleRow& to) {
    const SampleGrid grid = source.grid;
    std::int32_t xs[kPositions];
    std::int32_t ys[kPositions];
    nearestIndices(list.x, list.count, grid.lastColumn, xs);
    nearestIndices(list.y, list.count, grid.lastRow, ys);
    if (source.nProc == 1) return copyPixels<T, 1>(grid, list, xs, ys, to);
    const bool together = grid.channelStep == sizeof(T) && to.channelStep == sizeof(T);
    if (together && source.nProc == 3) return copyPixels<T, 3>(grid, list, xs, ys, to);
    if (together && source.nProc == 4) return copyPixels<T, 4>(grid, list, xs, ys, to);
    for (std::ptrdiff_t i = 0; i < list.count; ++i)
        for (std::ptrdiff_t k = 0; k < source.nProc; ++k)
            *reinterpret_cast<T*>(to.row + list.column[i] * to.pixelStep + k * to.channelStep) =
                *reinterpret_cast<const T*>(grid.origin + ys[i] * grid.rowStep + xs[i] * grid.pixelStep +
                                            k * grid.channelStep);
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
