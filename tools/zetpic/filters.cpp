// zetpic convolve, blur, border, median and fixed.
#include <algorithm>
#include <memory>

#include "transform.h"

namespace zetpic {
namespace {

struct KernelDeleter {
    void operator()(ZetConvKernel* kernel) const { zetDeleteConvKernel(kernel); }
};
using ConvKernel = std::unique_ptr<ZetConvKernel, KernelDeleter>;

Point windowAnchor(const Options& options, std::int32_t columns, std::int32_t rows) {
    return options.anchor.value_or(Point{columns / 2, rows / 2});
}

ConvKernel makeKernel(const Kernel& kernel, const Options& options) {
    const Point anchor = windowAnchor(options, kernel.columns, kernel.rows);
    return ConvKernel(zetCreateConvKernel(kernel.columns, kernel.rows, anchor.x, anchor.y, kernel.weights.data(),
                                          options.shift.value_or(kernel.shift)));
}

// Brings source pixel (x - left, y - top) to (x, y).
ConvKernel makeShift(std::int32_t left, std::int32_t top) {
    const std::int32_t columns = std::abs(left) + 1, rows = std::abs(top) + 1;
    const std::int32_t column = std::max(left, 0), row = std::max(top, 0);
    std::vector<std::int32_t> weights(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    weights[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(column)] = 1;
    return ConvKernel(zetCreateConvKernel(columns, rows, std::max(-left, 0), std::max(-top, 0), weights.data(), 0));
}

// All colours at once and alpha as a channel of interest, for a convolution leaves it out.
void convolveShifted(ZetImage* source, ZetImage* result, std::int32_t left, std::int32_t top) {
    const ConvKernel shift = makeShift(left, top);
    const ZetConvKernel* const kernel = shift.get();
    ZetROI region{0, 0, 0, source->width, source->height};
    source->roi = &region;
    zetConvolve2D(source, result, &kernel, 1, ZET_COMBINE_SUM);
    if (source->alphaChannel != 0) {
        region.coi = result->roi->coi = source->alphaChannel;
        zetConvolve2D(source, result, &kernel, 1, ZET_COMBINE_SUM);
    }
    source->roi = nullptr;
}

}  // namespace

int runConvolve(const Arguments& arguments) {
    const Options& options = arguments.options;
    std::vector<ConvKernel> owned;
    std::vector<const ZetConvKernel*> kernels;
    for (const Kernel& kernel : options.kernels) {
        owned.push_back(makeKernel(kernel, options));
        kernels.push_back(owned.back().get());
        if (!kernels.back()) return kFailed;
    }
    return transform(arguments, Start::kSource, [&](ZetImage* source, ZetImage* result) {
        zetConvolve2D(source, result, kernels.data(), static_cast<std::int32_t>(kernels.size()), options.method);
    });
}

int runBlur(const Arguments& arguments) {
    const Point size = *arguments.options.size;
    const Point anchor = windowAnchor(arguments.options, size.x, size.y);
    return transform(arguments, Start::kSource, [&](ZetImage* source, ZetImage* result) {
        zetBlur(source, result, size.x, size.y, anchor.x, anchor.y);
    });
}

// One picture's worth at each corner covers picture and margin, as long as twice the margin is not wider than the picture.
int runBorder(const Arguments& arguments) {
    Picture source;
    const Failure failure = readUpright(arguments.files[0], &source);
    if (!failure.empty()) return fail(failure);
    ZetImage& image = *source.image;
    const std::int32_t margin = arguments.options.extent;
    if (margin > std::min(image.width, image.height) / 2) return fail("the margin is more than half the picture");
    zetSetBorderMode(&image, arguments.options.border->mode, 15, arguments.options.border->constant);
    const Image result = makeLike(image, image.width + 2 * margin, image.height + 2 * margin);
    if (!result) return kFailed;
    for (const std::int32_t top : {margin, -margin})
        for (const std::int32_t left : {margin, -margin}) {
            ZetROI corner{0, margin - left, margin - top, image.width, image.height};
            result->roi = &corner;
            convolveShifted(&image, result.get(), left, top);
            result->roi = nullptr;
        }
    return finish(arguments, *result);
}

int runMedian(const Arguments& arguments) {
    const Point size = *arguments.options.size;
    const Point anchor = windowAnchor(arguments.options, size.x, size.y);
    return transform(arguments, Start::kSource, [&](ZetImage* source, ZetImage* result) {
        zetMedianFilter(source, result, size.x, size.y, anchor.x, anchor.y);
    });
}

int runFixed(const Arguments& arguments) {
    return transform(arguments, Start::kSource, [&](ZetImage* source, ZetImage* result) {
        zetFixedFilter(source, result, *arguments.options.filter);
    });
}

}  // namespace zetpic
