// Shrinks the source region into the destination region by two rational factors.
//   decimate.1 destination column i comes from source position start + i * step: no half-pixel shift
//   decimate.2 small images, and factors that are both reciprocals of whole numbers, take the nearest sample, areas excepted
//   decimate.3 the limits of what may be read are the image's, not the region's
//   decimate.4 along a tiled destination positions go on from tile to tile as single precision numbers
#include <algorithm>
#include <array>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"
#include "geometry/decimate.h"

namespace zetpxl {

namespace {

constexpr Operation checkOp{"Decimate", "zetdecim"};

struct DecimateFactors {
    std::int32_t xDst, xSrc, yDst, ySrc;
};

template <class T>
constexpr DecimateKernels decimateKernels = {ownDecimateNN<T>,       ownDecimateLinearX<T>, ownDecimateLinearY<T>,
                                             ownDecimateLinearXY<T>, ownDecimateCubicX<T>,  ownDecimateCubicY<T>,
                                             ownDecimateCubicXY<T>,  ownDecimateSuper<T>};

constexpr DecimateKernels decimateBits = {ownDecimateNN1U, ownDecimateNN1U, ownDecimateNN1U, ownDecimateNN1U,
                                          ownDecimateNN1U, ownDecimateNN1U, ownDecimateNN1U, ownDecimateSuper1U};

// Signed depths are refused before a kernel is chosen.
constexpr std::array<DecimateKernels, kDepthCount> decimateTable = {{
    decimateBits,
    decimateKernels<std::uint8_t>,
    {},
    decimateKernels<std::uint16_t>,
    {},
    {},
    decimateKernels<float>,
}};

DecimateKernel ownDecimateChooseKernel(std::uint32_t depth, const DecimateMode& mode) {
    const DecimateKernels& kernels = decimateTable[static_cast<std::size_t>(depthIndex(depth))];
    switch (mode.mode) {
        case ZET_INTER_LINEAR:
            return mode.yWhole ? kernels.linearX : mode.xWhole ? kernels.linearY : kernels.linearXY;
        case ZET_INTER_CUBIC:
            return mode.yWhole ? kernels.cubicX : mode.xWhole ? kernels.cubicY : kernels.cubicXY;
        case ZET_INTER_SUPER:
            return kernels.area;
        default:
            return kernels.nearest;
    }
}

DecimateWalker ownDecimateChooseWalker(const ZetTileInfo* tileInfo, std::int32_t mode) {
    if (!tileInfo) return ownDecimateWalkPlain;
    return mode == ZET_INTER_NN ? ownDecimateWalkTilesNN : ownDecimateWalkTiles;
}

// Pixels that a factor leaves of a size.
std::int64_t scaledSize(std::int64_t size, std::int32_t dst, std::int32_t src) { return size * dst / src; }

bool needsNearest(const ZetImage* image, const DecimateFactors& f, std::int32_t interpolate, bool bothWhole) {
    const std::int32_t width = image->roi ? image->roi->width : image->width;
    const std::int32_t height = image->roi ? image->roi->height : image->height;
    return image->width < 4 || image->height < 4 || (interpolate != ZET_INTER_SUPER && bothWhole) ||
           scaledSize(width, f.xDst, f.xSrc) < 1 || scaledSize(height, f.yDst, f.ySrc) < 1;
}

std::int32_t areaSize(std::int32_t dst, std::int32_t src) {
    return static_cast<std::int32_t>((std::int64_t{dst} + src - 1) / dst);
}

DecimateMode ownDecimateChooseMode(const ZetImage* srcImage, const DecimateFactors& f, std::int32_t interpolate) {
    DecimateMode mode{interpolate, f.xSrc % f.xDst == 0, f.ySrc % f.yDst == 0, 0, 0};
    if (needsNearest(srcImage, f, interpolate, mode.xWhole && mode.yWhole)) mode.mode = ZET_INTER_NN;
    const ZetTileInfo* tiles = srcImage->tileInfo;
    if (!tiles || mode.mode == ZET_INTER_NN) return mode;
    if (mode.mode != ZET_INTER_SUPER) {
        mode.xPad = mode.xWhole ? 0 : mode.mode;
        mode.yPad = mode.yWhole ? 0 : mode.mode;
        return mode;
    }
    const std::int32_t columns = areaSize(f.xDst, f.xSrc);
    const std::int32_t rows = areaSize(f.yDst, f.ySrc);
    if (columns > tiles->width || rows > tiles->height) {
        mode.mode = ZET_INTER_NN;
        return mode;
    }
    mode.xPad = -columns;
    mode.yPad = -rows;
    return mode;
}
static_assert(ZET_INTER_LINEAR == 1 && ZET_INTER_CUBIC == 2, "an interpolation's number is the samples it looks ahead");

struct DecimateRun {
    ZetImage* src;
    ZetImage* dst;
    DecimateMode mode;
    DecimateKernel kernel;
    DecimateWalker walker;
    DecimateSteps steps;
    DecimateRegion to;
    std::int32_t width, height;  // to make
    DecimateBlock block;         // steps and positions
};

// A part of the destination region, at (x, y) in the image or tile that starts at `base`.
std::int32_t makePart(DecimateRun* run, void* base, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height) {
    const DecimateSteps& steps = run->steps;
    DecimateBlock* block = &run->block;
    block->dst = static_cast<std::uint8_t*>(base) + sampleOffset(run->dst, y * steps.rowStep) +
                 sampleOffset(run->dst, x * steps.pixelStep) +
                 sampleOffset(run->dst, run->to.channel * steps.channelStep);
    block->dstWidthEnd = steps.pixelStep * width;
    block->dstRowEnd = steps.rowStep * height;
    if (run->dst->depth == ZET_DEPTH_1U) block->dstChannelStep = x & 7;
    return run->walker(run->kernel, run->mode, run->src, block);
}

std::int32_t reportSource() {
    report(kDecimate, ZET_StatusInternal, "srcImage->tileInfo->callBack crash");
    return 0;
}

std::int32_t makeTile(DecimateRun* run, const TileGrid& grid, std::int32_t c, std::int32_t r) {
    const std::int32_t column = grid.x.first + c;
    const std::int32_t row = grid.y.first + r;
    void* tile = fetchTile(run->dst, column, row, ZET_TILE_WRITE);
    if (!tile) {
        report(kDecimate, ZET_StatusInternal, "dstImage->tileInfo->callBack crash");
        return 0;
    }
    const std::int32_t done =
        makePart(run, tile, grid.x.offset(c), grid.y.offset(r), grid.x.bandSize(c), grid.y.bandSize(r));
    releaseTile(run->dst, column, row);
    return done ? 1 : reportSource();
}

std::int32_t makeTiles(DecimateRun* run) {
    const TileGrid grid = tileGrid(run->dst, run->height, run->width);
    const float xStart = run->block.xPos;
    for (std::int32_t r = 0; r < grid.y.count; ++r) {
        const float yStart = run->block.yPos;
        run->block.xPos = xStart;
        for (std::int32_t c = 0; c < grid.x.count; ++c) {
            run->block.yPos = yStart;
            if (!makeTile(run, grid, c, r)) return 0;
        }
    }
    return 1;
}

// Positions, and the steps that do not change from part to part.
DecimateBlock startBlock(const DecimateRun& run, const DecimateFactors& f) {
    DecimateBlock block{};
    const bool nearest = run.mode.mode == ZET_INTER_NN;
    block.xPos = nearest && !run.mode.xWhole ? 0.5f : 0.0f;
    block.yPos = nearest && !run.mode.yWhole ? 0.5f : 0.0f;
    block.xStep = static_cast<float>(static_cast<double>(f.xSrc) / f.xDst);
    block.yStep = static_cast<float>(static_cast<double>(f.ySrc) / f.yDst);
    const std::ptrdiff_t channels = std::min(decimateRegion(run.src).nChannels, run.to.nChannels);
    block.dstChannelStep = run.steps.channelStep;
    block.dstChannelEnd = run.steps.channelStep * channels;
    block.dstPixelStep = run.steps.pixelStep;
    block.dstRowStep = run.steps.rowStep;
    return block;
}

std::int32_t ownDecimate(ZetImage* srcImage, ZetImage* dstImage, const DecimateFactors& f, std::int32_t interpolate) {
    DecimateRun run{};
    run.src = srcImage;
    run.dst = dstImage;
    run.mode = ownDecimateChooseMode(srcImage, f, interpolate);
    run.kernel = ownDecimateChooseKernel(srcImage->depth, run.mode);
    run.walker = ownDecimateChooseWalker(srcImage->tileInfo, run.mode.mode);
    run.steps = decimateSteps(dstImage);
    run.to = decimateRegion(dstImage);
    const DecimateRegion from = decimateRegion(srcImage);
    run.width = static_cast<std::int32_t>(std::min<std::int64_t>(run.to.width, scaledSize(from.width, f.xDst, f.xSrc)));
    run.height =
        static_cast<std::int32_t>(std::min<std::int64_t>(run.to.height, scaledSize(from.height, f.yDst, f.ySrc)));
    if (run.width < 1 || run.height < 1) return 1;
    run.block = startBlock(run, f);
    if (dstImage->tileInfo) return makeTiles(&run);
    if (makePart(&run, dstImage->imageData, run.to.xOffset, run.to.yOffset, run.width, run.height)) return 1;
    return reportSource();
}

void checkChannels(const ZetImage* srcImage, const ZetImage* dstImage) {
    const std::int32_t src = srcImage->nChannels - (srcImage->alphaChannel != 0);
    const std::int32_t dst = dstImage->nChannels - (dstImage->alphaChannel != 0);
    const bool srcCoi = regionCoi(srcImage) != 0;
    const bool dstCoi = regionCoi(dstImage) != 0;
    if (srcCoi && !dstCoi && dst != 1)
        report(checkOp, ZET_StatusBadCoi, "srcImage->roi->coi > 0 && dstImage->roi->coi == 0");
    if (dstCoi && !srcCoi && src != 1)
        report(checkOp, ZET_StatusBadCoi, "dstImage->roi->coi > 0 && srcImage->roi->coi == 0");
    if (!srcCoi && !dstCoi && src != dst)
        report(checkOp, ZET_StatusBadChannels, "srcImage->nChannels != dstImage->nChannels");
}

void checkForms(const ZetImage* srcImage, const ZetImage* dstImage) {
    const std::uint32_t depth = srcImage->depth;
    if (srcImage == dstImage) report(checkOp, ZET_StatusBadArgument, "srcImage == dstImage");
    if (depth != dstImage->depth) report(checkOp, ZET_StatusBadDepth, "srcImage->depth != dstImage->depth");
    if (depth != ZET_DEPTH_1U && depth != ZET_DEPTH_8U && depth != ZET_DEPTH_16U && depth != ZET_DEPTH_32F)
        report(checkOp, ZET_StatusBadDepth, "depth != 1U, 8U, 16U or 32F");
    if (srcImage->origin != dstImage->origin)
        report(checkOp, ZET_StatusBadOrigin, "srcImage->origin != dstImage->origin");
    if (srcImage->dataOrder != dstImage->dataOrder)
        report(checkOp, ZET_StatusBadOrder, "srcImage->dataOrder != dstImage->dataOrder");
}

void checkFactors(const DecimateFactors& f) {
    constexpr std::int32_t bad = ZET_StatusBadArgument;
    if (f.xDst < 1) report(checkOp, bad, "xDst <= 0");
    if (f.xSrc < 1) report(checkOp, bad, "xSrc <= 0");
    if (f.yDst < 1) report(checkOp, bad, "yDst <= 0");
    if (f.ySrc < 1) report(checkOp, bad, "ySrc <= 0");
    if (f.xDst > f.xSrc) report(checkOp, bad, "xDst > xSrc");
    if (f.yDst > f.ySrc) report(checkOp, bad, "yDst > ySrc");
}

// Every fault is reported; false with a negative status, old or new.
bool checkArguments(const ZetImage* srcImage, const ZetImage* dstImage, const DecimateFactors& f,
                    std::int32_t interpolate) {
    checkForms(srcImage, dstImage);
    checkChannels(srcImage, dstImage);
    if (interpolate < ZET_INTER_NN || interpolate > ZET_INTER_SUPER)
        report(checkOp, ZET_StatusBadArgument,
               "interpolate != ZET_INTER_NN, ZET_INTER_LINEAR, ZET_INTER_CUBIC or ZET_INTER_SUPER");
    checkFactors(f);
    return zetGetErrStatus() >= 0;
}

}  // namespace

DecimateSteps decimateSteps(const ZetImage* image) {
    const ZetTileInfo* tiles = image->tileInfo;
    const std::ptrdiff_t rowBytes = tiles ? ownTileRowBytes(image) : image->widthStep;
    const std::ptrdiff_t bytes = sampleBytes(image->depth);
    const std::ptrdiff_t rowStep = bytes == 0 ? rowBytes * 8 : rowBytes / bytes;
    if (image->dataOrder == 0) return {1, image->nChannels, rowStep};
    return {rowStep * (tiles ? tiles->height : image->height), 1, rowStep};
}

DecimateRegion decimateRegion(const ZetImage* image) {
    const ZetROI* roi = image->roi;
    if (!roi) return {0, 0, 0, image->width, image->height, image->nChannels};
    return {roi->coi != 0 ? roi->coi - 1 : 0,
            roi->xOffset,
            roi->yOffset,
            std::min(roi->width, image->width - roi->xOffset),
            std::min(roi->height, image->height - roi->yOffset),
            roi->coi != 0 ? 1 : image->nChannels};
}

}  // namespace zetpxl

using namespace zetpxl;

void zetDecimate(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
                 int32_t interpolate) {
    if (!checkImages(checkOp, {srcImage, dstImage})) return;
    const DecimateFactors factors{xDst, xSrc, yDst, ySrc};
    if (!checkArguments(srcImage, dstImage, factors, interpolate)) return;
    ownDecimate(srcImage, dstImage, factors, interpolate);
}
