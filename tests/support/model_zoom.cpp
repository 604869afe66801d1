#include "tests/support/model_zoom.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/model_decimate.h"
#include "tests/support/model_rect.h"
#include "tests/support/model_tiles.h"
#include "tests/support/model_zoomblock.h"
#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

constexpr const char* kName = "zetZoom";
constexpr const char* kSource = "zetZoom";
constexpr double kTolerance = 1e-7;

struct Ratios {
    std::int32_t xDst, xSrc, yDst, ySrc;
};

void refuse(Model& model, const char* words) { model.report(ZET_StatusBadArgument, kName, words, kSource); }

bool knownDepth(std::uint32_t depth) {
    return depth == ZET_DEPTH_1U || depth == ZET_DEPTH_8U || depth == ZET_DEPTH_16U || depth == ZET_DEPTH_32F;
}

bool checks(Model& model, const ZetImage* src, const ZetImage* dst, const Ratios& r, std::int32_t interpolate) {
    for (const ZetImage* image : {src, dst})
        if (model.checkImage(image)) return model.reportIncorrectImage(kName, kSource), false;
    if (interpolate < 0 || interpolate > 2) refuse(model, kZoomModeWords);
    if (src->depth != dst->depth) refuse(model, "srcImage->depth != dstImage->depth");
    if (!knownDepth(src->depth)) refuse(model, kZoomDepthWords);
    if (src->dataOrder != dst->dataOrder) refuse(model, "srcImage->dataOrder != dstImage->dataOrder");
    if (r.xDst < 1 || r.xSrc < 1) refuse(model, "xDst <= 0 || xSrc <= 0");
    if (r.yDst < 1 || r.ySrc < 1) refuse(model, "yDst <= 0 || ySrc <= 0");
    return model.status >= 0;
}

// ---- plan

// Regions count in full here, also what hangs over.
Area wholeRegion(const ZetImage& image) {
    if (!image.roi) return {0, 0, image.width, image.height};
    return {image.roi->xOffset, image.roi->yOffset, image.roi->width, image.roi->height};
}

std::int32_t modeFor(const ZetImage& src, std::int32_t interpolate) {
    if (src.depth == ZET_DEPTH_1U || src.width < 2 || src.height < 2) return ZET_INTER_NN;
    const bool small = src.width < 4 || src.height < 4;
    return interpolate == ZET_INTER_CUBIC && small ? ZET_INTER_LINEAR : interpolate;
}

// The first and the last pixel lie on each other, but for nearest samples at a whole ratio, which are just repeated.
ZoomAxis axisOf(std::int32_t mode, std::int32_t size, std::int32_t numDst, std::int32_t numSrc) {
    ZoomAxis axis;
    axis.scale = static_cast<double>(numSrc) / numDst;
    axis.rem = std::max(numDst, numSrc) % std::min(numDst, numSrc);
    const double made = static_cast<double>(size) / numSrc * numDst;
    if (mode == ZET_INTER_NN && axis.rem == 0)
        axis.step = size / made;
    else
        axis.step = made > 1 ? (size - 1.0) / (made - 1) : 0;
    return axis;
}

// ---- one cell of the destination

struct Zoom {
    ZetImage* src;
    ZetImage* dst;
    ZoomPlan plan;
    Area to{};  // what is made
};

// A record with a region of its own.
struct Local {
    ZetROI roi;
    ZetImage record;

    Local(const ZetImage& image, const Area& area)
        : roi{coiOf(image), area.x, area.y, area.width, area.height}, record(image) {
        record.roi = &roi;
    }
    Local(const Local&) = delete;
    Local& operator=(const Local&) = delete;
};

// Where a cell lies in the source along one axis.
struct Place {
    std::int32_t done;   // pixels of the destination before it
    std::int32_t start;  // in the image
    double position;     // from there
};

Place placeOf(std::int32_t offset, std::int32_t done, const ZoomAxis& axis) {
    if (done == 0) return {0, offset, 0.0};
    const double position = offset + done * axis.step;
    const std::int32_t start = wholeOf(position + kTolerance);
    return {done, start, position - start};
}

// What is taken out of a tiled source for one cell, along one axis: the part to scale and what is needed around it.
struct Cut {
    std::int64_t start, size;
    std::int32_t offset;  // of the part to scale
    std::int64_t part;
};

// Four samples are needed where the image ends, too.
void growForCubic(Cut& cut, std::int32_t imageSize) {
    if (cut.start + cut.size < imageSize) cut.size += 1;
    if (cut.start < 1) return;
    cut.start -= 1;
    cut.size += 1;
    cut.offset = 1;
    const std::int32_t more = cut.size == 2 ? 2 : cut.size == 3 ? 1 : 0;
    cut.start -= more;
    cut.size += more;
    cut.offset += more;
}

