// zetTranslateDIB against the plain model, its refusals in order, and memory that runs out.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "convert/dib.h"
#include "tests/convert/dib_cases.h"
#include "tests/support/allocations.h"
#include "tests/support/events.h"
#include "tests/support/model_dib.h"

namespace zetpxl::test {
namespace {

constexpr std::int32_t kUntouched = 0x5EED;
constexpr std::uint64_t kFirstSeed = 20260;

std::int64_t environment(const char* name, std::int64_t otherwise) {
    const char* const text = std::getenv(name);
    return text ? std::atoll(text) : otherwise;
}

struct ImageDeleter {
    void operator()(ZetImage* image) const { zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA); }
};
using Image = std::unique_ptr<ZetImage, ImageDeleter>;

std::string text4(const char (&name)[4]) { return {name, strnlen(name, 4)}; }

model::DibImage recordOf(const ZetImage& image) {
    return {image.nChannels,
            image.alphaChannel,
            image.depth,
            text4(image.colorModel),
            text4(image.channelSeq),
            image.dataOrder,
            image.origin,
            image.align,
            image.width,
            image.height,
            image.widthStep,
            image.imageSize};
}

std::vector<std::uint8_t> planesOf(const ZetImage& image) {
    std::vector<std::uint8_t> samples;
    const auto* const data = static_cast<const std::uint8_t*>(image.imageData);
    for (std::ptrdiff_t row = 0; row < std::ptrdiff_t{image.nChannels} * image.height; ++row)
        samples.insert(samples.end(), data + row * image.widthStep, data + row * image.widthStep + image.width);
    return samples;
}

std::string reportsOf(const model::DibOutcome& expected) {
    EventLog log;
    for (const model::DibReport& report : expected.reports)
        log.add(reportLine(report.status, report.function.c_str(), report.context.c_str(), report.source.c_str()));
    return log.text();
}

void compareImage(const model::DibOutcome& expected, const ZetImage& image, const std::uint8_t* dib) {
    EXPECT_EQ(recordOf(image), expected.image);
    EXPECT_EQ(image.headerSize, static_cast<std::int32_t>(sizeof(ZetImage)));
    EXPECT_EQ(image.imageDataBase == nullptr, expected.sharedOffset >= 0);
    EXPECT_TRUE(!image.roi && !image.maskImage && !image.imageTag && !image.tileInfo);
    if (expected.sharedOffset >= 0) {
        EXPECT_EQ(image.imageData, dib + expected.sharedOffset);
    }
    if (expected.pixelsSet) {
        EXPECT_EQ(planesOf(image), expected.pixels);
    }
}

// The DIB that the library sees is exactly as long as the model found it to be, and left as it was.
void compareWithModel(DibCase drawn) {
    const model::DibOutcome expected = model::translateDib(drawn.bytes, kUntouched, drawn.status);
    drawn.bytes.resize(std::max<std::size_t>(40, expected.bytesRead));
    const PageEnd dib(drawn.bytes);
    EventLog log;
    std::int32_t cloneData = kUntouched;
    std::int32_t status = 0;
    Image image;
    {
        const Recorder recorder(log, drawn.status);
        image.reset(zetTranslateDIB(dib.dib(), &cloneData));
        status = zetGetErrStatus();
    }
    EXPECT_EQ(log.text(), reportsOf(expected));
    EXPECT_EQ(status, expected.status);
    EXPECT_EQ(cloneData, expected.cloneData);
    ASSERT_EQ(image != nullptr, expected.hasImage);
    if (image) compareImage(expected, *image, dib.data());
    EXPECT_EQ(std::memcmp(dib.data(), drawn.bytes.data(), drawn.bytes.size()), 0);
}

TEST(TranslateDib, AgreesWithThePlainModel) {
    const auto first = static_cast<std::uint64_t>(environment("ZETPXL_SEED", kFirstSeed));
    const std::int64_t count = std::getenv("ZETPXL_SEED") ? 1 : environment("ZETPXL_CASES", 2000);
    for (std::int64_t i = 0; i < count; ++i) {
        const std::uint64_t seed = first + static_cast<std::uint64_t>(i);
        Random random(seed * 0x1F123BB5u);
        const DibCase drawn = drawDib(random);
        SCOPED_TRACE("ZETPXL_SEED=" + std::to_string(seed) + ": " + drawn.fields.text());
        compareWithModel(drawn);
        if (testing::Test::HasFailure()) return;
    }
}

std::vector<std::uint8_t> dibOf(const DibFields& fields, const std::vector<std::uint32_t>& table,
                                const std::vector<std::uint8_t>& pixels) {
    std::vector<std::uint8_t> bytes = headerBytes(fields);
    for (const std::uint32_t entry : table) appendWord(bytes, entry);
    append(bytes, pixels);
    return bytes;
}

struct Refusal {
    DibFields fields;
    const char* words;
};

// Each line but the last carries the fault of the line below it too: the earlier check wins.
TEST(TranslateDib, RefusesInOrder) {
    const char* const compression =
        "(dib->biCompression != 0) && (dib->biCompression != 1) && (dib->biCompression != 2) && "
        "(dib->biCompression != 3)";
    const Refusal refusals[] = {
        {{39, 4, 4, 2, 8, 0, 0, 0}, "( dib->biSize != sizeof(BITMAPINFOHEADER) )"},
        {{40, 4, 4, 2, 8, 4, 0, 0}, "(dib->biPlanes != 1)"},
        {{40, 4, 4, 1, 8, 4, 0, 0x8001}, compression},
        {{40, 4, -4, 1, 4, 1, 0, 0}, "(dib->biBitCount != 8) && (dib->biCompression == 1)"},
        {{40, 4, -4, 1, 8, 2, 0, 0}, "(dib->biBitCount != 4) && (dib->biCompression == 2)"},
        {{40, 4, -4, 1, 8, 1, 0, 0x8001},
         "(dib->biHeight < 0) && ( (dib->biCompression == 1) || (dib->biCompression == 2) )"},
        {{40, 4, 4, 1, 8, 0, 0, 0x8001}, "(dib->biClrUsed > 0x8000)"},
        {{40, 0, 4, 1, 8, 0, 0, 257}, "( dib->biBitCount==8 && dib->biClrUsed>256 )"},
        {{40, 0, 4, 1, 4, 0, 0, 17}, "( dib->biBitCount==4 && dib->biClrUsed>16 )"},
        {{40, 0, 4, 1, 2, 0, 0, 0}, "dib->biBitCount is bad"},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.fields.text());
        const PageEnd dib(headerBytes(refusal.fields));
        EventLog log;
        const Recorder recorder(log);
        std::int32_t cloneData = kUntouched;
        EXPECT_EQ(zetTranslateDIB(dib.dib(), &cloneData), nullptr);
        EXPECT_EQ(cloneData, kUntouched);
        EXPECT_EQ(log.text(), "  " + reportLine(-5, "zetTranslateDIB", refusal.words, "zetDIB") + "\n");
    }
}

