// Runs of bits at any bit offset, most significant bit first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl {

// Copies `length` bits; only bits of the run change, and no byte outside either run is touched. Bit offsets may be 8 and
// above.
void ownCopyBits(const std::uint8_t* source, std::uint8_t* destination, std::ptrdiff_t sourceBit,
                 std::ptrdiff_t destinationBit, std::ptrdiff_t length);

// Sets or clears `length` bits; no other bit changes.
void fillBits(std::uint8_t* destination, std::ptrdiff_t bit, std::ptrdiff_t length, bool value);

}  // namespace zetpxl
