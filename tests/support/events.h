// What an application sees besides pixels: reports and tile calls, in one ordered log.
#pragma once

#include <string>
#include <vector>

#include "zetpxl.h"

namespace zetpxl::test {

struct EventLog {
    std::vector<std::string> lines;
    void add(std::string line) { lines.push_back(std::move(line)); }
    std::string text() const;
};

// The one wording of a report, shared by the recorder and the models.
std::string reportLine(std::int32_t status, const char* funcName, const char* context, const char* fileName);

// Sends the calling thread's reports to a log, in Parent mode; puts mode, callback and status back at its end.
class Recorder {
  public:
    explicit Recorder(EventLog& log, std::int32_t startStatus = 0);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

  private:
    EventLog* previousLog_;
    ZetErrorCallback previousCallback_;
    std::int32_t previousMode_;
    std::int32_t previousStatus_;
};

}  // namespace zetpxl::test
