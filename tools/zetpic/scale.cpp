// zetpic decimate, zoom and resize.
#include <algorithm>

#include "transform.h"

namespace zetpic {
namespace {

using Scale = void (*)(ZetImage*, ZetImage*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t);

struct Factors {
    Fraction x, y;
};

bool decimates(Scale scale, const Options& options) {
    return scale == zetDecimate || options.interpolation == ZET_INTER_SUPER;
}

// The region ends with the picture, for zoom counts positions by the region's own size.
ZetROI cutRegion(const ZetImage& image, const Options& options) {
    ZetROI region = options.region.value_or(ZetROI{0, 0, 0, image.width, image.height});
    region.width = std::min(region.width, image.width - region.xOffset);
    region.height = std::min(region.height, image.height - region.yOffset);
    return region;
}

Factors factorsOf(const ZetROI& region, const Options& options) {
    if (options.factors) return {options.factors->at(0), options.factors->at(1)};
    return {{options.size->x, region.width}, {options.size->y, region.height}};
}

std::int64_t scaled(std::int32_t size, const Fraction& factor, std::int64_t least) {
    return std::max(least, std::int64_t{size} * factor.numerator / factor.denominator);
}

// A picture for what the factors make of the region, `least` pixels a side or more.
Failure makeScaled(const Arguments& arguments, const ZetImage& image, const ZetROI& region, const Factors& factors,
                   std::int64_t least, Sheet* result) {
    const std::int64_t width = scaled(region.width, factors.x, least);
    const std::int64_t height = scaled(region.height, factors.y, least);
    if (width < 1 || height < 1) return "nothing is left: the result has less than a pixel";
    if (width > INT32_MAX || height > INT32_MAX) return "the result is too large";
    return makeSheet(arguments, image, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), result);
}

// Zoom passes over alpha, which is then made in a run of its own.
void scaleChannels(Scale scale, ZetImage* source, ZetImage* result, const Factors& factors, const Options& options) {
    const std::int32_t interpolation = options.interpolation;
    const auto [x, y] = factors;
    scale(source, result, x.numerator, x.denominator, y.numerator, y.denominator, interpolation);
    const bool passedOver = source->alphaChannel != 0 && source->roi->coi == 0 && !decimates(scale, options);
    if (!passedOver || zetGetErrStatus() < 0) return;
    source->roi->coi = result->roi->coi = source->alphaChannel;
    scale(source, result, x.numerator, x.denominator, y.numerator, y.denominator, interpolation);
}

// The mask is drawn over the source and scaled with it.
int runScale(const Arguments& arguments, Scale scale) {
    Sheet picture, result;
    Failure failure = openSheet(arguments.files[0], arguments.options, &picture);
    if (!failure.empty()) return fail(failure);
    const ZetImage& image = picture.form();
    Options from = arguments.options, to = from;
    from.region = cutRegion(image, from);
    if (from.region->width < 1 || from.region->height < 1) return fail("the region lies outside the picture");
    const Factors factors = factorsOf(*from.region, from);
    failure = makeScaled(arguments, image, *from.region, factors, decimates(scale, from) ? 0 : 1, &result);
    if (!failure.empty()) return fail(failure);
    to.region = ZetROI{from.region->coi, 0, 0, result.form().width, result.form().height};
    to.mask.clear();
    Canvas source, target;
    failure = source.open(picture, from);
    if (failure.empty()) failure = target.open(result, to);
    if (!failure.empty()) return fail(failure);
    target.showProgress();
    scaleChannels(scale, source.image(), target.image(), factors, from);
    target.hideProgress();
    return finish(arguments, picture, result);
}

}  // namespace

int runDecimate(const Arguments& arguments) { return runScale(arguments, zetDecimate); }
int runZoom(const Arguments& arguments) { return runScale(arguments, zetZoom); }
int runResize(const Arguments& arguments) { return runScale(arguments, zetResize); }

}  // namespace zetpic
