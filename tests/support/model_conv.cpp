#include "tests/support/model_conv.h"

#include <algorithm>
#include <optional>

#include "tests/support/model_convsample.h"
#include "tests/support/model_patch.h"
#include "tests/support/model_point.h"
#include "tests/support/model_rect.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

enum Result { kDone, kNoChannel, kMismatch, kNoMemory, kNoTile, kOneCoi };

struct Margins {
    std::int32_t left = 0, right = 0, top = 0, bottom = 0;
};

struct Conv {
    Model& model;
    ZetImage* srcImage;
    ZetImage* dstImage;
    KernelSet set;
    // Tile callbacks see these two.
    ZetImage src{}, dst{};
    Area from{}, to{};
    Margins margins{};
    std::optional<JoinedMask> mask{};
    std::optional<Patch> patch{};

    bool inPlace() const { return srcImage == dstImage; }
};

void say(Model& model, std::int32_t status, const char* words) {
    model.report(status, "zetConvolve2D", words, "zetcnv2d");
}

// ---- checks

bool beginsOutside(const ZetImage& image) {
    return image.roi && (image.roi->xOffset >= image.width || image.roi->yOffset >= image.height);
}

const char* kernelFault(const ZetConvKernel* kernel) {
    if (!kernel) return "kernel[i]==0";
    const bool sound = kernel->nRows >= 1 && kernel->nCols >= 1 && kernel->anchorX >= 0 && kernel->anchorY >= 0 &&
                       kernel->anchorX < kernel->nCols && kernel->anchorY < kernel->nRows;
    return sound ? nullptr : "Bad kernel structure";
}

const char* argumentFault(const KernelSet& set) {
    if (!set.kernels) return "kernel==0";
    if (set.count < 1 || set.count > 10) return "(nKernels<=0 || nKernels>10)";
    if (set.count > 1 && (set.method < 0 || set.method > 4)) return "Inadmissible method";
    for (std::int32_t k = 0; k < set.count; ++k)
        if (const char* fault = kernelFault(set.kernels[k])) return fault;
    return nullptr;
}

const char* imageFault(const ZetImage& src, const ZetImage& dst) {
    if (src.depth != dst.depth || src.dataOrder != dst.dataOrder) return "Uncompatible images";
    return src.depth == ZET_DEPTH_32F ? "32F images can be processed only with FP kernel" : nullptr;
}

bool refused(Conv& op) {
    for (const ZetImage* image : {op.srcImage, op.dstImage}) {
        if (!op.model.checkImage(image)) continue;
        op.model.reportIncorrectImage("zetConvolve2D", "zetcnv2d");
        return true;
    }
    if (beginsOutside(*op.srcImage) || beginsOutside(*op.dstImage)) {
        say(op.model, ZET_StatusBadRoiOffset, "Bad ROI offsets");
        return true;
    }
    const char* fault = argumentFault(op.set);
    if (!fault) fault = imageFault(*op.srcImage, *op.dstImage);
    if (fault) say(op.model, ZET_StatusBadArgument, fault);
    return fault != nullptr;
}

// ---- what is worked on

void limitConstants(ZetImage& image) {
    for (std::int32_t& word : image.borderConst) {
        if (image.depth == ZET_DEPTH_32S) continue;
        if (image.depth == ZET_DEPTH_1U)
            word = word > 0;
        else
            word = static_cast<std::int32_t>(sampleValue(image.depth, nearestSample(image.depth, word)));
    }
}

Area maskedRegion(const ZetImage& image) {
    Area area = modelRegion(image);
    if (!image.maskImage) return area;
    const Area mask = modelRegion(*image.maskImage);
    area.width = std::min(area.width, mask.width);
    area.height = std::min(area.height, mask.height);
    return area;
}

bool resolve(Conv& op) {
    op.src = *op.srcImage;
    op.dst = *op.dstImage;
    limitConstants(op.src);
    limitConstants(op.dst);
    op.from = maskedRegion(op.src);
    op.to = maskedRegion(op.dst);
    op.from.width = op.to.width = std::min(op.from.width, op.to.width);
    op.from.height = op.to.height = std::min(op.from.height, op.to.height);
    return !op.to.empty();
}

