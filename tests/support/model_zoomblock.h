// What the model of changes of scale works with from block to block.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

struct ZoomAxis {
    double scale = 1;      // source pixels to a destination pixel
    double step = 1;       // from one destination pixel's position in the source to the next one's
    std::int32_t rem = 0;  // 0: the ratio or its reciprocal is whole
};

struct ZoomPlan {
    std::int32_t mode = 0;
    ZoomAxis x{}, y{};
};

// Toward zero; what no 32-bit word holds becomes the nearest one.
std::int32_t wholeOf(double value);

// The part of the region that can take part: its own size, or its mask's region where that is smaller.
Area modelTakingPart(const ZetImage& image);

// The pixels that `srcSize` pixels of a source give.
std::int32_t modelZoomSize(std::int32_t dstSize, std::int32_t srcSize, double scale);

// A position of the source, from the corner of its region; `clip` limits the block to what the source gives.
struct ZoomStart {
    double x = 0, y = 0;
    bool clip = false;
};
void modelZoomBlock(Model& model, const ZoomPlan& plan, const ZetImage& src, const ZetImage& dst,
                    const ZoomStart& start);

}  // namespace zetpxl::test
