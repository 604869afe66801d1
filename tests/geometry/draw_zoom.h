// Images and ratios for changes of scale, drawn so that most calls go through and make some pixels.
#pragma once

#include <algorithm>
#include <string>

#include "tests/filter/draw_filter.h"

namespace zetpxl::test {

struct Ratio {
    std::int32_t dst, src;
};

struct ZoomImages {
    TestImage* src;
    TestImage* dst;
    Ratio x, y;
};

inline Ratio drawUp(Random& random) {
    if (random.oneIn(4)) {
        const std::int32_t src = random.between(1, 12);
        return {src + random.below(12), src};
    }
    return random.pick<Ratio>({{1, 1}, {2, 1}, {3, 2}, {7, 3}, {4, 3}, {9, 1}, {6, 4}, {33, 32}});
}

inline Ratio drawDown(Random& random) {
    if (random.oneIn(4)) return {random.between(1, 12), random.between(12, 20)};
    return random.pick<Ratio>({{1, 1}, {2, 3}, {1, 2}, {3, 8}, {1, 5}, {4, 6}, {31, 32}, {1, 40}});
}

// None, negative ones and ones whose products with any size no word holds.
inline Ratio drawOddRatio(Random& random, bool smallBlocks) {
    constexpr std::int32_t kMost = INT32_MAX;
    if (random.oneIn(2)) return random.pick<Ratio>({{0, 1}, {2, 0}, {0, 0}, {-2, -3}, {3, -1}, {INT32_MIN, kMost}});
    if (smallBlocks || random.oneIn(2)) return random.pick<Ratio>({{kMost, 1}, {kMost, kMost}, {1000000007, 3}});
    return random.pick<Ratio>({{1, kMost}, {2, kMost}, {3, 100000}, {kMost - 1, kMost}});
}

inline Ratio drawRatio(Random& random, bool up, bool smallBlocks) {
    if (random.oneIn(60)) return drawOddRatio(random, smallBlocks);
    return up ? drawUp(random) : drawDown(random);
}

// A size that holds what `size` pixels give, or a little more or less.
inline std::int32_t scaledSize(std::int32_t size, const Ratio& ratio, Random& random) {
    if (ratio.src < 1 || ratio.dst < 1) return random.between(1, 40);
    const std::int64_t made = std::int64_t{size} * ratio.dst / ratio.src + random.between(-3, 6);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(made, 1, 150));
}

inline ImageShape drawZoomSource(Random& random) {
    ImageShape shape = drawShape(random, {.largest = random.oneIn(2) ? 70 : 24});
    if ((shape.depth & ZET_DEPTH_SIGN) && !random.oneIn(15))
        shape.depth = random.pick({ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32F});
    if (shape.depth != ZET_DEPTH_1U && random.oneIn(6)) shape.nChannels = 4, shape.alphaChannel = 0;
    if (shape.nChannels == 1 && !random.oneIn(4)) shape.alphaChannel = 0;
    if (random.oneIn(5)) (random.oneIn(2) ? shape.width : shape.height) = random.between(1, 4);
    if (random.oneIn(4)) tileSmall(shape, random);
    return shape;
}

// More than one of the squares that an untiled destination is cut into, out of a source just large enough.
inline void drawSquares(ImageShape& src, ImageShape& dst, const ZoomImages& ratios, Random& random) {
    const bool wide = random.oneIn(2);
    tileSmall(src, random);
    dst.tileWidth = dst.tileHeight = 0;
    dst.width = wide ? random.between(60, 200) : random.between(1, 16);
    dst.height = wide ? random.between(1, 16) : random.between(60, 200);
    src.width = scaledSize(dst.width, {ratios.x.src, ratios.x.dst}, random);
    src.height = scaledSize(dst.height, {ratios.y.src, ratios.y.dst}, random);
}

// Rows wider than any piece that they are made in, and more of them than are made at a time.
inline void drawWide(ImageShape& src, ImageShape& dst, const ZoomImages& ratios, Random& random) {
    const bool wide = random.oneIn(2);
    src.tileWidth = src.tileHeight = dst.tileWidth = dst.tileHeight = 0;
    dst.width = wide ? random.between(400, 1300) : random.between(1, 16);
    dst.height = wide ? random.between(1, 9) : random.between(200, 560);
    const auto source = [](std::int32_t size, const Ratio& ratio) {
        if (ratio.src < 1 || ratio.dst < 1) return 8;
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{size} * ratio.src / ratio.dst, 1, 1500));
    };
    src.width = source(dst.width, ratios.x) + random.below(3);
    src.height = source(dst.height, ratios.y) + random.below(3);
}

