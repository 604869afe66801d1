// PNG files through libpng. It leaves a failing call by longjmp, so no frame between setjmp and a call to it holds an
// object with a destructor.
#include <png.h>

#include <csetjmp>
#include <cstring>

#include "files.h"

namespace zetpic {
namespace {

constexpr std::uint64_t kMostSamples = INT32_MAX;

struct Source {
    const Bytes* file;
    std::size_t at;
    char failure[160];
};

void readData(png_structp png, png_bytep data, png_size_t count) {
    auto* const source = static_cast<Source*>(png_get_io_ptr(png));
    if (count > source->file->size() - source->at) png_error(png, "ends too early");
    std::memcpy(data, source->file->data() + source->at, count);
    source->at += count;
}

void keepFailure(png_structp png, png_const_charp message) {
    auto* const failure = static_cast<char*>(png_get_error_ptr(png));
    std::strncpy(failure, message, sizeof(Source::failure) - 1);
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

// Grey of 1 bit stays; all else becomes 8 or 16 bits a sample, palettes become colours, transparent colours alpha.
void setTransforms(png_structp png, png_infop info) {
    const bool bits = png_get_color_type(png, info) == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png, info) == 1 &&
                      !png_get_valid(png, info, PNG_INFO_tRNS);
    if (!bits) png_set_expand(png);
    png_set_swap(png);  // 16-bit samples of the file have their high byte first
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
}

ZetImage* makeImage(png_structp png, png_infop info) {
    const std::int32_t channels = png_get_channels(png, info);
    const std::int32_t alpha = (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 ? channels : 0;
    const bool grey = channels < 3;
    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    if (std::uint64_t{width} * height > kMostSamples) png_error(png, "picture too large");
    const char* const model = grey ? "GRAY" : alpha != 0 ? "RGBA" : "RGB";
    const char* const sequence = grey ? (alpha != 0 ? "GA\0" : "G\0\0") : alpha != 0 ? "RGBA" : "RGB";
    ZetImage* const image = zetCreateImageHeader(channels, alpha, png_get_bit_depth(png, info), model, sequence, 0, 0,
                                                 4, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height),
                                                 nullptr, nullptr, nullptr, nullptr);
    if (!image) png_error(png, "picture too large");
    return image;
}

void readRows(png_structp png, ZetImage* image, int passes) {
    auto* const data = static_cast<std::uint8_t*>(image->imageData);
    for (int pass = 0; pass < passes; ++pass)
        for (std::ptrdiff_t y = 0; y < image->height; ++y) png_read_row(png, data + y * image->widthStep, nullptr);
}

// *image lives outside of this frame, so that it can be released after a jump.
bool readImage(png_structp png, png_infop info, Source* source, ZetImage** image) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_read_fn(png, source, readData);
    png_read_info(png, info);
    const int passes = png_get_interlace_type(png, info) == PNG_INTERLACE_ADAM7 ? PNG_INTERLACE_ADAM7_PASSES : 1;
    setTransforms(png, info);
    *image = makeImage(png, info);
    zetAllocateImage(*image, 0, 0);
    if (!(*image)->imageData) png_error(png, "picture too large for the memory");
    readRows(png, *image, passes);
    png_read_end(png, nullptr);
    return true;
}

// ---- writing ----

void writeData(png_structp png, png_bytep data, png_size_t count) {
    auto* const file = static_cast<Bytes*>(png_get_io_ptr(png));
    file->insert(file->end(), data, data + count);
}

void flushData(png_structp) {}

int colorType(const Channels& channels) {
    return (channels.grey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB) |
           (channels.alpha >= 0 ? PNG_COLOR_MASK_ALPHA : 0);
}

bool writeImage(png_structp png, png_infop info, const ZetImage& image, const Channels& channels, Bytes* row,
                Bytes* file) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_write_fn(png, file, writeData, flushData);
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                 static_cast<int>(image.depth), colorType(channels), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_swap(png);
    for (std::int32_t y = 0; y < image.height; ++y) {
        packRow(image, channels, memoryRow(image, y), row->data());
        png_write_row(png, row->data());
    }
    png_write_end(png, info);
    return true;
}

}  // namespace

Failure decodePng(const Bytes& file, Picture* picture) {
    Source source{&file, 0, ""};
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, source.failure, keepFailure, ignoreWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    ZetImage* image = nullptr;
    const bool read = info && readImage(png, info, &source, &image);
    png_destroy_read_struct(&png, &info, nullptr);
    picture->image.reset(image);
    return read ? "" : std::string("damaged: ") + source.failure;
}

Failure encodePng(const ZetImage& image, Bytes* file) {
    Channels channels;
    if (image.depth != ZET_DEPTH_1U && image.depth != ZET_DEPTH_8U && image.depth != ZET_DEPTH_16U)
        return "a PNG file cannot hold samples of depth " + depthName(image.depth);
    if (!findChannels(image, &channels)) return "a PNG file cannot hold these channels";
    char failure[sizeof(Source::failure)] = "";
    Bytes row(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.nChannels) * 2);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, failure, keepFailure, ignoreWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const bool written = info && writeImage(png, info, image, channels, &row, file);
    png_destroy_write_struct(&png, &info);
    return written ? "" : std::string("cannot be encoded: ") + failure;
}

}  // namespace zetpic
