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

// Ring rows as a kernel sees them: samples of one channel stand `samplesPerPixel` apart. The samples are single-precision
// numbers, or words where the plan says so.
struct ConvSource {
    const void* first;       // sample of the kernel's top left element for output sample 0
    std::ptrdiff_t rowStep;  // in samples
    std::int32_t samplesPerPixel;
};

// A weight that is not 0.
struct ConvTap {
    std::ptrdiff_t at;  // of its sample from the kernel's top left one
    float weight;
    std::uint32_t words;    // the weight modulo 2^16, twice
    std::int32_t groupEnd;  // the first tap of the next group
};

// Routines write whole tiles, and read as far: so many samples beyond the last one belong to each row.
inline constexpr std::ptrdiff_t kConvSlack = 64;

// Samples of a row that go through all steps while they are in the first cache.
inline constexpr std::ptrdiff_t kConvPiece = 512;

struct ConvSlot;

// Forms `count` samples of a kernel's result, at most kConvPiece; `accRow` has room for the slack behind them.
using KernelRow = void (*)(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);

// In place on `target`, or from `acc` into it.
using CombineRow = void (*)(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);

using StoreRow = void (*)(const float* row, void* out, std::ptrdiff_t count);

using LoadRow = void (*)(const std::uint8_t* row, std::ptrdiff_t pixelStep, std::ptrdiff_t count, void* ringRow);

// Stores sums that are whole numbers of 16 bits, shifted first.
using StoreWords = void (*)(const std::uint16_t* sums, std::int32_t shift, void* out, std::ptrdiff_t count);

struct ConvSlot {
    std::int32_t nZeros;
    std::int32_t nUnits;  // weights equal to 1 or -1
    std::int32_t nShift;
    std::int32_t nCols;
    std::int32_t nRows;
    std::int64_t absSum;  // of the weights; at most 2^31 * 2^29
    const std::int32_t* values;
    Block<float> weights;
    Block<ConvTap> taps;
    std::int32_t nTaps;
    KernelRow kernelRow;
    KernelRow literalRow;   // whose sums kernelRow gives
    bool isWhole;           // the sums are whole numbers up to 2^24
    CombineRow shiftRow;    // in place before combineRow, or none
    CombineRow combineRow;  // folds the row into the combined row, or none
};

struct ConvPlan {
    const ZetConvKernel* const* kernels;
    std::int32_t nKernels;
    std::int32_t method;
    CombineRow rootRow;  // last step of the combined row, or none
    LoadRow loadRow;
    StoreRow storeRow;
    StoreWords storeWords;     // the whole way from words to samples, or none
    std::ptrdiff_t ringBytes;  // of a ring sample: 4, or 2 for words
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

// Chooses the row routines of every slot for samples of a depth, and with them what the ring holds.
void ownConvBuildRows(ConvPlan* plan, std::uint32_t depth, std::int32_t samplesPerPixel);

// Tells the taps where their samples lie in a ring.
void ownConvPlaceTaps(ConvPlan* plan, std::ptrdiff_t rowStep, std::int32_t samplesPerPixel);

// Filters the region of `src`, all of whose neighbours are in memory, to the offset of `dst`'s region. kConvDone or
// kConvNoMemory.
std::int32_t ownConvolveRegion(const ZetImage* src, const ZetImage* dst, ConvPlan* plan, const ConvMargins& margins);

}  // namespace zetpxl
