// TIFF files of ImageMagick, whole and tile by tile: the pixels that the same command makes of a PNG file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/magick.h"

namespace zetpxl::test {
namespace {

struct Form {
    const char* name;
    const char* how;  // ImageMagick's words
    int bits;
};

const Form kForms[] = {
    {"colours", "-type truecolor", 8},
    {"colours with alpha", "-alpha set -channel A -fx i/w +channel -type truecoloralpha", 8},
    {"grey", "-colorspace gray -type grayscale", 8},
    {"1 bit", "-colorspace gray -threshold 60% -type bilevel", 1},
    {"16 bits", "-type truecolor", 16},
};

// A picture as PNG and as TIFF in tiles, whose last ones reach past it.
class Tiff : public testing::Test {
  protected:
    Folder folder;
    const std::string png = folder.file("in.png"), tiff = folder.file("in.tif"), mask = folder.file("mask.png");
    const std::string expected = folder.file("expected.png"), made = folder.file("made.tif");

    void makeFiles(const Form& form) {
        const std::string depth = " -depth " + std::to_string(form.bits);
        magick("wizard: -strip -resize 101x75! " + std::string(form.how) + depth + " png:" + png);
        magick(png + " " + form.how + depth + " -compress none -define tiff:tile-geometry=32x16 tiff:" + tiff);
    }
    void expectAlike(const std::string& a, const std::string& b, int bits) {
        EXPECT_EQ(magickPixels(a, bits == 16 ? 16 : 8), magickPixels(b, bits == 16 ? 16 : 8));
    }
};

TEST_F(Tiff, ReadsAndWritesWholePictures) {
    for (const Form& form : kForms) {
        SCOPED_TRACE(form.name);
        makeFiles(form);
        ASSERT_EQ(zetpic("convert " + tiff + " " + expected).exitCode, 0);
        expectAlike(expected, png, form.bits);
        ASSERT_EQ(zetpic("convert " + png + " " + made).exitCode, 0);
        expectAlike(made, png, form.bits);
        const std::string again = folder.file("again.png");
        ASSERT_EQ(zetpic("convert " + made + " " + again).exitCode, 0);
        expectAlike(again, png, form.bits);
    }
}

// Noise depends on the tiles, so both ways have the same ones.
TEST_F(Tiff, TilesComeOutAsOneBlockDoes) {
    const char* const commands[] = {"blur --size 9,7",        "median --size 3,3",
                                    "set --value 1",          "rotate --angle 30",
                                    "decimate --factor 3/5",  "zoom --factor 7/3",
                                    "dilate --size 2",        "convolve --kernel smooth",
                                    "fixed --filter crisp-3", "remap --map swirl",
                                    "shear --shear 0.3,0",    "resize --size 50,99",
                                    "noise --uniform -9,9",   "blur --size 5,5 --roi 9,20,70,99"};
    for (const Form& form : kForms) {
        makeFiles(form);
        for (const std::string command : commands) {
            SCOPED_TRACE(std::string(form.name) + ": " + command);
            const std::string name = command.substr(0, command.find(' '));
            const std::string options = command.substr(name.size());
            if (form.name == std::string("1 bit") && name == "noise") continue;
            ASSERT_EQ(zetpic(name + " " + png + " " + expected + options + " --tile 32,16").exitCode, 0);
            const ChildResult result = zetpic(name + " " + tiff + " " + made + options + " --tile 32,16");
            ASSERT_EQ(result.exitCode, 0) << result.errors;
            EXPECT_EQ(result.errors, "");  // no progress in a pipe
            expectAlike(made, expected, form.bits);
        }
    }
}

TEST_F(Tiff, TakesMasksTwoSourcesAndItsOwnPlace) {
    makeFiles(kForms[0]);
    magick("-size 101x75 xc:black -fx hypot(i-50,j-30)<25 -type bilevel png:" + mask);
    const std::string masked = " --mask " + mask + " --tile 16,48";
    ASSERT_EQ(zetpic("set " + png + " " + expected + " --value 200" + masked).exitCode, 0);
    ASSERT_EQ(zetpic("set " + tiff + " " + made + " --value 200" + masked).exitCode, 0);
    expectAlike(made, expected, 8);
    ASSERT_EQ(zetpic("copy " + png + " " + expected + " " + expected + " --roi 3,4,50,50 --at 40,30").exitCode, 0);
    ASSERT_EQ(zetpic("copy " + tiff + " " + made + " " + made + " --roi 3,4,50,50 --at 40,30 --tile 48,16").exitCode,
              0);
    expectAlike(made, expected, 8);
    ASSERT_EQ(zetpic("add " + png + " " + expected + " " + expected).exitCode, 0);
    ASSERT_EQ(zetpic("add " + tiff + " " + made + " " + made + " --tile 16,16").exitCode, 0);
    expectAlike(made, expected, 8);
}

// Through hue and back block by block; alpha is left behind either way.
TEST_F(Tiff, ChangesColoursTileByTile) {
    for (const Form* form : {&kForms[0], &kForms[1], &kForms[4]}) {
        makeFiles(*form);
        for (const std::string options : {" --hue 120", " --saturation 0.5 --lightness 0.9", " --write-hls"}) {
            SCOPED_TRACE(form->name + options);
            ASSERT_EQ(zetpic("hls " + png + " " + expected + options).exitCode, 0);
            const ChildResult result = zetpic("hls " + tiff + " " + made + options + " --tile 16,32");
            ASSERT_EQ(result.exitCode, 0) << result.errors;
            expectAlike(made, expected, form->bits);
        }
    }
}

TEST_F(Tiff, TellsWhatIsWrong) {
    makeFiles(kForms[0]);
    const ChildResult odd = zetpic("blur " + tiff + " " + made + " --size 3,3 --tile 24,16");
    EXPECT_EQ(odd.exitCode, 1);
    EXPECT_THAT(odd.errors, testing::HasSubstr("multiples of 16"));
    EXPECT_EQ(zetpic("blur " + tiff + " " + folder.file("none/made.tif") + " --size 3,3 --tile 16,16").exitCode, 1);

    // The last bytes may be words about the picture, without which it is whole.
    const std::string tall = folder.file("tall.tif"), cut = folder.file("cut.tif");
    ASSERT_EQ(zetpic("convert " + png + " " + tall).exitCode, 0);
    for (const std::string& whole : {tiff, tall}) {
        const Bytes file = load(whole);
        for (std::size_t length = 4; length + 1000 < file.size(); length += file.size() / 40) {
            save(cut, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)));
            EXPECT_EQ(zetpic("convert " + cut + " " + expected).exitCode, 1) << length;
            EXPECT_EQ(zetpic("blur " + cut + " " + made + " --size 3,3 --tile 16,16").exitCode, 1) << length;
        }
    }
    EXPECT_TRUE(load(made).empty());  // what has failed leaves no picture
    EXPECT_TRUE(load(made + ".part").empty());
}

}  // namespace
}  // namespace zetpxl::test
