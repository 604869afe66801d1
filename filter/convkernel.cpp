// Convolution kernels: whole weights, an anchor and a shift, stored turned through 180 degrees, so that the engine, which
// lays the stored weights over the pixels as they stand, computes a true convolution.
#include <cstddef>

#include "core/alloc.h"
#include "filter/convdriver.h"

using namespace zetpxl;

namespace {

constexpr Operation opCreate{"zetCreateConvKernel", kConvSource};
constexpr Operation opDelete{"zetDeleteConvKernel", kConvSource};

// The weights' bytes must be a positive 32-bit number.
Block<std::int32_t> allocWeights(std::int32_t nCols, std::int32_t nRows) {
    const std::ptrdiff_t count = sizeProduct(nCols, nRows);
    if (count > INT32_MAX / 4) return nullptr;
    return allocBlock<std::int32_t>(count);
}

const char* argumentFault(std::int32_t nCols, std::int32_t nRows, std::int32_t anchorX, std::int32_t anchorY,
                          const std::int32_t* values) {
    if (!values) return "(values == 0)";
    if (nRows <= 0 || nCols <= 0) return "(nRows<=0 || nCols<=0)";
    if (anchorX < 0 || anchorY < 0 || nRows <= anchorY || nCols <= anchorX)
        return "(anchorX<0 ||anchorY<0 ||nRows<=anchorY || nCols<=anchorX)";
    return nullptr;
}

}  // namespace

ZetConvKernel* zetCreateConvKernel(int32_t nCols, int32_t nRows, int32_t anchorX, int32_t anchorY,
                                   const int32_t* values, int32_t nShift) {
    if (const char* fault = argumentFault(nCols, nRows, anchorX, anchorY, values)) {
        report(opCreate, ZET_StatusBadArgument, fault);
        return nullptr;
    }
    Block<ZetConvKernel> kernel = allocBlock<ZetConvKernel>(1);
    Block<std::int32_t> weights = kernel ? allocWeights(nCols, nRows) : nullptr;
    if (!weights) {
        report(opCreate, ZET_StatusNoMemory, "Allocation failure");
        return nullptr;
    }
    const std::ptrdiff_t count = std::ptrdiff_t{nCols} * nRows;
    for (std::ptrdiff_t i = 0; i < count; ++i) weights[static_cast<std::size_t>(i)] = values[count - 1 - i];
    kernel[0] = {nCols, nRows, nCols - 1 - anchorX, nRows - 1 - anchorY, weights.release(), nShift};
    return kernel.release();
}

void zetDeleteConvKernel(ZetConvKernel* kernel) {
    if (!kernel) return report(opDelete, ZET_StatusBadArgument, "kernel==0");
    if (!kernel->values) return report(opDelete, ZET_StatusBadArgument, "kernel->values==0");
    zetDeleteROI(kernel->values);
    zetDeleteROI(kernel);
}
