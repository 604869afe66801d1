#include "tests/support/model_blur.h"

#include <algorithm>
#include <cfenv>
#include <optional>

#include "tests/support/model_blurmean.h"
#include "tests/support/model_copy.h"
#include "tests/support/model_patch.h"
#include "tests/support/model_point.h"
#include "tests/support/model_rect.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

struct Blur {
    Model& model;
    ZetImage* src;
    ZetImage* dst;
    BlurSize size;
    int rounding;
    float inv = 0;
    Area from{}, to{};
    std::optional<Plane> mask{};
    Patch patch{};
};

void say(Model& model, std::int32_t status, const char* words) { model.report(status, "zetBlur", words, "zetBlur"); }

bool sayNoTile(Model& model, const char* words) {
    say(model, ZET_StatusError, words);
    return false;
}

// ---- checks

struct Refusal {
    std::int32_t status;
    const char* words;
};

std::optional<Refusal> refusalOf(const Blur& op) {
    const BlurSize& s = op.size;
    if (op.src->depth != op.dst->depth) return Refusal{ZET_StatusBadArgument, "(srcImage->depth!=dstImage->depth)"};
    const bool oneChannel = op.src->nChannels == 1 && op.dst->nChannels == 1;
    if (!oneChannel && op.src->dataOrder != op.dst->dataOrder)
        return Refusal{ZET_StatusBadOrder, "(srcImage->dataOrder!=dstImage->dataOrder)"};
    if (s.nRows < 0 || s.nCols < 0) return Refusal{ZET_StatusBadArgument, "(nRows<0||nCols<0)"};
    if (s.anchorX < 0 || s.anchorY < 0) return Refusal{ZET_StatusBadArgument, "(anchorX<0||anchorY<0)"};
    if (s.anchorX >= s.nCols || s.anchorY >= s.nRows)
        return Refusal{ZET_StatusBadArgument, "(anchorX>=nCols||anchorY>=nRows)"};
    return std::nullopt;
}

bool refused(const Blur& op) {
    for (const ZetImage* image : {op.src, op.dst}) {
        if (!op.model.checkImage(image)) continue;
        op.model.reportIncorrectImage("zetBlur", "zetBlur");
        return true;
    }
    const std::optional<Refusal> refusal = refusalOf(op);
    if (refusal) say(op.model, refusal->status, refusal->words);
    return refusal.has_value();
}

bool hasChannels(const ZetImage& image) { return modelChannels(image).count > 0; }

bool refusedChannels(const Blur& op) {
    for (const ZetImage* image : {op.dst, op.src})
        if (!hasChannels(*image)) return say(op.model, ZET_StatusBadAlpha, "bad alpha channel's number"), true;
    if (modelChannels(*op.src).count != modelChannels(*op.dst).count)
        return say(op.model, ZET_StatusBadChannels, "bad channel's number"), true;
    for (const ZetImage* image : {op.src, op.dst})
        if (image->maskImage && !hasChannels(*image->maskImage))
            return say(op.model, ZET_StatusBadAlpha, "bad alpha channel's number"), true;
    return false;
}

void takeRegions(Blur& op) {
    op.from = modelRegion(*op.src);
    op.to = modelRegion(*op.dst);
    std::int32_t width = std::min(op.from.width, op.to.width);
    std::int32_t height = std::min(op.from.height, op.to.height);
    for (const ZetImage* image : {op.src, op.dst}) {
        if (!image->maskImage) continue;
        width = std::min(width, modelRegion(*image->maskImage).width);
        height = std::min(height, modelRegion(*image->maskImage).height);
    }
    op.from.width = op.to.width = width;
    op.from.height = op.to.height = height;
}

// An old negative status is no better than a failed step.
bool stepFailed(const Blur& op) {
    if (op.model.status >= 0) return false;
    say(op.model, ZET_StatusBacktrace, "");
    return true;
}

bool takeMask(Blur& op) {
    ZetImage* const a = op.src->maskImage;
    ZetImage* const b = op.dst->maskImage;
    if (!a && !b) return true;
    const ZetImage& like = a ? *a : *b;
    op.mask.emplace(op.to.width, op.to.height, like.dataOrder, like.origin, like.align);
    if (a && b)
        modelAnd(op.model, a, b, &op.mask->image);
    else
        modelCopy(op.model, a ? a : b, &op.mask->image);
    return !stepFailed(op);
}

// ---- one piece; `part` counts from the corner of the regions

Area blockOf(const Blur& op, const Area& part) {
    return {op.from.x + part.x - op.size.anchorX, op.from.y + part.y - op.size.anchorY, part.width + op.size.nCols,
            part.height + op.size.nRows};
}

// Results that are known and not yet in the image.
struct Pending {
    std::int32_t channel, y, x;
    std::uint32_t pattern;
};

void meansOfChannel(const Blur& op, const Area& part, std::int32_t channel, std::vector<Pending>& results) {
    const Area block = blockOf(op, part);
    const std::int32_t source = modelChannels(*op.src).first + channel;
    const auto sample = [&](std::int32_t row, std::int32_t col) {
        return op.patch.at(source, block.y + row, block.x + col);
    };
    const BlurWindow window{op.size.nCols, op.size.nRows, op.inv};
    const auto means = modelMeans(op.src->depth, window, part.width, part.height, sample);
    for (std::int32_t i = 0; i < part.width * part.height; ++i) {
        const std::int32_t x = part.x + i % part.width;
        const std::int32_t y = part.y + i / part.width;
        if (op.mask && !maskBit(op.mask->image, x, y)) continue;
        results.push_back(
            {modelChannels(*op.dst).first + channel, op.to.y + y, op.to.x + x, means[static_cast<std::size_t>(i)]});
    }
}

