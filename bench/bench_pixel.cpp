// Filling, copying and adding, whole, under masks and at odd bits.
#include <array>
#include <cmath>

#include "ratio.h"

namespace {

using bench::Call;
using bench::Form;
using bench::SharedImage;

constexpr Form k8S{"8S", 4096, 1, ZET_DEPTH_8S}, k16S{"16S", 4096, 1, ZET_DEPTH_16S},
    k32S{"32S", 4096, 1, ZET_DEPTH_32S};
constexpr Form kPlane{"1U", 4096, 1, ZET_DEPTH_1U};

void fill(ZetImage* image) { image->depth == ZET_DEPTH_32F ? zetSetFP(image, 3.5F) : zetSet(image, 77); }

bench::Operation filled() {
    return bench::between([](ZetImage*, ZetImage* destination) { fill(destination); });
}

// Random bits, or a disc that the square holds.
SharedImage makeMask(std::int32_t size, bool disc) {
    const SharedImage mask = bench::makeImage({"mask", size, 1, ZET_DEPTH_1U});
    if (!disc) return mask;
    zetSet(mask.get(), 0);
    const double radius = size / 2.0;
    for (std::int32_t y = 0; y < size; ++y) {
        const double half = std::sqrt(radius * radius - (y - radius) * (y - radius));
        ZetROI span{0, static_cast<std::int32_t>(radius - half), y, static_cast<std::int32_t>(2 * half), 1};
        mask->roi = &span;
        if (span.width > 0) zetSet(mask.get(), 1);
    }
    mask->roi = nullptr;
    return mask;
}

void addMasked(const Form& form, double atMost, bool disc) {
    const std::string name = disc ? "mask, disc" : "mask, random bits";
    const auto masked = [=](void (*operation)(ZetImage*, ZetImage*)) -> bench::Operation {
        return [=](const Form& of) -> Call {
            const SharedImage source = bench::makeImage(of), destination = bench::makeImage(of);
            const SharedImage mask = makeMask(of.size, disc);
            return [=] {
                destination->maskImage = mask.get();
                operation(source.get(), destination.get());
            };
        };
    };
    bench::add("zetCopy", name, form, atMost, masked(zetCopy));
    bench::add("zetSet", name, form, atMost, masked([](ZetImage*, ZetImage* image) { fill(image); }));
}

void addSetsAndCopies() {
    for (const Form& form : {bench::k8U, bench::k16U, bench::k32F, bench::k8UColours})
        bench::add(form.depth == ZET_DEPTH_32F ? "zetSetFP" : "zetSet", "whole", form, 0.7, filled());
    for (const Form& form : {bench::k1U, bench::k8U, k8S, bench::k16U, k16S, k32S, bench::k32F, bench::k8UColours})
        bench::add("zetCopy", "whole", form, 1.05, bench::between(zetCopy));
    for (const Form& form : {bench::k8U, bench::k16U, bench::k32F, bench::k8UColours})
        bench::add("zetCopy", "region with overhang", form, 1.05, [](const Form& of) -> Call {
            const SharedImage source = bench::makeImage(of), destination = bench::makeImage(of);
            const auto region = std::make_shared<ZetROI>(ZetROI{0, 0, 0, 2 * of.size, 2 * of.size});
            source->roi = destination->roi = region.get();
            return [=] { (void)region, zetCopy(source.get(), destination.get()); };
        });
    for (const bool disc : {false, true}) {
        addMasked(bench::k8U, 1.4, disc);
        addMasked(bench::k8UColours, 2.5, disc);
        addMasked(bench::k16U, 1.2, disc);
        addMasked(bench::k32F, 1.2, disc);
    }
}

bench::Operation sum() {
    return [](const Form& form) -> Call {
        const SharedImage a = bench::makeImage(form), b = bench::makeImage(form), destination = bench::makeImage(form);
        return [=] { zetAdd(a.get(), b.get(), destination.get()); };
    };
}

// Three regions that begin at these columns.
bench::Operation bitsAt(std::int32_t first, std::int32_t second, std::int32_t third, bool copies) {
    return [=](const Form& form) -> Call {
        const SharedImage a = bench::makeImage(form), b = bench::makeImage(form), destination = bench::makeImage(form);
        const auto regions = std::make_shared<std::array<ZetROI, 3>>();
        *regions = {ZetROI{0, first, 0, form.size - 8, form.size}, ZetROI{0, second, 0, form.size - 8, form.size},
                    ZetROI{0, third, 0, form.size - 8, form.size}};
        a->roi = &(*regions)[0];
        b->roi = &(*regions)[1];
        destination->roi = &(*regions)[2];
        return [=] {
            (void)regions;
            copies ? zetCopy(a.get(), destination.get()) : zetAdd(a.get(), b.get(), destination.get());
        };
    };
}

void addOnePixel(const char* operation, const bench::Operation& prepare) {
    const Form pixel = bench::sized(bench::k8U, 1);
    bench::add({operation, "1 by 1, ns a call", pixel.name, 1, 0, [=] { return prepare(pixel); }, 100});
}

void addPutPixel(const Form& form) {
    bench::add("zetPutPixel", "every pixel", form, 0, [](const Form& of) -> Call {
        const SharedImage image = bench::makeImage(of);
        return [=] {
            const std::uint8_t pixel[16] = {};
            for (std::int32_t y = 0; y < image->height; ++y)
                for (std::int32_t x = 0; x < image->width; ++x) zetPutPixel(image.get(), x, y, pixel);
        };
    });
}

}  // namespace

int main(int argc, char** argv) {
    addSetsAndCopies();
    bench::add("zetAdd", "whole", bench::k8U, 1.4, sum());
    for (const Form& form : {bench::k16U, k16S, k32S, bench::k32F}) bench::add("zetAdd", "whole", form, 1.25, sum());
    bench::add("zetAdd", "256 by 256, in cache", bench::sized(bench::k8U, 256), 2, sum());
    bench::add("zetCopy", "4096, bit offsets 3 and 6", kPlane, 4, bitsAt(3, 0, 6, true));
    bench::add("zetAdd", "4096, OR, equal bit offsets", kPlane, 2, bitsAt(3, 3, 3, false));
    bench::add("zetAdd", "4096, OR, three bit offsets", kPlane, 5, bitsAt(1, 3, 6, false));
    addOnePixel("zetAdd", sum());
    addOnePixel("zetCopy", bench::between(zetCopy));
    addOnePixel("zetSet", filled());
    for (const Form& form : {bench::k1U, bench::k8U, bench::k8UColours, bench::k32F})
        addPutPixel(bench::sized(form, 256));
    return bench::run(argc, argv);
}
