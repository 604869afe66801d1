// The box of a platform without one: asks on the controlling terminal, or writes the text and answers to go on.
#include <fcntl.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>

#include "core/platform.h"

namespace zetpxl::platform {

namespace {

struct Buttons {
    const char* prompt;
    char stopKey;
    std::int32_t stop;  // the answer of stopKey
    std::int32_t goOn;  // the answer of everything else
};

Buttons buttonsOf(std::uint32_t style) {
    switch (style & kBoxButtons) {
        case kBoxOkCancel:
            return {"[Ok/Cancel] ", 'c', kAnswerCancel, kAnswerOk};
        case kBoxYesNo:
            return {"[Yes/No] ", 'y', kAnswerYes, kAnswerNo};
        default:
            return {"[Ok] ", '\0', kAnswerOk, kAnswerOk};
    }
}

void writeText(std::FILE* stream, const char* text, const char* title) {
    std::fprintf(stream, "%s\n%s\n", title, text);
    std::fflush(stream);
}

// A process in the background must not ask: reading would stop it.
std::FILE* openTerminal() {
    const int file = open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (file < 0) return nullptr;
    std::FILE* terminal = tcgetpgrp(file) == getpgrp() ? fdopen(file, "r+") : nullptr;
    if (!terminal) close(file);
    return terminal;
}

std::int32_t readAnswer(std::FILE* terminal, const Buttons& buttons) {
    char line[80] = "";
    if (!std::fgets(line, sizeof line, terminal)) return buttons.goOn;
    const bool stop = buttons.stopKey && std::tolower(static_cast<unsigned char>(line[0])) == buttons.stopKey;
    return stop ? buttons.stop : buttons.goOn;
}

}  // namespace

std::int32_t showBox(const char* text, const char* title, std::uint32_t style) {
    const Buttons buttons = buttonsOf(style);
    std::FILE* terminal = openTerminal();
    if (!terminal) {
        writeText(stderr, text, title);
        return buttons.goOn;
    }
    writeText(terminal, text, title);
    std::fputs(buttons.prompt, terminal);
    std::fflush(terminal);
    std::rewind(terminal);
    const std::int32_t answer = readAnswer(terminal, buttons);
    std::fclose(terminal);
    return answer;
}

}  // namespace zetpxl::platform
