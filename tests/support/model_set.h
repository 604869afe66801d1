// Plain models of filling a region.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

void modelSet(Model& model, ZetImage* dst, std::int32_t value);
void modelSetFP(Model& model, ZetImage* dst, float value);

}  // namespace zetpxl::test
