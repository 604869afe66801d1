// Morphology of a plane whose rows lie in memory, apart from those that it writes: no row is copied before it is used.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl {

enum class MorphKind : std::uint8_t { Dilate, Erode, Open, Close };

// Half-sizes of squares and samples of a pixel that planes serve.
inline constexpr std::ptrdiff_t kPlaneReach = 127;
inline constexpr std::int32_t kPlaneLanes = 4;

// The pixels beside a row: at an offset from its first one, or a value.
struct PlaneSide {
    std::ptrdiff_t offset;  // pixels
    bool isConstant;
    std::int32_t value;
};

// Region rows -1 and `height` are the frame's; the rows beyond read as those.
struct MorphPlane {
    const std::uint8_t* src;    // the first sample of region row 0
    std::ptrdiff_t srcStep;     // bytes
    const std::uint8_t* above;  // with a pixel on either side; null: lies in the image like the region's
    const std::uint8_t* below;
    PlaneSide left;
    PlaneSide right;
    std::uint8_t* dst;
    std::ptrdiff_t dstStep;
    std::ptrdiff_t width;  // pixels
    std::ptrdiff_t height;
    std::ptrdiff_t lanes;  // samples of a pixel
    std::ptrdiff_t n;      // half-size of the square; opening and closing: not above the height
};

// False when memory cannot be had.
using PlaneRoutine = bool (*)(const MorphPlane& plane);

// Null for a depth that planes do not serve.
PlaneRoutine planeRoutine(std::uint32_t depth, MorphKind kind);

}  // namespace zetpxl
