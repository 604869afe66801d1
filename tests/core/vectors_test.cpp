// Arithmetic that is quicker than it looks, against what it stands for.
#include "core/vectors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace zetpxl {
namespace {

TEST(Vectors, ThirdsAreQuotients) {
    std::uint64_t state = 88172645463325252u;
    std::int32_t wrong = 0;
    for (std::int32_t i = 0; i < 2000000; ++i) {
        state ^= state << 13, state ^= state >> 7, state ^= state << 17;
        const std::uint64_t bits = (state & 0x800FFFFFFFFFFFFFu) | (std::uint64_t{500} + state % 1000) << 52;
        double value;
        std::memcpy(&value, &bits, sizeof value);
        wrong += thirdOf(value) != value / 3;
    }
    EXPECT_EQ(wrong, 0);
}

// Shares and their cubes; numbers next to multiples of 3, and to what lies between two numbers.
TEST(Vectors, ThirdsOfSharesAreQuotients) {
    for (std::int32_t i = 0; i <= 1 << 16; ++i) {
        const double share = i * 0x1p-15;
        EXPECT_EQ(thirdOf(share), share / 3);
        EXPECT_EQ(thirdOf(share * share * share) / 2, share * share * share / 6);
        const double near = std::nextafter(3.0 * i, std::numeric_limits<double>::infinity());
        EXPECT_EQ(thirdOf(near), near / 3);
        EXPECT_EQ(thirdOf(-near), -near / 3);
    }
}

}  // namespace
}  // namespace zetpxl
