//   hls.1 a stored value stands for one from 0 to full scale: 32S is shifted by 2^31
//   hls.2 hue is degrees from 0 up to 360 scaled to the same range, lightness and saturation are fractions of full scale
//   hls.3 at equal greatest channels red wins over green, and green over blue
//   hls.4 results are cut toward zero, never rounded; the shift is taken off before
#include "convert/hlsrows.h"

#include <algorithm>

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

double hueOf(double r, double g, double b, double greatest, double difference) {
    double h = (r - g) / difference * 60 + 240;
    if (g == greatest) h = (b - r) / difference * 60 + 120;
    if (r == greatest) h = (g - b) / difference * 60;
    return h < 0 ? h + 360 : h;
}

template <class T>
void rgbToHls(const ColourRow& row) {
    using C = Coding<T>;
    const auto at = [&](std::size_t c, std::ptrdiff_t x) {
        return static_cast<double>(reinterpret_cast<const T*>(row.in[c])[x * row.inStep]) + C::bias;
    };
    const auto put = [&](std::size_t c, std::ptrdiff_t x, double value) {
        reinterpret_cast<T*>(row.out[c])[x * row.outStep] = cut<T>(value - C::bias);
    };
    for (std::ptrdiff_t x = 0; x < row.width; ++x) {
        const double r = at(0, x);
        const double g = at(1, x);
        const double b = at(2, x);
        const double greatest = std::max(std::max(r, g), b);
        const double least = std::min(std::min(r, g), b);
        const double sum = greatest + least;
        const double difference = greatest - least;
        const double lightness = 0.5 * sum;
        double hue = 0;
        double saturation = 0;
        if (difference != 0) {
            saturation = difference / (lightness <= C::full / 2 ? sum : 2 * C::full - sum);
            hue = hueOf(r, g, b, greatest, difference);
        }
        put(0, x, hue * C::hueOut);
        put(1, x, lightness);
        put(2, x, saturation * C::full);
    }
}

double channelOf(double angle, double m1, double m2) {
    constexpr double sixtieth = 0.016666666666666666;
    if (angle < 60) return (m2 - m1) * sixtieth * angle + m1;
    if (angle < 180) return m2;
    if (angle < 240) return (240 - angle) * (m2 - m1) * sixtieth + m1;
    return m1;
}

template <class T>
void hlsToRgb(const ColourRow& row) {
    using C = Coding<T>;
    const auto at = [&](std::size_t c, std::ptrdiff_t x) {
        return reinterpret_cast<const T*>(row.in[c])[x * row.inStep];
    };
    const auto put = [&](std::size_t c, std::ptrdiff_t x, T value) {
        reinterpret_cast<T*>(row.out[c])[x * row.outStep] = value;
    };
    for (std::ptrdiff_t x = 0; x < row.width; ++x) {
        const T stored = at(1, x);
        const double h = (static_cast<double>(at(0, x)) + C::bias) * C::hueIn;
        const double l = (static_cast<double>(stored) + C::bias) * C::fractionIn;
        const double s = (static_cast<double>(at(2, x)) + C::bias) * C::fractionIn;
        if (s == 0) {
            for (std::size_t c = 0; c < 3; ++c) put(c, x, stored);
            continue;
        }
        const double m2 = l <= 0.5 ? (s + 1) * l : (s + l) - s * l;
        const double m1 = 2 * l - m2;
        const double red = h + 120 > 360 ? h + 120 - 360 : h + 120;
        const double blue = h - 120 < 0 ? h - 120 + 360 : h - 120;
        const double angles[] = {red, h, blue};
        for (std::size_t c = 0; c < 3; ++c) put(c, x, cut<T>(channelOf(angles[c], m1, m2) * C::full - C::bias));
    }
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
