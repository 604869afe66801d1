// Row routines of bitwise operations: samples of one size share them, whatever their sign.
#pragma once

#include "pixel/pointop.h"

namespace zetpxl {

template <class Sample, class Bits_>
struct LogicElement {
    using T = Sample;
    using Bits = Sample;
    static constexpr T apply(T a, T b) { return static_cast<T>(Bits_::apply(a, b)); }
};

template <class Bits>
constexpr PointTable logicTable = {{
    bitRoutines<Bits>,
    pointRoutines<LogicElement<std::uint8_t, Bits>>,
    pointRoutines<LogicElement<std::uint8_t, Bits>>,
    pointRoutines<LogicElement<std::uint16_t, Bits>>,
    pointRoutines<LogicElement<std::uint16_t, Bits>>,
    pointRoutines<LogicElement<std::uint32_t, Bits>>,
    {nullptr, nullptr},  // 32F is refused
}};

}  // namespace zetpxl
