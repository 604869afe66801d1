//   warp.1 the source position is summed along a span, and its base from row to row: the sums decide which pixel is nearest,
//          so they are never formed afresh
//   warp.2 the sums of one row wait for each other, so several rows go side by side
//   warp.3 a slanted row crosses many rows of the source, so bands of rows are made piece by piece, whose sources stay in the
//          cache; bands in blocks, whose pages the processor keeps the addresses of
#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "core/depth.h"
#include "geometry/samplerows.h"
#include "geometry/warp.h"

namespace zetpxl {

namespace {

// A row of the polygon and the source position of its next pixel.
struct Span {
    std::int32_t y;
    std::int32_t next, last;  // columns
    double sx, sy;
};

constexpr std::size_t kRows = 4;
constexpr std::size_t kBand = 32;
constexpr std::size_t kBlockRows = 512;
constexpr std::int64_t kBlockColumns = 128;
using Spans = std::array<Span, kBlockRows>;
using Lists = std::array<PositionList, kRows>;

using Four [[gnu::vector_size(32)]] = double;

// Four steps of four sums each, a sum's steps side by side.
void nextFour(const Four& step, Four* sums, double* (&to)[kRows], std::ptrdiff_t at) {
    const Four s0 = *sums;
    const Four s1 = s0 + step;
    const Four s2 = s1 + step;
    const Four s3 = s2 + step;
    *sums = s3 + step;
    const Four low01 = __builtin_shufflevector(s0, s1, 0, 4, 2, 6);
    const Four high01 = __builtin_shufflevector(s0, s1, 1, 5, 3, 7);
    const Four low23 = __builtin_shufflevector(s2, s3, 0, 4, 2, 6);
    const Four high23 = __builtin_shufflevector(s2, s3, 1, 5, 3, 7);
    const Four rows[kRows] = {
        __builtin_shufflevector(low01, low23, 0, 1, 4, 5), __builtin_shufflevector(high01, high23, 0, 1, 4, 5),
        __builtin_shufflevector(low01, low23, 2, 3, 6, 7), __builtin_shufflevector(high01, high23, 2, 3, 6, 7)};
    for (std::size_t r = 0; r < kRows; ++r) std::memcpy(to[r] + at, &rows[r], sizeof rows[r]);
}

// The next positions of kRows spans; those past a span's end are not counted.
void nextPositions(const AffineMatrix& inverse, Span* spans, Lists* lists) {
    const Four dx = {inverse.c[0], inverse.c[0], inverse.c[0], inverse.c[0]};
    const Four dy = {inverse.c[3], inverse.c[3], inverse.c[3], inverse.c[3]};
    Four sx = {spans[0].sx, spans[1].sx, spans[2].sx, spans[3].sx};
    Four sy = {spans[0].sy, spans[1].sy, spans[2].sy, spans[3].sy};
    double* xs[] = {(*lists)[0].x, (*lists)[1].x, (*lists)[2].x, (*lists)[3].x};
    double* ys[] = {(*lists)[0].y, (*lists)[1].y, (*lists)[2].y, (*lists)[3].y};
    for (std::ptrdiff_t i = 0; i < kPositions; i += 4) {
        nextFour(dx, &sx, xs, i);
        nextFour(dy, &sy, ys, i);
    }
    for (std::size_t r = 0; r < kRows; ++r) {
        Span& span = spans[r];
        PositionList& list = (*lists)[r];
        list.count = std::clamp<std::ptrdiff_t>(std::ptrdiff_t{span.last} - span.next + 1, 0, kPositions);
        for (std::ptrdiff_t i = 0; i < list.count; ++i) list.column[i] = static_cast<std::int32_t>(span.next + i);
        span.next += static_cast<std::int32_t>(list.count);
        span.sx = sx[static_cast<std::ptrdiff_t>(r)];
        span.sy = sy[static_cast<std::ptrdiff_t>(r)];
    }
}

bool hasIndex(double position, double bias) {
    std::int32_t index = 0;
    return toIndex(position + bias, &index);
}

// Leaves positions without an index out. Sums of one step go one way, so ends that have an index vouch for all between.
void keepIndexed(double bias, PositionList* list) {
    const auto indexed = [&](std::ptrdiff_t i) { return hasIndex(list->x[i], bias) && hasIndex(list->y[i], bias); };
    if (indexed(0) && indexed(list->count - 1)) return;
    std::ptrdiff_t kept = 0;
    for (std::ptrdiff_t i = 0; i < list->count; ++i) {
        list->x[kept] = list->x[i];
        list->y[kept] = list->y[i];
        list->column[kept] = list->column[i];
        kept += indexed(i);
    }
    list->count = kept;
}

struct WarpRule {
    SampleRoutine make;
    double bias;  // added before a position is cut to an index
};

constexpr std::int32_t kRowsAhead = 12;

// Tells the cache of the destination's pieces some rows below: the processor does not foresee so many rows, and stores to
// lines that are not there yet hold up all that comes after them.
void prefetchBelow(const WarpRun& run, const Span& span) {
    constexpr std::ptrdiff_t kLine = 64;
    if (span.next > span.last || span.y > run.spans->yLast - kRowsAhead) return;
    const std::uint8_t* row = run.dst.origin + (std::ptrdiff_t{span.y} + kRowsAhead) * run.dst.rowStep;
    const std::ptrdiff_t last = std::min<std::ptrdiff_t>(std::ptrdiff_t{span.next} + kPositions - 1, span.last);
    for (std::ptrdiff_t at = span.next * run.dst.pixelStep; at <= last * run.dst.pixelStep; at += kLine)
        __builtin_prefetch(row + at, 1);
}

// The next piece of kRows spans.
void warpPieces(const WarpRun& run, const WarpRule& rule, Span* spans) {
    const SampleSource source{run.src, run.src.lastColumn, run.src.lastRow, run.nProc};
    Lists lists;
    for (std::size_t r = 0; r < kRows; ++r) prefetchBelow(run, spans[r]);
    nextPositions(run.inverse, spans, &lists);
    for (std::size_t r = 0; r < kRows; ++r) {
        if (lists[r].count == 0) continue;
        keepIndexed(rule.bias, &lists[r]);
        rule.make(source, lists[r],
                  {run.dst.origin + spans[r].y * run.dst.rowStep, run.dst.pixelStep, run.dst.channelStep});
    }
}

bool goesOn(const Span& span, std::int64_t end) { return span.next <= span.last && span.next < end; }

// Up to kBand spans, as far as columns before `end`.
void warpBand(const WarpRun& run, const WarpRule& rule, std::size_t rows, std::int64_t end, Span* spans) {
    for (bool any = true; any;) {
        any = false;
        for (std::size_t r = 0; r < rows; r += kRows) {
            if (std::none_of(spans + r, spans + r + kRows, [end](const Span& s) { return goesOn(s, end); })) continue;
            warpPieces(run, rule, spans + r);
            any = true;
        }
    }
}

void warpBlocks(const WarpRun& run, const WarpRule& rule, std::size_t rows, Span* spans) {
    std::int64_t first = INT32_MAX;
    std::int64_t last = INT32_MIN;
    for (std::size_t r = 0; r < rows; ++r) {
        if (spans[r].next > spans[r].last) continue;
        first = std::min<std::int64_t>(first, spans[r].next);
        last = std::max<std::int64_t>(last, spans[r].last);
    }
    for (std::int64_t end = first + kBlockColumns; end - kBlockColumns <= last; end += kBlockColumns)
        for (std::size_t r = 0; r < rows; r += kBand) warpBand(run, rule, std::min(kBand, rows - r), end, spans + r);
}

constexpr Span kNoSpan{0, 0, -1, 0, 0};

// Calls make(count, spans) for blocks of rows; the last is filled up to kRows with empty spans.
template <class Make>
void forBlocks(const WarpRun& run, Make make) {
    const double* d = run.inverse.c;
    double baseX = d[1] * run.spans->yFirst + d[2];
    double baseY = d[4] * run.spans->yFirst + d[5];
    Spans spans;
    std::size_t count = 0;
    for (std::int32_t y = run.spans->yFirst; y <= run.spans->yLast; ++y, baseX += d[1], baseY += d[4]) {
        const auto i = static_cast<std::size_t>(y - run.spans->yFirst);
        const std::int32_t left = run.spans->left[i];
        spans[count++] = {y, left, run.spans->right[i], d[0] * left + baseX, d[3] * left + baseY};
        if (count < kBlockRows && y < run.spans->yLast) continue;
        while (count % kRows != 0) spans[count++] = kNoSpan;
        make(count, spans.data());
        count = 0;
    }
}

template <SampleRoutine Make, bool Nearest>
void warpSpans(const WarpRun& run) {
    const WarpRule rule{Make, Nearest ? 0.5 : kWholeTolerance};
    forBlocks(run, [&](std::size_t rows, Span* spans) { warpBlocks(run, rule, rows, spans); });
}

void warpBits(const WarpRun& run) {
    const double dx = run.inverse.c[0];
    const double dy = run.inverse.c[3];
    forBlocks(run, [&](std::size_t rows, Span* spans) {
        for (std::size_t r = 0; r < rows; ++r) {
            Span& span = spans[r];
            std::uint8_t* row = run.dst.origin + span.y * run.dst.rowStep;
            for (; span.next <= span.last; ++span.next, span.sx += dx, span.sy += dy) {
                std::int32_t column = 0;
                std::int32_t line = 0;
                if (toIndex(span.sx + 0.5, &column) && toIndex(span.sy + 0.5, &line))
                    putBit(row, span.next, bitAt(run.src, column, line));
            }
        }
    });
}

using WarpRoutine = void (*)(const WarpRun& run);
using WarpRoutines = std::array<WarpRoutine, 3>;

template <class T>
constexpr WarpRoutines warpRoutines = {warpSpans<nearestPositions<T>, true>, warpSpans<linearPositions<T>, false>,
                                       warpSpans<cubicPositions<T>, false>};

// By depth and interpolation; signed depths are refused, and bits always take the nearest.
constexpr std::array<WarpRoutines, kDepthCount> warpTable = {{
    {warpBits, nullptr, nullptr},
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
