// The means of blur by depth: what a column sums, what a row sums, and the result of a sum.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace zetpxl {

// The reciprocal as a whole number over a power of two: products with a sum are exact in 64 bits.
struct Reciprocal {
    std::uint64_t mantissa;  // 24 bits
    std::int32_t shift;
};

inline Reciprocal reciprocalOf(float inverse) {
    int exponent = 0;
    const float fraction = std::frexp(inverse, &exponent);
    return {static_cast<std::uint64_t>(std::ldexp(fraction, 24)), 24 - exponent};
}

// Sums of integers wrap in 32 bits and are used as signed numbers.
template <class Sample>
struct WholeSums {
    using T = Sample;
    using Column = std::uint32_t;
    using Row = std::uint32_t;
    static constexpr bool truncatesFloats = false;

    static Column column(T sample) { return static_cast<Column>(static_cast<std::int32_t>(sample)); }
};

template <class Sample>
struct IntegerMean : WholeSums<Sample> {
    Reciprocal reciprocal;

    explicit IntegerMean(float inverse) : reciprocal(reciprocalOf(inverse)) {}
    Sample result(std::uint32_t sum) const {
        const auto value = static_cast<std::int32_t>(sum);
        const std::uint64_t magnitude = value < 0 ? 0U - sum : sum;
        const auto mean = static_cast<std::int32_t>((magnitude * reciprocal.mantissa) >> reciprocal.shift);
        return static_cast<Sample>(value < 0 ? -mean : mean);
    }
};

// The same where no sum passes 2^29: the product with the 24 bits of the reciprocal is exact in double, and a conversion
// cuts it.
template <class Sample>
struct SmallSumMean : WholeSums<Sample> {
    double inverse;

    explicit SmallSumMean(float value) : inverse(static_cast<double>(value)) {}
    Sample result(std::uint32_t sum) const {
        return static_cast<Sample>(static_cast<std::int32_t>(static_cast<std::int32_t>(sum) * inverse));
    }
};

// Bytes by a product of 32 bits, by the whole number below the reciprocal's or by the one above.
struct WordMean : WholeSums<std::uint8_t> {
    static constexpr std::int32_t kShift = 23;
    std::uint32_t factor;

    WordMean(float inverse, std::uint32_t above) : factor(factorOf(inverse) + above) {}
    static std::uint32_t factorOf(float inverse) {
        return static_cast<std::uint32_t>(std::ldexp(static_cast<double>(inverse), kShift));
    }
    std::uint8_t result(std::uint32_t sum) const { return static_cast<std::uint8_t>((sum * factor) >> kShift); }
};

// Whether this gives all means of so many bytes. Both expressions grow with the sum, so the sums on either side of where a
// mean begins tell.
inline bool servesAll(const WordMean& quick, float inverse, std::int64_t samples) {
    const SmallSumMean<std::uint8_t> exact(inverse);
    const std::int64_t most = 255 * samples;
    if (most * quick.factor > 0xFFFFFFFFLL) return false;
    const auto agree = [&](std::uint32_t sum) { return quick.result(sum) == exact.result(sum); };
    for (std::int64_t mean = 1; mean <= 255; ++mean) {
        auto begin = static_cast<std::uint32_t>(mean * samples);
        while (begin > 0 && exact.result(begin - 1) >= mean) --begin;
        while (begin < most && exact.result(begin) < mean) ++begin;
        if (!agree(begin) || !agree(begin - 1)) return false;
    }
    return agree(static_cast<std::uint32_t>(most));
}

// One bit, a byte each here: 1 from exactly one half on.
struct BitMean : WholeSums<std::uint8_t> {
    Reciprocal reciprocal;

    explicit BitMean(float inverse) : reciprocal(reciprocalOf(inverse)) {}
    std::uint8_t result(std::uint32_t sum) const {
        return (sum * reciprocal.mantissa) >> (reciprocal.shift - 1) != 0 ? 1 : 0;
    }
};

struct FloatMean {
    using T = float;
    using Column = float;
    using Row = double;
    static constexpr bool truncatesFloats = true;
    double inverse;

    explicit FloatMean(float value) : inverse(static_cast<double>(value)) {}
    static Column column(T sample) { return sample; }
    T result(Row sum) const { return static_cast<float>(sum * inverse); }
};

struct Signed32Mean {
    using T = std::int32_t;
    using Column = float;
    using Row = double;
    static constexpr bool truncatesFloats = true;
    double inverse;

    explicit Signed32Mean(float value) : inverse(static_cast<double>(value)) {}
    static Column column(T sample) { return static_cast<float>(sample); }
    T result(Row sum) const {
        return static_cast<T>(static_cast<std::uint32_t>(static_cast<std::int64_t>(sum * inverse)));
    }
};

}  // namespace zetpxl