Result agree(const Conv& op) {
    const bool srcCoi = coiOf(op.src) > 0;
    const bool dstCoi = coiOf(op.dst) > 0;
    if (srcCoi != dstCoi) return kOneCoi;
    if (srcCoi) return kDone;
    const std::int32_t have = modelChannels(op.src).count;
    const std::int32_t want = modelChannels(op.dst).count;
    if (have == 0 || want == 0) return kNoChannel;
    return have == want ? kDone : kMismatch;
}

void takeMask(Conv& op) {
    ZetImage* const a = op.src.maskImage;
    ZetImage* const b = op.dst.maskImage;
    if (!a && !b) return;
    op.mask.emplace();
    if (!a || !b) {
        op.mask->given = a ? a : b;
        return;
    }
    Plane plane(op.to.width, op.to.height, b->dataOrder, b->origin, b->align);
    plane.image.alphaChannel = b->alphaChannel;
    modelAnd(op.model, a, b, &plane.image);
    op.mask->kind = 1;
    op.mask->width = op.to.width;
    op.mask->height = op.to.height;
    for (std::int32_t y = 0; y < op.to.height; ++y)
        for (std::int32_t x = 0; x < op.to.width; ++x) op.mask->bits.push_back(maskBit(plane.image, x, y));
}

void takeMargins(Conv& op) {
    Margins& m = op.margins;
    for (std::int32_t k = 0; k < op.set.count; ++k) {
        const ZetConvKernel& kernel = *op.set.kernels[k];
        m.left = std::max(m.left, kernel.anchorX);
        m.top = std::max(m.top, kernel.anchorY);
        m.right = std::max(m.right, kernel.nCols - 1 - kernel.anchorX);
        m.bottom = std::max(m.bottom, kernel.nRows - 1 - kernel.anchorY);
    }
}

Area withMargins(const Conv& op, const Area& area) {
    const Margins& m = op.margins;
    return {area.x - m.left, area.y - m.top, area.width + m.left + m.right, area.height + m.top + m.bottom};
}

// ---- pixels; `part` counts from the corner of the regions

void pixel(const Conv& op, std::int32_t x, std::int32_t y) {
    if (op.mask && !op.mask->at(x, y)) return;
    const ChannelRange source = modelChannels(op.src);
    const ChannelRange target = modelChannels(op.dst);
    const bool apart = op.src.dataOrder == 1 || coiOf(op.src) > 0;
    for (std::int32_t c = 0; c < target.count; ++c) {
        const auto sample = [&](std::int32_t dy, std::int32_t dx) {
            const std::uint32_t s = op.patch->at(source.first + c, op.from.y + y + dy, op.from.x + x + dx);
            return static_cast<float>(sampleValue(op.src.depth, s));
        };
        const float value = modelConvValue(op.set, apart ? 1 : op.src.nChannels, sample);
        putSample(op.dst, target.first + c, op.to.y + y, op.to.x + x, modelConvStore(op.dst.depth, value));
    }
}

void pixels(const Conv& op, const Area& part) {
    for (std::int32_t y = 0; y < part.height; ++y)
        for (std::int32_t x = 0; x < part.width; ++x) pixel(op, part.x + x, part.y + y);
}

// ---- routes

bool copyCalls(Conv& op, const Area& area) {
    const Area grown = withMargins(op, area);
    return modelGetRectCalls(op.src, grown.x, grown.y, grown.width, grown.height);
}

Result oneTile(Conv& op, std::int32_t col, std::int32_t row, const Area& part, bool fromTiles) {
    if (!modelFetch(op.dst, col, row, ZET_TILE_WRITE)) return kNoTile;
    const ZetTileInfo& tiles = *op.dst.tileInfo;
    const Area whole{op.from.x + part.x, op.from.y + part.y, tiles.width, tiles.height};
    const bool had = !fromTiles || copyCalls(op, whole);
    if (had) pixels(op, part);
    modelRelease(op.dst, col, row);
    return had ? kDone : kNoMemory;
}

// Rows [y, y + height) of the region, tile by tile.
Result overTiles(Conv& op, std::int32_t y, std::int32_t height, bool fromTiles) {
    const ZetTileInfo& tiles = *op.dst.tileInfo;
    const std::int32_t x0 = op.to.x, x1 = x0 + op.to.width - 1;
    const std::int32_t y0 = op.to.y + y, y1 = y0 + height - 1;
    for (std::int32_t row = y0 / tiles.height; row <= y1 / tiles.height; ++row)
        for (std::int32_t col = x0 / tiles.width; col <= x1 / tiles.width; ++col) {
            const Band xs = modelBand(x0, op.to.width, tiles.width, col);
            const Band ys = modelBand(y0, height, tiles.height, row);
            const Area part{xs.start - op.to.x, ys.start - op.to.y, xs.size, ys.size};
            if (const Result result = oneTile(op, col, row, part, fromTiles)) return result;
        }
    return kDone;
}

