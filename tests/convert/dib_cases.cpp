#include "tests/convert/dib_cases.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>

namespace zetpxl::test {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::int32_t kLargestWidth = 40;
constexpr std::int32_t kLargestHeight = 9;

enum class Table { kRamp, kNearRamp, kReversed, kRandom };

void appendTable(std::vector<std::uint8_t>& bytes, std::uint32_t count, Table kind, Random& random) {
    const auto last = static_cast<std::uint32_t>(random.below(static_cast<std::int32_t>(count)));
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t step = count < 2 ? 0 : (kind == Table::kReversed ? count - 1 - i : i) * 255 / (count - 1);
        std::uint32_t entry = step * 0x010101u + (std::uint32_t{random.byte()} << 24);
        if (kind == Table::kRandom) entry = static_cast<std::uint32_t>(random.word());
        if (kind == Table::kNearRamp && i == last) entry ^= 1u << random.below(24);
        appendWord(bytes, entry);
    }
}

std::uint32_t drawMask(Random& random) {
    switch (random.below(8)) {
        case 0:
            return 0;
        case 1:
            return 0xFFFFFFFFu;
        case 2:
            return static_cast<std::uint32_t>(random.word());
        default: {
            const std::int32_t bits = random.between(1, 12);
            return ((1u << bits) - 1) << random.below(32);
        }
    }
}

void appendMasks(std::vector<std::uint8_t>& bytes, Random& random) {
    static constexpr std::uint32_t kUsual[][3] = {
        {0xF800, 0x07E0, 0x001F}, {0x7C00, 0x03E0, 0x001F}, {0xFF0000, 0xFF00, 0xFF}, {0xFF, 0xFF00, 0xFF0000}};
    const std::int32_t usual = random.below(8);
    if (usual < 4) {
        for (const std::uint32_t mask : kUsual[usual]) appendWord(bytes, mask);
        return;
    }
    // Fields that begin at the same bit decide by colour where alpha begins.
    const std::uint32_t common = random.oneIn(3) ? 1u << random.below(32) : 0;
    for (std::size_t i = 0; i < 3; ++i)
        appendWord(bytes, common != 0 ? common * random.pick({1u, 3u, 7u, 15u}) : drawMask(random));
}

// A sound stream: rows filled by runs and absolute runs, now and then left by a delta.
class StreamMaker {
  public:
    StreamMaker(const DibFields& fields, Random& random)
        : random_(random), width_(fields.width), height_(fields.height), rle8_(fields.compression == 1) {}

    std::vector<std::uint8_t> make() {
        while (y_ < height_) {
            while (x_ < width_) command();
            if (y_ == height_ - 1 && random_.oneIn(2)) break;
            add({0, 0});
            x_ = 0;
            ++y_;
        }
        add({0, 1});
        return stream_;
    }

  private:
    Random& random_;
    std::int32_t width_, height_, x_ = 0, y_ = 0;
    bool rle8_;
    std::vector<std::uint8_t> stream_;

    void add(std::initializer_list<std::int32_t> bytes) {
        for (const std::int32_t byte : bytes) stream_.push_back(static_cast<std::uint8_t>(byte));
    }

    void command() {
        const std::int32_t room = width_ - x_;
        if (random_.oneIn(6)) return delta(random_.between(0, room), random_.between(0, height_ - 1 - y_));
        const std::int32_t count = random_.between(1, std::min(room, 255));
        x_ += count;
        if (count < 3 || random_.oneIn(2)) return add({count, random_.byte()});
        add({0, count});
        const std::int32_t bytes = rle8_ ? count : (count + 1) / 2;
        for (std::int32_t i = 0; i < bytes + bytes % 2; ++i) add({random_.byte()});
    }

    void delta(std::int32_t dx, std::int32_t dy) {
        add({0, 2, dx, dy});
        x_ += dx;
        y_ += dy;
    }
};

void damage(std::vector<std::uint8_t>& stream, Random& random) {
    for (std::int32_t n = random.between(1, 3); n > 0; --n) {
        const auto at = static_cast<std::size_t>(random.below(static_cast<std::int32_t>(stream.size())));
        stream[at] = random.oneIn(2) ? random.byte() : static_cast<std::uint8_t>(random.below(4));
    }
}

// A damaged stream without a bound runs into ends of bitmap: no command is longer than these.
void appendStream(DibCase& drawn, Random& random) {
    std::vector<std::uint8_t> stream = StreamMaker(drawn.fields, random).make();
    const auto length = static_cast<std::uint32_t>(stream.size());
    if (random.oneIn(3)) damage(stream, random);
    drawn.fields.sizeImage = random.pick<std::uint32_t>({0, 0, length, length, length + 100, length - 1, length / 2});
    append(drawn.bytes, stream);
    for (std::int32_t i = 0; i < 400; ++i) append(drawn.bytes, {0, 1});
}

void drawSound(DibFields& fields, Random& random) {
    fields.width = random.between(1, random.oneIn(30) ? 600 : kLargestWidth);
    fields.height = random.between(1, kLargestHeight);
    fields.bitCount = random.pick<std::uint16_t>({1, 4, 4, 8, 8, 8, 16, 16, 24, 32, 32});
    if (fields.bitCount == 8 && random.oneIn(2)) fields.compression = 1;
    if (fields.bitCount == 4 && random.oneIn(2)) fields.compression = 2;
    if (fields.bitCount >= 16 && random.oneIn(2)) fields.compression = 3;
    const bool coded = fields.compression == 1 || fields.compression == 2;
    if (!coded && random.oneIn(2)) fields.height = -fields.height;
    if (!coded) fields.sizeImage = static_cast<std::uint32_t>(random.word());
    const std::int32_t most = fields.bitCount <= 8 ? 1 << fields.bitCount : 300;
    if (random.oneIn(3)) fields.colorsUsed = static_cast<std::uint32_t>(random.between(1, most));
    if (fields.bitCount == 1 && random.oneIn(4)) fields.colorsUsed = random.pick<std::uint32_t>({1, 3, 5});
    if (random.oneIn(20)) fields.colorsUsed = random.pick<std::uint32_t>({1, 2, 3, 16, 256, 300, 0x8000});
}

