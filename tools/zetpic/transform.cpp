#include "transform.h"

#include <algorithm>
#include <cstring>

namespace zetpic {
namespace {

Image makeImage(const ZetImage& form, std::int32_t width, std::int32_t height, const char* model,
                const char* sequence) {
    Image image(zetCreateImageHeader(form.nChannels, form.alphaChannel, form.depth, model, sequence, 0, 0, 4, width,
                                     height, nullptr, nullptr, nullptr, nullptr));
    if (image) zetAllocateImage(image.get(), 1, 0);
    if (image && !image->imageData) image.reset();
    return image;
}

std::uint8_t* rowOf(const ZetImage& image, std::int32_t y) {
    return static_cast<std::uint8_t*>(image.imageData) + std::ptrdiff_t{y} * image.widthStep;
}

void copyRow(const ZetImage& from, const Channels& channels, std::int32_t row, std::uint8_t* out) {
    if (from.depth == ZET_DEPTH_1U) {
        std::memcpy(out, rowOf(from, row), static_cast<std::size_t>((from.width + 7) / 8));
        return;
    }
    const std::int32_t order[] = {channels.red, channels.green, channels.blue, channels.alpha};
    const std::size_t bytes = from.depth / 8;
    for (std::int32_t x = 0; x < from.width; ++x)
        for (std::int32_t c = channels.grey ? 2 : 0; c < (channels.alpha >= 0 ? 4 : 3); ++c, out += bytes)
            std::memcpy(out, sampleAt(from, x, row, order[c]), bytes);
}

}  // namespace

Failure readUpright(const std::string& path, Picture* picture) {
    Picture read;
    Failure failure = readPicture(path, &read);
    if (!failure.empty()) return failure;
    const ZetImage& from = *read.image;
    Channels channels;
    if (!findChannels(from, &channels)) return path + ": these channels are not supported";
    const bool alpha = channels.alpha >= 0;
    const char* const model = channels.grey ? "GRAY" : alpha ? "RGBA" : "RGB";
    const char* const sequence = channels.grey ? (alpha ? "GA\0" : "G\0\0") : alpha ? "RGBA" : "RGB";
    picture->image = makeImage(from, from.width, from.height, model, sequence);
    if (!picture->image) return path + ": too large for the memory";
    for (std::int32_t y = 0; y < from.height; ++y)
        copyRow(from, channels, memoryRow(from, y), rowOf(*picture->image, y));
    return "";
}

Image makeLike(const ZetImage& image, std::int32_t width, std::int32_t height) {
    return makeImage(image, width, height, image.colorModel, image.channelSeq);
}

int finish(const Arguments& arguments, const ZetImage& result) {
    if (zetGetErrStatus() < 0) return kFailed;
    const Failure failure = writePicture(arguments.files.back(), result);
    return failure.empty() ? kOk : fail(failure);
}

int transform(const Arguments& arguments, Start start, const Operation& operation) {
    Picture source;
    Failure failure = readUpright(arguments.files[0], &source);
    if (!failure.empty()) return fail(failure);
    const ZetImage& image = *source.image;
    const Image result(start == Start::kSource ? Image(zetCloneImage(&image))
                                               : makeLike(image, image.width, image.height));
    if (!result) return kFailed;
    Options unmasked = arguments.options;
    unmasked.mask.clear();
    Canvas from, to;
    failure = from.open(image, unmasked);
    if (failure.empty()) failure = to.open(*result, arguments.options);
    if (!failure.empty()) return fail(failure);
    operation(from.image(), to.image());
    return finish(arguments, *result);
}

}  // namespace zetpic
