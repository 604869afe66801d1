// Runs something in a forked child and gives what it wrote to its error stream and how it ended.
#pragma once

#include <functional>
#include <string>

namespace zetpxl::test {

struct ChildResult {
    std::string errors;
    std::string output;
    int exitCode;  // -1: ended by a signal
};

inline constexpr int kChildReturned = 42;  // exit code when `body` came back

ChildResult runInChild(const std::function<void()>& body);

}  // namespace zetpxl::test
