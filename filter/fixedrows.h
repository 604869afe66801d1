// Row routines of the fixed filters.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zetpxl {

enum FixedKind : std::int32_t {
    kGradXFlat,
    kGradYFlat,
    kGradXPeaked,
    kGradYPeaked,
    kPeak3,
    kRing5,
    kSmooth3,
    kSmooth5,
    kPeak3B,
    kPeak5,
    kCrisp3,
    kFixedKinds
};

// The window's rows at the first output sample's left column, and the samples to make.
template <class T>
struct FixedWindow {
    std::array<const T*, 5> rows;
    std::ptrdiff_t step;   // samples from column to column
    std::ptrdiff_t count;  // of output samples
};

// Sample of a window around output sample i.
template <class T>
struct FixedSample {
    const FixedWindow<T>& window;
    std::ptrdiff_t i;

    T operator()(std::size_t row, std::ptrdiff_t column) const { return window.rows[row][i + column * window.step]; }
};

// `work` holds `count` single-precision samples; integer routines leave it alone.
template <class T>
using FixedRowRoutine = void (*)(const FixedWindow<T>& window, float* work, T* out);

// By kind; each room brings the kinds that it computes and null for the others.
template <class T>
using FixedTable = std::array<FixedRowRoutine<T>, kFixedKinds>;

// Exact in integers: 8- and 16-bit samples, all kinds but the 5 by 5 smoothing.
extern const FixedTable<std::uint8_t> fixedIntegers8U;
extern const FixedTable<std::int8_t> fixedIntegers8S;
extern const FixedTable<std::uint16_t> fixedIntegers16U;
extern const FixedTable<std::int16_t> fixedIntegers16S;

// In single precision: 32S and 32F in all kinds, the others in the 5 by 5 smoothing.
extern const FixedTable<std::uint8_t> fixedFloats8U;
extern const FixedTable<std::int8_t> fixedFloats8S;
extern const FixedTable<std::uint16_t> fixedFloats16U;
extern const FixedTable<std::int16_t> fixedFloats16S;
extern const FixedTable<std::int32_t> fixedFloats32S;
extern const FixedTable<float> fixedFloats32F;

// Bits as bytes of 0 and 1; the last kind is a copy and has none.
extern const FixedTable<std::uint8_t> fixedBits;

}  // namespace zetpxl
