// Several masks joined into one.
#pragma once

#include <cstdint>

#include "zetpxl.h"

namespace zetpxl {

enum MaskKind : std::int32_t {
    kMaskAsGiven = 0,    // the result is null or the one mask given
    kMaskTemporary = 1,  // the caller releases it with zetDeallocate(result, 3)
    kMaskNoMemory = 2,
    kMaskEmpty = 3,  // the masks have no common area
};

// The AND of up to three masks, each null or valid.
ZetImage* ownCombineMasks(ZetImage* first, ZetImage* second, ZetImage* third, std::int32_t* kind);

}  // namespace zetpxl
