#include "transform.h"

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
        packRow(from, channels, memoryRow(from, y), rowOf(*picture->image, y));
    return "";
}

Image makeLike(const ZetImage& image, std::int32_t width, std::int32_t height) {
    return makeImage(image, width, height, image.colorModel, image.channelSeq);
}

Failure openSheet(const std::string& path, const Options& options, Sheet* sheet) {
    if (options.tileWidth > 0) {
        const Failure failure = TiffFile::openTiles(path, &sheet->file);
        if (!failure.empty() || sheet->file) return failure;
    }
    return readUpright(path, &sheet->picture);
}

Failure makeSheet(const Arguments& arguments, const ZetImage& form, std::int32_t width, std::int32_t height,
                  Sheet* sheet) {
    const Options& options = arguments.options;
    const std::string& path = arguments.files.back();
    if (options.tileWidth > 0 && hasTiffEnding(path)) {
        ZetImage sized = form;
        sized.width = width;
        sized.height = height;
        return TiffFile::create(path, sized, options.tileWidth, options.tileHeight, &sheet->file);
    }
    sheet->picture.image = makeLike(form, width, height);
    return sheet->picture.image ? "" : path + ": too large for the memory";
}

// All colours at once, and alpha as a channel of interest, for a copy leaves it out.
Failure copySheet(const Sheet& source, const Sheet& result) {
    Canvas from, to;
    Failure failure = from.open(source, Options{});
    if (failure.empty()) failure = to.open(result, Options{});
    if (!failure.empty()) return failure;
    const ZetImage& form = source.form();
    zetCopy(from.image(), to.image());
    if (form.alphaChannel == 0) return "";
    ZetROI alpha{form.alphaChannel, 0, 0, form.width, form.height};
    from.image()->roi = to.image()->roi = &alpha;
    zetCopy(from.image(), to.image());
    return "";
}

int finish(const Arguments& arguments, const ZetImage& result) {
    if (zetGetErrStatus() < 0) return kFailed;
    const Failure failure = writePicture(arguments.files.back(), result);
    return failure.empty() ? kOk : fail(failure);
}

int finish(const Arguments& arguments, const Sheet& source, const Sheet& result) {
    if (source.file && source.file->failed()) return fail(arguments.files[0] + ": damaged");
    if (result.file && result.file->failed()) return fail(arguments.files.back() + ": cannot be written");
    if (!result.file) return finish(arguments, *result.picture.image);
    if (zetGetErrStatus() < 0) return kFailed;
    const Failure failure = result.file->finish();
    return failure.empty() ? kOk : fail(failure);
}

int transform(const Arguments& arguments, Start start, const Operation& operation) {
    Sheet source, result;
    Failure failure = openSheet(arguments.files[0], arguments.options, &source);
    const bool read = failure.empty();
    if (read) failure = makeSheet(arguments, source.form(), source.form().width, source.form().height, &result);
    if (failure.empty() && start == Start::kSource) failure = copySheet(source, result);
    if (!failure.empty()) return fail(failure);
    Options unmasked = arguments.options;
    unmasked.mask.clear();
    Canvas from, to;
    failure = from.open(source, unmasked);
    if (failure.empty()) failure = to.open(result, arguments.options);
    if (!failure.empty()) return fail(failure);
    to.showProgress();
    operation(from.image(), to.image());
    to.hideProgress();
    return finish(arguments, source, result);
}

}  // namespace zetpic
