// Several masks joined into one.
//   masks.1 the joined mask is as large as the smallest width and height of the masks' regions, and starts at bit 0
//   masks.2 a mask's own mask plays no part
#include "pixel/masks.h"

#include <algorithm>
#include <array>
#include <limits>

#include "core/region.h"
#include "pixel/bitruns.h"

namespace zetpxl {

namespace {

struct MaskRegion {
    const std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::int32_t bit;
};

struct MaskSet {
    std::array<ZetImage*, 3> images;
    std::size_t count;
};

MaskSet collect(ZetImage* first, ZetImage* second, ZetImage* third) {
    MaskSet set{};
    for (ZetImage* mask : {first, second, third})
        if (mask) set.images[set.count++] = mask;
    return set;
}

ZetImage* createTemporary(std::int32_t origin, std::int32_t width, std::int32_t height) {
    ZetImage* mask = zetCreateImageHeader(1, 0, ZET_DEPTH_1U, "GRAY", "G\0\0", 1, origin, 8, width, height, nullptr,
                                          nullptr, nullptr, nullptr);
    if (!mask) return nullptr;
    zetAllocateImage(mask, 1, 0);
    if (mask->imageData) return mask;
    zetDeallocate(mask, ZET_IMAGE_HEADER);
    return nullptr;
}

void andRows(ZetImage* result, const std::array<MaskRegion, 3>& regions, std::size_t count) {
    for (std::ptrdiff_t y = 0; y < result->height; ++y) {
        std::uint8_t* row = pixelData(result) + y * result->widthStep;
        const auto source = [&](std::size_t i) -> BitSource {
            return {regions[i].data + y * regions[i].rowStep, regions[i].bit};
        };
        const std::array<BitSource, 2> two = {source(0), source(1)};
        combineBits(two, row, 0, result->width, [](std::uint64_t, const auto& s) { return s[0] & s[1]; });
        if (count < 3) continue;
        const std::array<BitSource, 1> third = {source(2)};
        combineBits(third, row, 0, result->width, [](std::uint64_t d, const auto& s) { return d & s[0]; });
    }
}

}  // namespace

ZetImage* ownCombineMasks(ZetImage* first, ZetImage* second, ZetImage* third, std::int32_t* kind) {
    const MaskSet set = collect(first, second, third);
    *kind = kMaskAsGiven;
    if (set.count < 2) return set.images[0];
    std::array<MaskRegion, 3> regions{};
    std::int32_t width = std::numeric_limits<std::int32_t>::max();
    std::int32_t height = width;
    for (std::size_t i = 0; i < set.count; ++i) {
        std::int32_t itsWidth = 0;
        std::int32_t itsHeight = 0;
        regions[i].data = ownRoiStart(set.images[i], &itsWidth, &itsHeight, 0, &regions[i].bit);
        regions[i].rowStep = set.images[i]->widthStep;
        width = std::min(width, itsWidth);
        height = std::min(height, itsHeight);
    }
    *kind = kMaskEmpty;
    if (width == 0 || height == 0) return nullptr;
    ZetImage* result = createTemporary(set.images[0]->origin, width, height);
    *kind = result ? kMaskTemporary : kMaskNoMemory;
    if (result) andRows(result, regions, set.count);
    return result;
}

}  // namespace zetpxl
