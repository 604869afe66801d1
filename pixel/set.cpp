// Fills the region of an image with one value.
//   set.1 the value is clamped to the depth; a float goes in by its bit pattern
//   set.2 a whole pixel row is one run where all channels of interleaved pixels take part
//   set.3 a 1U image under a mask is a logical operation with the mask, which is inverted meanwhile to set 0
//   set.4 a tiled image is filled tile by tile through views of its tiles
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "core/alloc.h"
#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/report.h"
#include "core/tiles.h"
#include "pixel/bits.h"
#include "pixel/logic.h"
#include "pixel/samplemask.h"
#include "pixel/zetsce.h"

using namespace zetpxl;

namespace {

constexpr Operation op{"zetSet", kSetCopySource};
constexpr Operation opFP{"zetSetFP", kSetCopySource};

// One row; `group` samples of each pixel, pixels `step` samples apart.
struct SetRow {
    std::uint8_t* data;
    MaskBits mask;
    std::ptrdiff_t width;
    std::int32_t group;
    std::int32_t step;
    std::int32_t bit;  // 1U
    std::uint32_t value;
};

using SetRoutine = void (*)(const SetRow& row);

template <class T>
void setRow(const SetRow& row) {
    T* d = reinterpret_cast<T*>(row.data);
    const T value = static_cast<T>(row.value);
    if (row.group == row.step) return static_cast<void>(std::fill_n(d, row.width * row.step, value));
    for (std::ptrdiff_t x = 0; x < row.width; ++x)
        for (std::int32_t k = 0; k < row.group; ++k) d[x * row.step + k] = value;
}

template <class T>
void blendPiece(const SetRow& piece, const std::uint8_t* mask) {
    T* d = reinterpret_cast<T*>(piece.data);
    const T value = static_cast<T>(piece.value);
    if (piece.step <= kMaxBlendStep) {
        SampleMask samples;
        const std::uint8_t* m = spreadOverSamples(mask, piece.width, piece.group, piece.step, &samples);
        const std::ptrdiff_t count = samplesOf(piece.width, piece.group, piece.step);
        for (std::ptrdiff_t i = 0; i < count; ++i) d[i] = m[i] ? value : d[i];
        return;
    }
    for (std::ptrdiff_t x = 0; x < piece.width; ++x)
        for (std::int32_t k = 0; mask[x] && k < piece.group; ++k) d[x * piece.step + k] = value;
}

template <class T>
void setMaskedRow(const SetRow& row) {
    forMaskPieces(row.mask, row.width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* mask) {
                      SetRow piece = row;
                      piece.data += first * row.step * static_cast<std::ptrdiff_t>(sizeof(T));
                      piece.width = count;
                      return cover == MaskCover::All ? setRow<T>(piece) : blendPiece<T>(piece, mask);
                  });
}

void setBitRow(const SetRow& row) { fillBits(row.data, row.bit, row.width, row.value != 0); }

struct SetRoutines {
    SetRoutine plain;
    SetRoutine masked;
};

// By size of a sample. 1U images never come here with a mask.
constexpr std::array<SetRoutines, 4> setRoutines = {{
    {setBitRow, nullptr},
    {setRow<std::uint8_t>, setMaskedRow<std::uint8_t>},
    {setRow<std::uint16_t>, setMaskedRow<std::uint16_t>},
    {setRow<std::uint32_t>, setMaskedRow<std::uint32_t>},
}};

struct MaskStart {
    std::uint8_t* data;
    std::ptrdiff_t step;
    std::int32_t bit;
};

// Rows without padding between them are one row.
void joinRows(SetRow* row, std::int32_t* height, std::ptrdiff_t rowStep, std::int32_t bytes) {
    if (bytes == 0 || row->group != row->step || row->width * row->step * bytes != rowStep) return;
    row->width *= *height;
    *height = 1;
}

