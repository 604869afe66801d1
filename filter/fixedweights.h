// The fixed filters as sums over a window, for any type that holds them exactly.
#pragma once

#include "filter/fixedrows.h"

namespace zetpxl {

// `w(row, column)` gives a sample as Acc.
template <std::int32_t Kind, class Acc, class W>
Acc weightedSum(const W& w) {
    const auto across = [&](std::size_t r) { return w(r, 0) - w(r, 2); };
    const auto flat = [&](std::size_t r) { return w(r, 0) + w(r, 1) + w(r, 2); };
    const auto peaked = [&](std::size_t r) { return w(r, 0) + 2 * w(r, 1) + w(r, 2); };
    const auto wide = [&](std::size_t r) { return w(r, 0) + w(r, 1) + w(r, 2) + w(r, 3) + w(r, 4); };
    const auto symmetric = [&](std::size_t r, int outer, int inner, int centre) {
        return outer * (w(r, 0) + w(r, 4)) + inner * (w(r, 1) + w(r, 3)) + centre * w(r, 2);
    };
    if constexpr (Kind == kGradXFlat) return static_cast<Acc>(across(0) + across(1) + across(2));
    if constexpr (Kind == kGradXPeaked) return static_cast<Acc>(across(0) + 2 * across(1) + across(2));
    if constexpr (Kind == kGradYFlat) return static_cast<Acc>(flat(2) - flat(0));
    if constexpr (Kind == kGradYPeaked) return static_cast<Acc>(peaked(2) - peaked(0));
    if constexpr (Kind == kPeak3 || Kind == kPeak3B)
        return static_cast<Acc>(9 * w(1, 1) - (flat(0) + flat(1) + flat(2)));
    if constexpr (Kind == kCrisp3) return static_cast<Acc>(17 * w(1, 1) - (flat(0) + flat(1) + flat(2)));
    if constexpr (Kind == kSmooth3) return static_cast<Acc>(peaked(0) + 2 * peaked(1) + peaked(2));
    if constexpr (Kind == kPeak5)
        return static_cast<Acc>(25 * w(2, 2) - (wide(0) + wide(1) + wide(2) + wide(3) + wide(4)));
    if constexpr (Kind == kRing5)
        return static_cast<Acc>(symmetric(0, -1, -3, -4) + symmetric(1, -3, 0, 6) + symmetric(2, -4, 6, 20) +
                                symmetric(3, -3, 0, 6) + symmetric(4, -1, -3, -4));
    if constexpr (Kind == kSmooth5)
        return static_cast<Acc>(symmetric(0, 2, 7, 12) + symmetric(1, 7, 31, 52) + symmetric(2, 12, 52, 127) +
                                symmetric(3, 7, 31, 52) + symmetric(4, 2, 7, 12));
}

}  // namespace zetpxl
