// Conversions between RGB-coded and hue-lightness-saturation-coded images.
//   color.1 whole images only: a region is refused, a mask is not looked at
//   color.2 the destination of an RGB image takes the name HLS before its depth is refused
//   color.3 the RGB side's letters are read before any name is rewritten, so that one record may be both sides
//   color.4 with tiles, a destination tile that cannot be had ends its row of tiles; two rows in turn that fail at their first
//           tile end the walk
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "convert/hlsrows.h"
#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/report.h"
#include "core/tiles.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

constexpr char kImageSource[] = "zetcolor";
constexpr char kFormatSource[] = "owncolor";
constexpr char kHls[4] = {'H', 'L', 'S', '\0'};

enum class ColourWay : std::uint8_t { ToHls, ToRgb };

// Memory of one side of a block.
struct ColourSide {
    std::uint8_t* data;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t planeRows;
    std::int32_t pixelStep;
};

struct Conversion {
    ColourWay way;
    Operation format;  // of reports about formats
    Operation block;   // of reports about depth
    ZetImage* src;
    ZetImage* dst;
    std::array<std::int32_t, 3> order;  // index of red, green and blue on the RGB side
};

bool begins(const char (&name)[4], const char* with) { return std::memcmp(name, with, 3) == 0; }

// Elements of an RGB image: by the first letter in pixel order, by every letter of the channels in planes.
std::array<std::int32_t, 3> rgbOrder(const ZetImage* image) {
    const bool blueFirst = image->channelSeq[0] == 'B';
    std::array<std::int32_t, 3> order = blueFirst ? std::array{2, 1, 0} : std::array{0, 1, 2};
    if (image->dataOrder == 0) return order;
    for (std::int32_t i = 0; i < std::min(image->nChannels, 4); ++i) {
        if (image->channelSeq[i] == 'R') order[0] = i;
        if (image->channelSeq[i] == 'G') order[1] = i;
        if (image->channelSeq[i] == 'B') order[2] = i;
    }
    return order;
}

std::array<std::ptrdiff_t, 3> channelOffsets(const Conversion& c, const ColourSide& side, bool isRgb) {
    const std::ptrdiff_t bytes = sampleBytes(c.src->depth);
    const std::ptrdiff_t distance = c.src->dataOrder == 1 ? side.rowStep * side.planeRows : bytes;
    std::array<std::ptrdiff_t, 3> offsets;
    for (std::size_t i = 0; i < 3; ++i) offsets[i] = distance * (isRgb ? c.order[i] : static_cast<std::int32_t>(i));
    return offsets;
}

// `rows` by `cols` pixels from block to block.
void convertBlock(const Conversion& c, const ColourSide& src, const ColourSide& dst, std::int32_t rows,
                  std::int32_t cols) {
    const bool toHls = c.way == ColourWay::ToHls;
    if (toHls) {
        std::memcpy(c.dst->colorModel, kHls, sizeof kHls);
        std::memcpy(c.dst->channelSeq, kHls, sizeof kHls);
    }
    const ColourRoutine routine = toHls ? rgbToHlsRow(c.src->depth) : hlsToRgbRow(c.src->depth);
    if (!routine) return report(c.block, ZET_StatusBadArgument, "Error input depth. 32S,16U,8U are valid now");
    const auto in = channelOffsets(c, src, toHls);
    const auto out = channelOffsets(c, dst, !toHls);
    for (std::ptrdiff_t y = 0; y < rows; ++y) {
        const std::uint8_t* from = src.data + y * src.rowStep;
        std::uint8_t* to = dst.data + y * dst.rowStep;
        routine({{from + in[0], from + in[1], from + in[2]},
                 {to + out[0], to + out[1], to + out[2]},
                 src.pixelStep,
                 dst.pixelStep,
                 cols});
    }
}

std::int32_t pixelStep(const ZetImage* image) { return image->dataOrder == 1 ? 1 : image->nChannels; }

ColourSide wholeSide(const ZetImage* image) {
    return {pixelData(image), image->widthStep, image->height, pixelStep(image)};
}

// A rectangle of the source into the destination's memory; false when it cannot be had.
bool convertRect(const Conversion& c, std::int32_t x, std::int32_t y, std::int32_t rows, std::int32_t cols,
                 const ColourSide& dst) {
    std::int32_t rowStep = 0;
    void* block = ownGetRect(c.src, x, y, cols, rows, &rowStep);
    if (!block) return false;
    convertBlock(c, {static_cast<std::uint8_t*>(block), rowStep, rows, pixelStep(c.src)}, dst, rows, cols);
    ownFreeBlock(block);
    return true;
}

bool reportNoSource(const Conversion& c) {
    report(c.format, ZET_StatusBacktrace, "");
    return false;
}

enum class TileOutcome : std::uint8_t { Done, NoTile, NoSource };

