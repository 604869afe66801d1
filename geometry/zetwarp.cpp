// Maps the source region onto the destination through an affine matrix.
//   warp.2 the image of the region is a parallelogram; it is clipped and scan-converted first, and only its pixels are made
//   warp.3 whole-image coordinates, integers on pixels; regions only cut what is made
//   warp.4 with tiles the destination is walked in cells, each of which sees the source as a plain block with a margin of 3
//   warp.5 masks and borders play no part
#include <algorithm>
#include <cmath>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/tiles.h"
#include "geometry/warp.h"
#include "pixel/rect.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetWarpAffine", kWarpSource};
constexpr Operation opTransform{"zetGetAffineTransform", kWarpSource};
constexpr Operation opQuad{"zetGetAffineQuad", kWarpSource};

constexpr double kLeastDeterminant = 1e-7;
// Columns and rows around a cell's source positions: the cubic's four samples at the block's edges.
constexpr double kCellMargin = 3;

// A warp, of whole images or of a cell.
struct WarpCall {
    Operation op;
    ZetImage* src;
    ZetImage* dst;
    const double* quad;
    std::int32_t interpolation;
    std::int32_t clip;  // 0 for a cell, whose region is taken as it is
    PixelRect srcRect;
    PixelRect dstRect;
    AffineMatrix inverse;
    std::int32_t orientation;
};

PixelRect rectOf(const ZetRoiBounds& b) { return {b.x0, b.y0, b.x1, b.y1}; }

// Whether a span had a row: only then there are edges to blend.
bool warpDirect(const WarpCall& w) {
    ZetRoiLayout src;
    ZetRoiLayout dst;
    if (!ownRoiLayout(w.src, &src, w.clip) || !ownRoiLayout(w.dst, &dst, w.clip)) return false;
    if (src.nProc != dst.nProc) {
        report(w.op, ZET_StatusBadArgument,
               "Number of processed channels of srcImage != Number of processed channels of dstImage");
        return false;
    }
    WarpSpans spans{};
    if (!ownWarpSpans(w.quad, w.dstRect, w.orientation, &spans)) {
        reportBacktrace(w.op);
        return false;
    }
    if (src.nProc == 0) return true;
    const WarpRun run{sampleGrid(w.src, src.firstChannel), sampleGrid(w.dst, dst.firstChannel), src.nProc, &spans,
                      w.inverse};
    warpPixels(run, w.src->depth, w.interpolation);
    return true;
}

bool resolve(WarpCall* w) {
    std::int32_t height = 0;
    std::int32_t width = 0;
    if (!ownRoiSize(w->src, &height, &width, w->clip)) return false;
    if (width < 2 || height < 2) {
        report(w->op, ZET_StatusBadArgument, "srcImage Rectangle ROI is degenerate to length or point");
        return false;
    }
    ZetRoiBounds src;
    ZetRoiBounds dst;
    if (!ownRoiBounds(w->src, &src, w->clip) || !ownRoiBounds(w->dst, &dst, w->clip)) return false;
    w->srcRect = rectOf(src);
    w->dstRect = rectOf(dst);
    ownWarpInverse(w->srcRect, w->quad, &w->inverse, &w->orientation);
    return true;
}

// Source positions that a cell's corners reach.
struct Reach {
    double left;
    double top;
    double right;
    double bottom;
};

Reach reachOf(const AffineMatrix& m, const PixelRect& cell) {
    const double* d = m.c;
    const auto x = [&](double cx, double cy) { return d[0] * cx + d[1] * cy + d[2]; };
    const auto y = [&](double cx, double cy) { return d[3] * cx + d[4] * cy + d[5]; };
    const double xs[] = {x(cell.xMin, cell.yMin), x(cell.xMax, cell.yMin), x(cell.xMax, cell.yMax),
                         x(cell.xMin, cell.yMax)};
    const double ys[] = {y(cell.xMin, cell.yMin), y(cell.xMax, cell.yMin), y(cell.xMax, cell.yMax),
                         y(cell.xMin, cell.yMax)};
    const auto [left, right] = std::minmax_element(std::begin(xs), std::end(xs));
    const auto [top, bottom] = std::minmax_element(std::begin(ys), std::end(ys));
    return {std::floor(*left), std::floor(*top), std::ceil(*right), std::ceil(*bottom)};
}

// False also where a position is no number.
bool meets(const Reach& r, const PixelRect& source) {
    return r.left <= source.xMax && r.top <= source.yMax && r.right >= source.xMin && r.bottom >= source.yMin;
}

