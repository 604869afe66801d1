// The operations behind zetpic's commands: each once by what it does to small pictures, worked out here or by ImageMagick
// where both mean the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "tests/tools/magick.h"

namespace zetpxl::test {
namespace {

constexpr int kWidth = 61, kHeight = 43;

// Pictures of 8 bits: grey and colours of noise with runs in it, 1 bit, and a disc as a mask.
class Commands : public testing::Test {
  protected:
    Folder folder;
    const std::string colours = folder.file("colours.png"), grey = folder.file("grey.png");
    const std::string bits = folder.file("bits.png"), mask = folder.file("mask.png"), out = folder.file("out.png");

    void SetUp() override {
        magick("wizard: -strip -resize 61x43! -depth 8 png24:" + colours);
        magick(colours + " -colorspace gray -depth 8 png:" + grey);
        magick(grey + " -threshold 60% -type bilevel png:" + bits);
        magick("-size 61x43 xc:black -fx hypot(i-30,j-20)<15 -type bilevel png:" + mask);
    }

    // One sample a pixel of what the command made.
    Bytes made(const std::string& words) {
        const ChildResult result = zetpic(words + " " + out);
        EXPECT_EQ(result.exitCode, 0) << words << "\n" << result.errors;
        return samples(out);
    }
    static Bytes samples(const std::string& path, std::size_t channel = 0) {
        const Bytes pixels = magickPixels(path);
        Bytes values;
        for (std::size_t i = channel; i < pixels.size(); i += 4) values.push_back(pixels[i]);
        return values;
    }
};

std::uint8_t at(const Bytes& picture, int x, int y, int width = kWidth, int height = kHeight) {
    return picture[static_cast<std::size_t>(std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1))];
}

using PixelRule = std::function<int(int x, int y)>;

Bytes picture(const PixelRule& rule) {
    Bytes pixels;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) pixels.push_back(static_cast<std::uint8_t>(std::clamp(rule(x, y), 0, 255)));
    return pixels;
}

// The samples of a window of 2 * half + 1 pixels a side.
std::vector<int> window(const Bytes& from, int x, int y, int half) {
    std::vector<int> values;
    for (int dy = -half; dy <= half; ++dy)
        for (int dx = -half; dx <= half; ++dx) values.push_back(at(from, x + dx, y + dy));
    return values;
}

int weighted(const Bytes& from, int x, int y, const std::vector<int>& weights) {
    const std::vector<int> values = window(from, x, y, 1);
    int sum = 0;
    for (std::size_t i = 0; i < 9; ++i) sum += weights[8 - i] * values[i];  // turned, as convolution has it
    return sum;
}

TEST_F(Commands, SetCopyAdd) {
    const Bytes in = samples(grey), disc = samples(mask);
    const auto inside = [](int x, int y) { return x >= 10 && x < 40 && y >= 8 && y < 28; };
    EXPECT_EQ(made("set " + grey + " --value 300 --roi 10,8,30,20 --mask " + mask),
              picture([&](int x, int y) { return inside(x, y) && at(disc, x, y) != 0 ? 255 : at(in, x, y); }));
    EXPECT_EQ(made("copy " + grey + " " + grey + " --roi 10,8,30,20 --at 25,21"),
              picture([&](int x, int y) { return inside(x - 15, y - 13) ? at(in, x - 15, y - 13) : at(in, x, y); }));
    EXPECT_EQ(made("copy " + grey + " " + grey + " --at 2,0 --mask " + mask), picture([&](int x, int y) {
                  return x >= 2 && at(disc, x - 2, y) != 0 ? at(in, x - 2, y) : at(in, x, y);
              }));
    const std::string turned = folder.file("turned.png");
    magick(grey + " -rotate 180 " + turned);
    const Bytes other = samples(turned);
    EXPECT_EQ(made("add " + grey + " " + turned),
              picture([&](int x, int y) { return at(in, x, y) + at(other, x, y); }));
    EXPECT_EQ(made("set " + colours + " --value 7 --coi 2"), samples(colours, 0));
    EXPECT_THAT(samples(out, 1), testing::Each(7));
}

