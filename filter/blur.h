// One blur call and its routes.
#pragma once

#include <cstdint>

#include "core/report.h"
#include "filter/blurblock.h"
#include "zetpxl.h"

namespace zetpxl {

inline constexpr Operation kBlur{"zetBlur", "zetBlur"};

// The region of an image and its channels, counted from 1.
struct BlurRegion {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;
    std::int32_t firstChannel;
    std::int32_t lastChannel;
};

struct BlurCall {
    ZetImage* src;
    ZetImage* dst;
    BlurRegion srcRegion;
    BlurRegion dstRegion;
    std::int32_t width;  // of the common region
    std::int32_t height;
    std::int32_t nCols;
    std::int32_t nRows;
    std::int32_t anchorX;
    std::int32_t anchorY;
    float inverse;
    ZetImage* mask;  // the working mask, or null
};

// A piece of the common region, from its start.
struct BlurArea {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;
};

// Rows of the source for a piece; reports and gives false when they cannot be had.
bool openPiece(const BlurCall& call, const BlurArea& area, BlurFetch fetch, BlurSource* source);

// The piece into (x, y) of an untiled image or view; reports and gives false when memory cannot be had.
bool blurInto(const BlurCall& call, const BlurArea& area, BlurSource* source, const ZetImage* image, std::int32_t x,
              std::int32_t y);

// The routes over tiles.
void blurDestinationTiles(const BlurCall& call);
void blurSourceTiles(const BlurCall& call);
void blurTilesInPlace(const BlurCall& call);

}  // namespace zetpxl
