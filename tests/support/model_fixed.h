// Plain model of the built-in filters, straight from their tables of weights.
#pragma once

#include "tests/support/model_frame.h"

namespace zetpxl::test {

std::int32_t modelFixed(Model& model, ZetImage* src, ZetImage* dst, std::int32_t filter);

// One result from the samples of a 3 by 3 or 5 by 5 window.
std::uint32_t modelFixedSample(std::uint32_t depth, std::int32_t filter, const WindowSample& sample);

}  // namespace zetpxl::test
