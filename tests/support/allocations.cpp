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
    std::array<std::size_t, 1024> sizes;
    std::size_t bytes;
    std::size_t peak;
};

thread_local Watch watch{};

// No machine has these, and a sanitizer would end the process instead of giving null.
constexpr std::size_t kBeyondMemory = std::size_t{1} << 44;

bool refuses(std::size_t size) { return (watch.active && ++watch.calls == watch.failAt) || size > kBeyondMemory; }

void* note(void* block, std::size_t size) {
    if (!block || !watch.active || watch.live >= static_cast<std::int32_t>(watch.blocks.size())) return block;
    const auto at = static_cast<std::size_t>(watch.live++);
    watch.blocks[at] = block;
    watch.sizes[at] = size;
    watch.bytes += size;
    watch.peak = std::max(watch.peak, watch.bytes);
    return block;
}

void forget(void* block) {
    const auto end = watch.blocks.begin() + watch.live;
    const auto found = std::find(watch.blocks.begin(), end, block);
    if (found == end) return;
    const auto at = static_cast<std::size_t>(found - watch.blocks.begin());
    const auto last = static_cast<std::size_t>(--watch.live);
    watch.bytes -= watch.sizes[at];
    watch.blocks[at] = watch.blocks[last];
    watch.sizes[at] = watch.sizes[last];
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
std::size_t AllocationWatch::peakBytes() const { return watch.peak; }

}  // namespace zetpxl::test

// The linker sends the calls of the library's objects here.
extern "C" {

void* __wrap_malloc(std::size_t size) {
    return zetpxl::test::refuses(size) ? nullptr : zetpxl::test::note(__real_malloc(size), size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return zetpxl::test::refuses(count * size) ? nullptr : zetpxl::test::note(__real_calloc(count, size), count * size);
}

void __wrap_free(void* block) {
    if (block) zetpxl::test::forget(block);
    __real_free(block);
}
}
