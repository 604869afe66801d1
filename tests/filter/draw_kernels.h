// Kernel sets for drawn calls: all shares of zeros and units, weights of every size, now and then a broken record.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/random.h"
#include "zetpxl.h"

namespace zetpxl::test {

struct DrawnKernels {
    std::vector<std::vector<std::int32_t>> values;
    std::vector<ZetConvKernel> records;
    std::vector<const ZetConvKernel*> pointers;
    std::int32_t count = 1;  // as passed
    std::int32_t method = 0;
    bool none = false;  // a null array is passed

    const ZetConvKernel* const* data() const { return none ? nullptr : pointers.data(); }
    std::string describe() const;
};

// kBound: near what one tap, or a group of them, may weigh where sums are held in 16 bits or taken for exact.
enum class Weights { kPlain, kBig, kBound };

// `far` percent of the kernels reach further than a tile.
std::shared_ptr<DrawnKernels> drawKernels(Random& random, Weights weights, std::int32_t far = 4);

}  // namespace zetpxl::test
