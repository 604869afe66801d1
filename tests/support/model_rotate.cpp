#include <algorithm>
#include <cmath>

#include "core/mathfun.h"
#include "tests/support/model_warp.h"

namespace zetpxl::test {
namespace {

// Not a number for an angle that is none.
double normalised(double angle) {
    constexpr double k = 0.002777777777777778;
    if (!(angle * k > -2147483649.0 && angle * k < 2147483648.0)) angle = std::fmod(angle, 360.0);
    if (std::isnan(angle)) return angle;
    double a = angle - 360 * std::trunc(angle * k);
    if (a < 0) a += 360;
    return a;
}

bool isQuarter(double a) { return a == 90 || a == 180 || a == 270; }

struct Turn {
    double c, s;
};

Turn turnOf(double a) {
    if (a == 90) return {0, 1};
    if (a == 180) return {-1, 0};
    if (a == 270) return {0, -1};
    const double r = a * 0.017453292519943295;
    return {ownCos(r), ownSin(r)};
}

void copyTurned(ZetImage* src, ZetImage* dst, double a, double xShift, double yShift) {
    const Area from = modelRegion(*src);
    const Area to = modelRegion(*dst);
    const ChannelRange in = modelChannels(*src);
    const ChannelRange out = modelChannels(*dst);
    for (std::int32_t y = to.y; y < to.y + to.height; ++y)
        for (std::int32_t x = to.x; x < to.x + to.width; ++x) {
            const double col = a == 90 ? yShift - y : a == 180 ? xShift - x : y - yShift;
            const double row = a == 90 ? x - xShift : a == 180 ? yShift - y : xShift - x;
            if (!(col >= from.x && col < from.x + from.width && row >= from.y && row < from.y + from.height)) continue;
            for (std::int32_t c = 0; c < out.count; ++c)
                putSample(
                    *dst, out.first + c, y, x,
                    getSample(*src, in.first + c, static_cast<std::int32_t>(row), static_cast<std::int32_t>(col)));
        }
}

void turnExactly(Model& model, ZetImage* src, ZetImage* dst, double a, double xShift, double yShift) {
    if (!modelWarpChecks(model, src, dst, "zetRotate")) return;
    if (modelRegion(*src).empty() || modelRegion(*dst).empty()) return;
    if (modelNothingToProcess(*src) || modelNothingToProcess(*dst)) return;
    if (modelChannels(*src).count != modelChannels(*dst).count)
        return model.report(ZET_StatusBadArgument, "zetRotate", kChannelWords, "zetwarp");
    copyTurned(src, dst, a, xShift, yShift);
}

}  // namespace

void modelShear(Model& model, ZetImage* src, ZetImage* dst, const std::array<double, 4>& n, std::int32_t interpolate) {
    const double coeffs[6] = {1, n[0], n[2], n[1], 1, n[3]};
    modelWarpAffine(model, src, dst, coeffs, interpolate);
    if (model.status < 0) model.report(ZET_StatusBacktrace, "zetShear", "", "zetwarp");
}

void modelRotate(Model& model, ZetImage* src, ZetImage* dst, const std::array<double, 3>& n, std::int32_t interpolate) {
    const double a = normalised(n[0]);
    if (std::isnan(a)) return;
    const bool tiles = (src && tiled(*src)) || (dst && tiled(*dst));
    if (isQuarter(a) && !tiles && std::floor(n[1]) == n[1] && std::floor(n[2]) == n[2])
        return turnExactly(model, src, dst, a, n[1], n[2]);
    const Turn t = turnOf(a);
    const double coeffs[6] = {t.c, t.s, n[1], -t.s, t.c, n[2]};
    modelWarpAffine(model, src, dst, coeffs, interpolate);
    if (model.status < 0) model.report(ZET_StatusBacktrace, "zetRotate", "", "zetwarp");
}

void modelGetRotateShift(double xCenter, double yCenter, double angle, double* xShift, double* yShift) {
    const double a = normalised(angle);
    if (a == 0 || std::isnan(a)) return;
    const Turn t = turnOf(a);
    double dx = xCenter - t.c * xCenter - t.s * yCenter;
    double dy = t.s * xCenter + yCenter - t.c * yCenter;
    if (a == 90) {
        dx = xCenter - yCenter;
        dy = yCenter + xCenter;
    } else if (a == 180) {
        dx = 2 * xCenter;
        dy = 2 * yCenter;
    } else if (a == 270) {
        dx = yCenter + xCenter;
        dy = yCenter - xCenter;
    }
    *xShift += dx;
    *yShift += dy;
}

}  // namespace zetpxl::test