PixelRect fetchRect(const Reach& r, const ZetImage* image) {
    const auto limited = [](double v, std::int32_t last) {
        return static_cast<std::int32_t>(std::clamp<double>(v, 0, last));
    };
    return {limited(r.left - kCellMargin, image->width - 1), limited(r.top - kCellMargin, image->height - 1),
            limited(r.right + kCellMargin, image->width - 1), limited(r.bottom + kCellMargin, image->height - 1)};
}

// The source as a cell sees it: a block with the region moved into its coordinates.
bool makeSourceView(const WarpCall& w, const PixelRect& rect, TileView* view) {
    makeView(view, w.src);
    view->image.width = rect.xMax - rect.xMin + 1;
    view->image.height = rect.yMax - rect.yMin + 1;
    view->image.imageData =
        ownGetRect(w.src, rect.xMin, rect.yMin, view->image.width, view->image.height, &view->image.widthStep);
    view->roi.xOffset = w.srcRect.xMin - rect.xMin;
    view->roi.yOffset = w.srcRect.yMin - rect.yMin;
    view->roi.width = w.srcRect.xMax - w.srcRect.xMin + 1;
    view->roi.height = w.srcRect.yMax - w.srcRect.yMin + 1;
    if (view->image.imageData && zetGetErrStatus() >= 0) return true;
    ownFreeBlock(view->image.imageData);
    report(w.op, ZET_StatusBacktrace, "");
    return false;
}

struct WarpCell {
    std::int32_t col;
    std::int32_t row;
    PixelRect rect;
    ZetROI band;  // in the cell's tile, or in an untiled destination
};

struct CellWalk {
    const WarpCall* call;
    TileView srcView;
    TileView dstView;
    double quad[8];
    bool hadRows;
};

bool runCell(CellWalk* walk) {
    WarpCall cell = *walk->call;
    cell.src = &walk->srcView.image;
    cell.dst = &walk->dstView.image;
    cell.quad = walk->quad;
    cell.clip = 0;
    if (resolve(&cell) && warpDirect(cell)) walk->hadRows = true;
    return zetGetErrStatus() >= 0;
}

void moveQuad(CellWalk* walk, double x, double y) {
    for (int i = 0; i < 8; i += 2) {
        walk->quad[i] = walk->call->quad[i] - x;
        walk->quad[i + 1] = walk->call->quad[i + 1] - y;
    }
}

// Into a tile, or straight into an untiled destination.
bool runOnDestination(CellWalk* walk, const WarpCell& cell) {
    ZetImage* dst = walk->call->dst;
    walk->dstView.roi = {walk->dstView.roi.coi, cell.band.xOffset, cell.band.yOffset, cell.band.width,
                         cell.band.height};
    if (!dst->tileInfo) {
        moveQuad(walk, 0, 0);
        return runCell(walk);
    }
    walk->dstView.image.imageData = fetchTile(dst, cell.col, cell.row, ZET_TILE_WRITE);
    if (!walk->dstView.image.imageData) {
        report(walk->call->op, ZET_StatusError, "Error get tile to write");
        return false;
    }
    moveQuad(walk, cell.rect.xMin, cell.rect.yMin);
    const bool goesOn = runCell(walk);
    releaseTile(dst, cell.col, cell.row);
    return goesOn;
}

bool warpCell(CellWalk* walk, const WarpCell& cell) {
    const WarpCall& w = *walk->call;
    const Reach reach = reachOf(w.inverse, cell.rect);
    if (!meets(reach, w.srcRect)) return true;
    if (!makeSourceView(w, fetchRect(reach, w.src), &walk->srcView)) return false;
    const bool goesOn = runOnDestination(walk, cell);
    ownFreeBlock(walk->srcView.image.imageData);
    return goesOn;
}

// A cell may reach past what a word holds; the image does not.
std::int32_t lastOf(std::int32_t first, std::int32_t size) {
    return static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{first} + size - 1, INT32_MAX));
}

WarpCell cellAt(const WarpCall& w, const TileGrid& grid, std::int32_t c, std::int32_t r) {
    WarpCell cell{grid.x.first + c, grid.y.first + r, {}, {}};
    cell.rect = {cell.col * grid.x.tileSize, cell.row * grid.y.tileSize, 0, 0};
    cell.rect.xMax = lastOf(cell.rect.xMin, grid.x.tileSize);
    cell.rect.yMax = lastOf(cell.rect.yMin, grid.y.tileSize);
    const bool tiled = w.dst->tileInfo != nullptr;
    const std::int32_t x = tiled ? grid.x.offset(c) : w.dstRect.xMin + grid.x.distance(c);
    const std::int32_t y = tiled ? grid.y.offset(r) : w.dstRect.yMin + grid.y.distance(r);
    cell.band = {0, x, y, grid.x.bandSize(c), grid.y.bandSize(r)};
    return cell;
}

