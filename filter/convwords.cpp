// Convolution sums of small samples in words of 16 bits, twice as many at a time as single-precision numbers. Words wrap
// around, so it is enough that the sum of a whole group of taps fits: what its partial sums pass through does not matter.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "core/depth.h"
#include "filter/convrows.h"

namespace zetpxl {

namespace {

using WordVector [[gnu::vector_size(32)]] = std::uint16_t;
constexpr std::ptrdiff_t kWordLanes = 16;
using DoubleWords [[gnu::vector_size(32)]] = std::uint32_t;

// Through this type sums go straight from register to row; a copy of bytes takes them through the stack.
using RowWords [[gnu::vector_size(32), gnu::aligned(2), gnu::may_alias]] = std::uint16_t;
constexpr std::ptrdiff_t kTile = 4 * kWordLanes;
static_assert(kTile <= kConvSlack);

void sumTile(const ConvTap* tap, const ConvTap* end, const std::uint16_t* first, std::uint16_t* to) {
    WordVector sums[4];
    for (WordVector& sum : sums) sum = WordVector{};
    for (; tap != end; ++tap) {
        const auto weight = reinterpret_cast<WordVector>(DoubleWords{} + tap->words);
        for (std::ptrdiff_t v = 0; v < 4; ++v) {
            WordVector samples;
            std::memcpy(&samples, first + tap->at + v * kWordLanes, sizeof samples);
            sums[v] += samples * weight;
        }
    }
    for (std::ptrdiff_t v = 0; v < 4; ++v) *reinterpret_cast<RowWords*>(to + v * kWordLanes) = sums[v];
}

void sumGroup(const ConvSlot& slot, std::int32_t begin, std::int32_t end, const void* first, std::ptrdiff_t count,
              std::uint16_t* sums) {
    const ConvTap* const taps = slot.taps.get();
    const auto* samples = static_cast<const std::uint16_t*>(first);
    for (std::ptrdiff_t at = 0; at < count; at += kTile) sumTile(taps + begin, taps + end, samples + at, sums + at);
}

template <class T>
void loadWords(const std::uint8_t* row, std::ptrdiff_t pixelStep, std::ptrdiff_t count, void* ringRow) {
    const T* from = reinterpret_cast<const T*>(row);
    auto* words = static_cast<std::uint16_t*>(ringRow);
    if (pixelStep == 1) {
        for (std::ptrdiff_t i = 0; i < count; ++i) words[i] = static_cast<std::uint16_t>(from[i]);
        return;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i) words[i] = static_cast<std::uint16_t>(from[i * pixelStep]);
}

// A fixed number of samples leaves no rest to a slower loop.
template <class T>
void storeTile(const std::uint16_t* __restrict sums, std::int32_t bits, T* __restrict samples) {
    using Words [[gnu::vector_size(32)]] = std::int16_t;
    constexpr Words least = Words{} + std::int16_t{std::numeric_limits<T>::min()};
    constexpr Words greatest = Words{} + std::int16_t{std::numeric_limits<T>::max()};
    for (std::ptrdiff_t at = 0; at < kTile; at += kWordLanes) {
        Words words;
        std::memcpy(&words, sums + at, sizeof words);
        words >>= static_cast<std::int16_t>(bits);
        words = words > least ? words : least;
        words = words < greatest ? words : greatest;
        using Samples [[gnu::vector_size(16)]] = T;
        const Samples out = __builtin_convertvector(words, Samples);
        std::memcpy(samples + at, &out, sizeof out);
    }
}

template <class T>
void storeWords(const std::uint16_t* sums, std::int32_t shift, void* out, std::ptrdiff_t count) {
    // From 15 on all bits are the sign.
    const std::int32_t bits = std::min(shift & 31, 15);
    T* samples = static_cast<T*>(out);
    std::ptrdiff_t at = 0;
    for (; at + kTile <= count; at += kTile) storeTile(sums + at, bits, samples + at);
    if (at == count) return;
    T rest[kTile];
    storeTile(sums + at, bits, rest);
    std::memcpy(samples + at, rest, static_cast<std::size_t>(count - at));
}

constexpr std::array<LoadRow, kDepthCount> wordLoads = {
    loadWords<std::uint8_t>, loadWords<std::uint8_t>, loadWords<std::int8_t>, nullptr, nullptr, nullptr, nullptr};

constexpr std::array<StoreWords, kDepthCount> wordStores = {
    nullptr, storeWords<std::uint8_t>, storeWords<std::int8_t>, nullptr, nullptr, nullptr, nullptr};

}  // namespace

void sumWords(const ConvSlot& slot, const void* first, std::ptrdiff_t count, std::uint16_t* sums) {
    sumGroup(slot, 0, slot.nTaps, first, count, sums);
}

// The sums of the groups are whole numbers whose sum stays below 2^24.
void rowWords(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow) {
    std::array<std::uint16_t, kConvPiece + kConvSlack> words;
    std::int32_t end = slot.nTaps > 0 ? slot.taps[0].groupEnd : 0;
    sumGroup(slot, 0, end, source.first, count, words.data());
    const std::uint16_t* const sums = words.data();
    for (std::ptrdiff_t i = 0; i < count; ++i) accRow[i] = static_cast<std::int16_t>(sums[i]);
    while (end < slot.nTaps) {
        const std::int32_t begin = end;
        end = slot.taps[static_cast<std::size_t>(begin)].groupEnd;
        sumGroup(slot, begin, end, source.first, count, words.data());
        for (std::ptrdiff_t i = 0; i < count; ++i) accRow[i] += static_cast<float>(static_cast<std::int16_t>(sums[i]));
    }
}

LoadRow loadWordsOf(std::uint32_t depth) { return wordLoads[static_cast<std::size_t>(depthIndex(depth))]; }

StoreWords storeWordsOf(std::uint32_t depth) { return wordStores[static_cast<std::size_t>(depthIndex(depth))]; }

}  // namespace zetpxl
