// Fixed filters of 8- and 16-bit samples and of bits, in exact integers.
//   fixed.1 8-bit sums fit 16 bits (the largest weights add up to 120 times 255 at most), 16-bit sums fit 32 bits
//   fixed.2 division rounds to the nearest whole number, ties to even; signed samples need no shift of origin, since the
//           weights add up to the divisor
//   fixed.3 on bits the gradients, the ring and the smoothings test a sum, the peaks mark set pixels with a clear pixel in
//           their window
#include <algorithm>
#include <limits>
#include <utility>

#include "filter/fixedrows.h"
#include "filter/fixedweights.h"

namespace zetpxl {

namespace {

template <class T>
using Accumulator = std::conditional_t<sizeof(T) == 1, std::int16_t, std::int32_t>;

template <std::int32_t Shift, class Acc>
constexpr Acc divideToEven(Acc v) {
    return static_cast<Acc>((v + ((v >> Shift) & 1) + (1 << (Shift - 1)) - 1) >> Shift);
}
static_assert(divideToEven<4>(4) == 0 && divideToEven<4>(8) == 0 && divideToEven<4>(24) == 2);
static_assert(divideToEven<4>(40) == 2 && divideToEven<3>(1600) == 200 && divideToEven<3>(-4) == 0);

template <class T, class Acc>
constexpr T saturate(Acc v) {
    constexpr auto least = static_cast<Acc>(std::numeric_limits<T>::min());
    constexpr auto greatest = static_cast<Acc>(std::numeric_limits<T>::max());
    return static_cast<T>(std::clamp(v, least, greatest));
}

template <class T, std::int32_t Kind>
void integerRow(const FixedWindow<T>& window, float*, T* out) {
    using Acc = Accumulator<T>;
    const FixedWindow<T> local = window;
#pragma GCC ivdep
    for (std::ptrdiff_t i = 0; i < local.count; ++i) {
        const FixedSample<T> sample{local, i};
        const auto sum = weightedSum<Kind, Acc>(
            [&](std::size_t r, std::ptrdiff_t c) { return static_cast<std::int32_t>(sample(r, c)); });
        if constexpr (Kind == kSmooth3) {
            out[i] = static_cast<T>(divideToEven<4>(sum));
        } else if constexpr (Kind == kCrisp3) {
            out[i] = saturate<T>(divideToEven<3>(sum));
        } else {
            out[i] = saturate<T>(sum);
        }
    }
}

template <std::int32_t Kind, class W>
bool bitResult(const W& w) {
    if constexpr (Kind == kPeak3 || Kind == kPeak3B) {
        const bool all = w(0, 0) & w(0, 1) & w(0, 2) & w(1, 0) & w(1, 2) & w(2, 0) & w(2, 1) & w(2, 2);
        return w(1, 1) && !all;
    }
    if constexpr (Kind == kPeak5) {
        std::int32_t all = 1;
        for (std::size_t r = 0; r < 5; ++r)
            for (std::ptrdiff_t c = 0; c < 5; ++c) all &= w(r, c);
        return w(2, 2) && !all;
    }
    constexpr std::int32_t threshold = Kind == kSmooth3 ? 7 : Kind == kSmooth5 ? 285 : 0;
    if constexpr (Kind == kPeak3 || Kind == kPeak3B || Kind == kPeak5) {
        return false;
    } else {
        return weightedSum<Kind, std::int32_t>(w) > threshold;
    }
}

template <std::int32_t Kind>
void bitRow(const FixedWindow<std::uint8_t>& window, float*, std::uint8_t* out) {
    const FixedWindow<std::uint8_t> local = window;
    for (std::ptrdiff_t i = 0; i < local.count; ++i) {
        const FixedSample<std::uint8_t> sample{local, i};
        out[i] =
            bitResult<Kind>([&](std::size_t r, std::ptrdiff_t c) { return static_cast<std::int32_t>(sample(r, c)); });
    }
}

template <class T, std::size_t... Kind>
constexpr FixedTable<T> integerTable(std::index_sequence<Kind...>) {
    return {(Kind == kSmooth5 ? nullptr : integerRow<T, static_cast<std::int32_t>(Kind)>)...};
}

template <std::size_t... Kind>
constexpr FixedTable<std::uint8_t> bitTable(std::index_sequence<Kind...>) {
    return {(Kind == kCrisp3 ? nullptr : bitRow<static_cast<std::int32_t>(Kind)>)...};
}

using AllKinds = std::make_index_sequence<kFixedKinds>;

}  // namespace

const FixedTable<std::uint8_t> fixedIntegers8U = integerTable<std::uint8_t>(AllKinds{});
const FixedTable<std::int8_t> fixedIntegers8S = integerTable<std::int8_t>(AllKinds{});
const FixedTable<std::uint16_t> fixedIntegers16U = integerTable<std::uint16_t>(AllKinds{});
const FixedTable<std::int16_t> fixedIntegers16S = integerTable<std::int16_t>(AllKinds{});
const FixedTable<std::uint8_t> fixedBits = bitTable(AllKinds{});

}  // namespace zetpxl
