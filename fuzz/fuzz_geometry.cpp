// Any matrix, quadrangle, angle or map: the geometric operations touch no memory but the images', whatever the numbers are.
//
// The input chooses operation, images and numbers; images are small and in blocks of exactly their own length, so that the
// sanitizers see any step outside.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "zetpxl.h"

namespace {

// What is left of the input; zeros behind its end.
struct Input {
    const std::uint8_t* data;
    std::size_t size;

    template <class T>
    T take() {
        T value{};
        const std::size_t part = std::min(size, sizeof(T));
        std::memcpy(&value, data, part);
        data += part;
        size -= part;
        return value;
    }
    std::int32_t below(std::int32_t limit) { return take<std::uint8_t>() % limit; }
};

constexpr std::int32_t kTileSide = 8;

// An image, its pixels in one block or in tiles of their own blocks.
struct Picture {
    ZetImage* image = nullptr;
    ZetROI roi{};
    ZetTileInfo tiles{};
    std::vector<std::vector<std::uint8_t>> blocks;
    std::int32_t tileCols = 1;
};

void handOut(ZetImage* image, std::int32_t col, std::int32_t row, std::int32_t mode) {
    if (mode == ZET_TILE_RELEASE) return;
    auto* picture = static_cast<Picture*>(image->tileInfo->id);
    const auto index = static_cast<std::size_t>(row * picture->tileCols + col);
    if (index >= picture->blocks.size()) std::abort();
    image->tileInfo->tileData = picture->blocks[index].data();
}

std::int32_t sampleBits(std::uint32_t depth) { return static_cast<std::int32_t>(depth & 0x7FFFFFFFu); }

// Bytes of `width` columns and `height` rows, rows aligned to 4 bytes.
std::size_t blockBytes(const ZetImage& image, std::int32_t width, std::int32_t height) {
    const std::int32_t perRow = image.dataOrder == 0 ? width * image.nChannels : width;
    const std::int32_t step = (perRow * sampleBits(image.depth) + 31) / 32 * 4;
    return static_cast<std::size_t>(step * height * (image.dataOrder == 0 ? 1 : image.nChannels));
}

void addPixels(Input* input, Picture* picture, bool tiled) {
    ZetImage* image = picture->image;
    const std::int32_t tileRows = tiled ? (image->height + kTileSide - 1) / kTileSide : 1;
    picture->tileCols = tiled ? (image->width + kTileSide - 1) / kTileSide : 1;
    const std::size_t bytes =
        tiled ? blockBytes(*image, kTileSide, kTileSide) : blockBytes(*image, image->width, image->height);
    picture->blocks.resize(static_cast<std::size_t>(tileRows * picture->tileCols));
    for (auto& block : picture->blocks) block.assign(bytes, input->take<std::uint8_t>());
    if (!tiled) image->imageData = picture->blocks[0].data();
}

void addRegion(Input* input, Picture* picture) {
    picture->roi = {input->below(picture->image->nChannels + 1), input->below(40), input->below(40),
                    1 + input->below(40), 1 + input->below(40)};
    picture->image->roi = &picture->roi;
}

void makePicture(Input* input, std::uint32_t depth, std::int32_t nChannels, std::int32_t order, Picture* picture) {
    const bool tiled = input->below(3) == 0;
    picture->tiles = {handOut, picture, nullptr, kTileSide, kTileSide};
    picture->image = zetCreateImageHeader(nChannels, input->below(4) == 0 ? nChannels : 0, depth, "RGBA", "RGBA", order,
                                          0, 4, 1 + input->below(40), 1 + input->below(40), nullptr, nullptr, nullptr,
                                          tiled ? &picture->tiles : nullptr);
    if (!picture->image) std::abort();
    addPixels(input, picture, tiled);
    if (input->below(3) == 0) addRegion(input, picture);
}

void makeMap(Input* input, Picture* picture) {
    makePicture(input, ZET_DEPTH_32F, 1, 0, picture);
    picture->image->alphaChannel = 0;
    for (auto& block : picture->blocks)
        for (std::size_t i = 0; i + sizeof(float) <= block.size(); i += sizeof(float)) {
            const float position = input->below(4) ? static_cast<float>(input->below(80)) / 2 : input->take<float>();
            std::memcpy(block.data() + i, &position, sizeof position);
        }
}

// Everyday numbers most of the time, any others sometimes.
double number(Input* input) {
    return input->below(4) ? static_cast<double>(input->take<std::int8_t>()) / 16 : input->take<double>();
}

void callOperation(Input* input, ZetImage* src, ZetImage* dst) {
    const std::int32_t interpolate = input->below(3) + (input->below(2) ? ZET_INTER_BLEND_EDGES : 0);
    double numbers[8];
    for (double& n : numbers) n = number(input);
    double coeffs[6];
    switch (input->below(5)) {
        case 0:
            return zetWarpAffine(src, dst, numbers, interpolate);
        case 1:
            return zetRotate(src, dst, input->below(2) ? 90.0 * input->below(5) : numbers[0], numbers[1], numbers[2],
                             interpolate);
        case 2:
            return zetShear(src, dst, numbers[0], numbers[1], numbers[2], numbers[3], interpolate);
        case 3:
            std::fill_n(coeffs, 6, 0.5);
            zetGetAffineTransform(src, coeffs, numbers);
            zetSetErrStatus(0);
            return zetWarpAffine(src, dst, coeffs, interpolate);
        default:
            break;
    }
    Picture xMap;
    Picture yMap;
    makeMap(input, &xMap);
    makeMap(input, &yMap);
    zetRemap(src, xMap.image, yMap.image, dst, interpolate);
    zetDeallocate(xMap.image, ZET_IMAGE_HEADER);
    zetDeallocate(yMap.image, ZET_IMAGE_HEADER);
}

std::int32_t forget(std::int32_t status, const char*, const char*, const char*, std::int32_t) { return status; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    zetSetErrMode(ZET_ErrorModeParent);
    zetRedirectError(forget);
    zetSetErrStatus(0);
    Input input{bytes, size};
    const std::uint32_t depths[] = {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32F};
    const std::uint32_t depth = depths[input.below(4)];
    const std::int32_t nChannels = depth == ZET_DEPTH_1U ? 1 : 1 + input.below(4);
    const std::int32_t order = input.below(2);
    Picture src;
    Picture dst;
    makePicture(&input, depth, nChannels, order, &src);
    makePicture(&input, depth, nChannels, order, &dst);
    callOperation(&input, src.image, dst.image);
    zetDeallocate(src.image, ZET_IMAGE_HEADER);
    zetDeallocate(dst.image, ZET_IMAGE_HEADER);
    return 0;
}
