// Status, mode and report callback of each thread.
//   status.1 a thread's record is made when the library is loaded, or at the thread's first call
//   status.2 it is freed at the thread's end, and with the slot when the library is unloaded
//   status.3 the stored status keeps the code of the first failure: -1 and -8 never replace it
#include "core/status.h"

#include <atomic>

#include "core/platform.h"

namespace zetpxl {

namespace {

// The one process-wide word: the index of the per-thread slot, -1 while none is held.
std::atomic<std::int32_t> slotIndex{-1};

void freeContext(void* context) { platform::freeZeroed(context); }

// Calls can come before the load hook (from another constructor) and after the unload hook (from a thread that outlives
// main), so the slot is taken whenever it is missing.
std::int32_t heldSlot() {
    std::int32_t slot = slotIndex.load(std::memory_order_acquire);
    if (slot >= 0) return slot;
    const std::int32_t taken = platform::takeSlot(freeContext);
    if (taken < 0 || slotIndex.compare_exchange_strong(slot, taken)) return taken;
    platform::giveBackSlot(taken);
    return slot;
}

ZetErrorContext* createContext(std::int32_t slot) {
    auto* context = static_cast<ZetErrorContext*>(platform::allocZeroed(sizeof(ZetErrorContext)));
    if (!context) return nullptr;
    context->status = ZET_StatusOk;
    context->errorMode = ZET_ErrorModeLeaf;
    context->reportCallback = zetNulDevReport;
    if (platform::setSlotValue(slot, context)) return context;
    platform::freeZeroed(context);
    return nullptr;
}

[[gnu::constructor]] void attachLibrary() { ownGetErrorContext(); }

// Other threads' records are lost with the slot: nothing may run in them once the library's code is gone.
[[gnu::destructor]] void detachLibrary() {
    const std::int32_t slot = slotIndex.exchange(-1);
    if (slot < 0) return;
    freeContext(platform::slotValue(slot));
    platform::setSlotValue(slot, nullptr);
    platform::giveBackSlot(slot);
}

}  // namespace

ZetErrorContext* ownGetErrorContext() {
    const std::int32_t slot = heldSlot();
    auto* context = slot < 0 ? nullptr : static_cast<ZetErrorContext*>(platform::slotValue(slot));
    if (!context && slot >= 0) context = createContext(slot);
    if (!context) platform::fatalExit("Problem to allocate memory for TLS ZET context.");
    return context;
}

}  // namespace zetpxl

using zetpxl::ownGetErrorContext;

int32_t zetGetErrStatus(void) { return ownGetErrorContext()->status; }

void zetSetErrStatus(int32_t status) { ownGetErrorContext()->status = status; }

int32_t zetGetErrMode(void) { return ownGetErrorContext()->errorMode; }

void zetSetErrMode(int32_t mode) { ownGetErrorContext()->errorMode = mode; }

ZetErrorCallback zetRedirectError(ZetErrorCallback callback) {
    zetpxl::ZetErrorContext* context = ownGetErrorContext();
    const ZetErrorCallback before = context->reportCallback;
    context->reportCallback = callback ? callback : zetNulDevReport;
    return before;
}

int32_t zetError(int32_t status, const char* funcName, const char* context, const char* fileName, int32_t line) {
    zetpxl::ZetErrorContext* record = ownGetErrorContext();
    if (status != ZET_StatusBacktrace && status != ZET_StatusAutotrace) record->status = status;
    if (status == ZET_StatusOk) return 0;
    return record->reportCallback(status, funcName, context, fileName, line);
}