// As the direct way, and false after a report, which need not have stored a status.
bool warpCells(const WarpCall& w) {
    CellWalk walk{};
    walk.call = &w;
    makeView(&walk.dstView, w.dst);
    if (w.dst->tileInfo) setTileGeometry(&walk.dstView, w.dst);
    const TileGrid grid = tileGrid(w.dst, w.dstRect.yMax - w.dstRect.yMin + 1, w.dstRect.xMax - w.dstRect.xMin + 1);
    for (std::int32_t r = 0; r < grid.y.count; ++r)
        for (std::int32_t c = 0; c < grid.x.count; ++c)
            if (!warpCell(&walk, cellAt(w, grid, c, r))) return false;
    return walk.hadRows;
}

void ownWarp(const Operation& operation, ZetImage* srcImage, ZetImage* dstImage, const double* quad,
             std::int32_t interpolate) {
    WarpCall w{operation, srcImage, dstImage, quad, interpolate & ~kBlendFlag, 1, {}, {}, {}, 0};
    if (!resolve(&w)) return;
    const bool hadRows = srcImage->tileInfo || dstImage->tileInfo ? warpCells(w) : warpDirect(w);
    if (hadRows && (interpolate & kBlendFlag) && zetGetErrStatus() >= 0)
        ownBlendEdges(dstImage, quad, w.dstRect, w.orientation);
}

// The image of the clipped source region; false after a report.
bool zetGetAffineQuad(const ZetImage* srcImage, const double* c, double* quad) {
    if (ownCheckImage(srcImage) != ZET_StatusOk) {
        reportIncorrectImage(opQuad);
        return false;
    }
    ZetRoiBounds b;
    if (!ownRoiBounds(srcImage, &b, 1)) {
        report(opQuad, ZET_StatusBadArgument, "Bad rect ROI");
        return false;
    }
    const double corners[] = {static_cast<double>(b.x0), static_cast<double>(b.y0), static_cast<double>(b.x1),
                              static_cast<double>(b.y0), static_cast<double>(b.x1), static_cast<double>(b.y1),
                              static_cast<double>(b.x0), static_cast<double>(b.y1)};
    for (int i = 0; i < 8; i += 2) {
        quad[i] = c[0] * corners[i] + c[1] * corners[i + 1] + c[2];
        quad[i + 1] = c[3] * corners[i] + c[4] * corners[i + 1] + c[5];
    }
    return true;
}

// Cross product of the side from corner a to corner b and that from c to d.
double crossOf(const double* q, int a, int b, int c, int d) {
    return (q[2 * b] - q[2 * a]) * (q[2 * d + 1] - q[2 * c + 1]) -
           (q[2 * b + 1] - q[2 * a + 1]) * (q[2 * d] - q[2 * c]);
}

const char* quadFault(const double* q) {
    const double e[] = {crossOf(q, 2, 3, 3, 0), -crossOf(q, 0, 1, 3, 0), -crossOf(q, 1, 2, 0, 1),
                        -crossOf(q, 2, 3, 1, 2)};
    if (e[0] == 0 || e[1] == 0 || e[2] == 0 || e[3] == 0)
        return "Quadrangle is degenerate to triangle or length or point";
    const bool allPositive = e[0] > 0 && e[1] > 0 && e[2] > 0 && e[3] > 0;
    const bool allNegative = e[0] < 0 && e[1] < 0 && e[2] < 0 && e[3] < 0;
    if (!allPositive && !allNegative) return "Quadrangle is concave";
    const bool isParallelogram = std::fabs(crossOf(q, 2, 3, 0, 1)) <= kLeastDeterminant &&
                                 std::fabs(crossOf(q, 1, 2, 3, 0)) <= kLeastDeterminant;
    return isParallelogram ? nullptr : "Quadrangle is not parallelogram";
}

bool isInterpolation(std::int32_t m) { return m == ZET_INTER_NN || m == ZET_INTER_LINEAR || m == ZET_INTER_CUBIC; }

}  // namespace

