//   hls.1 a stored value stands for one from 0 to full scale: 32S is shifted by 2^31
//   hls.2 hue is degrees from 0 up to 360 scaled to the same range, lightness and saturation are fractions of full scale
//   hls.3 at equal greatest channels red wins over green, and green over blue
//   hls.4 results are cut toward zero, never rounded; the shift is taken off before
#include "convert/hlsrows.h"

#include <algorithm>
#include <type_traits>

#include "core/depth.h"

namespace zetpxl {

namespace {

// The factors are part of the result: some lie one unit in the last place beside the quotient that they stand for.
template <class Sample>
struct Coding;

template <>
struct Coding<std::uint8_t> {
    static constexpr double bias = 0;
    static constexpr double full = 255;
    static constexpr double hueOut = 0.7083333333333334;
    static constexpr double hueIn = 1.4117647058823528;
    static constexpr double fractionIn = 0.00392156862745098;
};

template <>
struct Coding<std::uint16_t> {
    static constexpr double bias = 0;
    static constexpr double full = 65535;
    static constexpr double hueOut = 182.04166666666669;
    static constexpr double hueIn = 0.005493247882810711;
    static constexpr double fractionIn = 1.5259021896696422e-05;
};

template <>
struct Coding<std::int32_t> {
    static constexpr double bias = 2147483648.0;
    static constexpr double full = 4294967295.0;
    static constexpr double hueOut = 11930464.708333334;
    static constexpr double hueIn = 8.38190317349087e-08;
    static constexpr double fractionIn = 2.3283064370807974e-10;
};

template <class T>
T cut(double value) {
    return static_cast<T>(static_cast<std::int32_t>(value));
}

// Pixels that are converted at a time, channel by channel, without a branch: every choice is made between results that are
// all there.
constexpr std::ptrdiff_t kPiece = 128;

template <class T>
using Samples = T[3][kPiece];

template <class T, class Step>
void takeSamples(const ColourRow& row, std::ptrdiff_t first, std::ptrdiff_t count, Step step, Samples<T>& samples) {
    const T* const in[] = {reinterpret_cast<const T*>(row.in[0]) + first * step,
                           reinterpret_cast<const T*>(row.in[1]) + first * step,
                           reinterpret_cast<const T*>(row.in[2]) + first * step};
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        samples[0][i] = in[0][i * step];
        samples[1][i] = in[1][i * step];
        samples[2][i] = in[2][i * step];
    }
}

template <class T, class Step>
void putSamples(const ColourRow& row, std::ptrdiff_t first, std::ptrdiff_t count, Step step,
                const Samples<T>& samples) {
    T* const out[] = {reinterpret_cast<T*>(row.out[0]) + first * step, reinterpret_cast<T*>(row.out[1]) + first * step,
                      reinterpret_cast<T*>(row.out[2]) + first * step};
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        out[0][i * step] = samples[0][i];
        out[1][i * step] = samples[1][i];
        out[2][i * step] = samples[2][i];
    }
}

// Three samples a pixel are the usual case, and one that the compiler can take apart when it knows.
using Three = std::integral_constant<std::ptrdiff_t, 3>;

template <class T, class Convert>
void convertRow(const ColourRow& row, Convert convert) {
    Samples<T> in;
    Samples<T> out;
    for (std::ptrdiff_t first = 0; first < row.width; first += kPiece) {
        const std::ptrdiff_t count = std::min(kPiece, row.width - first);
        if (row.inStep == 3) {
            takeSamples<T>(row, first, count, Three{}, in);
        } else {
            takeSamples<T>(row, first, count, row.inStep, in);
        }
        convert(in, count, out);
        if (row.outStep == 3) {
            putSamples<T>(row, first, count, Three{}, out);
        } else {
            putSamples<T>(row, first, count, row.outStep, out);
        }
    }
}

