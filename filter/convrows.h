// Arithmetic of convolution rows. Rows hold single-precision samples; a sum or product is formed in double and rounded to
// single when it is stored.
#pragma once

#include "filter/convplan.h"

namespace zetpxl {

// Kernel routines by where they round: after each weight, after each pair of weights in a column of two kernel rows, once.
void rowSparse(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);
void rowPaired(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);
void rowAtOnce(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);
// Sums that single precision holds whatever the order, from a ring of single-precision samples or of words.
void rowExact(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);
void rowWords(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);
// Takes sums for exact and looks after each group of taps whether they were; where not, the literal routine sums again.
void rowHopeful(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow);
// Weights of 1 and -1 need no product; the sums are those of the sparse routine.
inline constexpr KernelRow rowUnit = rowSparse;

void rowCopy(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowAdd(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowSquare(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowAddSquare(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowAddExactSquare(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowAbs(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowMax(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowMin(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowRoot(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowShift(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowShiftAdd(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);

// The same for rows of whole numbers below 2^24, which a conversion holds.
void rowShiftWhole(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);
void rowShiftAddWhole(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift);

// Conversions by depth index; 32F has none, and words serve up to 8 bits. Words of 1U are stored by way of floats.
LoadRow loadRowOf(std::uint32_t depth);
LoadRow loadWordsOf(std::uint32_t depth);
StoreRow storeRowOf(std::uint32_t depth);
StoreWords storeWordsOf(std::uint32_t depth);

// The sums of one group of taps modulo 2^16.
void sumWords(const ConvSlot& slot, const void* first, std::ptrdiff_t count, std::uint16_t* sums);

}  // namespace zetpxl
