// Functions that the system's library computes by processor: ours give the same bits everywhere.
#pragma once

#include <cstddef>

namespace zetpxl {

// The natural logarithm of a positive, finite, normal number, within one unit in the last place.
double ownLog(double x);

// The same of many numbers.
void ownLogs(const double* x, std::ptrdiff_t count, double* logs);

// Sine and cosine of an angle in radians from 0 to 2 pi, within one unit in the last place.
double ownSin(double x);
double ownCos(double x);

}  // namespace zetpxl
