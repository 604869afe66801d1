#include "tests/support/model_zoomblock.h"

#include <algorithm>
#include <vector>

#include "tests/support/model_patch.h"
#include "tests/support/model_point.h"
#include "tests/support/model_zoom.h"
#include "tests/support/model_zoomsample.h"

namespace zetpxl::test {
namespace {

constexpr double kTolerance = 1e-7;

// ---- rows and columns

// The source along one axis: where its region begins, how many pixels the image has, and which of them is the last one
// for linear interpolation, counted from the region's first.
struct Line {
    std::int32_t offset, size, last;
};

ZoomTap linearTap(double position, std::int32_t index, const Line& line) {
    if (index == line.last) return {index - 1, 1.0f};
    return {index, static_cast<float>(position - index)};
}

// The four samples around lie within the image: at its ends they are not those around the position.
ZoomTap cubicTap(double position, std::int32_t index, const Line& line) {
    const std::int32_t inImage = index + line.offset;
    if (inImage == line.size - 1) return {index - 2, 2.0f};
    if (inImage == 0)
        index += 1;
    else if (inImage == line.size - 2)
        index -= 1;
    return {index, static_cast<float>(position - index)};
}

ZoomTap tapAt(std::int32_t mode, double position, const Line& line) {
    const std::int32_t index = wholeOf(position + kTolerance);
    if (mode == ZET_INTER_NN) return {index, 0};
    return mode == ZET_INTER_LINEAR ? linearTap(position, index, line) : cubicTap(position, index, line);
}

std::vector<ZoomTap> tapsOf(std::int32_t mode, const ZoomAxis& axis, double start, std::int32_t count,
                            const Line& line) {
    std::vector<ZoomTap> taps;
    double position = mode == ZET_INTER_NN && axis.rem ? start + 0.5 : start;
    for (std::int32_t i = 0; i < count; ++i) {
        ZoomTap tap = tapAt(mode, position, line);
        tap.index += line.offset;
        taps.push_back(tap);
        position += axis.step;
    }
    return taps;
}

// ---- masks

// The pixels of a mask that stand for `size` pixels made.
std::int32_t maskExtent(double scale, std::int32_t size) {
    const std::int32_t extent = wholeOf(scale * size + kTolerance);
    return extent < 1 ? wholeOf(size / scale + kTolerance) : extent;
}

bool stepFailed(Model& model) {
    if (model.status >= 0) return false;
    model.report(ZET_StatusBacktrace, "zetZoom", "", "zetZoom");
    return true;
}

// The source's mask at the scale of the destination, joined with the destination's; false when the block ends.
bool scaleMask(Model& model, const ZoomPlan& plan, const ZetImage& src, const ZetImage& dst, Plane& made) {
    const std::int32_t width = made.image.width;
    const std::int32_t height = made.image.height;
    modelResize(model, src.maskImage, &made.image, width, maskExtent(plan.x.scale, width), height,
                maskExtent(plan.y.scale, height), ZET_INTER_NN);
    if (stepFailed(model)) return false;
    if (!dst.maskImage) return true;
    modelAnd(model, &made.image, dst.maskImage, &made.image);
    return !stepFailed(model);
}

// ---- pixels

struct Block {
    const ZetImage& src;
    const ZetImage& dst;
    const ZetImage* mask;
    std::int32_t mode;
    std::vector<ZoomTap> rows, cols;
};

void makePixels(const Block& block) {
    const ChannelRange from = modelChannels(block.src);
    const ChannelRange to = modelChannels(block.dst);
    const Area corner = modelRegion(block.dst);
    for (std::size_t y = 0; y < block.rows.size(); ++y)
        for (std::size_t x = 0; x < block.cols.size(); ++x) {
            const auto row = static_cast<std::int32_t>(y);
            const auto col = static_cast<std::int32_t>(x);
            if (block.mask && !maskBit(*block.mask, col, row)) continue;
            for (std::int32_t c = 0; c < to.count; ++c)
                putSample(block.dst, to.first + c, corner.y + row, corner.x + col,
                          modelZoomSample(block.src, from.first + c, block.mode, block.rows[y], block.cols[x]));
        }
}

}  // namespace

std::int32_t wholeOf(double value) {
    return static_cast<std::int32_t>(std::clamp(value, double{INT32_MIN}, double{INT32_MAX}));
}

Area modelTakingPart(const ZetImage& image) {
    Area area = modelRegion(image);
    if (!image.maskImage) return area;
    const Area mask = modelRegion(*image.maskImage);
    area.width = std::min(area.width, mask.width);
    area.height = std::min(area.height, mask.height);
    return area;
}

std::int32_t modelZoomSize(std::int32_t dstSize, std::int32_t srcSize, double scale) {
    return std::min(dstSize, std::max(1, wholeOf(srcSize / scale + kTolerance)));
}

void modelZoomBlock(Model& model, const ZoomPlan& plan, const ZetImage& src, const ZetImage& dst,
                    const ZoomStart& start) {
    const Area region = modelRegion(src);
    const Area from = modelTakingPart(src);
    Area to = modelTakingPart(dst);
    if (from.empty() || to.empty()) return;
    if (start.clip) {
        to.width = modelZoomSize(to.width, from.width, plan.x.scale);
        to.height = modelZoomSize(to.height, from.height, plan.y.scale);
    }
    const std::int32_t origin = src.maskImage ? src.maskImage->origin : 0;
    Plane scaled(to.width, to.height, 0, origin, 4);
    if (src.maskImage && !scaleMask(model, plan, src, dst, scaled)) return;
    if (modelChannels(src).count != modelChannels(dst).count)
        return model.report(ZET_StatusError, "zetZoom", "srcImage COI != dstImage COI", "zetZoom");
    const Line across{region.x, src.width, src.width - region.x - 1 - (region.width - from.width)};
    const Line down{region.y, src.height, src.height - region.y - 1 - (region.height - from.height)};
    makePixels({src, dst, src.maskImage ? &scaled.image : dst.maskImage, plan.mode,
                tapsOf(plan.mode, plan.y, start.y, to.height, down),
                tapsOf(plan.mode, plan.x, start.x, to.width, across)});
}

}  // namespace zetpxl::test
