// Runs an operation and its plain model on twin scenes and holds everything against each other.
//
// ZETPXL_CASES sets how many cases a test draws, ZETPXL_SEED reruns one of them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/model.h"
#include "tests/support/scene.h"

namespace zetpxl::test {

// One drawn call. `library` and `model` work on the scene that they were built with and give a text of their results,
// empty where there is none.
struct Call {
    std::string parameters;
    std::function<std::string()> library;
    std::function<std::string(Model&)> model;
};

// Builds the images of a case and draws the call's arguments.
using CaseMaker = std::function<Call(Scene&, Random&)>;

struct DifferentialRules {
    CompareRules compare;
    std::int32_t failingFetches = 15;  // percent of the cases in which one tile cannot be had
    std::int32_t share = 100;          // percent of the usual number of cases
};

void compareWithModel(const CaseMaker& make, const DifferentialRules& rules = {});

struct FailureRules {
    std::int32_t cases = 150;
    std::int32_t heldTiles = 0;  // that a call without memory may leave handed out
};

// For some cases, every allocation and every tile request fails in turn: nothing crashes or leaks, every tile that was
// handed out comes back where no request failed, and records and guards stay as they were.
void failEveryStep(const CaseMaker& make, const FailureRules& rules = {});

}  // namespace zetpxl::test
