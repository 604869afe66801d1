#include "command.h"

namespace zetpic {
namespace {

const char* lacksValue(const Options& options) { return options.value ? nullptr : "--value"; }
const char* lacksKernel(const Options& options) { return options.kernels.empty() ? "--kernel" : nullptr; }
const char* lacksSize(const Options& options) { return options.size ? nullptr : "--size W,H"; }
const char* lacksHalfSize(const Options& options) { return options.extent > 0 ? nullptr : "--size N"; }
const char* lacksMargin(const Options& options) {
    return options.extent > 0 && options.border ? nullptr : "--margin and --border";
}
const char* lacksFilter(const Options& options) { return options.filter ? nullptr : "--filter"; }
const char* lacksLevel(const Options& options) { return options.value ? nullptr : "--at"; }
const char* lacksNoise(const Options& options) {
    return options.uniform.has_value() != options.gaussian.has_value() ? nullptr : "one of --uniform and --gaussian";
}
const char* lacksScale(const Options& options) {
    if (options.factors.has_value() == options.size.has_value()) return "one of --factor and --size";
    const bool masked = !options.mask.empty() && options.interpolation == ZET_INTER_SUPER;
    return masked ? "another --inter than super under a mask" : nullptr;
}
const char* lacksMatrix(const Options& options) {
    return options.matrix.has_value() != options.quadrangle.has_value() ? nullptr : "one of --matrix and --quad";
}
const char* lacksAngle(const Options& options) { return options.angle ? nullptr : "--angle"; }
const char* lacksShear(const Options& options) { return options.shear ? nullptr : "--shear"; }
const char* lacksMap(const Options& options) { return options.map.empty() ? "--map" : nullptr; }

constexpr std::uint32_t kMoved = kRoi | kCoi | kTile | kInter;
constexpr const char* kSquare = "The square has 2 * N + 1 pixels a side and is applied at once.";

}  // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"info", "FILE", "say what image record a file becomes",
         "Prints size, depth, channels, order, origin, row step and data of the image that the library sees.", 0,
         runInfo, nullptr},
        {"convert", "IN OUT", "write a picture to another file, right way up",
         "OUT becomes a PNG, a TIFF or a BMP file, by its ending. PNG and TIFF hold 1, 8 and 16 bits a sample, BMP 1 "
         "and 8.",
         0, runConvert, nullptr},
        {"mark", "IN OUT", "draw a frame and a cross of single pixels",
         "The frame goes round the edge and the cross from corner to corner, in red, or white where there is no "
         "colour.",
         kTile, runMark, nullptr},
        {"set", "IN OUT", "fill a picture with one value", "The value is limited to the depth.", kPart | kTile | kValue,
         runSet, lacksValue},
        {"copy", "SRC DST OUT", "copy a part of SRC into DST",
         "OUT is DST with the copy. The region and the mask are those of SRC; both have one depth and number of "
         "channels.",
         kPart | kTile | kAt, runCopy, nullptr},
        {"add", "A B OUT", "add two pictures",
         "OUT is A where nothing is added. Sums stop at the limits of the depth; of 1 bit a pixel they are OR.",
         kPart | kTile, runAdd, nullptr},
        {"convolve", "IN OUT", "filter with kernels of whole numbers",
         "Kernels are turned through 180 degrees, as convolution has it, and their results combined.",
         kFiltered | kKernels | kAnchor, runConvolve, lacksKernel},
        {"blur", "IN OUT", "mean over a rectangle", "The cost does not depend on the rectangle's size.",
         kFiltered | kSize | kAnchor, runBlur, lacksSize},
        {"border", "IN OUT", "show what lies around a picture",
         "Convolves with a single 1, whose anchor reaches outside.", kBorder | kMargin, runBorder, lacksMargin},
        {"median", "IN OUT", "median over a rectangle", "Takes away single wrong pixels and keeps edges.",
         kFiltered | kSize | kAnchor, runMedian, lacksSize},
        {"fixed", "IN OUT", "one of the fixed filters", "Gradients, peaks, smoothing and sharpening.",
         kFiltered | kFilter, runFixed, lacksFilter},
        {"dilate", "IN OUT", "greatest sample of a square", kSquare, kFiltered | kHalfSize, runDilate, lacksHalfSize},
        {"erode", "IN OUT", "least sample of a square", kSquare, kFiltered | kHalfSize, runErode, lacksHalfSize},
        {"open", "IN OUT", "erode, then dilate", kSquare, kFiltered | kHalfSize, runOpen, lacksHalfSize},
        {"close", "IN OUT", "dilate, then erode", kSquare, kFiltered | kHalfSize, runClose, lacksHalfSize},
        {"threshold", "IN OUT", "make a picture of 1 bit a pixel", "Colours count by their weighted mean.", kLevel,
         runThreshold, lacksLevel},
        {"decimate", "IN OUT", "shrink a picture",
         "OUT has the size of the shrunk region. Without super most of its pixels play no part.",
         kRoi | kCoi | kTile | kScale, runDecimate, lacksScale},
        {"zoom", "IN OUT", "enlarge a picture",
         "OUT has the size of the enlarged region; where a mask is black it is 0.", kPart | kTile | kScale, runZoom,
         lacksScale},
        {"resize", "IN OUT", "change the scale in either direction, each axis for itself",
         "OUT has the size of the scaled region; where a mask is black it is 0. With super as decimate, else as zoom.",
         kPart | kTile | kScale, runResize, lacksScale},
        {"warp", "IN OUT", "map by a matrix or onto a parallelogram", "OUT has the size of IN; what is not hit is 0.",
         kMoved | kMatrix, runWarp, lacksMatrix},
        {"rotate", "IN OUT", "turn about a point", "OUT has the size of IN; what is not hit is 0.", kMoved | kAngle,
         runRotate, lacksAngle},
        {"shear", "IN OUT", "slant a picture", "OUT has the size of IN; what is not hit is 0.", kMoved | kShear,
         runShear, lacksShear},
        {"remap", "IN OUT", "bend a picture", "Each pixel comes from a position of its own.", kMoved | kMap, runRemap,
         lacksMap},
        {"hls", "IN OUT", "change hue, lightness and saturation",
         "Goes to hue, lightness and saturation, changes them and comes back.", kTile | kHls, runHls, nullptr},
        {"noise", "IN OUT", "add noise", "The same seed gives the same noise.", kPart | kTile | kNoise, runNoise,
         lacksNoise},
    };
    return table;
}

}  // namespace zetpic
