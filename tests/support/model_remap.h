// Plain model of remapping by two maps.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

struct RemapImages {
    ZetImage *src, *xMap, *yMap, *dst;
};
void modelRemap(Model& model, const RemapImages& images, std::int32_t interpolate);

}  // namespace zetpxl::test
