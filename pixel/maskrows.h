// Mask bits spread to bytes, a piece of a row at a time, so that masked routines blend instead of branching.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel/bits.h"

namespace zetpxl {

// Where a mask's bits start in a row.
struct MaskBits {
    const std::uint8_t* data;
    std::ptrdiff_t bit;
};

inline constexpr std::ptrdiff_t kMaskPiece = 512;

// 0xFF for a pixel that takes part, 0 for one that does not.
using MaskBytes = std::array<std::uint8_t, kMaskPiece>;

enum class MaskCover : std::uint8_t { None, Some, All };

// Spreads `count` bits (at most kMaskPiece) from `from` on, and tells whether any or all of them are set. Bytes are
// written only where some, but not all, are.
MaskCover spreadMask(const MaskBits& mask, std::ptrdiff_t from, std::ptrdiff_t count, MaskBytes* bytes);

// Calls piece(first, count, cover, bytes) for each piece of a row in which any pixel takes part.
template <class Piece>
void forMaskPieces(const MaskBits& mask, std::ptrdiff_t width, Piece piece) {
    MaskBytes bytes;
    for (std::ptrdiff_t first = 0; first < width; first += kMaskPiece) {
        const std::ptrdiff_t count = width - first < kMaskPiece ? width - first : kMaskPiece;
        const MaskCover cover = spreadMask(mask, first, count, &bytes);
        if (cover != MaskCover::None) piece(first, count, cover, bytes.data());
    }
}

}  // namespace zetpxl