std::vector<Pending> meansOf(const Blur& op, const Area& part) {
    std::vector<Pending> results;
    for (std::int32_t c = 0; c < modelChannels(*op.dst).count; ++c) meansOfChannel(op, part, c, results);
    return results;
}

void store(const Blur& op, const std::vector<Pending>& results) {
    for (const Pending& r : results) putSample(*op.dst, r.channel, r.y, r.x, r.pattern);
}

bool fetchBlock(const Blur& op, const Area& part) {
    const Area block = blockOf(op, part);
    if (modelGetRectCalls(*op.src, block.x, block.y, block.width, block.height)) return true;
    say(op.model, ZET_StatusNoMemory, "Allocation failure");
    return false;
}

// ---- routes

struct Piece {
    std::int32_t col, row;
    Area part;
};

// The region along the tile grid of one of the images, tile column by tile column.
std::vector<Piece> piecesOf(const Blur& op, const ZetImage& image, const Area& area) {
    const ModelGrid grid = modelGrid(image, op.to.height, op.to.width);
    std::vector<Piece> pieces;
    for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col)
        for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row) {
            const Band xs = modelBand(area.x, op.to.width, grid.tileWidth, col);
            const Band ys = modelBand(area.y, op.to.height, grid.tileHeight, row);
            pieces.push_back({col, row, {xs.start - area.x, ys.start - area.y, xs.size, ys.size}});
        }
    return pieces;
}

void intoTiles(const Blur& op) {
    for (const Piece& piece : piecesOf(op, *op.dst, op.to)) {
        if (!fetchBlock(op, piece.part)) return;
        if (!modelFetch(*op.dst, piece.col, piece.row, ZET_TILE_WRITE))
            return static_cast<void>(sayNoTile(op.model, "Error get tile to write"));
        store(op, meansOf(op, piece.part));
        modelRelease(*op.dst, piece.col, piece.row);
    }
}

void fromTiles(const Blur& op) {
    for (const Piece& piece : piecesOf(op, *op.src, op.from)) {
        if (!fetchBlock(op, piece.part)) return;
        store(op, meansOf(op, piece.part));
    }
}

struct Slot {
    bool occupied = false;
    Piece piece{};
    std::vector<Pending> results{};
};

bool writeBack(const Blur& op, Slot& slot) {
    if (!slot.occupied) return true;
    const Piece& piece = slot.piece;
    if (!modelFetch(*op.dst, piece.col, piece.row, ZET_TILE_WRITE))
        return sayNoTile(op.model, "Error get tile to write");
    store(op, slot.results);
    modelRelease(*op.dst, piece.col, piece.row);
    slot.occupied = false;
    return true;
}

bool fill(const Blur& op, Slot& slot, const Piece& piece) {
    if (!modelFetch(*op.dst, piece.col, piece.row, ZET_TILE_READ)) return sayNoTile(op.model, "Error get tile to read");
    modelRelease(*op.dst, piece.col, piece.row);
    if (!fetchBlock(op, piece.part)) return false;
    slot = {true, piece, meansOf(op, piece.part)};
    return true;
}

bool staysNear(const Blur& op) {
    for (const std::int32_t mode : op.src->borderMode)
        if ((mode & 3) == ZET_BORDER_WRAP) return false;
    const ZetTileInfo& tiles = *op.dst->tileInfo;
    const BlurSize& s = op.size;
    return std::max(s.anchorX, s.nCols - 1 - s.anchorX) <= tiles.width &&
           std::max(s.anchorY, s.nRows - 1 - s.anchorY) <= tiles.height;
}

void inPlace(const Blur& op) {
    if (stepFailed(op)) return;
    const std::vector<Piece> pieces = piecesOf(op, *op.dst, op.to);
    const auto rows = static_cast<std::size_t>(pieces.back().row - pieces.front().row + 1);
    std::vector<Slot> ring(staysNear(op) ? rows + 2 : pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        Slot& slot = ring[i % ring.size()];
        if (!writeBack(op, slot) || !fill(op, slot, pieces[i])) return;
    }
    for (Slot& slot : ring)
        if (!writeBack(op, slot)) return;
}

void run(Blur& op) {
    const int mode = std::fegetround();
    std::fesetround(op.rounding);
    const volatile float one = 1.0f;
    const volatile auto count = static_cast<float>(op.size.nCols * op.size.nRows);
    const volatile float quotient = one / count;
    op.inv = quotient;
    op.patch = takePatch(*op.src, blockOf(op, {0, 0, op.to.width, op.to.height}));
    std::fesetround(mode);
    if (tiled(*op.dst)) return op.src == op.dst ? inPlace(op) : intoTiles(op);
    if (tiled(*op.src)) return fromTiles(op);
    store(op, meansOf(op, {0, 0, op.to.width, op.to.height}));
}

}  // namespace

void modelBlur(Model& model, ZetImage* src, ZetImage* dst, const BlurSize& size, int rounding) {
    Blur op{model, src, dst, size, rounding};
    if (refused(op)) return;
    if (size.nCols == 1 && size.nRows == 1) return modelCopy(model, src, dst);
    if (refusedChannels(op)) return;
    takeRegions(op);
    if (op.to.empty() || !takeMask(op)) return;
    run(op);
}

}  // namespace zetpxl::test
