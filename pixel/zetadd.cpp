// The sum of two images.
//   add.1 integer depths saturate at the limits of the depth
//   add.2 32F: one addition, rounded once; no limit
//   add.3 one-bit images: OR, with that operation's checks and words
#include <algorithm>
#include <limits>

#include "pixel/logic.h"
#include "pixel/pointop.h"

using namespace zetpxl;

namespace {

constexpr Operation op{"zetAdd", "zetadd"};

// The addend is cut first, so that the sum never leaves the type and a vector of elements needs no wider one.
template <class Sample>
struct AddSaturated {
    using T = Sample;
    using Bits = Sample;
    static constexpr T apply(T a, T b) {
        constexpr T least = std::numeric_limits<T>::min();
        constexpr T greatest = std::numeric_limits<T>::max();
        const T room = static_cast<T>(greatest - std::max(a, T{0}));
        const T below = static_cast<T>(least - std::min(a, T{0}));
        return static_cast<T>(a + std::min(std::max(b, below), room));
    }
};
static_assert(AddSaturated<std::uint8_t>::apply(200, 100) == 255 && AddSaturated<std::int8_t>::apply(100, 100) == 127);
static_assert(AddSaturated<std::int8_t>::apply(-100, -100) == -128);
static_assert(AddSaturated<std::int32_t>::apply(2147483647, 1) == 2147483647);
static_assert(AddSaturated<std::int32_t>::apply(-2147483647 - 1, -1) == -2147483647 - 1);
static_assert(AddSaturated<std::int32_t>::apply(-2147483647 - 1, 2147483647) == -1);

struct AddFloat {
    using T = float;
    using Bits = std::uint32_t;
    static float apply(float a, float b) { return a + b; }
};

constexpr PointTable table = {{
    {nullptr, nullptr},  // 1U goes to zetOr
    pointRoutines<AddSaturated<std::uint8_t>>,
    pointRoutines<AddSaturated<std::int8_t>>,
    pointRoutines<AddSaturated<std::uint16_t>>,
    pointRoutines<AddSaturated<std::int16_t>>,
    pointRoutines<AddSaturated<std::int32_t>>,
    pointRoutines<AddFloat>,
}};

}  // namespace

void zetAdd(ZetImage* srcImageA, ZetImage* srcImageB, ZetImage* dstImage) {
    if (!srcImageA) return report(op, ZET_StatusBadArgument, "srcImageA==0");
    if (srcImageA->depth == ZET_DEPTH_1U) return zetOr(srcImageA, srcImageB, dstImage);
    runPointOperation({op, &table}, {{srcImageA, srcImageB}, 2, dstImage, 0});
}
