// Run-length coded DIBs expanded to the rows of a plain DIB of the same bit count.
#pragma once

#include "zetpxl.h"

namespace zetpxl {

// Gives a block to be released with zetDeleteROI, or null after a report.
void* ownDecompressRLE(const BITMAPINFOHEADER* dib);

}  // namespace zetpxl
