// Images for the operations of the common frame, which ask for equal depths, channels and alpha.
#pragma once

#include "tests/filter/draw_filter.h"

namespace zetpxl::test {

// `widest`: of images in a few rows.
inline Filtered drawFrameImages(Scene& scene, Random& random, std::int32_t widest = 0) {
    const DrawRules draw{.largest = 32};
    ImageShape first = drawShape(random, draw);
    maybeTall(first, random);
    if (widest > 0) {
        first.width = random.between(widest / 3, widest);
        first.height = random.between(1, 20);
    }
    const bool alike = !random.oneIn(6);
    TestImage& src = addOperand(scene, "src", first, random, draw);
    ImageShape shape = drawPartner(first, random, draw);
    if (alike) {
        shape.nChannels = first.nChannels;
        shape.alphaChannel = first.alphaChannel;
    }
    if (widest > 0) {
        shape.width = first.width;
        shape.height = first.height;
    }
    shape.roi = drawRegion(shape, random);
    TestImage& dst = scene.add("dst", shape, random, drawValues(random));
    maybeMask(scene, dst, random, draw);
    if (random.oneIn(10)) dst.setMask(src.mask);
    if (alike) putRight(src, dst);
    return {random.oneIn(50) ? &dst : &src, &dst};
}

}  // namespace zetpxl::test
