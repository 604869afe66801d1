//   fetch.1 a row is cut at each multiple of the image's width; the side that rules a run is that of its first pixel, at
//           corners the top or bottom side
//   fetch.2 tiles are asked for one at a time, each for its part of a run, and released at once
#include "rank/morphfetch.h"

#include <algorithm>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"

namespace zetpxl {

namespace {

// Outside above, below, left, right; 0 inside.
enum PositionCode : std::int32_t { kAbove = 1, kBelow = 2, kLeft = 4, kRight = 8 };

std::int32_t positionCode(const ZetImage& image, std::int32_t x, std::int32_t y) {
    std::int32_t code = y < 0 ? kAbove : y >= image.height ? kBelow : 0;
    if (x < 0) code += kLeft;
    if (x >= image.width) code += kRight;
    return code;
}

std::size_t sideOf(std::int32_t code) {
    if (code & kAbove) return 0;
    if (code & kBelow) return 1;
    return code & kLeft ? 2 : 3;
}

std::int32_t reflected(std::int64_t v, std::int32_t size) {
    while (v < -std::int64_t{size}) v += 2 * std::int64_t{size};
    while (v >= size) v -= 2 * std::int64_t{size};
    return static_cast<std::int32_t>(v < 0 ? -v - 1 : v);
}

std::int32_t wrapped(std::int32_t v, std::int32_t size) {
    const std::int32_t rest = v % size;
    return rest < 0 ? rest + size : rest;
}

MorphPixels pixelsOf(const ZetImage& image, std::uint8_t* data, std::ptrdiff_t rowStep, std::ptrdiff_t planeStep,
                     std::int32_t x, std::int32_t y, std::int32_t channel) {
    const bool planar = image.dataOrder == 1;
    const std::ptrdiff_t bytes = sampleBytes(image.depth);
    const std::ptrdiff_t offset = planar ? (channel - 1) * planeStep : (channel - 1) * bytes;
    return {data + y * rowStep + offset, x, planar ? 1 : image.nChannels};
}

// A span of one row, walked tile by tile. `move` gets the pixels of each part and how many were done before it.
template <class Move>
bool walkTiles(const MorphImage& m, std::int32_t x, std::int32_t y, std::int32_t channel, std::int32_t count,
               bool backward, std::int32_t mode, Move move) {
    const ZetTileInfo& tiles = *m.image->tileInfo;
    const std::ptrdiff_t rowStep = ownTileRowBytes(m.image);
    for (std::int32_t done = 0; done < count;) {
        const std::int32_t at = backward ? x - done : x + done;
        const std::int32_t inTile = at % tiles.width;
        const std::int32_t part = std::min(count - done, backward ? inTile + 1 : tiles.width - inTile);
        auto* data = static_cast<std::uint8_t*>(fetchTile(m.image, at / tiles.width, y / tiles.height, mode));
        if (!data) {
            report(m.op, ZET_StatusError, mode == ZET_TILE_READ ? "Error get tile to read" : "Error get tile to write");
            return false;
        }
        move(pixelsOf(*m.image, data, rowStep, rowStep * tiles.height, inTile, y % tiles.height, channel), done, part);
        releaseTile(m.image, at / tiles.width, y / tiles.height);
        done += part;
    }
    return true;
}

// A run of pixels inside the image, forward or backward from (x, y).
bool copyRun(const MorphImage& m, std::int32_t x, std::int32_t y, std::int32_t channel, std::int32_t count,
             bool backward, std::uint8_t* row, std::ptrdiff_t at) {
    if (m.image->tileInfo)
        return walkTiles(m, x, y, channel, count, backward, ZET_TILE_READ,
                         [&](const MorphPixels& pixels, std::int32_t done, std::int32_t part) {
                             m.depth->load(pixels, part, backward, row, at + done);
                         });
    const MorphPixels pixels =
        pixelsOf(*m.image, pixelData(m.image), m.image->widthStep, planeBytes(m.image), x, y, channel);
    m.depth->load(pixels, count, backward, row, at);
    return true;
}

bool replicateRun(const MorphImage& m, std::int32_t x, std::int32_t y, std::int32_t code, std::int32_t channel,
                  std::int32_t count, std::uint8_t* row, std::ptrdiff_t at) {
    const std::int32_t cx = std::clamp(x, 0, m.image->width - 1);
    const std::int32_t cy = std::clamp(y, 0, m.image->height - 1);
    if (code == kAbove || code == kBelow) return copyRun(m, cx, cy, channel, count, false, row, at);
    if (!copyRun(m, cx, cy, channel, 1, false, row, at)) return false;
    m.depth->spread(row, at, at, count);
    return true;
}

bool outsideRun(const MorphImage& m, std::int32_t x, std::int32_t y, std::int32_t code, std::int32_t channel,
                std::int32_t count, std::uint8_t* row, std::ptrdiff_t at) {
    const ZetImage& image = *m.image;
    const std::size_t side = sideOf(code);
    const bool outX = (code & (kLeft | kRight)) != 0;
    const bool outY = (code & (kAbove | kBelow)) != 0;
    switch (image.borderMode[side] & 3) {
        case ZET_BORDER_CONSTANT:
            m.depth->fill(row, at, count, image.borderConst[side]);
            return true;
        case ZET_BORDER_REPLICATE:
            return replicateRun(m, x, y, code, channel, count, row, at);
        case ZET_BORDER_REFLECT:
            return copyRun(m, outX ? reflected(x, image.width) : x, outY ? reflected(y, image.height) : y, channel,
                           count, outX, row, at);
        default:
            return copyRun(m, outX ? wrapped(x, image.width) : x, outY ? wrapped(y, image.height) : y, channel, count,
                           false, row, at);
    }
}

}  // namespace

bool ownFetchBorderRow(const MorphImage& from, std::int32_t x, std::int32_t y, std::int32_t channel, std::uint8_t* row,
                       std::ptrdiff_t at, std::int32_t count) {
    const std::int32_t width = from.image->width;
    for (std::int32_t left = count; left > 0;) {
        const std::int32_t t = x % width;
        const std::int32_t run = std::min(left, t < 0 ? -t : width - t);
        const std::int32_t code = positionCode(*from.image, x, y);
        const bool done = code == 0 ? copyRun(from, x, y, channel, run, false, row, at)
                                    : outsideRun(from, x, y, code, channel, run, row, at);
        if (!done) return false;
        x += run;
        at += run;
        left -= run;
    }
    return true;
}

bool ownStoreImageRow(const std::uint8_t* row, std::int32_t count, const MorphImage& to, std::int32_t x, std::int32_t y,
                      std::int32_t channel) {
    if (to.image->tileInfo)
        return walkTiles(to, x, y, channel, count, false, ZET_TILE_WRITE,
                         [&](const MorphPixels& pixels, std::int32_t done, std::int32_t part) {
                             to.depth->store(row, done, part, pixels);
                         });
    to.depth->store(row, 0, count,
                    pixelsOf(*to.image, pixelData(to.image), to.image->widthStep, planeBytes(to.image), x, y, channel));
    return true;
}

}  // namespace zetpxl