TEST(TranslateDib, RefusesNullPointers) {
    EventLog log;
    const Recorder recorder(log);
    const PageEnd dib(headerBytes({.size = 0}));
    EXPECT_EQ(zetTranslateDIB(nullptr, nullptr), nullptr);
    EXPECT_EQ(zetTranslateDIB(dib.dib(), nullptr), nullptr);
    EXPECT_EQ(log.text(), "  " + reportLine(-5, "zetTranslateDIB", "( dib == 0 )", "zetDIB") + "\n  " +
                              reportLine(-5, "zetTranslateDIB", "( cloneData == 0 )", "zetDIB") + "\n");
}

// Sizes without an image: the header's own report, then the DIB's, and *cloneData already written.
TEST(TranslateDib, RefusesSizesBeforeAllocating) {
    const DibFields sizes[] = {{40, 0, 4, 1, 24, 0, 0, 0},
                               {40, 4, 0, 1, 24, 0, 0, 0},
                               {40, 4, INT32_MIN, 1, 24, 0, 0, 0},
                               {40, INT32_MAX, 1, 1, 24, 0, 0, 0},
                               {40, 40000, 40000, 1, 24, 0, 0, 0}};
    for (const DibFields& fields : sizes) {
        SCOPED_TRACE(fields.text());
        const PageEnd dib(headerBytes(fields));
        EventLog log;
        const Recorder recorder(log);
        std::int32_t cloneData = kUntouched;
        const AllocationWatch watch;
        EXPECT_EQ(zetTranslateDIB(dib.dib(), &cloneData), nullptr);
        EXPECT_EQ(watch.live(), 0);
        EXPECT_EQ(cloneData, 0);
        const char* const words = "Not enough memory to allocate header for destination image";
        EXPECT_EQ(log.text(), "  " + reportLine(-10, "zetCreateImageHeader", "Incorrect data-ins", "zetalloc") +
                                  "\n  " + reportLine(-4, "zetTranslateDIB", words, "zetDIB") + "\n");
    }
}

