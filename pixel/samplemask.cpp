#include "pixel/samplemask.h"

namespace zetpxl {

namespace {

// With the counts known to the compiler the inner loop unrolls.
template <std::int32_t Group, std::int32_t Step>
void spreadFixed(const std::uint8_t* pixels, std::ptrdiff_t count, std::uint8_t* samples) {
    for (std::ptrdiff_t x = 0; x < count; ++x)
        for (std::int32_t k = 0; k < Step; ++k) samples[x * Step + k] = k < Group ? pixels[x] : std::uint8_t{0};
}

using Spread = void (*)(const std::uint8_t* pixels, std::ptrdiff_t count, std::uint8_t* samples);

// By step from 2 and by group from 1.
constexpr std::array<std::array<Spread, 4>, 3> spreads = {{
    {spreadFixed<1, 2>, spreadFixed<2, 2>, nullptr, nullptr},
    {spreadFixed<1, 3>, spreadFixed<2, 3>, spreadFixed<3, 3>, nullptr},
    {spreadFixed<1, 4>, spreadFixed<2, 4>, spreadFixed<3, 4>, spreadFixed<4, 4>},
}};

}  // namespace

const std::uint8_t* spreadOverSamples(const std::uint8_t* pixels, std::ptrdiff_t count, std::int32_t group,
                                      std::int32_t step, SampleMask* samples) {
    if (step == 1) return pixels;
    spreads[static_cast<std::size_t>(step - 2)][static_cast<std::size_t>(group - 1)](pixels, count, samples->data());
    return samples->data();
}

}  // namespace zetpxl
