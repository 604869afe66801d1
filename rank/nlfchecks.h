// Checks that the operations of the neighbourhood frame share.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/check.h"
#include "core/region.h"
#include "core/report.h"
#include "zetpxl.h"

namespace zetpxl {

inline constexpr char kNeighbourhoodSource[] = "zetnlf";

inline std::int32_t filteredChannels(const ZetImage* image) {
    if (regionCoi(image) != 0) return 1;
    return image->nChannels - (image->alphaChannel > 0 ? 1 : 0);
}

// Reports each of the three faults that it finds.
inline void reportChannelFaults(const Operation& op, std::int32_t status, const ZetImage* srcImage,
                                const ZetImage* dstImage) {
    if (regionCoi(srcImage) > srcImage->nChannels)
        report(op, status, "Interst Channel of input Image more number of channels.");
    if (regionCoi(dstImage) > dstImage->nChannels)
        report(op, status, "Interst Channel of output Image more number of channels.");
    if (filteredChannels(srcImage) != filteredChannels(dstImage))
        report(op, status, "Number of interset channel input and output Image is not equal.");
}

}  // namespace zetpxl
