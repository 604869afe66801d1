// Which routines a kernel gets.
//   plan.1 the shares of zeros and units, as exact ratios, choose the routine and so where its sums are rounded
//   plan.2 3 by 3 and 5 by 5 kernels are summed at once for one or three samples a pixel
//   plan.3 one kernel with a shift is only shifted; its method counts without a shift
//   plan.4 sums of whole numbers that stay below 2^24 are exact in single precision in any order: every routine then gives
//          the same, and the cheapest runs
#include "filter/convplan.h"

#include <algorithm>
#include <cstdlib>

#include "core/depth.h"
#include "filter/convrows.h"

namespace zetpxl {

namespace {

enum CombineMethod : std::int32_t { kSum, kSumSquares, kRootSumSquares, kMax, kMin };

std::int32_t prepareSlot(ConvSlot* slot, const ZetConvKernel& kernel) {
    const std::ptrdiff_t count = std::ptrdiff_t{kernel.nCols} * kernel.nRows;
    slot->nShift = kernel.nShift;
    slot->nCols = kernel.nCols;
    slot->nRows = kernel.nRows;
    slot->values = kernel.values;
    slot->weights = allocBlock<float>(count);
    if (!slot->weights) return kConvNoMemory;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::int32_t value = kernel.values[i];
        slot->nZeros += value == 0;
        slot->nUnits += value == 1 || value == -1;
        slot->absSum += std::abs(std::int64_t{value});
        slot->weights[static_cast<std::size_t>(i)] = static_cast<float>(value);
    }
    return kConvDone;
}

// Every partial sum is a whole number up to the sum of the weights' magnitudes times the greatest sample's.
bool isExact(const ConvSlot& slot, std::uint32_t depth) {
    constexpr std::int64_t limit = std::int64_t{1} << 24;
    const std::int32_t bits = sampleBits(depth);
    if (bits > 16) return false;
    const std::int64_t greatest =
        depth & ZET_DEPTH_SIGN ? std::int64_t{1} << (bits - 1) : (std::int64_t{1} << bits) - 1;
    return slot.absSum <= limit && slot.absSum * greatest <= limit;
}

KernelRow chooseKernelRow(const ConvSlot& slot, std::uint32_t depth, std::int32_t samplesPerPixel) {
    if (isExact(slot, depth)) return rowExact;
    const std::int64_t n = std::int64_t{slot.nCols} * slot.nRows;
    const bool isSmall = slot.nCols == slot.nRows && (slot.nCols == 3 || slot.nCols == 5);
    if (std::int64_t{100} * slot.nZeros > 66 * n) return rowSparse;
    if (isSmall && (samplesPerPixel == 1 || samplesPerPixel == 3)) return rowAtOnce;
    if (std::int64_t{4} * slot.nUnits > n) return rowUnit;
    if (std::int64_t{10} * slot.nZeros <= n) return rowPaired;
    return rowSparse;
}

// Shifts of a kernel's row, which is whole where its sums are exact.
struct ShiftRows {
    CombineRow shift;
    CombineRow shiftAdd;
};

ShiftRows shiftRowsOf(const ConvSlot& slot) {
    if (slot.kernelRow == rowExact) return {rowShiftWhole, rowShiftAddWhole};
    return {rowShift, rowShiftAdd};
}

void chooseForOne(ConvSlot* slot, std::int32_t method) {
    if (slot->nShift != 0) {
        slot->shiftRow = shiftRowsOf(*slot).shift;
        return;
    }
    if (method == kSumSquares) slot->combineRow = rowSquare;
    if (method == kRootSumSquares) slot->combineRow = rowAbs;
}

void chooseForSeveral(ConvSlot* slot, std::int32_t method, bool isFirst) {
    const bool shifts = slot->nShift != 0;
    if (method == kSum) {
        const CombineRow plain = isFirst ? rowCopy : rowAdd;
        const CombineRow shift = isFirst ? shiftRowsOf(*slot).shift : shiftRowsOf(*slot).shiftAdd;
        slot->combineRow = shifts ? shift : plain;
        return;
    }
    if (shifts) slot->shiftRow = shiftRowsOf(*slot).shift;
    if (method == kMax || method == kMin) {
        const CombineRow extreme = method == kMax ? rowMax : rowMin;
        slot->combineRow = isFirst ? rowCopy : extreme;
        return;
    }
    slot->combineRow = isFirst ? rowSquare : rowAddSquare;
}

}  // namespace

std::int32_t ownConvPrepare(ConvPlan* plan, const ZetConvKernel* const* kernels, std::int32_t nKernels,
                            std::int32_t method) {
    plan->kernels = kernels;
    plan->nKernels = nKernels;
    plan->method = method;
    for (std::int32_t k = 0; k < nKernels; ++k)
        if (prepareSlot(&plan->slots[static_cast<std::size_t>(k)], *kernels[k]) != kConvDone) return kConvNoMemory;
    return kConvDone;
}

ConvMargins convMargins(const ConvPlan& plan) {
    ConvMargins m{0, 0, 0, 0};
    for (std::int32_t k = 0; k < plan.nKernels; ++k) {
        const ZetConvKernel& kernel = *plan.kernels[k];
        m.left = std::max(m.left, kernel.anchorX);
        m.top = std::max(m.top, kernel.anchorY);
        m.right = std::max(m.right, kernel.nCols - kernel.anchorX - 1);
        m.bottom = std::max(m.bottom, kernel.nRows - kernel.anchorY - 1);
    }
    return m;
}

void ownConvBuildRows(ConvPlan* plan, std::uint32_t depth, std::int32_t samplesPerPixel) {
    for (std::int32_t k = 0; k < plan->nKernels; ++k) {
        ConvSlot& slot = plan->slots[static_cast<std::size_t>(k)];
        slot.kernelRow = chooseKernelRow(slot, depth, samplesPerPixel);
        slot.shiftRow = nullptr;
        slot.combineRow = nullptr;
        if (plan->nKernels == 1) {
            chooseForOne(&slot, plan->method);
        } else {
            chooseForSeveral(&slot, plan->method, k == 0);
        }
    }
    plan->rootRow = plan->nKernels > 1 && plan->method == kRootSumSquares ? rowRoot : nullptr;
    plan->storeRow = storeRowOf(depth);
}

}  // namespace zetpxl
