// Aligned blocks for records and scratch, and their owner inside a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "zetpxl.h"

namespace zetpxl {

// Blocks aligned to 32 bytes, released with zetDeleteROI. A size below 1, one that does not fit, and an exhausted heap
// all give null; nothing is reported.
void* ownAlloc(std::ptrdiff_t size);
void* ownAllocWords(std::ptrdiff_t count);

void ownSetROI(ZetROI* roi, std::int32_t coi, std::int32_t xOffset, std::int32_t yOffset, std::int32_t width,
               std::int32_t height);
void ownDeallocateHeader(ZetImage* image);

struct BlockDeleter {
    void operator()(void* block) const { zetDeleteROI(block); }
};

// Scratch memory of a call: every way out releases it.
template <class T>
using Block = std::unique_ptr<T[], BlockDeleter>;

// a * b * c for sizes, or a value that no allocation satisfies when the product does not fit.
inline std::ptrdiff_t sizeProduct(std::ptrdiff_t a, std::ptrdiff_t b, std::ptrdiff_t c = 1) {
    std::ptrdiff_t ab = 0;
    std::ptrdiff_t abc = 0;
    if (__builtin_mul_overflow(a, b, &ab) || __builtin_mul_overflow(ab, c, &abc)) return PTRDIFF_MAX;
    return abc;
}

template <class T>
Block<T> allocBlock(std::ptrdiff_t count) {
    return Block<T>(static_cast<T*>(ownAlloc(sizeProduct(count, static_cast<std::ptrdiff_t>(sizeof(T))))));
}

}  // namespace zetpxl
