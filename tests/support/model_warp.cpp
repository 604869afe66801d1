#include "tests/support/model_warp.h"

#include <algorithm>
#include <cmath>

#include "tests/support/model_rect.h"
#include "tests/support/model_sampling.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

struct Warp {
    ZetImage* src;
    ZetImage* dst;
    Quad quad;
    std::int32_t mode;
    const char* name;
    Area from{}, to{};  // regions
};

// One piece of the destination made from one piece of the source, each counted from the corner of its piece.
struct Piece {
    SourceView view;
    Corners source;  // of the region
    std::int32_t x, y;
    Corners limits;
    Quad quad;
};

void report(Model& model, const Warp& op, const char* words) {
    model.report(ZET_StatusBadArgument, op.name, words, "zetwarp");
}

void makePixel(const Warp& op, const Piece& piece, const Position& at, std::int32_t y, std::int32_t x) {
    const ChannelRange from = modelChannels(*op.src);
    const ChannelRange to = modelChannels(*op.dst);
    for (std::int32_t c = 0; c < to.count; ++c) {
        const LastSample last{piece.view.lastCol(), piece.view.lastRow()};
        const auto sample = modelResample(piece.view, from.first + c, op.mode, at, last);
        if (sample) putSample(*op.dst, to.first + c, piece.y + y, piece.x + x, *sample);
    }
}

// False when no row was made.
bool makePiece(Model& model, const Warp& op, const Piece& piece) {
    if (modelChannels(*op.src).count != modelChannels(*op.dst).count) {
        report(model, op, kChannelWords);
        return false;
    }
    const Inverse d = modelInverse(piece.source, piece.quad);
    const Spans spans = modelSpans(piece.quad, piece.limits, d.positive);
    std::int32_t y = spans.yFirst;
    double baseX = d.d1 * y + d.d2;
    double baseY = d.d4 * y + d.d5;
    for (const Spans::Span& span : spans.rows) {
        Position at{d.d0 * span.left + baseX, d.d3 * span.left + baseY};
        for (std::int32_t x = span.left; x <= span.right; ++x) {
            makePixel(op, piece, at, y, x);
            at.x += d.d0;
            at.y += d.d3;
        }
        baseX += d.d1;
        baseY += d.d4;
        ++y;
    }
    return !spans.rows.empty();
}

// ---- cells

struct Cell {
    std::int32_t col, row;
    Area area;
};

// What a cell needs of the source; empty when nothing of it shows there.
Area blockOf(const Warp& op, const Inverse& d, const Cell& cell) {
    const Corners c = cornersOf(cell.area);
    double x0 = INFINITY, y0 = INFINITY, x1 = -INFINITY, y1 = -INFINITY;
    for (const Point& p : {Point(c.x0, c.y0), Point(c.x1, c.y0), Point(c.x1, c.y1), Point(c.x0, c.y1)}) {
        const double x = d.d0 * p.x + d.d1 * p.y + d.d2;
        const double y = d.d3 * p.x + d.d4 * p.y + d.d5;
        if (std::isnan(x) || std::isnan(y)) return {};
        x0 = std::min(x0, std::floor(x));
        y0 = std::min(y0, std::floor(y));
        x1 = std::max(x1, std::ceil(x));
        y1 = std::max(y1, std::ceil(y));
    }
    const Corners region = cornersOf(op.from);
    if (x0 > region.x1 || y0 > region.y1 || x1 < region.x0 || y1 < region.y0) return {};
    const auto left = static_cast<std::int32_t>(std::max(x0 - 3, 0.0));
    const auto top = static_cast<std::int32_t>(std::max(y0 - 3, 0.0));
    const auto right = static_cast<std::int32_t>(std::min(x1 + 3, op.src->width - 1.0));
    const auto bottom = static_cast<std::int32_t>(std::min(y1 + 3, op.src->height - 1.0));
    return {left, top, right - left + 1, bottom - top + 1};
}

