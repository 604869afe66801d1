// Copies the region of one image into the region of another of the same depth.
//   copy.1 three mismatches are reported one after the other; then a negative status, old or new, ends the call
//   copy.2 two different masks are joined into a temporary one
//   copy.3 a 1U destination under a mask is (dst AND NOT mask) OR (src AND mask), by logical operations
//   copy.4 tiles: the destination's grid, or the source's where only that is tiled; a tiled source under a tiled destination
//          comes as a block
//   copy.5 samples move by bit pattern
#include <algorithm>
#include <array>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/report.h"
#include "core/tiles.h"
#include "pixel/bits.h"
#include "pixel/logic.h"
#include "pixel/rect.h"
#include "pixel/samplemask.h"
#include "pixel/zetsce.h"

using namespace zetpxl;

namespace {

constexpr Operation op{"zetCopy", kSetCopySource};
constexpr std::int32_t kHeaderAndData = ZET_IMAGE_HEADER | ZET_IMAGE_DATA;

// One row; `group` samples of each pixel, pixels `stepS` and `stepD` samples apart.
struct CopyRow {
    const std::uint8_t* src;
    std::uint8_t* dst;
    MaskBits mask;
    std::ptrdiff_t width;
    std::int32_t group;
    std::int32_t stepS;
    std::int32_t stepD;
    std::int32_t bitS;  // 1U
    std::int32_t bitD;
};

using CopyRoutine = void (*)(const CopyRow& row);

template <class T>
void copyRow(const CopyRow& row) {
    if (row.group == row.stepS && row.group == row.stepD) {
        std::memmove(row.dst, row.src, static_cast<std::size_t>(row.width * row.group) * sizeof(T));
        return;
    }
    const T* s = reinterpret_cast<const T*>(row.src);
    T* d = reinterpret_cast<T*>(row.dst);
    for (std::ptrdiff_t x = 0; x < row.width; ++x)
        for (std::int32_t k = 0; k < row.group; ++k) d[x * row.stepD + k] = s[x * row.stepS + k];
}

// The mask is the call's own, and sources never overlap their destination at another position.
template <class T>
void blendSamples(const std::uint8_t* __restrict mask, const T* __restrict src, std::ptrdiff_t count,
                  T* __restrict dst) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const T entering = src[i];  // read under any mask: a choice of two values needs no branch
        dst[i] = mask[i] ? entering : dst[i];
    }
}

template <class T>
void blendPiece(const CopyRow& piece, const std::uint8_t* mask) {
    const T* s = reinterpret_cast<const T*>(piece.src);
    T* d = reinterpret_cast<T*>(piece.dst);
    if (piece.stepS == piece.stepD && piece.stepD <= kMaxBlendStep) {
        SampleMask samples;
        const std::uint8_t* m = spreadOverSamples(mask, piece.width, piece.group, piece.stepD, &samples);
        const std::ptrdiff_t count = samplesOf(piece.width, piece.group, piece.stepD);
        return blendSamples(m, s, count, d);
    }
    for (std::ptrdiff_t x = 0; x < piece.width; ++x)
        for (std::int32_t k = 0; mask[x] && k < piece.group; ++k) d[x * piece.stepD + k] = s[x * piece.stepS + k];
}

template <class T>
void copyMaskedRow(const CopyRow& row) {
    constexpr auto size = static_cast<std::ptrdiff_t>(sizeof(T));
    forMaskPieces(row.mask, row.width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* mask) {
                      CopyRow piece = row;
                      piece.src += first * row.stepS * size;
                      piece.dst += first * row.stepD * size;
                      piece.width = count;
                      return cover == MaskCover::All ? copyRow<T>(piece) : blendPiece<T>(piece, mask);
                  });
}

void copyBitRow(const CopyRow& row) { ownCopyBits(row.src, row.dst, row.bitS, row.bitD, row.width); }

struct CopyRoutines {
    CopyRoutine plain;
    CopyRoutine masked;
};

