// The cells that an axis is cut into for area averages.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl {

// A cell begins with the crossing sample at `first`, if it has one, goes on with whole samples and may end with a crossing
// sample again. A cell behind the source has none.
struct AreaCell {
    std::int32_t first;
    std::int32_t last;  // samples from the first to a crossing last one, or to the one behind the last
    float begin;        // the first sample's share; below 0 when it is whole
    float end;          // the crossing last one's share; below 0 when there is none

    std::int32_t samples() const { return last + (end >= 0); }
};

inline constexpr float kNoCrossing = -1;
inline constexpr AreaCell kEmptyCell{0, 0, kNoCrossing, kNoCrossing};

struct AreaCells {
    AreaCell* cells;
    std::ptrdiff_t count;
    std::int32_t mostSamples;  // of a cell
};

// Cuts `nSamples` of an axis into at most `most` cells, from a position among the first sample.
void planCells(float position, float step, std::ptrdiff_t nSamples, std::ptrdiff_t most, AreaCells* plan);

}  // namespace zetpxl
