#include "tests/support/model_color.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "tests/support/model_patch.h"
#include "tests/support/model_rect.h"

namespace zetpxl::test {
namespace {

struct Coding {
    double bias, full, hueOut, hueIn, fractionIn;
};

Coding codingOf(std::uint32_t depth) {
    if (depth == ZET_DEPTH_8U) return {0, 255, 0.7083333333333334, 1.4117647058823528, 0.00392156862745098};
    if (depth == ZET_DEPTH_16U) return {0, 65535, 182.04166666666669, 0.005493247882810711, 1.5259021896696422e-05};
    return {2147483648.0, 4294967295.0, 11930464.708333334, 8.38190317349087e-08, 2.3283064370807974e-10};
}

double hueOf(double r, double g, double b, double greatest, double d) {
    double h = 0;
    if (r == greatest)
        h = (g - b) / d * 60;
    else if (g == greatest)
        h = (b - r) / d * 60 + 120;
    else
        h = (r - g) / d * 60 + 240;
    return h < 0 ? h + 360 : h;
}

double channelAt(double x, double m1, double m2) {
    constexpr double kSixtieth = 0.016666666666666666;
    if (x < 60) return (m2 - m1) * kSixtieth * x + m1;
    if (x < 180) return m2;
    return x < 240 ? (240 - x) * (m2 - m1) * kSixtieth + m1 : m1;
}

// ---- a block of pixels

using Planes = std::array<std::int32_t, 3>;  // channel of the first, second and third component

struct Conversion {
    ZetImage* src;
    ZetImage* dst;
    bool toHls;
    const char* name;
    Planes from{}, to{};
};

Planes rgbPlanes(const ZetImage& image) {
    if (image.dataOrder == 0) return image.channelSeq[0] == 'R' ? Planes{0, 1, 2} : Planes{2, 1, 0};
    Planes planes{};
    for (std::int32_t i = 0; i < std::min(image.nChannels, 4); ++i) {
        if (image.channelSeq[i] == 'R') planes[0] = i;
        if (image.channelSeq[i] == 'G') planes[1] = i;
        if (image.channelSeq[i] == 'B') planes[2] = i;
    }
    return planes;
}

std::uint32_t patternOf(double value) { return static_cast<std::uint32_t>(static_cast<std::int64_t>(value)); }

void convertPixel(const Conversion& op, std::int32_t y, std::int32_t x) {
    std::array<double, 3> in{};
    for (std::size_t i = 0; i < 3; ++i) in[i] = sampleValue(op.src->depth, modelRectSample(*op.src, op.from[i], y, x));
    const Triple pixel{in[0], in[1], in[2]};
    const Triple out = op.toHls ? modelToHls(op.src->depth, pixel) : modelToRgb(op.src->depth, pixel);
    putSample(*op.dst, op.to[0], y, x, patternOf(out.a));
    putSample(*op.dst, op.to[1], y, x, patternOf(out.b));
    putSample(*op.dst, op.to[2], y, x, patternOf(out.c));
}

void convertBlock(Model& model, const Conversion& op, const Area& area) {
    if (op.toHls) {
        std::memcpy(op.dst->colorModel, "HLS", 4);
        std::memcpy(op.dst->channelSeq, "HLS", 4);
    }
    const std::uint32_t depth = op.src->depth;
    if (depth != ZET_DEPTH_8U && depth != ZET_DEPTH_16U && depth != ZET_DEPTH_32S)
        return model.report(ZET_StatusBadArgument, op.toHls ? "ownRGB2HLS" : "ownHLS2RGB",
                            "Error input depth. 32S,16U,8U are valid now", "ownhls");
    for (std::int32_t y = area.y; y < area.y + area.height; ++y)
        for (std::int32_t x = area.x; x < area.x + area.width; ++x) convertPixel(op, y, x);
}

// ---- tiles of the destination

enum class Step { kGoOn, kEndRow, kEnd };

Step convertTile(Model& model, const Conversion& op, std::int32_t col, std::int32_t row) {
    ZetImage& dst = *op.dst;
    Area area{0, 0, dst.width, dst.height};
    if (tiled(dst)) {
        const ZetTileInfo& tiles = *dst.tileInfo;
        area = {col * tiles.width, row * tiles.height, 0, 0};
        area.width = std::min(tiles.width, dst.width - area.x);
        area.height = std::min(tiles.height, dst.height - area.y);
        if (!modelFetch(dst, col, row, ZET_TILE_WRITE)) return Step::kEndRow;
    }
    const bool had = !tiled(*op.src) || modelGetRectCalls(*op.src, area.x, area.y, area.width, area.height);
    if (had) convertBlock(model, op, area);
    if (tiled(dst)) modelRelease(dst, col, row);
    if (had) return Step::kGoOn;
    model.report(ZET_StatusBacktrace, op.name, "", "owncolor");
    return Step::kEnd;
}

void convertTiles(Model& model, const Conversion& op) {
    const std::int32_t cols = tiled(*op.dst) ? (op.dst->width - 1) / op.dst->tileInfo->width + 1 : 1;
    const std::int32_t rows = tiled(*op.dst) ? (op.dst->height - 1) / op.dst->tileInfo->height + 1 : 1;
    bool failedBefore = false;
    for (std::int32_t row = 0; row < rows; ++row) {
        Step step = Step::kGoOn;
        for (std::int32_t col = 0; col < cols && step == Step::kGoOn; ++col) {
            step = convertTile(model, op, col, row);
            if (step == Step::kEnd || (step == Step::kEndRow && col == 0 && failedBefore)) return;
        }
        failedBefore = step == Step::kEndRow;
    }
}

void convertImage(Model& model, const Conversion& op) {
    if (tiled(*op.src) || tiled(*op.dst)) return convertTiles(model, op);
    convertBlock(model, op, {0, 0, std::min(op.src->width, op.dst->width), std::min(op.src->height, op.dst->height)});
}

// ---- refusals

std::string fourOf(const char* name) { return std::string(name, strnlen(name, 4)); }

bool startsWith(const char* name, const char* word) { return std::equal(word, word + 3, name); }

std::string rgbRefusal(const ZetImage& image) {
    if (!startsWith(image.colorModel, "RGB"))
        return "colorModel must be RGB instead of " + fourOf(image.colorModel) + " ";
    if (!startsWith(image.channelSeq, "RGB") && !startsWith(image.channelSeq, "BGR"))
        return "channelSeq must be RGB or BGR instead of " + fourOf(image.channelSeq) + " ";
    return "";
}

std::string hlsRefusal(const ZetImage& image) {
    if (!startsWith(image.colorModel, "HLS"))
        return "src-> colorModel must be HLS instead of " + fourOf(image.colorModel);
    if (!startsWith(image.channelSeq, "HLS"))
        return "src-> channelSeq must be HLS instead of " + fourOf(image.channelSeq);
    return "";
}

std::string commonRefusal(const ZetImage& src, const ZetImage& dst) {
    if (src.roi || dst.roi) return "src & dst roi must be NULL";
    if (src.nChannels < 3 || dst.nChannels != 3 || src.depth != dst.depth || src.dataOrder != dst.dataOrder ||
        src.origin != dst.origin)
        return "(src->nChannels < 3 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) || (src->dataOrder != "
               "dst->dataOrder) || (src->origin != dst->origin)";
    return "";
}

void convert(Model& model, Conversion op) {
    for (const ZetImage* image : {op.src, op.dst})
        if (model.checkImage(image)) return model.reportIncorrectImage(op.name, "zetcolor");
    std::string words = rgbRefusal(op.toHls ? *op.src : *op.dst);
    if (words.empty() && !op.toHls) words = hlsRefusal(*op.src);
    if (words.empty()) words = commonRefusal(*op.src, *op.dst);
    if (!words.empty()) return model.report(ZET_StatusBadArgument, op.name, words.c_str(), "owncolor");
    op.from = op.toHls ? rgbPlanes(*op.src) : Planes{0, 1, 2};
    op.to = op.toHls ? Planes{0, 1, 2} : rgbPlanes(*op.dst);
    convertImage(model, op);
}

}  // namespace

Triple modelToHls(std::uint32_t depth, const Triple& rgb) {
    const Coding k = codingOf(depth);
    const double r = rgb.a + k.bias;
    const double g = rgb.b + k.bias;
    const double b = rgb.c + k.bias;
    const double greatest = std::max({r, g, b});
    const double smallest = std::min({r, g, b});
    const double sum = greatest + smallest;
    const double d = greatest - smallest;
    const double lightness = 0.5 * sum;
    double h = 0;
    double s = 0;
    if (d != 0) {
        s = lightness <= k.full / 2 ? d / sum : d / (2 * k.full - sum);
        h = hueOf(r, g, b, greatest, d);
    }
    return {std::trunc(h * k.hueOut - k.bias), std::trunc(lightness - k.bias), std::trunc(s * k.full - k.bias)};
}

Triple modelToRgb(std::uint32_t depth, const Triple& hls) {
    const Coding k = codingOf(depth);
    const double h = (hls.a + k.bias) * k.hueIn;
    const double l = (hls.b + k.bias) * k.fractionIn;
    const double s = (hls.c + k.bias) * k.fractionIn;
    if (s == 0) return {hls.b, hls.b, hls.b};
    const double m2 = l <= 0.5 ? (s + 1) * l : (s + l) - s * l;
    const double m1 = 2 * l - m2;
    const double red = h + 120 > 360 ? h + 120 - 360 : h + 120;
    const double blue = h - 120 < 0 ? h - 120 + 360 : h - 120;
    const auto stored = [&](double x) { return std::trunc(channelAt(x, m1, m2) * k.full - k.bias); };
    return {stored(red), stored(h), stored(blue)};
}

void modelRGB2HLS(Model& model, ZetImage* src, ZetImage* dst) { convert(model, {src, dst, true, "zetRGB2HLS"}); }
void modelHLS2RGB(Model& model, ZetImage* src, ZetImage* dst) { convert(model, {src, dst, false, "zetHLS2RGB"}); }

}  // namespace zetpxl::test
