// A rectangle of any image, anywhere relative to it, as a plain aligned block: tiles resolved, borders made up.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/alloc.h"
#include "zetpxl.h"

namespace zetpxl {

// Gives a block of the image's depth, channels, data order and alignment, or null; nothing is reported. Region, mask and
// coi are not consulted. `rowStep` is set before the block is obtained.
void* ownGetRect(ZetImage* image, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 std::int32_t* rowStep);

void ownFreeBlock(void* block);

// Copies the image rectangle between inclusive corners to a block position. A corner 1 left of or above corner 0 flips
// the rectangle. Coordinates lie within the image. `pixelBytes` is 0 for 1U. 0 on success, 1 on failure.
std::int32_t ownCopyRect(ZetImage* image, std::int32_t x0, std::int32_t y0, std::int32_t x1, std::int32_t y1,
                         void* block, std::int32_t dstX, std::int32_t dstY, std::ptrdiff_t rowStep,
                         std::ptrdiff_t planeStep, std::int32_t pixelBytes, std::int32_t nPlanes);

}  // namespace zetpxl