TEST_F(Commands, Convolve) {
    const Bytes in = samples(grey);
    const std::vector<int> emboss = {2, 1, 0, 1, 1, -1, 0, -1, -2}, edgeX = {1, 0, -1, 2, 0, -2, 1, 0, -1},
                           edgeY = {1, 2, 1, 0, 0, 0, -1, -2, -1};
    EXPECT_EQ(made("convolve " + grey + " --kernel emboss"),
              picture([&](int x, int y) { return weighted(in, x, y, emboss); }));
    EXPECT_EQ(made("convolve " + grey + " --kernel 2,1,0;1,1,-1;0,-1,-2"),
              made("convolve " + grey + " --kernel emboss"));
    EXPECT_EQ(made("convolve " + grey + " --kernel 1,2,1;2,4,2;1,2,1 --shift 4"), picture([&](int x, int y) {
                  return weighted(in, x, y, {1, 2, 1, 2, 4, 2, 1, 2, 1}) >> 4;
              }));
    EXPECT_EQ(made("convolve " + grey + " --kernel edge-x --kernel edge-y --method max"),
              picture([&](int x, int y) { return std::max(weighted(in, x, y, edgeX), weighted(in, x, y, edgeY)); }));
    EXPECT_EQ(made("convolve " + grey + " --kernel 1,0,0 --anchor 0,0"),
              picture([&](int x, int y) { return at(in, x, y); }));
}

TEST_F(Commands, WindowsAndFixedFilters) {
    const Bytes in = samples(grey);
    EXPECT_EQ(made("blur " + grey + " --size 3,3"), picture([&](int x, int y) {
                  const std::vector<int> values = window(in, x, y, 1);
                  int sum = 0;
                  for (const int value : values) sum += value;
                  return static_cast<int>(sum * static_cast<double>(1.0F / 9));
              }));
    EXPECT_EQ(made("blur " + grey + " --size 1,2 --anchor 0,1"),
              picture([&](int x, int y) { return (at(in, x, y) + at(in, x, y - 1)) / 2; }));
    EXPECT_EQ(made("median " + grey + " --size 5,5"), picture([&](int x, int y) {
                  std::vector<int> values = window(in, x, y, 2);
                  std::nth_element(values.begin(), values.begin() + 12, values.end());
                  return values[12];
              }));
    const Bytes peaks = made("convolve " + grey + " --kernel -1,-1,-1;-1,8,-1;-1,-1,-1");
    EXPECT_EQ(made("fixed " + grey + " --filter peak-3"), peaks);
    EXPECT_EQ(made("fixed " + grey + " --filter 8"), peaks);
}

TEST_F(Commands, Morphology) {
    const Bytes thick = made("threshold " + grey + " --at 153");
    const Bytes in = samples(grey);
    EXPECT_EQ(thick, picture([&](int x, int y) { return at(in, x, y) >= 153 ? 255 : 0; }));
    for (const std::string& path : {grey, bits}) {
        const Bytes from = samples(path);
        const auto extreme = [&](const Bytes& of, bool greatest) {
            return picture([&, greatest](int x, int y) {
                const std::vector<int> values = window(of, x, y, 2);
                return greatest ? *std::max_element(values.begin(), values.end())
                                : *std::min_element(values.begin(), values.end());
            });
        };
        EXPECT_EQ(made("dilate " + path + " --size 2"), extreme(from, true));
        EXPECT_EQ(made("erode " + path + " --size 2"), extreme(from, false));
        // Away from the edges, where the second pass sees samples of its own.
        const Bytes opened = made("open " + path + " --size 2"), closed = made("close " + path + " --size 2");
        const Bytes open = extreme(extreme(from, false), true), close = extreme(extreme(from, true), false);
        for (int y = 5; y < kHeight - 5; ++y)
            for (int x = 5; x < kWidth - 5; ++x) {
                ASSERT_EQ(at(opened, x, y), at(open, x, y)) << x << ' ' << y;
                ASSERT_EQ(at(closed, x, y), at(close, x, y)) << x << ' ' << y;
            }
    }
}

