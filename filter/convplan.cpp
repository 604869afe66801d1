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
    slot->taps = allocBlock<ConvTap>(count);
    if (!slot->weights || !slot->taps) return kConvNoMemory;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::int32_t value = kernel.values[i];
        slot->nZeros += value == 0;
        slot->nUnits += value == 1 || value == -1;
        slot->absSum += std::abs(std::int64_t{value});
        slot->weights[static_cast<std::size_t>(i)] = static_cast<float>(value);
    }
    return kConvDone;
}

// The greatest magnitude of a sample, or 0 where samples have more than 16 bits.
std::int64_t greatestOf(std::uint32_t depth) {
    const std::int32_t bits = sampleBits(depth);
    if (bits > 16) return 0;
    return depth & ZET_DEPTH_SIGN ? std::int64_t{1} << (bits - 1) : (std::int64_t{1} << bits) - 1;
}

// Every partial sum is a whole number up to the sum of the weights' magnitudes times the greatest sample's.
bool isExact(const ConvSlot& slot, std::uint32_t depth) {
    constexpr std::int64_t limit = std::int64_t{1} << 24;
    const std::int64_t greatest = greatestOf(depth);
    return greatest != 0 && slot.absSum <= limit && slot.absSum * greatest <= limit;
}

KernelRow chooseLiteralRow(const ConvSlot& slot, std::int32_t samplesPerPixel) {
    const std::int64_t n = std::int64_t{slot.nCols} * slot.nRows;
    const bool isSmall = slot.nCols == slot.nRows && (slot.nCols == 3 || slot.nCols == 5);
    if (std::int64_t{100} * slot.nZeros > 66 * n) return rowSparse;
    if (isSmall && (samplesPerPixel == 1 || samplesPerPixel == 3)) return rowAtOnce;
    if (std::int64_t{4} * slot.nUnits > n) return rowUnit;
    if (std::int64_t{10} * slot.nZeros <= n) return rowPaired;
    return rowSparse;
}

// The most that the taps of a group add to a sum, or take from it.
struct GroupBound {
    std::int64_t greatest;  // sample
    bool isSigned;
    std::int64_t up = 0;
    std::int64_t down = 0;

    void add(std::int64_t weight) {
        const std::int64_t most = std::abs(weight) * greatest;
        if (weight > 0 || isSigned) up += most;
        if (weight < 0 || isSigned) down += most;
    }
    bool isWithin(std::int64_t limit) const { return up <= limit && down <= limit; }
};

// Cuts the taps into groups of sums within the limit; false when a single tap passes it.
bool cutGroups(ConvSlot* slot, std::uint32_t depth, std::int64_t limit) {
    const GroupBound empty{greatestOf(depth), (depth & ZET_DEPTH_SIGN) != 0};
    GroupBound group = empty;
    std::int32_t begin = 0;
    for (std::int32_t t = 0; t < slot->nTaps; ++t) {
        const auto weight = static_cast<std::int64_t>(slot->taps[static_cast<std::size_t>(t)].weight);
        group.add(weight);
        if (!group.isWithin(limit)) {
            slot->taps[static_cast<std::size_t>(begin)].groupEnd = t;
            begin = t;
            group = empty;
            group.add(weight);
            if (!group.isWithin(limit)) return false;
        }
    }
    if (begin < slot->nTaps) slot->taps[static_cast<std::size_t>(begin)].groupEnd = slot->nTaps;
    return true;
}

// The kernel's weights in the order in which its literal routine adds them; their places come later.
void listTaps(ConvSlot* slot) {
    const std::int32_t band = slot->literalRow == rowPaired ? 2 : 1;
    slot->nTaps = 0;
    for (std::int32_t top = 0; top < slot->nRows; top += band)
        for (std::int32_t q = 0; q < slot->nCols; ++q)
            for (std::int32_t r = top; r < std::min(top + band, slot->nRows); ++r) {
                const std::ptrdiff_t index = std::ptrdiff_t{r} * slot->nCols + q;
                const std::int32_t value = slot->values[index];
                if (value == 0) continue;
                slot->taps[static_cast<std::size_t>(slot->nTaps++)] = {index,
                                                                       slot->weights[static_cast<std::size_t>(index)],
                                                                       static_cast<std::uint16_t>(value) * 0x10001U, 0};
            }
}