// By size of a sample. 1U images never come here with a mask.
constexpr std::array<CopyRoutines, 4> copyRoutines = {{
    {copyBitRow, nullptr},
    {copyRow<std::uint8_t>, copyMaskedRow<std::uint8_t>},
    {copyRow<std::uint16_t>, copyMaskedRow<std::uint16_t>},
    {copyRow<std::uint32_t>, copyMaskedRow<std::uint32_t>},
}};

struct Side {
    std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeStep;
    std::int32_t nProc;
    std::int32_t bit;
};

bool resolveSide(const ZetImage* image, Side* side) {
    *side = {};
    return ownRoiOrigin(image, &side->data, &side->rowStep, &side->nProc, &side->planeStep, &side->bit) != 0;
}

void copyPlanes(const Side& src, const Side& dst, const Side& mask, std::int32_t height, std::int32_t planes,
                CopyRow* row, CopyRoutine routine) {
    for (std::ptrdiff_t plane = 0; plane < planes; ++plane)
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            row->src = src.data + plane * src.planeStep + y * src.rowStep;
            row->dst = dst.data + plane * dst.planeStep + y * dst.rowStep;
            row->mask = {mask.data ? mask.data + y * mask.rowStep : nullptr, mask.bit};
            routine(*row);
        }
}

// Rows without padding between them, in both images, are one row.
void joinRows(CopyRow* row, std::int32_t* height, const Side& src, const Side& dst, std::int32_t bytes) {
    const std::ptrdiff_t rowBytes = row->width * row->group * bytes;
    if (bytes == 0 || row->group != row->stepS || row->group != row->stepD) return;
    if (rowBytes != src.rowStep || rowBytes != dst.rowStep) return;
    row->width *= *height;
    *height = 1;
}

void copyPixels(const ZetImage* srcImage, const ZetImage* dstImage, const ZetImage* maskImage, std::int32_t height,
                std::int32_t width) {
    Side src;
    Side dst;
    Side mask{};
    if (!resolveSide(srcImage, &src) || !resolveSide(dstImage, &dst)) return;
    if (maskImage && !ownMaskOrigin(maskImage, &mask.data, &mask.rowStep, &mask.bit)) return;
    if (src.nProc != dst.nProc)
        return report(op, ZET_StatusBadArgument,
                      "Number of processed channels of srcImage != Number of processed channels of dstImage");
    if (src.nProc == 0) return;
    const bool planar = srcImage->depth == ZET_DEPTH_1U || (srcImage->dataOrder == 1 && dstImage->dataOrder == 1);
    CopyRow row{};
    row.width = width;
    row.group = planar ? 1 : src.nProc;
    row.stepS = planar || srcImage->dataOrder == 1 ? 1 : srcImage->nChannels;
    row.stepD = planar || dstImage->dataOrder == 1 ? 1 : dstImage->nChannels;
    row.bitS = src.bit;
    row.bitD = dst.bit;
    const CopyRoutines& routines = copyRoutines[static_cast<std::size_t>(sizeIndex(srcImage->depth))];
    if (!maskImage) joinRows(&row, &height, src, dst, sampleBytes(srcImage->depth));
    copyPlanes(src, dst, mask, height, planar ? src.nProc : 1, &row, maskImage ? routines.masked : routines.plain);
}

ZetImage* createBits(const ZetImage* like, std::int32_t align, std::int32_t dataOrder, std::int32_t width,
                     std::int32_t height) {
    ZetImage* image = zetCreateImageHeader(1, 0, ZET_DEPTH_1U, "GRAY", "G   ", dataOrder, like->origin, align, width,
                                           height, nullptr, nullptr, nullptr, nullptr);
    // Bits that the mask's own mask leaves out are clear, never leftovers.
    zetAllocateImage(image, 1, 0);
    return image;
}

