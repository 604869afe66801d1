// Eleven built-in 3 by 3 and 5 by 5 filters.
//   fixed.6 8- and 16-bit images are exact in integers but for the 5 by 5 smoothing; 32S and 32F go in single precision
//   fixed.7 results tell more than reports: each mismatch has a value of its own
//   fixed.8 scratch that cannot be had is reported once and ends the call with result 0
#include <array>
#include <cfenv>

#include "core/depth.h"
#include "filter/fixedrows.h"
#include "rank/filterrows.h"
#include "rank/frame.h"
#include "rank/nlfchecks.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetFixedFilter", kNeighbourhoodSource};

bool noMemory() {
    report(op, ZET_StatusNoMemory, "Allocation failure");
    return false;
}

template <class T>
struct FixedTables {
    const FixedTable<T>* integers;  // or null
    const FixedTable<T>* floats;    // or null

    FixedRowRoutine<T> routine(std::int32_t kind) const {
        const auto index = static_cast<std::size_t>(kind);
        if (integers && (*integers)[index]) return (*integers)[index];
        return (*floats)[index];
    }
};

template <class T>
constexpr FixedTables<T> fixedTables{};
template <>
constexpr FixedTables<std::uint8_t> fixedTables<std::uint8_t>{&fixedIntegers8U, &fixedFloats8U};
template <>
constexpr FixedTables<std::int8_t> fixedTables<std::int8_t>{&fixedIntegers8S, &fixedFloats8S};
template <>
constexpr FixedTables<std::uint16_t> fixedTables<std::uint16_t>{&fixedIntegers16U, &fixedFloats16U};
template <>
constexpr FixedTables<std::int16_t> fixedTables<std::int16_t>{&fixedIntegers16S, &fixedFloats16S};
template <>
constexpr FixedTables<std::int32_t> fixedTables<std::int32_t>{nullptr, &fixedFloats32S};
template <>
constexpr FixedTables<float> fixedTables<float>{nullptr, &fixedFloats32F};

template <class T>
struct FixedScratch {
    Block<T> buffer;
    Block<float> work;
    BlockMask mask;
};

template <class T>
bool allocate(const FilterBlock& b, const FilterLanes& lanes, FixedScratch<T>* s) {
    s->buffer = allocBlock<T>(sizeProduct(b.width, lanes.lanes));
    s->work = allocBlock<float>(sizeProduct(b.width, lanes.lanes));
    return s->buffer && s->work && openBlockMask(b, &s->mask);
}

template <class T>
bool fixedSamples(const FilterBlock& b) {
    const FilterLanes lanes = filterLanes(b);
    FilterRows<T> rows{};
    FixedScratch<T> s{};
    if (!openFilterRows(b, lanes, &rows) || !allocate(b, lanes, &s)) return noMemory();
    const FixedRowRoutine<T> routine = fixedTables<T>.routine(b.params->kind);
    const std::ptrdiff_t nRows = b.params->nRows;
    FixedWindow<T> window{{}, lanes.lanes, std::ptrdiff_t{b.width} * lanes.lanes};
    for (std::int32_t plane = 0; plane < lanes.planes; ++plane, rows.src += b.srcPlaneStep) {
        for (std::ptrdiff_t r = 0; r + 1 < nRows; ++r) loadFilterRow(rows, r);
        storeRows(b, lanes, plane, s.mask, s.buffer.get(), [&](std::ptrdiff_t y, T* out) {
            loadFilterRow(rows, y + nRows - 1);
            for (std::ptrdiff_t k = 0; k < nRows; ++k)
                window.rows[static_cast<std::size_t>(k)] = filterRow(rows, y + k);
            routine(window, s.work.get(), out);
        });
    }
    return true;
}

