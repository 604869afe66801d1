// Adds reproducible noise, uniform or Gaussian, to an image in place.
//   noise.1 the generator starts afresh from the seed with every call
//   noise.2 draws are taken in the order of the elements: planes, rows and columns, or rows, pixels and channels; elements
//           that are not processed or masked out take none
//   noise.3 integer results saturate; products are doubles, each rounded once
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

#include "convert/noisedraws.h"
#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/report.h"
#include "core/tiles.h"
#include "pixel/maskrows.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetNoiseImage", "zetnoise"};

// The factor of the noise and what is added to it.
struct NoiseScale {
    double a;
    double b;
};

struct Uniform {
    static void fill(NoiseQueue* q) { drawUniform(q); }
    static double whole(const NoiseQueue& q, std::ptrdiff_t i, double b) { return q.drawn[i] * b; }
    static double real(const NoiseQueue& q, std::ptrdiff_t i, const NoiseScale& scale) {
        return q.drawn[i] * scale.b + scale.a;
    }
    // Of whole(), as a multiple of |b|.
    static constexpr double kGreatest = 4294967296.0;
};

struct Gaussian {
    static void fill(NoiseQueue* q) { drawGaussian(q); }
    static double whole(const NoiseQueue& q, std::ptrdiff_t i, double b) { return (q.radius[i] * q.sample[i]) * b; }
    static double real(const NoiseQueue& q, std::ptrdiff_t i, const NoiseScale& scale) {
        return (scale.b * q.radius[i]) * q.sample[i] + scale.a;
    }
    // A square of the least draws has a logarithm above -90.
    static constexpr double kGreatest = 16;
};

// `group` elements of each pixel, pixels `step` elements apart.
struct NoiseRow {
    std::uint8_t* data;
    std::ptrdiff_t width;
    std::int32_t group;
    std::int32_t step;
};

using NoiseRoutine = void (*)(const NoiseRow& row, const std::uint8_t* mask, const NoiseScale& scale,
                              NoiseQueue* queue);

// Adds queue entries from `next` on to `count` elements. Whole is a type that holds an element and its noise.
template <class T, class Noise, class Whole>
void addWhole(T* __restrict elements, std::ptrdiff_t count, const NoiseQueue& q, std::ptrdiff_t next,
              const NoiseScale& scale) {
    const auto base = static_cast<Whole>(scale.a);
    const double b = scale.b;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const Whole sum = elements[i] + (base + static_cast<Whole>(Noise::whole(q, next + i, b)));
        elements[i] =
            static_cast<T>(std::clamp<Whole>(sum, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
}

template <class Noise>
void addReal(float* __restrict elements, std::ptrdiff_t count, const NoiseQueue& q, std::ptrdiff_t next,
             const NoiseScale& scale) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        elements[i] = static_cast<float>(static_cast<double>(elements[i]) + Noise::real(q, next + i, scale));
}

// Whether 32 bits hold an element of at most 16, with its noise.
template <class Noise>
bool isSmall(const NoiseScale& scale) {
    constexpr double kRoom = 1 << 29;
    return std::abs(scale.a) <= kRoom && std::abs(scale.b) * Noise::kGreatest <= kRoom;
}

template <class T, class Noise>
void addEntries(T* elements, std::ptrdiff_t count, const NoiseQueue& q, std::ptrdiff_t next, const NoiseScale& scale) {
    if constexpr (std::is_same_v<T, float>) {
        addReal<Noise>(elements, count, q, next, scale);
    } else {
        if (sizeof(T) < 4 && isSmall<Noise>(scale))
            return addWhole<T, Noise, std::int32_t>(elements, count, q, next, scale);
        addWhole<T, Noise, std::int64_t>(elements, count, q, next, scale);
    }
}

template <class T, class Noise>
void noiseRun(T* elements, std::ptrdiff_t count, const NoiseScale& scale, NoiseQueue* queue) {
    while (count > 0) {
        if (queue->next == queue->count) Noise::fill(queue);
        const std::ptrdiff_t n = std::min(count, queue->count - queue->next);
        addEntries<T, Noise>(elements, n, *queue, queue->next, scale);
        queue->next += n;
        elements += n;
        count -= n;
    }
}

// `mask` holds a byte for each pixel, or is null.
template <class T, class Noise>
void noiseRow(const NoiseRow& row, const std::uint8_t* mask, const NoiseScale& scale, NoiseQueue* queue) {
    T* pixels = reinterpret_cast<T*>(row.data);
    if (!mask && row.group == row.step) return noiseRun<T, Noise>(pixels, row.width * row.group, scale, queue);
    for (std::ptrdiff_t x = 0; x < row.width; ++x)
        if (!mask || mask[x]) noiseRun<T, Noise>(pixels + x * row.step, row.group, scale, queue);
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
    NoiseQueue queue;
    std::int32_t firstChannel;
    std::int32_t nProc;
};

void runRow(NoiseWork* work, const NoiseRow& row, const MaskBits& mask, std::ptrdiff_t sampleBytes) {
    if (!mask.data) return work->routine(row, nullptr, work->scale, &work->queue);
    forMaskPieces(mask, row.width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* bytes) {
                      NoiseRow piece = row;
                      piece.data += first * row.step * sampleBytes;
                      piece.width = count;
                      work->routine(piece, cover == MaskCover::All ? nullptr : bytes, work->scale, &work->queue);
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
    NoiseWork work;
    const auto index = static_cast<std::size_t>(depthIndex(image->depth));
    const bool isUniform = p.noise == ZET_NOISE_UNIFORM;
    work.routine = isUniform ? noiseRoutines<Uniform>[index] : noiseRoutines<Gaussian>[index];
    work.scale = isUniform ? uniformScale(p, image->depth) : gaussianScale(p, image->depth);
    work.queue.draws = startDraws(p.seed);
    work.queue.next = work.queue.count = 0;
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