TEST(TranslateDib, FailsSoundlyWhenMemoryRunsOut) {
    const DibFields fields{40, 4, 1, 1, 8, 1, 0, 2};
    const PageEnd dib(dibOf(fields, {0x0000FF, 0x00FF00}, {4, 1, 0, 1}));
    const std::string reports[] = {
        "  report -4 zetTranslateDIB \"Not enough memory to allocate header for destination image\" zetDIB\n",
        "  report -4 zetAllocateImage \"for allocate image data\" zetalloc\n"
        "  report -4 zetTranslateDIB \"Not enough memory to allocate data for destination image\" zetDIB\n",
        "  report -4 zetConvertFromDIB \"Not enough memory to decompress BI_RLE8 DIB at DIB\" ownrle\n"
        "  report -3 zetConvertFromDIB \"Impossible to decompress RLE DIB\" zetDIB\n",
        ""};
    for (std::int32_t n = 1; n <= 4; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n) + " fails");
        EventLog log;
        const Recorder recorder(log);
        std::int32_t cloneData = kUntouched;
        const AllocationWatch watch(n);
        ZetImage* const image = zetTranslateDIB(dib.dib(), &cloneData);
        EXPECT_EQ(image != nullptr, n >= 3);
        EXPECT_EQ(watch.live(), n >= 3 ? 2 : 0);
        zetDeallocate(image, 3);
        EXPECT_EQ(watch.live(), 0);
        EXPECT_EQ(log.text(), reports[n - 1]);
        EXPECT_EQ(cloneData, 1);
    }
}

// Writing through a shared image writes the DIB, bottom row first in the image's own coordinates.
TEST(TranslateDib, SharedPixelsAreTheDibsOwn) {
    const DibFields fields{40, 2, 2, 1, 24, 0, 0, 300};
    const PageEnd dib(dibOf(fields, std::vector<std::uint32_t>(300), std::vector<std::uint8_t>(16)));
    std::int32_t cloneData = kUntouched;
    const Image image(zetTranslateDIB(dib.dib(), &cloneData));
    ASSERT_TRUE(image);
    const std::uint8_t pixel[3] = {1, 2, 3};
    zetPutPixel(image.get(), 0, 0, pixel);
    EXPECT_EQ(std::memcmp(dib.data() + 40 + 1200 + 8, pixel, 3), 0);
}

TEST(TranslateDib, MaskFields) {
    const struct {
        std::uint32_t mask;
        std::int32_t shift, bits;
    } fields[] = {{0, 0, 0},      {1, 0, 1},           {0x07E0, 5, 6},     {0xFFFFFFFF, 0, 32},
                  {0xF0F0, 4, 4}, {0x80000000, 31, 1}, {0xFF000000, 24, 8}};
    for (const auto& field : fields) {
        std::int32_t shift = -1, bits = -1;
        ownDibMaskField(field.mask, &shift, &bits);
        EXPECT_EQ(shift, field.shift) << field.mask;
        EXPECT_EQ(bits, field.bits) << field.mask;
    }
}

