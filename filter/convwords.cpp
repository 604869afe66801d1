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
constexpr std::ptrdiff_t kTile = 4 * kWordLanes;
static_assert(kTile <= kConvSlack);

void sumTile(const ConvTap* tap, const ConvTap* end, const std::uint16_t* first, std::uint16_t* to) {
    WordVector sums[4] = {};
    for (; tap != end; ++tap) {
        const WordVector weight = WordVector{} + tap->word;
        for (std::ptrdiff_t v = 0; v < 4; ++v) {
            WordVector samples;
            std::memcpy(&samples, first + tap->at + v * kWordLanes, sizeof samples);
            sums[v] += samples * weight;
        }
    }
    std::memcpy(to, sums, sizeof sums);
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

template <class T>
void storeWords(const std::uint16_t* __restrict sums, std::int32_t shift, void* out, std::ptrdiff_t count) {
    constexpr std::int16_t least = std::numeric_limits<T>::min();
    constexpr std::int16_t greatest = std::numeric_limits<T>::max();
    T* __restrict samples = static_cast<T*>(out);
    // From 15 on all bits are the sign.
    const std::int32_t bits = std::min(shift & 31, 15);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto sum = static_cast<std::int16_t>(static_cast<std::int16_t>(sums[i]) >> bits);
        samples[i] = static_cast<T>(std::clamp(sum, least, greatest));
    }
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
