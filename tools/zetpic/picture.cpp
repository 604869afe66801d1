#include "picture.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zetpic {

bool findChannels(const ZetImage& image, Channels* channels) {
    const std::int32_t alpha = image.alphaChannel - 1;
    const std::int32_t colours = image.alphaChannel != 0 ? image.nChannels - 1 : image.nChannels;
    if (colours == 1) {
        *channels = {0, 0, 0, alpha, true};
        return true;
    }
    const auto position = [&](char name) {
        const auto* const found = std::find(std::begin(image.channelSeq), std::end(image.channelSeq), name);
        return static_cast<std::int32_t>(found - std::begin(image.channelSeq));
    };
    *channels = {position('R'), position('G'), position('B'), alpha, false};
    return colours == 3 && std::max({channels->red, channels->green, channels->blue}) < 3;
}

const std::uint8_t* sampleAt(const ZetImage& image, std::int32_t x, std::int32_t row, std::int32_t channel) {
    const std::ptrdiff_t bytes = static_cast<std::ptrdiff_t>(image.depth & ~ZET_DEPTH_SIGN) / 8;
    const auto* const data = static_cast<const std::uint8_t*>(image.imageData);
    if (image.dataOrder == 0)
        return data + std::ptrdiff_t{row} * image.widthStep + (std::ptrdiff_t{x} * image.nChannels + channel) * bytes;
    return data + (std::ptrdiff_t{channel} * image.height + row) * image.widthStep + x * bytes;
}

std::int32_t memoryRow(const ZetImage& image, std::int32_t y) { return image.origin == 1 ? image.height - 1 - y : y; }

void packRow(const ZetImage& image, const Channels& channels, std::int32_t row, std::uint8_t* out) {
    if (image.depth == ZET_DEPTH_1U) {
        std::memcpy(out, sampleAt(image, 0, row, 0), static_cast<std::size_t>((image.width + 7) / 8));
        return;
    }
    const std::int32_t order[] = {channels.red, channels.green, channels.blue, channels.alpha};
    const std::size_t bytes = image.depth / 8;
    for (std::int32_t x = 0; x < image.width; ++x)
        for (std::int32_t c = channels.grey ? 2 : 0; c < (channels.alpha >= 0 ? 4 : 3); ++c, out += bytes)
            std::memcpy(out, sampleAt(image, x, row, order[c]), bytes);
}

std::string depthName(std::uint32_t depth) {
    if (depth == ZET_DEPTH_32F) return "32F";
    return std::to_string(depth & ~ZET_DEPTH_SIGN) + ((depth & ZET_DEPTH_SIGN) != 0 ? "S" : "U");
}

}  // namespace zetpic
