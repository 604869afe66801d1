// BMP files. A file is checked against its own length and rebuilt as a plain DIB before the library sees it: a header of
// 40 bytes, the masks or the colour table, and the pixels right behind.
#include <algorithm>
#include <cstring>
#include <utility>

#include "files.h"

namespace zetpic {
namespace {

constexpr std::int64_t kFileHeader = 14;
constexpr std::int64_t kInfoHeader = 40;
constexpr std::int64_t kMasks = 12;
constexpr std::uint32_t kAlphaMaskHeader = 56;  // the shortest header with a mask of its own for alpha

enum Compression : std::uint32_t { kRgb = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3 };

template <class T>
T load(const Bytes& file, std::int64_t at) {
    T value;
    std::memcpy(&value, file.data() + at, sizeof value);
    return value;
}

struct BmpFile {
    const Bytes* bytes;
    std::int64_t size;
    BITMAPINFOHEADER info;
    std::int64_t tableAt;  // colour table, behind the masks
    std::int64_t entries;  // of the colour table
    std::int64_t pixelsAt;
    std::int64_t pixelBytes;

    bool palette() const { return info.biBitCount <= 8; }
    bool coded() const { return info.biCompression == kRle8 || info.biCompression == kRle4; }
    bool masks() const { return info.biCompression == kBitFields && info.biBitCount > 8; }
};

Failure readHeader(BmpFile* bmp) {
    if (bmp->size < kFileHeader + kInfoHeader) return "damaged: ends within its header";
    bmp->info = load<BITMAPINFOHEADER>(*bmp->bytes, kFileHeader);
    const std::uint32_t size = bmp->info.biSize;
    if (size != 40 && size != 52 && size != 56 && size != 108 && size != 124)
        return "info header of " + std::to_string(size) + " bytes is not supported";
    if (kFileHeader + std::int64_t{size} > bmp->size) return "damaged: ends within its header";
    const std::uint16_t bits = bmp->info.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
        return std::to_string(bits) + " bits a pixel are not supported";
    if (bmp->info.biCompression > kBitFields)
        return "compression " + std::to_string(bmp->info.biCompression) + " is not supported";
    return "";
}

// Old writers leave biClrUsed 0 and store fewer entries than the bit count asks for: the pixels tell where the table ends.
Failure findTable(BmpFile* bmp) {
    const bool masksBehind = bmp->masks() && bmp->info.biSize == kInfoHeader;
    bmp->tableAt = kFileHeader + bmp->info.biSize + (masksBehind ? kMasks : 0);
    if (bmp->tableAt > bmp->size) return "damaged: ends within its masks";
    bmp->pixelsAt = load<std::uint32_t>(*bmp->bytes, 10);
    bmp->entries = 0;
    if (bmp->palette()) {
        const std::int64_t most = std::int64_t{1} << bmp->info.biBitCount;
        const std::int64_t used = bmp->info.biClrUsed;
        bmp->entries = used != 0 ? std::min(used, most) : most;
    }
    if (bmp->pixelsAt == 0) bmp->pixelsAt = bmp->tableAt + 4 * bmp->entries;
    if (bmp->pixelsAt < bmp->tableAt || bmp->pixelsAt >= bmp->size)
        return "damaged: no pixels where its header says they are";
    bmp->entries = std::min(bmp->entries, (bmp->pixelsAt - bmp->tableAt) / 4);
    return bmp->palette() && bmp->entries == 0 ? "damaged: no colour table" : "";
}

Failure findPixels(BmpFile* bmp) {
    const std::int64_t there = bmp->size - bmp->pixelsAt;
    const std::int64_t height = bmp->info.biHeight;
    if (bmp->info.biWidth < 1 || height == 0) return "damaged: no width or no height";
    bmp->pixelBytes = there;
    if (bmp->coded()) return "";
    const std::int64_t row = (std::int64_t{bmp->info.biWidth} * bmp->info.biBitCount + 31) / 32 * 4;
    const std::int64_t rows = height < 0 ? -height : height;
    if (row > there || rows > there / row) return "damaged: ends before its last row";
    bmp->pixelBytes = row * rows;
    return "";
}

void append(Bytes* dib, const Bytes& file, std::int64_t at, std::int64_t count) {
    dib->insert(dib->end(), file.begin() + at, file.begin() + at + count);
}

Bytes plainDib(const BmpFile& bmp) {
    BITMAPINFOHEADER info = bmp.info;
    info.biSize = kInfoHeader;
    info.biSizeImage = static_cast<std::uint32_t>(std::min<std::int64_t>(bmp.pixelBytes, UINT32_MAX));
    // The library takes a short ramp for grey and its indices for samples: a full table keeps them apart.
    const bool full = info.biBitCount == 8 || info.biBitCount == 1;
    const std::int64_t entries = bmp.palette() && full ? std::int64_t{1} << info.biBitCount : bmp.entries;
    info.biClrUsed = static_cast<std::uint32_t>(entries);

    Bytes dib(kInfoHeader);
    std::memcpy(dib.data(), &info, kInfoHeader);
    if (bmp.masks()) append(&dib, *bmp.bytes, kFileHeader + kInfoHeader, kMasks);
    append(&dib, *bmp.bytes, bmp.tableAt, 4 * bmp.entries);
    dib.resize(dib.size() + static_cast<std::size_t>(4 * (entries - bmp.entries)));
    append(&dib, *bmp.bytes, bmp.pixelsAt, bmp.pixelBytes);
    return dib;
}

// While it lives, reports of the library are kept back; the first one says what was wrong with the file.
class FirstReport {
  public:
    FirstReport() : before_(zetRedirectError(keep)) { text().clear(); }
    ~FirstReport() { zetRedirectError(before_); }
    FirstReport(const FirstReport&) = delete;
    FirstReport& operator=(const FirstReport&) = delete;

