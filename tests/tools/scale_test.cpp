// Changes of scale by zetpic: sizes and pixels worked out here, and factors as they are written.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/magick.h"

namespace zetpxl::test {
namespace {

constexpr int kWidth = 61, kHeight = 43;

std::string size(const std::string& path) {
    constexpr std::size_t column = 12;
    const std::string words = zetpic("info " + path).output;
    return words.substr(column, words.find(" pixels") - column);
}

struct Plane {
    int width, height;
    std::vector<int> values;

    int at(int x, int y) const { return values[static_cast<std::size_t>(y * width + x)]; }
    bool operator==(const Plane&) const = default;
};

class Scale : public testing::Test {
  protected:
    Folder folder;
    const std::string colours = folder.file("colours.png"), mask = folder.file("mask.png");
    const std::string out = folder.file("out.png");

    void SetUp() override {
        magick("wizard: -strip -resize 61x43! -alpha set -channel A -fx 1-i/w/2 -depth 8 png32:" + colours);
        magick("-size 61x43 xc:black -fx hypot(i-30,j-20)<15 -type bilevel png:" + mask);
    }

    static Plane read(const std::string& path, int width, int height, std::size_t channel) {
        const Bytes pixels = magickPixels(path);
        EXPECT_EQ(pixels.size(), static_cast<std::size_t>(4 * width * height)) << path;
        Plane plane{width, height, {}};
        for (std::size_t i = channel; i < pixels.size(); i += 4) plane.values.push_back(pixels[i]);
        return plane;
    }
    Plane made(const std::string& words, int width, int height, std::size_t channel) {
        const ChildResult result = zetpic(words + " " + colours + " " + out);
        EXPECT_EQ(result.exitCode, 0) << words << "\n" << result.errors;
        return read(out, width, height, channel);
    }
    Plane source(std::size_t channel) { return read(colours, kWidth, kHeight, channel); }
};

template <class Rule>
Plane plane(int width, int height, const Rule& rule) {
    Plane made{width, height, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) made.values.push_back(rule(x, y));
    return made;
}

TEST_F(Scale, MakesPicturesOfTheScaledSize) {
    const std::pair<std::string, std::string> calls[] = {
        {"decimate --factor 1/2", "30 x 21"},
        {"decimate --factor 2/3,1", "40 x 43"},
        {"decimate --factor 0.37,1.0", "22 x 43"},
        {"decimate --size 60,1 --inter super", "60 x 1"},
        {"zoom --factor 2", "122 x 86"},
        {"zoom --factor 3/2,2.25", "91 x 96"},
        {"zoom --size 61,200 --inter nn", "61 x 200"},
        {"zoom --factor 2 --coi 2", "122 x 86"},
        {"resize --factor 1/3,3", "20 x 129"},
        {"resize --factor 1/1000,1", "1 x 43"},
        {"resize --factor 2147483646/2147483647", "60 x 42"},
        {"resize --factor 0.000000001", "1 x 1"},
        {"resize --size 7,90 --roi 10,10,20,20 --inter cubic", "7 x 90"},
        {"resize --factor 2 --roi 51,33,99,99", "20 x 20"},
    };
    for (const auto& [words, expected] : calls) {
        SCOPED_TRACE(words);
        const ChildResult result = zetpic(words + " " + colours + " " + out);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(size(out), expected);
    }
}

// Colours and alpha alike.
TEST_F(Scale, PicksRepeatsAndAverages) {
    for (const std::size_t channel : {0u, 3u}) {
        SCOPED_TRACE(channel);
        const Plane in = source(channel);
        const Plane third = plane(20, 14, [&](int x, int y) { return in.at(3 * x, 3 * y); });
        EXPECT_EQ(made("decimate --factor 1/3 --inter nn", 20, 14, channel), third);
        const Plane mean = plane(30, 21, [&](int x, int y) {
            return (in.at(2 * x, 2 * y) + in.at(2 * x + 1, 2 * y) + in.at(2 * x, 2 * y + 1) +
                    in.at(2 * x + 1, 2 * y + 1) + 2) /
                   4;
        });
        EXPECT_EQ(made("decimate --factor 0.5 --inter super", 30, 21, channel), mean);
        EXPECT_EQ(made("resize --factor 1/2 --inter super --tile 16,16", 30, 21, channel), mean);
        const Plane repeated = plane(183, 86, [&](int x, int y) { return in.at(x / 3, y / 2); });
        EXPECT_EQ(made("zoom --factor 3,2 --inter nn", 183, 86, channel), repeated);
        EXPECT_EQ(made("resize --size 183,86 --inter nn --tile 24,16", 183, 86, channel), repeated);
    }
}

// The first and last pixels of region and result meet, however the region is written.
TEST_F(Scale, MeetsTheCornersOfTheRegion) {
    const Plane in = source(1);
    for (const std::string inter : {"linear", "cubic"})
        for (const std::string region : {"--roi 41,13,20,30", "--roi 41,13,2000,30000"}) {
            const Plane part = made("zoom --factor 4,3 " + region + " --inter " + inter, 80, 90, 1);
            EXPECT_EQ(part.at(0, 0), in.at(41, 13));
            EXPECT_EQ(part.at(79, 0), in.at(60, 13));
            EXPECT_EQ(part.at(0, 89), in.at(41, 42));
            EXPECT_EQ(part.at(79, 89), in.at(60, 42));
        }
}

TEST_F(Scale, LeavesOtherChannelsBlank) {
    for (const std::string words : {"zoom --factor 3/2", "decimate --factor 2/3"}) {
        SCOPED_TRACE(words);
        const int width = words[0] == 'z' ? 91 : 40, height = words[0] == 'z' ? 64 : 28;
        const Plane whole = made(words, width, height, 1);
        EXPECT_EQ(made(words + " --coi 2", width, height, 1), whole);
        EXPECT_THAT(read(out, width, height, 0).values, testing::Each(0));
    }
}

// Tiles that hold whole repeats, for a mask is scaled anew in each of them.
TEST_F(Scale, ScalesTheMaskWithThePicture) {
    const Plane in = source(2), disc = read(mask, kWidth, kHeight, 0);
    const auto rule = [&](int left, int top) {
        return [&, left, top](int x, int y) {
            return disc.at(left + x / 2, top + y / 4) != 0 ? in.at(left + x / 2, top + y / 4) : 0;
        };
    };
    const std::string masked = " --factor 2,4 --inter nn --mask " + mask;
    for (const std::string tiles : {"", " --tile 16,8"}) {
        SCOPED_TRACE(tiles);
        EXPECT_EQ(made("zoom" + masked + tiles, 122, 172, 2), plane(122, 172, rule(0, 0)));
        EXPECT_EQ(made("resize" + masked + tiles + " --roi 19,7,30,20", 60, 80, 2), plane(60, 80, rule(19, 7)));
    }
}

TEST_F(Scale, SaysWhatIsWrong) {
    const struct {
        std::string words;
        int exitCode;
        std::string says;
    } calls[] = {
        {"decimate", 2, "needs one of --factor and --size"},
        {"zoom --factor 2 --size 3,3", 2, "needs one of --factor and --size"},
        {"resize --factor 0", 2, "bad value of --factor: 0"},
        {"resize --factor -1", 2, "bad value of --factor: -1"},
        {"resize --factor 1/0", 2, "bad value of --factor: 1/0"},
        {"resize --factor 0/1", 2, "bad value of --factor"},
        {"resize --factor 1/-2", 2, "bad value of --factor"},
        {"resize --factor +2", 2, "bad value of --factor"},
        {"resize --factor 0.0,1", 2, "bad value of --factor"},
        {"resize --factor 1,0", 2, "bad value of --factor"},
        {"resize --factor 1,", 2, "bad value of --factor"},
        {"resize --factor 1,2,3", 2, "bad value of --factor"},
        {"resize --factor 1/2/3", 2, "bad value of --factor"},
        {"resize --factor 1.5/2", 2, "bad value of --factor"},
        {"resize --factor 1.", 2, "bad value of --factor"},
        {"resize --factor 1e3", 2, "bad value of --factor"},
        {"resize --factor nan", 2, "bad value of --factor"},
        {"resize --factor 2147483648", 2, "bad value of --factor"},
        {"resize --factor 1/4294967297", 2, "bad value of --factor"},
        {"resize --factor 99999999999999999999", 2, "bad value of --factor"},
        {"resize --factor 0.0000000001", 2, "bad value of --factor"},
        {"resize --size 0,3", 2, "bad value of --size"},
        {"resize --size 3", 2, "bad value of --size"},
        {"resize --factor 2 --inter best", 2, "bad value of --inter"},
        {"resize --factor 1/2 --inter super --mask " + mask, 2, "needs another --inter than super"},
        {"decimate --factor 1/2 --mask " + mask, 2, "unknown option --mask"},
        {"zoom --factor 2 --border wrap", 2, "unknown option --border"},
        {"zoom --factor 2 --blend", 2, "unknown option --blend"},
        {"decimate --factor 1/44", 1, "less than a pixel"},
        {"decimate --factor 3/2", 1, "xDst > xSrc"},
        {"zoom --factor 1/2,2", 1, "xDst < xSrc || yDst < ySrc"},
        {"zoom --factor 2 --inter super", 1, "interpolate != ZET_INTER_NN"},
        {"resize --factor 1/2,2 --inter super", 1, "(xDst > xSrc || yDst > ySrc)"},
        {"zoom --factor 2147483647", 1, "the result is too large"},
        {"zoom --factor 2 --roi 61,0,3,3", 1, "the region lies outside the picture"},
        {"zoom --factor 2 --coi 5", 1, "Incorrect Image"},
        {"zoom --factor 2 --mask " + colours, 1, "a mask must be black and white"},
    };
    for (const auto& call : calls) {
        SCOPED_TRACE(call.words);
        const ChildResult result = zetpic(call.words + " " + colours + " " + out);
        EXPECT_EQ(result.exitCode, call.exitCode);
        EXPECT_THAT(result.errors, testing::HasSubstr(call.says));
    }
    for (const std::string command : {"decimate", "zoom", "resize"})
        EXPECT_THAT(zetpic(command + " --help").output, testing::HasSubstr("--factor"));
    EXPECT_THAT(zetpic("--man").output, testing::HasSubstr(".B zoom [--roi X,Y,W,H]"));
}

}  // namespace
}  // namespace zetpxl::test
