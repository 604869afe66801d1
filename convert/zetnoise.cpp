// Adds reproducible noise, uniform or Gaussian, to an image in place.
//   noise.1 the generator adds a congruential sequence and a subtract-with-borrow sequence of modulus 2^32 - 18 (Marsaglia
//           and Zaman, "A new class of random number generators", 1991); it starts afresh from the seed with every call
//   noise.2 draws are taken in the order of the elements: planes, rows and columns, or rows, pixels and channels; elements
//           that are not processed or masked out take none
//   noise.3 Gaussian samples come in pairs by the polar method (Marsaglia and Bray, 1964), the second of the two first
//   noise.4 integer results saturate; products are doubles, each rounded once
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "core/check.h"
#include "core/depth.h"
#include "core/mathfun.h"
#include "core/region.h"
#include "core/report.h"
#include "core/tiles.h"
#include "pixel/maskrows.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetNoiseImage", "zetnoise"};

constexpr std::uint32_t kMultiplier = 69069;
constexpr std::uint32_t kIncrement = 1013904243;

struct ZetNoiseState {
    std::uint32_t lcg;
    std::uint32_t lag1;
    std::uint32_t lag2;
    std::uint32_t lag3;
    std::uint32_t borrow;
    bool needPair;
    double radius;
    double pending;
};

constexpr ZetNoiseState startState(std::uint32_t seed) {
    const std::uint32_t lag2 = seed * kMultiplier + kIncrement;
    const std::uint32_t lag3 = lag2 * kMultiplier + kIncrement;
    return {1131199209, seed, lag2, lag3, 1, true, 0, 0};
}

constexpr std::uint32_t draw(ZetNoiseState* s) {
    s->lcg = s->lcg * kMultiplier + kIncrement;
    std::uint32_t t = s->lag2 - s->lag3 - s->borrow;
    s->borrow = t >> 31;
    t -= 18 * s->borrow;
    s->lag3 = s->lag2;
    s->lag2 = s->lag1;
    s->lag1 = t;
    return s->lcg + t;
}

constexpr std::uint32_t secondDraw(std::uint32_t seed) {
    ZetNoiseState state = startState(seed);
    draw(&state);
    return draw(&state);
}
static_assert(startState(1).lag2 == 1013973312 && startState(1).lag3 == 1399862195);
static_assert(secondDraw(1) == 2706444681);

// The factor of the noise and what is added to it.
struct NoiseScale {
    double a;
    double b;
};

double gaussianSample(ZetNoiseState* s) {
    if (!s->needPair) {
        s->needPair = true;
        return s->pending;
    }
    constexpr double unit = 4.656612873077e-10;
    double v1 = 0;
    double v2 = 0;
    double square = 0;
    do {
        v1 = static_cast<std::int32_t>(draw(s)) * unit;
        v2 = static_cast<std::int32_t>(draw(s)) * unit;
        square = v1 * v1 + v2 * v2;
    } while (!(square < 1.0) || square == 0.0);
    s->radius = std::sqrt((-2.0 / square) * ownLog(square));
    s->pending = v1;
    s->needPair = false;
    return v2;
}

struct Uniform {
    static std::int64_t whole(ZetNoiseState* s, double b) { return static_cast<std::int64_t>(draw(s) * b); }
    static double real(ZetNoiseState* s, const NoiseScale& scale) { return draw(s) * scale.b + scale.a; }
};

struct Gaussian {
    static std::int64_t whole(ZetNoiseState* s, double b) {
        const double sample = gaussianSample(s);
        return static_cast<std::int64_t>((s->radius * sample) * b);
    }
    static double real(ZetNoiseState* s, const NoiseScale& scale) {
        const double sample = gaussianSample(s);
        return (scale.b * s->radius) * sample + scale.a;
    }
};

