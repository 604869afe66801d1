// Tiles of quarter turns, cut along rows.
#pragma once

#include <algorithm>
#include <cstddef>

namespace zetpxl {

// What a tile has of a row, in pixels. Pixels of a tile that are not turned are neither read nor written.
struct TurnCut {
    std::ptrdiff_t start;  // the tile's first, which may lie left of the row
    std::ptrdiff_t from;   // those of the tile that are turned
    std::ptrdiff_t to;
};

constexpr std::ptrdiff_t kLineBytes = 64;

inline bool isWhole(const TurnCut& cut, std::ptrdiff_t length) { return cut.from == 0 && cut.to == length; }

// The tile with the first of `count` pixels, which lies `into` pixels behind a place where tiles are best cut.
inline TurnCut firstCut(std::ptrdiff_t first, std::ptrdiff_t count, std::ptrdiff_t into, std::ptrdiff_t length) {
    return {first - into, into, std::min(length, into + count)};
}

inline void moveCut(std::ptrdiff_t end, std::ptrdiff_t length, TurnCut* cut) {
    cut->start += length;
    cut->from = 0;
    cut->to = std::min(length, end - cut->start);
}

}  // namespace zetpxl