    static Failure take() { return std::exchange(text(), Failure{}); }

  private:
    ZetErrorCallback before_;

    static Failure& text() {
        static Failure first;
        return first;
    }
    static std::int32_t keep(std::int32_t status, const char*, const char* context, const char*, std::int32_t) {
        if (text().empty()) text() = std::string(zetErrorStr(status)) + ": " + context;
        return status;
    }
};

Failure translate(Picture* picture) {
    const FirstReport report;
    zetSetErrStatus(0);
    std::int32_t cloneData = 0;
    picture->image.reset(zetTranslateDIB(reinterpret_cast<const BITMAPINFOHEADER*>(picture->dib.data()), &cloneData));
    const bool failed = !picture->image || zetGetErrStatus() < 0;
    zetSetErrStatus(0);
    return failed ? "damaged: " + FirstReport::take() : "";
}

template <class Visit>
void eachAlpha(const ZetImage& image, Visit visit) {
    for (std::int32_t y = 0; y < image.height; ++y)
        for (std::int32_t x = 0; x < image.width; ++x)
            visit(const_cast<std::uint8_t*>(sampleAt(image, x, y, image.alphaChannel - 1)));
}

bool namesNoAlpha(const BmpFile& bmp) {
    return bmp.masks() && bmp.info.biSize >= kAlphaMaskHeader && load<std::uint32_t>(*bmp.bytes, kFileHeader + 52) == 0;
}

// Most writers of 32 bits leave the fourth byte 0 and mean an opaque picture.
void settleAlpha(const BmpFile& bmp, const ZetImage& image) {
    if (image.alphaChannel == 0) return;
    std::uint8_t any = 0;
    eachAlpha(image, [&](const std::uint8_t* alpha) { any = static_cast<std::uint8_t>(any | *alpha); });
    if (any == 0 || namesNoAlpha(bmp)) eachAlpha(image, [](std::uint8_t* alpha) { *alpha = 255; });
}

// ---- writing ----

struct BmpLayout {
    std::uint16_t bitCount;
    std::int64_t entries;  // grey ramp
};

Failure chooseLayout(const ZetImage& image, const Channels& channels, BmpLayout* layout) {
    if (image.depth == ZET_DEPTH_1U)
        *layout = {1, 2};
    else if (image.depth != ZET_DEPTH_8U)
        return "a BMP file cannot hold samples of depth " + depthName(image.depth);
    else if (channels.grey && channels.alpha >= 0)
        return "a BMP file cannot hold grey with alpha";
    else if (channels.grey)
        *layout = {8, 256};
    else
        *layout = {static_cast<std::uint16_t>(channels.alpha >= 0 ? 32 : 24), 0};
    return "";
}

template <class T>
void put(Bytes* file, T value) {
    const auto at = file->size();
    file->resize(at + sizeof value);
    std::memcpy(file->data() + at, &value, sizeof value);
}

void putHeaders(const ZetImage& image, const BmpLayout& layout, std::int64_t pixelBytes, Bytes* file) {
    const std::int64_t pixelsAt = kFileHeader + kInfoHeader + 4 * layout.entries;
    put(file, std::uint16_t{0x4D42});
    put(file, static_cast<std::uint32_t>(pixelsAt + pixelBytes));
    put(file, std::uint32_t{0});
    put(file, static_cast<std::uint32_t>(pixelsAt));
    put(file, BITMAPINFOHEADER{kInfoHeader, image.width, image.height, 1, layout.bitCount, kRgb,
                               static_cast<std::uint32_t>(pixelBytes), 2835, 2835,
                               static_cast<std::uint32_t>(layout.entries), 0});
    for (std::int64_t i = 0; i < layout.entries; ++i)
        put(file, static_cast<std::uint32_t>(i * 255 / (layout.entries - 1) * 0x010101));
}

void putRow(const ZetImage& image, const Channels& channels, std::int32_t row, Bytes* file) {
    if (image.depth == ZET_DEPTH_1U) {
        const auto* const bits =
            static_cast<const std::uint8_t*>(image.imageData) + std::ptrdiff_t{row} * image.widthStep;
        file->insert(file->end(), bits, bits + (image.width + 7) / 8);
        return;
    }
    const std::int32_t order[] = {channels.blue, channels.green, channels.red, channels.alpha};
    for (std::int32_t x = 0; x < image.width; ++x)
        for (std::int32_t c = channels.grey ? 2 : 0; c < (channels.alpha >= 0 ? 4 : 3); ++c)
            file->push_back(*sampleAt(image, x, row, order[c]));
}

}  // namespace

Failure decodeBmp(const Bytes& file, Picture* picture) {
    BmpFile bmp{&file, static_cast<std::int64_t>(file.size()), {}, 0, 0, 0, 0};
    for (Failure (*const step)(BmpFile*) : {readHeader, findTable, findPixels}) {
        Failure failure = step(&bmp);
        if (!failure.empty()) return failure;
    }
    picture->dib = plainDib(bmp);
    Failure failure = translate(picture);
    if (failure.empty()) settleAlpha(bmp, *picture->image);
    return failure;
}

Failure encodeBmp(const ZetImage& image, Bytes* file) {
    Channels channels;
    if (!findChannels(image, &channels)) return "a BMP file cannot hold these channels";
    BmpLayout layout{};
    Failure failure = chooseLayout(image, channels, &layout);
    if (!failure.empty()) return failure;
    const std::int64_t row = (std::int64_t{image.width} * layout.bitCount + 31) / 32 * 4;
    if (row * image.height > INT32_MAX) return "too large for a BMP file";
    putHeaders(image, layout, row * image.height, file);
    const std::size_t pixelsAt = file->size();
    for (std::int32_t y = image.height - 1; y >= 0; --y) {
        putRow(image, channels, memoryRow(image, y), file);
        file->resize(pixelsAt + static_cast<std::size_t>((image.height - y) * row));
    }
    return "";
}

}  // namespace zetpic
