// The random numbers of noise, in order, many at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl {

inline constexpr std::uint32_t kNoiseMultiplier = 69069;
inline constexpr std::uint32_t kNoiseIncrement = 1013904243;

// A congruential sequence and one that subtracts with borrow, modulus 2^32 - 18 (Marsaglia and Zaman, "A new class of random
// number generators", 1991); a draw is the sum of both.
struct NoiseDraws {
    std::uint32_t lcg;
    std::uint32_t lag1, lag2, lag3;
    std::uint32_t borrow;
};

constexpr NoiseDraws startDraws(std::uint32_t seed) {
    const std::uint32_t lag2 = seed * kNoiseMultiplier + kNoiseIncrement;
    const std::uint32_t lag3 = lag2 * kNoiseMultiplier + kNoiseIncrement;
    return {1131199209, seed, lag2, lag3, 1};
}

// The next term of the subtracting sequence.
constexpr std::uint32_t nextDifference(NoiseDraws* d) {
    std::uint32_t t = d->lag2 - d->lag3 - d->borrow;
    d->borrow = t >> 31;
    t -= 18 * d->borrow;
    d->lag3 = d->lag2;
    d->lag2 = d->lag1;
    d->lag1 = t;
    return t;
}

constexpr std::uint32_t draw(NoiseDraws* d) {
    d->lcg = d->lcg * kNoiseMultiplier + kNoiseIncrement;
    return d->lcg + nextDifference(d);
}

inline constexpr std::ptrdiff_t kDraws = 256;

// Numbers drawn ahead: what one image leaves is dropped with the call.
struct NoiseQueue {
    NoiseDraws draws;
    std::ptrdiff_t next;
    std::ptrdiff_t count;
    std::uint32_t drawn[kDraws];
    double sample[kDraws];  // Gaussian: of the pair, and the radius that scales it
    double radius[kDraws];
};

// Fill an empty queue.
void drawUniform(NoiseQueue* queue);
void drawGaussian(NoiseQueue* queue);

}  // namespace zetpxl
