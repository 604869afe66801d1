#include "files.h"

#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace zetpic {
namespace {

constexpr std::uint8_t kBmpMagic[] = {'B', 'M'};
constexpr std::uint8_t kPngMagic[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

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

}  // namespace

Failure readPicture(const std::string& path, Picture* picture) {
    Bytes file;
    Failure failure = readBytes(path, &file);
    if (failure.empty()) {
        if (startsWith(file, kBmpMagic))
            failure = decodeBmp(file, picture);
        else if (startsWith(file, kPngMagic))
            failure = decodePng(file, picture);
        else
            failure = "neither a BMP nor a PNG file";
    }
    return failure.empty() ? failure : path + ": " + failure;
}

bool hasPictureEnding(const std::string& path) { return endsWith(path, ".png") || endsWith(path, ".bmp"); }

Failure writePicture(const std::string& path, const ZetImage& image) {
    Bytes file;
    Failure failure = endsWith(path, ".png") ? encodePng(image, &file) : encodeBmp(image, &file);
    if (failure.empty()) failure = writeBytes(path, file);
    return failure.empty() ? failure : path + ": " + failure;
}

}  // namespace zetpic
