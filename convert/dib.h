// Reading a device-independent bitmap in memory: header, colour table, masks, rows. The DIB may lie at any address.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zetpxl.h"

namespace zetpxl {

static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(std::endian::native == std::endian::little, "DIB fields are read as they lie in memory");

enum DibCompression : std::uint32_t { kDibRgb = 0, kDibRle8 = 1, kDibRle4 = 2, kDibBitFields = 3 };

inline const std::uint8_t* dibBytes(const BITMAPINFOHEADER* dib) { return reinterpret_cast<const std::uint8_t*>(dib); }

template <class T>
T loadUnaligned(const std::uint8_t* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return value;
}

inline BITMAPINFOHEADER dibHeader(const BITMAPINFOHEADER* dib) {
    return loadUnaligned<BITMAPINFOHEADER>(dibBytes(dib));
}

inline bool dibIsCoded(const BITMAPINFOHEADER& header) {
    return header.biCompression == kDibRle8 || header.biCompression == kDibRle4;
}

// Rows of the DIB; one more than 32 signed bits hold for the lowest biHeight.
inline std::ptrdiff_t dibRows(const BITMAPINFOHEADER& header) {
    const std::ptrdiff_t height = header.biHeight;
    return height < 0 ? -height : height;
}

// Entries of the table behind the header; channel masks count as entries.
std::uint32_t ownDibColors(const BITMAPINFOHEADER* dib);

// First byte behind the table.
const std::uint8_t* ownDibBits(const BITMAPINFOHEADER* dib);

// 1 if the table is the exact ascending ramp from 0 to 255. One entry is no ramp.
std::int32_t ownDibIsGray(const BITMAPINFOHEADER* dib);

constexpr std::ptrdiff_t ownDibRowBytes(std::ptrdiff_t width, std::ptrdiff_t bits, std::ptrdiff_t align) {
    return ((width * bits + 8 * align - 1) & -(8 * align)) >> 3;
}
static_assert(ownDibRowBytes(10, 24, 4) == 32 && ownDibRowBytes(1, 1, 4) == 4 && ownDibRowBytes(33, 1, 4) == 8);

// Zero bits below the lowest set bit, and the set bits that follow each other from there; 0 and 0 for a mask of 0.
constexpr void ownDibMaskField(std::uint32_t mask, std::int32_t* shift, std::int32_t* bits) {
    *shift = mask == 0 ? 0 : std::countr_zero(mask);
    *bits = std::countr_one(mask >> *shift);
}

// How the pixels of one DIB become samples, worked out once per call.
struct DibForm {
    struct Field {
        std::uint32_t mask;
        std::int32_t right;  // one of the two shifts is 0
        std::int32_t left;
    };
    // Blue in the lowest byte, then green and red; the grey of a grey image. Black behind the table's last entry.
    std::array<std::uint32_t, 256> palette;
    // Blue, green, red, alpha.
    std::array<Field, 4> fields;
};
void dibPalette(const BITMAPINFOHEADER* dib, bool grey, DibForm* form);
void dibFields(const BITMAPINFOHEADER* dib, DibForm* form);

// Converts `count` pixels of a DIB row into a row of each plane.
using DibRowRoutine = void (*)(const DibForm& form, const std::uint8_t* source, std::uint8_t* const* planes,
                               std::ptrdiff_t count);

// Null for a bit count that is never converted.
DibRowRoutine dibRowRoutine(std::int32_t bitCount, std::int32_t nChannels);

void zetConvertFromDIB(const BITMAPINFOHEADER* dib, ZetImage* image);

}  // namespace zetpxl
