// The lock-step walk: up to three images, each tiled or not, with tiles of any sizes, and a mask, cut into rectangles that
// lie in one tile of each.
#pragma once

#include <array>
#include <cstdint>

#include "core/report.h"
#include "core/tiles.h"
#include "zetpxl.h"

namespace zetpxl {

struct LockStepImages {
    std::array<ZetImage*, 2> sources;
    std::int32_t nSources;
    ZetImage* dst;
    ZetImage* mask;  // or null
};

// Views of one rectangle, in the place of the images.
struct LockStepRectangle {
    std::array<const ZetImage*, 2> sources;
    const ZetImage* dst;
    const ZetImage* mask;
};

// Words of a failed fetch.
struct LockStepWords {
    std::array<const char*, 2> sources;
    const char* dst;
};

struct LockStepCall {
    Operation op;
    LockStepWords words;
    void (*routine)(const LockStepRectangle& rectangle, const void* argument);
    const void* argument;
};

// Stops at the first tile that cannot be had, which is reported; rectangles already processed stay, and the tiles then held
// are not released. At most one tile of each image is held at a time.
void walkLockStep(const LockStepImages& images, const LockStepCall& call);

}  // namespace zetpxl