Cut cutOf(std::int32_t mode, double scale, std::int32_t start, std::int32_t made, std::int32_t imageSize) {
    const std::int64_t part = (scale <= 1 ? made : static_cast<std::int64_t>(std::ceil(made * scale))) + 1;
    Cut cut{start, part, 0, part};
    if (mode == ZET_INTER_NN) return cut;
    cut.size = cut.start + cut.size >= imageSize ? imageSize - cut.start : cut.size + 1;
    if (mode == ZET_INTER_LINEAR && cut.start > 0) {
        cut.start -= 1;
        cut.size += 1;
        cut.offset = 1;
    }
    if (mode == ZET_INTER_CUBIC) growForCubic(cut, imageSize);
    return cut;
}

struct Cell {
    Area area;  // of the destination, in the image
    Place x, y;
    Cut across, down;
};

Cell cellOf(const Zoom& op, const Area& area) {
    const Area from = modelRegion(*op.src);
    Cell cell{area, placeOf(from.x, area.x - op.to.x, op.plan.x), placeOf(from.y, area.y - op.to.y, op.plan.y), {}, {}};
    cell.across = cutOf(op.plan.mode, op.plan.x.scale, cell.x.start, area.width, op.src->width);
    cell.down = cutOf(op.plan.mode, op.plan.y.scale, cell.y.start, area.height, op.src->height);
    return cell;
}

// A rectangle of the source as an image of its own.
struct Taken {
    std::vector<std::uint8_t> bytes;
    ZetImage record;
    bool had = false;

    Taken(ZetImage& src, const Cut& across, const Cut& down) : record(src) {
        if (across.size < 1 || down.size < 1 || across.size > INT32_MAX || down.size > INT32_MAX) return;
        record.tileInfo = nullptr;
        record.width = static_cast<std::int32_t>(across.size);
        record.height = static_cast<std::int32_t>(down.size);
        const auto x = static_cast<std::int32_t>(across.start);
        const auto y = static_cast<std::int32_t>(down.start);
        had = modelFits(record) && modelGetRectCalls(src, x, y, record.width, record.height);
        if (had) fill(src, x, y);
    }

    void fill(const ZetImage& src, std::int32_t x, std::int32_t y) {
        const std::int64_t step = plainRowBytes(src.dataOrder, src.depth, src.align, src.nChannels, record.width);
        record.widthStep = static_cast<std::int32_t>(step);
        bytes.resize(static_cast<std::size_t>(step * record.height * (src.dataOrder == 1 ? src.nChannels : 1)));
        record.imageData = bytes.data();
        for (std::int32_t c = 0; c < src.nChannels; ++c)
            for (std::int32_t row = 0; row < record.height; ++row)
                for (std::int32_t col = 0; col < record.width; ++col)
                    putSample(record, c, row, col, modelRectSample(src, c, y + row, x + col));
    }
};

Area sourceMaskArea(const Zoom& op, const Cell& cell) {
    const Area whole = wholeRegion(*op.src->maskImage);
    Area area{wholeOf(whole.x + cell.x.done * op.plan.x.step + kTolerance),
              wholeOf(whole.y + cell.y.done * op.plan.y.step + kTolerance), whole.width, whole.height};
    if (tiled(*op.dst)) return area;
    area.width = static_cast<std::int32_t>(cell.across.size);
    area.height = static_cast<std::int32_t>(cell.down.size);
    return area;
}

Area targetMaskArea(const Zoom& op, const Cell& cell) {
    const Area whole = wholeRegion(*op.dst->maskImage);
    return {whole.x + cell.x.done, whole.y + cell.y.done, cell.area.width, cell.area.height};
}

// Each of them looks at its own part of its mask, even if the two share one.
void makeFrom(Model& model, const Zoom& op, const Cell& cell, ZetImage& src) {
    const ZetImage none{};
    Local to(*op.dst, cell.area);
    Local srcMask(src.maskImage ? *src.maskImage : none, src.maskImage ? sourceMaskArea(op, cell) : Area{});
    Local dstMask(to.record.maskImage ? *to.record.maskImage : none,
                  to.record.maskImage ? targetMaskArea(op, cell) : Area{});
    if (src.maskImage) src.maskImage = &srcMask.record;
    if (to.record.maskImage) to.record.maskImage = &dstMask.record;
    modelZoomBlock(model, op.plan, src, to.record, {cell.x.position, cell.y.position, false});
}

