// Plain models of the routines that make one block of a shrunk image from one rectangle of its source.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

struct DecimateBlock {
    const ZetImage* src;
    const ZetImage* dst;
    Area from;  // what may be read; samples past an edge of it are those at the edge
    Area to;
    ChannelRange channels;  // of the source
    std::int32_t dstChannel;
    float xStep, yStep;
    float x, y;  // the source position of the first pixel, counted from `from`; afterwards the one behind the block

    std::uint32_t pattern(std::int32_t channel, std::int64_t row, std::int64_t col) const;
    double value(std::int32_t channel, std::int64_t row, std::int64_t col) const;
    void put(std::int32_t channel, std::int32_t row, std::int32_t col, std::uint32_t sample) const;
    bool empty() const { return to.empty(); }
};

struct DecimateRoutine {
    std::int32_t mode;
    bool xWhole, yWhole;  // axes on which every position is a sample's
};

void modelDecimateBlock(DecimateBlock& block, const DecimateRoutine& routine);
void modelDecimateSuper(DecimateBlock& block);
void modelDecimateSuperBits(DecimateBlock& block);

// A 1U row is counted from the start of the byte that holds its first pixel.
inline std::int32_t firstBit(const DecimateBlock& block) { return block.from.x & 7; }

// To a 32-bit integer, toward zero.
inline std::int64_t truncated(double value) { return static_cast<std::int32_t>(value); }

}  // namespace zetpxl::test
