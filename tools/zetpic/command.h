// A subcommand: its line of the table in commands.cpp, and a file of its own or of its family.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zetpxl.h"

namespace zetpic {

enum ExitCode : int { kOk = 0, kFailed = 1, kWrongUse = 2 };

// Options that always go together share a bit.
enum OptionBit : std::uint32_t {
    kRoi = 1u << 0,
    kCoi = 1u << 1,
    kMask = 1u << 2,
    kTile = 1u << 3,
    kBorder = 1u << 4,
    kValue = 1u << 5,
    kAt = 1u << 6,
    kKernels = 1u << 7,
    kAnchor = 1u << 8,
    kSize = 1u << 9,
    kHalfSize = 1u << 10,
    kMargin = 1u << 11,
    kFilter = 1u << 12,
    kLevel = 1u << 13,
    kHls = 1u << 14,
    kNoise = 1u << 15,
    kInter = 1u << 16,
    kMatrix = 1u << 17,
    kAngle = 1u << 18,
    kShear = 1u << 19,
    kMap = 1u << 20,
    kScale = 1u << 21,
    kPart = kRoi | kCoi | kMask,
    kFiltered = kPart | kTile | kBorder
};

struct Point {
    std::int32_t x, y;
};

struct Border {
    std::int32_t mode, constant;
};

// Weights row by row, top row first; their shift stands unless --shift says otherwise.
struct Kernel {
    std::int32_t columns, rows;
    std::vector<std::int32_t> weights;
    std::int32_t shift;
};

// A part of something or a multiple of it, both numbers above 0.
struct Fraction {
    std::int32_t numerator, denominator;
};

struct Range {
    float first, second;
};

enum class HlsSide { kBoth, kWrite, kRead };

struct Options {
    std::optional<ZetROI> region;  // of --roi and --coi
    std::string mask;
    std::int32_t tileWidth = 0;  // 0: one block
    std::int32_t tileHeight = 0;
    std::optional<Border> border;
    std::optional<std::int32_t> value;  // of --value and of threshold's --at
    Point at{0, 0};
    std::vector<Kernel> kernels;
    std::optional<Point> anchor;
    std::int32_t method = ZET_COMBINE_SUM;
    std::optional<std::int32_t> shift;
    std::optional<Point> size;
    std::optional<std::array<Fraction, 2>> factors;
    std::int32_t extent = 0;  // a half-size or a margin
    std::optional<std::int32_t> filter;
    double hue = 0, lightness = 1, saturation = 1;
    HlsSide hlsSide = HlsSide::kBoth;
    std::optional<Range> uniform, gaussian;
    std::uint32_t seed = 1;
    std::int32_t interpolation = ZET_INTER_LINEAR;
    bool blend = false;
    std::optional<std::array<double, 6>> matrix;
    std::optional<std::array<double, 8>> quadrangle;
    std::optional<double> angle;
    std::optional<std::array<double, 2>> about, move, shear;
    std::string map;
    double amount = 1;
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
    // What a command line lacks that parses well, or null where nothing can be.
    const char* (*lacks)(const Options& options);
};

const std::vector<Command>& commands();

int runInfo(const Arguments& arguments);
int runConvert(const Arguments& arguments);
int runMark(const Arguments& arguments);
int runSet(const Arguments& arguments);
int runCopy(const Arguments& arguments);
int runAdd(const Arguments& arguments);
int runConvolve(const Arguments& arguments);
int runBlur(const Arguments& arguments);
int runBorder(const Arguments& arguments);
int runMedian(const Arguments& arguments);
int runFixed(const Arguments& arguments);
int runDilate(const Arguments& arguments);
int runErode(const Arguments& arguments);
int runOpen(const Arguments& arguments);
int runClose(const Arguments& arguments);
int runThreshold(const Arguments& arguments);
int runDecimate(const Arguments& arguments);
int runZoom(const Arguments& arguments);
int runResize(const Arguments& arguments);
int runWarp(const Arguments& arguments);
int runRotate(const Arguments& arguments);
int runShear(const Arguments& arguments);
int runRemap(const Arguments& arguments);
int runHls(const Arguments& arguments);
int runNoise(const Arguments& arguments);

// One line on the error stream.
int fail(const std::string& message);

}  // namespace zetpic
