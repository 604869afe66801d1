// zetpic warp, rotate, shear and remap.
#include <cmath>

#include "transform.h"

namespace zetpic {
namespace {

std::int32_t interpolation(const Options& options) {
    return options.interpolation + (options.blend ? ZET_INTER_BLEND_EDGES : 0);
}

struct Position {
    double x, y;
};

using Bend = Position (*)(Position from, double amount);

// Positions count from the picture's centre, in halves of its shorter side.
Position barrel(Position from, double amount) {
    const double stretch = 1 + 0.3 * amount * (from.x * from.x + from.y * from.y - 0.5);
    return {from.x * stretch, from.y * stretch};
}

Position swirl(Position from, double amount) {
    const double turn = amount * 2 * std::exp(-2 * (from.x * from.x + from.y * from.y));
    return {from.x * std::cos(turn) - from.y * std::sin(turn), from.x * std::sin(turn) + from.y * std::cos(turn)};
}

Position ripple(Position from, double amount) {
    return {from.x + 0.04 * amount * std::sin(14 * from.y), from.y + 0.04 * amount * std::sin(14 * from.x)};
}

Bend findBend(const std::string& name) { return name == "barrel" ? barrel : name == "swirl" ? swirl : ripple; }

Image makeMap(const ZetImage& form) {
    Image map(zetCreateImageHeader(1, 0, ZET_DEPTH_32F, "GRAY", "G\0\0", 0, 0, 4, form.width, form.height, nullptr,
                                   nullptr, nullptr, nullptr));
    if (map) zetAllocateImageFP(map.get(), 0, 0);
    if (map && !map->imageData) map.reset();
    return map;
}

void fillMaps(Bend bend, double amount, ZetImage* xMap, ZetImage* yMap) {
    const double centreX = (xMap->width - 1) / 2.0, centreY = (xMap->height - 1) / 2.0;
    const double unit = std::fmax(std::fmin(centreX, centreY), 0.5);
    auto* const columns = static_cast<float*>(xMap->imageData);
    auto* const rows = static_cast<float*>(yMap->imageData);
    for (std::int32_t y = 0; y < xMap->height; ++y)
        for (std::int32_t x = 0; x < xMap->width; ++x) {
            const Position from = bend({(x - centreX) / unit, (y - centreY) / unit}, amount);
            const std::ptrdiff_t at = std::ptrdiff_t{y} * xMap->width + x;
            columns[at] = static_cast<float>(centreX + from.x * unit);
            rows[at] = static_cast<float>(centreY + from.y * unit);
        }
}

}  // namespace

int runWarp(const Arguments& arguments) {
    const Options& options = arguments.options;
    return transform(arguments, Start::kBlank, [&](ZetImage* source, ZetImage* result) {
        std::array<double, 6> matrix = options.matrix.value_or(std::array<double, 6>{});
        if (options.quadrangle) zetGetAffineTransform(source, matrix.data(), options.quadrangle->data());
        if (zetGetErrStatus() >= 0) zetWarpAffine(source, result, matrix.data(), interpolation(options));
    });
}

int runRotate(const Arguments& arguments) {
    const Options& options = arguments.options;
    return transform(arguments, Start::kBlank, [&](ZetImage* source, ZetImage* result) {
        const std::array<double, 2> centre = {(source->width - 1) / 2.0, (source->height - 1) / 2.0};
        const auto [x, y] = options.about.value_or(centre);
        double shiftX = 0, shiftY = 0;
        zetGetRotateShift(x, y, *options.angle, &shiftX, &shiftY);
        zetRotate(source, result, *options.angle, shiftX, shiftY, interpolation(options));
    });
}

int runShear(const Arguments& arguments) {
    const Options& options = arguments.options;
    const auto [shearX, shearY] = *options.shear;
    const auto [moveX, moveY] = options.move.value_or(std::array<double, 2>{});
    return transform(arguments, Start::kBlank, [&](ZetImage* source, ZetImage* result) {
        zetShear(source, result, shearX, shearY, moveX, moveY, interpolation(options));
    });
}

int runRemap(const Arguments& arguments) {
    const Options& options = arguments.options;
    return transform(arguments, Start::kBlank, [&](ZetImage* source, ZetImage* result) {
        const Image xMap = makeMap(*source), yMap = makeMap(*source);
        if (!xMap || !yMap) return;
        fillMaps(findBend(options.map), options.amount, xMap.get(), yMap.get());
        ZetROI positions = result->roi ? *result->roi : ZetROI{0, 0, 0, INT32_MAX, INT32_MAX};
        positions.coi = 0;
        xMap->roi = yMap->roi = &positions;
        zetRemap(source, xMap.get(), yMap.get(), result, interpolation(options));
        xMap->roi = yMap->roi = nullptr;
    });
}

}  // namespace zetpic
