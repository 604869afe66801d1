// Regions, channels and masks resolved to sizes, addresses and steps.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zetpxl.h"

namespace zetpxl {

// Inclusive corners of a region.
struct ZetRoiBounds {
    std::int32_t x0, y0, x1, y1;
};

// Offsets and clipped sizes of a region; the ends are filled by the walkers.
struct ZetRoiRect {
    std::int32_t xOffset, xEnd, yOffset, yEnd, height, width;
};

// Where an operation starts in an image and how it steps.
struct ZetRoiLayout {
    std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeStep;
    std::int32_t nProc;         // channels to process
    std::int32_t nChannels;     // channels in the image
    std::int32_t firstChannel;  // zero-based
    std::int32_t bitOffset;     // 1U: the region's x offset
};

// Size of the region, cut to the image with `clip`. These give 0 for an empty region, else 1.
std::int32_t ownRoiSize(const ZetImage* image, std::int32_t* height, std::int32_t* width, std::int32_t clip);
std::int32_t ownCommonSize(const ZetImage* image, const ZetImage* mask, std::int32_t* height, std::int32_t* width,
                           std::int32_t clip);
std::int32_t ownCommonSize3(const ZetImage* a, const ZetImage* b, const ZetImage* mask, std::int32_t* height,
                            std::int32_t* width, std::int32_t clip);
std::int32_t ownRoiBounds(const ZetImage* image, ZetRoiBounds* bounds, std::int32_t clip);
void ownRoiRect(const ZetImage* image, ZetRoiRect* rect);

// First element to process and steps; 0 when there is nothing to process. `bitOffset` is written for 1U only.
std::int32_t ownRoiOrigin(const ZetImage* image, std::uint8_t** data, std::ptrdiff_t* rowStep, std::int32_t* nProc,
                          std::ptrdiff_t* planeStep, std::int32_t* bitOffset);
std::int32_t ownRoiLayout(const ZetImage* image, ZetRoiLayout* layout, std::int32_t clip);

// First byte of the region in a zero-based channel, its clipped size, and the bit in that byte (1U).
std::uint8_t* ownRoiStart(const ZetImage* image, std::int32_t* width, std::int32_t* height, std::int32_t channel,
                          std::int32_t* bitOffset);

std::uint8_t* ownPixelAddress(const ZetImage* image, std::int32_t x, std::int32_t y, std::int32_t channel);

// First byte, step and first bit of a mask's region; 0 if `mask` is not 1U.
std::int32_t ownMaskOrigin(const ZetImage* mask, std::uint8_t** data, std::ptrdiff_t* step, std::int32_t* bit);

// 1 if the images can be treated as flat runs of `imageSize` bytes; `c` may be null.
std::int32_t ownSameBlock(const ZetImage* a, const ZetImage* b, const ZetImage* c, std::int32_t hasAlpha);

// Bytes from plane to plane of a planar image.
inline std::ptrdiff_t planeBytes(const ZetImage* image) {
    return static_cast<std::ptrdiff_t>(image->height) * image->widthStep;
}

// A tiled image has no region of its own in memory; its address arithmetic starts from null and is never followed.
inline std::uint8_t* pixelData(const ZetImage* image) { return static_cast<std::uint8_t*>(image->imageData); }

inline std::int32_t regionX(const ZetImage* image) { return image->roi ? image->roi->xOffset : 0; }
inline std::int32_t regionY(const ZetImage* image) { return image->roi ? image->roi->yOffset : 0; }
inline std::int32_t regionCoi(const ZetImage* image) { return image->roi ? image->roi->coi : 0; }

}  // namespace zetpxl
