#include "pixel/maskrows.h"

#include <cstring>

namespace zetpxl {

namespace {

constexpr std::ptrdiff_t kPieceBytes = kMaskPiece / 8;

// Eight bytes of 0 or 0xFF, the byte at the lowest address for the leftmost bit, for every byte of mask.
constexpr std::array<std::array<std::uint8_t, 8>, 256> makeSpread() {
    std::array<std::array<std::uint8_t, 8>, 256> table{};
    for (std::size_t value = 0; value < 256; ++value)
        for (std::size_t i = 0; i < 8; ++i) table[value][i] = (value >> (7 - i)) & 1 ? 0xFF : 0;
    return table;
}
constexpr auto spread = makeSpread();

MaskCover coverOf(const std::uint8_t* bits, std::ptrdiff_t count) {
    const std::ptrdiff_t whole = count >> 3;
    std::uint8_t any = 0;
    std::uint8_t all = 0xFF;
    for (std::ptrdiff_t i = 0; i < whole; ++i) {
        any |= bits[i];
        all &= bits[i];
    }
    if (count & 7) {
        const auto inRun = static_cast<std::uint8_t>(0xFF << (8 - (count & 7)));
        any |= bits[whole] & inRun;
        all &= static_cast<std::uint8_t>(bits[whole] | ~inRun);
    }
    if (any == 0) return MaskCover::None;
    return all == 0xFF ? MaskCover::All : MaskCover::Some;
}

}  // namespace

MaskCover spreadMask(const MaskBits& mask, std::ptrdiff_t from, std::ptrdiff_t count, MaskBytes* bytes) {
    std::array<std::uint8_t, kPieceBytes> bits{};
    ownCopyBits(mask.data, bits.data(), mask.bit + from, 0, count);
    const MaskCover cover = coverOf(bits.data(), count);
    if (cover != MaskCover::Some) return cover;
    for (std::ptrdiff_t i = 0; i < (count + 7) >> 3; ++i)
        std::memcpy(bytes->data() + 8 * i, spread[bits[static_cast<std::size_t>(i)]].data(), 8);
    return cover;
}

}  // namespace zetpxl
