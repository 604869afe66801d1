// The frame of point operations.
//   point.1 checks stop at the first failure: images, depths, data orders, channel counts, masks; a refused depth comes last
//   point.2 images of one layout without masks are one flat run of imageSize bytes, row padding included
//   point.3 interleaved pixels: one element where any image has a coi, the elements before alpha where any image has alpha,
//           whole rows otherwise
#include "pixel/pointop.h"

#include <algorithm>

#include "core/check.h"
#include "core/region.h"
#include "pixel/lockstep.h"
#include "pixel/masks.h"

namespace zetpxl {

namespace {

constexpr PointSourceWords wordsA{"(srcImageA->depth != dstImage->depth)",
                                  "(srcImageA->dataOrder != dstImage->dataOrder)", "(nChSrcA != nChDst)",
                                  "(srcImageA->tileInfo->tileData == 0)"};
constexpr PointSourceWords wordsB{"(srcImageB->depth != dstImage->depth)",
                                  "(srcImageB->dataOrder != dstImage->dataOrder)", "(nChSrcB != nChDst)",
                                  "(srcImageB->tileInfo->tileData == 0)"};
constexpr PointSourceWords wordsOnly{"(srcImage->depth != dstImage->depth)",
                                     "(srcImage->dataOrder != dstImage->dataOrder)", "(nChSrc != nChDst)",
                                     "(srcImage->tileInfo->tileData == 0)"};
constexpr char wordsDstTile[] = "(dstImage->tileInfo->tileData == 0)";

const PointSourceWords& wordsOf(const PointImages& images, std::int32_t source) {
    if (images.nSources == 1) return wordsOnly;
    return source == 0 ? wordsA : wordsB;
}

// What the routines need to know of the channels, the same for every rectangle of a walk.
struct PointChannels {
    std::array<std::int32_t, 2> firstSource;
    std::int32_t firstDst;
    std::int32_t nProc;
    bool allChannels;  // no image has a coi
    bool hasAlpha;
};

struct PointWork {
    const PointImages* images;
    PointChannels channels;
    PointRoutines routines;
    std::int32_t bytes;  // of a sample, 0 for 1U
};

std::int32_t channelCount(const ZetImage* image) {
    if (regionCoi(image) > 0) return 1;
    return image->nChannels - (image->alphaChannel ? 1 : 0);
}

std::int32_t firstChannel(const ZetImage* image) { return std::max(regionCoi(image) - 1, 0); }

PointChannels resolveChannels(const PointImages& images) {
    PointChannels c{};
    c.firstDst = firstChannel(images.dst);
    c.nProc = channelCount(images.dst);
    c.allChannels = regionCoi(images.dst) == 0;
    c.hasAlpha = images.dst->alphaChannel != 0;
    for (std::int32_t s = 0; s < images.nSources; ++s) {
        const ZetImage* source = images.sources[static_cast<std::size_t>(s)];
        c.firstSource[static_cast<std::size_t>(s)] = firstChannel(source);
        c.allChannels = c.allChannels && regionCoi(source) == 0;
        c.hasAlpha = c.hasAlpha || source->alphaChannel != 0;
    }
    return c;
}

using SourceTest = bool (*)(const ZetImage* source, const ZetImage* dst);

// One test over the sources in their order; false after a report.
bool testSources(const Operation& op, const PointImages& images, SourceTest differs,
                 const char* PointSourceWords::*words, std::source_location where = std::source_location::current()) {
    for (std::int32_t s = 0; s < images.nSources; ++s) {
        if (!differs(images.sources[static_cast<std::size_t>(s)], images.dst)) continue;
        report(op, ZET_StatusBadArgument, wordsOf(images, s).*words, where);
        return false;
    }
    return true;
}

bool checkArguments(const Operation& op, const PointImages& images) {
    const auto depthDiffers = [](const ZetImage* s, const ZetImage* d) { return s->depth != d->depth; };
    const auto orderDiffers = [](const ZetImage* s, const ZetImage* d) {
        return d->depth != ZET_DEPTH_1U && s->dataOrder != d->dataOrder;
    };
    const auto countDiffers = [](const ZetImage* s, const ZetImage* d) { return channelCount(s) != channelCount(d); };
    const bool good = images.nSources == 1 ? checkImages(op, {images.sources[0], images.dst})
                                           : checkImages(op, {images.sources[0], images.sources[1], images.dst});
    return good && testSources(op, images, depthDiffers, &PointSourceWords::depth) &&
           testSources(op, images, orderDiffers, &PointSourceWords::order) &&
           testSources(op, images, countDiffers, &PointSourceWords::channels);
}

// Where an image's region starts and how its rows and planes follow.
struct PointStart {
    const std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeStep;
    std::int32_t bit;
};

PointStart startOf(const ZetImage* image, std::int32_t channel, std::int32_t* width, std::int32_t* height) {
    std::int32_t itsWidth = 0;
    std::int32_t itsHeight = 0;
    PointStart start{};
    start.data = ownRoiStart(image, &itsWidth, &itsHeight, channel, &start.bit);
    start.rowStep = image->widthStep;
    start.planeStep = planeBytes(image);
    *width = std::min(*width, itsWidth);
    *height = std::min(*height, itsHeight);
    return start;
}

const std::uint8_t* rowAddress(const PointStart& s, std::ptrdiff_t plane, std::ptrdiff_t y) {
    return s.data + plane * s.planeStep + y * s.rowStep;
}

void runFlat(const PointWork& work, const LockStepRectangle& images) {
    PointRow row{};
    row.a = pixelData(images.sources[0]);
    row.b = images.sources[1] ? pixelData(images.sources[1]) : nullptr;
    row.d = pixelData(images.dst);
    row.group = row.stepA = row.stepB = row.stepD = 1;
    row.width = work.bytes ? images.dst->imageSize / work.bytes : std::ptrdiff_t{8} * images.dst->imageSize;
    row.constant = work.images->constant;
    work.routines.plain(row);
}

// Steps of a row by data order and channels; gives the number of planes.
std::int32_t setSteps(const PointWork& work, const LockStepRectangle& images, PointRow* row) {
    const PointChannels& c = work.channels;
    const bool planar = images.dst->dataOrder == 1 || work.bytes == 0;
    row->group = planar ? std::min(c.nProc, 1) : c.nProc;
    row->stepD = planar ? 1 : images.dst->nChannels;
    row->stepA = planar ? 1 : images.sources[0]->nChannels;
    row->stepB = planar || !images.sources[1] ? row->stepD : images.sources[1]->nChannels;
    if (!planar && c.allChannels && !c.hasAlpha) row->stepA = row->stepB = row->stepD = row->group;
    return planar ? c.nProc : 1;
}

void runRows(const PointWork& work, const LockStepRectangle& images) {
    const PointChannels& c = work.channels;
    PointRow row{};
    std::int32_t width = 0x7FFFFFFF;
    std::int32_t height = 0x7FFFFFFF;
    const PointStart a = startOf(images.sources[0], c.firstSource[0], &width, &height);
    const PointStart b =
        images.sources[1] ? startOf(images.sources[1], c.firstSource[1], &width, &height) : PointStart{};
    const PointStart d = startOf(images.dst, c.firstDst, &width, &height);
    const PointStart m = images.mask ? startOf(images.mask, 0, &width, &height) : PointStart{};
    row.width = width;
    row.constant = work.images->constant;
    row.bitA = a.bit;
    row.bitB = b.bit;
    row.bitD = d.bit;
    const std::int32_t planes = setSteps(work, images, &row);
    const PointRowRoutine routine = images.mask ? work.routines.masked : work.routines.plain;
    for (std::ptrdiff_t plane = 0; plane < planes; ++plane)
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            row.a = rowAddress(a, plane, y);
            row.b = images.sources[1] ? rowAddress(b, plane, y) : nullptr;
            row.d = const_cast<std::uint8_t*>(rowAddress(d, plane, y));
            row.mask = {images.mask ? rowAddress(m, 0, y) : nullptr, m.bit};
            routine(row);
        }
}

// The inner routine: untiled images or views of them.
void runRectangle(const LockStepRectangle& images, const void* argument) {
    const auto& work = *static_cast<const PointWork*>(argument);
    const ZetImage* second = images.sources[1] ? images.sources[1] : images.dst;
    if (!images.mask && ownSameBlock(images.sources[0], second, images.dst, work.channels.hasAlpha))
        return runFlat(work, images);
    runRows(work, images);
}

bool isTiled(const PointImages& images) {
    bool tiled = images.dst->tileInfo != nullptr;
    for (std::int32_t s = 0; s < images.nSources; ++s)
        tiled = tiled || images.sources[static_cast<std::size_t>(s)]->tileInfo;
    return tiled;
}

void process(const PointOperation& operation, const PointImages& images, ZetImage* mask) {
    const auto index = static_cast<std::size_t>(depthIndex(images.dst->depth));
    const PointWork work{&images, resolveChannels(images), (*operation.table)[index], sampleBytes(images.dst->depth)};
    if (!work.routines.plain)
        return report(operation.op, ZET_StatusBadArgument, "This function does not support depth 32F");
    if (!isTiled(images)) return runRectangle({{images.sources[0], images.sources[1]}, images.dst, mask}, &work);
    const char* secondWords = images.nSources == 2 ? wordsB.tile : nullptr;
    const LockStepCall call{operation.op, {{wordsOf(images, 0).tile, secondWords}, wordsDstTile}, runRectangle, &work};
    walkLockStep({images.sources, images.nSources, images.dst, mask}, call);
}

bool isEmptyMask(const ZetImage* mask) {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t bit = 0;
    ownRoiStart(mask, &width, &height, 0, &bit);
    return width == 0 || height == 0;
}

ZetImage* joinMasks(const PointImages& images, std::int32_t* kind) {
    ZetImage* first = images.sources[0]->maskImage;
    ZetImage* second = images.nSources == 2 ? images.sources[1]->maskImage : nullptr;
    // An image changed in place is its own destination: what is done and undone under its mask must not need memory.
    if (images.nSources == 1 && first && first == images.dst->maskImage) {
        *kind = isEmptyMask(first) ? kMaskEmpty : kMaskAsGiven;
        return first;
    }
    return ownCombineMasks(first, second, images.dst->maskImage, kind);
}

}  // namespace

void runPointOperation(const PointOperation& operation, const PointImages& images) {
    if (!checkArguments(operation.op, images)) return;
    std::int32_t kind = kMaskAsGiven;
    ZetImage* mask = joinMasks(images, &kind);
    if (kind == kMaskEmpty) return;
    if (kind == kMaskNoMemory) return report(operation.op, ZET_StatusNoMemory, "Out of memory");
    process(operation, images, mask);
    if (kind == kMaskTemporary) zetDeallocate(mask, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
}

}  // namespace zetpxl