// The region in place, cut along tile rows.
std::vector<Area> stripesOf(const Conv& op) {
    const std::int32_t high = op.dst.tileInfo->height;
    std::vector<Area> stripes;
    for (std::int32_t row = op.to.y / high; row <= (op.to.y + op.to.height - 1) / high; ++row) {
        const Band band = modelBand(op.to.y, op.to.height, high, row);
        stripes.push_back({op.from.x, op.from.y + band.start - op.to.y, op.from.width, band.size});
    }
    return stripes;
}

Result writeStripe(Conv& op, const Area& stripe) { return overTiles(op, stripe.y - op.from.y, stripe.height, false); }

// With a border that wraps or a kernel that reaches past the next tile row, written rows would be read again.
bool staysNear(const Conv& op) {
    for (const std::int32_t mode : op.src.borderMode)
        if ((mode & 3) == ZET_BORDER_WRAP) return false;
    const std::int32_t high = op.dst.tileInfo->height;
    return op.margins.top <= high && op.margins.bottom <= high;
}

// Each stripe is copied before the one above it is written; the first one, which the second reaches into, is written last.
Result besideCopies(Conv& op, const std::vector<Area>& stripes) {
    if (stripes.size() > 1 && !copyCalls(op, stripes[1])) return kNoMemory;
    for (std::size_t k = 1; k < stripes.size(); ++k) {
        if (k + 1 < stripes.size() && !copyCalls(op, stripes[k + 1])) return kNoMemory;
        if (const Result result = writeStripe(op, stripes[k])) return result;
    }
    return kDone;
}

Result behindCopies(Conv& op, const std::vector<Area>& stripes) {
    for (std::size_t k = 1; k < stripes.size(); ++k)
        if (!copyCalls(op, stripes[k])) return kNoMemory;
    for (std::size_t k = 1; k < stripes.size(); ++k)
        if (const Result result = writeStripe(op, stripes[k])) return result;
    return writeStripe(op, stripes[0]);
}

Result overStripes(Conv& op) {
    const std::vector<Area> stripes = stripesOf(op);
    if (!copyCalls(op, stripes[0])) return kNoMemory;
    if (!staysNear(op)) return behindCopies(op, stripes);
    const Result result = besideCopies(op, stripes);
    if (result == kNoTile) return result;
    // Without memory for a later stripe the first one is written all the same.
    const Result last = writeStripe(op, stripes[0]);
    return result ? result : last;
}

Result throughCopy(Conv& op) {
    if (tiled(op.src) && !copyCalls(op, op.from)) return kNoMemory;
    pixels(op, {0, 0, op.to.width, op.to.height});
    return kDone;
}

Result convolve(Conv& op) {
    if (!resolve(op)) return kDone;
    if (const Result result = agree(op)) return result;
    takeMask(op);
    takeMargins(op);
    op.patch = takePatch(op.src, withMargins(op, op.from));
    if (!tiled(op.dst)) return throughCopy(op);
    return op.inPlace() ? overStripes(op) : overTiles(op, 0, op.to.height, tiled(op.src));
}

}  // namespace

void modelConvolve(Model& model, ZetImage* src, ZetImage* dst, const ZetConvKernel* const* kernels,
                   std::int32_t nKernels, std::int32_t method) {
    Conv op{model, src, dst, {kernels, nKernels, method}};
    if (refused(op)) return;
    switch (convolve(op)) {
        case kNoChannel:
            return say(model, ZET_StatusBadArgument, "No channel to operate");
        case kMismatch:
            return say(model, ZET_StatusBadArgument, "Uncompatible images");
        case kNoMemory:
            return say(model, ZET_StatusNoMemory, "Allocation failure");
        case kNoTile:
            return say(model, ZET_StatusError, "Error get tile to write");
        case kOneCoi:
            return say(model, ZET_StatusBadArgument, "One of the COI is not defined");
        case kDone:
            return;
    }
}

}  // namespace zetpxl::test
