// The image check that every operation runs first, and row arithmetic.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "core/report.h"
#include "zetpxl.h"

namespace zetpxl {

// 0 for a valid image, else a negative status, which is also stored; reports nothing.
std::int32_t ownCheckImage(const ZetImage* image);

// The check on each of an operation's images in turn; reports the first that fails and gives false.
bool checkImages(const Operation& op, std::initializer_list<const ZetImage*> images,
                 std::source_location where = std::source_location::current());

// The fields that the header check looks at.
struct HeaderFields {
    std::int32_t nChannels;
    std::int32_t alphaChannel;
    std::uint32_t depth;
    const char* colorModel;
    const char* channelSeq;
    std::int32_t dataOrder;
    std::int32_t origin;
    std::int32_t align;
    std::int32_t width;
    std::int32_t height;
    const ZetImage* maskImage;
};

HeaderFields headerFields(const ZetImage& image);

// The header check and, as its last step, the test that an untiled image's row and data fit 32 signed bits.
std::int32_t checkHeader(const HeaderFields& fields, bool tiled);

// Bytes of a row and of the data; 2147483647 for a number that does not fit.
struct DataLayout {
    std::int32_t widthStep;
    std::int32_t imageSize;
};
DataLayout dataLayout(const HeaderFields& fields);

// Bytes of a row of `width` pixels; 2147483647 for a number that does not fit.
std::int32_t ownRowBytes(std::int32_t dataOrder, std::uint32_t depth, std::int32_t align, std::int32_t nChannels,
                         std::int32_t width);

// Bytes of a row of the image's tiles; 0 for a null or invalid image or one without tiles.
std::int32_t ownTileRowBytes(const ZetImage* image);

}  // namespace zetpxl
