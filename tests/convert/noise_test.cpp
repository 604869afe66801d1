// Noise against the model, by hand, and what it refuses.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/differential.h"
#include "tests/support/draw.h"
#include "tests/support/grid.h"
#include "tests/support/model_noise.h"
#include "tests/support/refusals.h"

namespace zetpxl::test {
namespace {

std::int32_t drawBound(Random& random) {
    const std::int32_t odd = random.pick({0, INT32_MIN, INT32_MAX, 255, -255, 65535, 65536, random.word()});
    return random.oneIn(3) ? odd : random.between(-400, 400);
}

float drawFloatBound(Random& random) {
    const float odd = random.pick({0.0f, -0.0f, 3e38f, -3e38f, 1e-40f, 16777216.0f});
    return random.oneIn(4) ? odd : static_cast<float>(random.between(-30000, 30000)) / 64.0f;
}

ZetNoiseParam drawParam(Random& random) {
    ZetNoiseParam param{random.below(2), static_cast<std::uint32_t>(random.word()), 0, 0, 0, 0};
    if (random.oneIn(4)) param.seed = random.pick({0u, 1u, 0xFFFFFFFFu, 0x80000000u});
    param.lowInt = drawBound(random);
    param.highInt = random.oneIn(10) ? param.lowInt : drawBound(random);
    param.lowFP = drawFloatBound(random);
    param.highFP = drawFloatBound(random);
    if (random.oneIn(60)) param.noise = random.pick({-1, 2, 256});
    return param;
}

Call drawNoise(Scene& scene, Random& random) {
    ImageShape shape = drawShape(random);
    if (shape.depth == ZET_DEPTH_1U && !random.oneIn(20)) shape.depth = ZET_DEPTH_8U;
    shape.roi = drawRegion(shape, random);
    TestImage& image = scene.add("image", shape, random, drawValues(random));
    maybeMask(scene, image, random);
    if (random.oneIn(80)) image.record.align = 5;
    const ZetNoiseParam param = drawParam(random);
    const bool given = !random.oneIn(80);
    ZetImage* record = &image.record;
    return {std::to_string(param.noise) + " seed " + std::to_string(param.seed) + " " + std::to_string(param.lowInt) +
                " " + std::to_string(param.highInt) + " " + std::to_string(param.lowFP) + " " +
                std::to_string(param.highFP),
            [=] { return std::to_string(zetNoiseImage(record, given ? &param : nullptr)); },
            [=](Model& model) { return std::to_string(modelNoiseImage(model, record, given ? &param : nullptr)); }};
}

TEST(Noise, AgreesWithTheModel) { compareWithModel(&drawNoise, {.compare = {.nanEqual = true}}); }
TEST(Noise, FailsCleanlyAtEveryStep) { failEveryStep(&drawNoise); }

// ---- by hand

TEST(NoiseExample, TheDraws) {
    NoiseStream stream(1);
    for (const std::uint32_t expected : {1676100226u, 2706444681u, 2581264696u, 59565502u, 3187956963u, 1985571928u})
        EXPECT_EQ(stream.draw(), expected);
}

using Bytes = std::vector<std::uint8_t>;

Bytes withNoise(const ZetNoiseParam& param, std::uint8_t value) {
    Grid<std::uint8_t> grid(ZET_DEPTH_8U, 6, Bytes(6, value));
    EXPECT_EQ(zetNoiseImage(&grid.image, &param), 0);
    return grid.samples;
}

TEST(NoiseExample, UniformBytes) {
    ZetNoiseParam param{};
    zetNoiseUniformInit(&param, 1, 0, 100);
    const Bytes expected{39, 63, 60, 1, 74, 46};
    EXPECT_EQ(withNoise(param, 0), expected);
    zetNoiseUniformInit(&param, 1, 100, 0);
    EXPECT_EQ(withNoise(param, 0), expected);
    zetNoiseUniformInit(&param, 5, 7, 7);
    EXPECT_EQ(withNoise(param, 3), Bytes(6, 10));
    zetNoiseUniformInit(&param, 5, 255, 400);
    EXPECT_EQ(withNoise(param, 3), Bytes(6, 255));
    zetNoiseUniformInit(&param, 5, -400, -300);
    EXPECT_EQ(withNoise(param, 99), Bytes(6, 0));
}

TEST(NoiseExample, GaussianBytes) {
    ZetNoiseParam param{};
    zetNoiseGaussianInit(&param, 1, 0, 10);
    EXPECT_EQ(withNoise(param, 100), (Bytes{100, 91, 113, 119, 94, 98}));
}

TEST(NoiseExample, InitLeavesTheFloats) {
    ZetNoiseParam param{9, 9, 9, 9, 1.5f, 2.5f};
    zetNoiseGaussianInit(&param, 4000000000u, -3, 8);
    EXPECT_EQ(param.noise, ZET_NOISE_GAUSSIAN);
    EXPECT_EQ(param.seed, 4000000000u);
    EXPECT_EQ(param.lowInt, -3);
    EXPECT_EQ(param.highInt, 8);
    zetNoiseUniformInit(&param, 2, 10, 20);
    EXPECT_EQ(param.noise, ZET_NOISE_UNIFORM);
    EXPECT_EQ(param.lowFP, 1.5f);
    EXPECT_EQ(param.highFP, 2.5f);
}

// The highest value at the limit of 32S, and the pixels behind a masked one.
TEST(NoiseExample, LimitsAndMasks) {
    ZetNoiseParam param{ZET_NOISE_UNIFORM, 1, 1, INT32_MAX, 0, 0};
    Grid<std::int32_t> words(ZET_DEPTH_32S, 3, {INT32_MAX, INT32_MAX, INT32_MIN});
    EXPECT_EQ(zetNoiseImage(&words.image, &param), 0);
    EXPECT_EQ(words.samples[0], INT32_MAX);
    EXPECT_EQ(words.samples[1], INT32_MAX);
    EXPECT_GT(words.samples[2], INT32_MIN);
    zetNoiseUniformInit(&param, 1, 0, 100);
    Grid<std::uint8_t> grid(ZET_DEPTH_8U, 4, Bytes(4, 0));
    Grid<std::uint8_t> mask(ZET_DEPTH_1U, 1, {0xB0, 0, 0, 0});
    mask.image.width = 4;
    mask.image.height = 1;
    mask.image.widthStep = 4;
    grid.image.maskImage = &mask.image;
    EXPECT_EQ(zetNoiseImage(&grid.image, &param), 0);
    EXPECT_EQ(grid.samples, (Bytes{39, 0, 63, 60}));
}

TEST(NoiseRefusals, InOrder) {
    Grid<std::uint8_t> grid(ZET_DEPTH_1U, 4, Bytes(8, 1));
    grid.image.align = 3;
    ZetNoiseParam param{2, 1, 0, 0, 0, 0};
    const ZetNoiseParam* given = nullptr;
    EventLog log;
    expectRefusals(log, {"zetNoiseImage", "zetnoise", [&] { return zetNoiseImage(&grid.image, given); }},
                   {{-21, "Incorrect Image", [&] { grid.image.align = 4; }},
                    {-5, "(noiseParam == 0)", [&] { given = &param; }},
                    {-5, "(image->depth == 1)", [&] { grid.image.depth = ZET_DEPTH_8U; }},
                    {-5, "((noiseParam->noise != ZET_NOISE_UNIFORM) && (noiseParam->noise != ZET_NOISE_GAUSSIAN))",
                     [&] { param.noise = 1; }}});
}

}  // namespace
}  // namespace zetpxl::test
