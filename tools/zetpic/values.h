// Values of options, from their words.
#pragma once

#include <charconv>
#include <cstring>

#include "command.h"

namespace zetpic {

// Numbers with commas between them, as many as asked for and nothing else.
template <class T>
bool parseNumbers(const char* text, T* numbers, int count) {
    const char* const end = text + std::strlen(text);
    for (int i = 0; i < count; ++i) {
        const auto [behind, error] = std::from_chars(text, end, numbers[i]);
        const bool last = i == count - 1;
        if (error != std::errc{} || (last ? behind != end : behind == end || *behind != ',')) return false;
        text = behind + 1;
    }
    return true;
}

// Where the text stands among the names, or -1.
template <std::size_t N>
std::int32_t findName(const char* text, const char* const (&names)[N]) {
    for (std::size_t i = 0; i < N; ++i)
        if (std::strcmp(text, names[i]) == 0) return static_cast<std::int32_t>(i);
    return -1;
}

bool parseRoi(const char* value, Options* options);
bool parseCoi(const char* value, Options* options);
bool parseMask(const char* value, Options* options);
bool parseTile(const char* value, Options* options);
bool parseBorder(const char* value, Options* options);
bool parseValue(const char* value, Options* options);
bool parseAt(const char* value, Options* options);
bool parseKernel(const char* value, Options* options);
bool parseMethod(const char* value, Options* options);
bool parseShift(const char* value, Options* options);
bool parseAnchor(const char* value, Options* options);
bool parseSize(const char* value, Options* options);
bool parseExtent(const char* value, Options* options);
bool parseFactor(const char* value, Options* options);
bool parseFilter(const char* value, Options* options);
bool parseHue(const char* value, Options* options);
bool parseLightness(const char* value, Options* options);
bool parseSaturation(const char* value, Options* options);
bool parseWriteHls(const char* value, Options* options);
bool parseReadHls(const char* value, Options* options);
bool parseUniform(const char* value, Options* options);
bool parseGaussian(const char* value, Options* options);
bool parseSeed(const char* value, Options* options);
bool parseInter(const char* value, Options* options);
bool parseScaleInter(const char* value, Options* options);
bool parseBlend(const char* value, Options* options);
bool parseMatrix(const char* value, Options* options);
bool parseQuadrangle(const char* value, Options* options);
bool parseAngle(const char* value, Options* options);
bool parseAbout(const char* value, Options* options);
bool parseMove(const char* value, Options* options);
bool parseShear(const char* value, Options* options);
bool parseMap(const char* value, Options* options);
bool parseAmount(const char* value, Options* options);

}  // namespace zetpic
