// zetpic: picture files in and out around the library.
#include <cstdio>
#include <cstring>

#include "command.h"
#include "files.h"
#include "options.h"

namespace zetpic {
namespace {

constexpr const char* kPurpose = "try the operations of the zetpxl library on BMP, PNG and TIFF files";

int printHelp() {
    std::printf("usage: zetpic COMMAND ...\n\n%s\n\ncommands:\n", kPurpose);
    for (const Command& command : commands())
        std::printf("  %-10s %-12s %s\n", command.name, command.files, command.summary);
    std::printf(
        "\n'zetpic COMMAND --help' tells more; 'zetpic --version' names the library.\n"
        "exit codes: 0 done, 1 failed, 2 wrong use\n");
    return kOk;
}

int printCommandHelp(const Command& command) {
    std::printf("usage: zetpic %s %s%s\n\n%s\n\n%s\n", command.name, command.options != 0 ? "[OPTION]... " : "",
                command.files, command.summary, command.details);
    if (command.options != 0) std::printf("\noptions:\n");
    for (const OptionText& option : optionTexts())
        if ((command.options & option.bit) != 0)
            std::printf("  %-13s %-12s %s\n", option.name, option.value, option.summary);
    return kOk;
}

bool anyTakes(const OptionText& option) {
    for (const Command& command : commands())
        if ((command.options & option.bit) != 0) return true;
    return false;
}

void printManCommand(const Command& command) {
    std::printf(".TP\n.B %s", command.name);
    for (const OptionText& option : optionTexts())
        if ((command.options & option.bit) != 0) std::printf(" [%s %s]", option.name, option.value);
    std::printf(" %s\n%s. %s\n", command.files, command.summary, command.details);
}

int printMan() {
    const ZetLibVersion& version = *zetGetLibVersion();
    std::printf(".TH ZETPIC 1 \"\" \"zetpxl %d.%d.%d\" \"User Commands\"\n", version.major, version.minor,
                version.build);
    std::printf(".SH NAME\nzetpic \\- %s\n.SH SYNOPSIS\n.B zetpic\n.I COMMAND\n.RI [ OPTION ]...\n.IR FILE ...\n",
                kPurpose);
    std::printf(
        ".SH DESCRIPTION\nFiles are told apart by their first bytes when read and by their ending when written.\n");
    std::printf(".SH COMMANDS\n");
    for (const Command& command : commands()) printManCommand(command);
    std::printf(".SH OPTIONS\n");
    for (const OptionText& option : optionTexts())
        if (anyTakes(option)) std::printf(".TP\n.BI %s \" %s\"\n%s.\n", option.name, option.value, option.summary);
    std::printf(".SH EXIT STATUS\n0 done, 1 failed (one line on the error stream says why), 2 wrong use.\n");
    return kOk;
}

int printVersion() {
    const ZetLibVersion& version = *zetGetLibVersion();
    std::printf("zetpic, %s %d.%d.%d, %s %s\n", version.libraryName, version.major, version.minor, version.build,
                version.versionText, version.buildText);
    return kOk;
}

const Command* findCommand(const char* name) {
    for (const Command& command : commands())
        if (std::strcmp(command.name, name) == 0) return &command;
    return nullptr;
}

bool asksForHelp(int count, char** words) {
    for (int i = 0; i < count; ++i)
        if (std::strcmp(words[i], "--help") == 0) return true;
    return false;
}

int runCommand(const Command& command, int count, char** words) {
    if (asksForHelp(count, words)) return printCommandHelp(command);
    Arguments arguments;
    if (!parseArguments(command, count, words, &arguments)) return kWrongUse;
    const bool writes = arguments.files.size() > 1;
    if (writes && !hasPictureEnding(arguments.files.back())) {
        std::fprintf(stderr, "zetpic %s: %s must end in .png, .bmp or .tif\n", command.name,
                     arguments.files.back().c_str());
        return kWrongUse;
    }
    return command.run(arguments);
}

}  // namespace

int fail(const std::string& message) {
    std::fprintf(stderr, "zetpic: %s\n", message.c_str());
    return kFailed;
}

}  // namespace zetpic

int main(int argc, char** argv) {
    using namespace zetpic;
    // A thread's first failure would otherwise end the process without a word.
    zetRedirectError(zetStdErrReport);
    zetSetErrMode(ZET_ErrorModeParent);
    const char* const word = argc > 1 ? argv[1] : "";
    if (std::strcmp(word, "--help") == 0) return printHelp();
    if (std::strcmp(word, "--version") == 0) return printVersion();
    if (std::strcmp(word, "--man") == 0) return printMan();
    const Command* const command = findCommand(word);
    if (command) return runCommand(*command, argc - 2, argv + 2);
    std::fprintf(stderr, "zetpic: %s '%s'; try 'zetpic --help'\n", argc > 1 ? "unknown command" : "no command", word);
    return kWrongUse;
}
