#include "tests/support/guarded.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define FORBID(address, size) ASAN_POISON_MEMORY_REGION(address, size)
#define PERMIT(address, size) ASAN_UNPOISON_MEMORY_REGION(address, size)
#else
#define FORBID(address, size) (static_cast<void>(address), static_cast<void>(size))
#define PERMIT(address, size) (static_cast<void>(address), static_cast<void>(size))
#endif

namespace zetpxl::test {

GuardedBuffer::GuardedBuffer(std::size_t size, std::size_t align, Random& random)
    : bytes_(size + 2 * kGuard + 64), start_(0), size_(size) {
    const auto base = reinterpret_cast<std::uintptr_t>(bytes_.data()) + kGuard;
    start_ = kGuard + (align + 64 - base % 64) % 64;
    for (std::size_t i = start_ - kGuard; i < start_ + size_ + kGuard; ++i) bytes_[i] = random.byte();
}

GuardedBuffer::~GuardedBuffer() { allow(Access::kAll); }

void GuardedBuffer::allow(Access access) {
    PERMIT(bytes_.data(), bytes_.size());
    if (access == Access::kAll) return;
    FORBID(bytes_.data(), start_);
    FORBID(data() + size_, bytes_.size() - start_ - size_);
    if (access == Access::kNone) FORBID(data(), size_);
}

}  // namespace zetpxl::test
