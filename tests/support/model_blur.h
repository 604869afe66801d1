// Plain model of the mean over a rectangle. `rounding` is the caller's floating-point rounding mode.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

struct BlurSize {
    std::int32_t nCols, nRows, anchorX, anchorY;
};

void modelBlur(Model& model, ZetImage* src, ZetImage* dst, const BlurSize& size, int rounding);

}  // namespace zetpxl::test
