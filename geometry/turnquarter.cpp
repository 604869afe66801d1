//   turnquarter.1 rows of images are often powers of two apart and contend for the same sets of the first cache: a block's lines
//                 of the source are read whole and at once into a buffer, and turned from there
//   turnquarter.2 blocks are cut where lines begin on both sides
#include "geometry/turnquarter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "geometry/turncut.h"

namespace zetpxl {

namespace {

// Pixels along a block's side: one, two or three whole lines.
template <std::size_t Bytes>
constexpr std::ptrdiff_t kSide = std::min<std::ptrdiff_t>(64, 128 / std::bit_floor(Bytes));

template <std::size_t Bytes>
constexpr std::ptrdiff_t kRowBytes = kSide<Bytes> * static_cast<std::ptrdiff_t>(Bytes);

template <std::size_t Bytes>
using Block = std::array<std::uint8_t, static_cast<std::size_t>(kSide<Bytes>* kRowBytes<Bytes>)>;

using Vector8 [[gnu::vector_size(16)]] = std::uint8_t;
using Vector16 [[gnu::vector_size(16)]] = std::uint16_t;
using Vector32 [[gnu::vector_size(16)]] = std::uint32_t;
using Vector64 [[gnu::vector_size(16)]] = std::uint64_t;

// Rows of a square of pixels, each in a vector.
template <std::size_t Bytes>
struct Square;
template <>
struct Square<1> {
    Vector8 rows[16];
};
template <>
struct Square<2> {
    Vector16 rows[8];
};
template <>
struct Square<4> {
    Vector32 rows[4];
};
template <>
struct Square<8> {
    Vector64 rows[2];
};

// Rows half the square apart go into each other, lane by lane: after as many rounds as a row's number has bits, rows and columns
// are exchanged.
template <std::size_t Bytes, std::size_t... I>
void shuffleRound(Square<Bytes>* square, std::index_sequence<I...>) {
    constexpr std::size_t n = sizeof...(I);
    const Square<Bytes> s = *square;
    for (std::size_t k = 0; k < n / 2; ++k) {
        square->rows[2 * k] = __builtin_shufflevector(s.rows[k], s.rows[k + n / 2], (I / 2 + I % 2 * n)...);
        square->rows[2 * k + 1] = __builtin_shufflevector(s.rows[k], s.rows[k + n / 2], (n / 2 + I / 2 + I % 2 * n)...);
    }
}

template <std::size_t Bytes>
void turnSquare(const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t step) {
    constexpr std::size_t n = 16 / Bytes;
    Square<Bytes> s;
    for (std::size_t i = 0; i < n; ++i) std::memcpy(&s.rows[i], from + i * kRowBytes<Bytes>, 16);
    using Lanes = std::make_index_sequence<n>;
    shuffleRound(&s, Lanes{});
    if constexpr (n >= 4) shuffleRound(&s, Lanes{});
    if constexpr (n >= 8) shuffleRound(&s, Lanes{});
    if constexpr (n >= 16) shuffleRound(&s, Lanes{});
    for (std::size_t i = 0; i < n; ++i, to += step) std::memcpy(to, &s.rows[i], 16);
}

template <std::size_t Bytes>
constexpr bool kIsWord = Bytes == 1 || Bytes == 2 || Bytes == 4 || Bytes == 8;

// A column of the block as a row of pixels.
template <std::size_t Bytes>
void turnColumn(const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t count) {
    constexpr std::size_t kMoved = Bytes == 3 ? 4 : Bytes;
    constexpr std::ptrdiff_t bytes{Bytes};
    for (std::ptrdiff_t i = 0; i < count - 1; ++i) std::memcpy(to + i * bytes, from + i * kRowBytes<Bytes>, kMoved);
    std::memcpy(to + (count - 1) * bytes, from + (count - 1) * kRowBytes<Bytes>, Bytes);
}

template <std::size_t Bytes>
void turnInside(const std::uint8_t* in, const TurnCut& columns, const TurnCut& rows, std::uint8_t* out,
                std::ptrdiff_t step) {
    constexpr std::ptrdiff_t bytes{Bytes};
    if constexpr (kIsWord<Bytes>) {
        constexpr std::ptrdiff_t n = 16 / bytes;
        for (std::ptrdiff_t c = columns.from & -n; c < columns.to; c += n)
            for (std::ptrdiff_t r = rows.from & -n; r < rows.to; r += n)
                turnSquare<Bytes>(in + r * kRowBytes<Bytes> + c * bytes, out + c * step + r * bytes, step);
    } else {
        for (std::ptrdiff_t c = columns.from; c < columns.to; ++c)
            turnColumn<Bytes>(in + rows.from * kRowBytes<Bytes> + c * bytes, out + c * step + rows.from * bytes,
                              rows.to - rows.from);
    }
}

template <std::size_t Bytes>
void prefetchRow(const std::uint8_t* row) {
    for (std::ptrdiff_t i = 0; i < kRowBytes<Bytes>; i += kLineBytes) __builtin_prefetch(row + i);
}

// Reads the block's rows, and tells the cache of those of the next, which is below it in the destination.
template <std::size_t Bytes>
void turnWholeBlock(const QuarterRun& run, const TurnCut& columns, const TurnCut& rows) {
    constexpr std::ptrdiff_t bytes{Bytes};
    constexpr std::ptrdiff_t side = kSide<Bytes>;
    alignas(kLineBytes) Block<Bytes> in;
    const std::uint8_t* from = run.src + rows.start * run.srcStep + columns.start * bytes;
    std::uint8_t* to = run.dst + columns.start * run.dstStep + rows.start * bytes;
    const std::ptrdiff_t ahead = columns.start + 2 * side <= run.height ? side : 0;
    const std::uint8_t* next = to + ahead * run.dstStep;
    for (std::ptrdiff_t r = 0; r < side; ++r, from += run.srcStep, next += run.dstStep) {
        std::memcpy(in.data() + r * kRowBytes<Bytes>, from, kRowBytes<Bytes>);
        prefetchRow<Bytes>(from + ahead * bytes);
        prefetchRow<Bytes>(next);
    }
    turnInside<Bytes>(in.data(), columns, rows, to, run.dstStep);
}

template <std::size_t Bytes>
void turnPartBlock(const QuarterRun& run, const TurnCut& columns, const TurnCut& rows) {
    constexpr std::ptrdiff_t bytes{Bytes};
    Block<Bytes> in;
    Block<Bytes> out;
    const auto copied = static_cast<std::size_t>((columns.to - columns.from) * bytes);
    for (std::ptrdiff_t r = rows.from; r < rows.to; ++r)
        std::memcpy(in.data() + r * kRowBytes<Bytes> + columns.from * bytes,
                    run.src + (rows.start + r) * run.srcStep + (columns.start + columns.from) * bytes, copied);
    turnInside<Bytes>(in.data(), columns, rows, out.data(), kRowBytes<Bytes>);
    const auto written = static_cast<std::size_t>((rows.to - rows.from) * bytes);
    for (std::ptrdiff_t c = columns.from; c < columns.to; ++c)
        std::memcpy(run.dst + (columns.start + c) * run.dstStep + (rows.start + rows.from) * bytes,
                    out.data() + c * kRowBytes<Bytes> + rows.from * bytes, written);
}

// Pixels from the last place where a pixel and a line begin together.
template <std::size_t Bytes>
std::ptrdiff_t intoBlock(const std::uint8_t* pixel) {
    const auto at = static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(pixel) % kLineBytes);
    for (std::ptrdiff_t i = 0; i < kSide<Bytes>; ++i)
        if ((at - i * static_cast<std::ptrdiff_t>(Bytes)) % kLineBytes == 0) return i;
    return 0;
}

template <std::size_t Bytes>
TurnCut firstBlock(const std::uint8_t* pixel, std::ptrdiff_t count) {
    return firstCut(0, count, count <= kSide<Bytes> ? 0 : intoBlock<Bytes>(pixel), kSide<Bytes>);
}

template <std::size_t Bytes>
void turnBlocks(const QuarterRun& run) {
    constexpr std::ptrdiff_t side = kSide<Bytes>;
    const TurnCut left = firstBlock<Bytes>(run.src, run.height);
    for (TurnCut rows = firstBlock<Bytes>(run.dst, run.width); rows.start < run.width; moveCut(run.width, side, &rows))
        for (TurnCut columns = left; columns.start < run.height; moveCut(run.height, side, &columns)) {
            if (isWhole(columns, side) && isWhole(rows, side))
                turnWholeBlock<Bytes>(run, columns, rows);
            else
                turnPartBlock<Bytes>(run, columns, rows);
        }
}

// By the bytes of a pixel.
constexpr std::array<QuarterRoutine, 17> quarterRoutines = {
    nullptr,        turnBlocks<1>, turnBlocks<2>, turnBlocks<3>, turnBlocks<4>, nullptr,
    turnBlocks<6>,  nullptr,       turnBlocks<8>, nullptr,       nullptr,       nullptr,
    turnBlocks<12>, nullptr,       nullptr,       nullptr,       turnBlocks<16>};

}  // namespace

QuarterRoutine quarterRoutine(std::ptrdiff_t pixelBytes) {
    const auto index = static_cast<std::size_t>(pixelBytes);
    return index < quarterRoutines.size() ? quarterRoutines[index] : nullptr;
}

}  // namespace zetpxl
