#include "options.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace zetpic {
namespace {

// Whole numbers with commas between them, as many as asked for and nothing else.
bool parseNumbers(const char* text, std::int32_t* numbers, int count) {
    const char* const end = text + std::strlen(text);
    for (int i = 0; i < count; ++i) {
        const auto [behind, error] = std::from_chars(text, end, numbers[i]);
        const bool last = i == count - 1;
        if (error != std::errc{} || (last ? behind != end : behind == end || *behind != ',')) return false;
        text = behind + 1;
    }
    return true;
}

ZetROI wholeImage() { return {0, 0, 0, INT32_MAX, INT32_MAX}; }

bool parseRoi(const char* value, Options* options) {
    std::int32_t numbers[4];
    if (!parseNumbers(value, numbers, 4)) return false;
    const std::int32_t coi = options->region ? options->region->coi : 0;
    options->region = ZetROI{coi, numbers[0], numbers[1], numbers[2], numbers[3]};
    return numbers[0] >= 0 && numbers[1] >= 0 && numbers[2] > 0 && numbers[3] > 0;
}

bool parseCoi(const char* value, Options* options) {
    if (!options->region) options->region = wholeImage();
    return parseNumbers(value, &options->region->coi, 1) && options->region->coi >= 0;
}

bool parseMask(const char* value, Options* options) {
    options->mask = value;
    return *value != '\0';
}

bool parseTile(const char* value, Options* options) {
    std::int32_t numbers[2];
    if (!parseNumbers(value, numbers, 2)) return false;
    options->tileWidth = numbers[0];
    options->tileHeight = numbers[1];
    return numbers[0] > 0 && numbers[1] > 0 && numbers[0] % 8 == 0 && numbers[1] % 8 == 0;
}

const OptionText* findOption(const Command& command, const std::string& name) {
    for (const OptionText& option : optionTexts())
        if ((command.options & option.bit) != 0 && name == option.name) return &option;
    return nullptr;
}

bool wrongUse(const Command& command, const std::string& message) {
    std::fprintf(stderr, "zetpic %s: %s; try 'zetpic %s --help'\n", command.name, message.c_str(), command.name);
    return false;
}

int fileCount(const Command& command) {
    int count = 1;
    for (const char* at = command.files; *at != '\0'; ++at) count += *at == ' ';
    return count;
}

// Takes --name=value, or --name and the word behind it.
bool parseOption(const Command& command, int count, char** words, int* at, Options* options) {
    const std::string word = words[*at];
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const OptionText* const option = findOption(command, name);
    if (!option) return wrongUse(command, "unknown option " + name);
    if (equals == std::string::npos && *at + 1 >= count) return wrongUse(command, name + " needs a value");
    const char* const value = equals == std::string::npos ? words[++*at] : words[*at] + equals + 1;
    if (option->parse(value, options)) return true;
    return wrongUse(command, std::string("bad value of ") + name + ": " + value);
}

}  // namespace

const std::vector<OptionText>& optionTexts() {
    static const std::vector<OptionText> table = {
        {kRoi, "--roi", "X,Y,W,H", "work on this rectangle only", parseRoi},
        {kCoi, "--coi", "N", "work on channel N only, counted from 1", parseCoi},
        {kMask, "--mask", "FILE", "work where this 1-bit picture is white", parseMask},
        {kTile, "--tile", "W,H", "hand the picture out in tiles of this size, in multiples of 8", parseTile},
    };
    return table;
}

bool parseArguments(const Command& command, int count, char** words, Arguments* arguments) {
    bool options = true;
    for (int i = 0; i < count; ++i) {
        const bool option = options && words[i][0] == '-' && words[i][1] != '\0';
        if (option && std::strcmp(words[i], "--") == 0)
            options = false;
        else if (!option)
            arguments->files.emplace_back(words[i]);
        else if (!parseOption(command, count, words, &i, &arguments->options))
            return false;
    }
    const bool complete = static_cast<int>(arguments->files.size()) == fileCount(command);
    return complete || wrongUse(command, std::string("needs ") + command.files);
}

}  // namespace zetpic