// dst's bits under the mask are cleared, and src's bits under the mask enter. `m` may belong to either image.
void copyMaskedBits(ZetImage* srcImage, ZetImage* dstImage, ZetImage* m, std::int32_t height, std::int32_t width) {
    ZetImage* t = createBits(m, m->align, m->dataOrder, width, height);
    if (zetGetErrStatus() < 0) return zetDeallocate(t, kHeaderAndData);
    ZetImage* maskOfMask = m->maskImage;
    m->maskImage = nullptr;
    zetCopy(m, t);
    m->maskImage = maskOfMask;
    ZetImage* srcMask = srcImage->maskImage;
    ZetImage* dstMask = dstImage->maskImage;
    dstImage->maskImage = t;
    zetSet(dstImage, 0);
    srcImage->maskImage = nullptr;
    zetAnd(srcImage, t, t);
    zetOr(dstImage, t, dstImage);
    zetDeallocate(t, kHeaderAndData);
    srcImage->maskImage = srcMask;
    dstImage->maskImage = dstMask;
    reportBacktrace(op);
}

struct TileCopy {
    ZetImage* src;
    ZetImage* dst;
    TileView srcView;
    TileView dstView;
    TileView maskView;
    const ZetImage* mask;
    TileGrid grid;
};

void startTileCopy(TileCopy* copy, std::int32_t height, std::int32_t width) {
    copy->grid = tileGrid(copy->dst->tileInfo ? copy->dst : copy->src, height, width);
    makeView(&copy->srcView, copy->src);
    makeView(&copy->dstView, copy->dst);
    if (copy->dst->tileInfo) {
        setTileGeometry(&copy->dstView, copy->dst);
    } else {
        setTileGeometry(&copy->srcView, copy->src);
    }
    if (!copy->mask) return;
    makeMaskView(&copy->maskView, copy->mask);
    copy->dstView.image.maskImage = &copy->maskView.image;
}

// Where the views' regions lie for band (r, c): in the tile for the image whose grid is walked, from its region's start for
// the other and the mask.
void setBand(TileCopy* copy, std::int32_t r, std::int32_t c) {
    const TileGrid& grid = copy->grid;
    const std::int32_t w = grid.x.bandSize(c);
    const std::int32_t h = grid.y.bandSize(r);
    const std::int32_t dx = grid.x.distance(c);
    const std::int32_t dy = grid.y.distance(r);
    TileView& onGrid = copy->dst->tileInfo ? copy->dstView : copy->srcView;
    TileView& other = copy->dst->tileInfo ? copy->srcView : copy->dstView;
    const ZetImage* otherImage = copy->dst->tileInfo ? copy->src : copy->dst;
    ownSetROI(&onGrid.roi, onGrid.roi.coi, grid.x.offset(c), grid.y.offset(r), w, h);
    ownSetROI(&other.roi, other.roi.coi, regionX(otherImage) + dx, regionY(otherImage) + dy, w, h);
    if (copy->mask) ownSetROI(&copy->maskView.roi, 0, regionX(copy->mask) + dx, regionY(copy->mask) + dy, w, h);
}

// A tiled source under a tiled destination: its tiles are cut differently, so the band comes as a block.
bool fetchSourceBlock(TileCopy* copy) {
    ZetImage& view = copy->srcView.image;
    ZetROI& roi = copy->srcView.roi;
    view.imageData = ownGetRect(copy->src, roi.xOffset, roi.yOffset, roi.width, roi.height, &view.widthStep);
    view.width = roi.width;
    view.height = roi.height;
    roi.xOffset = 0;
    roi.yOffset = 0;
    if (view.imageData && zetGetErrStatus() >= 0) return true;
    ownFreeBlock(view.imageData);
    report(op, ZET_StatusBacktrace, "");
    return false;
}

bool copyToTile(TileCopy* copy, std::int32_t col, std::int32_t row) {
    copy->dstView.image.imageData = fetchTile(copy->dst, col, row, ZET_TILE_WRITE);
    if (!copy->dstView.image.imageData) {
        report(op, ZET_StatusError, "Error get tile to write");
        return false;
    }
    const bool asBlock = copy->src->tileInfo != nullptr;
    if (asBlock && !fetchSourceBlock(copy)) return false;
    zetCopy(&copy->srcView.image, &copy->dstView.image);
    releaseTile(copy->dst, col, row);
    if (asBlock) ownFreeBlock(copy->srcView.image.imageData);
    return true;
}

