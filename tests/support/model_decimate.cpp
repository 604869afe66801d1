#include "tests/support/model_decimate.h"

#include <algorithm>

#include "tests/support/model_decimateblock.h"
#include "tests/support/model_rect.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

struct Factors {
    std::int32_t xDst, xSrc, yDst, ySrc;
};

struct Decimate {
    ZetImage* src;
    ZetImage* dst;
    Factors factors;
    DecimateRoutine routine;
    std::int64_t xPad = 0, yPad = 0;  // below 0: of area means
    float xStep = 0, yStep = 0;
};

ChannelRange channelsOf(const ZetImage& image) {
    return coiOf(image) ? ChannelRange{coiOf(image) - 1, 1} : ChannelRange{0, image.nChannels};
}

// ---- mode

std::int64_t quotientUp(std::int64_t a, std::int64_t b) { return (a + b - 1) / b; }

bool tooSmall(const Decimate& op) {
    const ZetImage& src = *op.src;
    const Factors& f = op.factors;
    const std::int64_t width = src.roi ? src.roi->width : src.width;
    const std::int64_t height = src.roi ? src.roi->height : src.height;
    return src.width < 4 || src.height < 4 || width * f.xDst / f.xSrc < 1 || height * f.yDst / f.ySrc < 1;
}

void chooseMode(Decimate& op, std::int32_t interpolate) {
    const Factors& f = op.factors;
    DecimateRoutine& routine = op.routine;
    routine = {interpolate, f.xSrc % f.xDst == 0, f.ySrc % f.yDst == 0};
    if (tooSmall(op)) routine.mode = ZET_INTER_NN;
    if (interpolate != ZET_INTER_SUPER && routine.xWhole && routine.yWhole) routine.mode = ZET_INTER_NN;
    if (!tiled(*op.src) || routine.mode == ZET_INTER_NN) return;
    if (routine.mode != ZET_INTER_SUPER) {
        const std::int32_t pad = routine.mode == ZET_INTER_LINEAR ? 1 : 2;
        op.xPad = routine.xWhole ? 0 : pad;
        op.yPad = routine.yWhole ? 0 : pad;
        return;
    }
    const std::int64_t p = quotientUp(f.xSrc, f.xDst);
    const std::int64_t q = quotientUp(f.ySrc, f.yDst);
    const ZetTileInfo& tiles = *op.src->tileInfo;
    if (p > tiles.width || q > tiles.height) {
        routine.mode = ZET_INTER_NN;
        return;
    }
    op.xPad = -p;
    op.yPad = -q;
}

// ---- walks over the source; positions come in and go out relative to the region

struct Positions {
    float x, y;
};

DecimateBlock blockOf(const Decimate& op, const Area& from, const Area& to, const Positions& at) {
    ChannelRange channels = channelsOf(*op.src);
    const ChannelRange out = channelsOf(*op.dst);
    channels.count = std::min(channels.count, out.count);
    return {op.src, op.dst, from, to, channels, out.first, op.xStep, op.yStep, at.x, at.y};
}

// What lies beside the region but in the image may be read.
bool walkPlain(const Decimate& op, const Area& to, Positions& at) {
    const Area region = modelRegion(*op.src);
    const Area from{region.x, region.y, op.src->width - region.x, op.src->height - region.y};
    DecimateBlock block = blockOf(op, from, to, at);
    modelDecimateBlock(block, op.routine);
    at = {block.x, block.y};
    return true;
}

struct Rect {
    Area area;
    bool oneTile;
};

// Cut to the image.
Area tilesOf(const ZetImage& image, std::int32_t col, std::int32_t row, std::int64_t nCols, std::int64_t nRows) {
    const std::int64_t width = image.tileInfo->width, height = image.tileInfo->height;
    const std::int64_t x = col * width, y = row * height;
    return {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
            static_cast<std::int32_t>(std::min(image.width - x, nCols * width)),
            static_cast<std::int32_t>(std::min(image.height - y, nRows * height))};
}

// One axis of a walk over tiles, in image positions.
struct Axis {
    std::int32_t tile;    // its size
    std::int32_t offset;  // of the region
    std::int32_t count;   // pixels to make
    double step;
    std::int64_t pad;
    float start = 0;  // position of the first pixel

