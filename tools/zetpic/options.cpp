#include "options.h"

#include <cstdio>
#include <cstring>

#include "values.h"

namespace zetpic {
namespace {

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

// Takes --name=value, or --name and the word behind it; a flag stands alone.
bool parseOption(const Command& command, int count, char** words, int* at, Options* options) {
    const std::string word = words[*at];
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const OptionText* const option = findOption(command, name);
    if (!option) return wrongUse(command, "unknown option " + name);
    if (*option->value == '\0')
        return equals == std::string::npos ? option->parse("", options) : wrongUse(command, name + " takes no value");
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
        {kTile, "--tile", "W,H",
         "tiles of this size, in multiples of 8; TIFF files in tiles (of 16) are read and written one by one",
         parseTile},
        {kBorder, "--border", "MODE[:C]",
         "what lies outside: constant (C, else 0), replicate (without), reflect or wrap", parseBorder},
        {kValue, "--value", "V", "the sample to fill with", parseValue},
        {kAt, "--at", "X,Y", "where in DST the copy goes; its left top corner without", parseAt},
        {kKernels, "--kernel", "K",
         "weights by rows, '1 2 1;2 4 2;1 2 1', or sharpen, emboss, edge-x, edge-y, smooth; up to ten times",
         parseKernel},
        {kKernels, "--method", "NAME", "how several kernels combine: sum, squares, root, max or min", parseMethod},
        {kKernels, "--shift", "N", "bits that each result is shifted right", parseShift},
        {kSize, "--size", "W,H", "columns and rows of the window", parseSize},
        {kAnchor, "--anchor", "X,Y", "the pixel of the window that the result goes to; its centre without",
         parseAnchor},
        {kHalfSize, "--size", "N", "half-size: the square has 2 * N + 1 pixels a side", parseExtent},
        {kMargin, "--margin", "N", "pixels around the picture, at most half of it", parseExtent},
        {kFilter, "--filter", "NAME",
         "0 to 10, or grad-x-flat, grad-y-flat, grad-x-peaked, grad-y-peaked, peak-3, ring-5, smooth-3, smooth-5, "
         "peak-3b, peak-5, crisp-3",
         parseFilter},
        {kLevel, "--at", "V", "samples from V on become white", parseValue},
        {kScale, "--factor", "X[,Y]", "how many times as wide and as high: 2/3, 4 or 0.37; Y as X without",
         parseFactor},
        {kScale, "--size", "W,H", "columns and rows of OUT, in the place of --factor", parseSize},
        {kScale, "--inter", "NAME", "nn, linear (without), cubic, or super: the mean of the area, to shrink only",
         parseScaleInter},
        {kHls, "--hue", "D", "turn the hue by D degrees", parseHue},
        {kHls, "--lightness", "F", "multiply the lightness by F", parseLightness},
        {kHls, "--saturation", "F", "multiply the saturation by F", parseSaturation},
        {kHls, "--write-hls", "", "write hue, lightness and saturation in the place of red, green and blue",
         parseWriteHls},
        {kHls, "--read-hls", "", "read such a picture", parseReadHls},
        {kNoise, "--uniform", "LOW,HIGH", "add noise from LOW on and below HIGH", parseUniform},
        {kNoise, "--gaussian", "MEAN,DEV", "add noise of this mean and standard deviation", parseGaussian},
        {kNoise, "--seed", "N", "where the noise starts; 1 without", parseSeed},
        {kMatrix, "--matrix", "A,B,C,D,E,F", "(x, y) goes to (A x + B y + C, D x + E y + F)", parseMatrix},
        {kMatrix, "--quad", "X0,Y0,...",
         "four corners of a parallelogram: left top, right top, right bottom, left bottom", parseQuadrangle},
        {kAngle, "--angle", "D", "degrees against the clock", parseAngle},
        {kAngle, "--about", "X,Y", "the point that stays; the picture's centre without", parseAbout},
        {kShear, "--shear", "X,Y", "(x, y) goes to (x + X y, y + Y x)", parseShear},
        {kShear, "--move", "X,Y", "shift by this much as well", parseMove},
        {kMap, "--map", "NAME", "barrel, swirl or ripple", parseMap},
        {kMap, "--amount", "F", "how strong; 1 without", parseAmount},
        {kInter, "--inter", "NAME", "nn, linear (without) or cubic", parseInter},
        {kInter, "--blend", "", "soften slanted edges", parseBlend},
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
    if (static_cast<int>(arguments->files.size()) != fileCount(command))
        return wrongUse(command, std::string("needs ") + command.files);
    const char* const lacking = command.lacks ? command.lacks(arguments->options) : nullptr;
    return !lacking || wrongUse(command, std::string("needs ") + lacking);
}

}  // namespace zetpic
