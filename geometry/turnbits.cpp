//   turnbits.1 a half turn reverses rows: words at a time, then one run of bits
//   turnbits.2 a quarter turn goes in tiles of 512 by 512 bits, each line of the cache read once, and in those by squares of 64 by
//              64 (Warren, "Hacker's Delight", 2002, has the transposition by halves)
#include "geometry/turnbits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#include "core/region.h"
#include "geometry/turncut.h"
#include "pixel/bits.h"

namespace zetpxl {

namespace {

// Destination pixels of a row that are put together at a time.
constexpr std::ptrdiff_t kPieceBits = 4096;
using PieceBytes = std::array<std::uint8_t, kPieceBits / 8 + 1>;

// Bits in reverse order, of a word as it lies in memory.
std::uint64_t reversed(std::uint64_t word) {
    word = ((word >> 1) & 0x5555555555555555) | ((word & 0x5555555555555555) << 1);
    word = ((word >> 2) & 0x3333333333333333) | ((word & 0x3333333333333333) << 2);
    word = ((word >> 4) & 0x0F0F0F0F0F0F0F0F) | ((word & 0x0F0F0F0F0F0F0F0F) << 4);
    return __builtin_bswap64(word);
}

std::uint8_t* rowOf(const ZetImage* image, std::ptrdiff_t y) { return pixelData(image) + y * image->widthStep; }

// `count` bits to the left of and including `last`, from right to left.
void copyReversed(const std::uint8_t* src, std::ptrdiff_t last, std::ptrdiff_t count, std::uint8_t* dst,
                  std::ptrdiff_t dstBit) {
    PieceBytes bytes;
    const std::uint8_t* lastByte = src + (last >> 3);
    const std::ptrdiff_t length = (last >> 3) - ((last - count + 1) >> 3) + 1;
    std::ptrdiff_t i = 0;
    for (; i + 8 <= length; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, lastByte - i - 7, sizeof word);
        word = reversed(word);
        std::memcpy(bytes.data() + i, &word, sizeof word);
    }
    for (; i < length; ++i)
        bytes[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(reversed(lastByte[-i]) >> 56);
    ownCopyBits(bytes.data(), dst, 7 - (last & 7), dstBit, count);
}

void turnHalf(const ZetImage* src, const ZetImage* dst, const TurnArea& a) {
    for (std::ptrdiff_t y = 0; y < a.height; ++y)
        for (std::ptrdiff_t x = 0; x < a.width; x += kPieceBits)
            copyReversed(rowOf(src, a.sy - y), a.sx - x, std::min(kPieceBits, a.width - x), rowOf(dst, a.dy + y),
                         a.dx + x);
}

// A tile: 512 source columns, which become as many destination rows, by 512 source rows. It is cut where lines of the cache
// begin on both sides: no bits are shifted and no line is split between tiles.
constexpr std::ptrdiff_t kTileBits = 512;
constexpr std::size_t kTileWords = 8;
using TileRow = std::array<std::uint64_t, kTileWords>;
using TileRows = std::array<TileRow, kTileBits>;
using TileBand = std::array<TileRow, 64>;

// A quarter turn, with the source's columns from left to right whichever way the destination's rows then go.
struct BitRun {
    const std::uint8_t* src;  // the row of the destination's first column
    std::ptrdiff_t srcStep;   // bytes to the row of the next
    std::ptrdiff_t srcBit;    // the first column
    std::uint8_t* dst;        // the row of that column
    std::ptrdiff_t dstStep;   // bytes to the row of the next
    std::ptrdiff_t dstBit;
    std::ptrdiff_t width;  // of the destination
    std::ptrdiff_t height;
};

// The few bits of a small image need no lines.
TurnCut firstTile(const std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count) {
    const auto intoLine = static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(row) % kLineBytes);
    const std::ptrdiff_t into = bit % 8 + count <= kTileBits ? bit % 8 : (8 * intoLine + bit) % kTileBits;
    return firstCut(bit, count, into, kTileBits);
}

void loadRow(const std::uint8_t* row, const TurnCut& columns, TileRow* words) {
    const std::ptrdiff_t start = columns.start / 8;
    if (isWhole(columns, kTileBits)) {
        std::memcpy(words, row + start, sizeof *words);
        __builtin_prefetch(row + start + kTileBits / 8);
        return;
    }
    *words = {};
    const std::ptrdiff_t first = columns.from / 8;
    const std::ptrdiff_t bytes = (columns.to + 7) / 8 - first;
    std::memcpy(reinterpret_cast<std::uint8_t*>(words) + first, row + (start + first), static_cast<std::size_t>(bytes));
}

// Where the leftmost of a word's bits counts in the order of its values: words are loaded as they lie in memory.
constexpr std::size_t kLeftmost = std::endian::native == std::endian::little ? 7 : 63;

void exchange(std::uint64_t* upper, std::uint64_t* lower, int bits) {
    const std::uint64_t mask = ~std::uint64_t{0} / ((std::uint64_t{1} << bits) + 1);
    const std::uint64_t parts = ((*upper >> bits) ^ *lower) & mask;
    *upper ^= parts << bits;
    *lower ^= parts;
}

// Exchanges three bits of a word's number with the same three of a bit's number in the word, for words `Step` apart.
template <int Step, std::size_t Words>
void turnEight(TileRow* rows) {
    for (std::size_t k = 0; k < Words; ++k) {
        std::uint64_t a = rows[0][k], b = rows[Step][k], c = rows[2 * Step][k], d = rows[3 * Step][k];
        std::uint64_t e = rows[4 * Step][k], f = rows[5 * Step][k], g = rows[6 * Step][k], h = rows[7 * Step][k];
        exchange(&a, &e, 4 * Step), exchange(&b, &f, 4 * Step), exchange(&c, &g, 4 * Step), exchange(&d, &h, 4 * Step);
        exchange(&a, &c, 2 * Step), exchange(&b, &d, 2 * Step), exchange(&e, &g, 2 * Step), exchange(&f, &h, 2 * Step);
        exchange(&a, &b, Step), exchange(&c, &d, Step), exchange(&e, &f, Step), exchange(&g, &h, Step);
        rows[0][k] = a, rows[Step][k] = b, rows[2 * Step][k] = c, rows[3 * Step][k] = d;
        rows[4 * Step][k] = e, rows[5 * Step][k] = f, rows[6 * Step][k] = g, rows[7 * Step][k] = h;
    }
}

// Turns squares of 64 by 64 bits side by side, each by halves, quarters and so on of the square.
template <std::size_t Words>
void turnSquares(TileBand* band) {
    for (std::size_t i = 0; i < 8; ++i) turnEight<8, Words>(band->data() + i);
    for (std::size_t i = 0; i < 64; i += 8) turnEight<1, Words>(band->data() + i);
}

// Word `at` of each destination row from a band of 64 source rows.
void turnBand(const BitRun& run, const TurnCut& columns, const TurnCut& rows, std::size_t at, TileRows* out) {
    TileBand band;
    const auto first = static_cast<std::ptrdiff_t>(64 * at);
    const std::ptrdiff_t before = rows.start - run.dstBit;
    for (std::ptrdiff_t i = first; i < first + 64; ++i) {
        TileRow* row = &band[static_cast<std::size_t>(i - first) ^ kLeftmost];
        if (i < rows.from || i >= rows.to)
            *row = {};
        else
            loadRow(run.src + (before + i) * run.srcStep, columns, row);
    }
    const auto words = static_cast<std::size_t>((columns.to + 63) / 64);
    words == 1 ? turnSquares<1>(&band) : turnSquares<kTileWords>(&band);
    for (std::size_t k = 0; k < words; ++k)
        for (std::size_t j = 0; j < 64; ++j) (*out)[64 * k + j][at] = band[j ^ kLeftmost][k];
}

void storeRow(const TileRow& words, const TurnCut& rows, std::uint8_t* row) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(words.data());
    if (isWhole(rows, kTileBits))
        std::memcpy(row + rows.start / 8, bytes, sizeof words);
    else
        ownCopyBits(bytes, row, rows.from, rows.start + rows.from, rows.to - rows.from);
}

