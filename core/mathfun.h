// Functions that the system's library computes by processor: ours give the same bits everywhere.
#pragma once

namespace zetpxl {

// The natural logarithm of a positive, finite, normal number, within one unit in the last place.
double ownLog(double x);

}  // namespace zetpxl
