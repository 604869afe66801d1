#include "tests/support/events.h"

namespace zetpxl::test {
namespace {

thread_local EventLog* currentLog = nullptr;

std::int32_t record(std::int32_t status, const char* funcName, const char* context, const char* fileName,
                    std::int32_t line) {
    std::string entry = reportLine(status, funcName, context, fileName);
    if (line <= 0) entry += " WITHOUT A LINE";
    if (currentLog) currentLog->add(entry);
    return status;
}

}  // namespace

std::string EventLog::text() const {
    std::string all;
    for (const std::string& line : lines) all += "  " + line + "\n";
    return all;
}

std::string reportLine(std::int32_t status, const char* funcName, const char* context, const char* fileName) {
    const auto word = [](const char* text) { return text ? std::string(text) : std::string("<null>"); };
    return "report " + std::to_string(status) + " " + word(funcName) + " \"" + word(context) + "\" " + word(fileName);
}

Recorder::Recorder(EventLog& log, std::int32_t startStatus)
    : previousLog_(currentLog),
      previousCallback_(zetRedirectError(&record)),
      previousMode_(zetGetErrMode()),
      previousStatus_(zetGetErrStatus()) {
    currentLog = &log;
    zetSetErrMode(ZET_ErrorModeParent);
    zetSetErrStatus(startStatus);
}

Recorder::~Recorder() {
    zetRedirectError(previousCallback_);
    zetSetErrMode(previousMode_);
    zetSetErrStatus(previousStatus_);
    currentLog = previousLog_;
}

}  // namespace zetpxl::test
