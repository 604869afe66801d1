// Rows of a DIB converted to rows of planes: through palette tables, or through the bit fields of a word.
#include "zetpxl.h"

#include <algorithm>

#include "convert/dib.h"

namespace zetpxl {
namespace {

// The leftmost pixel of a byte is in its highest bits.
template <int Bits>
std::uint8_t paletteIndex(const std::uint8_t* row, std::ptrdiff_t x) {
    constexpr std::ptrdiff_t perByte = 8 / Bits;
    constexpr std::ptrdiff_t last = perByte - 1;
    return static_cast<std::uint8_t>(row[x / perByte] >> ((last - x % perByte) * Bits) & ((1 << Bits) - 1));
}

void splitPlane(const std::uint32_t* pixels, int shift, std::uint8_t* __restrict plane, std::ptrdiff_t count) {
    for (std::ptrdiff_t x = 0; x < count; ++x) plane[x] = static_cast<std::uint8_t>(pixels[x] >> shift);
}

// One look-up a pixel for all planes together; taking them apart is what vector code does well.
template <int Bits, int Planes>
void paletteRow(const DibForm& form, const std::uint8_t* source, std::uint8_t* const* planes, std::ptrdiff_t count) {
    constexpr std::ptrdiff_t kChunk = 256;
    std::array<std::uint32_t, kChunk> pixels;
    for (std::ptrdiff_t start = 0; start < count; start += kChunk) {
        const std::ptrdiff_t length = std::min(kChunk, count - start);
        for (std::ptrdiff_t x = 0; x < length; ++x)
            pixels[static_cast<std::size_t>(x)] = form.palette[paletteIndex<Bits>(source, start + x)];
        for (int c = 0; c < Planes; ++c) splitPlane(pixels.data(), 8 * c, planes[c] + start, length);
    }
}

template <class Word>
void fieldPlane(DibForm::Field field, const std::uint8_t* source, std::uint8_t* __restrict plane,
                std::ptrdiff_t count) {
    const Word mask = static_cast<Word>(field.mask);
    for (std::ptrdiff_t x = 0; x < count; ++x) {
        const Word bits = loadUnaligned<Word>(source + x * static_cast<std::ptrdiff_t>(sizeof(Word))) & mask;
        plane[x] = static_cast<std::uint8_t>(static_cast<Word>(bits >> field.right) << field.left);
    }
}

template <class Word, std::size_t Planes>
void fieldRow(const DibForm& form, const std::uint8_t* source, std::uint8_t* const* planes, std::ptrdiff_t count) {
    for (std::size_t c = 0; c < Planes; ++c) fieldPlane<Word>(form.fields[c], source, planes[c], count);
}

struct RowEntry {
    std::int32_t bitCount;
    std::int32_t nChannels;
    DibRowRoutine routine;
};

constexpr RowEntry kRows[] = {
    {1, 1, paletteRow<1, 1>},
    {1, 3, paletteRow<1, 3>},
    {4, 1, paletteRow<4, 1>},
    {4, 3, paletteRow<4, 3>},
    {8, 1, paletteRow<8, 1>},
    {8, 3, paletteRow<8, 3>},
    {16, 3, fieldRow<std::uint16_t, 3>},
    {32, 4, fieldRow<std::uint32_t, 4>},
};

}  // namespace

DibRowRoutine dibRowRoutine(std::int32_t bitCount, std::int32_t nChannels) {
    for (const RowEntry& entry : kRows)
        if (entry.bitCount == bitCount && entry.nChannels == nChannels) return entry.routine;
    return nullptr;
}

}  // namespace zetpxl