// Values at and past the limits of one field. A size is at its own limits or past those of every image.
void spoil(DibFields& fields, Random& random) {
    switch (random.below(8)) {
        case 0:
            fields.size = random.pick<std::uint32_t>({0, 12, 39, 41, 108, 0x28000000});
            break;
        case 1:
            fields.planes = random.pick<std::uint16_t>({0, 2, 257});
            break;
        case 2:
            fields.compression = random.pick<std::uint32_t>({1, 2, 3, 4, 0x80000001});
            break;
        case 3:
            fields.bitCount = random.pick<std::uint16_t>({0, 2, 7, 12, 64, 0x108});
            break;
        case 4:
            fields.colorsUsed = random.pick<std::uint32_t>({17, 257, 0x8001, 0x80000000, 0xFFFFFFFF});
            break;
        case 5:
            fields.width = random.pick({0, -1, INT32_MIN, INT32_MAX});
            break;
        case 6:
            fields.height = random.pick({0, ~fields.height, INT32_MIN, INT32_MIN + 1});
            break;
        default:
            fields.width = fields.height = 100000;
            break;
    }
}

void appendBody(DibCase& drawn, Random& random) {
    const DibFields& fields = drawn.fields;
    const bool palette = fields.bitCount == 1 || fields.bitCount == 4 || fields.bitCount == 8;
    const std::uint32_t entries = std::min(fields.colorsUsed, 0x8000u);
    if (palette) {
        const auto kind = random.pick({Table::kRamp, Table::kNearRamp, Table::kReversed, Table::kRandom});
        appendTable(drawn.bytes, entries != 0 ? entries : 1u << fields.bitCount, kind, random);
    } else {
        if (fields.compression == 3) appendMasks(drawn.bytes, random);
        if (entries != 0) appendTable(drawn.bytes, entries, Table::kRandom, random);
    }
    if ((fields.compression == 1 && fields.bitCount == 8) || (fields.compression == 2 && fields.bitCount == 4))
        return appendStream(drawn, random);
    const std::int32_t rowBytes = (fields.width * fields.bitCount + 31) / 32 * 4;
    for (std::int32_t i = 0; i < std::abs(fields.height) * rowBytes; ++i) drawn.bytes.push_back(random.byte());
}

}  // namespace

std::string DibFields::text() const {
    const auto word = [](const char* name, std::int64_t value) { return name + std::to_string(value); };
    return word("size ", size) + word(", width ", width) + word(", height ", height) + word(", planes ", planes) +
           word(", bits ", bitCount) + word(", compression ", compression) + word(", size of image ", sizeImage) +
           word(", colours ", colorsUsed);
}

void append(std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void appendWord(std::vector<std::uint8_t>& bytes, std::uint32_t word) {
    for (std::int32_t i = 0; i < 4; ++i) bytes.push_back(static_cast<std::uint8_t>(word >> 8 * i));
}

std::vector<std::uint8_t> headerBytes(const DibFields& fields) {
    std::vector<std::uint8_t> bytes;
    appendWord(bytes, fields.size);
    appendWord(bytes, static_cast<std::uint32_t>(fields.width));
    appendWord(bytes, static_cast<std::uint32_t>(fields.height));
    appendWord(bytes, fields.planes | std::uint32_t{fields.bitCount} << 16);
    appendWord(bytes, fields.compression);
    appendWord(bytes, fields.sizeImage);
    appendWord(bytes, 0xDEADBEEF);
    appendWord(bytes, 0xDEADBEEF);
    appendWord(bytes, fields.colorsUsed);
    appendWord(bytes, 0xDEADBEEF);
    return bytes;
}

DibCase drawDib(Random& random) {
    DibCase drawn;
    drawn.bytes.resize(40);
    drawSound(drawn.fields, random);
    appendBody(drawn, random);
    for (std::int32_t faults = random.oneIn(5) ? random.between(1, 2) : 0; faults > 0; --faults)
        spoil(drawn.fields, random);
    const std::vector<std::uint8_t> header = headerBytes(drawn.fields);
    std::copy(header.begin(), header.end(), drawn.bytes.begin());
    // A spoilt bit count, compression or table length makes the decoder look for more than was made above.
    drawn.bytes.resize(drawn.bytes.size() + 4 * 0x8000 + 4 * 600 * 16, 0x5A);
    drawn.status = random.oneIn(8) ? random.pick({-1, -5, 7}) : 0;
    return drawn;
}

PageEnd::PageEnd(const std::vector<std::uint8_t>& bytes) {
    const std::size_t room = (bytes.size() + kPage - 1) / kPage * kPage;
    length_ = room + kPage;
    pages_ = mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    mprotect(static_cast<std::uint8_t*>(pages_) + room, kPage, PROT_NONE);
    data_ = static_cast<std::uint8_t*>(pages_) + room - bytes.size();
    std::memcpy(data_, bytes.data(), bytes.size());
}

PageEnd::~PageEnd() { munmap(pages_, length_); }

}  // namespace zetpxl::test