inline void drawZoomRegions(ImageShape& src, ImageShape& dst, Random& random) {
    for (ImageShape* shape : {&src, &dst}) {
        shape->roi = drawRegion(*shape, random);
        if (!shape->roi || random.oneIn(10)) continue;
        shape->roi->xOffset %= random.oneIn(2) ? shape->width : shape->width / 4 + 1;
        shape->roi->yOffset %= random.oneIn(2) ? shape->height : shape->height / 4 + 1;
        if (random.oneIn(3)) continue;
        shape->roi->width += shape->width / 2;
        shape->roi->height += shape->height / 2;
    }
    if (random.oneIn(8)) return;
    const bool one = (src.roi && src.roi->coi) != (dst.roi && dst.roi->coi);
    for (ImageShape* shape : {&src, &dst})  // a channel to or from an only one
        if (one && !(shape->roi && shape->roi->coi) && !random.oneIn(4)) shape->nChannels = 1, shape->alphaChannel = 0;
}

// Mostly for all of a region, or cutting it.
inline std::int32_t drawMaskSide(std::int32_t size, Random& random) {
    return random.oneIn(3) ? random.between(1, std::max(1, size)) : std::max(1, size + random.between(-3, 2));
}

// Of the source's masks only interleaved ones can be scaled.
inline void drawZoomMask(Scene& scene, TestImage& image, Random& random) {
    maybeMask(scene, image, random);
    if (!image.mask) return;
    TestImage& mask = *image.mask;
    if (!random.oneIn(12)) mask.shape.dataOrder = mask.record.dataOrder = 0;
    if (!mask.record.roi || random.oneIn(3)) return;
    const Area part = modelRegion(image.record);
    mask.roi.xOffset = random.below(std::min(12, mask.shape.width));
    mask.roi.yOffset = random.below(std::min(5, mask.shape.height));
    mask.roi.width = drawMaskSide(part.width, random);
    mask.roi.height = drawMaskSide(part.height, random);
    mask.shape.roi = mask.roi;
}

inline ImageShape drawZoomTarget(const ImageShape& src, const ZoomImages& ratios, Random& random) {
    ImageShape shape = drawPartner(src, random, {.largest = 32});
    if (!random.oneIn(10)) shape.nChannels = src.nChannels, shape.alphaChannel = src.alphaChannel;
    if (shape.depth == ZET_DEPTH_1U) shape.nChannels = 1;
    if (shape.alphaChannel) shape.alphaChannel = shape.nChannels;
    if (random.oneIn(4)) return shape;
    shape.width = scaledSize(src.width, ratios.x, random);
    shape.height = scaledSize(src.height, ratios.y, random);
    return shape;
}

inline void drawZoomRatios(ZoomImages& images, bool mayShrink, bool smallBlocks, Random& random) {
    for (Ratio* ratio : {&images.x, &images.y}) {
        const bool up = mayShrink ? random.oneIn(3) : !random.oneIn(50);
        *ratio = drawRatio(random, up, smallBlocks);
    }
}

inline ZoomImages drawZoomImages(Scene& scene, Random& random, bool mayShrink) {
    ZoomImages images{};
    ImageShape first = drawZoomSource(random);
    const bool squares = random.oneIn(7);
    drawZoomRatios(images, mayShrink, squares || first.tileWidth, random);
    ImageShape second = drawZoomTarget(first, images, random);
    if (squares) drawSquares(first, second, images, random);
    if (!squares && random.oneIn(20)) drawWide(first, second, images, random);
    drawZoomRegions(first, second, random);
    images.src = &scene.add("src", first, random, drawValues(random));
    images.dst = &scene.add("dst", second, random, drawValues(random));
    drawZoomMask(scene, *images.src, random);
    drawZoomMask(scene, *images.dst, random);
    if (images.src->mask && random.oneIn(12)) images.dst->setMask(images.src->mask);
    if (random.oneIn(80)) (random.oneIn(2) ? images.src : images.dst)->record.align = 5;
    if (random.oneIn(60)) images.dst = images.src;
    return images;
}

inline std::string textOf(const ZoomImages& images) {
    const auto text = [](const Ratio& r) { return std::to_string(r.dst) + "/" + std::to_string(r.src) + " "; };
    return "x " + text(images.x) + "y " + text(images.y);
}

}  // namespace zetpxl::test
