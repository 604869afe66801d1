// A source and a destination for a neighbourhood operation, drawn so that most calls go through.
#pragma once

#include "tests/pixel/draw_calls.h"

namespace zetpxl::test {

struct FilterRules {
    std::uint32_t depth = 0;  // 0: drawn
    std::int32_t largest = 40;
    bool mayBeInPlace = true;
    bool tiledInPlace = false;  // always
    bool isLong = false;        // rows beyond any length that an operation goes another way for
};

struct Filtered {
    TestImage* src;
    TestImage* dst;
};

inline void tileSmall(ImageShape& shape, Random& random) {
    shape.tileWidth = 8 * random.between(1, 2);
    shape.tileHeight = 8 * random.between(1, 2);
}

// What most refusals come from is mostly put right: regions that begin outside and a channel of interest on one image only.
inline void putRight(TestImage& src, TestImage& dst) {
    for (TestImage* image : {&src, &dst}) {
        image->roi.xOffset %= image->record.width;
        image->roi.yOffset %= image->record.height;
    }
    const bool one = (src.record.roi && src.roi.coi) != (dst.record.roi && dst.roi.coi);
    if (one) src.roi.coi = dst.roi.coi = 0;
}

// Taller than any band that an operation cuts rows into.
inline void maybeTall(ImageShape& shape, Random& random) {
    if (!random.oneIn(12)) return;
    shape.width = random.between(1, 8);
    shape.height = random.between(60, 220);
}

// Two images of one size, so that the rows in common are long as well.
inline Filtered drawLong(Scene& scene, Random& random, ImageShape shape) {
    shape.width = random.between(1000, 1300);
    shape.height = random.oneIn(8) ? random.between(60, 100) : random.between(3, 12);
    shape.tileWidth = shape.tileHeight = 0;
    const auto add = [&](const char* name) -> TestImage& {
        if (random.oneIn(3)) shape.roi = drawRegion(shape, random);
        TestImage& image = scene.add(name, shape, random, drawValues(random));
        shape.roi.reset();
        if (random.oneIn(4)) maybeMask(scene, image, random);
        return image;
    };
    TestImage& src = add("src");
    TestImage& dst = add("dst");
    putRight(src, dst);
    return {&src, &dst};
}

// Lined up so that tiles, regions and masks of both images cut each other at odd places.
inline Filtered drawFiltered(Scene& scene, Random& random, const FilterRules& rules = {}) {
    const DrawRules draw{.largest = rules.largest};
    ImageShape first = drawShape(random, draw);
    if (rules.depth) first.depth = rules.depth;
    if (first.depth == ZET_DEPTH_1U) first.nChannels = 1;
    if (first.alphaChannel) first.alphaChannel = first.nChannels;
    maybeTall(first, random);
    if (rules.isLong) return drawLong(scene, random, first);
    if (rules.tiledInPlace) tileSmall(first, random);
    if (rules.tiledInPlace && random.oneIn(2))
        for (std::int32_t& mode : first.borderMode) mode = random.below(3);
    TestImage& src = addOperand(scene, rules.tiledInPlace ? "dst" : "src", first, random, draw);
    if (rules.tiledInPlace) return {&src, &src};
    TestImage& dst = addOperand(scene, "dst", first, random, draw);
    if (random.oneIn(10)) dst.setMask(src.mask);
    if (!random.oneIn(4)) putRight(src, dst);
    if (rules.mayBeInPlace && random.oneIn(6)) return {&dst, &dst};
    return {&src, &dst};
}

}  // namespace zetpxl::test
