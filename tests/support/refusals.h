// Refusals in their order: a call with every fault at once, whose faults are taken away one by one.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/events.h"

namespace zetpxl::test {

struct Refusal {
    std::int32_t result;  // of the call; of an operation without one, the status it leaves
    const char* words;
    std::function<void()> mend;
};

struct RefusedCall {
    const char* name;
    const char* source;
    std::function<std::int32_t()> run;
};

// Each call must make the one report; the last one, without a fault, gives 0 and is silent.
void expectRefusals(EventLog& log, const RefusedCall& call, const std::vector<Refusal>& refusals);

}  // namespace zetpxl::test
