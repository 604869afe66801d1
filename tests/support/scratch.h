// How much memory an operation takes on images of one width and any height.
#pragma once

#include <functional>

#include "tests/support/scene.h"

namespace zetpxl::test {

// The most bytes in use at one time while `call` works from one such image into another, or in place.
std::size_t peakScratch(const ImageShape& shape, bool inPlace, const std::function<void(ZetImage*, ZetImage*)>& call);

}  // namespace zetpxl::test
