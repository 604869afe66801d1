#include "core/mathfun.h"

#include <cstdint>
#include <cstring>

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

// Exponent and fraction of numbers, the fraction between the root of one half and that of two, less one. An exponent
// becomes a number in the last places of 2^52.
template <class Real, class Bits>
void reduceLog(const Real& x, Real* exponent, Real* fraction) {
    Bits bits;
    std::memcpy(&bits, &x, sizeof bits);
    const Bits mantissaBits = (bits & 0x000FFFFFFFFFFFFFu) | 0x3FF0000000000000u;
    const Bits wholeBits = (bits >> 52) | 0x4330000000000000u;
    Real mantissa;
    Real whole;
    std::memcpy(&mantissa, &mantissaBits, sizeof mantissa);
    std::memcpy(&whole, &wholeBits, sizeof whole);
    whole -= 4503599627370496.0 + 1023.0;
    const auto large = mantissa > kSqrtTwo;
    *exponent = large ? whole + 1.0 : whole;
    *fraction = (large ? mantissa * 0.5 : mantissa) - 1.0;
}

// What a * b rounds away: halves of doubles have exact products (Dekker, 1971).
template <class Real>
void productRest(const Real& a, const Real& b, const Real& product, Real* rest) {
    const Real ca = 134217729.0 * a;
    const Real cb = 134217729.0 * b;
    const Real aHigh = ca - (ca - a);
    const Real bHigh = cb - (cb - b);
    const Real aLow = a - aHigh;
    const Real bLow = b - bHigh;
    *rest = ((aHigh * bHigh - product) + aHigh * bLow + aLow * bHigh) + aLow * bLow;
}

// 2/3 + 2/5 z + 2/7 z^2 ... : what follows 2s in ln((1 + s) / (1 - s)), over s z with z = s * s.
template <class Real>
void atanhTail(const Real& z, Real* tail) {
    Real sum = z * 0.0;
    for (int odd = 29; odd >= 3; odd -= 2) sum = sum * z + 2.0 / odd;
    *tail = sum;
}

// ln(1 + f) = 2 atanh(s) with s = f / (2 + f); the quotient's rest is carried, so that only the last sum rounds. One number
// or a vector of them: there is no branch.
template <class Real, class Bits>
void takeLog(const Real& x, Real* log) {
    Real exponent;
    Real f;
    reduceLog<Real, Bits>(x, &exponent, &f);
    const Real divisor = 2.0 + f;
    const Real divisorRest = f - (divisor - 2.0);
    const Real s = f / divisor;
    const Real product = s * divisor;
    Real lostProduct;
    productRest(s, divisor, product, &lostProduct);
    const Real sRest = (((f - product) - lostProduct) - s * divisorRest) / divisor;
    const Real z = s * s;
    Real tail;
    atanhTail(z, &tail);
    const Real small = (2.0 * sRest + s * (z * tail)) + exponent * kLn2Low;
    const Real large = exponent * kLn2High;
    const Real main = 2.0 * s;
    const Real sum = large + main;
    const Real lost = main - (sum - large);
    const Real rest = exponent == 0.0 ? lost * 0.0 : lost;
    *log = sum + (rest + small);
}

}  // namespace

double ownLog(double x) {
    double log = 0;
    takeLog<double, std::uint64_t>(x, &log);
    return log;
}

void ownLogs(const double* x, std::ptrdiff_t count, double* logs) {
    using Reals [[gnu::vector_size(32)]] = double;
    using Words [[gnu::vector_size(32)]] = std::uint64_t;
    constexpr std::ptrdiff_t kLanes = 4;
    std::ptrdiff_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        Reals numbers;
        Reals made;
        std::memcpy(&numbers, x + i, sizeof numbers);
        takeLog<Reals, Words>(numbers, &made);
        std::memcpy(logs + i, &made, sizeof made);
    }
    for (; i < count; ++i) logs[i] = ownLog(x[i]);
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
