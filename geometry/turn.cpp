//   turn.1 a step right or down in the destination is a step along a row or column of the source: addresses only, no positions
//   turn.2 quarter turns go in blocks, so that the rows of both sides stay in cache
#include "geometry/turn.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "geometry/turnbits.h"
#include "geometry/turnquarter.h"
#include "geometry/warp.h"

namespace zetpxl {

namespace {

constexpr std::int32_t kBlock = 32;

struct TurnRun {
    const std::uint8_t* src;  // of the first pixel; 1U: of its row's first byte
    std::ptrdiff_t srcRight;  // bytes (1U: bits) for a step right in the destination
    std::ptrdiff_t srcDown;
    std::uint8_t* dst;
    std::ptrdiff_t dstPixelStep;
    std::ptrdiff_t dstRowStep;
    std::int32_t width;
    std::int32_t height;
    std::int32_t group;  // samples copied together
};

// Pixels of `Bytes` each; 0: of as many samples as the run tells.
template <class T, std::size_t Bytes>
void copyPixel(const TurnRun& run, const std::uint8_t* from, std::uint8_t* to) {
    if constexpr (Bytes > 0) {
        std::memcpy(to, from, Bytes);
    } else {
        for (std::int32_t k = 0; k < run.group; ++k) reinterpret_cast<T*>(to)[k] = reinterpret_cast<const T*>(from)[k];
    }
}

template <class T, std::size_t Bytes>
void turnBlock(const TurnRun& run, std::int32_t x0, std::int32_t y0, std::int32_t width, std::int32_t height) {
    const std::ptrdiff_t srcRight = run.srcRight;
    const std::ptrdiff_t dstPixelStep = run.dstPixelStep;
    for (std::ptrdiff_t y = y0; y < std::ptrdiff_t{y0} + height; ++y) {
        const std::uint8_t* from = run.src + x0 * srcRight + y * run.srcDown;
        std::uint8_t* to = run.dst + x0 * dstPixelStep + y * run.dstRowStep;
        for (std::int32_t x = 0; x < width; ++x, from += srcRight, to += dstPixelStep)
            copyPixel<T, Bytes>(run, from, to);
    }
}

// Samples in reverse order, `from` being the last.
template <class T>
void reverseSamples(const T* from, T* to, std::ptrdiff_t count) {
    constexpr std::ptrdiff_t kVector = 32 / sizeof(T);
    using Vector [[gnu::vector_size(32)]] = T;
    std::ptrdiff_t x = 0;
    for (; x + kVector <= count; x += kVector) {
        Vector v;
        std::memcpy(&v, from - x - (kVector - 1), sizeof v);
        Vector reversed;
        for (std::ptrdiff_t i = 0; i < kVector; ++i) reversed[i] = v[kVector - 1 - i];
        std::memcpy(to + x, &reversed, sizeof v);
    }
    for (; x < count; ++x) to[x] = from[-x];
}

// A half turn of single samples: each row backward, which needs no blocks.
template <class T>
void reverseRows(const TurnRun& run) {
    for (std::ptrdiff_t y = 0; y < run.height; ++y) {
        const T* from = reinterpret_cast<const T*>(run.src + y * run.srcDown);
        T* to = reinterpret_cast<T*>(run.dst + y * run.dstRowStep);
        reverseSamples(from, to, run.width);
    }
}

// Whether any order of bytes is one instruction; the compiler moves them one by one where it is not.
#ifdef __SSSE3__
constexpr bool hasByteShuffle = true;
#else
constexpr bool hasByteShuffle = false;
#endif

// Pixels of three bytes in reverse order, `from` being the last. Five go at a time, with a byte of the pixel before them that
// comes to lie on the pixel behind them, and is replaced by it.
void reverseTriples(const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t count) {
    using Vector [[gnu::vector_size(16)]] = std::uint8_t;
    for (; count > 5; count -= 5, from -= 15, to += 15) {
        Vector v;
        std::memcpy(&v, from - 13, sizeof v);
        v = __builtin_shufflevector(v, v, 13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, 0);
        std::memcpy(to, &v, sizeof v);
    }
    for (; count > 0; --count, from -= 3, to += 3) std::memcpy(to, from, 3);
}

void reverseTripleRows(const TurnRun& run) {
    for (std::ptrdiff_t y = 0; y < run.height; ++y)
        reverseTriples(run.src + y * run.srcDown, run.dst + y * run.dstRowStep, run.width);
}

template <class T, std::size_t Bytes>
void turnPixelsOf(const TurnRun& run) {
    // A half turn goes along rows on both sides.
    if (std::abs(run.srcRight) <= std::abs(run.srcDown)) return turnBlock<T, Bytes>(run, 0, 0, run.width, run.height);
    for (std::int32_t y = 0; y < run.height; y += kBlock)
        for (std::int32_t x = 0; x < run.width; x += kBlock)
            turnBlock<T, Bytes>(run, x, y, std::min(kBlock, run.width - x), std::min(kBlock, run.height - y));
}

// A quarter turn of pixels side by side on both sides; false where it is none.
bool turnDense(const TurnRun& run, std::ptrdiff_t pixelBytes) {
    if (run.dstPixelStep != pixelBytes || std::abs(run.srcDown) != pixelBytes) return false;
    const QuarterRoutine turn = quarterRoutine(pixelBytes);
    if (!turn) return false;
    const std::ptrdiff_t last = run.srcDown < 0 ? run.height - 1 : 0;
    turn({run.src + last * run.srcDown, run.srcRight, run.dst + last * run.dstRowStep,
          last > 0 ? -run.dstRowStep : run.dstRowStep, run.width, run.height});
    return true;
}

template <class T>
void turnSamples(const TurnRun& run) {
    constexpr auto bytes = static_cast<std::ptrdiff_t>(sizeof(T));
    if (turnDense(run, bytes * run.group)) return;
    if (run.group == 1 && run.dstPixelStep == bytes && run.srcRight == -bytes) return reverseRows<T>(run);
    if (hasByteShuffle && run.group * bytes == 3 && run.dstPixelStep == 3 && run.srcRight == -3)
        return reverseTripleRows(run);
    if (run.group == 1) return turnPixelsOf<T, sizeof(T)>(run);
    if (run.group == 3) return turnPixelsOf<T, 3 * sizeof(T)>(run);
    if (run.group == 4) return turnPixelsOf<T, 4 * sizeof(T)>(run);
    turnPixelsOf<T, 0>(run);
}

using TurnRoutine = void (*)(const TurnRun& run);

// By size of a sample; bits have a way of their own.
constexpr std::array<TurnRoutine, 4> turnRoutines = {nullptr, turnSamples<std::uint8_t>, turnSamples<std::uint16_t>,
                                                     turnSamples<std::uint32_t>};

// Steps in the source, in columns and rows, for a step right and a step down in the destination.
struct TurnSteps {
    std::int32_t rightX, rightY, downX, downY;
};

constexpr TurnSteps stepsOf(std::int32_t turn) {
    if (turn == 90) return {0, 1, -1, 0};
    if (turn == 180) return {-1, 0, 0, -1};
    return {0, -1, 1, 0};
}

// The source's corners in the destination, in 64 bits: shifts may be as large as a double's whole numbers are exact.
struct Extent {
    double x0, y0, x1, y1;
};

Extent imageOf(const ZetRoiBounds& s, std::int32_t turn, double xs, double ys) {
    if (turn == 90) return {xs + s.y0, ys - s.x1, xs + s.y1, ys - s.x0};
    if (turn == 180) return {xs - s.x1, ys - s.y1, xs - s.x0, ys - s.y0};
    return {xs - s.y1, ys + s.x0, xs - s.y0, ys + s.x1};
}

bool intersect(const ZetRoiBounds& src, const ZetRoiBounds& dst, std::int32_t turn, double xs, double ys,
               TurnArea* area) {
    const Extent e = imageOf(src, turn, xs, ys);
    const double x0 = std::max<double>(e.x0, dst.x0);
    const double y0 = std::max<double>(e.y0, dst.y0);
    const double x1 = std::min<double>(e.x1, dst.x1);
    const double y1 = std::min<double>(e.y1, dst.y1);
    if (!(x0 <= x1) || !(y0 <= y1)) return false;
    const double sx = turn == 90 ? ys - y0 : turn == 180 ? xs - x0 : y0 - ys;
    const double sy = turn == 90 ? x0 - xs : turn == 180 ? ys - y0 : xs - x0;
    const auto word = [](double v) { return static_cast<std::int32_t>(v); };
    *area = {word(x0), word(y0), word(x1 - x0) + 1, word(y1 - y0) + 1, word(sx), word(sy)};
    return true;
}

void turnPixels(const ZetImage* src, const ZetImage* dst, const TurnArea& area, const TurnSteps& steps,
                std::int32_t nProc) {
    const std::int32_t srcChannel = std::max(regionCoi(src) - 1, 0);
    const std::int32_t dstChannel = std::max(regionCoi(dst) - 1, 0);
    const SampleGrid s = sampleGrid(src, 0);
    const SampleGrid d = sampleGrid(dst, 0);
    const bool together = src->dataOrder == 0 && dst->dataOrder == 0;
    TurnRun run{ownPixelAddress(src, area.sx, area.sy, srcChannel),
                steps.rightX * s.pixelStep + steps.rightY * s.rowStep,
                steps.downX * s.pixelStep + steps.downY * s.rowStep,
                ownPixelAddress(dst, area.dx, area.dy, dstChannel),
                d.pixelStep,
                d.rowStep,
                area.width,
                area.height,
                together ? nProc : 1};
    for (std::int32_t plane = 0; plane < (together ? 1 : nProc); ++plane) {
        turnRoutines[static_cast<std::size_t>(sizeIndex(src->depth))](run);
        run.src += s.channelStep;
        run.dst += d.channelStep;
    }
}

// Channels to process; 0 also where there is nothing to do.
bool resolveChannels(const ZetImage* image, std::int32_t* nProc) {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t rowStep = 0;
    std::ptrdiff_t planeStep = 0;
    std::int32_t bit = 0;
    return ownRoiOrigin(image, &data, &rowStep, nProc, &planeStep, &bit) != 0;
}

}  // namespace

void turnExactly(const Operation& op, ZetImage* srcImage, ZetImage* dstImage, std::int32_t turn, double xShift,
                 double yShift) {
    if (!checkImages(op, {srcImage, dstImage})) return;
    if (!checkGeometryImages(op, srcImage, dstImage, "srcImage->depth & ZET_DEPTH_SIGN")) return;
    ZetRoiBounds src;
    ZetRoiBounds dst;
    std::int32_t srcProc = 0;
    std::int32_t dstProc = 0;
    if (!ownRoiBounds(srcImage, &src, 1) || !ownRoiBounds(dstImage, &dst, 1)) return;
    if (!resolveChannels(srcImage, &srcProc) || !resolveChannels(dstImage, &dstProc)) return;
    if (srcProc != dstProc)
        return report(op, ZET_StatusBadArgument,
                      "Number of processed channels of srcImage != Number of processed channels of dstImage");
    TurnArea area{};
    if (srcProc == 0 || !intersect(src, dst, turn, xShift, yShift, &area)) return;
    if (srcImage->depth == ZET_DEPTH_1U) return turnBits(srcImage, dstImage, area, turn);
    turnPixels(srcImage, dstImage, area, stepsOf(turn), srcProc);
}

}  // namespace zetpxl
