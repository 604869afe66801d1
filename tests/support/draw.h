// Random image shapes, with the odd cases drawn far more often than they occur in life.
#pragma once

#include "tests/support/scene.h"

namespace zetpxl::test {

struct DrawRules {
    bool tiles = true;
    bool regions = true;
    bool masks = true;
    std::int32_t largest = 40;  // pixels a side
};

// Everything but the region.
ImageShape drawShape(Random& random, const DrawRules& rules = {});

std::uint32_t drawDepth(Random& random);
Values drawValues(Random& random);

// A shape that goes with another one in an operation on both: mostly the same depth and order, now and then not; the
// size is its own.
ImageShape drawPartner(const ImageShape& first, Random& random, const DrawRules& rules = {});

// None, inside, hanging over, the whole image, or outside it; sometimes with a channel of interest.
std::optional<ZetROI> drawRegion(const ImageShape& shape, Random& random);

// A 1U image in one block with a region of its own at any bit offset, now and then with a mask itself.
TestImage& addMask(Scene& scene, const std::string& name, std::int32_t width, std::int32_t height, Random& random);
void maybeMask(Scene& scene, TestImage& image, Random& random, const DrawRules& rules = {});

}  // namespace zetpxl::test
