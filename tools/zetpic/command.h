// A subcommand: one file of its own and one line of the table in commands.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zetpxl.h"

namespace zetpic {

enum ExitCode : int { kOk = 0, kFailed = 1, kWrongUse = 2 };

enum OptionBit : std::uint32_t { kRoi = 1, kCoi = 2, kMask = 4, kTile = 8 };

// What the options common to all commands say.
struct Options {
    std::optional<ZetROI> region;  // of --roi and --coi
    std::string mask;
    std::int32_t tileWidth = 0;  // 0: one block
    std::int32_t tileHeight = 0;
};

struct Arguments {
    std::vector<std::string> files;
    Options options;
};

struct Command {
    const char* name;
    const char* files;  // words of its usage line, one a file
    const char* summary;
    const char* details;
    std::uint32_t options;  // that it takes
    int (*run)(const Arguments& arguments);
};

const std::vector<Command>& commands();

int runInfo(const Arguments& arguments);
int runConvert(const Arguments& arguments);
int runMark(const Arguments& arguments);

// One line on the error stream.
int fail(const std::string& message);

}  // namespace zetpic
