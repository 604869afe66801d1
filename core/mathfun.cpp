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

// Half of pi in three parts; products of the first two with small whole numbers are exact.
constexpr double kHalfPi1 = 1.57079632673412561417e+00;
constexpr double kHalfPi2 = 6.07710050630396597660e-11;
constexpr double kHalfPi3 = 2.02226624879595063154e-21;

// An angle less the nearest multiple of half of pi, in two parts, and which multiple.
struct Octant {
    std::int32_t quarter;
    double high;
    double low;
};

Octant octantOf(double x) {
    const auto quarter = static_cast<std::int32_t>(x * 0.6366197723675814 + 0.5);
    const double n = quarter;
    const double first = x - n * kHalfPi1;
    const double second = n * kHalfPi2;
    const double high = first - second;
    const double rest = (first - high) - second;
    const double third = n * kHalfPi3;
    const double low = rest - third;
    const double sum = high + low;
    return {quarter & 3, sum, (high - sum) + low};
}

// Taylor's series to the last bit for angles up to a quarter of pi; the rest of the angle enters by its derivative.
double smallSine(double high, double low) {
    const double z = high * high;
    double sum = 0;
    for (int k = 19; k >= 3; k -= 2) sum = (sum * z + 1.0) * (-1.0 / (k * (k - 1)));
    return high + (high * (sum * z) + low * (1.0 - 0.5 * z));
}

double smallCosine(double high, double low) {
    const double z = high * high;
    double sum = 0;
    for (int k = 20; k >= 4; k -= 2) sum = (sum * z + 1.0) * (-1.0 / (k * (k - 1)));
    const double half = 0.5 * z;
    const double main = 1.0 - half;
    return main + (((1.0 - main) - half) - half * (sum * z) - high * low);
}

struct Reduced {
    double exponent;
    double fraction;  // between the root of one half and that of two, less one
};

// Without a branch, so that many numbers go side by side.
Reduced reduce(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const double mantissa = std::bit_cast<double>((bits & 0x000FFFFFFFFFFFFFu) | 0x3FF0000000000000u);
    const bool large = mantissa > kSqrtTwo;
    const std::int32_t exponent = static_cast<std::int32_t>(bits >> 52) - 1023 + (large ? 1 : 0);
    return {static_cast<double>(exponent), (large ? mantissa * 0.5 : mantissa) - 1.0};
}

// ln(1 + f) = 2 atanh(s) with s = f / (2 + f); the quotient's rest is carried, so that only the last sum rounds.
double logOf(double x) {
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
    const double lost = main - (sum - large);
    const double rest = r.exponent == 0.0 ? 0.0 : lost;
    return sum + (rest + small);
}

}  // namespace

double ownLog(double x) { return logOf(x); }

void ownLogs(const double* __restrict x, std::ptrdiff_t count, double* __restrict logs) {
    for (std::ptrdiff_t i = 0; i < count; ++i) logs[i] = logOf(x[i]);
}

double ownSin(double x) {
    const Octant o = octantOf(x);
    const double value = o.quarter & 1 ? smallCosine(o.high, o.low) : smallSine(o.high, o.low);
    return o.quarter & 2 ? -value : value;
}

double ownCos(double x) {
    const Octant o = octantOf(x);
    const double value = o.quarter & 1 ? smallSine(o.high, o.low) : smallCosine(o.high, o.low);
    return (o.quarter == 1 || o.quarter == 2) ? -value : value;
}

}  // namespace zetpxl
