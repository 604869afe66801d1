// Fixed filters in single precision: each stage's result is formed in double and rounded once.
//   fixed.4 sums go left to right, rows top down; nothing is carried along a row, so results do not depend on how a region
//           is cut
//   fixed.5 stages round as the caller's mode has it, the conversion to whole samples to nearest, ties to even
// Compiled so that the compiler keeps to the rounding mode in force.
#include <algorithm>
#include <cfenv>
#include <limits>
#include <type_traits>
#include <utility>

#include "filter/fixedsmooth.h"

namespace zetpxl {

namespace {

float single(double value) { return static_cast<float>(value); }

// Stages along a window row. `w(row, column)` gives a single-precision sample as a double.
template <class W>
struct Stages {
    const W& w;

    double across(std::size_t r) const { return single(w(r, 0) - w(r, 2)); }
    double flat(std::size_t r) const { return single(w(r, 0) + w(r, 1) + w(r, 2)); }
    double peaked(std::size_t r) const { return single(w(r, 0) + 2 * w(r, 1) + w(r, 2)); }
    double wide(std::size_t r) const { return single(w(r, 0) + w(r, 1) + w(r, 2) + w(r, 3) + w(r, 4)); }
    double ringOuter(std::size_t r) const {
        return single(-(w(r, 0) + 3 * w(r, 1) + 4 * w(r, 2) + 3 * w(r, 3) + w(r, 4)));
    }
    double ringInner(std::size_t r) const { return single(6 * w(r, 2) - 3 * w(r, 0) - 3 * w(r, 4)); }
    double ringCentre(std::size_t r) const {
        return single(6 * w(r, 1) - 4 * w(r, 0) + 20 * w(r, 2) + 6 * w(r, 3) - 4 * w(r, 4));
    }
    double smooth(std::size_t r, double outer, double inner, double centre) const {
        return single(outer * w(r, 0) + inner * w(r, 1) + centre * w(r, 2) + inner * w(r, 3) + outer * w(r, 4));
    }
};

template <std::int32_t Kind, class W>
float stagedSum(const W& w) {
    const Stages<W> s{w};
    if constexpr (Kind == kGradXFlat) return single(s.across(0) + s.across(1) + s.across(2));
    if constexpr (Kind == kGradXPeaked) return single(s.across(0) + 2 * s.across(1) + s.across(2));
    if constexpr (Kind == kGradYFlat) return single(s.flat(2) - s.flat(0));
    if constexpr (Kind == kGradYPeaked) return single(s.peaked(2) - s.peaked(0));
    if constexpr (Kind == kPeak3 || Kind == kPeak3B) return single(9 * w(1, 1) - (s.flat(0) + s.flat(1) + s.flat(2)));
    if constexpr (Kind == kCrisp3) return single(single(17 * w(1, 1) - (s.flat(0) + s.flat(1) + s.flat(2))) * 0.125);
    if constexpr (Kind == kSmooth3) return single(single(s.peaked(0) + 2 * s.peaked(1) + s.peaked(2)) * 0.0625);
    if constexpr (Kind == kPeak5)
        return single(25 * w(2, 2) - (s.wide(0) + s.wide(1) + s.wide(2) + s.wide(3) + s.wide(4)));
    if constexpr (Kind == kRing5)
        return single(s.ringOuter(0) + s.ringInner(1) + s.ringCentre(2) + s.ringInner(3) + s.ringOuter(4));
    if constexpr (Kind == kSmooth5)
        return single(s.smooth(0, kSmoothA, kSmoothB, kSmoothC) + s.smooth(1, kSmoothB, kSmoothD, kSmoothE) +
                      s.smooth(2, kSmoothC, kSmoothE, kSmoothF) + s.smooth(3, kSmoothB, kSmoothD, kSmoothE) +
                      s.smooth(4, kSmoothA, kSmoothB, kSmoothC));
}

// Adding and taking away 1.5 * 2^52 rounds to the nearest whole number, ties to even, on any processor.
template <class T>
void storeNearest(const float* row, std::ptrdiff_t count, T* out) {
    constexpr double magic = 6755399441055744.0;
    constexpr auto least = static_cast<double>(std::numeric_limits<T>::min());
    constexpr auto greatest = static_cast<double>(std::numeric_limits<T>::max());
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double limited = std::clamp(static_cast<double>(row[i]), least, greatest);
        out[i] = static_cast<T>(static_cast<std::int32_t>((limited + magic) - magic));
    }
}

// 32-bit samples reach past what a conversion through 32 signed bits holds only in being cut, which comes first.
template <class T>
void store(const float* row, std::ptrdiff_t count, T* out) {
    const int mode = std::fegetround();
    if (mode == FE_TONEAREST) return storeNearest(row, count, out);
    std::fesetround(FE_TONEAREST);
    storeNearest(row, count, out);
    std::fesetround(mode);
}

template <class T, std::int32_t Kind>
void stagedRow(const FixedWindow<T>& window, float* out) {
    const FixedWindow<T> local = window;
#pragma GCC ivdep
    for (std::ptrdiff_t i = 0; i < local.count; ++i) {
        const FixedSample<T> sample{local, i};
        out[i] = stagedSum<Kind>(
            [&](std::size_t r, std::ptrdiff_t c) { return static_cast<double>(static_cast<float>(sample(r, c))); });
    }
}

template <class T>
bool makeSmooth(const FixedWindow<T>& window, float* work) {
    if constexpr (sizeof(T) < 4) return smoothRow(window, work);
    return false;
}

template <class T, std::int32_t Kind>
void floatRow(const FixedWindow<T>& window, float* work, T* out) {
    if constexpr (std::is_same_v<T, float>) {
        stagedRow<T, Kind>(window, out);
    } else {
        if (!makeSmooth(window, work)) stagedRow<T, Kind>(window, work);
        store(work, window.count, out);
    }
}

template <class T, std::size_t... Kind>
constexpr FixedTable<T> floatTable(std::index_sequence<Kind...>) {
    return {(sizeof(T) < 4 && Kind != kSmooth5 ? nullptr : floatRow<T, static_cast<std::int32_t>(Kind)>)...};
}

using AllKinds = std::make_index_sequence<kFixedKinds>;

}  // namespace

const FixedTable<std::uint8_t> fixedFloats8U = floatTable<std::uint8_t>(AllKinds{});
const FixedTable<std::int8_t> fixedFloats8S = floatTable<std::int8_t>(AllKinds{});
const FixedTable<std::uint16_t> fixedFloats16U = floatTable<std::uint16_t>(AllKinds{});
const FixedTable<std::int16_t> fixedFloats16S = floatTable<std::int16_t>(AllKinds{});
const FixedTable<std::int32_t> fixedFloats32S = floatTable<std::int32_t>(AllKinds{});
const FixedTable<float> fixedFloats32F = floatTable<float>(AllKinds{});

}  // namespace zetpxl
