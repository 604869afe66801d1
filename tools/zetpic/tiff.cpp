// TIFF files through libtiff: grey and colours, with or without alpha, in whole samples of 1, 8 and 16 bits.
#include "tiff.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace zetpic {
namespace {

struct TiffCloser {
    void operator()(TIFF* file) const { TIFFClose(file); }
};
using Tiff = std::unique_ptr<TIFF, TiffCloser>;

// Not mapped: a map would keep all that was read in memory.
constexpr const char* kRead = "rm";

// Failures show by the results of calls; what libtiff says of them would go to the error stream.
int keepSilent(TIFF*, void*, const char*, const char*, va_list) { return 1; }

TIFF* openSilently(const std::string& path, const char* mode) {
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, keepSilent, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options, keepSilent, nullptr);
    TIFF* const file = TIFFOpenExt(path.c_str(), mode, options);
    TIFFOpenOptionsFree(options);
    return file;
}

template <class T>
T field(TIFF* file, std::uint32_t tag, T otherwise) {
    T value{};
    return TIFFGetFieldDefaulted(file, tag, &value) ? value : otherwise;
}

// What the file holds as a record without pixels; `invert` for grey whose 0 is white.
Failure readForm(TIFF* file, ZetImage* form, bool* invert) {
    const auto width = field<std::uint32_t>(file, TIFFTAG_IMAGEWIDTH, 0);
    const auto height = field<std::uint32_t>(file, TIFFTAG_IMAGELENGTH, 0);
    const auto samples = field<std::uint16_t>(file, TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto bits = field<std::uint16_t>(file, TIFFTAG_BITSPERSAMPLE, 1);
    const auto meaning = field<std::uint16_t>(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
    const bool grey = meaning == PHOTOMETRIC_MINISBLACK || meaning == PHOTOMETRIC_MINISWHITE;
    const std::uint16_t colours = grey ? 1 : 3;
    if (width < 1 || height < 1 || width > INT32_MAX || height > INT32_MAX) return "picture too large";
    if (!grey && meaning != PHOTOMETRIC_RGB) return "these colours are not supported";
    if (samples < colours || samples > colours + 1) return "these channels are not supported";
    if (bits != 8 && bits != 16 && (bits != 1 || samples != 1)) return "samples of this size are not supported";
    if (field<std::uint16_t>(file, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT) != SAMPLEFORMAT_UINT)
        return "samples of this kind are not supported";
    if (samples > 1 && field<std::uint16_t>(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != PLANARCONFIG_CONTIG)
        return "planes are not supported";
    if (field<std::uint16_t>(file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) != ORIENTATION_TOPLEFT)
        return "turned pictures are not supported";
    const bool alpha = samples > colours;
    *invert = meaning == PHOTOMETRIC_MINISWHITE;
    form->nChannels = samples;
    form->alphaChannel = alpha ? samples : 0;
    form->depth = bits;
    std::memcpy(form->colorModel, grey ? "GRAY" : alpha ? "RGBA" : "RGB", 4);
    std::memcpy(form->channelSeq, grey ? (alpha ? "GA\0" : "G\0\0") : alpha ? "RGBA" : "RGB", 4);
    form->headerSize = sizeof *form;
    form->align = 4;
    form->width = static_cast<std::int32_t>(width);
    form->height = static_cast<std::int32_t>(height);
    return "";
}

std::size_t rowBytes(const ZetImage& form, std::int32_t width) {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(form.nChannels) * form.depth + 7) / 8;
}

void setForm(TIFF* file, const ZetImage& form) {
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(form.width));
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(form.height));
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, form.nChannels);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, static_cast<int>(form.depth));
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, form.nChannels < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (form.alphaChannel != 0) TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &alpha);
}

void invertBytes(std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(~bytes[i]);
}

Image allocate(const ZetImage& form) {
    Image image(zetCreateImageHeader(form.nChannels, form.alphaChannel, form.depth, form.colorModel, form.channelSeq, 0,
                                     0, 4, form.width, form.height, nullptr, nullptr, nullptr, nullptr));
    if (image) zetAllocateImage(image.get(), 1, 0);
    if (image && !image->imageData) image.reset();
    return image;
}

std::uint8_t* rowOf(const ZetImage& image, std::int32_t y) {
    return static_cast<std::uint8_t*>(image.imageData) + std::ptrdiff_t{y} * image.widthStep;
}

bool readStrips(TIFF* file, const ZetImage& image, bool invert) {
    const std::size_t bytes = rowBytes(image, image.width);
    if (static_cast<std::size_t>(TIFFScanlineSize64(file)) != bytes) return false;
    for (std::int32_t y = 0; y < image.height; ++y) {
        if (TIFFReadScanline(file, rowOf(image, y), static_cast<std::uint32_t>(y)) != 1) return false;
        if (invert) invertBytes(rowOf(image, y), bytes);
    }
    return true;
}

