#include "values.h"

#include <cmath>

namespace zetpic {
namespace {

ZetROI wholeImage() { return {0, 0, 0, INT32_MAX, INT32_MAX}; }

bool parsePoint(const char* value, Point* point) {
    std::int32_t numbers[2];
    if (!parseNumbers(value, numbers, 2)) return false;
    *point = {numbers[0], numbers[1]};
    return true;
}

bool parseRange(const char* value, std::optional<Range>* range) {
    float numbers[2];
    if (!parseNumbers(value, numbers, 2)) return false;
    *range = Range{numbers[0], numbers[1]};
    return std::isfinite(numbers[0]) && std::isfinite(numbers[1]) && std::fabs(numbers[0]) < 1e6F &&
           std::fabs(numbers[1]) < 1e6F;
}

template <std::size_t N>
bool parseReals(const char* value, std::optional<std::array<double, N>>* reals) {
    std::array<double, N> numbers{};
    if (!parseNumbers(value, numbers.data(), N)) return false;
    for (const double number : numbers)
        if (!std::isfinite(number)) return false;
    *reals = numbers;
    return true;
}

bool parseFinite(const char* value, double* number) { return parseNumbers(value, number, 1) && std::isfinite(*number); }

struct NamedKernel {
    const char* name;
    const char* text;
    std::int32_t shift;
};

constexpr NamedKernel kNamedKernels[] = {
    {"sharpen", "0 -1 0;-1 5 -1;0 -1 0", 0}, {"emboss", "2 1 0;1 1 -1;0 -1 -2", 0},
    {"edge-x", "1 0 -1;2 0 -2;1 0 -1", 0},   {"edge-y", "1 2 1;0 0 0;-1 -2 -1", 0},
    {"smooth", "1 2 1;2 4 2;1 2 1", 4},
};

// Weights with blanks or a comma between them, up to the semicolon or the end behind them; null for anything else.
const char* parseWeightRow(const char* text, std::vector<std::int32_t>* weights) {
    const char* const end = text + std::strlen(text);
    for (;;) {
        text += std::strspn(text, " ");
        const auto [behind, error] = std::from_chars(text, end, weights->emplace_back());
        if (error != std::errc{}) return nullptr;
        text = behind + std::strspn(behind, " ");
        if (*text == ';' || *text == '\0') return text;
        if (*text == ',')
            ++text;
        else if (text == behind)
            return nullptr;
    }
}

bool parseWeights(const char* text, Kernel* kernel) {
    for (kernel->rows = 1;; ++kernel->rows) {
        const auto before = static_cast<std::int32_t>(kernel->weights.size());
        text = parseWeightRow(text, &kernel->weights);
        if (!text) return false;
        const std::int32_t columns = static_cast<std::int32_t>(kernel->weights.size()) - before;
        if (kernel->rows == 1) kernel->columns = columns;
        if (columns != kernel->columns) return false;
        if (*text == '\0') return true;
        ++text;
    }
}

// Digits that make a number with those before them; what stands behind them, or null without any or past 32 bits.
const char* parseDigits(const char* text, std::int32_t* number) {
    const char* const first = text;
    for (; *text >= '0' && *text <= '9'; ++text) {
        const std::int64_t longer = std::int64_t{10} * *number + (*text - '0');
        if (longer > INT32_MAX) return nullptr;
        *number = static_cast<std::int32_t>(longer);
    }
    return text == first ? nullptr : text;
}

// 2/3, 2 or 0.37; what stands behind it, or null.
const char* parseFraction(const char* text, Fraction* fraction) {
    *fraction = {0, 1};
    text = parseDigits(text, &fraction->numerator);
    if (text && *text == '/') {
        fraction->denominator = 0;
        text = parseDigits(text + 1, &fraction->denominator);
    } else if (text && *text == '.') {
        const char* const digits = text + 1;
        text = parseDigits(digits, &fraction->numerator);
        if (!text || text - digits > 9) return nullptr;
        for (const char* digit = digits; digit < text; ++digit) fraction->denominator *= 10;
    }
    return fraction->numerator > 0 && fraction->denominator > 0 ? text : nullptr;
}

}  // namespace

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

bool parseBorder(const char* value, Options* options) {
    const std::string text = value;
    const std::size_t colon = text.find(':');
    const std::int32_t mode = findName(text.substr(0, colon).c_str(), {"constant", "replicate", "reflect", "wrap"});
    options->border = Border{mode, 0};
    const bool constant = mode == ZET_BORDER_CONSTANT && colon != std::string::npos;
    if (constant) return parseNumbers(value + colon + 1, &options->border->constant, 1);
    return mode >= 0 && colon == std::string::npos;
}

bool parseValue(const char* value, Options* options) { return parseNumbers(value, &options->value.emplace(), 1); }

bool parseAt(const char* value, Options* options) {
    return parsePoint(value, &options->at) && options->at.x >= 0 && options->at.y >= 0;
}

bool parseKernel(const char* value, Options* options) {
    Kernel kernel{0, 0, {}, 0};
    for (const NamedKernel& named : kNamedKernels)
        if (std::strcmp(value, named.name) == 0) {
            kernel.shift = named.shift;
            value = named.text;
        }
    const bool parsed = parseWeights(value, &kernel);
    options->kernels.push_back(kernel);
    return parsed && options->kernels.size() <= 10;
}

bool parseMethod(const char* value, Options* options) {
    options->method = findName(value, {"sum", "squares", "root", "max", "min"});
    return options->method >= 0;
}

bool parseShift(const char* value, Options* options) {
    return parseNumbers(value, &options->shift.emplace(), 1) && *options->shift >= 0 && *options->shift < 32;
}

bool parseAnchor(const char* value, Options* options) {
    return parsePoint(value, &options->anchor.emplace()) && options->anchor->x >= 0 && options->anchor->y >= 0;
}

bool parseSize(const char* value, Options* options) {
    return parsePoint(value, &options->size.emplace()) && options->size->x > 0 && options->size->y > 0;
}

bool parseFactor(const char* value, Options* options) {
    auto& [x, y] = options->factors.emplace();
    const char* behind = parseFraction(value, &x);
    y = x;
    if (behind && *behind == ',') behind = parseFraction(behind + 1, &y);
    return behind && *behind == '\0';
}

bool parseExtent(const char* value, Options* options) {
    return parseNumbers(value, &options->extent, 1) && options->extent > 0;
}

bool parseFilter(const char* value, Options* options) {
    const std::int32_t named =
        findName(value, {"grad-x-flat", "grad-y-flat", "grad-x-peaked", "grad-y-peaked", "peak-3", "ring-5", "smooth-3",
                         "smooth-5", "peak-3b", "peak-5", "crisp-3"});
    options->filter = named;
    if (named < 0 && !parseNumbers(value, &*options->filter, 1)) return false;
    return *options->filter >= 0 && *options->filter <= 10;
}

bool parseHue(const char* value, Options* options) { return parseFinite(value, &options->hue); }

bool parseLightness(const char* value, Options* options) {
    return parseFinite(value, &options->lightness) && options->lightness >= 0;
}

bool parseSaturation(const char* value, Options* options) {
    return parseFinite(value, &options->saturation) && options->saturation >= 0;
}

bool parseWriteHls(const char*, Options* options) {
    options->hlsSide = HlsSide::kWrite;
    return true;
}

bool parseReadHls(const char*, Options* options) {
    options->hlsSide = HlsSide::kRead;
    return true;
}

bool parseUniform(const char* value, Options* options) { return parseRange(value, &options->uniform); }

bool parseGaussian(const char* value, Options* options) { return parseRange(value, &options->gaussian); }

bool parseSeed(const char* value, Options* options) { return parseNumbers(value, &options->seed, 1); }

bool parseInter(const char* value, Options* options) {
    options->interpolation = findName(value, {"nn", "linear", "cubic"});
    return options->interpolation >= 0;
}

bool parseScaleInter(const char* value, Options* options) {
    options->interpolation = findName(value, {"nn", "linear", "cubic", "super"});
    return options->interpolation >= 0;
}

bool parseBlend(const char*, Options* options) { return options->blend = true; }

bool parseMatrix(const char* value, Options* options) { return parseReals(value, &options->matrix); }

bool parseQuadrangle(const char* value, Options* options) { return parseReals(value, &options->quadrangle); }

bool parseAngle(const char* value, Options* options) { return parseFinite(value, &options->angle.emplace()); }

bool parseAbout(const char* value, Options* options) { return parseReals(value, &options->about); }

bool parseMove(const char* value, Options* options) { return parseReals(value, &options->move); }

bool parseShear(const char* value, Options* options) { return parseReals(value, &options->shear); }

bool parseMap(const char* value, Options* options) {
    options->map = value;
    return findName(value, {"barrel", "swirl", "ripple"}) >= 0;
}

bool parseAmount(const char* value, Options* options) { return parseFinite(value, &options->amount); }

}  // namespace zetpic
