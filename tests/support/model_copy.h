// Plain model of copying one region into another.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

void modelCopy(Model& model, ZetImage* src, ZetImage* dst);

}  // namespace zetpxl::test
