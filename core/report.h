// How operations report failures.
#pragma once

#include <cstdint>

#include <source_location>

#include "zetpxl.h"

namespace zetpxl {

// What a report names: the exported operation and its source.
struct Operation {
    const char* name;
    const char* source;
};

inline void report(const Operation& op, std::int32_t status, const char* context,
                   std::source_location where = std::source_location::current()) {
    zetError(status, op.name, context, op.source, static_cast<std::int32_t>(where.line()));
}

// A failed image check has stored its status without a report.
inline void reportIncorrectImage(const Operation& op, std::source_location where = std::source_location::current()) {
    report(op, zetGetErrStatus(), "Incorrect Image", where);
}

// After an inner operation that reports by itself. An old negative status counts too.
inline bool reportBacktrace(const Operation& op, std::source_location where = std::source_location::current()) {
    if (zetGetErrStatus() >= 0) return false;
    report(op, ZET_StatusBacktrace, "", where);
    return true;
}

}  // namespace zetpxl
