#include "geometry/sampling.h"

#include "core/depth.h"
#include "core/region.h"

namespace zetpxl {

SampleGrid sampleGrid(const ZetImage* image, std::int32_t firstChannel) {
    const std::ptrdiff_t bytes = sampleBytes(image->depth);
    const bool planar = image->dataOrder == 1;
    return {ownPixelAddress(image, 0, 0, firstChannel), image->widthStep, planar ? bytes : bytes * image->nChannels,
            planar ? planeBytes(image) : bytes,         image->width - 1, image->height - 1};
}

}  // namespace zetpxl
