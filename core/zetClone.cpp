// A new image in one block with the fields, region and pixels of another.
#include <algorithm>
#include <cstring>

#include "core/alloc.h"
#include "core/check.h"
#include "core/report.h"

using namespace zetpxl;

namespace {

constexpr Operation op{"zetCloneImage", "zetClone"};

ZetImage* createHeader(const ZetImage& image) {
    return zetCreateImageHeader(image.nChannels, image.alphaChannel, image.depth, image.colorModel, image.channelSeq,
                                image.dataOrder, image.origin, image.align, image.width, image.height, nullptr, nullptr,
                                nullptr, nullptr);
}

void copyFields(ZetImage* clone, const ZetImage& image) {
    *clone = image;
    clone->imageData = nullptr;
    clone->imageDataBase = nullptr;
    clone->tileInfo = nullptr;
    clone->maskImage = nullptr;
    clone->imageTag = nullptr;
    clone->headerId = 0;
    clone->roi = nullptr;
}

bool copyRegion(ZetImage* clone, const ZetROI* roi) {
    if (!roi) return true;
    clone->roi = zetCreateROI(roi->coi, roi->xOffset, roi->yOffset, roi->width, roi->height);
    return clone->roi != nullptr;
}

void allocateData(ZetImage* clone) {
    if (clone->depth == ZET_DEPTH_32F) {
        zetAllocateImageFP(clone, 0, 0);
    } else {
        zetAllocateImage(clone, 0, 0);
    }
}

ZetImage* giveUp(ZetImage* clone, const char* context, std::source_location where = std::source_location::current()) {
    report(op, ZET_StatusNoMemory, context, where);
    zetDeallocate(clone, ZET_IMAGE_HEADER | ZET_IMAGE_ROI);
    return nullptr;
}

}  // namespace

ZetImage* zetCloneImage(const ZetImage* image) {
    if (ownCheckImage(image) != ZET_StatusOk) {
        reportIncorrectImage(op);
        return nullptr;
    }
    ZetImage* clone = createHeader(*image);
    if (!clone) return giveUp(clone, "Not enough memory to allocate header for clone image");
    copyFields(clone, *image);
    if (!copyRegion(clone, image->roi)) return giveUp(clone, "Not enough memory to allocate roi for clone image");
    allocateData(clone);
    if (!clone->imageData) return giveUp(clone, "Not enough memory to allocate imageData for clone image");
    // The source's words need not be those of the row arithmetic.
    if (!image->tileInfo)
        std::memcpy(clone->imageData, image->imageData,
                    static_cast<std::size_t>(std::min(image->imageSize, clone->imageSize)));
    return clone;
}
