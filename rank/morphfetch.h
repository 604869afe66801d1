// Rows in and out of images for morphology: tiles resolved, borders applied.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/report.h"
#include "rank/morphrows.h"
#include "zetpxl.h"

namespace zetpxl {

struct MorphImage {
    Operation op;
    ZetImage* image;
    const MorphDepth* depth;
};

// `count` pixels from (x, y) on under the border rule, to element `at` of a row. `channel` counts from 1. A tile that cannot
// be had is reported; false then.
bool ownFetchBorderRow(const MorphImage& from, std::int32_t x, std::int32_t y, std::int32_t channel, std::uint8_t* row,
                       std::ptrdiff_t at, std::int32_t count);

// The first `count` pixels of a row into the image.
bool ownStoreImageRow(const std::uint8_t* row, std::int32_t count, const MorphImage& to, std::int32_t x, std::int32_t y,
                      std::int32_t channel);

}  // namespace zetpxl
