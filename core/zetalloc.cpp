// Blocks, image records and their pixel data: creation and release.
//   alloc.1 a block of the allocator is aligned to 32 bytes and holds the address to free in the word before it
//   alloc.2 pixel data does not come from that allocator; imageDataBase holds what was obtained
//   alloc.3 a fill goes by 32-bit words over the whole data, padding included, and does not clamp
#include <bit>
#include <cstdlib>
#include <cstring>

#include "core/alloc.h"
#include "core/check.h"
#include "core/depth.h"
#include "core/platform.h"
#include "core/report.h"

namespace zetpxl {

namespace {

constexpr Operation opCreateImageHeader{"zetCreateImageHeader", "zetalloc"};
constexpr Operation opAllocateImage{"zetAllocateImage", "zetalloc"};
constexpr Operation opAllocateImageFP{"zetAllocateImageFP", "zetalloc"};

constexpr std::ptrdiff_t kBlockAlign = 32;
constexpr std::ptrdiff_t kBlockOverhead = kBlockAlign + static_cast<std::ptrdiff_t>(sizeof(void*));
// From here on the kernel's work on each small page at its first touch costs more than the pixels do.
constexpr std::size_t kLargeImage = std::size_t{1} << 22;
constexpr std::int32_t kAllSides = ZET_SIDE_TOP | ZET_SIDE_BOTTOM | ZET_SIDE_LEFT | ZET_SIDE_RIGHT;
// Everything of a mask but its own mask.
constexpr std::int32_t kWholeMask = ZET_IMAGE_HEADER | ZET_IMAGE_DATA | ZET_IMAGE_ROI | ZET_IMAGE_TILE;

std::uint8_t* alignUp(std::uint8_t* address, std::ptrdiff_t align) {
    const auto behind =
        static_cast<std::ptrdiff_t>(std::bit_cast<std::uintptr_t>(address) & static_cast<std::uintptr_t>(align - 1));
    return behind == 0 ? address : address + (align - behind);
}

void fillWords(void* data, std::int32_t size, std::uint32_t word) {
    auto* bytes = static_cast<std::uint8_t*>(data);
    for (std::ptrdiff_t i = 0; i + 4 <= size; i += 4) std::memcpy(bytes + i, &word, 4);
}

void obtainData(const Operation& op, ZetImage* image) {
    const DataLayout layout = dataLayout(headerFields(*image));
    const std::size_t size = static_cast<std::size_t>(image->align) + static_cast<std::size_t>(layout.imageSize) - 1;
    image->imageDataBase = std::malloc(size);
    if (!image->imageDataBase) return report(op, ZET_StatusNoMemory, "for allocate image data");
    if (size >= kLargeImage) platform::adviseLargePages(image->imageDataBase, size);
    image->imageData = alignUp(static_cast<std::uint8_t*>(image->imageDataBase), image->align);
    image->imageSize = layout.imageSize;
    image->widthStep = layout.widthStep;
}

constexpr char kWrongDepthInteger[] = "( image->depth == 32 )";
constexpr char kWrongDepthFloat[] = "( image->depth != 32 )";

void allocateImage(const Operation& op, ZetImage* image, std::int32_t doFill, std::uint32_t fillBits, bool isFloat) {
    constexpr std::int32_t bad = ZET_StatusBadArgument;
    if (!image) return report(op, bad, "( image == ((void *)0) )");
    if (image->imageData) return report(op, bad, "( image->imageData != ((void *)0) )");
    if (image->tileInfo) return report(op, bad, "( image->tileInfo != ((void *)0) )");
    if ((image->depth == ZET_DEPTH_32F) != isFloat)
        return report(op, bad, isFloat ? kWrongDepthFloat : kWrongDepthInteger);
    const std::int32_t status = checkHeader(headerFields(*image), false);
    if (status != ZET_StatusOk) return report(op, status, "Incorrect data-ins");
    obtainData(op, image);
    if (image->imageData && doFill)
        fillWords(image->imageData, image->imageSize, repeatedSample(image->depth, fillBits));
}

void storeFields(ZetImage* image, const HeaderFields& fields) {
    image->nChannels = fields.nChannels;
    image->alphaChannel = fields.alphaChannel;
    image->depth = fields.depth;
    std::memcpy(image->colorModel, fields.colorModel, sizeof image->colorModel);
    std::memcpy(image->channelSeq, fields.channelSeq, sizeof image->channelSeq);
    image->dataOrder = fields.dataOrder;
    image->origin = fields.origin;
    image->align = fields.align;
    image->width = fields.width;
    image->height = fields.height;
    const DataLayout layout = dataLayout(fields);
    image->widthStep = layout.widthStep;
    image->imageSize = layout.imageSize;
}

void releaseBlock(void* block) { zetDeleteROI(block); }

}  // namespace

void* ownAlloc(std::ptrdiff_t size) {
    if (size < 1 || size > PTRDIFF_MAX - kBlockOverhead) return nullptr;
    auto* base = static_cast<std::uint8_t*>(std::malloc(static_cast<std::size_t>(size + kBlockOverhead)));
    if (!base) return nullptr;
    std::uint8_t* block = alignUp(base + sizeof(void*), kBlockAlign);
    std::memcpy(block - sizeof(void*), &base, sizeof base);
    return block;
}

void* ownAllocWords(std::ptrdiff_t count) { return ownAlloc(sizeProduct(count, 4)); }

void ownSetROI(ZetROI* roi, std::int32_t coi, std::int32_t xOffset, std::int32_t yOffset, std::int32_t width,
               std::int32_t height) {
    if (roi) *roi = {coi, xOffset, yOffset, width, height};
}

void ownDeallocateHeader(ZetImage* image) { zetDeallocate(image, ZET_IMAGE_HEADER); }

}  // namespace zetpxl