bool readTiles(TiffFile* file, const ZetImage& image) {
    const std::size_t step = rowBytes(image, file->tileWidth());
    std::vector<std::uint8_t> tile(step * static_cast<std::size_t>(file->tileHeight()));
    for (std::int32_t top = 0; top < image.height; top += file->tileHeight())
        for (std::int32_t left = 0; left < image.width; left += file->tileWidth()) {
            if (!file->readTile(left / file->tileWidth(), top / file->tileHeight(), tile.data(),
                                static_cast<std::ptrdiff_t>(step)))
                return false;
            const std::size_t bytes = rowBytes(image, std::min(file->tileWidth(), image.width - left));
            for (std::int32_t y = 0; y < std::min(file->tileHeight(), image.height - top); ++y)
                std::memcpy(rowOf(image, top + y) + rowBytes(image, left),
                            tile.data() + static_cast<std::size_t>(y) * step, bytes);
        }
    return true;
}

}  // namespace

TiffFile::~TiffFile() {
    if (file_) TIFFClose(file_);
    if (file_ && !partPath_.empty()) std::remove(partPath_.c_str());
}

void TiffFile::takeTileSize() {
    tilesAcross_ = (form_.width - 1) / tileWidth_ + 1;
    tilesDown_ = (form_.height - 1) / tileHeight_ + 1;
    tile_.resize(rowBytes(form_, tileWidth_) * static_cast<std::size_t>(tileHeight_));
}

Failure TiffFile::openTiles(const std::string& path, std::unique_ptr<TiffFile>* file) {
    Tiff opened(openSilently(path, kRead));
    if (!opened || !TIFFIsTiled(opened.get())) return "";
    std::unique_ptr<TiffFile> made(new TiffFile);
    const Failure failure = readForm(opened.get(), &made->form_, &made->invert_);
    if (!failure.empty()) return path + ": " + failure;
    made->tileWidth_ = static_cast<std::int32_t>(field<std::uint32_t>(opened.get(), TIFFTAG_TILEWIDTH, 0));
    made->tileHeight_ = static_cast<std::int32_t>(field<std::uint32_t>(opened.get(), TIFFTAG_TILELENGTH, 0));
    const bool fits = made->tileWidth_ > 0 && made->tileHeight_ > 0 && made->tileWidth_ % 8 == 0 &&
                      made->tileHeight_ % 8 == 0 && TIFFTileSize64(opened.get()) < INT32_MAX;
    if (!fits) return path + ": tiles of this size are not supported";
    made->takeTileSize();
    if (made->tile_.size() != TIFFTileSize64(opened.get())) return path + ": tiles of this form are not supported";
    made->file_ = opened.release();
    made->path_ = path;
    *file = std::move(made);
    return "";
}

Failure TiffFile::create(const std::string& path, const ZetImage& form, std::int32_t tileWidth, std::int32_t tileHeight,
                         std::unique_ptr<TiffFile>* file) {
    if (tileWidth % 16 != 0 || tileHeight % 16 != 0) return path + ": a TIFF file has tiles of multiples of 16 pixels";
    std::unique_ptr<TiffFile> made(new TiffFile);
    made->form_ = form;
    made->tileWidth_ = tileWidth;
    made->tileHeight_ = tileHeight;
    made->path_ = path;
    made->partPath_ = path + ".part";
    if (rowBytes(form, tileWidth) * static_cast<std::size_t>(tileHeight) > INT32_MAX)
        return path + ": the tiles are too large";
    made->takeTileSize();
    const std::size_t tiles = static_cast<std::size_t>(made->tilesAcross_) * static_cast<std::size_t>(made->tilesDown_);
    made->written_.resize(tiles);
    const bool large = tiles > INT32_MAX / made->tile_.size();
    made->file_ = openSilently(made->partPath_, large ? "w8" : "w");
    if (!made->file_) return path + ": cannot be written";
    setForm(made->file_, form);
    TIFFSetField(made->file_, TIFFTAG_TILEWIDTH, static_cast<std::uint32_t>(tileWidth));
    TIFFSetField(made->file_, TIFFTAG_TILELENGTH, static_cast<std::uint32_t>(tileHeight));
    // A tile is written again where an operation comes back to it, which needs its place to be as large.
    TIFFSetField(made->file_, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    *file = std::move(made);
    return "";
}

std::size_t TiffFile::indexOf(std::int32_t column, std::int32_t row) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(tilesAcross_) + static_cast<std::size_t>(column);
}

