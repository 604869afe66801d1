// Plain model of the median over a rectangle: all samples put in order.
#pragma once

#include "tests/support/model_frame.h"

namespace zetpxl::test {

void modelMedian(Model& model, ZetImage* src, ZetImage* dst, const FrameWindow& window);

}  // namespace zetpxl::test