    double ext() const { return pad == 2 ? 2 * step : 0; }
    float inTile(float position, std::int32_t index) const { return position - static_cast<float>(index * tile); }
    float inImage(float position, std::int32_t index) const { return position + static_cast<float>(index * tile); }
    std::int32_t limited(std::int64_t value, std::int64_t low) const {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, low, count));
    }
};

Axis axisOf(std::int32_t tile, std::int32_t offset, std::int32_t count, float step, std::int64_t pad, float at) {
    return {tile, offset, count, step, pad, static_cast<float>(offset) + at};
}

struct Grid {
    Axis xs, ys;
};

Grid gridOf(const Decimate& op, const Area& to, const Positions& at) {
    const ZetTileInfo& tiles = *op.src->tileInfo;
    const Area region = modelRegion(*op.src);
    return {axisOf(tiles.width, region.x, to.width, op.xStep, op.xPad, at.x),
            axisOf(tiles.height, region.y, to.height, op.yStep, op.yPad, at.y)};
}

Positions inRegion(const Grid& grid, const Positions& at) {
    return {at.x - static_cast<float>(grid.xs.offset), at.y - static_cast<float>(grid.ys.offset)};
}

Area part(const Area& to, std::int32_t firstCol, std::int32_t endCol, std::int32_t firstRow, std::int32_t endRow) {
    return {to.x + firstCol, to.y + firstRow, endCol - firstCol, endRow - firstRow};
}

// ---- nearest samples, tile by tile

std::int32_t firstNearest(const Axis& axis) {
    return static_cast<std::int32_t>(truncated(static_cast<double>(axis.start) / axis.tile));
}

// The first pixel that the tile does not make.
std::int32_t endNearest(const Axis& axis, std::int32_t index) {
    constexpr double kAlmostOne = 0.99999f;
    const double edge = static_cast<double>(index + 1) * axis.tile;
    return axis.limited(truncated((edge - axis.start + kAlmostOne * axis.step) / axis.step), 0);
}

bool nearestRow(const Decimate& op, const Grid& grid, std::int32_t row, const Area& band, Positions& at) {
    std::int32_t done = 0;
    const float y = at.y;
    at.x = grid.xs.start;
    for (std::int32_t col = firstNearest(grid.xs); done < band.width; ++col) {
        const std::int32_t end = endNearest(grid.xs, col);
        if (!modelFetch(*op.src, col, row, ZET_TILE_READ)) return false;
        DecimateBlock block = blockOf(op, tilesOf(*op.src, col, row, 1, 1), part(band, done, end, 0, band.height),
                                      {grid.xs.inTile(at.x, col), grid.ys.inTile(y, row)});
        modelDecimateBlock(block, op.routine);
        modelRelease(*op.src, col, row);
        at = {grid.xs.inImage(block.x, col), grid.ys.inImage(block.y, row)};
        done = end;
    }
    return true;
}

bool walkNearest(const Decimate& op, const Area& to, Positions& at) {
    const Grid grid = gridOf(op, to, at);
    at = {grid.xs.start, grid.ys.start};
    std::int32_t done = 0;
    for (std::int32_t row = firstNearest(grid.ys); done < to.height; ++row) {
        const std::int32_t end = endNearest(grid.ys, row);
        if (!nearestRow(op, grid, row, part(to, 0, to.width, done, end), at)) return false;
        done = end;
    }
    at = inRegion(grid, at);
    return true;
}

// ---- interpolation, with what a tile's pixels need of its neighbours

std::int32_t firstTile(const Axis& axis) {
    double position = axis.start;
    if (axis.pad > 0) position -= static_cast<double>(axis.pad - 1) * axis.step;
    return static_cast<std::int32_t>(std::max<std::int64_t>(truncated(position / axis.tile), 0));
}

float startIn(const Axis& axis, float position, std::int32_t index) {
    return std::max(axis.inTile(position, index), 0.0f);
}

std::int32_t endIn(const Axis& axis, std::int32_t index, std::int32_t done, float start) {
    const double edge = static_cast<double>(index + 1) * axis.tile;
    std::int64_t count = truncated((edge + axis.ext() - axis.start) / axis.step) - done;
    if (static_cast<double>(count) * axis.step + start < axis.ext() + axis.tile) ++count;
    return axis.limited(done + count, done);
}

// Columns or rows of the source that a block asks for.
std::int64_t asked(const Axis& axis, std::int32_t count, float start) {
    return truncated(count * axis.step + start + static_cast<double>(std::abs(axis.pad)));
}

