//   rows.1 a square window is separable: extremes over rows, then along the row
//   rows.2 along a row windows double: from windows of p pixels those of 2p, and two that overlap make any size between, so a
//          window costs the logarithm of its size (van Herk, "A fast algorithm for local minimum and maximum filters", 1992,
//          has the same cost per pixel for any size; doubling needs no block ends and runs over many pixels at once)
//   rows.3 bits go a word at a time
#include "rank/morphrows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "pixel/bitruns.h"

namespace zetpxl {

namespace {

struct Least {
    template <class T>
    static T of(T a, T b) {
        return std::min(a, b);
    }
    static std::uint64_t bits(std::uint64_t a, std::uint64_t b) { return a & b; }
};

struct Greatest {
    template <class T>
    static T of(T a, T b) {
        return std::max(a, b);
    }
    static std::uint64_t bits(std::uint64_t a, std::uint64_t b) { return a | b; }
};

template <class Extreme, class T>
void joinInto(T* __restrict target, const T* __restrict other, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] = Extreme::of(target[i], other[i]);
}

// Each element and the one `ahead` of it; reads run ahead of writes.
template <class Extreme, class T>
void joinAhead(T* row, std::ptrdiff_t ahead, std::ptrdiff_t count) {
#pragma GCC ivdep
    for (std::ptrdiff_t i = 0; i < count; ++i) row[i] = Extreme::of(row[i], row[i + ahead]);
}

template <class Extreme, class T>
void joinTwo(const T* __restrict a, const T* __restrict b, T* __restrict out, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) out[i] = Extreme::of(a[i], b[i]);
}

template <class T, class Extreme>
void extremeRow(const ExtremeRow& row) {
    const std::ptrdiff_t length = row.width + row.size - 1;
    T* scratch = reinterpret_cast<T*>(row.scratch);
    std::memcpy(scratch, row.ring, static_cast<std::size_t>(length) * sizeof(T));
    for (std::ptrdiff_t r = 1; r < row.size; ++r)
        joinInto<Extreme>(scratch, reinterpret_cast<const T*>(row.ring + r * row.rowStep), length);
    std::ptrdiff_t window = 1;
    for (; 2 * window <= row.size; window *= 2) joinAhead<Extreme>(scratch, window, length - 2 * window + 1);
    joinTwo<Extreme>(scratch, scratch + (row.size - window), reinterpret_cast<T*>(row.out) + row.outOffset, row.width);
}

template <class Extreme>
void joinBytes(std::uint8_t* __restrict target, const std::uint8_t* __restrict other, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        target[i] = static_cast<std::uint8_t>(Extreme::bits(target[i], other[i]));
}

template <class Extreme>
void extremeBits(const ExtremeRow& row) {
    const std::ptrdiff_t length = row.width + row.size - 1;
    const std::ptrdiff_t bytes = (length + 7) >> 3;
    std::memcpy(row.scratch, row.ring, static_cast<std::size_t>(bytes));
    for (std::ptrdiff_t r = 1; r < row.size; ++r) joinBytes<Extreme>(row.scratch, row.ring + r * row.rowStep, bytes);
    std::ptrdiff_t window = 1;
    for (; 2 * window <= row.size; window *= 2) {
        const std::array<BitSource, 1> ahead = {{{row.scratch, window}}};
        combineBits(ahead, row.scratch, 0, length - 2 * window + 1,
                    [](std::uint64_t d, const auto& s) { return Extreme::bits(d, s[0]); });
    }
    const std::array<BitSource, 2> ends = {{{row.scratch, 0}, {row.scratch, row.size - window}}};
    combineBits(ends, row.out, row.outOffset, row.width,
                [](std::uint64_t, const auto& s) { return Extreme::bits(s[0], s[1]); });
}

// Names by which the kernels are known.
constexpr ExtremeRoutine ownErodeRow1U = extremeBits<Least>;
constexpr ExtremeRoutine ownErodeRow8U = extremeRow<std::uint8_t, Least>;
constexpr ExtremeRoutine ownErodeRow16U = extremeRow<std::uint16_t, Least>;
constexpr ExtremeRoutine ownDilateRow1U = extremeBits<Greatest>;
constexpr ExtremeRoutine ownDilateRow8U = extremeRow<std::uint8_t, Greatest>;
constexpr ExtremeRoutine ownDilateRow16U = extremeRow<std::uint16_t, Greatest>;

