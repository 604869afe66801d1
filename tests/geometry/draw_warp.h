// Images and matrices for warps, drawn so that most calls go through and the source mostly lands on the destination.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "tests/filter/draw_filter.h"

namespace zetpxl::test {

// Regions of one column or row are refused at the source and show little at the destination.
inline void widen(TestImage& src, TestImage& dst) {
    for (ZetROI* roi : {&src.roi, &dst.roi}) {
        if (roi->width < 3) roi->width += 9;
        if (roi->height < 3) roi->height += 9;
    }
    src.roi.xOffset = std::max(0, std::min(src.roi.xOffset, src.shape.width - 2));
    src.roi.yOffset = std::max(0, std::min(src.roi.yOffset, src.shape.height - 2));
}

inline Filtered drawWarpImages(Scene& scene, Random& random, bool mayTile = true) {
    const DrawRules draw{.tiles = mayTile, .masks = random.oneIn(4), .largest = 32};
    ImageShape first = drawShape(random, draw);
    if (first.depth & ZET_DEPTH_SIGN && !random.oneIn(12)) first.depth = random.pick({ZET_DEPTH_8U, ZET_DEPTH_16U});
    maybeTall(first, random);
    if (random.oneIn(15)) {  // spans longer than what is sampled at a time
        first.width = random.between(60, 260);
        first.height = random.between(4, 90);
    }
    const bool isHigh = random.oneIn(60);  // more rows than are made at a time
    if (isHigh) {
        first.width = random.between(4, 40);
        first.height = random.between(500, 1100);
    }
    TestImage& src = addOperand(scene, "src", first, random, draw);
    ImageShape shape = drawPartner(first, random, draw);
    if (!random.oneIn(12)) {
        shape.nChannels = first.nChannels;
        shape.alphaChannel = first.alphaChannel;
    }
    if (random.oneIn(15)) {  // more than one of the cells that an untiled destination is cut into
        shape.width = random.between(120, 290);
        shape.height = random.between(1, 12);
    }
    if (isHigh) {
        shape.width = random.between(4, 40);
        shape.height = random.between(500, 1100);
    }
    shape.roi = drawRegion(shape, random);
    TestImage& dst = scene.add("dst", shape, random, drawValues(random));
    maybeMask(scene, dst, random, draw);
    if (!random.oneIn(8)) putRight(src, dst);
    if (!random.oneIn(8)) widen(src, dst);
    return {random.oneIn(60) ? &dst : &src, &dst};
}

inline double drawReal(Random& random, double largest) {
    return (static_cast<double>(random.next() >> 11) * 0x1p-52 - 1) * largest;
}

inline std::int32_t drawMode(Random& random) {
    if (random.oneIn(40)) return random.pick({3, 19, -1, 32, 4});
    return random.below(3) + (random.oneIn(2) ? 16 : 0);
}

inline double drawOdd(Random& random) {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    return random.pick({kInf, -kInf, std::nan(""), 1e300, -1e300, 1e18, -1e18, 4e9, -4e9, 1e-300, 0.0});
}

// How a position changes by a step to the right and by a step down: its column by the first two numbers, its row by the others.
using Linear = std::array<double, 4>;

inline Linear drawLinear(Random& random) {
    if (random.oneIn(25)) {  // a parallelogram far larger than any image
        Linear huge{};
        const double size = std::pow(10.0, random.between(2, 18));
        for (double& number : huge) number = drawReal(random, size);
        return huge;
    }
    const double turn = drawReal(random, 3.2);
    const double size = random.oneIn(2) ? 1 : std::exp(drawReal(random, 1.5));
    switch (random.below(8)) {
        case 0:
            return {1, 0, 0, 1};
        case 1:
            return random.pick<Linear>({{0, 1, -1, 0}, {-1, 0, 0, -1}, {0, -1, 1, 0}, {-1, 0, 0, 1}, {0, 1, 1, 0}});
        case 2:
            return {std::exp(drawReal(random, 1.5)), 0, 0, -std::exp(drawReal(random, 1.5))};
        case 3:
            return {random.between(-4, 4) / 2.0, random.between(-2, 2) / 2.0, random.between(-2, 2) / 2.0,
                    random.between(-4, 4) / 2.0};
        case 4:
            return {1, drawReal(random, 2), drawReal(random, 2), 1};
        case 5:
            return {drawReal(random, 2), drawReal(random, 2), drawReal(random, 2), drawReal(random, 2)};
        default:
            return {size * std::cos(turn), size * std::sin(turn), -size * std::sin(turn), size * std::cos(turn)};
    }
}

struct Shift {
    double x, y;
};

// Shifts that bring a pixel of the source's region close to one of the destination's.
inline Shift drawShift(const Linear& c, const ZetImage& src, const ZetImage& dst, Random& random) {
    const Area from = modelRegion(src);
    const Area to = modelRegion(dst);
    const double x = from.x + random.below(from.width + 1);
    const double y = from.y + random.below(from.height + 1);
    Shift shift{to.x + random.below(to.width + 1) - c[0] * x - c[1] * y,
                to.y + random.below(to.height + 1) - c[2] * x - c[3] * y};
    switch (random.below(4)) {
        case 0:
            return {std::round(shift.x), std::round(shift.y)};
        case 1:
            return {std::round(shift.x) + 0.5, std::round(shift.y) - 0.25};
        default:
            return shift;
    }
}

}  // namespace zetpxl::test