using namespace zetpxl;

ZetImage* zetCreateImageHeader(int32_t nChannels, int32_t alphaChannel, uint32_t depth, const char* colorModel,
                               const char* channelSeq, int32_t dataOrder, int32_t origin, int32_t align, int32_t width,
                               int32_t height, ZetROI* roi, ZetImage* maskImage, void* imageTag,
                               ZetTileInfo* tileInfo) {
    const HeaderFields fields{nChannels, alphaChannel, depth, colorModel, channelSeq, dataOrder,
                              origin,    align,        width, height,     maskImage};
    const std::int32_t status = checkHeader(fields, tileInfo != nullptr);
    if (status != ZET_StatusOk) {
        report(opCreateImageHeader, status, "Incorrect data-ins");
        return nullptr;
    }
    auto* image = static_cast<ZetImage*>(ownAlloc(static_cast<std::ptrdiff_t>(sizeof(ZetImage))));
    if (!image) return nullptr;
    *image = {};
    image->headerSize = static_cast<std::int32_t>(sizeof(ZetImage));
    storeFields(image, fields);
    image->roi = roi;
    image->maskImage = maskImage;
    image->imageTag = imageTag;
    image->tileInfo = tileInfo;
    zetSetBorderMode(image, ZET_BORDER_CONSTANT, kAllSides, 0);
    return image;
}

void zetAllocateImage(ZetImage* image, int32_t doFill, int32_t fillValue) {
    allocateImage(opAllocateImage, image, doFill, static_cast<std::uint32_t>(fillValue), false);
}

void zetAllocateImageFP(ZetImage* image, int32_t doFill, float fillValue) {
    allocateImage(opAllocateImageFP, image, doFill, std::bit_cast<std::uint32_t>(fillValue), true);
}

void zetDeallocate(ZetImage* image, int32_t flags) {
    if (!image) return;
    if (flags & ZET_IMAGE_ROI) {
        releaseBlock(image->roi);
        image->roi = nullptr;
    }
    if (flags & ZET_IMAGE_MASK) {
        zetDeallocate(image->maskImage, kWholeMask);
        image->maskImage = nullptr;
    }
    if (flags & ZET_IMAGE_TILE) {
        releaseBlock(image->tileInfo);
        image->tileInfo = nullptr;
    }
    if ((flags & ZET_IMAGE_DATA) && image->imageDataBase) {
        std::free(image->imageDataBase);
        image->imageData = nullptr;
        image->imageDataBase = nullptr;
    }
    if (flags & ZET_IMAGE_HEADER) releaseBlock(image);
}

ZetROI* zetCreateROI(int32_t coi, int32_t xOffset, int32_t yOffset, int32_t width, int32_t height) {
    auto* roi = static_cast<ZetROI*>(ownAlloc(static_cast<std::ptrdiff_t>(sizeof(ZetROI))));
    ownSetROI(roi, coi, xOffset, yOffset, width, height);
    return roi;
}

void zetDeleteROI(void* roi) {
    if (!roi) return;
    void* base = nullptr;
    std::memcpy(&base, static_cast<std::uint8_t*>(roi) - sizeof(void*), sizeof base);
    std::free(base);
}
