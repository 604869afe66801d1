// zetpic on files of ImageMagick, pixel by pixel, and on damaged ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "tests/support/random.h"
#include "tests/tools/magick.h"

namespace zetpxl::test {
namespace {

std::uint32_t word(const Bytes& file, std::size_t at) {
    std::uint32_t value;
    std::memcpy(&value, file.data() + at, 4);
    return value;
}

void setWord(Bytes& file, std::size_t at, std::uint32_t value) { std::memcpy(file.data() + at, &value, 4); }

constexpr std::size_t kPixelsAt = 10, kHeight = 22, kBits = 28, kCompression = 30, kSizeImage = 34;

std::size_t rowBytes(const Bytes& file) {
    return (std::size_t{word(file, 18)} * (word(file, kBits) & 0xFFFF) + 31) / 32 * 4;
}

struct MadeFile {
    const char* name;
    const char* size;
    const char* how;
    std::uint32_t bits, compression;  // what the file must be for the case to mean anything
    Bytes masks;  // of red, green, blue, alpha: ImageMagick repeats 5 and 6 bits, the library shifts
};

const Bytes kAllBits = {255, 255, 255, 255};

TEST(Zetpic, DecodesWhatImageMagickWrites) {
    const MadeFile files[] = {
        {"1 bit", "61x43!", "-threshold 50% -type bilevel BMP3:", 1, 0, kAllBits},
        {"1 bit in colour", "61x43!", "-colors 2 -type palette BMP3:", 1, 0, kAllBits},
        {"4 bits", "61x43!", "-colors 12 -type palette BMP3:", 4, 0, kAllBits},
        {"8 bits", "61x43!", "-colors 200 -type palette -compress None BMP3:", 8, 0, kAllBits},
        {"8 bits coded", "60x43!", "-colors 200 -type palette -compress RLE BMP3:", 8, 1, kAllBits},
        {"8 bits grey", "61x43!", "-colorspace gray -type palette -compress None BMP3:", 8, 0, kAllBits},
        {"5-6-5", "61x43!", "-alpha off -define bmp:subtype=RGB565 BMP:", 16, 3, {0xF8, 0xFC, 0xF8, 255}},
        {"5-5-5", "61x43!", "-alpha off -define bmp:subtype=RGB555 BMP:", 16, 3, {0xF8, 0xF8, 0xF8, 255}},
        {"24 bits", "61x43!", "-type truecolor BMP3:", 24, 0, kAllBits},
        {"32 bits with alpha", "61x43!", "-alpha set -channel A -fx i/w BMP:", 32, 3, kAllBits},
    };
    for (const MadeFile& made : files) {
        SCOPED_TRACE(made.name);
        const Folder folder;
        const std::string path = folder.file("made.bmp");
        magick(std::string("wizard: -resize ") + made.size + " -depth 8 " + made.how + path);
        const Bytes file = load(path);
        ASSERT_EQ(word(file, kBits) & 0xFFFF, made.bits);
        ASSERT_EQ(word(file, kCompression), made.compression);
        Bytes expected = magickPixels(path);
        for (std::size_t i = 0; i < expected.size(); ++i) expected[i] &= made.masks[i % 4];
        EXPECT_EQ(zetpicPixels(folder, path), expected);
    }
}

Bytes wizardFile(const Folder& folder, const std::string& how) {
    const std::string path = folder.file("wizard.bmp");
    magick("wizard: -strip -resize 60x43! -depth 8 " + how + " BMP3:" + path);
    return load(path);
}

Bytes topDown(Bytes file) {
    const std::size_t row = rowBytes(file);
    const auto pixels = file.begin() + word(file, kPixelsAt);
    const std::size_t height = word(file, kHeight);
    for (std::size_t y = 0; y < height / 2; ++y)
        std::swap_ranges(pixels + static_cast<std::ptrdiff_t>(y * row),
                         pixels + static_cast<std::ptrdiff_t>((y + 1) * row),
                         pixels + static_cast<std::ptrdiff_t>((height - 1 - y) * row));
    setWord(file, kHeight, 0u - static_cast<std::uint32_t>(height));
    return file;
}

// Alternates runs and absolute runs, so that both come at odd and even columns.
Bytes rle4(const Bytes& file) {
    const std::size_t row = rowBytes(file), width = word(file, 18), height = word(file, kHeight);
    const std::size_t pixelsAt = word(file, kPixelsAt);
    Bytes coded(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(pixelsAt));
    for (std::size_t y = 0; y < height; ++y) {
        const auto nibble = [&](std::size_t x) {
            const std::uint8_t byte = file[pixelsAt + y * row + x / 2];
            return static_cast<std::uint8_t>(x % 2 == 0 ? byte >> 4 : byte & 15);
        };
        for (std::size_t x = 0; x < width;) {
            std::size_t run = 1;
            while (x + run < width && run < 255 && nibble(x + run) == nibble(x)) ++run;
            const std::size_t left = std::min<std::size_t>(width - x, 7);
            if (run >= 3 || left < 3) {
                coded.push_back(static_cast<std::uint8_t>(run));
                coded.push_back(static_cast<std::uint8_t>(nibble(x) * 0x11));
                x += run;
                continue;
            }
            coded.push_back(0);
            coded.push_back(static_cast<std::uint8_t>(left));
            for (std::size_t i = 0; i < left; i += 2)
                coded.push_back(static_cast<std::uint8_t>(nibble(x + i) << 4 | (i + 1 < left ? nibble(x + i + 1) : 0)));
            if ((left + 1) / 2 % 2 != 0) coded.push_back(0);
            x += left;
        }
        coded.insert(coded.end(), {0, 0});
    }
    coded.insert(coded.end(), {0, 1});
    setWord(coded, kCompression, 2);
    setWord(coded, kSizeImage, static_cast<std::uint32_t>(coded.size() - pixelsAt));
    return coded;
}

Bytes withGap(Bytes file) {
    const std::uint32_t at = word(file, kPixelsAt);
    file.insert(file.begin() + at, 37, 0xAA);
    setWord(file, kPixelsAt, at + 37);
    return file;
}

// A table cut short where the pixels begin, as old writers leave it: the picture uses its first entries only.
Bytes withShortTable(Bytes file) {
    const std::uint32_t at = word(file, kPixelsAt);
    file.erase(file.begin() + 14 + 40 + 4 * 100, file.begin() + at);
    setWord(file, kPixelsAt, 14 + 40 + 4 * 100);
    setWord(file, 46, 0);
    return file;
}

Bytes withUnusedAlpha(const Bytes& file) {
    Bytes wide(file.begin(), file.begin() + word(file, kPixelsAt));
    const std::size_t row = rowBytes(file), width = word(file, 18);
    for (std::size_t y = 0; y < word(file, kHeight); ++y)
        for (std::size_t x = 0; x < width; ++x) {
            const auto pixel = file.begin() + static_cast<std::ptrdiff_t>(word(file, kPixelsAt) + y * row + 3 * x);
            wide.insert(wide.end(), pixel, pixel + 3);
            wide.push_back(0);
        }
    setWord(wide, kBits, 32);
    return wide;
}

// Files that ImageMagick does not write, made from ones that it does; the picture stays the same.
TEST(Zetpic, DecodesWhatOtherWritersWrite) {
    const struct {
        const char* name;
        const char* how;
        Bytes (*change)(Bytes);
    } files[] = {
        {"top-down 24 bits", "-type truecolor", topDown},
        {"top-down 8 bits", "-colors 99 -type palette -compress None", topDown},
        {"top-down 1 bit", "-threshold 50% -type bilevel", topDown},
        {"RLE4", "-colors 12 -type palette", [](Bytes file) { return rle4(file); }},
        {"gap before the pixels", "-colors 12 -type palette", withGap},
        {"short table", "-colors 99 -type palette -compress None", withShortTable},
        {"32 bits, fourth byte 0", "-type truecolor", [](Bytes file) { return withUnusedAlpha(file); }},
    };
    for (const auto& made : files) {
        SCOPED_TRACE(made.name);
        const Folder folder;
        const Bytes file = wizardFile(folder, made.how);
        const std::string changed = folder.file("changed.bmp");
        save(changed, made.change(file));
        EXPECT_EQ(zetpicPixels(folder, changed), magickPixels(folder.file("wizard.bmp")));
    }
}

// Grey that goes through the library's weights comes out one lower, but for black.
TEST(Zetpic, ConvertedGreyComesOutOneLower) {
    const Folder folder;
    const Bytes plain = wizardFile(folder, "-colorspace gray -posterize 16 -colors 16 -type palette");
    ASSERT_EQ(word(plain, kBits) & 0xFFFF, 4u);
    Bytes ramp = plain;
    for (std::uint32_t i = 0; i < 16; ++i) setWord(ramp, 54 + 4 * i, i * 0x111111);
    const std::string path = folder.file("ramp.bmp");
    save(path, ramp);
    Bytes expected = magickPixels(path);
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (i % 4 != 3 && expected[i] > 0) --expected[i];
    EXPECT_EQ(zetpicPixels(folder, path), expected);
}

TEST(Zetpic, KeepsPngPictures) {
    const char* const kinds[] = {"-threshold 50% -type bilevel png:",
                                 "-colorspace gray -depth 8 png:",
                                 "-depth 8 png24:",
                                 "-depth 8 -alpha set -channel A -fx i/w png32:",
                                 "-depth 16 -resize 60x40! png48:",
                                 "-colors 30 -type palette png8:",
                                 "-depth 8 -interlace PNG png24:",
                                 "-colorspace gray -depth 16 -resize 60x40! png:",
                                 "-colorspace gray -colors 4 -depth 2 png:",
                                 "-colorspace gray -alpha set -channel A -fx j/h -depth 8 png:"};
    for (const char* const kind : kinds) {
        SCOPED_TRACE(kind);
        const Folder folder;
        const std::string path = folder.file("made.png");
        magick(std::string("wizard: -resize 61x43! ") + kind + path);
        EXPECT_EQ(zetpicPixels(folder, path, 16), magickPixels(path, 16));
    }
}

TEST(Zetpic, WritesBmpFiles) {
    const char* const kinds[] = {"-threshold 50% -type bilevel png:", "-colorspace gray -depth 8 png:",
                                 "-depth 8 png24:", "-depth 8 -alpha set -channel A -fx i/w png32:"};
    for (const char* const kind : kinds) {
        SCOPED_TRACE(kind);
        const Folder folder;
        const std::string path = folder.file("made.png"), bmp = folder.file("written.bmp");
        magick(std::string("wizard: -resize 61x43! ") + kind + path);
        EXPECT_EQ(zetpic("convert " + path + " " + bmp).exitCode, 0);
        EXPECT_EQ(zetpicPixels(folder, bmp), magickPixels(path));
    }
    const Folder folder;
    magick("wizard: -depth 16 -resize 20x20! png48:" + folder.file("deep.png"));
    const ChildResult deep = zetpic("convert " + folder.file("deep.png") + " " + folder.file("deep.bmp"));
    EXPECT_EQ(deep.exitCode, 1);
    EXPECT_THAT(deep.errors, testing::HasSubstr("a BMP file cannot hold samples of depth 16U"));
}

bool isOneLine(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n') == 1 && text.back() == '\n';
}

void expectDamaged(const Folder& folder, const Bytes& file) {
    save(folder.file("damaged"), file);
    const ChildResult result = zetpic("convert " + folder.file("damaged") + " " + folder.file("out.png"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
}

TEST(Zetpic, RefusesDamagedFiles) {
    const Folder folder;
    for (const char* const how :
         {"-type truecolor", "-colors 99 -type palette -compress RLE", "-colors 12 -type palette"}) {
        const Bytes file = wizardFile(folder, how);
        for (const double share : {0.0, 0.002, 0.01, 0.3, 0.9, 0.999}) {
            const auto length = static_cast<std::ptrdiff_t>(static_cast<double>(file.size()) * share);
            SCOPED_TRACE(std::string(how) + ", cut to " + std::to_string(length));
            expectDamaged(folder, Bytes(file.begin(), file.begin() + length));
        }
    }
    magick("wizard: -resize 61x43! png24:" + folder.file("made.png"));
    const Bytes png = load(folder.file("made.png"));
    expectDamaged(folder, Bytes(png.begin(), png.begin() + static_cast<std::ptrdiff_t>(png.size() / 2)));
    expectDamaged(folder, Bytes(png.begin(), png.begin() + 20));
}

// Any four bytes of the headers at their limits: a picture or one line, and nothing else.
TEST(Zetpic, SurvivesAnyHeader) {
    const Folder folder;
    Random random(7);
    for (const char* const how : {"-type truecolor", "-colors 99 -type palette -compress RLE"}) {
        const Bytes file = wizardFile(folder, how);
        for (std::size_t at = kPixelsAt; at < 54; at += 2) {
            const std::uint32_t value =
                random.pick<std::uint32_t>({0, 1, 7, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x10000});
            SCOPED_TRACE(std::string(how) + ", " + std::to_string(value) + " at " + std::to_string(at));
            Bytes changed = file;
            setWord(changed, at, value);
            save(folder.file("changed.bmp"), changed);
            const ChildResult result = zetpic("convert " + folder.file("changed.bmp") + " " + folder.file("out.png"));
            EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode << result.errors;
            EXPECT_TRUE(result.exitCode == 0 || isOneLine(result.errors)) << result.errors;
        }
    }
}

// The frame and the cross, worked out here by distance from the edges and the diagonals of a square picture.
TEST(Zetpic, MarksSinglePixels) {
    const Folder folder;
    const std::string in = folder.file("in.bmp"), out = folder.file("out.png"), tiled = folder.file("tiled.png");
    magick("wizard: -resize 41x41! -type truecolor BMP3:" + in);
    ASSERT_EQ(zetpic("mark " + in + " " + out).exitCode, 0);
    ASSERT_EQ(zetpic("mark --tile 16,8 " + in + " " + tiled).exitCode, 0);
    EXPECT_EQ(load(out), load(tiled));
    Bytes expected = magickPixels(in);
    for (std::size_t y = 0; y < 41; ++y)
        for (std::size_t x = 0; x < 41; ++x)
            if (x == 0 || y == 0 || x == 40 || y == 40 || x == y || x + y == 40)
                std::memcpy(&expected[4 * (41 * y + x)], "\xFF\0\0\xFF", 4);
    EXPECT_EQ(magickPixels(out), expected);
}

TEST(Zetpic, TellsWrongUseFromFailure) {
    const Folder folder;
    magick("wizard: -resize 20x20! png24:" + folder.file("in.png"));
    const std::string in = folder.file("in.png"), out = folder.file("out.png");
    const struct {
        std::string words;
        int exitCode;
    } calls[] = {
        {"", 2},
        {"frobnicate", 2},
        {"info", 2},
        {"info " + in + " " + in, 2},
        {"convert " + in + " " + folder.file("out.gif"), 2},
        {"mark --roi 0,0,4,4 " + in + " " + out, 2},
        {"mark --tile 16,9 " + in + " " + out, 2},
        {"mark --tile 16 " + in + " " + out, 2},
        {"mark --tile=16,8x " + in + " " + out, 2},
        {"mark --tile", 2},
        {"info " + folder.file("absent.bmp"), 1},
        {"convert " + in + " " + folder.file("no/such/folder.png"), 1},
        {"mark --tile=16,8 " + in + " " + out, 0},
        {"info -- " + in, 0},
        {"--help", 0},
        {"--version", 0},
    };
    for (const auto& call : calls) {
        SCOPED_TRACE(call.words);
        const ChildResult result = zetpic(call.words);
        EXPECT_EQ(result.exitCode, call.exitCode);
        EXPECT_EQ(result.errors.empty(), call.exitCode == 0);
        EXPECT_TRUE(call.exitCode == 0 || isOneLine(result.errors)) << result.errors;
    }
    for (const std::string command : {"info", "convert", "mark"})
        EXPECT_THAT(zetpic(command + " --help").output, testing::HasSubstr("usage: zetpic " + command));
    EXPECT_THAT(zetpic("info " + in).output, testing::HasSubstr("20 x 20 pixels"));
}

}  // namespace
}  // namespace zetpxl::test
