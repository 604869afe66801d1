#include "tests/support/allocations.h"

#include <algorithm>
#include <array>
#include <cstddef>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* block);
}

namespace zetpxl::test {
namespace {

// Plain words only: blocks are still freed when a thread's other locals are gone.
struct Watch {
    bool active;
    std::int32_t calls;
    std::int32_t failAt;
    std::int32_t live;
    std::array<void*, 1024> blocks;
};

thread_local Watch watch{};

bool refuses() { return watch.active && ++watch.calls == watch.failAt; }

void* note(void* block) {
    if (block && watch.active && watch.live < static_cast<std::int32_t>(watch.blocks.size()))
        watch.blocks[static_cast<std::size_t>(watch.live++)] = block;
    return block;
}

void forget(void* block) {
    const auto end = watch.blocks.begin() + watch.live;
    const auto found = std::find(watch.blocks.begin(), end, block);
    if (found != end) *found = watch.blocks[static_cast<std::size_t>(--watch.live)];
}

}  // namespace

AllocationWatch::AllocationWatch(std::int32_t failAt) {
    watch = Watch{};
    watch.failAt = failAt;
    watch.active = true;
}

AllocationWatch::~AllocationWatch() { watch = Watch{}; }

std::int32_t AllocationWatch::calls() const { return watch.calls; }
bool AllocationWatch::failed() const { return watch.failAt > 0 && watch.calls >= watch.failAt; }
std::int32_t AllocationWatch::live() const { return watch.live; }

}  // namespace zetpxl::test

// The linker sends the calls of the library's objects here.
extern "C" {

void* __wrap_malloc(std::size_t size) {
    return zetpxl::test::refuses() ? nullptr : zetpxl::test::note(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return zetpxl::test::refuses() ? nullptr : zetpxl::test::note(__real_calloc(count, size));
}

void __wrap_free(void* block) {
    if (block) zetpxl::test::forget(block);
    __real_free(block);
}
}
