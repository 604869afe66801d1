// One result of a change of scale.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

// A row or column of the source by its index in the image, and where between it and the next one the result lies.
struct ZoomTap {
    std::int32_t index = 0;
    float weight = 0;
};

std::uint32_t modelZoomSample(const ZetImage& src, std::int32_t channel, std::int32_t mode, const ZoomTap& row,
                              const ZoomTap& col);

}  // namespace zetpxl::test
