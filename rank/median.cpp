// Replaces each sample by the median of a rectangle of samples of its channel.
//   median.5 of an even number of samples the upper of the two middle ones
//   median.6 on 1U images set bits are counted; the threshold is the same rank
//   median.7 scratch that cannot be had leaves the block as it was, without a word
#include <algorithm>
#include <array>

#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "rank/filterrows.h"
#include "rank/frame.h"
#include "rank/medianrow.h"
#include "rank/nlfchecks.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetMedianFilter", kNeighbourhoodSource};

template <class T>
struct MedianScratch {
    MedianMethod<T> method;
    Block<const T*> rows;
    Block<std::uint8_t> bytes;
    Block<T> buffer;
    BlockMask mask;
};

// For stripes as wide as `b`.
template <class T>
bool allocate(const FilterBlock& b, const FilterLanes& lanes, MedianScratch<T>* s) {
    s->rows = allocBlock<const T*>(b.params->nRows);
    s->bytes = allocBlock<std::uint8_t>(s->method.scratchBytes);
    s->buffer = allocBlock<T>(sizeProduct(b.width, lanes.lanes));
    if (s->bytes) std::fill_n(s->bytes.get(), s->method.scratchBytes, std::uint8_t{0});
    return s->rows && s->bytes && s->buffer && openBlockMask(b, &s->mask);
}

template <class T>
void medianPlane(const FilterBlock& b, const FilterLanes& lanes, std::int32_t plane, const FilterRows<T>& rows,
                 const MedianScratch<T>& s) {
    const std::int32_t nRows = b.params->nRows;
    for (std::ptrdiff_t r = 0; r + 1 < nRows; ++r) loadFilterRow(rows, r);
    storeRows(b, lanes, plane, s.mask, s.buffer.get(), [&](std::ptrdiff_t y, T* out) {
        loadFilterRow(rows, y + nRows - 1);
        for (std::int32_t k = 0; k < nRows; ++k) s.rows[static_cast<std::size_t>(k)] = filterRow(rows, y + k);
        const T* leaving = y > 0 ? filterRow(rows, y - 1) : nullptr;
        s.method.row({s.rows.get(), leaving, nRows, b.params->nCols, b.width, lanes.lanes, out, s.bytes.get()});
    });
}

FilterBlock stripeOf(const FilterBlock& b, std::int32_t x, std::int32_t width) {
    FilterBlock stripe = b;
    stripe.srcX += x;
    stripe.dstX += x;
    stripe.srcMask.x += x;
    stripe.dstMask.x += x;
    stripe.width = std::min(width, b.width - x);
    return stripe;
}

template <class T>
void medianStripe(const FilterBlock& b, FilterRows<T>* rows, MedianScratch<T>* s) {
    const FilterLanes lanes = filterLanes(b);
    rows->src = lanes.src;
    placeBlockMask(b, &s->mask);
    for (std::int32_t plane = 0; plane < lanes.planes; ++plane, rows->src += b.srcPlaneStep)
        medianPlane(b, lanes, plane, *rows, *s);
}

template <class T>
void medianSamples(const FilterBlock& b) {
    const FilterLanes lanes = filterLanes(b);
    MedianScratch<T> s{};
    s.method = chooseMedian<T>(b.params->nCols, b.params->nRows, lanes.lanes, b.width);
    const auto widest = static_cast<std::int32_t>(std::min<std::ptrdiff_t>(s.method.widest, b.width));
    const FilterBlock first = stripeOf(b, 0, widest);
    FilterRows<T> rows{};
    if (!openFilterRows(first, lanes, &rows) || !allocate(first, lanes, &s)) return;
    for (std::int64_t x = 0; x < b.width; x += widest)
        medianStripe(stripeOf(b, static_cast<std::int32_t>(x), widest), &rows, &s);
}

// Set bits of each run of nCols pixels along a source row.
void countAlong(const FilterBlock& b, const std::uint8_t* bytes, std::uint32_t* counts) {
    std::uint32_t count = 0;
    for (std::ptrdiff_t q = 0; q < b.params->nCols; ++q) count += bytes[q];
    for (std::ptrdiff_t x = 0; x < b.width; ++x) {
        counts[x] = count;
        if (x + 1 < b.width) count += std::uint32_t{bytes[x + b.params->nCols]} - bytes[x];
    }
}

struct BitScratch {
    Block<std::uint32_t> ring;  // nRows rows of counts
    Block<std::uint32_t> sums;  // over the ring
    Block<std::uint8_t> bytes;
    Block<std::uint8_t> out;
    BlockMask mask;
};