struct Stream {
    std::uint32_t compression;
    std::int32_t width, height;
    std::vector<std::uint8_t> bytes;
    const char* failure;                // null for a sound stream
    std::vector<std::uint8_t> indices;  // row by row, without padding
};

// The stream's own bytes end the page: a decoder that reads on does not come back.
TEST(TranslateDib, Streams) {
    const char* const both = "(mismatch biHeight or biWidth)";
    const Stream streams[] = {
        {1, 4, 1, {4, 7, 0, 1}, nullptr, {7, 7, 7, 7}},
        {1, 4, 1, {4, 7, 0, 0, 0, 1}, nullptr, {7, 7, 7, 7}},
        {1, 4, 3, {4, 7, 0, 1}, "(mismatch biHeight)", {}},
        {1, 4, 1, {3, 7, 0, 0}, "(mismatch biWidth)", {}},
        {1, 4, 1, {0, 0}, "(mismatch biWidth)", {}},
        {1, 6, 1, {0, 3, 1, 2, 3, 0, 0, 3, 4, 5, 6, 0, 0, 0, 0, 1}, nullptr, {1, 2, 3, 4, 5, 6}},
        {2, 5, 1, {5, 0x12, 0, 0, 0, 1}, nullptr, {1, 2, 1, 2, 1}},
        {2, 4, 1, {1, 0x30, 3, 0x45, 0, 0, 0, 1}, nullptr, {3, 4, 5, 4}},
        {2, 5, 1, {1, 0x30, 0, 3, 0x45, 0x60, 1, 0x70, 0, 1}, nullptr, {3, 4, 5, 6, 7}},
        {1, 4, 2, {0, 2, 4, 1, 0, 0, 0, 1}, nullptr, {0, 0, 0, 0, 0, 0, 0, 0}},
        {1, 4, 1, {0, 2, 5, 0}, "(bad Delta command)", {}},
        {1, 4, 1, {0, 2, 0, 2}, "(bad Delta command)", {}},
        {1, 4, 1, {5, 7}, both, {}},
        {2, 4, 1, {0, 2, 0, 1, 1, 7}, both, {}},
        {1, 4, 1, {4, 7, 0, 0, 0, 2, 4, 0, 0, 0}, both, {}},
    };
    for (const Stream& stream : streams) {
        const bool rle8 = stream.compression == 1;
        const DibFields fields{40, stream.width, stream.height, 1, std::uint16_t(rle8 ? 8 : 4), stream.compression, 0,
                               8};
        std::vector<std::uint32_t> table;
        for (std::uint32_t i = 0; i < 8; ++i) table.push_back(i);  // blue tells the index
        const PageEnd dib(dibOf(fields, table, stream.bytes));
        SCOPED_TRACE(testing::PrintToString(stream.bytes));
        EventLog log;
        const Recorder recorder(log);
        std::int32_t cloneData = 0;
        const Image image(zetTranslateDIB(dib.dib(), &cloneData));
        ASSERT_TRUE(image);
        if (stream.failure) {
            const std::string words = std::string("Incorrect format of BI_RLE") + (rle8 ? "8" : "4") + " DIB ";
            EXPECT_EQ(log.lines.at(0), reportLine(-5, "zetConvertFromDIB", (words + stream.failure).c_str(), "ownrle"));
            EXPECT_EQ(zetGetErrStatus(), ZET_StatusInternal);
            continue;
        }
        EXPECT_EQ(log.text(), "");
        std::vector<std::uint8_t> blue = planesOf(*image);
        blue.resize(stream.indices.size());
        EXPECT_EQ(blue, stream.indices);
    }
}

}  // namespace
}  // namespace zetpxl::test
