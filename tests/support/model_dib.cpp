#include "tests/support/model_dib.h"

#include <algorithm>
#include <stdexcept>

#include "zetpxl.h"

namespace zetpxl::model {
namespace {

constexpr const char* kTranslate = "zetTranslateDIB";
constexpr const char* kConvert = "zetConvertFromDIB";

struct Pixel {
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;
    std::uint8_t alpha = 0;
};

struct Field {
    std::uint32_t mask = 0;
    int shift = 0;
    int bits = 0;
};

Field analyse(std::uint32_t mask) {
    Field field{mask, 0, 0};
    if (mask == 0) return field;
    while (!(mask >> field.shift & 1u)) ++field.shift;
    while (field.shift + field.bits < 32 && (mask >> (field.shift + field.bits) & 1u)) ++field.bits;
    return field;
}

std::uint8_t toByte(std::uint32_t word, const Field& field) {
    const std::uint32_t value = (word & field.mask) >> field.shift;
    return static_cast<std::uint8_t>(field.bits >= 8 ? value >> (field.bits - 8) : value << (8 - field.bits));
}

class Translation {
  public:
    Translation(const std::vector<std::uint8_t>& dib, std::int32_t cloneData, std::int32_t status) : dib_(dib) {
        out_.cloneData = cloneData;
        out_.status = status;
    }

    DibOutcome run() {
        readHeader();
        if (const char* text = refusal()) {
            report(ZET_StatusBadArgument, kTranslate, text, "zetDIB");
        } else {
            translate();
        }
        return out_;
    }

  private:
    const std::vector<std::uint8_t>& dib_;
    DibOutcome out_;
    std::vector<std::vector<std::uint8_t>> rle_;  // pixel indices of decoded rows
    std::uint32_t size_ = 0, compression_ = 0, sizeImage_ = 0, used_ = 0;
    std::int32_t width_ = 0, height_ = 0;
    std::uint32_t planes_ = 0, bits_ = 0;
    std::int64_t rows_ = 0;

    std::uint32_t byte(std::size_t at) {
        if (at >= dib_.size()) throw std::out_of_range("the case needs a longer DIB");
        out_.bytesRead = std::max(out_.bytesRead, at + 1);
        return dib_[at];
    }
    std::uint32_t half(std::size_t at) { return byte(at) | byte(at + 1) << 8; }
    std::uint32_t word(std::size_t at) { return half(at) | half(at + 2) << 16; }

    void report(std::int32_t status, const char* function, const std::string& context, const char* source) {
        out_.reports.push_back({status, function, context, source});
        if (status != ZET_StatusBacktrace) out_.status = status;
    }

    void readHeader() {
        size_ = word(0);
        width_ = static_cast<std::int32_t>(word(4));
        height_ = static_cast<std::int32_t>(word(8));
        planes_ = half(12);
        bits_ = half(14);
        compression_ = word(16);
        sizeImage_ = word(20);
        used_ = word(32);
        rows_ = height_ < 0 ? -static_cast<std::int64_t>(height_) : height_;
    }

    const char* refusal() const {
        if (size_ != 40) return "( dib->biSize != sizeof(BITMAPINFOHEADER) )";
        if (planes_ != 1) return "(dib->biPlanes != 1)";
        if (compression_ > 3)
            return "(dib->biCompression != 0) && (dib->biCompression != 1) && (dib->biCompression != 2) && "
                   "(dib->biCompression != 3)";
        if (compression_ == 1 && bits_ != 8) return "(dib->biBitCount != 8) && (dib->biCompression == 1)";
        if (compression_ == 2 && bits_ != 4) return "(dib->biBitCount != 4) && (dib->biCompression == 2)";
        if (height_ < 0 && (compression_ == 1 || compression_ == 2))
            return "(dib->biHeight < 0) && ( (dib->biCompression == 1) || (dib->biCompression == 2) )";
        if (used_ > 0x8000) return "(dib->biClrUsed > 0x8000)";
        if (bits_ == 8 && used_ > 256) return "( dib->biBitCount==8 && dib->biClrUsed>256 )";
        if (bits_ == 4 && used_ > 16) return "( dib->biBitCount==4 && dib->biClrUsed>16 )";
        return nullptr;
    }

    std::uint32_t colors() const {
        if (bits_ == 1 || bits_ == 4 || bits_ == 8) return used_ != 0 ? used_ : 1u << bits_;
        if ((bits_ == 16 || bits_ == 32) && compression_ == 3) return used_ + 3;
        return used_;
    }

    bool greyTable() {
        const std::uint32_t n = colors();
        if (n < 2) return false;
        for (std::uint32_t i = 0; i < n; ++i) {
            const Pixel entry = tableEntry(i);
            if (entry.red != entry.green || entry.red != entry.blue || entry.red != i * 255 / (n - 1)) return false;
        }
        return true;
    }

