// Plain model of morphology by a filled square.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

enum class Morph { kDilate, kErode, kOpen, kClose };

void modelMorph(Model& model, Morph kind, ZetImage* src, ZetImage* dst, std::int32_t nIterations);

}  // namespace zetpxl::test
