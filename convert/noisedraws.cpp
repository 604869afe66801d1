//   noisedraws.1 the congruential sequence is taken several terms at a step, the other term by term
//   noisedraws.2 Gaussian samples come in pairs by the polar method (Marsaglia and Bray, 1964), the second of the two first;
//                pairs outside the circle are drawn and dropped
#include "convert/noisedraws.h"

#include <cmath>

#include "core/mathfun.h"

namespace zetpxl {

namespace {

constexpr std::uint32_t secondDraw(std::uint32_t seed) {
    NoiseDraws draws = startDraws(seed);
    draw(&draws);
    return draw(&draws);
}
static_assert(startDraws(1).lag2 == 1013973312 && startDraws(1).lag3 == 1399862195);
static_assert(secondDraw(1) == 2706444681);

// Terms of the congruential sequence that go side by side.
constexpr std::ptrdiff_t kTerms = 8;

// So many steps of it as one.
struct Leap {
    std::uint32_t factor;
    std::uint32_t offset;
};

constexpr Leap leapOf(std::ptrdiff_t steps) {
    Leap leap{1, 0};
    for (std::ptrdiff_t i = 0; i < steps; ++i)
        leap = {leap.factor * kNoiseMultiplier, leap.offset * kNoiseMultiplier + kNoiseIncrement};
    return leap;
}

void drawMany(NoiseDraws* draws, std::uint32_t* __restrict drawn) {
    constexpr Leap leap = leapOf(kTerms);
    NoiseDraws d = *draws;
    for (std::ptrdiff_t i = 0; i < kDraws; ++i) drawn[i] = nextDifference(&d);
    std::uint32_t terms[kTerms];
    for (std::uint32_t& term : terms) term = d.lcg = d.lcg * kNoiseMultiplier + kNoiseIncrement;
    for (std::ptrdiff_t i = 0; i < kDraws; i += kTerms)
        for (std::ptrdiff_t k = 0; k < kTerms; ++k) {
            drawn[i + k] += terms[k];
            d.lcg = terms[k];
            terms[k] = terms[k] * leap.factor + leap.offset;
        }
    *draws = d;
}

struct Pairs {
    double v1[kDraws / 2];
    double v2[kDraws / 2];
    double square[kDraws / 2];
};

void makePairs(const std::uint32_t* drawn, Pairs* pairs) {
    constexpr double unit = 4.656612873077e-10;
    for (std::ptrdiff_t i = 0; i < kDraws / 2; ++i) {
        const double v1 = static_cast<std::int32_t>(drawn[2 * i]) * unit;
        const double v2 = static_cast<std::int32_t>(drawn[2 * i + 1]) * unit;
        pairs->v1[i] = v1;
        pairs->v2[i] = v2;
        pairs->square[i] = v1 * v1 + v2 * v2;
    }
}

// Moves the pairs inside the circle together; gives their number.
std::ptrdiff_t keepInside(Pairs* pairs) {
    std::ptrdiff_t kept = 0;
    for (std::ptrdiff_t i = 0; i < kDraws / 2; ++i) {
        const double square = pairs->square[i];
        pairs->v1[kept] = pairs->v1[i];
        pairs->v2[kept] = pairs->v2[i];
        pairs->square[kept] = square;
        kept += (square < 1.0) & (square != 0.0);
    }
    return kept;
}

}  // namespace

void drawUniform(NoiseQueue* queue) {
    drawMany(&queue->draws, queue->drawn);
    queue->next = 0;
    queue->count = kDraws;
}

void drawGaussian(NoiseQueue* queue) {
    Pairs pairs;
    std::ptrdiff_t kept = 0;
    while (kept == 0) {
        drawMany(&queue->draws, queue->drawn);
        makePairs(queue->drawn, &pairs);
        kept = keepInside(&pairs);
    }
    double logs[kDraws / 2];
    ownLogs(pairs.square, kept, logs);
    for (std::ptrdiff_t i = 0; i < kept; ++i) {
        const double radius = std::sqrt((-2.0 / pairs.square[i]) * logs[i]);
        queue->sample[2 * i] = pairs.v2[i];
        queue->sample[2 * i + 1] = pairs.v1[i];
        queue->radius[2 * i] = radius;
        queue->radius[2 * i + 1] = radius;
    }
    queue->next = 0;
    queue->count = 2 * kept;
}

}  // namespace zetpxl
