// The three stock reporters: null, stream and box.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "core/alloc.h"
#include "core/platform.h"
#include "zetpxl.h"

using namespace zetpxl;

namespace {

constexpr char unknownName[] = "<unknown>";

bool isTrace(std::int32_t status) { return status == ZET_StatusBacktrace || status == ZET_StatusAutotrace; }

void writeReport(std::FILE* stream, std::int32_t status, const char* funcName, const char* context,
                 const char* fileName, std::int32_t line) {
    if (isTrace(status)) {
        std::fputs("\tcalled from", stream);
    } else {
        std::fprintf(stream, "\nZET Library Error: %s \n\tin function", zetErrorStr(status));
    }
    if (line > 0 || fileName) std::fprintf(stream, " [%s:%d]", fileName ? fileName : unknownName, line);
    std::fprintf(stream, ":%s", funcName ? funcName : unknownName);
    if (context) std::fprintf(stream, status == ZET_StatusAutotrace ? "(%s)" : "(): %s", context);
    std::fputs("\n", stream);
    std::fflush(stream);
}

const char* closingText(std::int32_t mode) {
    switch (mode) {
        case ZET_ErrorModeLeaf:
            return "\n\nErrMode=ZET_ErrorModeLeaf\n\nTerminate the application?";
        case ZET_ErrorModeParent:
            return "\n\nErrMode=ZET_ErrorModeParent\n\nContinue?";
        default:
            return "";
    }
}

[[gnu::format(printf, 1, 2)]] Block<char> formatText(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    // As long as the text needs: names of any length cannot overrun it.
    Block<char> text = length < 0 ? nullptr : allocBlock<char>(static_cast<std::ptrdiff_t>(length) + 1);
    if (text) std::vsnprintf(text.get(), static_cast<std::size_t>(length) + 1, format, again);
    va_end(again);
    va_end(arguments);
    return text;
}

Block<char> boxText(std::int32_t status, const char* funcName, const char* context, const char* fileName,
                    std::int32_t line) {
    return formatText("%s %s(): [file %s, line %d]\n%s\n\n%s\n(status: %d)%s",
                      isTrace(status) ? "Called from" : "In function", funcName ? funcName : unknownName,
                      fileName ? fileName : "", std::max(line, 0), context ? context : "", zetErrorStr(status), status,
                      closingText(zetGetErrMode()));
}

// Whether the person at the box wants the process to end.
bool asksToStop(const char* text, const char* title, std::int32_t mode) {
    using namespace platform;
    switch (mode) {
        case ZET_ErrorModeParent:
            return showBox(text, title, kBoxOkCancel | kBoxIconHand | kBoxTaskModal) == kAnswerCancel;
        case ZET_ErrorModeLeaf:
            return showBox(text, title, kBoxYesNo | kBoxIconHand | kBoxTaskModal) == kAnswerYes;
        default:
            return false;
    }
}

}  // namespace

int32_t zetNulDevReport(int32_t status, const char*, const char*, const char*, int32_t) {
    if (zetGetErrMode() == ZET_ErrorModeLeaf) std::exit(1);
    return status;
}

int32_t zetStdErrReport(int32_t status, const char* funcName, const char* context, const char* fileName, int32_t line) {
    if (zetGetErrMode() == ZET_ErrorModeSilent) return status;
    writeReport(stderr, status, funcName, context, fileName, line);
    if (zetGetErrMode() != ZET_ErrorModeLeaf) return status;
    std::fputs("ZET Library Error\nErrMode=ZET_ErrModeLeaf\nterminating the application", stderr);
    std::fflush(stderr);
    std::exit(1);
}

int32_t zetGuiBoxReport(int32_t status, const char* funcName, const char* context, const char* fileName, int32_t line) {
    const std::int32_t mode = zetGetErrMode();
    if (mode == ZET_ErrorModeSilent) return status;
    Block<char> text = boxText(status, funcName, context, fileName, line);
    Block<char> title = formatText("ZET %s", zetGetLibVersion()->versionText);
    if (!text || !title) return status;
    if (!asksToStop(text.get(), title.get(), mode)) return status;
    platform::showBox("ZET Library: terminating the application", "Win32: Application exit",
                      platform::kBoxIconAsterisk | platform::kBoxTaskModal);
    text.reset();
    title.reset();
    std::exit(1);
}
