// Plain models of the point operations on two sources and of joined masks.
#pragma once

#include <vector>

#include "tests/support/model.h"

namespace zetpxl::test {

// What stands for several masks: nothing, the one mask given, or a plane of bits.
struct JoinedMask {
    std::int32_t kind = 0;  // 0 as given, 1 a plane of bits, 3 no common area
    const ZetImage* given = nullptr;
    std::int32_t width = 0, height = 0;
    std::vector<bool> bits;

    bool inForce() const { return given || kind == 1; }
    Area area() const { return given ? modelRegion(*given) : Area{0, 0, width, height}; }
    bool at(std::int32_t x, std::int32_t y) const;
};
JoinedMask modelJoinMasks(const std::vector<const ZetImage*>& masks);

void modelAdd(Model& model, ZetImage* a, ZetImage* b, ZetImage* dst);
void modelOr(Model& model, ZetImage* a, ZetImage* b, ZetImage* dst);
void modelAnd(Model& model, ZetImage* a, ZetImage* b, ZetImage* dst);
void modelXorS(Model& model, ZetImage* src, ZetImage* dst, std::int32_t value);

}  // namespace zetpxl::test
