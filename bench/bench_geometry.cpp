// Warp, right-angle turns and remap.
#include <cmath>

#include "ratio.h"

namespace {

using bench::Call;
using bench::Form;
using bench::SharedImage;

constexpr Form kForms[] = {bench::k8U, bench::k8UColours, bench::k32F};
constexpr const char* kInterpolations[] = {"nearest", "linear", "cubic"};

bench::Operation turned(double angle, std::int32_t interpolation) {
    return bench::between([=](ZetImage* source, ZetImage* destination) {
        const double centre = (source->width - 1) / 2.0;
        double xShift = 0, yShift = 0;
        zetGetRotateShift(centre, centre, angle, &xShift, &yShift);
        zetRotate(source, destination, angle, xShift, yShift, interpolation);
    });
}

// The positions of a barrel, in x or in y.
SharedImage makeBarrel(std::int32_t size, bool rows) {
    const SharedImage map = bench::makeImage({"map", size, 1, ZET_DEPTH_32F});
    auto* const positions = static_cast<float*>(map->imageData);
    const double centre = (size - 1) / 2.0;
    for (std::int32_t y = 0; y < size; ++y)
        for (std::int32_t x = 0; x < size; ++x) {
            const double dx = (x - centre) / centre, dy = (y - centre) / centre;
            const double position = centre + (rows ? dy : dx) * (0.9 + 0.05 * (dx * dx + dy * dy)) * centre;
            positions[std::ptrdiff_t{y} * size + x] = static_cast<float>(position);
        }
    return map;
}

bench::Operation remapped(std::int32_t interpolation) {
    return [=](const Form& form) -> Call {
        const SharedImage source = bench::makeImage(form), destination = bench::makeImage(form);
        const SharedImage xMap = makeBarrel(form.size, false), yMap = makeBarrel(form.size, true);
        return [=] { zetRemap(source.get(), xMap.get(), yMap.get(), destination.get(), interpolation); };
    };
}

}  // namespace

int main(int argc, char** argv) {
    const double warps[3][3] = {{12, 25, 70}, {5, 14, 50}, {4, 9, 18}};
    const double quarters[] = {5, 4, 3}, halves[] = {1.5, 2.2, 1.3};
    const double remaps[3][3] = {{14, 30, 80}, {7, 16, 45}, {4, 8, 20}};
    for (int f = 0; f < 3; ++f)
        for (std::int32_t i = 0; i < 3; ++i)
            bench::add("zetRotate", std::string("30 degrees, ") + kInterpolations[i], kForms[f], warps[f][i],
                       turned(30, i));
    for (int f = 0; f < 3; ++f) {
        bench::add("zetRotate", "90 degrees", kForms[f], quarters[f], turned(90, ZET_INTER_NN));
        bench::add("zetRotate", "270 degrees", kForms[f], quarters[f], turned(270, ZET_INTER_NN));
        bench::add("zetRotate", "180 degrees", kForms[f], halves[f], turned(180, ZET_INTER_NN));
    }
    for (const double angle : {90.0, 270.0, 180.0})
        bench::add("zetRotate", std::to_string(static_cast<int>(angle)) + " degrees", bench::k1U, angle == 180 ? 5 : 20,
                   turned(angle, ZET_INTER_NN));
    for (int f = 0; f < 3; ++f)
        for (std::int32_t i = 0; i < 3; ++i)
            bench::add("zetRemap", std::string("barrel, ") + kInterpolations[i], kForms[f], remaps[f][i], remapped(i));
    return bench::run(argc, argv);
}
