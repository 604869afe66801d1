// Samples taken from anywhere in two vectors at once, where the build has an instruction for it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace zetpxl {

#if defined(__AVX512BW__) && __has_builtin(__builtin_shuffle)
inline constexpr bool kHasPermutes = true;
#else
inline constexpr bool kHasPermutes = false;
#endif

// Samples to a vector of 64 bytes; bytes are widened to words.
template <class T>
inline constexpr std::ptrdiff_t kPermuteGroup = sizeof(T) == 4 ? 16 : 32;

// Up to `Most` samples in groups of a vector, each from the two vectors that begin at its group's base.
template <std::ptrdiff_t Most>
struct PermutedSamples {
    std::ptrdiff_t from, to;                    // samples of a run of groups that fit
    std::int32_t base[std::size_t{Most} / 16];  // in samples of the row
    std::int16_t places[std::size_t{Most}];     // behind the base

    // Where few samples fit, other ways are quicker.
    bool pays(std::ptrdiff_t samples) const { return 2 * (to - from) > samples; }
};

// Offsets of a group's samples in the row, as places behind its base; false when they do not fit. Places behind the last
// sample are 0.
template <class T, std::ptrdiff_t Most>
bool placeGroup(const std::int32_t* offsets, std::ptrdiff_t count, std::ptrdiff_t reach, std::ptrdiff_t readable,
                std::ptrdiff_t first, PermutedSamples<Most>* permuted) {
    const std::ptrdiff_t size = std::min(kPermuteGroup<T>, count - first);
    const auto [least, greatest] = std::minmax_element(offsets + first, offsets + first + size);
    const std::int32_t base = *least;
    if (base < 0 || base + 2 * kPermuteGroup<T> > readable) return false;
    if (*greatest - base + reach >= 2 * kPermuteGroup<T>) return false;
    permuted->base[first / kPermuteGroup<T>] = base;
    std::int16_t* const places = permuted->places + first;
    std::fill_n(places, kPermuteGroup<T>, std::int16_t{0});
    for (std::ptrdiff_t i = 0; i < size; ++i) places[i] = static_cast<std::int16_t>(offsets[first + i] - base);
    return true;
}

// `reach` is how far behind a sample's offset its last tap lies, `readable` where the row ends.
template <class T, std::ptrdiff_t Most>
void findPermutes(const std::int32_t* offsets, std::ptrdiff_t count, std::ptrdiff_t reach, std::ptrdiff_t readable,
                  PermutedSamples<Most>* permuted) {
    const auto fits = [=](std::ptrdiff_t i) { return placeGroup<T>(offsets, count, reach, readable, i, permuted); };
    std::ptrdiff_t from = 0;
    while (from < count && !fits(from)) from += kPermuteGroup<T>;
    std::ptrdiff_t to = from;
    while (to < count && fits(to)) to += kPermuteGroup<T>;
    permuted->from = std::min(from, count);
    permuted->to = std::min(to, count);
}

// Takes tap k of each sample in the run of groups, `step` samples behind tap k - 1, to taps[k].
template <class T, std::ptrdiff_t Most, std::size_t Count, std::size_t Size>
void permuteGroups([[maybe_unused]] const T* row, [[maybe_unused]] const PermutedSamples<Most>& permuted,
                   [[maybe_unused]] std::ptrdiff_t step, [[maybe_unused]] T (&taps)[Count][Size]) {
#if defined(__AVX512BW__) && __has_builtin(__builtin_shuffle)
    using Samples [[gnu::vector_size(static_cast<std::size_t>(kPermuteGroup<T>) * sizeof(T))]] = T;
    using Places [[gnu::vector_size(static_cast<std::size_t>(kPermuteGroup<T>) * sizeof(std::int16_t))]] = std::int16_t;
    using Lanes [[gnu::vector_size(64)]] = std::conditional_t<sizeof(T) == 4, T, std::uint16_t>;
    using Indices [[gnu::vector_size(64)]] = std::conditional_t<sizeof(T) == 4, std::int32_t, std::int16_t>;
    using Index = std::conditional_t<sizeof(T) == 4, std::int32_t, std::int16_t>;
    for (std::ptrdiff_t i = permuted.from; i < permuted.to; i += kPermuteGroup<T>) {
        const T* const from = row + permuted.base[i / kPermuteGroup<T>];
        Samples samples[2];
        Places places;
        std::memcpy(&samples[0], from, sizeof samples[0]);
        std::memcpy(&samples[1], from + kPermuteGroup<T>, sizeof samples[1]);
        std::memcpy(&places, permuted.places + i, sizeof places);
        const Lanes low = __builtin_convertvector(samples[0], Lanes);
        const Lanes high = __builtin_convertvector(samples[1], Lanes);
        Indices indices = __builtin_convertvector(places, Indices);
        for (std::size_t k = 0; k < Count; ++k, indices += static_cast<Index>(step)) {
            const Lanes taken = __builtin_shuffle(low, high, indices);
            const Samples narrow = __builtin_convertvector(taken, Samples);
            std::memcpy(taps[k] + i, &narrow, sizeof narrow);
        }
    }
#endif
}

}  // namespace zetpxl
