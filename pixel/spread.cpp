#include "pixel/spread.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/depth.h"
#include "pixel/bits.h"

namespace zetpxl {

namespace {

std::uint8_t* rowOf(const BlockLayout& block, std::ptrdiff_t plane, std::ptrdiff_t j) {
    return block.data + plane * block.planeStep + j * block.rowStep;
}

std::size_t bytesOf(std::ptrdiff_t count) { return static_cast<std::size_t>(count); }

bool bitAt(const std::uint8_t* row, std::ptrdiff_t i) { return (row[i >> 3] >> (7 - (i & 7))) & 1; }

// The first pixel of the run over the whole run: copied once, then doubled.
void spreadFirst(std::uint8_t* run, std::ptrdiff_t pixelBytes, std::ptrdiff_t count) {
    const std::ptrdiff_t total = pixelBytes * count;
    for (std::ptrdiff_t done = pixelBytes; done < total;) {
        const std::ptrdiff_t part = std::min(done, total - done);
        std::memcpy(run + done, run, bytesOf(part));
        done += part;
    }
}

void spreadAlongRow(const BlockLayout& block, std::uint8_t* row, std::ptrdiff_t i, std::ptrdiff_t w) {
    if (block.pixelBytes == 0) return fillBits(row, i, w, bitAt(row, i));
    spreadFirst(row + i * block.pixelBytes, block.pixelBytes, w);
}

}  // namespace

void ownSpreadPixel(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h) {
    for (std::ptrdiff_t plane = 0; plane < block.nPlanes; ++plane) spreadAlongRow(block, rowOf(block, plane, j), i, w);
    ownSpreadRow(block, i, j, w, h);
}

void ownSpreadColumn(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h) {
    for (std::ptrdiff_t plane = 0; plane < block.nPlanes; ++plane)
        for (std::ptrdiff_t y = j; y < std::ptrdiff_t{j} + h; ++y) spreadAlongRow(block, rowOf(block, plane, y), i, w);
}

void ownSpreadRow(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h) {
    for (std::ptrdiff_t plane = 0; plane < block.nPlanes; ++plane) {
        const std::uint8_t* first = rowOf(block, plane, j);
        for (std::ptrdiff_t y = std::ptrdiff_t{j} + 1; y < std::ptrdiff_t{j} + h; ++y) {
            std::uint8_t* row = rowOf(block, plane, y);
            if (block.pixelBytes == 0) {
                ownCopyBits(first, row, i, i, w);
            } else {
                const std::ptrdiff_t at = std::ptrdiff_t{i} * block.pixelBytes;
                std::memcpy(row + at, first + at, bytesOf(std::ptrdiff_t{w} * block.pixelBytes));
            }
        }
    }
}

std::uint32_t borderWord(std::uint32_t depth, std::int32_t constant) {
    if (depth == ZET_DEPTH_32F) return std::bit_cast<std::uint32_t>(static_cast<float>(constant));
    return repeatedSample(depth, static_cast<std::uint32_t>(constant));
}

void fillBlockRows(const BlockLayout& block, std::int32_t j, std::int32_t h, std::uint32_t word) {
    for (std::ptrdiff_t plane = 0; plane < block.nPlanes; ++plane) {
        std::uint8_t* rows = rowOf(block, plane, j);
        std::memcpy(rows, &word, sizeof word);
        spreadFirst(rows, sizeof word, block.rowStep * h / static_cast<std::ptrdiff_t>(sizeof word));
    }
}

void fillBlockPixels(const BlockLayout& block, std::int32_t i, std::int32_t j, std::int32_t w, std::int32_t h,
                     std::uint32_t word) {
    for (std::ptrdiff_t plane = 0; plane < block.nPlanes; ++plane)
        for (std::ptrdiff_t y = j; y < std::ptrdiff_t{j} + h; ++y) {
            std::uint8_t* row = rowOf(block, plane, y);
            if (block.pixelBytes == 0) {
                fillBits(row, i, w, word & 1);
                continue;
            }
            std::uint8_t* run = row + std::ptrdiff_t{i} * block.pixelBytes;
            std::memcpy(run, &word, bytesOf(block.elementBytes));
            spreadFirst(run, block.elementBytes, std::ptrdiff_t{w} * block.pixelBytes / block.elementBytes);
        }
}

}  // namespace zetpxl
