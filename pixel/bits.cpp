// Copies and fills of bit runs.
#include "pixel/bits.h"

#include "pixel/bitruns.h"

namespace zetpxl {

void ownCopyBits(const std::uint8_t* source, std::uint8_t* destination, std::ptrdiff_t sourceBit,
                 std::ptrdiff_t destinationBit, std::ptrdiff_t length) {
    const std::array<BitSource, 1> sources = {{{source, sourceBit}}};
    combineBits(sources, destination, destinationBit, length,
                [](std::uint64_t, const std::array<std::uint64_t, 1>& s) { return s[0]; });
}

void fillBits(std::uint8_t* destination, std::ptrdiff_t bit, std::ptrdiff_t length, bool value) {
    if (length <= 0) return;
    const auto putFew = [value](std::uint8_t* byte, std::int32_t mask) {
        *byte = static_cast<std::uint8_t>(value ? *byte | mask : *byte & ~mask);
    };
    destination += bit >> 3;
    const auto p = static_cast<std::int32_t>(bit & 7);
    const std::ptrdiff_t last = (length + p - 1) >> 3;
    const std::int32_t firstMask = 0xFF >> p;
    const std::int32_t lastMask = (0xFF << (7 - ((length + p - 1) & 7))) & 0xFF;
    if (last == 0) return putFew(destination, firstMask & lastMask);
    putFew(destination, firstMask);
    std::memset(destination + 1, value ? 0xFF : 0, static_cast<std::size_t>(last - 1));
    putFew(destination + last, lastMask);
}

}  // namespace zetpxl
