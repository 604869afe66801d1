// One pixel, all channels at once, at a position in the image's own coordinates.
//   put.1 region, coi and mask do not restrict the write
//   put.2 origin 1 counts y from the last row in memory
//   put.3 samples are copied as they stand
#include <array>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/report.h"
#include "core/tiles.h"

using namespace zetpxl;

namespace {

constexpr Operation op{"zetPutPixel", "zetPutPx"};

struct Target {
    std::uint8_t* row;
    std::ptrdiff_t planeStep;
    std::int32_t x;
    std::int32_t nChannels;
};

using PutRoutine = void (*)(const Target& target, const std::uint8_t* pixel);

void putBit(const Target& target, const std::uint8_t* pixel) {
    std::uint8_t& byte = target.row[target.x >> 3];
    const auto bit = static_cast<std::uint8_t>(0x80 >> (target.x & 7));
    byte = static_cast<std::uint8_t>(pixel[0] & 1 ? byte | bit : byte & ~bit);
}

template <std::ptrdiff_t Bytes>
void putInterleaved(const Target& target, const std::uint8_t* pixel) {
    const std::ptrdiff_t size = Bytes * target.nChannels;
    std::memcpy(target.row + target.x * size, pixel, static_cast<std::size_t>(size));
}

template <std::ptrdiff_t Bytes>
void putPlanar(const Target& target, const std::uint8_t* pixel) {
    std::uint8_t* sample = target.row + target.x * Bytes;
    for (std::int32_t c = 0; c < target.nChannels; ++c)
        std::memcpy(sample + c * target.planeStep, pixel + c * Bytes, static_cast<std::size_t>(Bytes));
}

// By data order and size of a sample.
constexpr std::array<std::array<PutRoutine, 4>, 2> putRoutines = {{
    {putBit, putInterleaved<1>, putInterleaved<2>, putInterleaved<4>},
    {putBit, putPlanar<1>, putPlanar<2>, putPlanar<4>},
}};

void put(const ZetImage* img, const Target& target, const void* pixel) {
    const auto order = static_cast<std::size_t>(img->dataOrder);
    const auto size = static_cast<std::size_t>(sizeIndex(img->depth));
    putRoutines[order][size](target, static_cast<const std::uint8_t*>(pixel));
}

void putInTile(ZetImage* img, std::int32_t x, std::int32_t y, const void* pixel) {
    const std::int32_t tileWidth = img->tileInfo->width;
    const std::int32_t tileHeight = img->tileInfo->height;
    const std::int32_t col = x / tileWidth;
    const std::int32_t row = y / tileHeight;
    const std::ptrdiff_t rowStep =
        ownRowBytes(img->dataOrder, img->depth, img->align, img->nChannels, img->tileInfo->width);
    auto* data = static_cast<std::uint8_t*>(fetchTile(img, col, row, ZET_TILE_WRITE));
    if (!data) return report(op, ZET_StatusError, "Error get tile to write");
    put(img, {data + (y % tileHeight) * rowStep, rowStep * tileHeight, x % tileWidth, img->nChannels}, pixel);
    releaseTile(img, col, row);
}

}  // namespace

void zetPutPixel(ZetImage* img, int32_t x, int32_t y, const void* pixel) {
    if (ownCheckImage(img) != ZET_StatusOk) return reportIncorrectImage(op);
    if (x > img->width - 1 || x < 0) return report(op, ZET_StatusBadArgument, "((x>img->width-1) || (x<0))");
    if (y > img->height - 1 || y < 0) return report(op, ZET_StatusBadArgument, "((y>img->height-1) || (y<0))");
    const std::int32_t memoryRow = img->origin == 1 ? img->height - y - 1 : y;
    if (img->tileInfo) return putInTile(img, x, memoryRow, pixel);
    std::uint8_t* row = pixelData(img) + static_cast<std::ptrdiff_t>(memoryRow) * img->widthStep;
    put(img, {row, planeBytes(img), x, img->nChannels}, pixel);
}
