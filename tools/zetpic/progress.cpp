#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace zetpic {

Progress::Progress(std::int64_t steps)
    : steps_(std::max<std::int64_t>(steps, 1)),
      start_(std::chrono::steady_clock::now()),
      terminal_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (shown_ >= 0) std::fprintf(stderr, "\r     \r");
}

void Progress::step() {
    // Tiles that are asked for again would take it past the end.
    const std::int64_t percent = std::min<std::int64_t>(99, 100 * ++done_ / steps_);
    if (!terminal_ || percent == shown_) return;
    if (std::chrono::steady_clock::now() - start_ < std::chrono::seconds(1)) return;
    shown_ = percent;
    std::fprintf(stderr, "\r%3d %%", static_cast<int>(percent));
}

}  // namespace zetpic