// Stores the tile's rows, and tells the cache of those of the next, which is below it.
void turnTile(const BitRun& run, const TurnCut& columns, const TurnCut& rows) {
    alignas(64) TileRows out;
    for (std::ptrdiff_t at = rows.from / 64; at <= (rows.to - 1) / 64; ++at)
        turnBand(run, columns, rows, static_cast<std::size_t>(at), &out);
    std::uint8_t* row = run.dst + (columns.start + columns.from - run.srcBit) * run.dstStep;
    const bool isLast = columns.start + kTileBits >= run.srcBit + run.height;
    const std::ptrdiff_t ahead = (isLast ? 0 : kTileBits * run.dstStep) + (rows.start + rows.from) / 8;
    for (std::ptrdiff_t i = columns.from; i < columns.to; ++i, row += run.dstStep) {
        __builtin_prefetch(row + ahead, 1);
        storeRow(out[static_cast<std::size_t>(i)], rows, row);
    }
}

void turnQuarter(const BitRun& run) {
    const std::ptrdiff_t right = run.srcBit + run.height;
    const std::ptrdiff_t end = run.dstBit + run.width;
    for (TurnCut rows = firstTile(run.dst, run.dstBit, run.width); rows.start < end; moveCut(end, kTileBits, &rows))
        for (TurnCut columns = firstTile(run.src, run.srcBit, run.height); columns.start < right;
             moveCut(right, kTileBits, &columns))
            turnTile(run, columns, rows);
}

BitRun bitRun(const ZetImage* src, const ZetImage* dst, const TurnArea& a, bool isLeft) {
    const std::ptrdiff_t last = a.height - 1;
    if (isLeft)
        return {rowOf(src, a.sy),
                src->widthStep,
                a.sx - last,
                rowOf(dst, a.dy + last),
                -std::ptrdiff_t{dst->widthStep},
                a.dx,
                a.width,
                a.height};
    return {rowOf(src, a.sy), -std::ptrdiff_t{src->widthStep}, a.sx, rowOf(dst, a.dy), dst->widthStep, a.dx, a.width,
            a.height};
}

}  // namespace

void turnBits(const ZetImage* src, const ZetImage* dst, const TurnArea& area, std::int32_t turn) {
    if (turn == 180) return turnHalf(src, dst, area);
    turnQuarter(bitRun(src, dst, area, turn == 90));
}

}  // namespace zetpxl