// Tiles in a span that was cut to the image.
std::int64_t tilesIn(std::int64_t size, std::int64_t available, std::int32_t tile) {
    return (std::min(size, available) - 1) / tile + 1;
}

bool getRect(ZetImage& image, std::int32_t col, std::int32_t row, std::int64_t width, std::int64_t height, Rect& rect) {
    const ZetTileInfo& tiles = *image.tileInfo;
    const std::int64_t nCols = tilesIn(width, image.width - std::int64_t{col} * tiles.width, tiles.width);
    const std::int64_t nRows = tilesIn(height, image.height - std::int64_t{row} * tiles.height, tiles.height);
    rect = {tilesOf(image, col, row, nCols, nRows), nCols == 1 && nRows == 1};
    if (rect.oneTile) return modelFetch(image, col, row, ZET_TILE_READ);
    return modelGetRectCalls(image, rect.area.x, rect.area.y, static_cast<std::int32_t>(nCols) * tiles.width,
                             static_cast<std::int32_t>(nRows) * tiles.height);
}

bool tileRow(const Decimate& op, const Grid& grid, std::int32_t row, const Area& band, Positions& at) {
    std::int32_t done = 0;
    const float yIn = startIn(grid.ys, at.y, row);
    at.x = grid.xs.start;
    for (std::int32_t col = firstTile(grid.xs); done < band.width; ++col) {
        const float xIn = startIn(grid.xs, at.x, col);
        const std::int32_t end = endIn(grid.xs, col, done, xIn);
        Rect rect;
        if (!getRect(*op.src, col, row, asked(grid.xs, end - done, xIn), asked(grid.ys, band.height, yIn), rect))
            return false;
        DecimateBlock block = blockOf(op, rect.area, part(band, done, end, 0, band.height), {xIn, yIn});
        modelDecimateBlock(block, op.routine);
        if (rect.oneTile) modelRelease(*op.src, col, row);
        at = {grid.xs.inImage(block.x, col), grid.ys.inImage(block.y, row)};
        done = end;
    }
    return true;
}

bool walkTiles(const Decimate& op, const Area& to, Positions& at) {
    const Grid grid = gridOf(op, to, at);
    at = {grid.xs.start, grid.ys.start};
    std::int32_t done = 0;
    for (std::int32_t row = firstTile(grid.ys); done < to.height; ++row) {
        const std::int32_t end = endIn(grid.ys, row, done, startIn(grid.ys, at.y, row));
        if (!tileRow(op, grid, row, part(to, 0, to.width, done, end), at)) return false;
        done = end;
    }
    at = inRegion(grid, at);
    return true;
}

bool walk(const Decimate& op, const Area& to, Positions& at) {
    if (!tiled(*op.src)) return walkPlain(op, to, at);
    return op.routine.mode == ZET_INTER_NN ? walkNearest(op, to, at) : walkTiles(op, to, at);
}

// ---- the destination

bool crashed(Model& model, const char* words) {
    model.report(ZET_StatusInternal, "zetDecimate", words, "zetdecim");
    return false;
}

bool sourceCrashed(Model& model) { return crashed(model, "srcImage->tileInfo->callBack crash"); }

// Every tile of a row starts with the row's position; columns go on.
bool intoTileRow(Model& model, const Decimate& op, const ModelGrid& grid, std::int32_t row, const Area& band,
                 Positions& at) {
    const float y = at.y;
    for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col) {
        const Band xs = modelBand(band.x, band.width, grid.tileWidth, col);
        if (!modelFetch(*op.dst, col, row, ZET_TILE_WRITE)) return crashed(model, "dstImage->tileInfo->callBack crash");
        at.y = y;
        const bool had = walk(op, {xs.start, band.y, xs.size, band.height}, at);
        modelRelease(*op.dst, col, row);
        if (!had) return sourceCrashed(model);
    }
    return true;
}

void intoTiles(Model& model, const Decimate& op, const Area& to, Positions at) {
    const float start = at.x;
    const ModelGrid grid = modelGrid(*op.dst, to.height, to.width);
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row) {
        const Band ys = modelBand(to.y, to.height, grid.tileHeight, row);
        at.x = start;
        if (!intoTileRow(model, op, grid, row, {to.x, ys.start, to.width, ys.size}, at)) return;
    }
}