bool allocate(const FilterBlock& b, BitScratch* s) {
    const std::ptrdiff_t width = b.width;
    s->ring = allocBlock<std::uint32_t>(sizeProduct(b.params->nRows, width));
    s->sums = allocBlock<std::uint32_t>(width);
    s->bytes = allocBlock<std::uint8_t>(width + b.params->nCols);
    s->out = allocBlock<std::uint8_t>(width);
    return s->ring && s->sums && s->bytes && s->out && openBlockMask(b, &s->mask);
}

// Puts the counts of source row `r` into the ring, in place of those that leave the window.
void exchangeCounts(const FilterBlock& b, const FilterLanes& lanes, const BitScratch& s, std::ptrdiff_t r) {
    std::uint32_t* counts = s.ring.get() + (r % b.params->nRows) * b.width;
    for (std::ptrdiff_t x = 0; x < b.width; ++x) s.sums[static_cast<std::size_t>(x)] -= counts[x];
    unpackBits(lanes.src + r * b.srcRowStep, b.srcX, std::ptrdiff_t{b.width} + b.params->nCols - 1, s.bytes.get());
    countAlong(b, s.bytes.get(), counts);
    for (std::ptrdiff_t x = 0; x < b.width; ++x) s.sums[static_cast<std::size_t>(x)] += counts[x];
}

void medianBits(const FilterBlock& b) {
    const FilterLanes lanes = filterLanes(b);
    BitScratch s{};
    if (!allocate(b, &s)) return;
    const ZetFilterParams& p = *b.params;
    const std::int64_t n = std::int64_t{p.nCols} * p.nRows;
    const auto threshold = static_cast<std::uint32_t>((n >> 1) + (p.nRows & p.nCols & 1));
    std::fill_n(s.ring.get(), std::ptrdiff_t{p.nRows} * b.width, 0U);
    std::fill_n(s.sums.get(), b.width, 0U);
    for (std::ptrdiff_t r = 0; r + 1 < p.nRows; ++r) exchangeCounts(b, lanes, s, r);
    for (std::ptrdiff_t y = 0; y < b.height; ++y) {
        exchangeCounts(b, lanes, s, y + p.nRows - 1);
        const std::uint32_t* sums = s.sums.get();
        std::uint8_t* out = s.out.get();
        for (std::ptrdiff_t x = 0; x < b.width; ++x) out[x] = sums[x] >= threshold ? 1 : 0;
        storeBitRow(b, lanes, s.mask, y, out);
    }
}

using MedianRoutine = void (*)(const FilterBlock& block);

constexpr std::array<MedianRoutine, kDepthCount> medianRoutines = {
    medianBits,
    medianSamples<std::uint8_t>,
    medianSamples<std::int8_t>,
    medianSamples<std::uint16_t>,
    medianSamples<std::int16_t>,
    medianSamples<std::int32_t>,
    nullptr,  // 32F is refused
};

bool ownMedianBlock(const FilterBlock& block) {
    medianRoutines[static_cast<std::size_t>(block.depthIndex)](block);
    return true;
}

const char* argumentFault(const ZetImage* src, const ZetImage* dst, const ZetFilterParams& p) {
    if (p.anchorX >= p.nCols || p.anchorX < 0) return "(anchorX>=nCols)||(anchorX<0)";
    if (p.anchorY >= p.nRows || p.anchorY < 0) return "(anchorY>=nRows)||(anchorY<0)";
    if (src == dst) return "(srcImage==dstImage)";
    if (src->depth != dst->depth) return "srcImage->depth!=dstImage->depth";
    if (src->depth == ZET_DEPTH_32F) return "srcImage->depth==32";
    if (src->nChannels != dst->nChannels) return "srcImage->nChannels!=dstImage->nChannels";
    if (src->alphaChannel != dst->alphaChannel) return "srcImage->alphaChannel!=dstImage->alphaChannel";
    if (src->depth != ZET_DEPTH_1U && src->dataOrder != dst->dataOrder)
        return "srcImage->dataOrder!=dstImage->dataOrder";
    return nullptr;
}

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

void zetMedianFilter(ZetImage* srcImage, ZetImage* dstImage, int32_t nCols, int32_t nRows, int32_t anchorX,
                     int32_t anchorY) {
    if (!checkImages(op, {srcImage, dstImage})) return;
    const ZetFilterParams params{nCols, nRows, anchorX, anchorY, kFamilyMedian, 0};
    if (const char* fault = argumentFault(srcImage, dstImage, params)) return report(op, ZET_StatusBadArgument, fault);
    reportChannelFaults(op, ZET_StatusBadArgument, srcImage, dstImage);
    if (zetGetErrStatus() < 0 || filteredChannels(srcImage) == 0) return;
    ownFilterFrame(srcImage, dstImage, params, ownMedianBlock);
}
