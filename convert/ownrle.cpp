// Run-length coded DIBs expanded to the rows of a plain DIB of the same bit count.
//   rle.1  pixels that a delta passes over are 0
//   rle.2  a row must be filled up, or left by a delta, before its end-of-line command
//   rle.3  the stream ends with an end-of-bitmap command on the last row or right behind it
//   rle.4  a biSizeImage other than 0 bounds the stream; a command that needs a byte behind it is a mismatch
//   rle.5  no pixel is written outside its row
#include "zetpxl.h"

#include <algorithm>

#include "convert/dib.h"
#include "convert/ownrle.h"
#include "core/alloc.h"
#include "core/report.h"

namespace zetpxl {
namespace {

constexpr Operation op{"zetConvertFromDIB", "ownrle"};

enum Command : std::uint32_t { kEndOfLine = 0, kEndOfBitmap = 1, kDelta = 2 };

enum Outcome : std::int32_t { kGoOn, kDone, kMismatch, kMismatchWidth, kMismatchHeight, kBadDelta, kNoMemory };

// Words of a failure, for BI_RLE8 and BI_RLE4.
constexpr const char* kTexts[][2] = {
    {nullptr, nullptr},
    {nullptr, nullptr},
    {"Incorrect format of BI_RLE8 DIB (mismatch biHeight or biWidth)",
     "Incorrect format of BI_RLE4 DIB (mismatch biHeight or biWidth)"},
    {"Incorrect format of BI_RLE8 DIB (mismatch biWidth)", "Incorrect format of BI_RLE4 DIB (mismatch biWidth)"},
    {"Incorrect format of BI_RLE8 DIB (mismatch biHeight)", "Incorrect format of BI_RLE4 DIB (mismatch biHeight)"},
    {"Incorrect format of BI_RLE8 DIB (bad Delta command)", "Incorrect format of BI_RLE4 DIB (bad Delta command)"},
    {"Not enough memory to decompress BI_RLE8 DIB at DIB", "Not enough memory to decompress BI_RLE4 DIB at DIB"},
};
static_assert(std::size(kTexts) == kNoMemory + 1);

struct Bytes8 {
    static constexpr std::ptrdiff_t dataBytes(std::ptrdiff_t count) { return count; }

    static void run(std::uint8_t* row, std::ptrdiff_t x, std::uint8_t value, std::ptrdiff_t count) {
        std::memset(row + x, value, static_cast<std::size_t>(count));
    }

    static void copy(std::uint8_t* row, std::ptrdiff_t x, const std::uint8_t* data, std::ptrdiff_t count) {
        std::memcpy(row + x, data, static_cast<std::size_t>(count));
    }
};

struct Nibbles4 {
    static constexpr std::ptrdiff_t dataBytes(std::ptrdiff_t count) { return (count + 1) / 2; }

    static std::uint8_t nibble(std::uint8_t byte, std::ptrdiff_t i) {
        return static_cast<std::uint8_t>(i % 2 == 0 ? byte >> 4 : byte & 15);
    }

    static void put(std::uint8_t* row, std::ptrdiff_t x, std::uint8_t value) {
        std::uint8_t& byte = row[x / 2];
        byte = static_cast<std::uint8_t>(x % 2 == 0 ? (byte & 0x0F) | value << 4 : (byte & 0xF0) | value);
    }

    static void run(std::uint8_t* row, std::ptrdiff_t x, std::uint8_t value, std::ptrdiff_t count) {
        for (std::ptrdiff_t i = 0; i < count; ++i) put(row, x + i, nibble(value, i));
    }

    static void copy(std::uint8_t* row, std::ptrdiff_t x, const std::uint8_t* data, std::ptrdiff_t count) {
        for (std::ptrdiff_t i = 0; i < count; ++i) put(row, x + i, nibble(data[i / 2], i));
    }
};

struct Decoder {
    const std::uint8_t* stream;
    std::ptrdiff_t left;  // bytes before the bound
    std::uint8_t* block;
    std::ptrdiff_t stride;
    std::ptrdiff_t width;
    std::ptrdiff_t height;
    std::ptrdiff_t x;
    std::ptrdiff_t y;
    std::ptrdiff_t cleared;  // rows that hold zeros or pixels