void decimate(Model& model, const Decimate& op, const Area& to) {
    Positions at{0, 0};
    if (op.routine.mode == ZET_INTER_NN) at = {op.routine.xWhole ? 0.0f : 0.5f, op.routine.yWhole ? 0.0f : 0.5f};
    if (to.empty()) return;
    if (tiled(*op.dst)) return intoTiles(model, op, to, at);
    if (!walk(op, to, at)) sourceCrashed(model);
}

// ---- checks

void refuse(Model& model, std::int32_t status, const char* words) {
    model.report(status, "Decimate", words, "zetdecim");
}

std::int32_t colours(const ZetImage& image) { return image.nChannels - (image.alphaChannel ? 1 : 0); }

void checkChannels(Model& model, const ZetImage& src, const ZetImage& dst) {
    const bool inSrc = coiOf(src) != 0, inDst = coiOf(dst) != 0;
    if (inSrc && !inDst && colours(dst) != 1)
        refuse(model, ZET_StatusBadCoi, "srcImage->roi->coi > 0 && dstImage->roi->coi == 0");
    if (inDst && !inSrc && colours(src) != 1)
        refuse(model, ZET_StatusBadCoi, "dstImage->roi->coi > 0 && srcImage->roi->coi == 0");
    if (!inSrc && !inDst && colours(src) != colours(dst))
        refuse(model, ZET_StatusBadChannels, "srcImage->nChannels != dstImage->nChannels");
}

void checkNumbers(Model& model, const Factors& f, std::int32_t interpolate) {
    const auto refuseIf = [&](bool wrong, const char* words) {
        if (wrong) refuse(model, ZET_StatusBadArgument, words);
    };
    refuseIf(interpolate < 0 || interpolate > 3,
             "interpolate != ZET_INTER_NN, ZET_INTER_LINEAR, ZET_INTER_CUBIC or ZET_INTER_SUPER");
    refuseIf(f.xDst < 1, "xDst <= 0");
    refuseIf(f.xSrc < 1, "xSrc <= 0");
    refuseIf(f.yDst < 1, "yDst <= 0");
    refuseIf(f.ySrc < 1, "ySrc <= 0");
    refuseIf(f.xDst > f.xSrc, "xDst > xSrc");
    refuseIf(f.yDst > f.ySrc, "yDst > ySrc");
}

bool checks(Model& model, const ZetImage* src, const ZetImage* dst, const Factors& factors, std::int32_t interpolate) {
    for (const ZetImage* image : {src, dst})
        if (model.checkImage(image)) return model.reportIncorrectImage("Decimate", "zetdecim"), false;
    if (src == dst) refuse(model, ZET_StatusBadArgument, "srcImage == dstImage");
    if (src->depth != dst->depth) refuse(model, ZET_StatusBadDepth, "srcImage->depth != dstImage->depth");
    const auto known = {ZET_DEPTH_1U, ZET_DEPTH_8U, ZET_DEPTH_16U, ZET_DEPTH_32F};
    if (std::find(known.begin(), known.end(), src->depth) == known.end())
        refuse(model, ZET_StatusBadDepth, "depth != 1U, 8U, 16U or 32F");
    if (src->origin != dst->origin) refuse(model, ZET_StatusBadOrigin, "srcImage->origin != dstImage->origin");
    if (src->dataOrder != dst->dataOrder)
        refuse(model, ZET_StatusBadOrder, "srcImage->dataOrder != dstImage->dataOrder");
    checkChannels(model, *src, *dst);
    checkNumbers(model, factors, interpolate);
    return model.status >= 0;
}

}  // namespace

void modelDecimate(Model& model, ZetImage* src, ZetImage* dst, std::int32_t xDst, std::int32_t xSrc, std::int32_t yDst,
                   std::int32_t ySrc, std::int32_t interpolate) {
    const Factors f{xDst, xSrc, yDst, ySrc};
    if (!checks(model, src, dst, f, interpolate)) return;
    Decimate op{src, dst, f, {}};
    chooseMode(op, interpolate);
    op.xStep = static_cast<float>(static_cast<double>(xSrc) / xDst);
    op.yStep = static_cast<float>(static_cast<double>(ySrc) / yDst);
    const Area from = modelRegion(*src);
    Area to = modelRegion(*dst);
    to.width = static_cast<std::int32_t>(std::min<std::int64_t>(to.width, std::int64_t{xDst} * from.width / xSrc));
    to.height = static_cast<std::int32_t>(std::min<std::int64_t>(to.height, std::int64_t{yDst} * from.height / ySrc));
    decimate(model, op, to);
}

}  // namespace zetpxl::test
