// A device-independent bitmap in memory as an image.
//   dib.1  pixels that an image record can describe are shared, not copied: 1-bit and 8-bit grey, 24 and 32 bits
//   dib.2  all others become planes of 8U: row i of the DIB's memory is row i of the image's memory
//   dib.3  `origin` tells which way up the rows are; nothing is flipped
#include "zetpxl.h"

#include <algorithm>

#include "convert/dib.h"
#include "convert/ownrle.h"
#include "core/alloc.h"
#include "core/region.h"
#include "core/report.h"

namespace zetpxl {
namespace {

constexpr Operation opTranslate{"zetTranslateDIB", "zetDIB"};
constexpr Operation opConvert{"zetConvertFromDIB", "zetDIB"};

// What an image of a DIB looks like.
struct ImageForm {
    std::int32_t clone;
    std::int32_t nChannels;
    std::int32_t alphaChannel;
    std::uint32_t depth;
    const char* colorModel;
    const char* channelSeq;
};

constexpr ImageForm kSharedBits{0, 1, 0, ZET_DEPTH_1U, "GRAY", "G\0\0"};
constexpr ImageForm kSharedGrey{0, 1, 0, ZET_DEPTH_8U, "GRAY", "G\0\0"};
constexpr ImageForm kSharedBGR{0, 3, 0, ZET_DEPTH_8U, "RGB", "BGR"};
constexpr ImageForm kSharedBGRA{0, 4, 4, ZET_DEPTH_8U, "RGBA", "BGRA"};
constexpr ImageForm kGreyPlane{1, 1, 0, ZET_DEPTH_8U, "GRAY", "G\0\0"};
constexpr ImageForm kPlanesBGR{1, 3, 0, ZET_DEPTH_8U, "RGB", "BGR"};
constexpr ImageForm kPlanesBGRA{1, 4, 4, ZET_DEPTH_8U, "RGBA", "BGRA"};

// Null for a bit count without an image.
const ImageForm* imageForm(const BITMAPINFOHEADER* dib, const BITMAPINFOHEADER& header) {
    const bool coded = header.biCompression == kDibRle8;
    switch (header.biBitCount) {
        case 1:
            return ownDibIsGray(dib) ? &kSharedBits : &kPlanesBGR;
        case 4:
            return ownDibIsGray(dib) ? &kGreyPlane : &kPlanesBGR;
        case 8:
            return !ownDibIsGray(dib) ? &kPlanesBGR : coded ? &kGreyPlane : &kSharedGrey;
        case 16:
            return &kPlanesBGR;
        case 24:
            return &kSharedBGR;
        case 32:
            return header.biCompression == kDibBitFields ? &kPlanesBGRA : &kSharedBGRA;
        default:
            return nullptr;
    }
}

const char* refusal(const BITMAPINFOHEADER& dib) {
    if (dib.biSize != sizeof(BITMAPINFOHEADER)) return "( dib->biSize != sizeof(BITMAPINFOHEADER) )";
    if (dib.biPlanes != 1) return "(dib->biPlanes != 1)";
    if (dib.biCompression > kDibBitFields)
        return "(dib->biCompression != 0) && (dib->biCompression != 1) && (dib->biCompression != 2) && "
               "(dib->biCompression != 3)";
    if (dib.biBitCount != 8 && dib.biCompression == kDibRle8)
        return "(dib->biBitCount != 8) && (dib->biCompression == 1)";
    if (dib.biBitCount != 4 && dib.biCompression == kDibRle4)
        return "(dib->biBitCount != 4) && (dib->biCompression == 2)";
    if (dib.biHeight < 0 && dibIsCoded(dib))
        return "(dib->biHeight < 0) && ( (dib->biCompression == 1) || (dib->biCompression == 2) )";
    if (dib.biClrUsed > 0x8000) return "(dib->biClrUsed > 0x8000)";
    if (dib.biBitCount == 8 && dib.biClrUsed > 256) return "( dib->biBitCount==8 && dib->biClrUsed>256 )";
    if (dib.biBitCount == 4 && dib.biClrUsed > 16) return "( dib->biBitCount==4 && dib->biClrUsed>16 )";
    return nullptr;
}

// The lowest biHeight has no magnitude in 32 bits; it goes on as it is and is refused with the other bad sizes.
std::int32_t imageHeight(const BITMAPINFOHEADER& header) {
    const std::ptrdiff_t rows = dibRows(header);
    return rows > INT32_MAX ? header.biHeight : static_cast<std::int32_t>(rows);
}

ZetImage* makeHeader(const ImageForm& form, const BITMAPINFOHEADER& header) {
    return zetCreateImageHeader(form.nChannels, form.alphaChannel, form.depth, form.colorModel, form.channelSeq,
                                form.clone, header.biHeight >= 0 ? 1 : 0, form.clone ? 32 : 4, header.biWidth,
                                imageHeight(header), nullptr, nullptr, nullptr, nullptr);
}

// A 1-bit ramp of more than two entries still counts as a table of two.
std::size_t sharedEntries(const BITMAPINFOHEADER* dib, const BITMAPINFOHEADER& header) {
    return header.biBitCount == 1 ? 2 : ownDibColors(dib);
}

// The header check has seen that row and image fit 32 bits.
void sharePixels(const BITMAPINFOHEADER* dib, const BITMAPINFOHEADER& header, ZetImage* image) {
    image->widthStep = static_cast<std::int32_t>(ownDibRowBytes(header.biWidth, header.biBitCount, 4));
    image->imageSize = image->height * image->widthStep;
    const std::uint8_t* const pixels = dibBytes(dib) + header.biSize + 4 * sharedEntries(dib, header);
    image->imageData = const_cast<std::uint8_t*>(pixels);
}

// Both walks start at the row that lies lowest in the picture when the rows are stored bottom to top.
void convertRows(const BITMAPINFOHEADER& header, const DibForm& form, const std::uint8_t* source, ZetImage* image) {
    const DibRowRoutine convert = dibRowRoutine(header.biBitCount, image->nChannels);
    if (!convert) return;
    const std::ptrdiff_t sourceStep = ownDibRowBytes(header.biWidth, header.biBitCount, 4);
    const std::ptrdiff_t sourceRows = dibRows(header);
    const std::ptrdiff_t rows = std::min<std::ptrdiff_t>(image->height, sourceRows);
    const std::ptrdiff_t firstSource = header.biHeight > 0 ? sourceRows - rows : 0;
    const std::ptrdiff_t firstRow = image->origin == 1 ? image->height - rows : 0;
    for (std::ptrdiff_t y = 0; y < rows; ++y) {
        std::uint8_t* const row = pixelData(image) + (firstRow + y) * image->widthStep;
        std::array<std::uint8_t*, 4> planes{};
        for (std::int32_t c = 0; c < image->nChannels; ++c)
            planes[static_cast<std::size_t>(c)] = row + c * planeBytes(image);
        convert(form, source + (firstSource + y) * sourceStep, planes.data(), std::min(image->width, header.biWidth));
    }
}

}  // namespace

void zetConvertFromDIB(const BITMAPINFOHEADER* dib, ZetImage* image) {
    if (zetGetErrStatus() < 0) return;
    const BITMAPINFOHEADER header = dibHeader(dib);
    Block<std::uint8_t> decoded;
    if (dibIsCoded(header)) {
        decoded.reset(static_cast<std::uint8_t*>(ownDecompressRLE(dib)));
        if (!decoded) return report(opConvert, ZET_StatusInternal, "Impossible to decompress RLE DIB");
    }
    DibForm form;
    if (header.biBitCount <= 8) {
        dibPalette(dib, image->nChannels == 1, &form);
    } else {
        dibFields(dib, &form);
    }
    convertRows(header, form, decoded ? decoded.get() : ownDibBits(dib), image);
}

}  // namespace zetpxl

