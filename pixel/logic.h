// Bitwise point operations on images of any integer depth: what masks on 1U images come down to.
#pragma once

#include <cstdint>

#include "zetpxl.h"

namespace zetpxl {

void zetOr(ZetImage* srcImageA, ZetImage* srcImageB, ZetImage* dstImage);
void zetAnd(ZetImage* srcImageA, ZetImage* srcImageB, ZetImage* dstImage);
void zetXorS(ZetImage* srcImage, ZetImage* dstImage, std::int32_t value);

}  // namespace zetpxl
