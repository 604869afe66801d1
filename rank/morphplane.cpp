//   plane.1 extremes over rows come for several rows of results at once: what their windows share is joined once, in registers
//   plane.2 the columns beside the region are those of its frame; their extremes over rows, repeated, go on either side of the
//           row of extremes before windows run along it
//   plane.3 along a row windows grow fourfold, then up to four that overlap make the size that is wanted
//   plane.4 the second pass of opening and closing finds the first one's rows in a ring
#include "rank/morphplane.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "core/alloc.h"
#include "core/depth.h"
#include "rank/samplevectors.h"

namespace zetpxl {

namespace {

struct Least {
    template <class V>
    [[gnu::always_inline]] static void join(const V& other, V* v) {
        *v = other < *v ? other : *v;
    }
};

struct Greatest {
    template <class V>
    [[gnu::always_inline]] static void join(const V& other, V* v) {
        *v = *v < other ? other : *v;
    }
};

template <class T>
[[gnu::always_inline]] inline void load(const T* from, Vector<T>* v) {
    std::memcpy(v, from, sizeof *v);
}

template <class Extreme, class T>
[[gnu::always_inline]] inline void joinAt(const T* from, Vector<T>* v) {
    Vector<T> other;
    load(from, &other);
    Extreme::join(other, v);
}

// A row of the plane and the pixels beside it.
template <class T>
struct PlaneRow {
    const T* first;
    const T* left;
    const T* right;
};

// Rows of results that are made at once; a window has at least as many.
constexpr std::ptrdiff_t kMostRows = 8;
constexpr std::ptrdiff_t kMostWindow = 2 * kPlaneReach + 1;

// Columns whose extremes stay in the first cache: whole pixels of any number of lanes.
template <class T>
constexpr std::ptrdiff_t kPieceSamples = 1536 / static_cast<std::ptrdiff_t>(sizeof(T));
static_assert(kPieceSamples<std::uint16_t> > kPlaneReach * kPlaneLanes && kPieceSamples<std::uint16_t> % 12 == 0);

template <class T>
using WindowRows = std::array<PlaneRow<T>, kMostWindow + kMostRows - 1>;

template <class T>
struct Pass {
    std::ptrdiff_t size;     // of the square
    std::ptrdiff_t samples;  // of a row
    std::ptrdiff_t lanes;
    T* extremes;  // kMostRows rows with n pixels on either side, and slack behind each
    std::ptrdiff_t extremeStep;
};

// Extremes over the rows of kRows windows, a vector of columns of each: the rows that all windows share, with those above
// that the upper windows have, and those below that the lower ones have.
template <class T, class Extreme, std::size_t kRows>
[[gnu::always_inline]] inline void extremesAt(const WindowRows<T>& rows, std::size_t size, std::ptrdiff_t x, T* out,
                                              std::ptrdiff_t outStep) {
    Vector<T> shared;
    load(rows[kRows - 1].first + x, &shared);
    for (std::size_t r = kRows; r < size; ++r) joinAt<Extreme>(rows[r].first + x, &shared);
    Vector<T> windows[kRows];
    unrolled<kRows>([&](auto before) __attribute__((always_inline)) {
        constexpr std::size_t k = kRows - 1 - before;
        if constexpr (k + 1 < kRows) joinAt<Extreme>(rows[k].first + x, &shared);
        windows[k] = shared;
    });
    std::memcpy(out, &windows[0], sizeof windows[0]);
    if constexpr (kRows > 1) {
        Vector<T> lower;
        load(rows[size].first + x, &lower);
        unrolled<kRows - 1>([&](auto before) __attribute__((always_inline)) {
            constexpr std::size_t k = before + 1;
            if constexpr (k > 1) joinAt<Extreme>(rows[size + k - 1].first + x, &lower);
            Extreme::join(lower, &windows[k]);
            std::memcpy(out + static_cast<std::ptrdiff_t>(k) * outStep, &windows[k], sizeof windows[k]);
        });
    }
}

template <class T, class Extreme>
T extremeOf(T a, T b) {
    Extreme::join(b, &a);
    return a;
}

// Rows too short for a vector.
template <class T, class Extreme, std::size_t kRows>
void extremesOfFew(const WindowRows<T>& rows, std::size_t size, std::ptrdiff_t count, T* out, std::ptrdiff_t step) {
    for (std::size_t k = 0; k < kRows; ++k, out += step)
        for (std::ptrdiff_t x = 0; x < count; ++x) {
            out[x] = rows[k].first[x];
            for (std::size_t r = k + 1; r < k + size; ++r) out[x] = extremeOf<T, Extreme>(out[x], rows[r].first[x]);
        }
}

// Columns `first` to `end`. kSize: a size known beforehand, or 0.
template <class T, class Extreme, std::size_t kRows, std::size_t kSize>
void extremesOverRows(const Pass<T>& pass, const WindowRows<T>& rows, std::ptrdiff_t first, std::ptrdiff_t end,
                      T* out) {
    const std::size_t size = kSize ? kSize : static_cast<std::size_t>(pass.size);
    const std::ptrdiff_t step = pass.extremeStep;
    const std::ptrdiff_t last = end - kVectorSamples<T>;
    std::ptrdiff_t x = first;
    for (; x <= last; x += kVectorSamples<T>) extremesAt<T, Extreme, kRows>(rows, size, x, out + (x - first), step);
    if (x == end) return;
    if (last < 0) return extremesOfFew<T, Extreme, kRows>(rows, size, end, out, step);
    extremesAt<T, Extreme, kRows>(rows, size, last, out + (last - first), step);
}

// Extremes over rows of the pixels on one side of the region.
template <class T>
using BesideRows = std::array<std::array<T, kPlaneLanes>, kMostRows>;

template <class T, class Extreme, std::size_t kRows>
void extremesBeside(const Pass<T>& pass, const WindowRows<T>& rows, const T* PlaneRow<T>::*side, BesideRows<T>* out) {
    std::array<T, kMostWindow + kMostRows - 1> column{};
    for (std::size_t lane = 0; lane < static_cast<std::size_t>(pass.lanes); ++lane) {
        const auto size = static_cast<std::size_t>(pass.size);
        for (std::size_t r = 0; r < size + kRows - 1; ++r) column[r] = (rows[r].*side)[lane];
        std::array<T, kRows> extremes;
        std::copy_n(column.data(), kRows, extremes.data());
        for (std::size_t r = 1; r < size; ++r)
            for (std::size_t k = 0; k < kRows; ++k) extremes[k] = extremeOf<T, Extreme>(extremes[k], column[r + k]);
        for (std::size_t k = 0; k < kRows; ++k) (*out)[k][lane] = extremes[k];
    }
}

template <class T>
void fillBeside(const std::array<T, kPlaneLanes>& pixel, std::ptrdiff_t samples, std::ptrdiff_t lanes, T* out) {
    if (lanes == 1) return static_cast<void>(std::fill_n(out, samples, pixel[0]));
    for (std::ptrdiff_t i = 0; i < samples; i += lanes) std::copy_n(pixel.data(), lanes, out + i);
}

// kParts windows, each `ahead` behind the one before but for the last, which ends with the whole.
template <class T, class Extreme, std::size_t kParts>
[[gnu::always_inline]] inline void joinParts(const T* from, std::ptrdiff_t ahead, std::ptrdiff_t last, Vector<T>* v) {
    load(from, v);
    if constexpr (kParts > 2) joinAt<Extreme>(from + ahead, v);
    if constexpr (kParts > 3) joinAt<Extreme>(from + 2 * ahead, v);
    if constexpr (kParts > 1) joinAt<Extreme>(from + last, v);
}

// Runs into the slack behind the row.
template <class T, class Extreme>
void growFourfold(T* row, std::ptrdiff_t ahead, std::ptrdiff_t count) {
    for (std::ptrdiff_t x = 0; x < count; x += kVectorSamples<T>) {
        Vector<T> v;
        joinParts<T, Extreme, 4>(row + x, ahead, 3 * ahead, &v);
        std::memcpy(row + x, &v, sizeof v);
    }
}

template <class T, class Extreme, std::size_t kParts>
void finishRow(const T* row, std::ptrdiff_t ahead, std::ptrdiff_t last, std::ptrdiff_t count, T* out) {
    Vector<T> v;
    std::ptrdiff_t x = 0;
    for (; x + kVectorSamples<T> <= count; x += kVectorSamples<T>) {
        joinParts<T, Extreme, kParts>(row + x, ahead, last, &v);
        std::memcpy(out + x, &v, sizeof v);
    }
    if (x == count) return;
    joinParts<T, Extreme, kParts>(row + x, ahead, last, &v);
    std::memcpy(out + x, &v, static_cast<std::size_t>(count - x) * sizeof(T));
}

template <class T, class Extreme>
void extremesAlong(const Pass<T>& pass, T* row, std::ptrdiff_t count, T* out) {
    std::ptrdiff_t window = 1;
    for (; 4 * window <= pass.size; window *= 4)
        growFourfold<T, Extreme>(row, window * pass.lanes, count + (pass.size - 4 * window) * pass.lanes);
    const std::ptrdiff_t ahead = window * pass.lanes;
    const std::ptrdiff_t last = (pass.size - window) * pass.lanes;
    if (pass.size > 3 * window) return finishRow<T, Extreme, 4>(row, ahead, last, count, out);
    if (pass.size > 2 * window) return finishRow<T, Extreme, 3>(row, ahead, last, count, out);
    finishRow<T, Extreme, 2>(row, ahead, last, count, out);
}

template <class T>
using ResultRows = std::array<T*, kMostRows>;

template <class T>
struct Beside {
    BesideRows<T> left;
    BesideRows<T> right;
};

// Results of columns from `first` on. Pieces are longer than their windows reach, all but the last.
template <class T, class Extreme, std::size_t kRows, std::size_t kSize>
void filterPiece(const Pass<T>& pass, const WindowRows<T>& rows, const Beside<T>& beside, std::ptrdiff_t first,
                 const ResultRows<T>& out) {
    const std::ptrdiff_t reach = pass.size / 2 * pass.lanes;
    const std::ptrdiff_t count = std::min(kPieceSamples<T>, pass.samples - first);
    const std::ptrdiff_t margin =
        (reach + kVectorSamples<T> - 1) / kVectorSamples<T> * kVectorSamples<T>;  // keeps vectors where rows have them
    const std::ptrdiff_t start = std::max<std::ptrdiff_t>(first - margin, 0);
    const std::ptrdiff_t end = std::min(first + count + reach, pass.samples);
    const std::ptrdiff_t right = first + count + reach - end;
    extremesOverRows<T, Extreme, kRows, kSize>(pass, rows, start, end, pass.extremes + margin - (first - start));
    for (std::size_t k = 0; k < kRows; ++k) {
        T* row = pass.extremes + static_cast<std::ptrdiff_t>(k) * pass.extremeStep + margin;
        if (first == 0) fillBeside(beside.left[k], reach, pass.lanes, row - reach);
        fillBeside(beside.right[k], right, pass.lanes, row + count + reach - right);
        extremesAlong<T, Extreme>(pass, row - reach, count, out[k] + first);
    }
}

template <class T, class Extreme, std::size_t kRows, std::size_t kSize>
void filterRows(const Pass<T>& pass, const WindowRows<T>& rows, const ResultRows<T>& out) {
    Beside<T> beside{};
    extremesBeside<T, Extreme, kRows>(pass, rows, &PlaneRow<T>::left, &beside.left);
    extremesBeside<T, Extreme, kRows>(pass, rows, &PlaneRow<T>::right, &beside.right);
    for (std::ptrdiff_t first = 0; first < pass.samples; first += kPieceSamples<T>)
        filterPiece<T, Extreme, kRows, kSize>(pass, rows, beside, first, out);
}

// So many rows of results at once for a window of `size`.
std::ptrdiff_t groupOf(std::ptrdiff_t size) { return size < 5 ? 2 : size < 9 ? 4 : 8; }

template <class T, class Extreme>
void filterGroup(const Pass<T>& pass, std::ptrdiff_t count, const WindowRows<T>& rows, const ResultRows<T>& out) {
    if (count == 8) return filterRows<T, Extreme, 8, 0>(pass, rows, out);
    if (count == 4) return filterRows<T, Extreme, 4, 0>(pass, rows, out);
    if (count == 2) return filterRows<T, Extreme, 2, 3>(pass, rows, out);
    filterRows<T, Extreme, 1, 0>(pass, rows, out);
}

// The pixels beside a row of the image.
template <class T>
struct SideConstants {
    std::array<T, kPlaneLanes> left;
    std::array<T, kPlaneLanes> right;
};

template <class T>
struct Plane {
    MorphPlane of;
    SideConstants<T> constants;
    Pass<T> pass;
    Block<T> extremes;
    Block<T> ring;  // of the first pass's rows
    std::ptrdiff_t ringRows;
    std::ptrdiff_t ringStep;
};

template <class T>
PlaneRow<T> sourceRow(const Plane<T>& plane, std::ptrdiff_t r) {
    const MorphPlane& of = plane.of;
    r = std::clamp<std::ptrdiff_t>(r, -1, of.height);
    const std::uint8_t* built = r < 0 ? of.above : r == of.height ? of.below : nullptr;
    if (built) {
        const T* left = reinterpret_cast<const T*>(built);
        return {left + of.lanes, left, left + (of.width + 1) * of.lanes};
    }
    const T* first = reinterpret_cast<const T*>(of.src + r * of.srcStep);
    return {first, of.left.isConstant ? plane.constants.left.data() : first + of.left.offset * of.lanes,
            of.right.isConstant ? plane.constants.right.data() : first + of.right.offset * of.lanes};
}

template <class T>
T* ringRow(const Plane<T>& plane, std::ptrdiff_t r) {
    return plane.ring.get() + (r % plane.ringRows) * plane.ringStep;
}

// The first pass's row between the source's pixels.
template <class T>
PlaneRow<T> firstPassRow(const Plane<T>& plane, std::ptrdiff_t r) {
    PlaneRow<T> row = sourceRow(plane, r);
    if (r >= 0 && r < plane.of.height) row.first = ringRow(plane, r);
    return row;
}

template <class T, class RowAt>
void windowRows(const Plane<T>& plane, std::ptrdiff_t y, std::ptrdiff_t count, RowAt rowAt, WindowRows<T>* rows) {
    for (std::ptrdiff_t i = 0; i < plane.pass.size + count - 1; ++i)
        (*rows)[static_cast<std::size_t>(i)] = rowAt(plane, y - plane.of.n + i);
}

std::ptrdiff_t groupAt(std::ptrdiff_t y, std::ptrdiff_t height, std::ptrdiff_t size) {
    const std::ptrdiff_t group = groupOf(size);
    return y + group <= height ? group : 1;
}

// Results for rows from y on; how many.
template <class T, class Extreme, class RowAt, class OutAt>
std::ptrdiff_t filterAt(const Plane<T>& plane, std::ptrdiff_t y, RowAt rowAt, OutAt outAt) {
    const std::ptrdiff_t count = groupAt(y, plane.of.height, plane.pass.size);
    WindowRows<T> rows;
    ResultRows<T> out{};
    windowRows(plane, y, count, rowAt, &rows);
    for (std::ptrdiff_t k = 0; k < count; ++k) out[static_cast<std::size_t>(k)] = outAt(plane, y + k);
    filterGroup<T, Extreme>(plane.pass, count, rows, out);
    return count;
}

template <class T>
T* resultRow(const Plane<T>& plane, std::ptrdiff_t y) {
    return reinterpret_cast<T*>(plane.of.dst + y * plane.of.dstStep);
}

template <class T>
bool openPlane(const MorphPlane& of, Plane<T>* plane) {
    plane->of = of;
    plane->constants.left.fill(static_cast<T>(of.left.value));
    plane->constants.right.fill(static_cast<T>(of.right.value));
    const std::ptrdiff_t size = 2 * of.n + 1;
    const std::ptrdiff_t samples = std::min(of.width * of.lanes, kPieceSamples<T>) + 2 * of.n * of.lanes;
    const std::ptrdiff_t step = (samples / kVectorSamples<T> + 6) * kVectorSamples<T>;
    plane->extremes = allocBlock<T>(sizeProduct(step, kMostRows));
    if (!plane->extremes) return false;
    std::fill_n(plane->extremes.get(), step * kMostRows, T{0});
    plane->pass = {size, of.width * of.lanes, of.lanes, plane->extremes.get(), step};
    return true;
}

// Objects instead of functions: a call through a type of its own is one that the compiler sees through.
constexpr auto fromSource = [](const auto& plane, std::ptrdiff_t r) { return sourceRow(plane, r); };
constexpr auto fromFirstPass = [](const auto& plane, std::ptrdiff_t r) { return firstPassRow(plane, r); };
constexpr auto intoRing = [](const auto& plane, std::ptrdiff_t y) { return ringRow(plane, y); };
constexpr auto intoResult = [](const auto& plane, std::ptrdiff_t y) { return resultRow(plane, y); };

template <class T, class Extreme>
bool onePass(const MorphPlane& of) {
    Plane<T> plane;
    if (!openPlane(of, &plane)) return false;
    for (std::ptrdiff_t y = 0; y < of.height;) y += filterAt<T, Extreme>(plane, y, fromSource, intoResult);
    return true;
}

template <class T, class First, class Second>
bool twoPass(const MorphPlane& of) {
    Plane<T> plane;
    if (!openPlane(of, &plane)) return false;
    plane.ringRows = plane.pass.size + 2 * groupOf(plane.pass.size);
    plane.ringStep = plane.pass.samples + kVectorSamples<T>;
    plane.ring = allocBlock<T>(sizeProduct(plane.ringRows, plane.ringStep));
    if (!plane.ring) return false;
    std::ptrdiff_t done = 0;  // rows of the first pass
    for (std::ptrdiff_t y = 0; y < of.height;) {
        const std::ptrdiff_t reach = std::min(of.height, y + groupOf(plane.pass.size) + of.n);
        while (done < reach) done += filterAt<T, First>(plane, done, fromSource, intoRing);
        y += filterAt<T, Second>(plane, y, fromFirstPass, intoResult);
    }
    return true;
}

using KindRoutines = std::array<PlaneRoutine, 4>;  // in the order of MorphKind

template <class T>
constexpr KindRoutines kindRoutines = {onePass<T, Greatest>, onePass<T, Least>, twoPass<T, Least, Greatest>,
                                       twoPass<T, Greatest, Least>};
constexpr KindRoutines noRoutines = {};

constexpr std::array<const KindRoutines*, kDepthCount> planeRoutines = {
    &noRoutines, &kindRoutines<std::uint8_t>, &noRoutines, &kindRoutines<std::uint16_t>, &noRoutines, &noRoutines,
    &noRoutines};

}  // namespace

PlaneRoutine planeRoutine(std::uint32_t depth, MorphKind kind) {
    return (*planeRoutines[static_cast<std::size_t>(depthIndex(depth))])[static_cast<std::size_t>(kind)];
}

}  // namespace zetpxl
