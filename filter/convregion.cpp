// The convolution engine: a region whose neighbours are all in memory becomes destination pixels.
//   region.1 source rows are loaded once, as single-precision samples, into a ring that never grows with the height
//   region.2 layouts differ in what a ring row holds and which samples are kept; depths in load and store alone
//   region.3 an alpha channel of the source is filtered along and dropped; one of the destination is not touched
#include <algorithm>
#include <array>
#include <cstring>

#include "core/depth.h"
#include "core/region.h"
#include "filter/convplan.h"
#include "filter/convrows.h"
#include "pixel/bits.h"
#include "pixel/maskrows.h"

namespace zetpxl {

namespace {

constexpr std::ptrdiff_t kBlockRows = 32;

// One run over a region: planes, forms and 1U differ in these words.
struct ConvForm {
    const std::uint8_t* src;     // the first sample of the ring's first row
    std::int32_t srcBit;         // 1U: and its bit
    std::ptrdiff_t srcRowStep;   // bytes
    std::int32_t srcSampleStep;  // samples from one ring sample to the next
    std::uint8_t* dst;
    std::int32_t dstBit;
    std::ptrdiff_t dstRowStep;
    std::int32_t dstPixelStep;     // samples
    std::int32_t samplesPerPixel;  // in the ring
    std::int32_t kept;             // of each pixel, from its first sample on
    std::int32_t width;            // pixels
    std::int32_t height;
    std::uint32_t depth;
    MaskBits mask;
    std::ptrdiff_t maskStep;
};

struct ConvWork {
    Block<std::uint8_t> ring;
    Block<std::uint8_t> bytes;  // a row of bits as bytes, or the row to store
    std::ptrdiff_t ringStep;    // bytes
    std::ptrdiff_t loaded;      // samples of a ring row
    std::ptrdiff_t rowSamples;  // of an output row
    bool isStraight;            // samples are stored where they stay
};

// Rows an odd number of cache lines apart do not meet in one set of the cache.
std::ptrdiff_t ringRowStep(std::ptrdiff_t samples, std::ptrdiff_t bytes) {
    constexpr std::ptrdiff_t line = 64;
    return (sizeProduct(samples + kConvSlack, bytes) / line + 1) | 1;
}

bool allocate(const ConvForm& f, const ConvMargins& m, const ConvPlan& plan, ConvWork* w) {
    constexpr std::ptrdiff_t line = 64;
    const std::ptrdiff_t ringPixels = f.width + m.extentX() - 1;
    w->rowSamples = std::ptrdiff_t{f.width} * f.samplesPerPixel;
    w->loaded = ringPixels * f.samplesPerPixel;
    w->ringStep = ringRowStep(w->loaded, plan.ringBytes) * line;
    const std::ptrdiff_t rows = std::min<std::ptrdiff_t>(f.height, kBlockRows) + m.extentY() - 1;
    w->ring = allocBlock<std::uint8_t>(sizeProduct(w->ringStep, rows));
    const std::ptrdiff_t bytes = std::max(sampleBytes(f.depth), 1);
    w->bytes = allocBlock<std::uint8_t>(std::max(sizeProduct(w->rowSamples, bytes), ringPixels));
    w->isStraight = !f.mask.data && f.depth != ZET_DEPTH_1U && f.kept == f.samplesPerPixel && f.kept == f.dstPixelStep;
    return w->ring && w->bytes;
}

void bitsToBytes(const std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count, std::uint8_t* bytes) {
    for (std::ptrdiff_t i = 0; i < count; ++i) bytes[i] = (row[(bit + i) >> 3] >> (7 - ((bit + i) & 7))) & 1;
}

void loadRow(const ConvForm& f, const ConvPlan& plan, const ConvWork& w, std::ptrdiff_t sourceRow,
             std::uint8_t* ringRow) {
    const std::uint8_t* row = f.src + sourceRow * f.srcRowStep;
    if (f.depth == ZET_DEPTH_1U) {
        bitsToBytes(row, f.srcBit, w.loaded, w.bytes.get());
        row = w.bytes.get();
    }
    plan.loadRow(row, f.srcSampleStep, w.loaded, ringRow);
    const std::ptrdiff_t used = w.loaded * plan.ringBytes;
    std::memset(ringRow + used, 0, static_cast<std::size_t>(w.ringStep - used));
}

// A piece of an output row: its samples, and where the ring holds the corner of all that they need.
struct ConvPiece {
    const std::uint8_t* ring;
    std::ptrdiff_t count;
};

ConvSource sourceOf(const ConvPlan& plan, std::int32_t k, const ConvForm& f, const ConvMargins& m, const ConvWork& w,
                    const ConvPiece& piece) {
    const ZetConvKernel& kernel = *plan.kernels[k];
    const std::ptrdiff_t left = std::ptrdiff_t{m.left - kernel.anchorX} * f.samplesPerPixel;
    const std::uint8_t* first = piece.ring + (m.top - kernel.anchorY) * w.ringStep + left * plan.ringBytes;
    return {first, w.ringStep / plan.ringBytes, f.samplesPerPixel};
}

using PieceRow = std::array<float, kConvPiece + kConvSlack>;

void runKernel(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* acc, float* target) {
    slot.kernelRow(slot, source, count, acc);
    if (slot.shiftRow) slot.shiftRow(acc, acc, count, slot.nShift);
    if (slot.combineRow) slot.combineRow(acc, target, count, slot.nShift);
}

// One kernel's words go straight to samples where they can.
void ownConvPiece(const ConvPlan& plan, const ConvForm& f, const ConvMargins& m, const ConvWork& w,
                  const ConvPiece& piece, std::uint8_t* out) {
    if (plan.storeWords) {
        std::array<std::uint16_t, kConvPiece + kConvSlack> words;
        sumWords(plan.slots[0], sourceOf(plan, 0, f, m, w, piece).first, piece.count, words.data());
        return plan.storeWords(words.data(), plan.slots[0].nShift, out, piece.count);
    }
    PieceRow acc;
    PieceRow sum;
    float* const target = plan.nKernels == 1 ? acc.data() : sum.data();
    for (std::int32_t k = 0; k < plan.nKernels; ++k)
        runKernel(plan.slots[static_cast<std::size_t>(k)], sourceOf(plan, k, f, m, w, piece), piece.count, acc.data(),
                  target);
    if (plan.rootRow) plan.rootRow(nullptr, target, piece.count, 0);
    plan.storeRow(target, out, piece.count);
}

// One row of output from the ring rows that begin at `top`.
void makeRow(const ConvPlan& plan, const ConvForm& f, const ConvMargins& m, const ConvWork& w, const std::uint8_t* top,
             std::uint8_t* out) {
    const std::ptrdiff_t bytes = std::max(sampleBytes(f.depth), 1);
    for (std::ptrdiff_t first = 0; first < w.rowSamples; first += kConvPiece) {
        const ConvPiece piece{top + first * plan.ringBytes, std::min(kConvPiece, w.rowSamples - first)};
        ownConvPiece(plan, f, m, w, piece, out + first * bytes);
    }
}

// A piece of a row, all of whose pixels are written.
using KeepPiece = void (*)(const ConvForm& f, const std::uint8_t* out, std::uint8_t* dst, std::ptrdiff_t first,
                           std::ptrdiff_t count);

template <class T>
void keepSamples(const ConvForm& f, const std::uint8_t* out, std::uint8_t* dst, std::ptrdiff_t first,
                 std::ptrdiff_t count) {
    const T* from = reinterpret_cast<const T*>(out) + first * f.samplesPerPixel;
    T* to = reinterpret_cast<T*>(dst) + first * f.dstPixelStep;
    if (f.kept == f.samplesPerPixel && f.kept == f.dstPixelStep)
        return static_cast<void>(std::copy_n(from, count * f.kept, to));
    for (std::ptrdiff_t x = 0; x < count; ++x)
        for (std::int32_t c = 0; c < f.kept; ++c) to[x * f.dstPixelStep + c] = from[x * f.samplesPerPixel + c];
}

void keepBits(const ConvForm& f, const std::uint8_t* out, std::uint8_t* dst, std::ptrdiff_t first,
              std::ptrdiff_t count) {
    for (std::ptrdiff_t i = first; i < first + count; ++i) {
        const std::ptrdiff_t bit = f.dstBit + i;
        const auto mask = static_cast<std::uint8_t>(0x80 >> (bit & 7));
        dst[bit >> 3] = static_cast<std::uint8_t>(out[i] ? dst[bit >> 3] | mask : dst[bit >> 3] & ~mask);
    }
}

// By size of a sample.
constexpr std::array<KeepPiece, 4> keepPieces = {keepBits, keepSamples<std::uint8_t>, keepSamples<std::uint16_t>,
                                                 keepSamples<std::uint32_t>};

void keepRow(const ConvForm& f, const std::uint8_t* out, std::ptrdiff_t y) {
    std::uint8_t* dst = f.dst + y * f.dstRowStep;
    const KeepPiece keep = keepPieces[static_cast<std::size_t>(sizeIndex(f.depth))];
    if (!f.mask.data) return keep(f, out, dst, 0, f.width);
    forMaskPieces({f.mask.data + y * f.maskStep, f.mask.bit}, f.width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* mask) {
                      if (cover == MaskCover::All) return keep(f, out, dst, first, count);
                      for (std::ptrdiff_t x = 0; x < count; ++x)
                          if (mask[x]) keep(f, out, dst, first + x, 1);
                  });
}

std::int32_t runForm(const ConvForm& f, ConvPlan* plan, const ConvMargins& m) {
    ConvWork w{};
    ownConvBuildRows(plan, f.depth, f.samplesPerPixel);
    if (!allocate(f, m, *plan, &w)) return kConvNoMemory;
    ownConvPlaceTaps(plan, w.ringStep / plan->ringBytes, f.samplesPerPixel);
    const std::ptrdiff_t kept = m.extentY() - 1;  // rows that the next block needs again
    for (std::ptrdiff_t y = 0; y < f.height;) {
        const std::ptrdiff_t rows = std::min(f.height - y, kBlockRows);
        const std::ptrdiff_t loaded = y == 0 ? 0 : kept;
        for (std::ptrdiff_t r = loaded; r < rows + kept; ++r)
            loadRow(f, *plan, w, y + r, w.ring.get() + r * w.ringStep);
        for (std::ptrdiff_t j = 0; j < rows; ++j) {
            std::uint8_t* out = w.isStraight ? f.dst + (y + j) * f.dstRowStep : w.bytes.get();
            makeRow(*plan, f, m, w, w.ring.get() + j * w.ringStep, out);
            if (!w.isStraight) keepRow(f, out, y + j);
        }
        if (y + rows < f.height) {
            const auto keptBytes = static_cast<std::size_t>(kept * w.ringStep);
            std::memmove(w.ring.get(), w.ring.get() + rows * w.ringStep, keptBytes);
        }
        y += rows;
    }
    return kConvDone;
}

struct ChannelList {
    std::int32_t first;  // from 0
    std::int32_t count;
};

ChannelList channelsOf(const ZetImage* image) {
    if (regionCoi(image) != 0) return {regionCoi(image) - 1, 1};
    return {0, image->nChannels - (image->alphaChannel ? 1 : 0)};
}

void setMask(const ZetImage* mask, ConvForm* f) {
    if (!mask) return;
    const std::ptrdiff_t x = regionX(mask);
    f->mask = {pixelData(mask) + std::ptrdiff_t{regionY(mask)} * mask->widthStep, x};
    f->maskStep = mask->widthStep;
}

// What all forms share; the ring begins at the margins' corner.
ConvForm commonForm(const ZetImage* src, const ZetImage* dst, const ConvMargins& m) {
    ConvForm f{};
    const std::ptrdiff_t bytes = sampleBytes(src->depth);
    const std::ptrdiff_t srcX = std::ptrdiff_t{src->roi->xOffset} - m.left;
    const std::ptrdiff_t srcY = std::ptrdiff_t{src->roi->yOffset} - m.top;
    const std::ptrdiff_t dstX = dst->roi->xOffset;
    f.srcSampleStep = f.dstPixelStep = f.samplesPerPixel = f.kept = 1;
    if (src->dataOrder == 0 && bytes) {
        f.srcSampleStep = src->nChannels;
        f.dstPixelStep = dst->nChannels;
    }
    f.src = pixelData(src) + srcY * src->widthStep + srcX * f.srcSampleStep * bytes;
    f.dst = pixelData(dst) + std::ptrdiff_t{dst->roi->yOffset} * dst->widthStep + dstX * f.dstPixelStep * bytes;
    if (!bytes) {
        f.srcBit = static_cast<std::int32_t>(srcX);
        f.dstBit = static_cast<std::int32_t>(dstX);
    }
    f.srcRowStep = src->widthStep;
    f.dstRowStep = dst->widthStep;
    f.width = src->roi->width;
    f.height = src->roi->height;
    f.depth = src->depth;
    setMask(dst->maskImage, &f);
    return f;
}

std::int32_t runPlanes(const ZetImage* src, const ZetImage* dst, ConvPlan* plan, const ConvMargins& m) {
    const ChannelList from = channelsOf(src);
    const ChannelList to = channelsOf(dst);
    const ConvForm first = commonForm(src, dst, m);
    for (std::int32_t c = 0; c < from.count; ++c) {
        ConvForm f = first;
        f.src += (from.first + c) * planeBytes(src);
        f.dst += (to.first + c) * planeBytes(dst);
        const std::int32_t result = runForm(f, plan, m);
        if (result != kConvDone) return result;
    }
    return kConvDone;
}

std::int32_t runPixels(const ZetImage* src, const ZetImage* dst, ConvPlan* plan, const ConvMargins& m) {
    ConvForm f = commonForm(src, dst, m);
    const std::ptrdiff_t bytes = sampleBytes(src->depth);
    f.src += channelsOf(src).first * bytes;
    f.dst += channelsOf(dst).first * bytes;
    if (regionCoi(src) == 0) {
        f.srcSampleStep = 1;
        f.samplesPerPixel = src->nChannels;
        f.kept = channelsOf(src).count;
    }
    return runForm(f, plan, m);
}

}  // namespace

std::int32_t ownConvolveRegion(const ZetImage* src, const ZetImage* dst, ConvPlan* plan, const ConvMargins& margins) {
    if (src->depth == ZET_DEPTH_1U) return runForm(commonForm(src, dst, margins), plan, margins);
    if (src->dataOrder == 1) return runPlanes(src, dst, plan, margins);
    return runPixels(src, dst, plan, margins);
}

}  // namespace zetpxl
