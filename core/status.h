// The calling thread's error record.
#pragma once

#include <cstdint>

#include "zetpxl.h"

namespace zetpxl {

struct ZetErrorContext {
    std::int32_t status;
    std::int32_t errorMode;
    ZetErrorCallback reportCallback;
};

// The only way to the record; makes it when the thread has none, and ends the process when it cannot be had.
ZetErrorContext* ownGetErrorContext();

}  // namespace zetpxl