template <class T>
void hlsOfPiece(const Samples<T>& rgb, std::ptrdiff_t count, Samples<T>& hls) {
    using C = Coding<T>;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double r = static_cast<double>(rgb[0][i]) + C::bias;
        const double g = static_cast<double>(rgb[1][i]) + C::bias;
        const double b = static_cast<double>(rgb[2][i]) + C::bias;
        const double greatest = std::max(std::max(r, g), b);
        const double least = std::min(std::min(r, g), b);
        const double sum = greatest + least;
        const double difference = greatest - least;
        const double lightness = 0.5 * sum;
        const double divisor = lightness <= C::full / 2 ? sum : 2 * C::full - sum;
        double part = g == greatest ? b - r : r - g;
        part = r == greatest ? g - b : part;
        double sector = g == greatest ? 120 : 240;
        sector = r == greatest ? 0 : sector;
        double hue = part / difference * 60 + sector;
        hue = hue < 0 ? hue + 360 : hue;
        hue = difference != 0 ? hue : 0;
        double saturation = difference / divisor;
        saturation = difference != 0 ? saturation : 0;
        hls[0][i] = cut<T>(hue * C::hueOut - C::bias);
        hls[1][i] = cut<T>(lightness - C::bias);
        hls[2][i] = cut<T>(saturation * C::full - C::bias);
    }
}

template <class T>
void rgbToHls(const ColourRow& row) {
    convertRow<T>(row, hlsOfPiece<T>);
}

double channelOf(double angle, double m1, double m2) {
    constexpr double sixtieth = 0.016666666666666666;
    const double rising = (m2 - m1) * sixtieth * angle + m1;
    const double falling = (240 - angle) * (m2 - m1) * sixtieth + m1;
    double value = angle < 240 ? falling : m1;
    value = angle < 180 ? m2 : value;
    return angle < 60 ? rising : value;
}

template <class T>
void rgbOfPiece(const Samples<T>& hls, std::ptrdiff_t count, Samples<T>& rgb) {
    using C = Coding<T>;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const T stored = hls[1][i];
        const double h = (static_cast<double>(hls[0][i]) + C::bias) * C::hueIn;
        const double l = (static_cast<double>(stored) + C::bias) * C::fractionIn;
        const double s = (static_cast<double>(hls[2][i]) + C::bias) * C::fractionIn;
        const double light = (s + l) - s * l;
        const double m2 = l <= 0.5 ? (s + 1) * l : light;
        const double m1 = 2 * l - m2;
        const double red = h + 120 > 360 ? h + 120 - 360 : h + 120;
        const double blue = h - 120 < 0 ? h - 120 + 360 : h - 120;
        const bool grey = s == 0;
        const T made[] = {cut<T>(channelOf(red, m1, m2) * C::full - C::bias),
                          cut<T>(channelOf(h, m1, m2) * C::full - C::bias),
                          cut<T>(channelOf(blue, m1, m2) * C::full - C::bias)};
        rgb[0][i] = grey ? stored : made[0];
        rgb[1][i] = grey ? stored : made[1];
        rgb[2][i] = grey ? stored : made[2];
    }
}

template <class T>
void hlsToRgb(const ColourRow& row) {
    convertRow<T>(row, rgbOfPiece<T>);
}

constexpr ColourRoutine ownRGB2HLSRow8U = rgbToHls<std::uint8_t>;
constexpr ColourRoutine ownRGB2HLSRow16U = rgbToHls<std::uint16_t>;
constexpr ColourRoutine ownRGB2HLSRow32S = rgbToHls<std::int32_t>;
constexpr ColourRoutine ownHLS2RGBRow8U = hlsToRgb<std::uint8_t>;
constexpr ColourRoutine ownHLS2RGBRow16U = hlsToRgb<std::uint16_t>;
constexpr ColourRoutine ownHLS2RGBRow32S = hlsToRgb<std::int32_t>;

using ColourTable = std::array<ColourRoutine, kDepthCount>;
constexpr ColourTable toHls = {nullptr, ownRGB2HLSRow8U, nullptr, ownRGB2HLSRow16U, nullptr, ownRGB2HLSRow32S, nullptr};
constexpr ColourTable toRgb = {nullptr, ownHLS2RGBRow8U, nullptr, ownHLS2RGBRow16U, nullptr, ownHLS2RGBRow32S, nullptr};

}  // namespace

ColourRoutine rgbToHlsRow(std::uint32_t depth) { return toHls[static_cast<std::size_t>(depthIndex(depth))]; }

ColourRoutine hlsToRgbRow(std::uint32_t depth) { return toRgb[static_cast<std::size_t>(depthIndex(depth))]; }

}  // namespace zetpxl
