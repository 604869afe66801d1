#include "core/mathfun.h"

#include <bit>
#include <cstdint>

namespace zetpxl {

namespace {

// ln 2 in two parts; products of the first with exponents are exact.
constexpr double kLn2High = 6.93147180369123816490e-01;
constexpr double kLn2Low = 1.90821492927058770002e-10;
constexpr double kSqrtTwo = 1.4142135623730951;

struct Split {
    double high;
    double low;
};

// Upper half and rest of a double (Dekker, 1971): products of halves are exact.
Split split(double a) {
    const double c = 134217729.0 * a;
    const double high = c - (c - a);
    return {high, a - high};
}

// What a * b rounds away.
double productRest(double a, double b, double product) {
    const Split x = split(a);
    const Split y = split(b);
    return ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low;
}

// 2/3 + 2/5 z + 2/7 z^2 ... : what follows 2s in ln((1 + s) / (1 - s)), over s z with z = s * s.
double atanhTail(double z) {
    double sum = 0;
    for (int odd = 29; odd >= 3; odd -= 2) sum = sum * z + 2.0 / odd;
    return sum;
}

struct Reduced {
    double exponent;
    double fraction;  // between the root of one half and that of two, less one
};

Reduced reduce(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    auto exponent = static_cast<std::int32_t>(bits >> 52) - 1023;
    double mantissa = std::bit_cast<double>((bits & 0x000FFFFFFFFFFFFFu) | 0x3FF0000000000000u);
    if (mantissa > kSqrtTwo) {
        mantissa *= 0.5;
        ++exponent;
    }
    return {static_cast<double>(exponent), mantissa - 1.0};
}

}  // namespace

// ln(1 + f) = 2 atanh(s) with s = f / (2 + f); the quotient's rest is carried, so that only the last sum rounds.
double ownLog(double x) {
    const Reduced r = reduce(x);
    const double f = r.fraction;
    const double divisor = 2.0 + f;
    const double divisorRest = f - (divisor - 2.0);
    const double s = f / divisor;
    const double product = s * divisor;
    const double sRest = (((f - product) - productRest(s, divisor, product)) - s * divisorRest) / divisor;
    const double z = s * s;
    const double small = (2.0 * sRest + s * (z * atanhTail(z))) + r.exponent * kLn2Low;
    const double large = r.exponent * kLn2High;
    const double main = 2.0 * s;
    const double sum = large + main;
    const double rest = r.exponent == 0.0 ? 0.0 : main - (sum - large);
    return sum + (rest + small);
}

}  // namespace zetpxl
