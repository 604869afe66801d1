// The slot per thread, zeroed memory, large pages and the fatal exit, over POSIX and, for the pages, Linux.
#include "core/platform.h"

#include <pthread.h>
#include <sys/mman.h>

#include <bit>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace zetpxl::platform {

namespace {

pthread_key_t keyOf(std::int32_t slot) { return static_cast<pthread_key_t>(slot); }

constexpr std::uintptr_t kLargePage = std::uintptr_t{1} << 21;

}  // namespace

std::int32_t takeSlot(void (*destroy)(void*)) {
    pthread_key_t key = 0;
    if (pthread_key_create(&key, destroy) != 0) return -1;
    return static_cast<std::int32_t>(key);
}

void giveBackSlot(std::int32_t slot) { pthread_key_delete(keyOf(slot)); }

void* slotValue(std::int32_t slot) { return pthread_getspecific(keyOf(slot)); }

bool setSlotValue(std::int32_t slot, void* value) { return pthread_setspecific(keyOf(slot), value) == 0; }

// Only pages that lie in the block as a whole: its neighbours keep theirs, and it never holds more than its size.
void adviseLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) {
#ifdef MADV_HUGEPAGE
    const auto address = std::bit_cast<std::uintptr_t>(block);
    const std::uintptr_t from = (address + kLargePage - 1) & ~(kLargePage - 1);
    const std::uintptr_t to = (address + size) & ~(kLargePage - 1);
    if (from >= to) return;
    const int before = errno;
    madvise(std::bit_cast<void*>(from), to - from, MADV_HUGEPAGE);
    errno = before;
#endif
}

void* allocZeroed(std::size_t size) { return std::calloc(1, size); }

void freeZeroed(void* block) { std::free(block); }

void fatalExit(const char* message) {
    std::fprintf(stderr, "%s\n", message);
    std::fflush(stderr);
    std::_Exit(1);
}

}  // namespace zetpxl::platform