void ownWarpInverse(const PixelRect& source, const double* quad, AffineMatrix* inverse, std::int32_t* orientation) {
    const double* q = quad;
    const double w = static_cast<double>(source.xMax) - source.xMin;
    const double h = static_cast<double>(source.yMax) - source.yMin;
    const double s = 1 / ((q[5] - q[3]) * (q[2] - q[0]) - (q[3] - q[1]) * (q[4] - q[2]));
    double* d = inverse->c;
    d[0] = (q[5] - q[3]) * w * s;
    d[1] = -(q[4] - q[2]) * w * s;
    d[2] = source.xMin - d[0] * q[0] - d[1] * q[1];
    d[3] = -(q[3] - q[1]) * h * s;
    d[4] = (q[2] - q[0]) * h * s;
    d[5] = source.yMin - d[3] * q[0] - d[4] * q[1];
    *orientation = s > 0 ? 1 : 0;
}

AffineMatrix ownWarpForward(const PixelRect& source, const double* q) {
    const double rx = 1 / (static_cast<double>(source.xMax) - source.xMin);
    const double ry = 1 / (static_cast<double>(source.yMax) - source.yMin);
    AffineMatrix m{};
    m.c[0] = (q[2] - q[0]) * rx;
    m.c[3] = (q[3] - q[1]) * rx;
    m.c[1] = (q[4] - q[2]) * ry;
    m.c[4] = (q[5] - q[3]) * ry;
    m.c[2] = q[0] - m.c[0] * source.xMin - m.c[1] * source.yMin;
    m.c[5] = q[1] - m.c[3] * source.xMin - m.c[4] * source.yMin;
    return m;
}

bool checkGeometryImages(const Operation& operation, const ZetImage* src, const ZetImage* dst, const char* signWords) {
    constexpr std::int32_t bad = ZET_StatusBadArgument;
    if (src->depth != dst->depth) report(operation, bad, "srcImage->depth != dstImage->depth");
    if (src->origin != dst->origin) report(operation, bad, "srcImage->origin != dstImage->origin");
    const bool oneChannel = src->nChannels == 1 && dst->nChannels == 1;
    if (src->depth != ZET_DEPTH_1U && !oneChannel && src->dataOrder != dst->dataOrder)
        report(operation, bad, "srcImage->dataOrder != dstImage->dataOrder");
    if (src->depth & ZET_DEPTH_SIGN) report(operation, bad, signWords);
    if (src == dst) report(operation, bad, "This function is not in-place function");
    return zetGetErrStatus() >= 0;
}

std::int32_t usableInterpolation(const ZetImage* src, std::int32_t interpolation) {
    if (src->depth == ZET_DEPTH_1U || src->width == 1 || src->height == 1) return ZET_INTER_NN;
    const bool isSmall = src->width < 4 || src->height < 4;
    return isSmall && interpolation == ZET_INTER_CUBIC ? std::int32_t{ZET_INTER_LINEAR} : interpolation;
}

}  // namespace zetpxl

using namespace zetpxl;

void zetWarpAffine(ZetImage* srcImage, ZetImage* dstImage, const double* coeffs, int32_t interpolate) {
    if (!checkImages(op, {srcImage, dstImage})) return;
    if (!checkGeometryImages(op, srcImage, dstImage, "srcImage->depth & ZET_DEPTH_SIGN")) return;
    if (std::fabs(coeffs[4] * coeffs[0] - coeffs[3] * coeffs[1]) <= kLeastDeterminant)
        return report(op, ZET_StatusBadArgument, "Determinant of transform matrix == 0.0");
    double quad[8];
    if (!zetGetAffineQuad(srcImage, coeffs, quad)) return static_cast<void>(reportBacktrace(op));
    const std::int32_t m = interpolate & ~kBlendFlag;
    if (!isInterpolation(m))
        return report(op, ZET_StatusBadArgument,
                      "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate != "
                      "ZET_INTER_CUBIC");
    ownWarp(op, srcImage, dstImage, quad, usableInterpolation(srcImage, m) | (interpolate & kBlendFlag));
}

void zetGetAffineTransform(const ZetImage* srcImage, double* coeffs, const double* quad) {
    if (ownCheckImage(srcImage) != ZET_StatusOk) return reportIncorrectImage(opTransform);
    if (const char* fault = quadFault(quad)) return report(opTransform, ZET_StatusBadArgument, fault);
    ZetRoiBounds b;
    if (!ownRoiBounds(srcImage, &b, 1)) return report(opTransform, ZET_StatusBadArgument, "Bad rect ROI");
    if (b.x1 - b.x0 <= 0 || b.y1 - b.y0 < 1)
        return report(opTransform, ZET_StatusBadArgument, "srcImage Rectangle ROI is degenerate to length or point");
    const AffineMatrix m = ownWarpForward(rectOf(b), quad);
    std::copy_n(m.c, 6, coeffs);
}
