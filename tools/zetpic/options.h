// The command line: options common to all commands, parsed in one place.
#pragma once

#include "command.h"

namespace zetpic {

struct OptionText {
    std::uint32_t bit;
    const char* name;
    const char* value;
    const char* summary;
    bool (*parse)(const char* value, Options* options);
};

const std::vector<OptionText>& optionTexts();

// The words behind the command's name. Says what is wrong on the error stream and gives false.
bool parseArguments(const Command& command, int count, char** words, Arguments* arguments);

}  // namespace zetpic
