// Exact turns of 1U images.
#pragma once

#include <cstdint>

#include "zetpxl.h"

namespace zetpxl {

// The destination's pixels and the source pixel of the first.
struct TurnArea {
    std::int32_t dx, dy, width, height;
    std::int32_t sx, sy;
};

// `turn` is 90, 180 or 270; all pixels lie inside their images.
void turnBits(const ZetImage* src, const ZetImage* dst, const TurnArea& area, std::int32_t turn);

}  // namespace zetpxl
