// Any bytes as a DIB: zetTranslateDIB reads nothing behind header, table and rows, and gives a sound image or none.
//
// The input is the DIB. What a sound caller owes the library is made up here: the memory is exactly as long as the header
// asks for, and a coded stream has a bound or an end.
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "zetpxl.h"

namespace {

constexpr std::int64_t kPage = 4096;
constexpr std::int64_t kRoom = 256 * kPage;
constexpr std::int64_t kHeader = 40;

// The end of this arena cannot be passed.
std::uint8_t* arenaEnd() {
    static std::uint8_t* const end = [] {
        void* const pages = mmap(nullptr, kRoom + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) std::abort();
        std::uint8_t* const behind = static_cast<std::uint8_t*>(pages) + kRoom;
        if (mprotect(behind, kPage, PROT_NONE) != 0) std::abort();
        return behind;
    }();
    return end;
}

bool isCoded(const BITMAPINFOHEADER& header) { return header.biCompression == 1 || header.biCompression == 2; }

std::int64_t tableEntries(const BITMAPINFOHEADER& header) {
    const std::int64_t used = header.biClrUsed;
    const bool palette = header.biBitCount == 1 || header.biBitCount == 4 || header.biBitCount == 8;
    if (palette) return used != 0 ? used : std::int64_t{1} << header.biBitCount;
    return header.biCompression == 3 ? used + 3 : used;
}

constexpr std::int64_t kLargestWidth = 512;
constexpr std::int64_t kLargestHeight = 64;
// No command of a stream is longer than this, so an unbounded one comes to an end here.
constexpr std::int64_t kEnding = 264;

std::int64_t rowsOf(const BITMAPINFOHEADER& header) { return std::abs(std::int64_t{header.biHeight}); }

// Large pictures say nothing that small ones do not, and take the time of many. Sizes that no image can have stay.
void bringDown(BITMAPINFOHEADER* header) {
    if (header->biWidth <= 0) return;
    const std::int64_t pixels = header->biWidth * rowsOf(*header);
    const std::int64_t refused = header->biBitCount == 1 ? std::int64_t{8} * INT32_MAX : INT32_MAX;
    if (pixels <= kLargestWidth * kLargestHeight || pixels > refused) return;
    header->biWidth = header->biWidth % kLargestWidth + 1;
    header->biHeight %= kLargestHeight;
}

// 0 for sizes that are refused before any pixel is read.
std::int64_t rowsLength(const BITMAPINFOHEADER& header) {
    const std::int64_t width = header.biWidth;
    if (width <= 0 || width * rowsOf(header) > kLargestWidth * kLargestHeight || header.biBitCount > 32) return 0;
    return (width * header.biBitCount + 31) / 32 * 4 * rowsOf(header);
}

std::int32_t forget(std::int32_t status, const char*, const char*, const char*, std::int32_t) { return status; }

// The corners of the image lie in memory that is the image's, or the DIB's.
void touch(ZetImage* image) {
    const std::uint8_t pixel[4] = {1, 2, 3, 4};
    zetPutPixel(image, image->width - 1, image->height - 1, pixel);
    zetPutPixel(image, 0, 0, pixel);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t inputSize) {
    const auto size = static_cast<std::int64_t>(inputSize);
    if (size < kHeader) return 0;
    BITMAPINFOHEADER header;
    std::memcpy(&header, input, kHeader);
    bringDown(&header);
    const std::int64_t table = std::min<std::int64_t>(tableEntries(header), 0x8003) * 4;
    std::int64_t pixels = rowsLength(header);
    std::int64_t ending = 0;
    if (isCoded(header)) {
        const std::int64_t stream = std::max<std::int64_t>(0, size - kHeader - table);
        header.biSizeImage = std::min(header.biSizeImage, static_cast<std::uint32_t>(stream));
        const bool bounded = header.biSizeImage != 0;
        pixels = bounded ? header.biSizeImage : (stream + 1) / 2 * 2;
        ending = bounded ? 0 : kEnding;
    }
    const std::int64_t length = kHeader + table + pixels + ending;
    if (length > kRoom) return 0;

    std::uint8_t* const dib = arenaEnd() - length;
    std::memset(dib, 0, static_cast<std::size_t>(length));
    std::memcpy(dib, input, static_cast<std::size_t>(std::min(size, length - ending)));
    for (std::int64_t i = 1; i < ending; i += 2) arenaEnd()[i - ending] = 1;
    std::memcpy(dib, &header, kHeader);

    zetSetErrMode(ZET_ErrorModeParent);
    zetRedirectError(forget);
    zetSetErrStatus(0);
    std::int32_t cloneData = -1;
    ZetImage* const image = zetTranslateDIB(reinterpret_cast<const BITMAPINFOHEADER*>(dib), &cloneData);
    if (!image) return 0;
    if (cloneData != 0 && cloneData != 1) std::abort();
    if (rowsLength(header) > 0) touch(image);
    zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
    return 0;
}