void setPixels(const ZetImage* image, std::int32_t height, std::int32_t width, std::uint32_t value) {
    SetRow row{};
    std::uint8_t* data = nullptr;
    std::ptrdiff_t rowStep = 0;
    std::ptrdiff_t planeStep = 0;
    std::int32_t nProc = 0;
    if (!ownRoiOrigin(image, &data, &rowStep, &nProc, &planeStep, &row.bit)) return;
    if (nProc == 0) return;
    MaskStart mask{};
    if (image->maskImage && !ownMaskOrigin(image->maskImage, &mask.data, &mask.step, &mask.bit)) return;
    const bool planar = image->dataOrder == 1 || image->nChannels == 1;
    row.width = width;
    row.group = planar ? 1 : nProc;
    row.step = planar ? 1 : image->nChannels;
    row.value = value;
    if (!image->maskImage) joinRows(&row, &height, rowStep, sampleBytes(image->depth));
    const SetRoutines& routines = setRoutines[static_cast<std::size_t>(sizeIndex(image->depth))];
    const SetRoutine routine = image->maskImage ? routines.masked : routines.plain;
    for (std::ptrdiff_t plane = 0; plane < (planar ? nProc : 1); ++plane)
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            row.data = data + plane * planeStep + y * rowStep;
            row.mask = {mask.data ? mask.data + y * mask.step : nullptr, mask.bit};
            routine(row);
        }
}

void setMaskedBits(ZetImage* image, std::int32_t value) {
    ZetImage* mask = image->maskImage;
    image->maskImage = nullptr;
    if (value) {
        zetOr(image, mask, image);
    } else {
        zetXorS(mask, mask, 1);
        zetAnd(image, mask, image);
        zetXorS(mask, mask, 1);
    }
    image->maskImage = mask;
    reportBacktrace(op);
}

void setTiles(ZetImage* image, std::int32_t height, std::int32_t width, std::int32_t value) {
    const TileGrid grid = tileGrid(image, height, width);
    TileView view;
    makeView(&view, image);
    setTileGeometry(&view, image);
    TileView maskView;
    const ZetImage* mask = image->maskImage;
    if (mask) {
        makeMaskView(&maskView, mask);
        view.image.maskImage = &maskView.image;
    }
    for (std::int32_t r = 0; r < grid.y.count; ++r)
        for (std::int32_t c = 0; c < grid.x.count; ++c) {
            ownSetROI(&view.roi, view.roi.coi, grid.x.offset(c), grid.y.offset(r), grid.x.bandSize(c),
                      grid.y.bandSize(r));
            if (mask)
                ownSetROI(&maskView.roi, 0, regionX(mask) + grid.x.distance(c), regionY(mask) + grid.y.distance(r),
                          grid.x.bandSize(c), grid.y.bandSize(r));
            view.image.imageData = fetchTile(image, grid.x.first + c, grid.y.first + r, ZET_TILE_WRITE);
            if (!view.image.imageData) return report(op, ZET_StatusError, "Error get tile to write");
            zetSet(&view.image, value);
            releaseTile(image, grid.x.first + c, grid.y.first + r);
        }
}

}  // namespace

void zetSet(ZetImage* dstImage, int32_t fillValue) {
    if (ownCheckImage(dstImage) != ZET_StatusOk) return reportIncorrectImage(op);
    if (dstImage->depth == ZET_DEPTH_32F)
        return report(op, ZET_StatusBadDepth, "You should use zetSetFP for this image");
    const std::int32_t value = clampToDepth(dstImage->depth, fillValue);
    std::int32_t height = 0;
    std::int32_t width = 0;
    if (!ownCommonSize(dstImage, dstImage->maskImage, &height, &width, 1)) return;
    if (dstImage->depth == ZET_DEPTH_1U && dstImage->maskImage) return setMaskedBits(dstImage, value);
    if (dstImage->tileInfo) return setTiles(dstImage, height, width, value);
    setPixels(dstImage, height, width, static_cast<std::uint32_t>(value));
}

void zetSetFP(ZetImage* dstImage, float fillValue) {
    if (!dstImage) return report(opFP, ZET_StatusBadArgument, "dstImage==0");
    if (dstImage->depth != ZET_DEPTH_32F)
        return report(opFP, ZET_StatusBadDepth, "You should use zetSet for this image");
    dstImage->depth = ZET_DEPTH_32S;
    zetSet(dstImage, std::bit_cast<std::int32_t>(fillValue));
    reportBacktrace(opFP);
    dstImage->depth = ZET_DEPTH_32F;
}
