// The state of one convolution call and its routes.
#pragma once

#include <cstdint>

#include "core/report.h"
#include "filter/convplan.h"
#include "zetpxl.h"

namespace zetpxl {

// Reports of convolution and its kernels share one source.
inline constexpr char kConvSource[] = "zetcnv2d";
inline constexpr Operation kConvolve2D{"zetConvolve2D", kConvSource};

// All changes of region, mask and border constant are made on copies of the caller's records; the tile callback sees the
// copies.
struct Convolution {
    ZetImage src;
    ZetImage dst;
    ZetROI srcRect;
    ZetROI dstRect;
    ZetImage mask;  // the mask in force, if dst.maskImage is set
    ZetROI maskRect;
    ZetImage* joined;  // a mask made for the call, or null
    ConvMargins margins;
    ConvPlan plan;
};

// A rectangle of an image with margins around it as an image in one block: tiles read, borders made up.
struct BorderedCopy {
    ZetImage* image;
    ZetROI roi;
};

// The region of `image` grown by the margins; false when memory or a tile cannot be had. The copy's region is the original
// one, inside its margins. Release with freeBorderedCopy.
bool ownBorderedCopy(ZetImage* image, const ConvMargins& margins, BorderedCopy* copy);
void freeBorderedCopy(BorderedCopy* copy);

// How the tile walker reads the source.
struct ConvTileReading {
    ZetImage* read;    // what a bordered copy is taken from
    ZetImage* direct;  // what is read in place, or null
    bool alwaysCopy;
    bool checkEdges;
};

// Walks the destination's tiles.
std::int32_t ownConvolveTiles(Convolution* c, const ConvTileReading& reading);

// A tiled image filtered in place, stripe by stripe.
std::int32_t convolveStripes(Convolution* c);

// An image in one block filtered in place, stripe by stripe.
std::int32_t convolveInPlace(Convolution* c);

}  // namespace zetpxl
