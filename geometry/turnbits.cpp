//   turnbits.1 a half turn reverses rows: bytes by a table, then one run of bits
//   turnbits.2 a quarter turn goes in squares of 8 by 8 bits, eight destination rows at a time (Warren, "Hacker's Delight", 2002,
//              has the transposition in a word)
#include "geometry/turnbits.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "core/region.h"
#include "pixel/bitruns.h"
#include "pixel/bits.h"

namespace zetpxl {

namespace {

// Destination pixels of a row that are put together at a time.
constexpr std::ptrdiff_t kPieceBits = 512;
using PieceBytes = std::array<std::uint8_t, kPieceBits / 8 + 1>;

constexpr std::array<std::uint8_t, 256> makeReversed() {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t value = 0; value < 256; ++value)
        for (std::size_t i = 0; i < 8; ++i)
            if ((value >> i) & 1) table[value] = static_cast<std::uint8_t>(table[value] | (0x80 >> i));
    return table;
}
constexpr auto reversed = makeReversed();

std::uint8_t* rowOf(const ZetImage* image, std::ptrdiff_t y) { return pixelData(image) + y * image->widthStep; }

// `count` bits to the left of and including `last`, from right to left.
void copyReversed(const std::uint8_t* src, std::ptrdiff_t last, std::ptrdiff_t count, std::uint8_t* dst,
                  std::ptrdiff_t dstBit) {
    PieceBytes bytes;
    const std::ptrdiff_t lastByte = last >> 3;
    const std::ptrdiff_t firstByte = (last - count + 1) >> 3;
    for (std::ptrdiff_t i = 0; i <= lastByte - firstByte; ++i)
        bytes[static_cast<std::size_t>(i)] = reversed[src[lastByte - i]];
    ownCopyBits(bytes.data(), dst, 7 - (last & 7), dstBit, count);
}

void turnHalf(const ZetImage* src, const ZetImage* dst, const TurnArea& a) {
    for (std::ptrdiff_t y = 0; y < a.height; ++y)
        for (std::ptrdiff_t x = 0; x < a.width; x += kPieceBits)
            copyReversed(rowOf(src, a.sy - y), a.sx - x, std::min(kPieceBits, a.width - x), rowOf(dst, a.dy + y),
                         a.dx + x);
}

// Bit 7 - j of byte i becomes bit 7 - i of byte j, bytes counted from the most significant.
constexpr std::uint64_t transposed(std::uint64_t m) {
    std::uint64_t t = (m ^ (m >> 7)) & 0x00AA00AA00AA00AAu;
    m ^= t ^ (t << 7);
    t = (m ^ (m >> 14)) & 0x0000CCCC0000CCCCu;
    m ^= t ^ (t << 14);
    t = (m ^ (m >> 28)) & 0x00000000F0F0F0F0u;
    return m ^ t ^ (t << 28);
}
static_assert(transposed(0xFF00000000000000u) == 0x8080808080808080u &&
              transposed(0x0102040810204080u) == 0x0102040810204080u);

// Eight destination rows or fewer: as many neighbouring source columns, from `column` on.
struct QuarterStrip {
    const ZetImage* src;
    std::ptrdiff_t column;
    std::ptrdiff_t row;      // source row of the strip's first pixel
    std::ptrdiff_t rowStep;  // 1 or -1 for a step right in the destination
    std::int32_t rows;       // of the destination
};

// Eight source rows of the strip's columns as eight bytes of destination rows.
std::uint64_t square(const QuarterStrip& s, std::ptrdiff_t x, std::ptrdiff_t count) {
    std::uint64_t m = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::uint8_t* row = rowOf(s.src, s.row + (x + i) * s.rowStep);
        m |= (bitruns::fewBits({row, s.column}, 0, s.rows) & 0xFF) << (8 * (7 - i));
    }
    return transposed(m);
}

void turnPiece(const QuarterStrip& s, std::ptrdiff_t x, std::ptrdiff_t count, std::array<PieceBytes, 8>* out) {
    for (std::ptrdiff_t done = 0; done < count; done += 8) {
        const std::uint64_t bytes = square(s, x + done, std::min<std::ptrdiff_t>(8, count - done));
        for (std::size_t j = 0; j < 8; ++j)
            (*out)[j][static_cast<std::size_t>(done >> 3)] = static_cast<std::uint8_t>(bytes >> (8 * (7 - j)));
    }
}

void turnQuarter(const ZetImage* src, const ZetImage* dst, const TurnArea& a, bool isLeft) {
    std::array<PieceBytes, 8> out;
    for (std::ptrdiff_t y = 0; y < a.height; y += 8) {
        const auto rows = static_cast<std::int32_t>(std::min<std::ptrdiff_t>(8, a.height - y));
        const std::ptrdiff_t column = isLeft ? a.sx - y - (rows - 1) : a.sx + y;
        const QuarterStrip strip{src, column, a.sy, isLeft ? 1 : -1, rows};
        for (std::ptrdiff_t x = 0; x < a.width; x += kPieceBits) {
            const std::ptrdiff_t count = std::min(kPieceBits, a.width - x);
            turnPiece(strip, x, count, &out);
            for (std::int32_t j = 0; j < rows; ++j)
                ownCopyBits(out[static_cast<std::size_t>(isLeft ? rows - 1 - j : j)].data(), rowOf(dst, a.dy + y + j),
                            0, a.dx + x, count);
        }
    }
}

}  // namespace

void turnBits(const ZetImage* src, const ZetImage* dst, const TurnArea& area, std::int32_t turn) {
    if (turn == 180) return turnHalf(src, dst, area);
    turnQuarter(src, dst, area, turn == 90);
}

}  // namespace zetpxl
