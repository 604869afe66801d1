// Samples as bins of a histogram, in the order of their values.
#pragma once

#include <cstdint>
#include <type_traits>

namespace zetpxl {

// Signed samples are shifted so that their order is that of unsigned ones.
template <class T>
constexpr std::uint32_t binOf(T sample) {
    using U = std::make_unsigned_t<T>;
    constexpr auto flip = static_cast<U>(std::is_signed_v<T> ? U{1} << (8 * sizeof(T) - 1) : 0);
    return static_cast<U>(static_cast<U>(sample) ^ flip);
}

template <class T>
constexpr T sampleOf(std::uint32_t bin) {
    using U = std::make_unsigned_t<T>;
    constexpr auto flip = static_cast<U>(std::is_signed_v<T> ? U{1} << (8 * sizeof(T) - 1) : 0);
    return static_cast<T>(static_cast<U>(static_cast<U>(bin) ^ flip));
}
static_assert(binOf<std::int8_t>(-128) == 0 && binOf<std::int8_t>(127) == 255 && sampleOf<std::int16_t>(0) == -32768);

}  // namespace zetpxl
