// The library's heap under test: the n-th allocation fails, and blocks that stay behind are counted.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl::test {

// While it lives, malloc and calloc calls of the calling thread are counted; call number `failAt` (from 1, 0: none)
// gives null.
class AllocationWatch {
  public:
    explicit AllocationWatch(std::int32_t failAt = 0);
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    std::int32_t calls() const;
    bool failed() const;
    // Blocks obtained and not freed since the watch began.
    std::int32_t live() const;
    // The most bytes that were in use at one time since the watch began.
    std::size_t peakBytes() const;
};

}  // namespace zetpxl::test
