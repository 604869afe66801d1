// Any matrices, quadrangles, angles, maps and factors: warps, turns, shears, remaps and changes of scale stay inside their
// images.
//
// The input says which images there are and which numbers an operation gets. Pixels lie in blocks of their own, so that the
// sanitizers see every step outside; tiles are handed out one block each.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "zetpxl.h"

namespace {

struct Input {
    const std::uint8_t* data;
    std::size_t size;

    template <class T>
    T take() {
        T value{};
        const std::size_t count = std::min(sizeof value, size);
        if (count > 0) std::memcpy(&value, data, count);
        data += count;
        size -= count;
        return value;
    }
    std::int32_t below(std::int32_t limit) { return take<std::uint8_t>() % limit; }
};

using Block = std::unique_ptr<std::uint8_t[]>;

struct Picture {
    ZetImage image{};
    ZetROI roi{};
    ZetTileInfo tiles{};
    std::vector<Block> blocks;
    std::int32_t tileCols = 0;
    std::int32_t failing = 0;  // this tile cannot be had
};

void onTile(ZetImage* image, std::int32_t col, std::int32_t row, std::int32_t mode) {
    auto* picture = static_cast<Picture*>(image->tileInfo->id);
    const std::int32_t index = row * picture->tileCols + col;
    if (col < 0 || row < 0 || col >= picture->tileCols) std::abort();
    if (index >= static_cast<std::int32_t>(picture->blocks.size())) std::abort();
    if (mode == ZET_TILE_RELEASE) return;
    image->tileInfo->tileData =
        index == picture->failing ? nullptr : picture->blocks[static_cast<std::size_t>(index)].get();
}

std::int32_t rowBytes(const ZetImage& image, std::int32_t width) {
    const std::int32_t channels = image.dataOrder == 0 ? image.nChannels : 1;
    const auto bits = static_cast<std::int32_t>(image.depth & 0x7FFFFFFFu);
    return (width * bits * channels + 31) / 32 * 4;
}

Block blockOf(Input* input, std::int32_t bytes) {
    Block block(new std::uint8_t[static_cast<std::size_t>(bytes)]);
    const auto given = std::min<std::size_t>(input->size, static_cast<std::size_t>(bytes));
    std::memset(block.get(), 0x5A, static_cast<std::size_t>(bytes));
    if (given > 0) std::memcpy(block.get(), input->data, given);
    return block;
}

void giveTiles(Picture* picture, Input* input) {
    ZetImage& image = picture->image;
    picture->tiles = {&onTile, picture, nullptr, 8 * (1 + input->below(3)), 8 * (1 + input->below(3))};
    image.tileInfo = &picture->tiles;
    picture->tileCols = (image.width - 1) / picture->tiles.width + 1;
    const std::int32_t count = picture->tileCols * ((image.height - 1) / picture->tiles.height + 1);
    picture->failing = input->below(64) - 1;
    const std::int32_t planes = image.dataOrder == 0 ? 1 : image.nChannels;
    const std::int32_t bytes = rowBytes(image, picture->tiles.width) * picture->tiles.height * planes;
    for (std::int32_t i = 0; i < count; ++i) picture->blocks.push_back(blockOf(input, bytes));
}

void givePixels(Picture* picture, Input* input) {
    ZetImage& image = picture->image;
    const std::int32_t planes = image.dataOrder == 0 ? 1 : image.nChannels;
    image.widthStep = rowBytes(image, image.width);
    image.imageSize = image.widthStep * image.height * planes;
    picture->blocks.push_back(blockOf(input, image.imageSize));
    image.imageData = picture->blocks[0].get();
}

void makePicture(Picture* picture, Input* input, std::uint32_t depth, std::int32_t channels, std::int32_t form) {
    ZetImage& image = picture->image;
    image.headerSize = static_cast<std::int32_t>(sizeof image);
    image.nChannels = channels;
    image.depth = depth;
    image.dataOrder = form & 1;
    image.align = 4;
    image.width = 1 + input->below(48);
    image.height = 1 + input->below(48);
    if (input->below(24) == 0) image.width += 128;
    if (input->below(3) == 0) {
        picture->roi = {input->below(channels + 1), input->below(50), input->below(50), 1 + input->below(60),
                        1 + input->below(60)};
        image.roi = &picture->roi;
    }
    input->below(3) == 0 ? giveTiles(picture, input) : givePixels(picture, input);
}

// Any number at all, or one of those that images make sense of.
double number(Input* input) {
    const std::int32_t kind = input->below(8);
    if (kind == 0) return input->take<double>();
    if (kind == 1) return input->take<std::int8_t>();
    if (kind == 2) return input->take<float>();
    return input->take<std::int16_t>() / 512.0;
}

void fill(Picture* map, Input* input) {
    const float base = static_cast<float>(number(input));
    const float step = static_cast<float>(number(input));
    for (const Block& block : map->blocks) {
        const std::int32_t width = map->image.tileInfo ? map->tiles.width : map->image.width;
        const std::int32_t height = map->image.tileInfo ? map->tiles.height : map->image.height;
        auto* values = reinterpret_cast<float*>(block.get());
        for (std::int32_t i = 0; i < width * height; ++i)
            if (i % 7 != 0) values[i] = base + step * static_cast<float>(i % 61);
    }
}

void warp(Picture* src, Picture* dst, Input* input, std::int32_t mode) {
    double coeffs[6];
    double quad[8];
    const bool byQuad = input->below(2) == 0;
    for (double& c : coeffs) c = number(input);
    for (double& c : quad) c = number(input);
    if (byQuad && input->below(8) != 0) {
        quad[6] = quad[0] + quad[4] - quad[2];
        quad[7] = quad[1] + quad[5] - quad[3];
    }
    if (byQuad) zetGetAffineTransform(&src->image, coeffs, quad);
    zetSetErrStatus(0);
    zetWarpAffine(&src->image, &dst->image, coeffs, mode);
}

void rotate(Picture* src, Picture* dst, Input* input, std::int32_t mode) {
    const double angle = input->below(4) == 0 ? input->take<std::int8_t>() * 90.0 : number(input) * 8;
    double x = number(input);
    double y = number(input);
    const double xCenter = number(input);
    const double yCenter = number(input);
    if (input->below(2) == 0) zetGetRotateShift(xCenter, yCenter, angle, &x, &y);
    zetRotate(&src->image, &dst->image, angle, x, y, mode);
}

void shear(Picture* src, Picture* dst, Input* input, std::int32_t mode) {
    const double xShear = number(input);
    const double yShear = number(input);
    const double xShift = number(input);
    const double yShift = number(input);
    zetShear(&src->image, &dst->image, xShear, yShear, xShift, yShift, mode);
}

void remap(Picture* src, Picture* dst, Input* input, std::int32_t mode) {
    Picture maps[2];
    for (Picture& map : maps) {
        makePicture(&map, input, ZET_DEPTH_32F, 1, 0);
        fill(&map, input);
    }
    zetRemap(&src->image, &maps[0].image, &maps[1].image, &dst->image, mode);
}

// Mostly factors that leave pixels, by numbers of all sizes.
std::int32_t part(Input* input) {
    const std::int32_t kind = input->below(16);
    if (kind == 0) return input->take<std::int32_t>();
    if (kind == 1) return INT32_MAX - input->below(4);
    if (kind == 2) return input->take<std::int16_t>();
    return 1 + input->below(kind < 8 ? 8 : 64);
}

// Both sides of a fraction, the greater one where the operation wants it.
struct Parts {
    std::int32_t dst, src;
};

Parts parts(Input* input, std::int32_t direction) {
    const Parts any{part(input), part(input)};
    if (direction == 0) return any;
    const Parts ordered{std::min(any.dst, any.src), std::max(any.dst, any.src)};
    return direction < 0 ? ordered : Parts{ordered.src, ordered.dst};
}

using Scale = void (*)(ZetImage*, ZetImage*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t);

// Masks of either side or both lie in images of their own, with regions and tiles as those have.
void scale(Scale operation, std::int32_t direction, Picture* src, Picture* dst, Input* input) {
    const std::int32_t mode = input->below(4);
    if (input->below(8) == 0) direction = 0;
    const Parts x = parts(input, direction);
    const Parts y = parts(input, direction);
    Picture masks[2];
    Picture* const sides[] = {src, dst};
    const std::int32_t masked = input->below(8);
    for (std::size_t i = 0; i < 2; ++i) {
        if ((masked >> i & 1) == 0) continue;
        makePicture(&masks[i], input, ZET_DEPTH_1U, 1, 0);
        sides[i]->image.maskImage = &masks[i].image;
    }
    operation(&src->image, &dst->image, x.dst, x.src, y.dst, y.src, mode);
}

void decimate(Picture* src, Picture* dst, Input* input, std::int32_t) { scale(zetDecimate, -1, src, dst, input); }

void zoom(Picture* src, Picture* dst, Input* input, std::int32_t) { scale(zetZoom, 1, src, dst, input); }

void resize(Picture* src, Picture* dst, Input* input, std::int32_t) {
    scale(zetResize, input->below(2) - 1, src, dst, input);
}

std::int32_t forget(std::int32_t status, const char*, const char*, const char*, std::int32_t) { return status; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input{data, size};
    const std::uint32_t depths[] = {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32F};
    const std::uint32_t depth = depths[input.below(4)];
    const std::int32_t channels = depth == ZET_DEPTH_1U ? 1 : 1 + input.below(3);
    const std::int32_t form = input.below(2);
    const std::int32_t mode = input.below(3) + 16 * input.below(2);
    const std::int32_t operation = input.below(7);
    Picture src, dst;
    makePicture(&src, &input, depth, channels, form);
    makePicture(&dst, &input, depth, channels, form);

    zetSetErrMode(ZET_ErrorModeParent);
    zetRedirectError(forget);
    zetSetErrStatus(0);
    void (*const operations[])(Picture*, Picture*, Input*, std::int32_t) = {warp,     rotate, shear, remap,
                                                                            decimate, zoom,   resize};
    operations[operation](&src, &dst, &input, mode);
    return 0;
}
