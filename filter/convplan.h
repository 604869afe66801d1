// The plan of a convolution: for each kernel how its row is formed, shifted, combined and stored.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/alloc.h"
#include "zetpxl.h"

namespace zetpxl {

inline constexpr std::int32_t kMaxKernels = 10;

// Results of the engine and its driver.
enum ConvResult : std::int32_t {
    kConvDone = 0,
    kConvNoChannel = 1,
    kConvMismatch = 2,
    kConvNoMemory = 3,
    kConvOneCoi = 5,
    kConvReported = 6,  // a destination tile that could not be had: reported where it failed
};

// Ring rows as a kernel sees them: samples of one channel stand `samplesPerPixel` apart.
struct ConvSource {
    const float* first;      // sample of the kernel's top left element for output sample 0
    std::ptrdiff_t rowStep;  // in samples
    std::int32_t samplesPerPixel;
};

struct ConvSlot;

// Forms `count` samples of a kernel's result.
using KernelRow = void (*)(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);

// In place on `target`, or from `acc` into it.
using CombineRow = void (*)(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);

using StoreRow = void (*)(const float* row, void* out, std::ptrdiff_t count);

struct ConvSlot {
    std::int32_t nZeros;
    std::int32_t nUnits;  // weights equal to 1 or -1
    std::int32_t nShift;
    std::int32_t nCols;
    std::int32_t nRows;
    std::int64_t absSum;  // of the weights; at most 2^31 * 2^29
    const std::int32_t* values;
    Block<float> weights;
    KernelRow kernelRow;
    CombineRow shiftRow;    // in place before combineRow, or none
    CombineRow combineRow;  // folds the row into the combined row, or none
};

struct ConvPlan {
    const ZetConvKernel* const* kernels;
    std::int32_t nKernels;
    std::int32_t method;
    CombineRow rootRow;  // last step of the combined row, or none
    StoreRow storeRow;
    std::array<ConvSlot, kMaxKernels> slots;
};

// Margins of the box that holds every kernel when all anchors lie on one point.
struct ConvMargins {
    std::int32_t left;
    std::int32_t right;
    std::int32_t top;
    std::int32_t bottom;

    std::int64_t extentX() const { return std::int64_t{left} + right + 1; }
    std::int64_t extentY() const { return std::int64_t{top} + bottom + 1; }
};

// Fills counts and weights of the slots; kConvDone or kConvNoMemory.
std::int32_t ownConvPrepare(ConvPlan* plan, const ZetConvKernel* const* kernels, std::int32_t nKernels,
                            std::int32_t method);

ConvMargins convMargins(const ConvPlan& plan);

// Chooses the row routines of every slot for samples of a depth.
void ownConvBuildRows(ConvPlan* plan, std::uint32_t depth, std::int32_t samplesPerPixel);

// Filters the region of `src`, all of whose neighbours are in memory, to the offset of `dst`'s region. kConvDone or
// kConvNoMemory.
std::int32_t ownConvolveRegion(const ZetImage* src, const ZetImage* dst, ConvPlan* plan, const ConvMargins& margins);

}  // namespace zetpxl