template <class T>
void loadPixels(const MorphPixels& from, std::ptrdiff_t count, bool backward, std::uint8_t* row, std::ptrdiff_t at) {
    const T* pixel = reinterpret_cast<const T*>(from.data) + from.x * from.step;
    T* to = reinterpret_cast<T*>(row) + at;
    const std::ptrdiff_t step = backward ? -from.step : from.step;
    if (step == 1) return static_cast<void>(std::copy_n(pixel, count, to));
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = pixel[i * step];
}

void loadBits(const MorphPixels& from, std::ptrdiff_t count, bool backward, std::uint8_t* row, std::ptrdiff_t at) {
    if (!backward) return ownCopyBits(from.data, row, from.x, at, count);
    for (std::ptrdiff_t i = 0; i < count; ++i) ownCopyBits(from.data, row, from.x - i, at + i, 1);
}

template <class T>
void storePixels(const std::uint8_t* row, std::ptrdiff_t at, std::ptrdiff_t count, const MorphPixels& to) {
    const T* from = reinterpret_cast<const T*>(row) + at;
    T* pixel = reinterpret_cast<T*>(to.data) + to.x * to.step;
    if (to.step == 1) return static_cast<void>(std::copy_n(from, count, pixel));
    for (std::ptrdiff_t i = 0; i < count; ++i) pixel[i * to.step] = from[i];
}

void storeBits(const std::uint8_t* row, std::ptrdiff_t at, std::ptrdiff_t count, const MorphPixels& to) {
    ownCopyBits(row, to.data, at, to.x, count);
}

template <class T>
void fillPixels(std::uint8_t* row, std::ptrdiff_t at, std::ptrdiff_t count, std::int32_t value) {
    std::fill_n(reinterpret_cast<T*>(row) + at, count, static_cast<T>(value));
}

void fillBitRun(std::uint8_t* row, std::ptrdiff_t at, std::ptrdiff_t count, std::int32_t value) {
    fillBits(row, at, count, value != 0);
}

template <class T>
void spreadPixel(std::uint8_t* row, std::ptrdiff_t like, std::ptrdiff_t at, std::ptrdiff_t count) {
    T* pixels = reinterpret_cast<T*>(row);
    std::fill_n(pixels + at, count, T{pixels[like]});
}

void spreadBit(std::uint8_t* row, std::ptrdiff_t like, std::ptrdiff_t at, std::ptrdiff_t count) {
    fillBits(row, at, count, (row[like >> 3] >> (7 - (like & 7))) & 1);
}

template <class T>
void mergePixels(const std::uint8_t* result, const MaskBits& mask, std::ptrdiff_t count, std::uint8_t* old) {
    const T* from = reinterpret_cast<const T*>(result);
    T* to = reinterpret_cast<T*>(old);
    forMaskPieces(mask, count, [&](std::ptrdiff_t first, std::ptrdiff_t part, MaskCover cover, const std::uint8_t* m) {
        if (cover == MaskCover::All) return static_cast<void>(std::copy_n(from + first, part, to + first));
        for (std::ptrdiff_t i = 0; i < part; ++i) {
            const T entering = from[first + i];  // read under any mask: a choice of two values needs no branch
            to[first + i] = m[i] ? entering : to[first + i];
        }
    });
}

void mergeBits(const std::uint8_t* result, const MaskBits& mask, std::ptrdiff_t count, std::uint8_t* old) {
    const std::array<BitSource, 2> sources = {{{result, 0}, {mask.data, mask.bit}}};
    combineBits(sources, old, 0, count, [](std::uint64_t d, const auto& s) { return (d & ~s[1]) | (s[0] & s[1]); });
}

constexpr MorphDepth bitsDepth = {1,         ownErodeRow1U, ownDilateRow1U, loadBits,
                                  storeBits, fillBitRun,    spreadBit,      mergeBits};

template <class T>
constexpr MorphDepth pixelDepth(ExtremeRoutine erode, ExtremeRoutine dilate) {
    return {8 * sizeof(T), erode, dilate, loadPixels<T>, storePixels<T>, fillPixels<T>, spreadPixel<T>, mergePixels<T>};
}

constexpr MorphDepth bytesDepth = pixelDepth<std::uint8_t>(ownErodeRow8U, ownDilateRow8U);
constexpr MorphDepth wordsDepth = pixelDepth<std::uint16_t>(ownErodeRow16U, ownDilateRow16U);

constexpr std::array<const MorphDepth*, kDepthCount> morphDepths = {&bitsDepth, &bytesDepth, nullptr, &wordsDepth,
                                                                    nullptr,    nullptr,     nullptr};

}  // namespace

const MorphDepth* morphDepth(std::uint32_t depth) { return morphDepths[static_cast<std::size_t>(depthIndex(depth))]; }

}  // namespace zetpxl
