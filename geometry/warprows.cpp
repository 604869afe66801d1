//   warp.1 the source position is summed along a span, and its base from row to row: the sums decide which pixel is nearest,
//          so they are never formed afresh
#include <array>

#include "core/depth.h"
#include "geometry/warp.h"

namespace zetpxl {

namespace {

// One destination pixel of a span from its source position.
using WarpPixel = void (*)(const WarpRun& run, double sx, double sy, std::int32_t x, std::uint8_t* row);

void nearestBit(const WarpRun& run, double sx, double sy, std::int32_t x, std::uint8_t* row) {
    std::int32_t column = 0;
    std::int32_t line = 0;
    if (toIndex(sx + 0.5, &column) && toIndex(sy + 0.5, &line)) putBit(row, x, bitAt(run.src, column, line));
}

template <class T>
void nearest(const WarpRun& run, double sx, double sy, std::int32_t x, std::uint8_t* row) {
    nearestPixel<T>(run.src, sx, sy, run.nProc, row + x * run.dst.pixelStep, run.dst.channelStep);
}

template <class T>
void linear(const WarpRun& run, double sx, double sy, std::int32_t x, std::uint8_t* row) {
    LinearTap tx;
    LinearTap ty;
    if (!linearTap(sx, run.src.lastColumn, &tx) || !linearTap(sy, run.src.lastRow, &ty)) return;
    linearPixel<T>(run.src, tx, ty, run.nProc, row + x * run.dst.pixelStep, run.dst.channelStep);
}

template <class T>
void cubic(const WarpRun& run, double sx, double sy, std::int32_t x, std::uint8_t* row) {
    cubicPixel<T>(run.src, sx, sy, run.nProc, row + x * run.dst.pixelStep, run.dst.channelStep);
}

template <WarpPixel Pixel>
void warpSpans(const WarpRun& run) {
    const double* d = run.inverse.c;
    double baseX = d[1] * run.spans->yFirst + d[2];
    double baseY = d[4] * run.spans->yFirst + d[5];
    for (std::int32_t y = run.spans->yFirst; y <= run.spans->yLast; ++y, baseX += d[1], baseY += d[4]) {
        const auto i = static_cast<std::size_t>(y - run.spans->yFirst);
        const std::int32_t left = run.spans->left[i];
        std::uint8_t* row = run.dst.origin + y * run.dst.rowStep;
        double sx = d[0] * left + baseX;
        double sy = d[3] * left + baseY;
        for (std::int32_t x = left; x <= run.spans->right[i]; ++x, sx += d[0], sy += d[3]) Pixel(run, sx, sy, x, row);
    }
}

using WarpRoutine = void (*)(const WarpRun& run);
using WarpRoutines = std::array<WarpRoutine, 3>;

template <class T>
constexpr WarpRoutines warpRoutines = {warpSpans<nearest<T>>, warpSpans<linear<T>>, warpSpans<cubic<T>>};

// By depth and interpolation; signed depths are refused, and bits always take the nearest.
constexpr std::array<WarpRoutines, kDepthCount> warpTable = {{
    {warpSpans<nearestBit>, nullptr, nullptr},
    warpRoutines<std::uint8_t>,
    {nullptr, nullptr, nullptr},
    warpRoutines<std::uint16_t>,
    {nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr},
    warpRoutines<float>,
}};

}  // namespace

void warpPixels(const WarpRun& run, std::uint32_t depth, std::int32_t interpolation) {
    warpTable[static_cast<std::size_t>(depthIndex(depth))][static_cast<std::size_t>(interpolation)](run);
}

}  // namespace zetpxl