using namespace zetpxl;

ZetImage* zetTranslateDIB(const BITMAPINFOHEADER* dib, std::int32_t* cloneData) {
    const auto refused = [](const char* text, std::source_location where = std::source_location::current()) {
        report(opTranslate, ZET_StatusBadArgument, text, where);
        return static_cast<ZetImage*>(nullptr);
    };
    if (!dib) return refused("( dib == 0 )");
    if (!cloneData) return refused("( cloneData == 0 )");
    const BITMAPINFOHEADER header = dibHeader(dib);
    if (const char* const text = refusal(header)) return refused(text);
    const ImageForm* const form = imageForm(dib, header);
    if (!form) return refused("dib->biBitCount is bad");
    *cloneData = form->clone;
    ZetImage* const image = makeHeader(*form, header);
    if (!image) {
        report(opTranslate, ZET_StatusNoMemory, "Not enough memory to allocate header for destination image");
        return nullptr;
    }
    if (form->clone == 0) {
        sharePixels(dib, header, image);
        return image;
    }
    zetAllocateImage(image, 0, 0);
    if (!image->imageData) {
        report(opTranslate, ZET_StatusNoMemory, "Not enough memory to allocate data for destination image");
        zetDeallocate(image, ZET_IMAGE_HEADER);
        return nullptr;
    }
    zetConvertFromDIB(dib, image);
    return image;
}
