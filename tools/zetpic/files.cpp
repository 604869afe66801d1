#include "files.h"

#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "tiff.h"

namespace zetpic {
namespace {

constexpr std::uint8_t kBmpMagic[] = {'B', 'M'};
constexpr std::uint8_t kPngMagic[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Little and big byte order, each with offsets of 32 and of 64 bits.
constexpr char kTiffMagics[4][5] = {"II*\0", "II+\0", "MM\0*", "MM\0+"};

Failure readBytes(const std::string& path, Bytes* bytes) {
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) return std::strerror(errno);
    std::uint8_t chunk[1 << 16];
    while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, file.get()))
        bytes->insert(bytes->end(), chunk, chunk + count);
    return std::ferror(file.get()) ? "cannot be read" : "";
}

Failure writeBytes(const std::string& path, const Bytes& bytes) {
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) return std::strerror(errno);
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    const bool closed = std::fclose(file.release()) == 0;
    return written && closed ? "" : "cannot be written";
}

template <std::size_t N>
bool startsWith(const Bytes& file, const std::uint8_t (&magic)[N]) {
    return file.size() >= N && std::equal(std::begin(magic), std::end(magic), file.begin());
}

bool endsWith(const std::string& path, const char* ending) {
    const std::size_t length = std::strlen(ending);
    return path.size() > length && strcasecmp(path.c_str() + path.size() - length, ending) == 0;
}

bool isTiff(const std::string& path) {
    const File file(std::fopen(path.c_str(), "rb"));
    char magic[4] = "";
    if (!file || std::fread(magic, 1, sizeof magic, file.get()) != sizeof magic) return false;
    return std::any_of(std::begin(kTiffMagics), std::end(kTiffMagics),
                       [&](const char(&known)[5]) { return std::memcmp(known, magic, sizeof magic) == 0; });
}

}  // namespace

Failure readPicture(const std::string& path, Picture* picture) {
    if (isTiff(path)) return readTiff(path, picture);
    Bytes file;
    Failure failure = readBytes(path, &file);
    if (failure.empty()) {
        if (startsWith(file, kBmpMagic))
            failure = decodeBmp(file, picture);
        else if (startsWith(file, kPngMagic))
            failure = decodePng(file, picture);
        else
            failure = "neither a BMP nor a PNG nor a TIFF file";
    }
    return failure.empty() ? failure : path + ": " + failure;
}

bool hasTiffEnding(const std::string& path) { return endsWith(path, ".tif") || endsWith(path, ".tiff"); }

bool hasPictureEnding(const std::string& path) {
    return endsWith(path, ".png") || endsWith(path, ".bmp") || hasTiffEnding(path);
}

Failure writePicture(const std::string& path, const ZetImage& image) {
    if (hasTiffEnding(path)) return writeTiff(path, image);
    Bytes file;
    Failure failure = endsWith(path, ".png") ? encodePng(image, &file) : encodeBmp(image, &file);
    if (failure.empty()) failure = writeBytes(path, file);
    return failure.empty() ? failure : path + ": " + failure;
}

}  // namespace zetpic
