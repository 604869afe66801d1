// Plain models of rectangles taken out of an image: where each pixel of the block comes from, and which tiles are asked for.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

// The tile calls of a copy between inclusive corners, in either direction; false when a tile could not be had.
bool modelCopyRectCalls(ZetImage& image, std::int32_t x0, std::int32_t y0, std::int32_t x1, std::int32_t y1);

// The tile calls of a rectangle anywhere relative to the image.
bool modelGetRectCalls(ZetImage& image, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

// The sample that a rectangle shows at image position (x, y), inside or outside the image.
std::uint32_t modelRectSample(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x);

}  // namespace zetpxl::test
