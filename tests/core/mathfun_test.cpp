// The library's own logarithm, sine and cosine against wider ones.
#include "core/mathfun.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>

#include "tests/support/random.h"

namespace zetpxl::test {
namespace {

static_assert(LDBL_MANT_DIG > DBL_MANT_DIG, "a wider type shows errors below one unit");

using Own = double (*)(double);
using Wide = long double (*)(long double);

// The error in units of the last place of the true value.
double errorOf(Own own, Wide wide, double x) {
    const long double truth = wide(x);
    const int exponent = std::ilogb(static_cast<double>(truth));
    const long double unit = std::ldexp(1.0L, std::max(exponent, DBL_MIN_EXP - 1) - (DBL_MANT_DIG - 1));
    return static_cast<double>(std::fabs(own(x) - truth) / unit);
}

void expectCloseness(Own own, Wide wide, const std::function<double(Random&)>& argument) {
    Random random(5);
    double worst = 0, at = 0;
    for (std::int32_t i = 0; i < 300000; ++i) {
        const double x = argument(random);
        const double error = errorOf(own, wide, x);
        if (error > worst) {
            worst = error;
            at = x;
        }
    }
    EXPECT_LE(worst, 1.0) << "at " << at;
}

double unit(Random& random) { return static_cast<double>(random.next() >> 11) * 0x1p-53; }

TEST(MathFunctions, LogarithmWithinOneUnit) {
    expectCloseness(&ownLog, &std::log, [](Random& random) {
        const double fraction = unit(random) + 0x1p-60;
        if (random.oneIn(4)) return 1.0 + (fraction - 0.5) * std::ldexp(1.0, -random.below(52));
        return random.oneIn(3) ? std::ldexp(1.0 + fraction, random.between(-1000, 1000)) : fraction;
    });
    EXPECT_EQ(ownLog(1.0), 0.0);
}

double drawAngle(Random& random) {
    constexpr double kTurn = 6.283185307179586;
    const double fraction = unit(random);
    if (!random.oneIn(3)) return fraction * kTurn;
    // Close to a multiple of an eighth of a turn, where one of the two is near 0.
    const double angle = random.below(9) * (kTurn / 8) + (fraction - 0.5) * std::ldexp(1.0, -random.below(52));
    return std::fmin(std::fabs(angle), kTurn);
}

TEST(MathFunctions, SineAndCosineWithinOneUnit) {
    expectCloseness(&ownSin, &std::sin, &drawAngle);
    expectCloseness(&ownCos, &std::cos, &drawAngle);
    EXPECT_EQ(ownSin(0.0), 0.0);
    EXPECT_EQ(ownCos(0.0), 1.0);
}

}  // namespace
}  // namespace zetpxl::test