TEST_F(Commands, Borders) {
    const std::pair<const char*, const char*> modes[] = {
        {"constant:77", "-virtual-pixel background -background #4D4D4D"},
        {"replicate", "-virtual-pixel edge"},
        {"reflect", "-virtual-pixel mirror"},
        {"wrap", "-virtual-pixel tile"}};
    for (const auto& [mode, how] : modes) {
        SCOPED_TRACE(mode);
        const std::string expected = folder.file("expected.png");
        magick(colours + " " + how +
               " -set option:distort:viewport 101x83-20-20 -filter point -distort SRT 0 +repage " + expected);
        ASSERT_EQ(zetpic("border " + colours + " " + out + " --margin 20 --border " + mode).exitCode, 0);
        EXPECT_EQ(magickPixels(out), magickPixels(expected));
    }
}

TEST_F(Commands, Moves) {
    const Bytes in = samples(grey);
    const std::string square = folder.file("square.png"), turned = folder.file("turned.png");
    magick(colours + " -resize 40x40! png24:" + square);
    for (const std::string degrees : {"90", "180", "270"}) {
        magick(square + " -rotate -" + degrees + " +repage " + turned);
        ASSERT_EQ(zetpic("rotate " + square + " " + out + " --angle " + degrees).exitCode, 0);
        EXPECT_EQ(magickPixels(out), magickPixels(turned)) << degrees;
    }
    const auto moved = [&](int x, int y) { return x >= 5 && y >= 3 ? at(in, x - 5, y - 3) : 0; };
    EXPECT_EQ(made("warp " + grey + " --matrix 1,0,5,0,1,3 --inter nn"), picture(moved));
    EXPECT_EQ(made("warp " + grey + " --quad 5,3,65,3,65,45,5,45 --inter linear"), picture(moved));
    EXPECT_EQ(made("shear " + grey + " --shear 1,0 --move 2,0 --inter nn"),
              picture([&](int x, int y) { return x - y - 2 >= 0 ? at(in, x - y - 2, y) : 0; }));
    EXPECT_EQ(made("rotate " + grey + " --angle 180 --about 10,10 --inter nn"),
              picture([&](int x, int y) { return x <= 20 && y <= 20 ? at(in, 20 - x, 20 - y) : 0; }));
    for (const char* const map : {"barrel", "swirl", "ripple"})
        EXPECT_EQ(made("remap " + grey + " --amount 0 --map " + map), in) << map;
    EXPECT_EQ(made("remap " + grey + " --map ripple --inter nn"), picture([&](int x, int y) {
                  const auto fromX = static_cast<float>(x + 0.04 * 21 * std::sin(14 * (y - 21) / 21.0));
                  const auto fromY = static_cast<float>(y + 0.04 * 21 * std::sin(14 * (x - 30) / 21.0));
                  const bool inside = fromX >= 0 && fromX <= kWidth - 1 && fromY >= 0 && fromY <= kHeight - 1;
                  return inside ? at(in, static_cast<int>(fromX + 0.5F), static_cast<int>(fromY + 0.5F)) : 0;
              }));
}

TEST_F(Commands, Colours) {
    const std::string red = folder.file("red.png"), hls = folder.file("hls.png");
    magick("-size 9x9 xc:#FF0000 -depth 8 png24:" + red);
    ASSERT_EQ(zetpic("hls " + red + " " + out + " --hue 120").exitCode, 0);
    EXPECT_LE(samples(out, 0)[40], 2);
    EXPECT_GE(samples(out, 1)[40], 253);
    EXPECT_LE(samples(out, 2)[40], 2);
    ASSERT_EQ(zetpic("hls " + red + " " + hls + " --write-hls").exitCode, 0);
    EXPECT_THAT(magickPixels(hls), testing::Contains(127).Times(81));  // the lightness of full red is one half
    ASSERT_EQ(zetpic("hls " + colours + " " + hls + " --write-hls").exitCode, 0);
    const Bytes there = made("hls " + colours);
    EXPECT_EQ(made("hls " + hls + " --read-hls"), there);
    made("hls " + colours + " --saturation 0");
    EXPECT_EQ(samples(out, 0), samples(out, 1));
    EXPECT_EQ(samples(out, 0), samples(out, 2));
}

