#include "tests/support/draw.h"

#include <algorithm>

namespace zetpxl::test {
namespace {

std::int32_t drawSide(Random& random, std::int32_t largest) {
    if (random.oneIn(12)) return random.between(1, 3);
    if (random.oneIn(25)) return largest + random.below(largest * 2);
    return random.between(1, largest);
}

std::int32_t drawBorderConst(Random& random) { return random.oneIn(3) ? random.word() : random.between(-300, 300); }

void drawChannels(ImageShape& shape, Random& random) {
    shape.nChannels = 1;
    if (shape.depth != ZET_DEPTH_1U && !random.oneIn(3)) shape.nChannels = random.oneIn(12) ? 5 : random.between(1, 4);
    shape.alphaChannel = random.oneIn(shape.nChannels == 1 ? 12 : 4) ? shape.nChannels : 0;
}

void drawTiles(ImageShape& shape, Random& random) {
    shape.tileWidth = 8 * random.between(1, random.oneIn(3) ? 6 : 2);
    shape.tileHeight = 8 * random.between(1, random.oneIn(3) ? 6 : 2);
}

// Offset and length of a region in one direction of an image with `size` pixels.
void drawSpan(Random& random, std::int32_t size, std::int32_t& offset, std::int32_t& length) {
    offset = random.below(size);
    switch (random.below(6)) {
        case 0:
            length = random.between(1, size * 2);
            break;  // may hang over
        case 1:
            length = 1;
            break;
        case 2:
            offset = 0;
            length = size + random.below(3);
            break;
        default:
            length = random.between(1, size - offset);
            break;
    }
}

}  // namespace

std::uint32_t drawDepth(Random& random) {
    return random.pick({ZET_DEPTH_1U, ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_8S, ZET_DEPTH_16U, ZET_DEPTH_16S,
                        ZET_DEPTH_32S, ZET_DEPTH_32F});
}

Values drawValues(Random& random) {
    return random.pick({Values::kAny, Values::kAny, Values::kSmall, Values::kExtreme});
}

ImageShape drawShape(Random& random, const DrawRules& rules) {
    ImageShape shape;
    shape.depth = drawDepth(random);
    drawChannels(shape, random);
    shape.dataOrder = random.below(2);
    shape.origin = random.below(2);
    shape.align = random.pick({4, 8, 16, 32});
    shape.width = drawSide(random, rules.largest);
    shape.height = drawSide(random, rules.largest);
    if (random.oneIn(40)) {  // wider than any piece that an operation cuts rows into
        shape.width = random.between(400, 1300);
        shape.height = random.between(1, 5);
    }
    if (rules.tiles && random.oneIn(3)) drawTiles(shape, random);
    if (random.oneIn(5)) shape.extraStep = random.between(1, 3);
    shape.cutTail = random.oneIn(3);
    for (std::size_t side = 0; side < 4; ++side) {
        shape.borderMode[side] = random.below(4);
        if (random.oneIn(6)) shape.borderMode[side] |= random.word() & ~3;
        shape.borderConst[side] = drawBorderConst(random);
    }
    return shape;
}

ImageShape drawPartner(const ImageShape& first, Random& random, const DrawRules& rules) {
    ImageShape shape = drawShape(random, rules);
    if (random.oneIn(25)) return shape;
    shape.depth = first.depth;
    if (!random.oneIn(40)) shape.dataOrder = first.dataOrder;
    if (!random.oneIn(40)) shape.origin = first.origin;
    shape.nChannels = first.nChannels;
    shape.alphaChannel = first.alphaChannel;
    if (random.oneIn(3)) drawChannels(shape, random);
    if (!random.oneIn(3)) return shape;
    shape.width = first.width;
    shape.height = first.height;
    shape.align = first.align;
    shape.cutTail = first.cutTail;
    shape.extraStep = first.extraStep;
    return shape;
}

std::optional<ZetROI> drawRegion(const ImageShape& shape, Random& random) {
    if (random.oneIn(3)) return std::nullopt;
    ZetROI roi{};
    if (random.oneIn(3)) roi.coi = random.between(0, shape.nChannels);
    drawSpan(random, shape.width, roi.xOffset, roi.width);
    drawSpan(random, shape.height, roi.yOffset, roi.height);
    if (random.oneIn(30)) roi.xOffset = shape.width + random.below(3);
    if (random.oneIn(30)) roi.yOffset = shape.height + random.below(3);
    return roi;
}

TestImage& addMask(Scene& scene, const std::string& name, std::int32_t width, std::int32_t height, Random& random) {
    ImageShape shape = drawShape(random, {.tiles = false});
    shape.depth = ZET_DEPTH_1U;
    shape.nChannels = 1;
    shape.alphaChannel = random.oneIn(20) ? 1 : 0;
    shape.width = random.oneIn(5) ? shape.width : width + random.below(20);
    shape.height = random.oneIn(5) ? shape.height : height + random.below(8);
    shape.roi = drawRegion(shape, random);
    TestImage& mask = scene.add(name, shape, random);
    if (random.oneIn(12)) mask.setMask(&addMask(scene, name + "'", width, height, random));
    return mask;
}

void maybeMask(Scene& scene, TestImage& image, Random& random, const DrawRules& rules) {
    if (!rules.masks || !random.oneIn(3)) return;
    const std::int32_t width =
        image.shape.roi ? std::min(image.shape.roi->width, image.shape.width) : image.shape.width;
    image.setMask(&addMask(scene, "mask of " + image.name, width, image.shape.height, random));
}

}  // namespace zetpxl::test
