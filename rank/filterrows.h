// Rows of a filter block: source rows at hand in window order, results stored under masks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/alloc.h"
#include "pixel/maskrows.h"
#include "rank/frame.h"

namespace zetpxl {

// The rows of one plane. Where one channel of interleaved pixels is filtered its samples are gathered first, so that
// routines always find samples of neighbouring pixels `columnStep` apart and results contiguous.
template <class T>
struct FilterRows {
    const std::uint8_t* src;
    std::ptrdiff_t rowStep;
    std::int32_t step;
    std::int32_t kept;          // gathered rows: those of a window and the one above it
    std::ptrdiff_t rowSamples;  // of a source row, contiguous
    Block<T> gathered;          // `kept` rows, or none
};

template <class T>
bool openFilterRows(const FilterBlock& block, const FilterLanes& lanes, FilterRows<T>* rows) {
    rows->src = lanes.src;
    rows->rowStep = block.srcRowStep;
    rows->step = lanes.step;
    rows->kept = block.params->nRows + 1;
    rows->rowSamples = (std::ptrdiff_t{block.width} + block.params->nCols - 1) * lanes.lanes;
    if (lanes.lanes == lanes.step) return true;
    rows->gathered = allocBlock<T>(sizeProduct(rows->rowSamples, rows->kept));
    return rows->gathered != nullptr;
}

// Row `r` of the source; gathered rows are there from loadFilterRow until `kept` more are loaded.
template <class T>
const T* filterRow(const FilterRows<T>& rows, std::ptrdiff_t r) {
    if (rows.gathered) return rows.gathered.get() + (r % rows.kept) * rows.rowSamples;
    return reinterpret_cast<const T*>(rows.src + r * rows.rowStep);
}

template <class T>
void loadFilterRow(const FilterRows<T>& rows, std::ptrdiff_t r) {
    if (!rows.gathered) return;
    const T* from = reinterpret_cast<const T*>(rows.src + r * rows.rowStep);
    T* to = rows.gathered.get() + (r % rows.kept) * rows.rowSamples;
    for (std::ptrdiff_t i = 0; i < rows.rowSamples; ++i) to[i] = from[i * rows.step];
}

// `width` pixels of `lanes` samples to pixels `step` samples apart.
template <class T>
void storeRun(const T* out, T* dst, std::ptrdiff_t width, std::int32_t lanes, std::int32_t step) {
    if (lanes == step) return static_cast<void>(std::copy_n(out, width * lanes, dst));
    for (std::ptrdiff_t x = 0; x < width; ++x)
        for (std::int32_t k = 0; k < lanes; ++k) dst[x * step + k] = out[x * lanes + k];
}

template <class T>
void storeMasked(const T* out, T* dst, std::ptrdiff_t width, std::int32_t lanes, std::int32_t step,
                 const MaskBits& mask) {
    forMaskPieces(mask, width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* bytes) {
                      const T* from = out + first * lanes;
                      T* to = dst + first * step;
                      if (cover == MaskCover::All) return storeRun(from, to, count, lanes, step);
                      for (std::ptrdiff_t x = 0; x < count; ++x)
                          if (bytes[x]) storeRun(from + x * lanes, to + x * step, 1, lanes, step);
                  });
}

// Bits of a block's row as bytes of 0 and 1, and back; bits outside the run keep their values.
void unpackBits(const std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count, std::uint8_t* bytes);
void packBits(const std::uint8_t* bytes, std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count);
void packBitsMasked(const std::uint8_t* bytes, std::uint8_t* row, std::ptrdiff_t bit, std::ptrdiff_t count,
                    const MaskBits& mask);

// A row of results, a byte of 0 or 1 a pixel, into row `y` of a block's destination.
void storeBitRow(const FilterBlock& block, const FilterLanes& lanes, const BlockMask& mask, std::ptrdiff_t y,
                 const std::uint8_t* out);

// Calls rowOf(y, out) for each output row of each plane and stores the row; rowOf fills `lanes.lanes * width` samples.
template <class T, class RowOf>
void storeRows(const FilterBlock& block, const FilterLanes& lanes, std::int32_t plane, const BlockMask& mask, T* buffer,
               RowOf rowOf) {
    const bool direct = !isMasked(mask) && lanes.lanes == lanes.step;
    for (std::ptrdiff_t y = 0; y < block.height; ++y) {
        T* dst = reinterpret_cast<T*>(lanes.dst + plane * block.dstPlaneStep + y * block.dstRowStep);
        rowOf(y, direct ? dst : buffer);
        if (direct) continue;
        if (isMasked(mask)) {
            storeMasked(buffer, dst, block.width, lanes.lanes, lanes.step, maskBitsOfRow(mask, block.width, y));
        } else {
            storeRun(buffer, dst, block.width, lanes.lanes, lanes.step);
        }
    }
}

}  // namespace zetpxl
