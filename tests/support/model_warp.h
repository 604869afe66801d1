// Plain model of the affine warp and of what builds on it.
#pragma once

#include "tests/support/model_polygon.h"

namespace zetpxl::test {

// The checks that warps and turns share; false when the call ends.
bool modelWarpChecks(Model& model, const ZetImage* src, const ZetImage* dst, const char* name);

void modelWarpAffine(Model& model, ZetImage* src, ZetImage* dst, const double* coeffs, std::int32_t interpolate);
void modelGetAffineTransform(Model& model, const ZetImage* src, double* coeffs, const double* quad);

void modelShear(Model& model, ZetImage* src, ZetImage* dst, const std::array<double, 4>& numbers,
                std::int32_t interpolate);
void modelRotate(Model& model, ZetImage* src, ZetImage* dst, const std::array<double, 3>& numbers,
                 std::int32_t interpolate);
void modelGetRotateShift(double xCenter, double yCenter, double angle, double* xShift, double* yShift);

// Nothing on the outside of the destination's region takes part.
void modelBlendEdges(ZetImage* dst, const Quad& quad, bool positive);

constexpr const char* kChannelWords =
    "Number of processed channels of srcImage != Number of processed channels of dstImage";
constexpr const char* kModeWords =
    "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate != ZET_INTER_CUBIC";

// Without a region an image that has nothing but alpha has nothing to process.
bool modelNothingToProcess(const ZetImage& image);

}  // namespace zetpxl::test