Piece pieceOf(const Warp& op, const Area& block, const Cell& cell, const Area& part) {
    const Corners region = cornersOf(op.from);
    Piece piece{{op.src, block},
                {region.x0 - block.x, region.y0 - block.y, region.x1 - block.x, region.y1 - block.y},
                0,
                0,
                cornersOf(part),
                op.quad};
    if (!tiled(*op.dst)) return piece;
    piece.x = cell.area.x;
    piece.y = cell.area.y;
    piece.limits = {piece.limits.x0 - piece.x, piece.limits.y0 - piece.y, piece.limits.x1 - piece.x,
                    piece.limits.y1 - piece.y};
    for (Point& p : piece.quad) p = {p.x - piece.x, p.y - piece.y};
    return piece;
}

// False when the walk ends.
bool makeCell(Model& model, const Warp& op, const Area& block, const Cell& cell, bool& made) {
    if (tiled(*op.src) && !modelGetRectCalls(*op.src, block.x, block.y, block.width, block.height)) {
        model.report(ZET_StatusBacktrace, op.name, "", "zetwarp");
        return false;
    }
    if (tiled(*op.dst) && !modelFetch(*op.dst, cell.col, cell.row, ZET_TILE_WRITE)) {
        model.report(ZET_StatusError, op.name, "Error get tile to write", "zetwarp");
        return false;
    }
    const Band xs = modelBand(op.to.x, op.to.width, cell.area.width, cell.col);
    const Band ys = modelBand(op.to.y, op.to.height, cell.area.height, cell.row);
    made |= makePiece(model, op, pieceOf(op, block, cell, {xs.start, ys.start, xs.size, ys.size}));
    if (tiled(*op.dst)) modelRelease(*op.dst, cell.col, cell.row);
    return model.status >= 0;
}

// True when something was made and nothing was reported.
bool makeCells(Model& model, const Warp& op, const Inverse& inverse) {
    const ModelGrid grid = modelGrid(*op.dst, op.to.height, op.to.width);
    bool made = false;
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row)
        for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col) {
            const Cell cell{col, row, {col * grid.tileWidth, row * grid.tileHeight, grid.tileWidth, grid.tileHeight}};
            const Area block = blockOf(op, inverse, cell);
            if (!block.empty() && !makeCell(model, op, block, cell, made)) return false;
        }
    return made;
}

void warp(Model& model, Warp op, bool blend) {
    op.from = modelRegion(*op.src);
    op.to = modelRegion(*op.dst);
    if (op.from.width < 2 || op.from.height < 2)
        return report(model, op, "srcImage Rectangle ROI is degenerate to length or point");
    if (op.to.empty()) return;
    const Corners source = cornersOf(op.from);
    const Inverse inverse = modelInverse(source, op.quad);
    bool made = false;
    if (tiled(*op.src) || tiled(*op.dst)) {
        made = makeCells(model, op, inverse);
    } else {
        if (modelNothingToProcess(*op.src) || modelNothingToProcess(*op.dst)) return;
        const SourceView view{op.src, {0, 0, op.src->width, op.src->height}};
        made = makePiece(model, op, {view, source, 0, 0, cornersOf(op.to), op.quad});
    }
    if (blend && made) modelBlendEdges(op.dst, op.quad, inverse.positive);
}

const char* const kDegenerate = "Quadrangle is degenerate to triangle or length or point";

const char* quadRefusal(const double* q) {
    double x[5], y[5];
    for (int i = 0; i < 5; ++i) {
        x[i] = q[2 * (i % 4)];
        y[i] = q[2 * (i % 4) + 1];
    }
    const auto cross = [&](int a, int b) {  // sides a and b, each from corner a to a + 1
        return (y[a + 1] - y[a]) * (x[b + 1] - x[b]) - (x[a + 1] - x[a]) * (y[b + 1] - y[b]);
    };
    const double e[4] = {cross(0, 3), cross(1, 0), cross(2, 1), cross(3, 2)};
    if (e[0] == 0 || e[1] == 0 || e[2] == 0 || e[3] == 0) return kDegenerate;
    const bool allAbove = e[0] > 0 && e[1] > 0 && e[2] > 0 && e[3] > 0;
    const bool allBelow = e[0] < 0 && e[1] < 0 && e[2] < 0 && e[3] < 0;
    if (!allAbove && !allBelow) return "Quadrangle is concave";
    const double sides = std::fabs((x[3] - x[2]) * (y[1] - y[0]) - (y[3] - y[2]) * (x[1] - x[0]));
    const double others = std::fabs((x[2] - x[1]) * (y[4] - y[3]) - (y[2] - y[1]) * (x[4] - x[3]));
    return sides <= 1e-7 && others <= 1e-7 ? nullptr : "Quadrangle is not parallelogram";
}

}  // namespace

