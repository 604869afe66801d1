// Plain model of one output sample of a convolution: sums in the rounding that a kernel's make-up asks for.
#pragma once

#include <functional>

#include "tests/support/model.h"

namespace zetpxl::test {

struct KernelSet {
    const ZetConvKernel* const* kernels;
    std::int32_t count;
    std::int32_t method;
};

// Gives the source sample at an offset from the output sample's place.
using Neighbour = std::function<float(std::int32_t dy, std::int32_t dx)>;

// `step` is the distance in samples from a pixel's channel to the next pixel's in a working row.
float modelConvValue(const KernelSet& set, std::int32_t step, const Neighbour& sample);

std::uint32_t modelConvStore(std::uint32_t depth, float value);

}  // namespace zetpxl::test