    Pixel tableEntry(std::uint32_t index) {
        if (index >= colors()) return {};
        const std::size_t at = 40 + 4 * std::size_t{index};
        return {static_cast<std::uint8_t>(byte(at)), static_cast<std::uint8_t>(byte(at + 1)),
                static_cast<std::uint8_t>(byte(at + 2)), static_cast<std::uint8_t>(byte(at + 3))};
    }

    std::int64_t dibRow() const { return (std::int64_t{width_} * bits_ + 31) / 32 * 4; }

    void describe(bool clone, int channels, int alpha, std::uint32_t depth, const char* model, const char* sequence) {
        out_.cloneData = clone ? 1 : 0;
        out_.image = {channels,
                      alpha,
                      depth,
                      model,
                      sequence,
                      clone ? 1 : 0,
                      height_ >= 0 ? 1 : 0,
                      clone ? 32 : 4,
                      width_,
                      static_cast<std::int32_t>(rows_),
                      0,
                      0};
    }

    // False for a bit count without an image.
    bool chooseImage() {
        const bool table = bits_ == 1 || bits_ == 4 || bits_ == 8;
        const bool grey = table && greyTable();
        if (bits_ == 1 && grey)
            describe(false, 1, 0, ZET_DEPTH_1U, "GRAY", "G");
        else if (bits_ == 4 && grey)
            describe(true, 1, 0, ZET_DEPTH_8U, "GRAY", "G");
        else if (bits_ == 8 && grey)
            describe(compression_ == 1, 1, 0, ZET_DEPTH_8U, "GRAY", "G");
        else if (table || bits_ == 16)
            describe(true, 3, 0, ZET_DEPTH_8U, "RGB", "BGR");
        else if (bits_ == 24)
            describe(false, 3, 0, ZET_DEPTH_8U, "RGB", "BGR");
        else if (bits_ == 32)
            describe(compression_ == 3, 4, 4, ZET_DEPTH_8U, "RGBA", "BGRA");
        else
            return false;
        return true;
    }

    bool makeHeader() {
        const std::int64_t sampleBits = out_.image.depth == ZET_DEPTH_1U ? 1 : 8;
        const std::int64_t perRow = out_.image.dataOrder == 0 ? out_.image.nChannels : 1;
        const std::int64_t planes = out_.image.dataOrder == 0 ? 1 : out_.image.nChannels;
        const std::int64_t unit = 8 * out_.image.align;
        const std::int64_t step = (width_ * sampleBits * perRow + unit - 1) / unit * unit / 8;
        const bool sized = width_ >= 1 && rows_ >= 1 && rows_ <= INT32_MAX;
        if (!sized || step > INT32_MAX || planes * rows_ > INT32_MAX / step) {
            report(ZET_StatusBadImageSize, "zetCreateImageHeader", "Incorrect data-ins", "zetalloc");
            report(ZET_StatusNoMemory, kTranslate, "Not enough memory to allocate header for destination image",
                   "zetDIB");
            return false;
        }
        out_.image.widthStep = step;
        out_.image.imageSize = planes * rows_ * step;
        return true;
    }

    void translate() {
        if (!chooseImage()) return report(ZET_StatusBadArgument, kTranslate, "dib->biBitCount is bad", "zetDIB");
        if (!makeHeader()) return;
        out_.hasImage = true;
        if (out_.cloneData == 0) {
            const std::int64_t entries = bits_ == 1 ? 2 : bits_ == 8 ? colors() : used_;
            out_.sharedOffset = 40 + 4 * entries;
            return;
        }
        convert();
    }

    void convert() {
        if (out_.status < 0) return;
        const bool coded = compression_ == 1 || compression_ == 2;
        if (bits_ <= 8) out_.bytesRead = std::max(out_.bytesRead, 40 + 4 * std::size_t{colors()});
        if (coded && !decode()) {
            return report(ZET_StatusInternal, kConvert, "Impossible to decompress RLE DIB", "zetDIB");
        }
        const std::size_t plane = static_cast<std::size_t>(width_) * static_cast<std::size_t>(rows_);
        out_.pixels.assign(plane * static_cast<std::size_t>(out_.image.nChannels), 0);
        for (std::int64_t y = 0; y < rows_; ++y)
            for (std::int32_t x = 0; x < width_; ++x)
                store(read(x, y, coded), static_cast<std::size_t>(y * width_ + x), plane);
        out_.pixelsSet = true;
    }

