// How far long work is: one line on a terminal, nothing in a pipe and nothing in the first second.
#pragma once

#include <chrono>
#include <cstdint>

namespace zetpic {

class Progress {
  public:
    explicit Progress(std::int64_t steps);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void step();

  private:
    std::int64_t steps_, done_ = 0, shown_ = -1;
    std::chrono::steady_clock::time_point start_;
    bool terminal_;
};

}  // namespace zetpic
