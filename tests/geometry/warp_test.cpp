// Warps, turns and shears against the model.
#include <gtest/gtest.h>

#include <cstdio>
#include <span>

#include "tests/geometry/draw_warp.h"
#include "tests/support/model_warp.h"

namespace zetpxl::test {
namespace {

using Matrix = std::array<double, 6>;

std::string textOf(std::span<const double> numbers) {
    std::string text;
    for (const double number : numbers) {
        char digits[40];
        // A NaN has no sign that anyone could rely on.
        std::snprintf(digits, sizeof digits, "%.17g ", std::isnan(number) ? std::nan("") : number);
        text += digits;
    }
    return text;
}

Call drawWarp(Scene& scene, Random& random) {
    const Filtered images = drawWarpImages(scene, random);
    ZetImage* src = &images.src->record;
    ZetImage* dst = &images.dst->record;
    const Linear c = drawLinear(random);
    const Shift shift = drawShift(c, *src, *dst, random);
    Matrix matrix{c[0], c[1], shift.x, c[2], c[3], shift.y};
    const std::int32_t mode = drawMode(random);
    if (random.oneIn(15)) matrix[static_cast<std::size_t>(random.below(6))] = drawOdd(random);
    if (random.oneIn(40)) matrix[static_cast<std::size_t>(random.below(6))] = drawOdd(random);
    return {textOf(matrix) + " mode " + std::to_string(mode),
            [=] { return zetWarpAffine(src, dst, matrix.data(), mode), ""; },
            [=](Model& model) { return modelWarpAffine(model, src, dst, matrix.data(), mode), ""; }};
}

double drawAngle(Random& random) {
    if (random.oneIn(20)) return drawOdd(random);
    const double angle = random.oneIn(2) ? random.between(-10, 10) * 90.0 : drawReal(random, 800);
    return random.oneIn(30) ? angle * 1e9 : angle;
}

struct Arguments {
    double angle, xShift, yShift;
};

// What turns a pixel of the source close to one of the destination, mostly by whole shifts at right angles.
Arguments drawTurn(const ZetImage& src, const ZetImage& dst, Random& random) {
    const double angle = drawAngle(random);
    const double r = angle * 0.017453292519943295;
    const bool odd = !std::isfinite(r);
    const Linear c = odd ? Linear{1, 0, 0, 1} : Linear{std::cos(r), std::sin(r), -std::sin(r), std::cos(r)};
    Shift shift = drawShift(c, src, dst, random);
    if (!random.oneIn(3)) shift = {std::round(shift.x), std::round(shift.y)};
    if (random.oneIn(30)) shift.x = drawOdd(random);
    return {angle, shift.x, shift.y};
}

Call drawRotate(Scene& scene, Random& random) {
    const Filtered images = drawWarpImages(scene, random, random.oneIn(3));
    ZetImage* src = random.oneIn(80) ? nullptr : &images.src->record;
    ZetImage* dst = random.oneIn(80) ? nullptr : &images.dst->record;
    const auto [angle, x, y] = drawTurn(images.src->record, images.dst->record, random);
    const std::int32_t mode = drawMode(random);
    const std::array<double, 3> numbers{angle, x, y};
    return {textOf(numbers) + " mode " + std::to_string(mode),
            [=] { return zetRotate(src, dst, numbers[0], numbers[1], numbers[2], mode), ""; },
            [=](Model& model) { return modelRotate(model, src, dst, numbers, mode), ""; }};
}

// About the lengths of the blocks that turns go in, and of two or three of them.
std::int32_t drawTurnedSide(Random& random, std::uint32_t depth) {
    const std::int32_t beside = random.oneIn(2) ? 0 : random.between(-9, 9);
    if (depth == ZET_DEPTH_1U && random.oneIn(3)) return random.pick({512, 1024}) + beside;
    if (random.oneIn(4)) return random.between(1, 24);
    return std::max(1, random.pick({8, 16, 32, 64, 64, 96, 128}) + beside);
}

ImageShape drawTurnedShape(Random& random) {
    ImageShape shape = drawShape(random, {.tiles = false});
    if (shape.depth & ZET_DEPTH_SIGN)
        shape.depth = random.pick({ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_8U, ZET_DEPTH_32F});
    if (shape.depth == ZET_DEPTH_1U) shape.nChannels = 1, shape.alphaChannel = 0;
    shape.width = drawTurnedSide(random, shape.depth);
    shape.height = drawTurnedSide(random, shape.depth);
    if (shape.width > 500 && shape.height > 500 && !random.oneIn(4)) shape.height %= 100;
    shape.height = std::max(shape.height, 1);
    if (random.oneIn(5)) shape.width = shape.height = 64;  // nothing but whole blocks
    return shape;
}

// Shifts that put the turned source onto the destination, up to a few pixels.
Shift drawCover(const ZetImage& src, const ZetImage& dst, std::int32_t turn, Random& random) {
    const Area from = modelRegion(src);
    const Area to = modelRegion(dst);
    const std::int32_t left = turn == 90 ? from.y : turn == 180 ? 1 - from.x - from.width : 1 - from.y - from.height;
    const std::int32_t top = turn == 90 ? 1 - from.x - from.width : turn == 180 ? 1 - from.y - from.height : from.x;
    const std::int32_t most = random.oneIn(2) ? 0 : 9;
    return {static_cast<double>(to.x - left + random.between(-most, most)),
            static_cast<double>(to.y - top + random.between(-most, most))};
}

Call drawExactTurn(Scene& scene, Random& random) {
    const std::int32_t turn = random.pick({90, 180, 270});
    ImageShape shape = drawTurnedShape(random);
    if (random.oneIn(3)) shape.roi = drawRegion(shape, random);
    TestImage& from = scene.add("src", shape, random, drawValues(random));
    if (turn != 180) std::swap(shape.width, shape.height);
    shape.width += random.below(9);
    shape.height += random.below(9);
    if (random.oneIn(4)) shape.extraStep = random.below(9);
    shape.roi.reset();
    if (random.oneIn(2)) shape.roi = drawRegion(shape, random);
    TestImage& to = scene.add("dst", shape, random, drawValues(random));
    putRight(from, to);
    widen(from, to);
    ZetImage* src = &from.record;
    ZetImage* dst = &to.record;
    const Shift shift = drawCover(*src, *dst, turn, random);
    const std::array<double, 3> numbers{static_cast<double>(turn), shift.x, shift.y};
    return {textOf(numbers), [=] { return zetRotate(src, dst, numbers[0], numbers[1], numbers[2], 0), ""; },
            [=](Model& model) { return modelRotate(model, src, dst, numbers, 0), ""; }};
}

Call drawShear(Scene& scene, Random& random) {
    const Filtered images = drawWarpImages(scene, random);
    ZetImage* src = &images.src->record;
    ZetImage* dst = &images.dst->record;
    std::array<double, 4> n{drawReal(random, 2), drawReal(random, 2), 0, 0};
    if (random.oneIn(8)) n = {2, 0.5, 0, 0};
    if (random.oneIn(8)) n = {random.between(-2, 2) * 0.5, 0, 0, 0};
    const Shift shift = drawShift({1, n[0], n[1], 1}, *src, *dst, random);
    n[2] = shift.x;
    n[3] = shift.y;
    const std::int32_t mode = drawMode(random);
    return {textOf(n) + " mode " + std::to_string(mode),
            [=] { return zetShear(src, dst, n[0], n[1], n[2], n[3], mode), ""; },
            [=](Model& model) { return modelShear(model, src, dst, n, mode), ""; }};
}

constexpr DifferentialRules kAnyNaN{.compare = {.nanEqual = true}};

TEST(Warp, AgreesWithTheModel) { compareWithModel(&drawWarp, kAnyNaN); }
TEST(Warp, RotateAgreesWithTheModel) { compareWithModel(&drawRotate, kAnyNaN); }
TEST(Warp, ExactTurnsAgreeWithTheModel) { compareWithModel(&drawExactTurn, kAnyNaN); }
TEST(Warp, ShearAgreesWithTheModel) { compareWithModel(&drawShear, kAnyNaN); }

TEST(Warp, FailCleanlyAtEveryStep) {
    failEveryStep(&drawWarp);
    failEveryStep(&drawRotate, {.cases = 60});
}

// ---- matrices and shifts

std::array<double, 8> drawQuad(Random& random) {
    std::array<double, 8> q{};
    for (double& number : q) number = random.oneIn(2) ? random.between(-9, 9) : drawReal(random, 50);
    if (random.oneIn(8)) return q;
    q[6] = q[0] + q[4] - q[2];
    q[7] = q[1] + q[5] - q[3];
    if (random.oneIn(20)) q[static_cast<std::size_t>(random.below(8))] = drawOdd(random);
    return q;
}

TEST(Warp, AffineTransformsAgreeWithTheModel) {
    compareWithModel([](Scene& scene, Random& random) {
        const ImageShape shape = drawShape(random);
        TestImage& src = addOperand(scene, "src", shape, random);
        const std::array<double, 8> quad = drawQuad(random);
        const ZetImage* image = random.oneIn(60) ? nullptr : &src.record;
        return Call{textOf(quad),
                    [=] {
                        Matrix c{1, 2, 3, 4, 5, 6};
                        zetGetAffineTransform(image, c.data(), quad.data());
                        return textOf(c);
                    },
                    [=](Model& model) {
                        Matrix c{1, 2, 3, 4, 5, 6};
                        modelGetAffineTransform(model, image, c.data(), quad.data());
                        return textOf(c);
                    }};
    });
}

TEST(Warp, RotateShiftsAgreeWithTheModel) {
    compareWithModel([](Scene&, Random& random) {
        const double x = drawReal(random, 100), y = drawReal(random, 100), angle = drawAngle(random);
        return Call{textOf(std::array{x, y, angle}),
                    [=] {
                        std::array<double, 2> shift{1.25, -7};
                        zetGetRotateShift(x, y, angle, &shift[0], &shift[1]);
                        return textOf(shift);
                    },
                    [=](Model&) {
                        std::array<double, 2> shift{1.25, -7};
                        modelGetRotateShift(x, y, angle, &shift[0], &shift[1]);
                        return textOf(shift);
                    }};
    });
}

}  // namespace
}  // namespace zetpxl::test