bool copyFromTile(TileCopy* copy, std::int32_t col, std::int32_t row) {
    copy->srcView.image.imageData = fetchTile(copy->src, col, row, ZET_TILE_READ);
    if (!copy->srcView.image.imageData) {
        report(op, ZET_StatusError, "Error get tile to read");
        return false;
    }
    zetCopy(&copy->srcView.image, &copy->dstView.image);
    releaseTile(copy->src, col, row);
    return true;
}

void copyTiles(ZetImage* srcImage, ZetImage* dstImage, const ZetImage* mask, std::int32_t height, std::int32_t width) {
    TileCopy copy{};
    copy.src = srcImage;
    copy.dst = dstImage;
    copy.mask = mask;
    startTileCopy(&copy, height, width);
    for (std::int32_t r = 0; r < copy.grid.y.count; ++r)
        for (std::int32_t c = 0; c < copy.grid.x.count; ++c) {
            setBand(&copy, r, c);
            const std::int32_t col = copy.grid.x.first + c;
            const std::int32_t row = copy.grid.y.first + r;
            if (!(dstImage->tileInfo ? copyToTile(&copy, col, row) : copyFromTile(&copy, col, row))) return;
        }
}

bool checkArguments(const ZetImage* srcImage, const ZetImage* dstImage) {
    if (!checkImages(op, {srcImage, dstImage})) return false;
    if (srcImage->depth != dstImage->depth) report(op, ZET_StatusBadArgument, "srcImage->depth != dstImage->depth");
    if (srcImage->origin != dstImage->origin) report(op, ZET_StatusBadArgument, "srcImage->origin != dstImage->origin");
    const bool orderMatters =
        srcImage->depth != ZET_DEPTH_1U && !(srcImage->nChannels == 1 && dstImage->nChannels == 1);
    if (orderMatters && srcImage->dataOrder != dstImage->dataOrder)
        report(op, ZET_StatusBadArgument, "srcImage->dataOrder != dstImage->dataOrder");
    return zetGetErrStatus() >= 0 && srcImage != dstImage;
}

struct MaskInForce {
    ZetImage* image;
    bool temporary;
};

// False when the operation ends here.
bool findMask(ZetImage* srcImage, ZetImage* dstImage, MaskInForce* mask) {
    ZetImage* srcMask = srcImage->maskImage;
    ZetImage* dstMask = dstImage->maskImage;
    *mask = {dstMask ? dstMask : srcMask, false};
    if (!srcMask || !dstMask || srcMask == dstMask) return true;
    std::int32_t height = 0;
    std::int32_t width = 0;
    if (!ownCommonSize3(srcMask, dstMask, nullptr, &height, &width, 1)) return false;
    *mask = {createBits(srcMask, 4, 1, width, height), true};
    if (!reportBacktrace(op)) {
        zetAnd(srcMask, dstMask, mask->image);
        if (!reportBacktrace(op)) return true;
    }
    zetDeallocate(mask->image, kHeaderAndData);
    return false;
}

void copyUnder(ZetImage* srcImage, ZetImage* dstImage, ZetImage* mask) {
    std::int32_t height = 0;
    std::int32_t width = 0;
    if (!ownCommonSize3(srcImage, dstImage, mask, &height, &width, 1)) return;
    if (dstImage->depth == ZET_DEPTH_1U && mask) return copyMaskedBits(srcImage, dstImage, mask, height, width);
    if (srcImage->tileInfo || dstImage->tileInfo) return copyTiles(srcImage, dstImage, mask, height, width);
    copyPixels(srcImage, dstImage, mask, height, width);
}

}  // namespace

void zetCopy(ZetImage* srcImage, ZetImage* dstImage) {
    if (!checkArguments(srcImage, dstImage)) return;
    MaskInForce mask{};
    if (!findMask(srcImage, dstImage, &mask)) return;
    copyUnder(srcImage, dstImage, mask.image);
    if (mask.temporary) zetDeallocate(mask.image, kHeaderAndData);
}