// plan.5 words hold the sums of a group as they wrap around at 2^16: only its last one has to fit
bool fitsWords(ConvSlot* slot, std::uint32_t depth) {
    constexpr std::int64_t limit = 32767;
    return sampleBits(depth) <= 8 && isExact(*slot, depth) && cutGroups(slot, depth, limit);
}

// plan.6 a sum that begins a group within 2^23 stays within 2^24 through it, where each step is exact
KernelRow chooseFloatRow(ConvSlot* slot, std::uint32_t depth) {
    constexpr std::int64_t limit = std::int64_t{1} << 23;
    if (isExact(*slot, depth)) return rowExact;
    return greatestOf(depth) != 0 && cutGroups(slot, depth, limit) ? rowHopeful : slot->literalRow;
}

// Shifts of a kernel's row, which is whole where its sums are exact.
struct ShiftRows {
    CombineRow shift;
    CombineRow shiftAdd;
};

ShiftRows shiftRowsOf(const ConvSlot& slot) {
    if (slot.isWhole) return {rowShiftWhole, rowShiftAddWhole};
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

void chooseForSeveral(ConvSlot* slot, std::int32_t method, bool isFirst, bool exactSquares) {
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
    const CombineRow addSquare = exactSquares ? rowAddExactSquare : rowAddSquare;
    slot->combineRow = isFirst ? rowSquare : addSquare;
}

// Sums of squares of whole numbers, while they are exact themselves.
bool squaresAreExact(const ConvPlan& plan, std::uint32_t depth) {
    constexpr std::int64_t limit = std::int64_t{1} << 24;
    std::int64_t sum = 0;
    for (std::int32_t k = 0; k < plan.nKernels; ++k) {
        const ConvSlot& slot = plan.slots[static_cast<std::size_t>(k)];
        if (!isExact(slot, depth)) return false;
        const std::int64_t most = slot.absSum * greatestOf(depth);
        sum += most * most;
    }
    return sum <= limit;
}

// Lists the taps of all kernels; whether each of them may be summed in words.
bool prepareTaps(ConvPlan* plan, std::uint32_t depth, std::int32_t samplesPerPixel) {
    bool words = true;
    for (std::int32_t k = 0; k < plan->nKernels; ++k) {
        ConvSlot& slot = plan->slots[static_cast<std::size_t>(k)];
        slot.literalRow = chooseLiteralRow(slot, samplesPerPixel);
        listTaps(&slot);
        words = words && fitsWords(&slot, depth);
    }
    return words;
}

// Whether one kernel's sums are the whole result, but for a shift.
bool isOneGroup(const ConvPlan& plan) {
    const ConvSlot& slot = plan.slots[0];
    return plan.nKernels == 1 && !slot.combineRow && (slot.nTaps == 0 || slot.taps[0].groupEnd == slot.nTaps);
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
    const bool words = prepareTaps(plan, depth, samplesPerPixel);
    for (std::int32_t k = 0; k < plan->nKernels; ++k) {
        ConvSlot& slot = plan->slots[static_cast<std::size_t>(k)];
        slot.kernelRow = words ? rowWords : chooseFloatRow(&slot, depth);
        slot.isWhole = isExact(slot, depth);
        slot.shiftRow = nullptr;
        slot.combineRow = nullptr;
        if (plan->nKernels == 1) {
            chooseForOne(&slot, plan->method);
        } else {
            chooseForSeveral(&slot, plan->method, k == 0, squaresAreExact(*plan, depth));
        }
    }
    plan->rootRow = plan->nKernels > 1 && plan->method == kRootSumSquares ? rowRoot : nullptr;
    plan->loadRow = words ? loadWordsOf(depth) : loadRowOf(depth);
    plan->storeRow = storeRowOf(depth);
    plan->storeWords = words && isOneGroup(*plan) ? storeWordsOf(depth) : nullptr;
    plan->ringBytes = words ? std::ptrdiff_t{sizeof(std::uint16_t)} : std::ptrdiff_t{sizeof(float)};
}

void ownConvPlaceTaps(ConvPlan* plan, std::ptrdiff_t rowStep, std::int32_t samplesPerPixel) {
    for (std::int32_t k = 0; k < plan->nKernels; ++k) {
        const ConvSlot& slot = plan->slots[static_cast<std::size_t>(k)];
        for (std::int32_t t = 0; t < slot.nTaps; ++t) {
            ConvTap& tap = slot.taps[static_cast<std::size_t>(t)];
            tap.at = tap.at / slot.nCols * rowStep + tap.at % slot.nCols * samplesPerPixel;
        }
    }
}

}  // namespace zetpxl
