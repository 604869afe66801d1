// The slot per thread, zeroed memory and the fatal exit, over POSIX.
#include "core/platform.h"

#include <pthread.h>

#include <climits>
#include <cstdio>
#include <cstdlib>

namespace zetpxl::platform {

namespace {

pthread_key_t keyOf(std::int32_t slot) { return static_cast<pthread_key_t>(slot); }

}  // namespace

std::int32_t takeSlot(void (*destroy)(void*)) {
    pthread_key_t key = 0;
    if (pthread_key_create(&key, destroy) != 0) return -1;
    return static_cast<std::int32_t>(key);
}

void giveBackSlot(std::int32_t slot) { pthread_key_delete(keyOf(slot)); }

void* slotValue(std::int32_t slot) { return pthread_getspecific(keyOf(slot)); }

bool setSlotValue(std::int32_t slot, void* value) { return pthread_setspecific(keyOf(slot), value) == 0; }

void* allocZeroed(std::size_t size) { return std::calloc(1, size); }

void freeZeroed(void* block) { std::free(block); }

void fatalExit(const char* message) {
    std::fprintf(stderr, "%s\n", message);
    std::fflush(stderr);
    std::_Exit(1);
}

}  // namespace zetpxl::platform
