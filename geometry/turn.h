// Exact turns by right angles.
#pragma once

#include <cstdint>

#include "core/report.h"
#include "zetpxl.h"

namespace zetpxl {

// Copies the source region turned by 90, 180 or 270 degrees and moved by whole shifts; untiled images only.
void turnExactly(const Operation& op, ZetImage* srcImage, ZetImage* dstImage, std::int32_t turn, double xShift,
                 double yShift);

}  // namespace zetpxl
