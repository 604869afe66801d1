// Runs of bits that start at any bit, combined a word at a time. The most significant bit of a byte is the leftmost.
//   bits.1 only bits of the run change in the destination
//   bits.2 no byte outside a run is read or written, neither before nor behind it
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zetpxl {

struct BitSource {
    const std::uint8_t* data;
    std::ptrdiff_t bit;
};

namespace bitruns {

// A source seen from whole destination bytes: byte i of the run is (data[i] << shift) | (next[i] >> (8 - shift)). A source
// in step with the destination has no next byte; its mask is 0 and `next` stays inside the run.
struct Aligned {
    const std::uint8_t* data;
    const std::uint8_t* next;
    std::int32_t shift;
    std::uint64_t dataMask;
    std::uint64_t nextMask;
};

constexpr std::uint64_t everyByte(std::int32_t value) {
    return static_cast<std::uint64_t>(value) * 0x0101010101010101u;
}

inline Aligned align(const BitSource& source, std::ptrdiff_t skipped) {
    const std::ptrdiff_t bit = source.bit + skipped;
    const std::uint8_t* data = source.data + (bit >> 3);
    const auto shift = static_cast<std::int32_t>(bit & 7);
    if (shift == 0) return {data, data, 0, ~std::uint64_t{0}, 0};
    return {data, data + 1, shift, everyByte((0xFF << shift) & 0xFF), everyByte(0xFF >> (8 - shift))};
}

inline std::uint64_t load(const std::uint8_t* from) {
    std::uint64_t word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

// Eight bytes at once; shifting a word and masking each byte is a shift of each byte in any byte order.
inline std::uint64_t word(const Aligned& s, std::ptrdiff_t i) {
    return ((load(s.data + i) << s.shift) & s.dataMask) | ((load(s.next + i) >> (8 - s.shift)) & s.nextMask);
}

// `count` bits from a bit on, at the left of a byte; bits behind them are undefined.
inline std::uint64_t fewBits(const BitSource& source, std::ptrdiff_t skipped, std::int32_t count) {
    const std::ptrdiff_t bit = source.bit + skipped;
    const std::uint8_t* data = source.data + (bit >> 3);
    const auto shift = static_cast<std::int32_t>(bit & 7);
    const std::int32_t high = data[0] << shift;
    const std::int32_t low = shift + count > 8 ? data[1] >> (8 - shift) : 0;
    return static_cast<std::uint64_t>((high | low) & 0xFF);
}

template <std::size_t N, class Combine>
void combineFewBits(const std::array<BitSource, N>& sources, std::uint8_t* byte, std::int32_t firstBit,
                    std::ptrdiff_t skipped, std::int32_t count, Combine combine) {
    std::array<std::uint64_t, N> bits;
    for (std::size_t s = 0; s < N; ++s) bits[s] = fewBits(sources[s], skipped, count) >> firstBit;
    const std::int32_t mask = (0xFF >> firstBit) & (0xFF << (8 - firstBit - count));
    const auto combined = static_cast<std::int32_t>(combine(std::uint64_t{*byte}, bits) & 0xFF);
    *byte = static_cast<std::uint8_t>((*byte & ~mask) | (combined & mask));
}

template <std::size_t N, class Combine>
void combineBytes(const std::array<BitSource, N>& sources, std::uint8_t* dst, std::ptrdiff_t skipped,
                  std::ptrdiff_t count, Combine combine) {
    std::array<Aligned, N> aligned;
    for (std::size_t s = 0; s < N; ++s) aligned[s] = align(sources[s], skipped);
    std::ptrdiff_t i = 0;
    std::array<std::uint64_t, N> words;
    for (; i + 8 <= count; i += 8) {
        for (std::size_t s = 0; s < N; ++s) words[s] = word(aligned[s], i);
        const std::uint64_t result = combine(load(dst + i), words);
        std::memcpy(dst + i, &result, sizeof result);
    }
    for (; i < count; ++i) combineFewBits(sources, dst + i, 0, skipped + 8 * i, 8, combine);
}

}  // namespace bitruns

// dst = combine(dst, sources) over `length` bits from `dstBit` on. `combine` takes the destination's word and the
// sources' words and works bit by bit.
template <std::size_t N, class Combine>
void combineBits(const std::array<BitSource, N>& sources, std::uint8_t* dst, std::ptrdiff_t dstBit,
                 std::ptrdiff_t length, Combine combine) {
    if (length <= 0) return;
    dst += dstBit >> 3;
    const auto first = static_cast<std::int32_t>(dstBit & 7);
    std::ptrdiff_t done = 0;
    if (first != 0) {
        const auto count = static_cast<std::int32_t>(length < 8 - first ? length : 8 - first);
        bitruns::combineFewBits(sources, dst, first, 0, count, combine);
        done = count;
        ++dst;
    }
    const std::ptrdiff_t bytes = (length - done) >> 3;
    bitruns::combineBytes(sources, dst, done, bytes, combine);
    done += 8 * bytes;
    const auto rest = static_cast<std::int32_t>(length - done);
    if (rest > 0) bitruns::combineFewBits(sources, dst + bytes, 0, done, rest, combine);
}

}  // namespace zetpxl
