// Rotations and shears: matrices for the warp, but for exact right-angle turns.
//   rotate.1 an angle is brought to 0 up to 360 degrees; one beyond what 32 bits of turns hold is reduced by fmod first, and one
//            that is no number makes no pixel
//   rotate.2 right angles need no sine or cosine, and by whole shifts of untiled images no interpolation either
#include <cmath>

#include "core/mathfun.h"
#include "core/report.h"
#include "geometry/turn.h"
#include "geometry/warp.h"

namespace zetpxl {

namespace {

constexpr Operation opRotate{"zetRotate", kWarpSource};
constexpr Operation opShear{"zetShear", kWarpSource};

constexpr double kTurnsPerDegree = 0.002777777777777778;
constexpr double kRadiansPerDegree = 0.017453292519943295;

// False for an angle that is no number.
bool normalise(double angle, double* normal) {
    if (!std::isfinite(angle)) return false;
    if (std::fabs(angle * kTurnsPerDegree) >= 2147483648.0) angle = std::fmod(angle, 360.0);
    const auto turns = static_cast<std::int32_t>(angle * kTurnsPerDegree);
    *normal = angle - 360.0 * turns;
    if (*normal < 0) *normal += 360;
    return true;
}

bool isRightAngle(double a) { return a == 90 || a == 180 || a == 270; }

struct Direction {
    double cosine;
    double sine;
};

Direction directionOf(double a) {
    if (a == 90) return {0, 1};
    if (a == 180) return {-1, 0};
    if (a == 270) return {0, -1};
    const double radians = a * kRadiansPerDegree;
    return {ownCos(radians), ownSin(radians)};
}

bool isWhole(double v) { return std::floor(v) == v; }

// A null image counts as untiled and is left to the turn's own checks.
bool isTiled(const ZetImage* image) { return image && image->tileInfo; }

}  // namespace

}  // namespace zetpxl

using namespace zetpxl;

void zetRotate(ZetImage* srcImage, ZetImage* dstImage, double angle, double xShift, double yShift,
               int32_t interpolate) {
    double a = 0;
    if (!normalise(angle, &a)) return;
    if (isRightAngle(a) && isWhole(xShift) && isWhole(yShift) && !isTiled(srcImage) && !isTiled(dstImage))
        return turnExactly(opRotate, srcImage, dstImage, static_cast<std::int32_t>(a + 0.1), xShift, yShift);
    const Direction d = directionOf(a);
    const double matrix[6] = {d.cosine, d.sine, xShift, -d.sine, d.cosine, yShift};
    zetWarpAffine(srcImage, dstImage, matrix, interpolate);
    reportBacktrace(opRotate);
}

void zetShear(ZetImage* srcImage, ZetImage* dstImage, double xShear, double yShear, double xShift, double yShift,
              int32_t interpolate) {
    const double matrix[6] = {1, xShear, xShift, yShear, 1, yShift};
    zetWarpAffine(srcImage, dstImage, matrix, interpolate);
    reportBacktrace(opShear);
}

void zetGetRotateShift(double xCenter, double yCenter, double angle, double* xShift, double* yShift) {
    double a = 0;
    if (!normalise(angle, &a) || a == 0) return;
    double dx = 0;
    double dy = 0;
    if (a == 90) {
        dx = xCenter - yCenter;
        dy = yCenter + xCenter;
    } else if (a == 180) {
        dx = 2 * xCenter;
        dy = 2 * yCenter;
    } else if (a == 270) {
        dx = yCenter + xCenter;
        dy = yCenter - xCenter;
    } else {
        const Direction d = directionOf(a);
        dx = xCenter - d.cosine * xCenter - d.sine * yCenter;
        dy = d.sine * xCenter + yCenter - d.cosine * yCenter;
    }
    *xShift += dx;
    *yShift += dy;
}