bool fixedOnBits(const FilterBlock& b) {
    const FilterLanes lanes = filterLanes(b);
    const std::ptrdiff_t nRows = b.params->nRows;
    const std::ptrdiff_t rowPixels = std::ptrdiff_t{b.width} + b.params->nCols - 1;
    const Block<std::uint8_t> ring = allocBlock<std::uint8_t>(sizeProduct(rowPixels, nRows));
    const Block<std::uint8_t> out = allocBlock<std::uint8_t>(b.width);
    BlockMask mask{};
    if (!ring || !out || !openBlockMask(b, &mask)) return noMemory();
    const auto row = [&](std::ptrdiff_t r) { return ring.get() + (r % nRows) * rowPixels; };
    const auto load = [&](std::ptrdiff_t r) { unpackBits(lanes.src + r * b.srcRowStep, b.srcX, rowPixels, row(r)); };
    for (std::ptrdiff_t r = 0; r + 1 < nRows; ++r) load(r);
    FixedWindow<std::uint8_t> window{{}, 1, b.width};
    for (std::ptrdiff_t y = 0; y < b.height; ++y) {
        load(y + nRows - 1);
        for (std::ptrdiff_t k = 0; k < nRows; ++k) window.rows[static_cast<std::size_t>(k)] = row(y + k);
        fixedBits[static_cast<std::size_t>(b.params->kind)](window, nullptr, out.get());
        storeBitRow(b, lanes, mask, y, out.get());
    }
    return true;
}

constexpr std::array<FilterRoutine, kDepthCount> fixedRoutines = {
    fixedOnBits,
    fixedSamples<std::uint8_t>,
    fixedSamples<std::int8_t>,
    fixedSamples<std::uint16_t>,
    fixedSamples<std::int16_t>,
    fixedSamples<std::int32_t>,
    fixedSamples<float>,
};

bool ownFixedBlock(const FilterBlock& block) {
    return fixedRoutines[static_cast<std::size_t>(block.depthIndex)](block);
}

// The one result that is no status of its own.
constexpr std::int32_t kOrderResult = -1;

// A refusal's words and the call's result.
struct Refusal {
    const char* words;
    std::int32_t result;
};

Refusal mismatch(const ZetImage* src, const ZetImage* dst) {
    if (src == dst) return {"(srcImage==dstImage)", ZET_StatusBadArgument};
    if (src->depth != dst->depth) return {"srcImage->depth!=dstImage->depth", ZET_StatusBadDepth};
    if (src->nChannels != dst->nChannels) return {"srcImage->nChannels!=dstImage->nChannels", ZET_StatusBadChannels};
    if (src->alphaChannel != dst->alphaChannel)
        return {"srcImage->alphaChannel!=dstImage->alphaChannel", ZET_StatusBadAlpha};
    if (src->depth != ZET_DEPTH_1U && src->dataOrder != dst->dataOrder)
        return {"srcImage->dataOrder!=dstImage->dataOrder", kOrderResult};
    return {nullptr, ZET_StatusOk};
}

std::int32_t runFilter(ZetImage* srcImage, ZetImage* dstImage, std::int32_t filter) {
    if (filter < 0 || filter >= kFixedKinds) {
        report(op, ZET_StatusBadArgument, "Unknow filter.");
        return ZET_StatusBadArgument;
    }
    if (filter == kCrisp3 && srcImage->depth == ZET_DEPTH_1U) {
        zetCopy(srcImage, dstImage);
        return ZET_StatusOk;
    }
    const bool isWide = filter == kRing5 || filter == kSmooth5 || filter == kPeak5;
    const std::int32_t size = isWide ? 5 : 3;
    ownFilterFrame(srcImage, dstImage, {size, size, size / 2, size / 2, kFamilyFixed, filter}, ownFixedBlock);
    return ZET_StatusOk;
}

std::int32_t checkedFilter(ZetImage* srcImage, ZetImage* dstImage, std::int32_t filter) {
    if (!checkImages(op, {srcImage, dstImage})) return zetGetErrStatus();
    const Refusal refusal = mismatch(srcImage, dstImage);
    if (refusal.words) {
        report(op, ZET_StatusBadArgument, refusal.words);
        return refusal.result;
    }
    reportChannelFaults(op, ZET_StatusBadCoi, srcImage, dstImage);
    if (zetGetErrStatus() < 0) return zetGetErrStatus();
    return filteredChannels(srcImage) == 0 ? std::int32_t{ZET_StatusOk} : runFilter(srcImage, dstImage, filter);
}

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

int32_t zetFixedFilter(ZetImage* srcImage, ZetImage* dstImage, int32_t filter) {
    const int mode = std::fegetround();
    const std::int32_t result = checkedFilter(srcImage, dstImage, filter);
    std::feclearexcept(FE_ALL_EXCEPT);
    std::fesetround(mode);
    return result;
}