template <class T, class Noise>
T noisy(T pixel, ZetNoiseState* state, const NoiseScale& scale, std::int64_t base) {
    if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(static_cast<double>(pixel) + Noise::real(state, scale));
    } else {
        const std::int64_t sum = pixel + (base + Noise::whole(state, scale.b));
        return static_cast<T>(
            std::clamp<std::int64_t>(sum, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
}

// `group` elements of each pixel, pixels `step` elements apart.
struct NoiseRow {
    std::uint8_t* data;
    std::ptrdiff_t width;
    std::int32_t group;
    std::int32_t step;
};

using NoiseRoutine = void (*)(const NoiseRow& row, const std::uint8_t* mask, const NoiseScale& scale,
                              ZetNoiseState* state);

// `mask` holds a byte for each pixel, or is null. The state is kept at hand, away from what pixels may alias.
template <class T, class Noise>
void noiseRow(const NoiseRow& row, const std::uint8_t* mask, const NoiseScale& scale, ZetNoiseState* state) {
    T* pixels = reinterpret_cast<T*>(row.data);
    const NoiseScale local = scale;
    const std::int64_t base = std::is_same_v<T, float> ? 0 : static_cast<std::int64_t>(local.a);
    ZetNoiseState s = *state;
    for (std::ptrdiff_t x = 0; x < row.width; ++x) {
        if (mask && !mask[x]) continue;
        for (std::int32_t k = 0; k < row.group; ++k) {
            T& pixel = pixels[x * row.step + k];
            pixel = noisy<T, Noise>(pixel, &s, local, base);
        }
    }
    *state = s;
}

template <class Noise>
constexpr std::array<NoiseRoutine, kDepthCount> noiseRoutines = {
    nullptr,  // 1U is refused
    noiseRow<std::uint8_t, Noise>,
    noiseRow<std::int8_t, Noise>,
    noiseRow<std::uint16_t, Noise>,
    noiseRow<std::int16_t, Noise>,
    noiseRow<std::int32_t, Noise>,
    noiseRow<float, Noise>,
};

struct NoiseWork {
    NoiseRoutine routine;
    NoiseScale scale;
    ZetNoiseState state;
    std::int32_t firstChannel;
    std::int32_t nProc;
};

void runRow(NoiseWork* work, const NoiseRow& row, const MaskBits& mask, std::ptrdiff_t sampleBytes) {
    if (!mask.data) return work->routine(row, nullptr, work->scale, &work->state);
    forMaskPieces(mask, row.width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* bytes) {
                      NoiseRow piece = row;
                      piece.data += first * row.step * sampleBytes;
                      piece.width = count;
                      work->routine(piece, cover == MaskCover::All ? nullptr : bytes, work->scale, &work->state);
                  });
}

// The inner routine: an untiled image or a view of a tile, and its mask.
void runBlock(NoiseWork* work, const ZetImage* image, const ZetImage* mask) {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t bit = 0;
    std::uint8_t* data = ownRoiStart(image, &width, &height, work->firstChannel, &bit);
    const std::uint8_t* maskData = nullptr;
    if (mask) {
        std::int32_t maskWidth = 0;
        std::int32_t maskHeight = 0;
        maskData = ownRoiStart(mask, &maskWidth, &maskHeight, 0, &bit);
        width = std::min(width, maskWidth);
        height = std::min(height, maskHeight);
    }
    const bool planar = image->dataOrder == 1;
    const std::int32_t planes = planar ? work->nProc : 1;
    NoiseRow row{nullptr, width, planar ? 1 : work->nProc, planar ? 1 : image->nChannels};
    for (std::ptrdiff_t plane = 0; plane < planes; ++plane)
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            row.data = data + plane * planeBytes(image) + y * image->widthStep;
            const MaskBits bits{mask ? maskData + y * mask->widthStep : nullptr, bit};
            runRow(work, row, bits, sampleBytes(image->depth));
        }
}

bool runTiles(NoiseWork* work, ZetImage* image) {
    const ZetImage* mask = image->maskImage;
    ZetRoiRect rect;
    ZetRoiRect maskRect{0, 0, 0, 0, 0x7FFFFFFF, 0x7FFFFFFF};
    ownRoiRect(image, &rect);
    if (mask) ownRoiRect(mask, &maskRect);
    const std::int32_t width = std::min(rect.width, maskRect.width);
    const std::int32_t height = std::min(rect.height, maskRect.height);
    if (width < 1 || height < 1) return true;
    TileView view;
    TileView maskView;
    makeView(&view, image);
    setTileGeometry(&view, image);
    if (mask) makeView(&maskView, mask);
    const TileGrid grid = tileGrid(image, height, width);
    for (std::int32_t r = 0; r < grid.y.count; ++r)
        for (std::int32_t c = 0; c < grid.x.count; ++c) {
            const std::int32_t w = grid.x.bandSize(c);
            const std::int32_t h = grid.y.bandSize(r);
            view.roi = {view.roi.coi, grid.x.offset(c), grid.y.offset(r), w, h};
            if (mask)
                maskView.roi = {maskView.roi.coi, maskRect.xOffset + grid.x.distance(c),
                                maskRect.yOffset + grid.y.distance(r), w, h};
            view.image.imageData = fetchTile(image, grid.x.first + c, grid.y.first + r, ZET_TILE_WRITE);
            if (!view.image.imageData) {
                report(op, ZET_StatusBadArgument, "(image->tileInfo->tileData == 0)");
                return false;
            }
            runBlock(work, &view.image, mask ? &maskView.image : nullptr);
            releaseTile(image, grid.x.first + c, grid.y.first + r);
        }
    return true;
}