// False when the walk ends.
bool makeFromSource(Model& model, const Zoom& op, const Cell& cell) {
    if (!tiled(*op.src)) {
        const Area whole = wholeRegion(*op.src);
        Local from(*op.src, {cell.x.start, cell.y.start, whole.width, whole.height});
        makeFrom(model, op, cell, from.record);
        return true;
    }
    const Taken taken(*op.src, cell.across, cell.down);
    if (!taken.had || model.status < 0) return false;
    const Area part{cell.across.offset, cell.down.offset, static_cast<std::int32_t>(cell.across.part),
                    static_cast<std::int32_t>(cell.down.part)};
    Local from(taken.record, part);
    makeFrom(model, op, cell, from.record);
    return true;
}

bool makeCell(Model& model, const Zoom& op, std::int32_t col, std::int32_t row, const Area& area) {
    if (tiled(*op.dst) && !modelFetch(*op.dst, col, row, ZET_TILE_WRITE)) {
        model.report(ZET_StatusError, kName, "Error get tile to write", kSource);
        return false;
    }
    const bool made = makeFromSource(model, op, cellOf(op, area));
    if (tiled(*op.dst)) modelRelease(*op.dst, col, row);
    return made;
}

// An untiled destination is cut into squares as if it had tiles.
ModelGrid gridOf(const Zoom& op) {
    ZetTileInfo squares{};
    squares.width = squares.height = 64;
    ZetImage cut = *op.dst;
    if (!tiled(cut)) cut.tileInfo = &squares;
    return modelGrid(cut, op.to.height, op.to.width);
}

void makeCells(Model& model, Zoom op) {
    const Area from = modelTakingPart(*op.src);
    op.to = modelTakingPart(*op.dst);
    if (from.empty() || op.to.empty()) return;
    op.to.width = modelZoomSize(op.to.width, from.width, op.plan.x.scale);
    op.to.height = modelZoomSize(op.to.height, from.height, op.plan.y.scale);
    const ModelGrid grid = gridOf(op);
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row)
        for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col) {
            const Band xs = modelBand(op.to.x, op.to.width, grid.tileWidth, col);
            const Band ys = modelBand(op.to.y, op.to.height, grid.tileHeight, row);
            if (!makeCell(model, op, col, row, {xs.start, ys.start, xs.size, ys.size})) return;
        }
}

bool onlyAlpha(const ZetImage& image) { return image.alphaChannel != 0 && image.nChannels == 1; }

void zoom(Model& model, ZetImage* src, ZetImage* dst, const Ratios& r, std::int32_t interpolate) {
    if (!checks(model, src, dst, r, interpolate)) return;
    const Area region = wholeRegion(*src);
    const std::int32_t mode = modeFor(*src, interpolate);
    const ZoomPlan plan{mode, axisOf(mode, region.width, r.xDst, r.xSrc), axisOf(mode, region.height, r.yDst, r.ySrc)};
    if (src == dst) return refuse(model, "This function isn`t in-plase function");
    if (onlyAlpha(*src) || onlyAlpha(*dst)) return;
    if (tiled(*src) || tiled(*dst)) return makeCells(model, {src, dst, plan});
    modelZoomBlock(model, plan, *src, *dst, {.x = 0, .y = 0, .clip = true});
}

}  // namespace

void modelZoom(Model& model, ZetImage* src, ZetImage* dst, std::int32_t xDst, std::int32_t xSrc, std::int32_t yDst,
               std::int32_t ySrc, std::int32_t interpolate) {
    if (xDst < xSrc || yDst < ySrc) return refuse(model, "xDst < xSrc || yDst < ySrc");
    zoom(model, src, dst, {xDst, xSrc, yDst, ySrc}, interpolate);
}

void modelResize(Model& model, ZetImage* src, ZetImage* dst, std::int32_t xDst, std::int32_t xSrc, std::int32_t yDst,
                 std::int32_t ySrc, std::int32_t interpolate) {
    const char* name = "zetResize";
    const char* source = "zetresiz";
    if (interpolate == ZET_INTER_SUPER && (xDst > xSrc || yDst > ySrc))
        return model.report(ZET_StatusBadArgument, name, "(xDst > xSrc || yDst > ySrc)", source);
    if (interpolate == ZET_INTER_SUPER)
        modelDecimate(model, src, dst, xDst, xSrc, yDst, ySrc, interpolate);
    else
        zoom(model, src, dst, {xDst, xSrc, yDst, ySrc}, interpolate);
    if (model.status < 0) model.report(ZET_StatusBacktrace, name, "", source);
}

}  // namespace zetpxl::test