    Pixel read(std::int32_t x, std::int64_t y, bool coded) {
        if (coded) return tableEntry(rle_[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)]);
        const std::size_t row = 40 + 4 * std::size_t{colors()} + static_cast<std::size_t>(y * dibRow());
        const auto column = static_cast<std::size_t>(x);
        switch (bits_) {
            case 1:
                return tableEntry(byte(row + column / 8) >> (7 - column % 8) & 1u);
            case 4:
                return tableEntry(column % 2 == 0 ? byte(row + column / 2) >> 4 : byte(row + column / 2) & 15u);
            case 8:
                return tableEntry(byte(row + column));
            case 16:
                return readFields(half(row + 2 * column), 0xFFFFu);
            default:
                return readFields(word(row + 4 * column), 0xFFFFFFFFu);
        }
    }

    Pixel readFields(std::uint32_t value, std::uint32_t wordMask) {
        Field red = analyse(0x7C00), green = analyse(0x03E0), blue = analyse(0x001F), alpha{};
        if (compression_ == 3) {
            red = analyse(word(40) & wordMask);
            green = analyse(word(44) & wordMask);
            blue = analyse(word(48) & wordMask);
        }
        if (bits_ == 32) {
            Field top = green.shift > blue.shift ? green : blue;
            if (red.shift > top.shift) top = red;
            const int t = (top.shift + top.bits) & 31;
            alpha = analyse(0xFFFFFFFFu >> t << t);
        }
        return {toByte(value, blue), toByte(value, green), toByte(value, red), toByte(value, alpha)};
    }

    void store(const Pixel& pixel, std::size_t at, std::size_t plane) {
        if (out_.image.nChannels == 1) {
            out_.pixels[at] = static_cast<std::uint8_t>((54 * pixel.red + 183 * pixel.green + 18 * pixel.blue) >> 8);
            return;
        }
        out_.pixels[at] = pixel.blue;
        out_.pixels[at + plane] = pixel.green;
        out_.pixels[at + 2 * plane] = pixel.red;
        if (out_.image.nChannels == 4) out_.pixels[at + 3 * plane] = pixel.alpha;
    }

    // The stream's next byte, or -1 behind its bound.
    std::size_t streamAt_ = 0;
    int next() {
        if (sizeImage_ != 0 && streamAt_ >= sizeImage_) return -1;
        return static_cast<int>(byte(40 + 4 * std::size_t{colors()} + streamAt_++));
    }

    bool failed(const char* what) {
        const std::string form = compression_ == 1 ? "BI_RLE8" : "BI_RLE4";
        report(ZET_StatusBadArgument, kConvert, "Incorrect format of " + form + " DIB (" + what + ")", "ownrle");
        return false;
    }

    bool decode() {
        static constexpr const char* kBoth = "mismatch biHeight or biWidth";
        rle_.assign(static_cast<std::size_t>(rows_), std::vector<std::uint8_t>(static_cast<std::size_t>(width_), 0));
        std::int64_t x = 0, y = 0;
        for (;;) {
            const int c = next();
            const int v = next();
            if (v < 0) return failed(kBoth);
            if (c > 0) {
                if (y >= rows_ || x + c > width_) return failed(kBoth);
                for (int i = 0; i < c; ++i) put(x++, y, compression_ == 1 ? v : i % 2 == 0 ? v >> 4 : v & 15);
            } else if (v == 0) {
                if (x != width_) return failed("mismatch biWidth");
                x = 0;
                ++y;
            } else if (v == 1) {
                return y == rows_ || y == rows_ - 1 ? true : failed("mismatch biHeight");
            } else if (v == 2) {
                const int dx = next();
                const int dy = next();
                if (dy < 0) return failed(kBoth);
                x += dx;
                y += dy;
                if (x > width_ || y > rows_) return failed("bad Delta command");
            } else {
                if (!absolute(v, &x, y)) return failed(kBoth);
            }
            if (y > rows_) return failed(kBoth);
        }
    }

    bool absolute(int n, std::int64_t* x, std::int64_t y) {
        if (y >= rows_ || *x + n > width_) return false;
        int data = 0;
        for (int i = 0; i < n; ++i) {
            if (compression_ == 1 || i % 2 == 0) data = next();
            if (data < 0) return false;
            put((*x)++, y, compression_ == 1 ? data : i % 2 == 0 ? data >> 4 : data & 15);
        }
        streamAt_ += streamAt_ % 2;
        return true;
    }

    void put(std::int64_t x, std::int64_t y, int index) {
        rle_[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(index);
    }
};

}  // namespace

DibOutcome translateDib(const std::vector<std::uint8_t>& dib, std::int32_t cloneData, std::int32_t status) {
    return Translation(dib, cloneData, status).run();
}

}  // namespace zetpxl::model