constexpr double kTwoToMinus32 = 1.0 / 4294967296.0;

NoiseScale uniformScale(const ZetNoiseParam& p, std::uint32_t depth) {
    if (depth == ZET_DEPTH_32F) {
        const double low = std::min(p.lowFP, p.highFP);
        const double high = std::max(p.lowFP, p.highFP);
        return {low, (high - low) * kTwoToMinus32};
    }
    std::int32_t low = std::min(p.lowInt, p.highInt);
    std::int32_t high = std::max(p.lowInt, p.highInt);
    if (sampleBits(depth) < 32) {
        const std::int32_t span = sampleBits(depth) == 8 ? 255 : 65535;
        low = std::max(low, -span);
        high = std::min(high, span);
    }
    return {static_cast<double>(low), (static_cast<double>(high) - static_cast<double>(low)) * kTwoToMinus32};
}

NoiseScale gaussianScale(const ZetNoiseParam& p, std::uint32_t depth) {
    if (depth == ZET_DEPTH_32F) return {static_cast<double>(p.lowFP), static_cast<double>(p.highFP)};
    return {static_cast<double>(p.lowInt), static_cast<double>(p.highInt)};
}

NoiseWork prepare(const ZetImage* image, const ZetNoiseParam& p) {
    NoiseWork work{};
    const auto index = static_cast<std::size_t>(depthIndex(image->depth));
    const bool isUniform = p.noise == ZET_NOISE_UNIFORM;
    work.routine = isUniform ? noiseRoutines<Uniform>[index] : noiseRoutines<Gaussian>[index];
    work.scale = isUniform ? uniformScale(p, image->depth) : gaussianScale(p, image->depth);
    work.state = startState(p.seed);
    const std::int32_t coi = regionCoi(image);
    work.firstChannel = std::max(coi - 1, 0);
    work.nProc = coi > 0 ? 1 : image->nChannels - (image->alphaChannel ? 1 : 0);
    return work;
}

const char* argumentFault(const ZetImage* image, const ZetNoiseParam* p) {
    if (!p) return "(noiseParam == 0)";
    if (image->depth == ZET_DEPTH_1U) return "(image->depth == 1)";
    if (p->noise != ZET_NOISE_UNIFORM && p->noise != ZET_NOISE_GAUSSIAN)
        return "((noiseParam->noise != ZET_NOISE_UNIFORM) && (noiseParam->noise != ZET_NOISE_GAUSSIAN))";
    return nullptr;
}

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

void zetNoiseUniformInit(ZetNoiseParam* noiseParam, uint32_t seed, int32_t low, int32_t high) {
    noiseParam->noise = ZET_NOISE_UNIFORM;
    noiseParam->seed = seed;
    noiseParam->lowInt = low;
    noiseParam->highInt = high;
}

void zetNoiseGaussianInit(ZetNoiseParam* noiseParam, uint32_t seed, int32_t mean, int32_t stDev) {
    noiseParam->noise = ZET_NOISE_GAUSSIAN;
    noiseParam->seed = seed;
    noiseParam->lowInt = mean;
    noiseParam->highInt = stDev;
}

int32_t zetNoiseImage(ZetImage* image, const ZetNoiseParam* noiseParam) {
    if (ownCheckImage(image) != ZET_StatusOk) {
        reportIncorrectImage(op);
        return zetGetErrStatus();
    }
    if (const char* fault = argumentFault(image, noiseParam)) {
        report(op, ZET_StatusBadArgument, fault);
        return ZET_StatusBadArgument;
    }
    NoiseWork work = prepare(image, *noiseParam);
    if (image->tileInfo) return runTiles(&work, image) ? ZET_StatusOk : ZET_StatusInternal;
    runBlock(&work, image, image->maskImage);
    return ZET_StatusOk;
}