    // The next bytes, or null behind the bound.
    const std::uint8_t* take(std::ptrdiff_t count) {
        if (count > left) return nullptr;
        const std::uint8_t* const bytes = stream;
        stream += count;
        left -= count;
        return bytes;
    }

    // Where the run starts that is to cover `count` pixels, or null if it does not fit its row.
    std::uint8_t* rowFor(std::ptrdiff_t count) const {
        return y < height && count <= width - x ? block + y * stride : nullptr;
    }

    // Rows are cleared when the decoder comes to them, while the cache is about to need them anyway.
    void clearRows() {
        const std::ptrdiff_t wanted = std::min(y + 1, height);
        if (wanted <= cleared) return;
        std::memset(block + cleared * stride, 0, static_cast<std::size_t>((wanted - cleared) * stride));
        cleared = wanted;
    }
};

template <class Form>
Outcome encodedRun(Decoder& at, std::uint8_t count, std::uint8_t value) {
    std::uint8_t* const row = at.rowFor(count);
    if (!row) return kMismatch;
    Form::run(row, at.x, value, count);
    at.x += count;
    return kGoOn;
}

template <class Form>
Outcome absoluteRun(Decoder& at, std::ptrdiff_t count) {
    std::uint8_t* const row = at.rowFor(count);
    const std::ptrdiff_t bytes = Form::dataBytes(count);
    const std::uint8_t* const data = at.take(bytes);
    if (!row || !data) return kMismatch;
    Form::copy(row, at.x, data, count);
    at.x += count;
    if (bytes % 2 != 0 && !at.take(1)) return kMismatch;
    return kGoOn;
}

Outcome endOfLine(Decoder& at) {
    if (at.x != at.width) return kMismatchWidth;
    at.x = 0;
    at.y += 1;
    return kGoOn;
}

Outcome endOfBitmap(const Decoder& at) { return at.y == at.height || at.y == at.height - 1 ? kDone : kMismatchHeight; }

Outcome delta(Decoder& at) {
    const std::uint8_t* const step = at.take(2);
    if (!step) return kMismatch;
    at.x += step[0];
    at.y += step[1];
    return at.x > at.width || at.y > at.height ? kBadDelta : kGoOn;
}

template <class Form>
Outcome command(Decoder& at) {
    const std::uint8_t* const bytes = at.take(2);
    if (!bytes) return kMismatch;
    if (bytes[0] != 0) return encodedRun<Form>(at, bytes[0], bytes[1]);
    if (bytes[1] == kEndOfLine) return endOfLine(at);
    if (bytes[1] == kEndOfBitmap) return endOfBitmap(at);
    if (bytes[1] == kDelta) return delta(at);
    return absoluteRun<Form>(at, bytes[1]);
}

template <class Form>
Outcome decode(Decoder at) {
    Outcome outcome = kGoOn;
    while (outcome == kGoOn) {
        at.clearRows();
        outcome = command<Form>(at);
        if (outcome == kGoOn && at.y > at.height) outcome = kMismatch;
    }
    return outcome;
}

void* failed(Outcome outcome, bool rle4, std::source_location where = std::source_location::current()) {
    report(op, outcome == kNoMemory ? ZET_StatusNoMemory : ZET_StatusBadArgument, kTexts[outcome][rle4], where);
    return nullptr;
}

}  // namespace

void* ownDecompressRLE(const BITMAPINFOHEADER* dib) {
    const BITMAPINFOHEADER header = dibHeader(dib);
    const bool rle4 = header.biCompression == kDibRle4;
    const std::ptrdiff_t stride = ownDibRowBytes(header.biWidth, rle4 ? 4 : 8, 4);
    Block<std::uint8_t> block = allocBlock<std::uint8_t>(sizeProduct(stride, header.biHeight));
    if (!block) return failed(kNoMemory, rle4);
    const std::ptrdiff_t bound = header.biSizeImage != 0 ? std::ptrdiff_t{header.biSizeImage} : PTRDIFF_MAX;
    const Decoder start{ownDibBits(dib), bound, block.get(), stride, header.biWidth, header.biHeight, 0, 0, 0};
    const Outcome outcome = rle4 ? decode<Nibbles4>(start) : decode<Bytes8>(start);
    return outcome == kDone ? block.release() : failed(outcome, rle4);
}

}  // namespace zetpxl
