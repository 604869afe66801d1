// Dilation, erosion, opening and closing by a filled square.
//   morph.1 nIterations n is the half-size of the square, not a count: it has 2n + 1 pixels a side, applied at once
//   morph.2 of what lies outside the region only the one-pixel frame around it counts, replicated outwards
//   morph.3 rows stream through rings: opening and closing feed the second pass from the first, row by row, and the second
//           sees unfiltered source pixels beside and above the first pass's results, and below them from row max(height, n) on
//   morph.4 in place equals a separate destination: rows are fetched before any row that their windows cover is stored, and
//           the row below the region, which a wrapped border takes from rows already stored, before all
//   morph.5 plain images apart from each other need neither rings nor copies and go as planes, interleaved channels at once
//   morph.6 the status is cleared on entry; a ring that cannot be had is a status without a report
#include <algorithm>
#include <array>
#include <cstring>

#include "core/alloc.h"
#include "core/check.h"
#include "core/depth.h"
#include "core/region.h"
#include "core/report.h"
#include "pixel/logic.h"
#include "rank/morphfetch.h"
#include "rank/morphplane.h"
#include "rank/morphrows.h"

namespace zetpxl {

namespace {

constexpr char kMorphSource[] = "ownMorph";

struct Morph {
    Operation op;
    ZetImage src;
    ZetImage dst;
    ZetROI srcRect;
    ZetROI dstRect;
    ZetImage* mask;  // one bit a pixel of the region, or null
    const MorphDepth* depth;
    std::ptrdiff_t n;
    std::ptrdiff_t size;    // of the square
    std::ptrdiff_t length;  // pixels of a padded row
    std::ptrdiff_t rowStep;
    std::int32_t srcChannel;
    std::int32_t dstChannel;
    Block<std::uint8_t> below;  // in place under a wrapped bottom border: the padded row below the region
    bool keepsBelow;
};

struct Ring {
    Block<std::uint8_t> rows;  // size rows and a scratch row behind them
};

std::uint8_t* ringRow(const Morph& m, const Ring& ring, std::ptrdiff_t r) {
    return ring.rows.get() + (r % m.size) * m.rowStep;
}

std::uint8_t* scratchRow(const Morph& m, const Ring& ring) { return ring.rows.get() + m.size * m.rowStep; }

bool allocateRing(const Morph& m, Ring* ring) {
    ring->rows = allocBlock<std::uint8_t>(sizeProduct(m.size + 1, m.rowStep));
    if (!ring->rows) zetSetErrStatus(ZET_StatusNoMemory);
    return ring->rows != nullptr;
}

std::int32_t channelCount(const ZetImage* image) {
    if (regionCoi(image) != 0) return 1;
    return image->nChannels - (image->alphaChannel ? 1 : 0);
}

const char* argumentFault(const ZetImage* src, const ZetImage* dst, std::int32_t nIterations) {
    if (nIterations < 1) return "Illegal number of iterations";
    if (!morphDepth(src->depth)) return "Illegal image depth";
    if (src->depth != dst->depth) return "SRC and DST depth are different";
    if (src->dataOrder != dst->dataOrder) return "SRC and DST order are different";
    if (src->origin != dst->origin) return "SRC and DST orign are different";
    if (channelCount(src) != channelCount(dst)) return "SRC and DST number of channels are different";
    return nullptr;
}

bool ownMorphCheck(const Operation& op, const ZetImage* src, const ZetImage* dst, std::int32_t nIterations) {
    if (!checkImages(op, {src, dst})) return false;
    const char* fault = argumentFault(src, dst, nIterations);
    if (fault) report(op, ZET_StatusBadArgument, fault);
    return !fault;
}

// The region without its sizes' sign: nothing is left of one outside its image.
ZetROI ownMaskedImageRect(const ZetImage* image) {
    ZetRoiRect rect;
    ownRoiRect(image, &rect);
    ZetROI region{regionCoi(image), rect.xOffset, rect.yOffset, rect.width, rect.height};
    if (image->maskImage) {
        ownRoiRect(image->maskImage, &rect);
        region.width = std::min(region.width, rect.width);
        region.height = std::min(region.height, rect.height);
    }
    return region;
}

// False when the region is empty.
bool setRegions(Morph* m) {
    m->srcRect = ownMaskedImageRect(&m->src);
    m->dstRect = ownMaskedImageRect(&m->dst);
    m->srcRect.width = m->dstRect.width = std::min(m->srcRect.width, m->dstRect.width);
    m->srcRect.height = m->dstRect.height = std::min(m->srcRect.height, m->dstRect.height);
    m->src.roi = &m->srcRect;
    m->dst.roi = &m->dstRect;
    return m->srcRect.width > 0 && m->srcRect.height > 0;
}

// Both images' masks rule the destination. False with the status that the failed step has set.
bool setMask(Morph* m) {
    if (!m->src.maskImage && !m->dst.maskImage) return true;
    constexpr char noName[4] = {};
    m->mask = zetCreateImageHeader(1, 0, ZET_DEPTH_1U, noName, noName, 1, 0, 8, m->dstRect.width, m->dstRect.height,
                                   nullptr, nullptr, nullptr, nullptr);
    if (!m->mask) {
        if (zetGetErrStatus() == ZET_StatusOk) zetSetErrStatus(ZET_StatusNoMemory);
        return false;
    }
    zetAllocateImage(m->mask, 1, -1);
    for (ZetImage* mask : {m->src.maskImage, m->dst.maskImage})
        if (mask && m->mask->imageData) zetAnd(mask, m->mask, m->mask);
    return zetGetErrStatus() == ZET_StatusOk;
}

bool fetchPadded(const Morph& m, std::int32_t y, std::uint8_t* row) {
    const MorphImage from{m.op, const_cast<ZetImage*>(&m.src), m.depth};
    if (!ownFetchBorderRow(from, m.srcRect.xOffset - 1, y, m.srcChannel, row, m.n - 1, m.srcRect.width + 2))
        return false;
    m.depth->spread(row, m.n - 1, 0, m.n - 1);
    m.depth->spread(row, m.length - m.n, m.length - m.n + 1, m.n - 1);
    return true;
}

// The padded row for region row r; rows beyond the frame read as the frame's row.
bool ownFetchMorphRow(const Morph& m, std::ptrdiff_t r, std::uint8_t* row) {
    const auto framed = static_cast<std::int32_t>(std::clamp<std::ptrdiff_t>(r, -1, m.srcRect.height));
    if (m.keepsBelow && framed == m.srcRect.height) {
        std::memcpy(row, m.below.get(), static_cast<std::size_t>(m.rowStep));
        return true;
    }
    return fetchPadded(m, m.srcRect.yOffset + framed, row);
}

bool storeResult(const Morph& m, const Ring& ring, const std::uint8_t* result, std::ptrdiff_t y) {
    const MorphImage to{m.op, const_cast<ZetImage*>(&m.dst), m.depth};
    const auto row = static_cast<std::int32_t>(m.dstRect.yOffset + y);
    if (m.mask) {
        std::uint8_t* old = scratchRow(m, ring);
        if (!ownFetchBorderRow(to, m.dstRect.xOffset, row, m.dstChannel, old, 0, m.dstRect.width)) return false;
        m.depth->merge(result, {pixelData(m.mask) + y * m.mask->widthStep, 0}, m.dstRect.width, old);
        result = old;
    }
    return ownStoreImageRow(result, m.dstRect.width, to, m.dstRect.xOffset, row, m.dstChannel);
}

void runKernel(const Morph& m, ExtremeRoutine kernel, const Ring& ring, std::uint8_t* out, std::ptrdiff_t offset) {
    kernel({ring.rows.get(), m.rowStep, scratchRow(m, ring), out, offset, m.size, m.srcRect.width});
}

bool onePass(const Morph& m, const Ring& ring, ExtremeRoutine kernel) {
    for (std::ptrdiff_t r = -m.n; r < m.n; ++r)
        if (!ownFetchMorphRow(m, r, ringRow(m, ring, r + m.n))) return false;
    for (std::ptrdiff_t y = 0; y < m.srcRect.height; ++y) {
        const std::ptrdiff_t newest = m.size - 1 + y;
        if (!ownFetchMorphRow(m, y + m.n, ringRow(m, ring, newest))) return false;
        std::uint8_t* out = ringRow(m, ring, newest + 1);  // the row that leaves the window
        runKernel(m, kernel, ring, out, 0);
        if (!storeResult(m, ring, out, y)) return false;
    }
    return true;
}

struct TwoPass {
    Ring sources;
    Ring firsts;
    ExtremeRoutine first;
    ExtremeRoutine second;
};

void copySource(const Morph& m, const TwoPass& t, std::ptrdiff_t r) {
    std::memcpy(ringRow(m, t.firsts, r), ringRow(m, t.sources, r), static_cast<std::size_t>(m.rowStep));
}

// The first pass's rows above the region, and its rows 0 to n - 1; ring row r holds padded row r - n.
bool startFirsts(const Morph& m, const TwoPass& t) {
    for (std::ptrdiff_t r = 0; r < m.size; ++r)
        if (!ownFetchMorphRow(m, r - m.n, ringRow(m, t.sources, r))) return false;
    for (std::ptrdiff_t r = 0; r < m.n; ++r) copySource(m, t, r);
    for (std::ptrdiff_t r = m.n; r < m.size - 1; ++r) {
        copySource(m, t, r);
        runKernel(m, t.first, t.sources, ringRow(m, t.firsts, r), m.n);
        if (!ownFetchMorphRow(m, r + 1, ringRow(m, t.sources, r + 1 + m.n))) return false;
    }
    return true;
}

bool twoPass(const Morph& m, const TwoPass& t) {
    if (!startFirsts(m, t)) return false;
    for (std::ptrdiff_t y = 0; y < m.srcRect.height; ++y) {
        const std::ptrdiff_t newest = m.size - 1 + y;
        copySource(m, t, newest);
        if (y < m.srcRect.height - m.n) {
            runKernel(m, t.first, t.sources, ringRow(m, t.firsts, newest), m.n);
            if (!ownFetchMorphRow(m, y + m.size, ringRow(m, t.sources, newest + m.n + 1))) return false;
        }
        std::uint8_t* out = ringRow(m, t.firsts, newest + 1);
        runKernel(m, t.second, t.firsts, out, 0);
        if (!storeResult(m, t.firsts, out, y)) return false;
    }
    return true;
}

// Calls pass() for each pair of channels until one fails.
template <class Pass>
void forChannels(Morph* m, Pass pass) {
    const std::int32_t first = std::max(m->srcRect.coi, 1);
    const std::int32_t last = m->srcRect.coi ? m->srcRect.coi : m->src.nChannels - (m->src.alphaChannel ? 1 : 0);
    m->dstChannel = std::max(m->dstRect.coi, 1);
    for (m->srcChannel = first; m->srcChannel <= last; ++m->srcChannel, ++m->dstChannel) {
        if (m->keepsBelow && !fetchPadded(*m, m->srcRect.yOffset + m->srcRect.height, m->below.get())) return;
        if (!pass()) return;
    }
}

void ownMorphOnePass(Morph* m, ExtremeRoutine kernel) {
    Ring ring;
    if (!allocateRing(*m, &ring)) return;
    forChannels(m, [&] { return onePass(*m, ring, kernel); });
}

void ownMorphTwoPass(Morph* m, ExtremeRoutine first, ExtremeRoutine second) {
    TwoPass t{{}, {}, first, second};
    if (!allocateRing(*m, &t.sources) || !allocateRing(*m, &t.firsts)) return;
    forChannels(m, [&] { return twoPass(*m, t); });
}

// Sizes of rows; false when the row below the region is to be kept and cannot.
bool setRows(Morph* m, std::int32_t nIterations, bool inPlace) {
    m->depth = morphDepth(m->src.depth);
    m->n = nIterations;
    m->size = 2 * m->n + 1;
    m->length = m->srcRect.width + 2 * m->n;
    m->rowStep = (((m->length * m->depth->pixelBits + 7) >> 3) + 7) & -std::ptrdiff_t{8};
    const bool wrapsBelow =
        (m->src.borderMode[1] & 3) == ZET_BORDER_WRAP && m->srcRect.yOffset + m->srcRect.height == m->src.height;
    m->keepsBelow = inPlace && wrapsBelow;
    if (!m->keepsBelow) return true;
    m->below = allocBlock<std::uint8_t>(m->rowStep);
    if (!m->below) zetSetErrStatus(ZET_StatusNoMemory);
    return m->below != nullptr;
}

bool areApart(const ZetImage& a, const ZetImage& b) {
    const auto first = [](const ZetImage& image) { return reinterpret_cast<std::uintptr_t>(image.imageData); };
    const auto end = [&](const ZetImage& image) {
        const std::ptrdiff_t planes = image.dataOrder == 1 ? image.nChannels : 1;
        return first(image) + static_cast<std::uintptr_t>(sizeProduct(planeBytes(&image), planes));
    };
    return end(a) <= first(b) || end(b) <= first(a);
}

// Samples of a pixel that go at once; 0: a channel's samples do not lie together.
std::int32_t planeLanes(const Morph& m) {
    if (m.src.dataOrder == 1 || (m.src.nChannels == 1 && m.dst.nChannels == 1)) return 1;
    const bool whole = !m.srcRect.coi && !m.dstRect.coi && !m.src.alphaChannel && !m.dst.alphaChannel;
    const bool alike = m.src.nChannels == m.dst.nChannels && m.src.nChannels <= kPlaneLanes;
    return whole && alike ? m.src.nChannels : 0;
}

bool servesPlane(const Morph& m, MorphKind kind) {
    if (m.src.tileInfo || m.dst.tileInfo || m.mask || m.n > kPlaneReach) return false;
    if (kind >= MorphKind::Open && m.srcRect.height < m.n) return false;
    return planeRoutine(m.src.depth, kind) && planeLanes(m) > 0 && areApart(m.src, m.dst);
}

// The pixels of the frame beside rows of the image.
PlaneSide frameSide(const Morph& m, bool isLeft) {
    const std::ptrdiff_t x = isLeft ? m.srcRect.xOffset - 1 : m.srcRect.xOffset + m.srcRect.width;
    if (x >= 0 && x < m.src.width) return {x - m.srcRect.xOffset, false, 0};
    const std::size_t side = isLeft ? 2 : 3;
    const std::uint32_t mode = m.src.borderMode[side] & 3;
    if (mode == ZET_BORDER_CONSTANT) return {0, true, m.src.borderConst[side]};
    const bool isFirst = isLeft == (mode == ZET_BORDER_REPLICATE || mode == ZET_BORDER_REFLECT);
    return {(isFirst ? 0 : m.src.width - 1) - m.srcRect.xOffset, false, 0};
}

// Samples of `lanes` channels of the frame's row `y`, interleaved as in the image.
bool buildFrameRow(const Morph& m, std::int32_t y, std::int32_t lanes, Block<std::uint8_t>* row) {
    const std::ptrdiff_t bytes = m.depth->pixelBits / 8;
    const std::int32_t count = m.srcRect.width + 2;
    const MorphImage from{m.op, const_cast<ZetImage*>(&m.src), m.depth};
    *row = allocBlock<std::uint8_t>(sizeProduct(count, lanes, bytes));
    const auto channel = allocBlock<std::uint8_t>(sizeProduct(count, bytes));
    if (!*row || !channel) return false;
    for (std::int32_t k = 0; k < lanes; ++k) {
        if (!ownFetchBorderRow(from, m.srcRect.xOffset - 1, y, m.srcChannel + k, channel.get(), 0, count)) return false;
        m.depth->store(channel.get(), 0, count, {row->get() + k * bytes, 0, lanes});
    }
    return true;
}

bool runPlane(const Morph& m, PlaneRoutine routine, std::int32_t lanes) {
    const auto sampleAt = [&](const ZetImage& image, const ZetROI& rect, std::int32_t channel) {
        const std::ptrdiff_t pixel = lanes * m.depth->pixelBits / 8;
        return pixelData(&image) + (channel - 1) * planeBytes(&image) + rect.yOffset * std::ptrdiff_t{image.widthStep} +
               rect.xOffset * pixel;
    };
    Block<std::uint8_t> above, below;
    const std::int32_t last = m.srcRect.yOffset + m.srcRect.height;
    bool done = m.srcRect.yOffset > 0 || buildFrameRow(m, -1, lanes, &above);
    done = done && (last < m.src.height || buildFrameRow(m, last, lanes, &below));
    done = done && routine({sampleAt(m.src, m.srcRect, m.srcChannel), m.src.widthStep, above.get(), below.get(),
                            frameSide(m, true), frameSide(m, false), sampleAt(m.dst, m.dstRect, m.dstChannel),
                            m.dst.widthStep, m.srcRect.width, m.srcRect.height, lanes, m.n});
    if (!done) zetSetErrStatus(ZET_StatusNoMemory);
    return done;
}

void runPlanes(Morph* m, MorphKind kind) {
    const PlaneRoutine routine = planeRoutine(m->src.depth, kind);
    const std::int32_t lanes = planeLanes(*m);
    if (lanes == 1) return forChannels(m, [&] { return runPlane(*m, routine, 1); });
    m->srcChannel = m->dstChannel = 1;
    runPlane(*m, routine, lanes);
}

void runKind(Morph* m, MorphKind kind) {
    if (servesPlane(*m, kind)) return runPlanes(m, kind);
    switch (kind) {
        case MorphKind::Dilate:
            return ownMorphOnePass(m, m->depth->dilate);
        case MorphKind::Erode:
            return ownMorphOnePass(m, m->depth->erode);
        case MorphKind::Open:
            return ownMorphTwoPass(m, m->depth->erode, m->depth->dilate);
        case MorphKind::Close:
            return ownMorphTwoPass(m, m->depth->dilate, m->depth->erode);
    }
}

void runMorph(const char* name, ZetImage* srcImage, ZetImage* dstImage, std::int32_t nIterations, MorphKind kind) {
    zetSetErrStatus(ZET_StatusOk);
    Morph m{};
    m.op = {name, kMorphSource};
    if (!ownMorphCheck(m.op, srcImage, dstImage, nIterations)) return;
    m.src = *srcImage;
    m.dst = *dstImage;
    if (!setRegions(&m)) return;
    if (setMask(&m) && setRows(&m, nIterations, srcImage == dstImage)) runKind(&m, kind);
    zetDeallocate(m.mask, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
}

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

void zetDilate(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations) {
    runMorph("zetDilate", srcImage, dstImage, nIterations, MorphKind::Dilate);
}

void zetErode(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations) {
    runMorph("zetErode", srcImage, dstImage, nIterations, MorphKind::Erode);
}

void zetOpen(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations) {
    runMorph("zetOpen", srcImage, dstImage, nIterations, MorphKind::Open);
}

void zetClose(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations) {
    runMorph("zetClose", srcImage, dstImage, nIterations, MorphKind::Close);
}
