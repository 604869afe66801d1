// Plain model of filtering with kernels of whole weights, one output sample at a time.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

void modelConvolve(Model& model, ZetImage* src, ZetImage* dst, const ZetConvKernel* const* kernels,
                   std::int32_t nKernels, std::int32_t method);

}  // namespace zetpxl::test
