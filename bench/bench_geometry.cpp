// Warp, right-angle turns, remap and changes of scale.
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

using ScaleOperation = void (*)(ZetImage*, ZetImage*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                std::int32_t);

struct Scale {
    const char* operation;
    const char* detail;
    ScaleOperation call;
    std::int32_t dst, src;
    std::int32_t interpolation;
    double atMost[3];  // by form
};

constexpr Scale kScales[] = {
    {"zetDecimate", "1/2, area", zetDecimate, 1, 2, ZET_INTER_SUPER, {3, 5, 2.5}},
    {"zetDecimate", "1/3, area", zetDecimate, 1, 3, ZET_INTER_SUPER, {10, 15, 8}},
    {"zetDecimate", "2/3, area", zetDecimate, 2, 3, ZET_INTER_SUPER, {25, 25, 10}},
    {"zetDecimate", "0.37, area", zetDecimate, 37, 100, ZET_INTER_SUPER, {30, 30, 12}},
    {"zetDecimate", "2/3, linear", zetDecimate, 2, 3, ZET_INTER_LINEAR, {12, 10, 4}},
    {"zetDecimate", "2/3, cubic", zetDecimate, 2, 3, ZET_INTER_CUBIC, {30, 30, 7}},
    {"zetDecimate", "1/2, nearest", zetDecimate, 1, 2, ZET_INTER_NN, {2.5, 4.5, 2.5}},
    {"zetZoom", "by 2, nearest", zetZoom, 2, 1, ZET_INTER_NN, {2, 3, 1.2}},
    {"zetZoom", "by 2, linear", zetZoom, 2, 1, ZET_INTER_LINEAR, {6, 5, 2.5}},
    {"zetZoom", "by 2, cubic", zetZoom, 2, 1, ZET_INTER_CUBIC, {12, 12, 4}},
    {"zetResize", "2/3, linear", zetResize, 2, 3, ZET_INTER_LINEAR, {10, 10, 4}},
    {"zetResize", "2/3, cubic", zetResize, 2, 3, ZET_INTER_CUBIC, {25, 25, 7}},
};

// The larger image has the form's size.
void addScale(const Scale& scale, int f) {
    const bool grows = scale.dst > scale.src;
    const Form& form = kForms[f];
    const Form dst = grows ? form : bench::sized(form, form.size * scale.dst / scale.src);
    const Form src = grows ? bench::sized(form, form.size * scale.src / scale.dst) : form;
    const auto prepare = [=]() -> Call {
        const SharedImage source = bench::makeImage(src), destination = bench::makeImage(dst);
        return [=] {
            scale.call(source.get(), destination.get(), scale.dst, scale.src, scale.dst, scale.src,
                       scale.interpolation);
        };
    };
    bench::add({scale.operation, scale.detail, form.name, bench::pixelsOf(dst), bench::bytesOf(dst), prepare,
                scale.atMost[f]});
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
    for (const Scale& scale : kScales)
        for (int f = 0; f < 3; ++f) addScale(scale, f);
    return bench::run(argc, argv);
}