TileOutcome convertTile(const Conversion& c, std::int32_t col, std::int32_t row) {
    const ZetTileInfo& tiles = *c.dst->tileInfo;
    auto* data = static_cast<std::uint8_t*>(fetchTile(c.dst, col, row, ZET_TILE_WRITE));
    if (!data) return TileOutcome::NoTile;
    const std::int32_t x = col * tiles.width;
    const std::int32_t y = row * tiles.height;
    const ColourSide side{data, ownTileRowBytes(c.dst), tiles.height, pixelStep(c.dst)};
    const bool done =
        convertRect(c, x, y, std::min(tiles.height, c.dst->height - y), std::min(tiles.width, c.dst->width - x), side);
    releaseTile(c.dst, col, row);
    return done ? TileOutcome::Done : TileOutcome::NoSource;
}

// Gives the column at which a row of tiles ended for want of a tile, or -1.
std::int32_t convertTileRow(const Conversion& c, std::int32_t row, std::int32_t cols, bool* ended) {
    for (std::int32_t col = 0; col < cols; ++col) {
        const TileOutcome outcome = convertTile(c, col, row);
        if (outcome == TileOutcome::NoTile) return col;
        if (outcome == TileOutcome::Done) continue;
        *ended = true;
        reportNoSource(c);
        return -1;
    }
    return -1;
}

void convertTiles(const Conversion& c) {
    if (!c.dst->tileInfo) {
        if (!convertRect(c, 0, 0, c.dst->height, c.dst->width, wholeSide(c.dst))) reportNoSource(c);
        return;
    }
    const std::int32_t cols = (c.dst->width - 1) / c.dst->tileInfo->width + 1;
    const std::int32_t rows = (c.dst->height - 1) / c.dst->tileInfo->height + 1;
    bool lastFailed = false;
    for (std::int32_t row = 0; row < rows; ++row) {
        bool ended = false;
        const std::int32_t failedAt = convertTileRow(c, row, cols, &ended);
        if (ended || (lastFailed && failedAt == 0)) return;
        lastFailed = failedAt >= 0;
    }
}

void convert(const Conversion& c) {
    if (c.src->tileInfo || c.dst->tileInfo) return convertTiles(c);
    convertBlock(c, wholeSide(c.src), wholeSide(c.dst), std::min(c.src->height, c.dst->height),
                 std::min(c.src->width, c.dst->width));
}

// Room for the longest message and two names of four characters.
using Message = std::array<char, 80>;

bool refuse(const Operation& op, const Message& message, std::source_location where = std::source_location::current()) {
    report(op, ZET_StatusBadArgument, message.data(), where);
    return false;
}

bool checkRgb(const Operation& op, const ZetImage* image) {
    Message message;
    if (!begins(image->colorModel, "RGB")) {
        std::snprintf(message.data(), message.size(), "colorModel must be RGB instead of %.4s ", image->colorModel);
        return refuse(op, message);
    }
    if (begins(image->channelSeq, "RGB") || begins(image->channelSeq, "BGR")) return true;
    std::snprintf(message.data(), message.size(), "channelSeq must be RGB or BGR instead of %.4s ", image->channelSeq);
    return refuse(op, message);
}

bool checkHls(const Operation& op, const ZetImage* image) {
    Message message;
    if (!begins(image->colorModel, kHls)) {
        std::snprintf(message.data(), message.size(), "src-> colorModel must be %.4s instead of %.4s", kHls,
                      image->colorModel);
        return refuse(op, message);
    }
    if (begins(image->channelSeq, kHls)) return true;
    std::snprintf(message.data(), message.size(), "src-> channelSeq must be %.4s instead of %.4s", kHls,
                  image->channelSeq);
    return refuse(op, message);
}

const char* layoutFault(const ZetImage* src, const ZetImage* dst) {
    if (src->roi || dst->roi) return "src & dst roi must be NULL";
    if (src->nChannels < 3 || dst->nChannels != 3 || src->depth != dst->depth || src->dataOrder != dst->dataOrder ||
        src->origin != dst->origin)
        return "(src->nChannels < 3 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) || "
               "(src->dataOrder != dst->dataOrder) || (src->origin != dst->origin)";
    return nullptr;
}

void runConversion(const char* name, const char* blockName, ColourWay way, ZetImage* src, ZetImage* dst) {
    const Operation format{name, kFormatSource};
    if (!checkImages({name, kImageSource}, {src, dst})) return;
    const bool toHls = way == ColourWay::ToHls;
    if (!checkRgb(format, toHls ? src : dst) || (!toHls && !checkHls(format, src))) return;
    if (const char* fault = layoutFault(src, dst)) return report(format, ZET_StatusBadArgument, fault);
    convert({way, format, {blockName, "ownhls"}, src, dst, rgbOrder(toHls ? src : dst)});
}

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

void zetRGB2HLS(ZetImage* srcImage, ZetImage* dstImage) {
    runConversion("zetRGB2HLS", "ownRGB2HLS", ColourWay::ToHls, srcImage, dstImage);
}

void zetHLS2RGB(ZetImage* srcImage, ZetImage* dstImage) {
    runConversion("zetHLS2RGB", "ownHLS2RGB", ColourWay::ToRgb, srcImage, dstImage);
}
