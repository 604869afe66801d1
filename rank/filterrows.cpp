#include "rank/filterrows.h"

#include <array>

#include "pixel/bitruns.h"

namespace zetpxl {

namespace {

constexpr std::ptrdiff_t kPieceBits = 512;
using PieceBits = std::array<std::uint8_t, kPieceBits / 8>;

// Eight bytes of 0 or 1 as the bits of a byte, the first the most significant.
std::uint8_t packByte(const std::uint8_t* bytes, std::ptrdiff_t count) {
    std::uint32_t bits = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) bits |= static_cast<std::uint32_t>(bytes[i] & 1) << (7 - i);
    return static_cast<std::uint8_t>(bits);
}

void packPiece(const std::uint8_t* bytes, std::ptrdiff_t count, PieceBits* bits) {
    for (std::ptrdiff_t i = 0; i < count; i += 8)
        (*bits)[static_cast<std::size_t>(i / 8)] = packByte(bytes + i, std::min<std::ptrdiff_t>(8, count - i));
}

}  // namespace

void unpackBits(const std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count, std::uint8_t* bytes) {
    PieceBits bits{};
    for (std::ptrdiff_t first = 0; first < count; first += kPieceBits) {
        const std::ptrdiff_t part = std::min(kPieceBits, count - first);
        ownCopyBits(row, bits.data(), bit + first, 0, part);
        for (std::ptrdiff_t i = 0; i < part; ++i)
            bytes[first + i] = (bits[static_cast<std::size_t>(i >> 3)] >> (7 - (i & 7))) & 1;
    }
}

void packBits(const std::uint8_t* bytes, std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count) {
    PieceBits bits;
    for (std::ptrdiff_t first = 0; first < count; first += kPieceBits) {
        const std::ptrdiff_t part = std::min(kPieceBits, count - first);
        packPiece(bytes + first, part, &bits);
        ownCopyBits(bits.data(), row, 0, bit + first, part);
    }
}

void packBitsMasked(const std::uint8_t* bytes, std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count,
                    const MaskBits& mask) {
    PieceBits bits;
    for (std::ptrdiff_t first = 0; first < count; first += kPieceBits) {
        const std::ptrdiff_t part = std::min(kPieceBits, count - first);
        packPiece(bytes + first, part, &bits);
        const std::array<BitSource, 2> sources = {{{bits.data(), 0}, {mask.data, mask.bit + first}}};
        combineBits(sources, row, bit + first, part,
                    [](std::uint64_t d, const auto& s) { return (d & ~s[1]) | (s[0] & s[1]); });
    }
}

void storeBitRow(const FilterBlock& block, const FilterLanes& lanes, const BlockMask& mask, std::ptrdiff_t y,
                 const std::uint8_t* out) {
    std::uint8_t* dst = lanes.dst + y * block.dstRowStep;
    if (!isMasked(mask)) return packBits(out, dst, block.dstX, block.width);
    packBitsMasked(out, dst, block.dstX, block.width, maskBitsOfRow(mask, block.width, y));
}

}  // namespace zetpxl
