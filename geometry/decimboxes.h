// Area averages by whole factors: cells are boxes of whole samples.
#pragma once

#include "geometry/decimate.h"

namespace zetpxl {

// Makes the block when its cells are boxes within the source; false, with nothing done, when they are not.
template <class T>
bool makeBoxes(const DecimateBlock& block, const DecimateShape& shape);

}  // namespace zetpxl