TEST_F(Commands, Noise) {
    const std::string flat = folder.file("flat.png");
    magick("-size 61x43 xc:gray(128) -depth 8 png:" + flat);
    const Bytes uniform = made("noise " + flat + " --uniform -10,10 --seed 3");
    EXPECT_EQ(*std::min_element(uniform.begin(), uniform.end()), 118);
    EXPECT_EQ(*std::max_element(uniform.begin(), uniform.end()), 137);
    EXPECT_EQ(made("noise " + flat + " --uniform -10,10 --seed 3"), uniform);
    EXPECT_NE(made("noise " + flat + " --uniform -10,10 --seed 4"), uniform);
    double sum = 0, squares = 0;
    for (const std::uint8_t value : made("noise " + flat + " --gaussian 5,20")) {
        sum += value;
        squares += value * value;
    }
    const double mean = sum / (kWidth * kHeight);
    EXPECT_NEAR(mean, 133, 2);
    EXPECT_NEAR(std::sqrt(squares / (kWidth * kHeight) - mean * mean), 20, 2);
}

// What a command makes of a picture, and whether each pixel of its result hangs on no region.
struct Form {
    const char* words;
    bool everyRegion;
};

constexpr Form kForms[] = {
    {"set --value 99", true},
    {"add", true},
    {"convolve --kernel emboss --border wrap", true},
    {"convolve --kernel edge-x --kernel edge-y --method root", true},
    {"blur --size 7,4 --border reflect", true},
    {"median --size 4,3 --border constant:9", true},
    {"fixed --filter ring-5", true},
    {"dilate --size 2", false},
    {"close --size 3 --border reflect", false},
    {"warp --matrix 1,0,5,0,1,3 --inter cubic", false},
    {"rotate --angle 90", false},
    {"remap --map swirl", false},
};

std::string wordsOf(const Form& form, const std::string& in, const std::string& out) {
    std::string words = form.words;
    const std::string command = words.substr(0, words.find(' '));
    return words + " " + in + (command == "add" ? " " + in : "") + " " + out;
}

TEST_F(Commands, TilesRegionsAndMasks) {
    const std::string tiled = folder.file("tiled.png"), part = folder.file("part.png");
    const Bytes disc = samples(mask);
    for (const std::string& in : {colours, grey})
        for (const Form& form : kForms) {
            SCOPED_TRACE(form.words);
            ASSERT_EQ(zetpic(wordsOf(form, in, out)).exitCode, 0);
            ASSERT_EQ(zetpic(wordsOf(form, in, tiled) + " --tile 16,8").exitCode, 0);
            EXPECT_EQ(magickPixels(tiled), magickPixels(out));
            if (!form.everyRegion) continue;
            const std::string limits = " --roi 7,5,40,99 --mask " + mask;
            ASSERT_EQ(zetpic(wordsOf(form, in, part) + limits).exitCode, 0);
            ASSERT_EQ(zetpic(wordsOf(form, in, tiled) + limits + " --tile 8,16").exitCode, 0);
            const Bytes before = samples(in), whole = samples(out);
            const Bytes expected = picture([&](int x, int y) {
                return at(x >= 7 && x < 47 && y >= 5 && at(disc, x, y) != 0 ? whole : before, x, y);
            });
            EXPECT_EQ(samples(part), expected);
            EXPECT_EQ(samples(tiled), expected);
        }
}

