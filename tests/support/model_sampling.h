// Plain model of the three interpolations at one position, for warps and remaps.
#pragma once

#include <optional>

#include "tests/support/model.h"

namespace zetpxl::test {

// A rectangle of an image, with positions that count from its corner.
struct SourceView {
    const ZetImage* image = nullptr;
    Area area{};

    std::uint32_t at(std::int32_t channel, std::int64_t row, std::int64_t col) const;  // the nearest one if outside
    std::int32_t lastCol() const { return area.width - 1; }
    std::int32_t lastRow() const { return area.height - 1; }
};

struct Position {
    double x, y;
};

// The sample at a position, nothing where the position cannot be an index. `linearLimit` is the last column and row for
// linear interpolation, which need not be the view's.
struct LastSample {
    std::int32_t col, row;
};
std::optional<std::uint32_t> modelResample(const SourceView& view, std::int32_t channel, std::int32_t mode,
                                           const Position& at, const LastSample& linearLimit);

// What an image can give: the nearest sample only, or no cubic.
std::int32_t modelMode(const ZetImage& src, std::int32_t mode);

}  // namespace zetpxl::test
