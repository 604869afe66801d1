// Convolution, blur and the fixed filters.
#include <vector>

#include "ratio.h"

namespace {

using bench::Form;

std::string square(std::int32_t size) { return std::to_string(size) + " by " + std::to_string(size); }

using Kernel = std::shared_ptr<ZetConvKernel>;

Kernel makeKernel(std::int32_t size, const std::vector<std::int32_t>& weights) {
    return {zetCreateConvKernel(size, size, size / 2, size / 2, weights.data(), 0), zetDeleteConvKernel};
}

// Signs in turn and no weight of 0 or 1, so that no kernel is a special one.
Kernel makeDense(std::int32_t size) {
    std::vector<std::int32_t> weights;
    for (std::int32_t row = 0; row < size; ++row)
        for (std::int32_t column = 0; column < size; ++column)
            weights.push_back(((5 * row + 3 * column) % 7 + 2) * ((row + column) % 2 == 0 ? 1 : -1));
    return makeKernel(size, weights);
}

void addConvolution(const Form& form, std::int32_t size, double atMost, bool small) {
    const Kernel kernel = makeDense(size);
    const auto prepare = bench::between([=](ZetImage* source, ZetImage* destination) {
        const ZetConvKernel* const one = kernel.get();
        zetConvolve2D(source, destination, &one, 1, ZET_COMBINE_SUM);
    });
    bench::add("zetConvolve2D", square(size), form, atMost, prepare);
    if (small) bench::addSmall("zetConvolve2D", square(size), form, prepare);
}

void addGradient(const Form& form, double atMost) {
    const Kernel across = makeKernel(3, {1, 0, -1, 2, 0, -2, 1, 0, -1}),
                 down = makeKernel(3, {1, 2, 1, 0, 0, 0, -1, -2, -1});
    bench::add("zetConvolve2D", "two of 3 by 3, root", form, atMost,
               bench::between([=](ZetImage* source, ZetImage* destination) {
                   const ZetConvKernel* const both[] = {across.get(), down.get()};
                   zetConvolve2D(source, destination, both, 2, ZET_COMBINE_ROOT_SUM_SQUARES);
               }));
}

void addBlur(const Form& form, std::int32_t size, double atMost, bool small) {
    const auto prepare = bench::between(
        [=](ZetImage* source, ZetImage* destination) { zetBlur(source, destination, size, size, size / 2, size / 2); });
    bench::add("zetBlur", square(size), form, atMost, prepare);
    if (small) bench::addSmall("zetBlur", square(size), form, prepare);
}

void addFixed(const Form& form, std::int32_t filter, double atMost) {
    bench::add(
        "zetFixedFilter", "kind " + std::to_string(filter), form, atMost,
        bench::between([=](ZetImage* source, ZetImage* destination) { zetFixedFilter(source, destination, filter); }));
}

void addConvolutions() {
    const std::int32_t sizes[] = {3, 5, 7, 15};
    const double bytes[] = {6, 14, 25, 110}, colours[] = {6, 14, 25}, words[] = {8, 20, 40, 70};
    for (int i = 0; i < 4; ++i) addConvolution(bench::k8U, sizes[i], bytes[i], i < 2);
    for (int i = 0; i < 3; ++i) addConvolution(bench::k8UColours, sizes[i], colours[i], i == 0);
    for (int i = 0; i < 4; ++i) addConvolution(bench::k16U, sizes[i], words[i], i == 0);
    addGradient(bench::k8U, 20);
    addGradient(bench::k16U, 12);
}

void addBlurs() {
    for (const std::int32_t size : {3, 5, 31, 101}) addBlur(bench::k8U, size, size < 31 ? 4 : 5, size == 5);
    for (const std::int32_t size : {5, 31}) {
        addBlur(bench::k8UColours, size, 4, size == 5);
        addBlur(bench::k16U, size, 3, size == 5);
        addBlur(bench::k32F, size, 4, size == 5);
    }
}

}  // namespace

int main(int argc, char** argv) {
    addConvolutions();
    addBlurs();
    const double integers[] = {3, 3, 3, 3, 4, 8, 3, 15, 4, 6, 4};
    for (std::int32_t filter = 0; filter <= 10; ++filter) addFixed(bench::k8U, filter, integers[filter]);
    addFixed(bench::k16U, ZET_FIXED_SMOOTH_5, 15);
    for (std::int32_t filter = 0; filter <= 10; ++filter) addFixed(bench::k32F, filter, 6);
    return bench::run(argc, argv);
}
