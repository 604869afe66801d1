// Vectors of neighbouring samples, and loops over arrays of them whose every index is a constant: only such arrays stay in
// registers.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace zetpxl {

inline constexpr std::ptrdiff_t kVectorBytes = 32;

template <class T>
struct SampleVector {
    using Type [[gnu::vector_size(kVectorBytes)]] = T;
    static constexpr std::ptrdiff_t kCount = kVectorBytes / static_cast<std::ptrdiff_t>(sizeof(T));
};

template <class T>
using Vector = typename SampleVector<T>::Type;
template <class T>
inline constexpr std::ptrdiff_t kVectorSamples = SampleVector<T>::kCount;

template <class Step, std::size_t... kAt>
[[gnu::always_inline]] inline void unrolledOver(Step step, std::index_sequence<kAt...>) {
    (step(std::integral_constant<std::size_t, kAt>()), ...);
}

// step(0) to step(kTimes - 1).
template <std::size_t kTimes, class Step>
[[gnu::always_inline]] inline void unrolled(Step step) {
    unrolledOver(step, std::make_index_sequence<kTimes>());
}

}  // namespace zetpxl