bool modelNothingToProcess(const ZetImage& image) {
    return !image.roi && image.alphaChannel != 0 && image.nChannels == 1;
}

bool modelWarpChecks(Model& model, const ZetImage* src, const ZetImage* dst, const char* name) {
    for (const ZetImage* image : {src, dst})
        if (model.checkImage(image)) return model.reportIncorrectImage(name, "zetwarp"), false;
    const auto say = [&](const char* words) { model.report(ZET_StatusBadArgument, name, words, "zetwarp"); };
    if (src->depth != dst->depth) say("srcImage->depth != dstImage->depth");
    if (src->origin != dst->origin) say("srcImage->origin != dstImage->origin");
    const bool oneChannel = src->nChannels == 1 && dst->nChannels == 1;
    if (src->depth != ZET_DEPTH_1U && !oneChannel && src->dataOrder != dst->dataOrder)
        say("srcImage->dataOrder != dstImage->dataOrder");
    if (src->depth & ZET_DEPTH_SIGN) say("srcImage->depth & ZET_DEPTH_SIGN");
    if (src == dst) say("This function is not in-place function");
    return model.status >= 0;
}

void modelWarpAffine(Model& model, ZetImage* src, ZetImage* dst, const double* c, std::int32_t interpolate) {
    const char* name = "zetWarpAffine";
    if (!modelWarpChecks(model, src, dst, name)) return;
    const auto say = [&](const char* words) { model.report(ZET_StatusBadArgument, name, words, "zetwarp"); };
    if (std::fabs(c[4] * c[0] - c[3] * c[1]) <= 1e-7) return say("Determinant of transform matrix == 0.0");
    const Area region = modelRegion(*src);
    if (region.empty()) {
        model.report(ZET_StatusBadArgument, "zetGetAffineQuad", "Bad rect ROI", "zetwarp");
        return model.report(ZET_StatusBacktrace, name, "", "zetwarp");
    }
    const std::int32_t mode = interpolate & ~16;
    if (mode < 0 || mode > 2) return say(kModeWords);
    const Corners s = cornersOf(region);
    Quad quad{Point(s.x0, s.y0), Point(s.x1, s.y0), Point(s.x1, s.y1), Point(s.x0, s.y1)};
    for (Point& p : quad) p = {c[0] * p.x + c[1] * p.y + c[2], c[3] * p.x + c[4] * p.y + c[5]};
    warp(model, {src, dst, quad, modelMode(*src, mode), name}, (interpolate & 16) != 0);
}

void modelGetAffineTransform(Model& model, const ZetImage* src, double* coeffs, const double* q) {
    const char* name = "zetGetAffineTransform";
    if (model.checkImage(src)) return model.reportIncorrectImage(name, "zetwarp");
    const auto say = [&](const char* words) { model.report(ZET_StatusBadArgument, name, words, "zetwarp"); };
    if (const char* words = quadRefusal(q)) return say(words);
    const Area region = modelRegion(*src);
    if (region.empty()) return say("Bad rect ROI");
    if (region.width < 2 || region.height < 2) return say("srcImage Rectangle ROI is degenerate to length or point");
    const Corners s = cornersOf(region);
    const double rx = 1.0 / (s.x1 - s.x0);
    const double ry = 1.0 / (s.y1 - s.y0);
    coeffs[0] = (q[2] - q[0]) * rx;
    coeffs[3] = (q[3] - q[1]) * rx;
    coeffs[1] = (q[4] - q[2]) * ry;
    coeffs[4] = (q[5] - q[3]) * ry;
    coeffs[2] = q[0] - coeffs[0] * s.x0 - coeffs[1] * s.y0;
    coeffs[5] = q[1] - coeffs[3] * s.x0 - coeffs[4] * s.y0;
}

}  // namespace zetpxl::test
