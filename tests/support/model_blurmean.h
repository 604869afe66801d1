// Plain model of the means over one piece of an image.
#pragma once

#include <functional>
#include <vector>

#include "tests/support/model_patch.h"

namespace zetpxl::test {

struct BlurWindow {
    std::int32_t nCols, nRows;
    float inv;
};

// Patterns of w x h results, row by row. `sample` gives row and column of the block that belongs to the piece.
using BlockSample = std::function<std::uint32_t(std::int32_t row, std::int32_t col)>;
std::vector<std::uint32_t> modelMeans(std::uint32_t depth, const BlurWindow& window, std::int32_t w, std::int32_t h,
                                      const BlockSample& sample);

}  // namespace zetpxl::test
