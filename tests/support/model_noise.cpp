#include "tests/support/model_noise.h"

#include <algorithm>
#include <cmath>

#include "core/mathfun.h"
#include "tests/support/model_patch.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {

NoiseStream::NoiseStream(std::uint32_t seed)
    : lcg_(1131199209u),
      lag1_(seed),
      lag2_(seed * 69069u + 1013904243u),
      lag3_(lag2_ * 69069u + 1013904243u),
      borrow_(1) {}

std::uint32_t NoiseStream::draw() {
    lcg_ = lcg_ * 69069u + 1013904243u;
    std::uint32_t t = lag2_ - lag3_ - borrow_;
    borrow_ = t >> 31;
    if (borrow_) t -= 18;
    lag3_ = lag2_;
    lag2_ = lag1_;
    lag1_ = t;
    return lcg_ + t;
}

double NoiseStream::gaussian() {
    if (!needPair_) {
        needPair_ = true;
        return pending_;
    }
    double v1 = 0, v2 = 0, s = 0;
    do {
        v1 = static_cast<std::int32_t>(draw()) * 4.656612873077e-10;
        v2 = static_cast<std::int32_t>(draw()) * 4.656612873077e-10;
        s = v1 * v1 + v2 * v2;
    } while (!(s < 1.0 && s != 0));
    radius_ = std::sqrt((-2.0 / s) * ownLog(s));
    pending_ = v1;
    needPair_ = false;
    return v2;
}

namespace {

struct Noise {
    ZetImage* image;
    bool gaussian;
    double a, b;
    Area area;
    ChannelRange channels;
    NoiseStream stream;
};

void takeUniformRange(Noise& op, const ZetNoiseParam& param) {
    const std::uint32_t depth = op.image->depth;
    constexpr double kUnit = 1.0 / 4294967296.0;
    if (depth == ZET_DEPTH_32F) {
        op.a = std::min(param.lowFP, param.highFP);
        op.b = (std::max<double>(param.lowFP, param.highFP) - op.a) * kUnit;
        return;
    }
    std::int64_t low = std::min(param.lowInt, param.highInt);
    std::int64_t high = std::max(param.lowInt, param.highInt);
    if (depth != ZET_DEPTH_32S) {
        const std::int64_t span = (std::int64_t{1} << (depth & 0x7FFFFFFFu)) - 1;
        low = std::max(low, -span);
        high = std::min(high, span);
    }
    op.a = static_cast<double>(low);
    op.b = static_cast<double>(high - low) * kUnit;
}

void takeRange(Noise& op, const ZetNoiseParam& param) {
    if (!op.gaussian) return takeUniformRange(op, param);
    const bool isFloat = op.image->depth == ZET_DEPTH_32F;
    op.a = isFloat ? double{param.lowFP} : static_cast<double>(param.lowInt);
    op.b = isFloat ? double{param.highFP} : static_cast<double>(param.highInt);
}

std::uint32_t noisy(Noise& op, std::uint32_t pattern) {
    const std::uint32_t depth = op.image->depth;
    const double old = sampleValue(depth, pattern);
    const double drawn = op.gaussian ? op.stream.gaussian() : op.stream.draw();
    if (depth == ZET_DEPTH_32F) {
        const double added = op.gaussian ? (op.b * op.stream.radius()) * drawn + op.a : drawn * op.b + op.a;
        return floatPattern(static_cast<float>(old + added));
    }
    const double n = op.gaussian ? (op.stream.radius() * drawn) * op.b : drawn * op.b;
    return nearestSample(depth, old + (std::trunc(op.a) + std::trunc(n)));
}

void element(Noise& op, std::int32_t channel, std::int32_t y, std::int32_t x) {
    const ZetImage* mask = op.image->maskImage;
    if (mask && !maskBit(*mask, x - op.area.x, y - op.area.y)) return;
    putSample(*op.image, channel, y, x, noisy(op, getSample(*op.image, channel, y, x)));
}

void part(Noise& op, const Area& area) {
    const std::int32_t end = op.channels.first + op.channels.count;
    const auto pixels = [&](std::int32_t first, std::int32_t last) {
        for (std::int32_t y = area.y; y < area.y + area.height; ++y)
            for (std::int32_t x = area.x; x < area.x + area.width; ++x)
                for (std::int32_t c = first; c < last; ++c) element(op, c, y, x);
    };
    if (op.image->dataOrder == 0) return pixels(op.channels.first, end);
    for (std::int32_t c = op.channels.first; c < end; ++c) pixels(c, c + 1);
}

std::int32_t overTiles(Model& model, Noise& op) {
    const ZetTileInfo& tiles = *op.image->tileInfo;
    const ModelGrid grid = modelGrid(*op.image, op.area.height, op.area.width);
    for (std::int32_t row = grid.firstRow; row < grid.firstRow + grid.nRows; ++row)
        for (std::int32_t col = grid.firstCol; col < grid.firstCol + grid.nCols; ++col) {
            if (!modelFetch(*op.image, col, row, ZET_TILE_WRITE)) {
                model.report(ZET_StatusBadArgument, "zetNoiseImage", "(image->tileInfo->tileData == 0)", "zetnoise");
                return ZET_StatusInternal;
            }
            const Band xs = modelBand(op.area.x, op.area.width, tiles.width, col);
            const Band ys = modelBand(op.area.y, op.area.height, tiles.height, row);
            part(op, {xs.start, ys.start, xs.size, ys.size});
            modelRelease(*op.image, col, row);
        }
    return 0;
}

const char* refusalOf(const ZetImage& image, const ZetNoiseParam* param) {
    if (!param) return "(noiseParam == 0)";
    if (image.depth == ZET_DEPTH_1U) return "(image->depth == 1)";
    if (param->noise != 0 && param->noise != 1)
        return "((noiseParam->noise != ZET_NOISE_UNIFORM) && (noiseParam->noise != ZET_NOISE_GAUSSIAN))";
    return nullptr;
}

}  // namespace

std::int32_t modelNoiseImage(Model& model, ZetImage* image, const ZetNoiseParam* param) {
    if (model.checkImage(image)) {
        model.reportIncorrectImage("zetNoiseImage", "zetnoise");
        return model.status;
    }
    if (const char* words = refusalOf(*image, param)) {
        model.report(ZET_StatusBadArgument, "zetNoiseImage", words, "zetnoise");
        return ZET_StatusBadArgument;
    }
    Noise op{image, param->noise == 1, 0, 0, modelRegion(*image), modelChannels(*image), NoiseStream(param->seed)};
    if (image->maskImage) {
        const Area mask = modelRegion(*image->maskImage);
        op.area.width = std::min(op.area.width, mask.width);
        op.area.height = std::min(op.area.height, mask.height);
    }
    takeRange(op, *param);
    if (op.area.empty()) return 0;
    if (tiled(*image)) return overTiles(model, op);
    part(op, op.area);
    return 0;
}

}  // namespace zetpxl::test
