// Plain model of the colour conversions: one pixel at a time, in doubles.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

void modelRGB2HLS(Model& model, ZetImage* src, ZetImage* dst);
void modelHLS2RGB(Model& model, ZetImage* src, ZetImage* dst);

// One pixel as stored samples: red, green, blue or hue, lightness, saturation.
struct Triple {
    double a, b, c;
};
Triple modelToHls(std::uint32_t depth, const Triple& rgb);
Triple modelToRgb(std::uint32_t depth, const Triple& hls);

}  // namespace zetpxl::test
