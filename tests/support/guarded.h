// Memory with guard bytes on both sides. Under AddressSanitizer the guards cannot be touched at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/support/random.h"

namespace zetpxl::test {

class GuardedBuffer {
  public:
    static constexpr std::size_t kGuard = 64;

    // `size` bytes aligned to `align` and no further, everything filled with random bytes.
    GuardedBuffer(std::size_t size, std::size_t align, Random& random);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    std::uint8_t* data() { return bytes_.data() + start_; }
    std::size_t size() const { return size_; }

    enum class Access { kAll, kData, kNone };
    void allow(Access access);

    // Byte at an offset from the data's start, guards included; the access must be kAll.
    std::uint8_t at(std::ptrdiff_t offset) const { return bytes_[start_ + static_cast<std::size_t>(offset)]; }

  private:
    std::vector<std::uint8_t> bytes_;
    std::size_t start_;
    std::size_t size_;
};

}  // namespace zetpxl::test
