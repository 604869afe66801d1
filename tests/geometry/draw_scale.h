// Images and factors for changes of scale, drawn so that most calls go through and most of the source shows.
#pragma once

#include <algorithm>
#include <cstring>

#include "tests/filter/draw_filter.h"

namespace zetpxl::test {

inline void setChannels(ImageShape& shape, std::int32_t nChannels, std::int32_t alphaChannel) {
    shape.nChannels = nChannels;
    shape.alphaChannel = alphaChannel;
}

// Long enough for summed positions to drift, and wider than any piece that rows are made in.
inline void maybeLong(ImageShape& shape, Random& random) {
    if (!random.oneIn(25)) return;
    shape.width = random.oneIn(3) ? random.between(900, 2200) : random.between(200, 700);
    shape.height = random.between(4, 12);
    if (random.oneIn(2)) std::swap(shape.width, shape.height);
}

inline void maybeSmallTiles(ImageShape& shape, Random& random) {
    if (random.oneIn(3)) tileSmall(shape, random);
}

inline ImageShape drawScaleSource(Random& random, const DrawRules& draw) {
    ImageShape shape = drawShape(random, draw);
    if (!random.oneIn(25)) shape.depth = random.pick({ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32F});
    if (shape.depth == ZET_DEPTH_1U) setChannels(shape, 1, shape.alphaChannel ? 1 : 0);
    maybeLong(shape, random);
    maybeSmallTiles(shape, random);
    return shape;
}

// Mostly with room for everything that the source has to give.
inline ImageShape drawScaleTarget(const ImageShape& src, Random& random, const DrawRules& draw) {
    ImageShape shape = drawPartner(src, random, draw);
    if (!random.oneIn(15)) setChannels(shape, src.nChannels, src.alphaChannel);
    if (!random.oneIn(4)) {
        shape.width = std::max(shape.width, src.width - random.below(6));
        shape.height = std::max(shape.height, src.height - random.below(6));
    }
    maybeSmallTiles(shape, random);
    return shape;
}

// Room behind the source's offset is what makes a region worth its scaling.
inline void widenRegion(TestImage& image, Random& random) {
    image.roi.xOffset %= std::max(image.shape.width / 2, 1);
    image.roi.yOffset %= std::max(image.shape.height / 2, 1);
    if (random.oneIn(2)) image.roi.width += image.shape.width / 2;
    if (random.oneIn(2)) image.roi.height += image.shape.height / 2;
    if (image.shape.roi) image.shape.roi = image.roi;  // as a failing case prints it
}

// Weights that add up to a little more than one show in samples that are all as large as can be.
inline void whiten(TestImage& image) {
    for (const auto& buffer : image.buffers) {
        buffer->allow(GuardedBuffer::Access::kData);
        std::fill_n(buffer->data(), buffer->size(), std::uint8_t{0xFF});
        if (tiled(image.record)) buffer->allow(GuardedBuffer::Access::kNone);
    }
}

// Sums of negative zeros tell which zero they began with.
inline void fillNegativeZeros(TestImage& image) {
    constexpr float zero = -0.0f;
    for (const auto& buffer : image.buffers) {
        buffer->allow(GuardedBuffer::Access::kData);
        for (std::size_t i = 0; i + 4 <= buffer->size(); i += 4) std::memcpy(buffer->data() + i, &zero, 4);
        if (tiled(image.record)) buffer->allow(GuardedBuffer::Access::kNone);
    }
}

inline Filtered drawScaled(Scene& scene, Random& random) {
    const DrawRules draw{.masks = random.oneIn(6), .largest = 48};
    const ImageShape first = drawScaleSource(random, draw);
    TestImage& src = addOperand(scene, "src", first, random, draw);
    if (random.oneIn(12) && first.depth != ZET_DEPTH_32F) whiten(src);
    if (random.oneIn(12) && first.depth == ZET_DEPTH_32F) fillNegativeZeros(src);
    ImageShape shape = drawScaleTarget(first, random, draw);
    shape.roi = drawRegion(shape, random);
    TestImage& dst = scene.add("dst", shape, random, drawValues(random));
    maybeMask(scene, dst, random, draw);
    if (!random.oneIn(8)) putRight(src, dst);
    for (TestImage* image : {&src, &dst})
        if (!random.oneIn(4)) widenRegion(*image, random);
    return {random.oneIn(80) ? &dst : &src, &dst};
}

}  // namespace zetpxl::test
