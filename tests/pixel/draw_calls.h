// Images for calls with several operands, drawn so that most calls go through and every refusal comes up.
#pragma once

#include "tests/support/differential.h"
#include "tests/support/draw.h"

namespace zetpxl::test {

// One operand that goes with `first`, with a region of its own and sometimes a mask; now and then its record is broken.
inline TestImage& addOperand(Scene& scene, const char* name, const ImageShape& first, Random& random,
                             const DrawRules& rules = {}) {
    ImageShape shape = scene.images().empty() ? first : drawPartner(first, random, rules);
    shape.roi = drawRegion(shape, random);
    const Values values = drawValues(random);
    TestImage& image = scene.add(name, shape, random, values);
    maybeMask(scene, image, random, rules);
    if (random.oneIn(80)) image.record.align = 5;
    return image;
}

struct Operands {
    TestImage* a;
    TestImage* b;
    TestImage* dst;
};

// One channel, chosen by the region, and every pixel: what may be taken as one run of bytes, padding included. In tiles
// that holds for each tile that is wholly covered.
inline TestImage& addFlatOperand(Scene& scene, const char* name, const ImageShape& first, Random& random) {
    ImageShape shape = first;
    if (random.oneIn(3)) shape.tileWidth = shape.tileHeight = 0;
    shape.roi = ZetROI{1, 0, 0, shape.width + random.below(2), shape.height};
    return scene.add(name, shape, random, drawValues(random));
}

inline Operands drawFlatOperands(Scene& scene, Random& random) {
    ImageShape first = drawShape(random);
    first.nChannels = 1;
    first.alphaChannel = 0;
    TestImage& a = addFlatOperand(scene, "a", first, random);
    TestImage& b = addFlatOperand(scene, "b", first, random);
    TestImage& dst = addFlatOperand(scene, "dst", first, random);
    return {random.oneIn(3) ? &dst : &a, random.oneIn(3) ? &dst : &b, &dst};
}

// Any two, or all three, may be one record.
inline Operands drawOperands(Scene& scene, Random& random) {
    if (random.oneIn(12)) return drawFlatOperands(scene, random);
    const ImageShape first = drawShape(random);
    TestImage& a = addOperand(scene, "a", first, random);
    TestImage& b = addOperand(scene, "b", first, random);
    TestImage& dst = addOperand(scene, "dst", first, random);
    if (random.oneIn(10)) b.setMask(a.mask);
    switch (random.below(9)) {
        case 0:
            return {&dst, &b, &dst};
        case 1:
            return {&a, &dst, &dst};
        case 2:
            return {&a, &a, &dst};
        case 3:
            return {&dst, &dst, &dst};
        default:
            return {&a, &b, &dst};
    }
}

inline std::string namesOf(const Operands& o) { return o.a->name + ", " + o.b->name + " -> " + o.dst->name; }

}  // namespace zetpxl::test
