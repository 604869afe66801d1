// The table behind a DIB's header: its length, its ramp test, its palette and its channel masks.
#include "zetpxl.h"

#include "convert/dib.h"

namespace zetpxl {
namespace {

constexpr std::uint32_t kGreyBlue = 18;
constexpr std::uint32_t kGreyGreen = 183;
constexpr std::uint32_t kGreyRed = 54;

// The weights add up to 255, so that white comes out as 254.
constexpr std::uint8_t greyOf(std::uint32_t blue, std::uint32_t green, std::uint32_t red) {
    return static_cast<std::uint8_t>((kGreyRed * red + kGreyGreen * green + kGreyBlue * blue) >> 8);
}
static_assert(greyOf(255, 255, 255) == 254 && greyOf(17, 17, 17) == 16 && greyOf(0, 0, 0) == 0);

bool isPalette(std::uint32_t bitCount) { return bitCount == 1 || bitCount == 4 || bitCount == 8; }

std::uint32_t colorsOf(const BITMAPINFOHEADER& header) {
    if (isPalette(header.biBitCount)) return header.biClrUsed != 0 ? header.biClrUsed : 1u << header.biBitCount;
    const bool masks = (header.biBitCount == 16 || header.biBitCount == 32) && header.biCompression == kDibBitFields;
    return masks ? header.biClrUsed + 3 : header.biClrUsed;
}

const std::uint8_t* tableOf(const BITMAPINFOHEADER* dib) { return dibBytes(dib) + sizeof(BITMAPINFOHEADER); }

struct MaskField {
    std::uint32_t mask;
    std::int32_t shift;
    std::int32_t bits;
};

MaskField maskField(std::uint32_t mask) {
    MaskField field{mask, 0, 0};
    ownDibMaskField(mask, &field.shift, &field.bits);
    return field;
}

// Alpha has no mask in the file: it takes what lies above the topmost colour.
MaskField alphaAbove(const MaskField& blue, const MaskField& green, const MaskField& red) {
    MaskField top = green.shift > blue.shift ? green : blue;
    if (red.shift > top.shift) top = red;
    const std::int32_t low = (top.shift + top.bits) & 31;
    return maskField((0xFFFFFFFFu >> low) << low);
}

// A field of 8 bits and more loses its lowest bits, a shorter one gets zeros below; both shifts come down to one.
DibForm::Field toByte(const MaskField& field) {
    const std::int32_t right = field.shift + field.bits - 8;
    return right >= 0 ? DibForm::Field{field.mask, right, 0} : DibForm::Field{field.mask, 0, -right};
}

}  // namespace

std::uint32_t ownDibColors(const BITMAPINFOHEADER* dib) { return colorsOf(dibHeader(dib)); }

const std::uint8_t* ownDibBits(const BITMAPINFOHEADER* dib) {
    const BITMAPINFOHEADER header = dibHeader(dib);
    return dibBytes(dib) + header.biSize + 4 * std::size_t{colorsOf(header)};
}

std::int32_t ownDibIsGray(const BITMAPINFOHEADER* dib) {
    const std::uint32_t count = ownDibColors(dib);
    if (count < 2) return 0;
    const std::uint8_t* entry = tableOf(dib);
    for (std::uint32_t i = 0; i < count; ++i, entry += 4)
        if (entry[2] != entry[1] || entry[2] != entry[0] || entry[2] != i * 255 / (count - 1)) return 0;
    return 1;
}

void dibPalette(const BITMAPINFOHEADER* dib, bool grey, DibForm* form) {
    *form = {};
    const std::uint32_t count = ownDibColors(dib);
    const std::uint8_t* entry = tableOf(dib);
    for (std::uint32_t i = 0; i < count && i < 256; ++i, entry += 4)
        form->palette[i] = grey ? greyOf(entry[0], entry[1], entry[2]) : loadUnaligned<std::uint32_t>(entry);
}

void dibFields(const BITMAPINFOHEADER* dib, DibForm* form) {
    std::array<std::uint32_t, 3> masks = {0x7C00, 0x03E0, 0x001F};  // red, green, blue
    const BITMAPINFOHEADER header = dibHeader(dib);
    if (header.biCompression == kDibBitFields) masks = loadUnaligned<std::array<std::uint32_t, 3>>(tableOf(dib));
    if (header.biBitCount == 16)
        for (std::uint32_t& mask : masks) mask &= 0xFFFF;
    const MaskField red = maskField(masks[0]);
    const MaskField green = maskField(masks[1]);
    const MaskField blue = maskField(masks[2]);
    form->fields = {toByte(blue), toByte(green), toByte(red), toByte(alphaAbove(blue, green, red))};
}

}  // namespace zetpxl
