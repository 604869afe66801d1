// Plain model of writing one pixel.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

void modelPutPixel(Model& model, ZetImage* image, std::int32_t x, std::int32_t y, const void* pixel);

}  // namespace zetpxl::test