// The same picture from a file that holds its rows bottom up and its colours the other way round.
TEST_F(Commands, FilesOfOtherForms) {
    const std::string bmp = folder.file("colours.bmp"), palette = folder.file("palette.bmp");
    magick(colours + " -type truecolor BMP3:" + bmp);
    magick(colours + " -colors 200 -type palette -compress None BMP3:" + palette);
    const std::string filter = " --kernel emboss --roi 0,0,30,10 --mask " + mask;
    EXPECT_EQ(made("convolve " + bmp + filter), made("convolve " + colours + filter));
    EXPECT_EQ(zetpic("add " + palette + " " + bmp + " " + out).exitCode, 0);
}

TEST_F(Commands, WrongUseAndFailures) {
    const std::string damaged = folder.file("damaged.png");
    const Bytes whole = load(colours);
    save(damaged, Bytes(whole.begin(), whole.begin() + 200));
    const std::pair<std::string, int> calls[] = {
        {"set IN OUT", 2},
        {"set IN OUT --value x", 2},
        {"set IN OUT --border wrap --value 1", 2},
        {"copy IN OUT", 2},
        {"copy IN IN OUT --at -1,0", 2},
        {"convolve IN OUT", 2},
        {"convolve IN OUT --kernel unknown", 2},
        {"convolve IN OUT --kernel 1,2;3", 2},
        {"convolve IN OUT --kernel 1,2;", 2},
        {"convolve IN OUT --kernel 1,,2", 2},
        {"convolve IN OUT --kernel 99999999999", 2},
        {"convolve IN OUT --kernel sharpen --method mean", 2},
        {"convolve IN OUT --kernel sharpen --shift 32", 2},
        {"convolve IN OUT --kernel sharpen --border mirror", 2},
        {"convolve IN OUT --kernel sharpen --border wrap:3", 2},
        {"blur IN OUT --size 3", 2},
        {"blur IN OUT --size 0,3", 2},
        {"fixed IN OUT --filter 11", 2},
        {"border IN OUT --margin 3", 2},
        {"dilate IN OUT --size 3,3", 2},
        {"warp IN OUT", 2},
        {"warp IN OUT --matrix 1,0,0,0,1", 2},
        {"warp IN OUT --matrix 1,0,0,0,1,nan", 2},
        {"rotate IN OUT --angle 3 --inter best", 2},
        {"rotate IN OUT --angle 3 --blend=1", 2},
        {"remap IN OUT --map star", 2},
        {"hls IN OUT --lightness -1", 2},
        {"noise IN OUT", 2},
        {"noise IN OUT --uniform 1,2 --gaussian 1,2", 2},
        {"set DAMAGED OUT --value 1", 1},
        {"add IN DAMAGED OUT", 1},
        {"copy DAMAGED IN OUT", 1},
        {"border DAMAGED OUT --margin 3 --border wrap", 1},
        {"border IN OUT --margin 22 --border wrap", 1},
        {"hls DAMAGED OUT", 1},
        {"hls " + grey + " OUT", 1},
        {"threshold DAMAGED OUT --at 3", 1},
        {"threshold " + bits + " OUT --at 3", 1},
        {"blur IN OUT --size 3,3 --mask DAMAGED", 1},
        {"blur IN OUT --size 3,3 --mask IN", 1},
        {"blur IN OUT --size 3,3 --anchor 3,0", 1},
        {"add IN " + grey + " OUT", 1},
        {"warp IN OUT --matrix 1,0,0,1,0,0", 1},
        {"warp IN OUT --quad 0,0,9,0,9,9,1,9", 1},
        {"convolve IN OUT --kernel sharpen --coi 4", 1},
    };
    for (auto [words, exitCode] : calls) {
        SCOPED_TRACE(words);
        for (const auto& [word, path] : {std::pair{std::string("IN"), colours}, {"DAMAGED", damaged}, {"OUT", out}})
            for (std::size_t at; (at = (" " + words + " ").find(" " + word + " ")) != std::string::npos;)
                words.replace(at, word.size(), path);
        const ChildResult result = zetpic(words);
        EXPECT_EQ(result.exitCode, exitCode) << result.errors;
        EXPECT_FALSE(result.errors.empty());
    }
}

}  // namespace
}  // namespace zetpxl::test
