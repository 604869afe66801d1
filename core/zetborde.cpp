// Border words of an image.
#include <cstdint>

#include "core/depth.h"

void zetSetBorderMode(ZetImage* image, int32_t mode, int32_t sides, int32_t constVal) {
    if (!image) return;
    const std::int32_t constant = zetpxl::clampToDepth(image->depth, constVal);
    for (int side = 0; side < 4; ++side) {
        if (!(sides & (1 << side))) continue;
        image->borderMode[side] = mode;
        image->borderConst[side] = constant;
    }
}
