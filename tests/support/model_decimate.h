// Plain model of shrinking by two rational factors.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

void modelDecimate(Model& model, ZetImage* src, ZetImage* dst, std::int32_t xDst, std::int32_t xSrc, std::int32_t yDst,
                   std::int32_t ySrc, std::int32_t interpolate);

}  // namespace zetpxl::test
