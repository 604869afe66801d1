// zetpic hls and noise.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "transform.h"

namespace zetpic {
namespace {

// A sample of hue turned by a share of the full circle, or one of the others multiplied.
double changed(double value, std::int32_t channel, double full, const Options& options) {
    if (channel == 0) {
        const double turned = std::fmod(value + options.hue / 360 * full, full);
        return turned < 0 ? turned + full : turned;
    }
    return std::min(full, value * (channel == 1 ? options.lightness : options.saturation));
}

template <class Sample>
void changeSamples(const Options& options, ZetImage* hls) {
    constexpr double full = static_cast<Sample>(-1);
    for (std::int32_t y = 0; y < hls->height; ++y) {
        auto* const row = static_cast<std::uint8_t*>(hls->imageData) + std::ptrdiff_t{y} * hls->widthStep;
        for (std::int32_t i = 0; i < 3 * hls->width; ++i) {
            Sample sample;
            std::memcpy(&sample, row + i * std::ptrdiff_t{sizeof sample}, sizeof sample);
            sample = static_cast<Sample>(std::lround(changed(sample, i % 3, full, options)));
            std::memcpy(row + i * std::ptrdiff_t{sizeof sample}, &sample, sizeof sample);
        }
    }
}

void changeHls(const Options& options, ZetImage* hls) {
    if (options.hue == 0 && options.lightness == 1 && options.saturation == 1) return;
    if (hls->depth == ZET_DEPTH_16U) return changeSamples<std::uint16_t>(options, hls);
    changeSamples<std::uint8_t>(options, hls);
}

void nameChannels(ZetImage* image, const char* name) {
    std::memcpy(image->colorModel, name, 4);
    std::memcpy(image->channelSeq, name, 4);
}

Image makeColours(const ZetImage& form, const char* name) {
    Image image(zetCreateImageHeader(3, 0, form.depth, name, name, 0, 0, 4, form.width, form.height, nullptr, nullptr,
                                     nullptr, nullptr));
    if (image) zetAllocateImage(image.get(), 1, 0);
    if (image && !image->imageData) image.reset();
    return image;
}

// Both ways have one form: a record of the source's pixels and one of the result's, with tiles where asked for.
Failure convertColours(void (*conversion)(ZetImage*, ZetImage*), const ZetImage& source, ZetImage* result,
                       const Options& options) {
    Canvas from, to;
    Failure failure = from.open(source, options);
    if (failure.empty()) failure = to.open(*result, options);
    if (failure.empty()) conversion(from.image(), to.image());
    return failure;
}

// From colours, or what stands for them, to the result's: `hls` and `colours` are of one size.
const ZetImage* convertBlock(const Options& options, ZetImage* colours, ZetImage* hls) {
    if (options.hlsSide == HlsSide::kRead)
        zetCopy(colours, hls);
    else
        zetRGB2HLS(colours, hls);
    changeHls(options, hls);
    if (options.hlsSide == HlsSide::kWrite) return hls;
    zetHLS2RGB(hls, colours);
    return colours;
}

// A pixel's colours depend on no other pixel, so a block after the other goes through memory.
Failure convertSheet(const Options& options, const Sheet& source, const Sheet& result) {
    Canvas from, to;
    Failure failure = from.open(source, Options{});
    if (failure.empty()) failure = to.open(result, Options{});
    if (!failure.empty()) return failure;
    to.showProgress();
    const ZetImage& form = result.form();
    for (std::int32_t y = 0; y < form.height; y += options.tileHeight)
        for (std::int32_t x = 0; x < form.width; x += options.tileWidth) {
            ZetROI block{0, x, y, std::min(options.tileWidth, form.width - x),
                         std::min(options.tileHeight, form.height - y)};
            ZetImage sized = form;
            sized.width = block.width;
            sized.height = block.height;
            const Image colours = makeColours(sized, "RGB");
            const Image hls = makeColours(sized, "HLS");
            if (!colours || !hls) return "no memory for a tile";
            from.image()->roi = to.image()->roi = &block;
            zetCopy(from.image(), colours.get());
            ZetImage made = *convertBlock(options, colours.get(), hls.get());
            zetCopy(&made, to.image());
        }
    to.hideProgress();
    return "";
}

int runHlsInTiles(const Arguments& arguments) {
    Sheet source, result;
    Failure failure = openSheet(arguments.files[0], arguments.options, &source);
    if (!failure.empty()) return fail(failure);
    if (source.form().nChannels < 3) return fail(arguments.files[0] + ": has no colours");
    ZetImage form = source.form();
    form.nChannels = 3;
    form.alphaChannel = 0;
    nameChannels(&form, "RGB");
    failure = makeSheet(arguments, form, form.width, form.height, &result);
    if (failure.empty()) failure = convertSheet(arguments.options, source, result);
    return failure.empty() ? finish(arguments, source, result) : fail(failure);
}

ZetNoiseParam noiseParam(const Options& options) {
    const Range range = options.uniform ? *options.uniform : *options.gaussian;
    ZetNoiseParam param{};
    const auto init = options.uniform ? zetNoiseUniformInit : zetNoiseGaussianInit;
    init(&param, options.seed, static_cast<std::int32_t>(std::lround(range.first)),
         static_cast<std::int32_t>(std::lround(range.second)));
    param.lowFP = range.first;
    param.highFP = range.second;
    return param;
}

}  // namespace

int runHls(const Arguments& arguments) {
    const Options& options = arguments.options;
    if (options.tileWidth > 0 && hasTiffEnding(arguments.files.back())) return runHlsInTiles(arguments);
    Picture source;
    Failure failure = readUpright(arguments.files[0], &source);
    if (!failure.empty()) return fail(failure);
    const ZetImage& image = *source.image;
    if (image.nChannels < 3) return fail(arguments.files[0] + ": has no colours");
    const Image hls = makeColours(image, "HLS");
    const Image colours = makeColours(image, "RGB");
    if (!hls || !colours) return kFailed;
    if (options.hlsSide == HlsSide::kRead)
        zetCopy(source.image.get(), hls.get());
    else
        failure = convertColours(zetRGB2HLS, image, hls.get(), options);
    changeHls(options, hls.get());
    if (options.hlsSide == HlsSide::kWrite) {
        nameChannels(hls.get(), "RGB");
        return failure.empty() ? finish(arguments, *hls) : fail(failure);
    }
    if (failure.empty()) failure = convertColours(zetHLS2RGB, *hls, colours.get(), options);
    return failure.empty() ? finish(arguments, *colours) : fail(failure);
}

int runNoise(const Arguments& arguments) {
    const ZetNoiseParam param = noiseParam(arguments.options);
    return transform(arguments, Start::kSource, [&](ZetImage*, ZetImage* result) { zetNoiseImage(result, &param); });
}

}  // namespace zetpic