bool TiffFile::readTile(std::int32_t column, std::int32_t row, std::uint8_t* pixels, std::ptrdiff_t step) {
    const std::size_t index = indexOf(column, row), bytes = rowBytes(form_, tileWidth_);
    if (!written_.empty() && !written_[index])
        std::fill(tile_.begin(), tile_.end(), std::uint8_t{0});
    else if (TIFFReadEncodedTile(file_, static_cast<std::uint32_t>(index), tile_.data(),
                                 static_cast<tmsize_t>(tile_.size())) != static_cast<tmsize_t>(tile_.size()))
        return failed_ = true, false;
    if (invert_) invertBytes(tile_.data(), tile_.size());
    for (std::ptrdiff_t y = 0; y < tileHeight_; ++y)
        std::memcpy(pixels + y * step, tile_.data() + y * static_cast<std::ptrdiff_t>(bytes), bytes);
    return true;
}

bool TiffFile::writeTile(std::int32_t column, std::int32_t row, const std::uint8_t* pixels, std::ptrdiff_t step) {
    const std::size_t index = indexOf(column, row), bytes = rowBytes(form_, tileWidth_);
    for (std::ptrdiff_t y = 0; y < tileHeight_; ++y)
        std::memcpy(tile_.data() + y * static_cast<std::ptrdiff_t>(bytes), pixels + y * step, bytes);
    written_[index] = true;
    const bool done = TIFFWriteEncodedTile(file_, static_cast<std::uint32_t>(index), tile_.data(),
                                           static_cast<tmsize_t>(tile_.size())) >= 0;
    failed_ |= !done;
    return done;
}

Failure TiffFile::finish() {
    const std::vector<std::uint8_t> blank(tile_.size());
    for (std::size_t i = 0; i < written_.size(); ++i)
        if (!written_[i])
            writeTile(static_cast<std::int32_t>(i % static_cast<std::size_t>(tilesAcross_)),
                      static_cast<std::int32_t>(i / static_cast<std::size_t>(tilesAcross_)), blank.data(),
                      static_cast<std::ptrdiff_t>(rowBytes(form_, tileWidth_)));
    const bool flushed = TIFFFlush(file_) == 1;
    TIFFClose(file_);
    file_ = nullptr;
    if (!failed_ && flushed && std::rename(partPath_.c_str(), path_.c_str()) == 0) return "";
    std::remove(partPath_.c_str());
    return path_ + ": cannot be written";
}

Failure readTiff(const std::string& path, Picture* picture) {
    std::unique_ptr<TiffFile> tiles;
    Failure failure = TiffFile::openTiles(path, &tiles);
    if (!failure.empty()) return failure;
    const Tiff file(tiles ? nullptr : openSilently(path, kRead));
    if (!tiles && !file) return path + ": damaged";
    ZetImage form{};
    bool invert = false;
    failure = tiles ? "" : readForm(file.get(), &form, &invert);
    if (!failure.empty()) return path + ": " + failure;
    if (tiles) form = tiles->form();
    const std::size_t bytes = rowBytes(form, form.width);
    if (bytes > static_cast<std::size_t>(INT32_MAX) / static_cast<std::size_t>(form.height))
        return path + ": too large for one block; with --tile its tiles are read one by one";
    picture->image = allocate(form);
    if (!picture->image) return path + ": too large for the memory";
    const bool read = tiles ? readTiles(tiles.get(), *picture->image) : readStrips(file.get(), *picture->image, invert);
    return read ? "" : path + ": damaged";
}

Failure writeTiff(const std::string& path, const ZetImage& image) {
    Channels channels;
    if (image.depth != ZET_DEPTH_1U && image.depth != ZET_DEPTH_8U && image.depth != ZET_DEPTH_16U)
        return path + ": a TIFF file is not made of samples of depth " + depthName(image.depth);
    if (!findChannels(image, &channels)) return path + ": a TIFF file is not made of these channels";
    Tiff file(openSilently(path, "w"));
    if (!file) return path + ": cannot be written";
    setForm(file.get(), image);
    TIFFSetField(file.get(), TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(file.get(), TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file.get(), 0));
    std::vector<std::uint8_t> row(rowBytes(image, image.width));
    bool written = true;
    for (std::int32_t y = 0; y < image.height && written; ++y) {
        packRow(image, channels, memoryRow(image, y), row.data());
        written = TIFFWriteScanline(file.get(), row.data(), static_cast<std::uint32_t>(y)) == 1;
    }
    written = written && TIFFFlush(file.get()) == 1;
    return written ? "" : path + ": cannot be written";
}

}  // namespace zetpic
