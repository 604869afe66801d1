#include "tests/filter/draw_kernels.h"

namespace zetpxl::test {
namespace {

struct Mix {
    std::int32_t zeros, units;  // percent
    bool big;
    bool bound = false;
    bool oneSign = false;
};

std::int32_t drawBig(Random& random) {
    if (random.oneIn(3)) return random.word();
    const std::int32_t near = (1 << random.between(8, 26)) + random.between(-3, 3);
    return random.oneIn(2) ? near : -near;
}

std::int32_t drawBound(Random& random, const Mix& mix) {
    const std::int32_t weight = random.pick({1, 2, 3, 8, 31, 63, 64, 65, 127, 128, 129, 256, 257});
    return mix.oneSign || random.oneIn(2) ? weight : -weight;
}

std::int32_t drawWeight(Random& random, const Mix& mix) {
    const std::int32_t draw = random.below(100);
    if (draw < mix.zeros) return 0;
    if (draw < mix.zeros + mix.units) return random.oneIn(2) ? 1 : -1;
    if (mix.bound) return drawBound(random, mix);
    return mix.big ? drawBig(random) : random.between(-20, 20);
}

// Near a limit of the shares more often than not.
Mix drawMix(Random& random, Weights weights) {
    Mix mix{0, 0, weights == Weights::kBig && !random.oneIn(4)};
    mix.bound = weights == Weights::kBound;
    mix.oneSign = random.oneIn(3);
    mix.zeros = random.pick({0, 0, 5, 12, 40, 66, 80, 100});
    mix.units = random.pick({0, 0, 20, 30, 60, 100});
    return mix;
}

void drawSize(Random& random, std::int32_t far, ZetConvKernel& kernel) {
    kernel.nCols = random.between(1, 6);
    kernel.nRows = random.between(1, 6);
    if (random.oneIn(3)) kernel.nCols = kernel.nRows = random.pick({3, 5});
    if (!random.percent(far)) return;
    kernel.nCols = random.between(1, 30);
    kernel.nRows = random.between(1, random.oneIn(2) ? 40 : 3);
}

std::int32_t drawShift(Random& random) {
    if (random.oneIn(2)) return 0;
    return random.oneIn(6) ? random.pick({-1, -31, 31, 32, 33, 64, 100}) : random.between(1, 8);
}

// The second half takes away what the first one adds: what was lost on the way shows in small results.
void cancel(std::vector<std::int32_t>& values) {
    for (std::size_t i = 0; i < values.size() / 2; ++i) values[values.size() - 1 - i] = -values[i];
}

ZetConvKernel drawKernel(Random& random, Weights weights, std::int32_t far, std::vector<std::int32_t>& values) {
    ZetConvKernel kernel{};
    drawSize(random, far, kernel);
    kernel.anchorX = random.below(kernel.nCols);
    kernel.anchorY = random.below(kernel.nRows);
    kernel.nShift = drawShift(random);
    const Mix mix = drawMix(random, weights);
    for (std::int32_t i = 0; i < kernel.nCols * kernel.nRows; ++i) values.push_back(drawWeight(random, mix));
    if (mix.bound && random.oneIn(2)) cancel(values);
    return kernel;
}

void breakOne(Random& random, DrawnKernels& set) {
    const auto i = static_cast<std::size_t>(random.below(static_cast<std::int32_t>(set.records.size())));
    ZetConvKernel& kernel = set.records[i];
    switch (random.below(6)) {
        case 0:
            set.pointers[i] = nullptr;
            break;
        case 1:
            kernel.anchorX = random.oneIn(2) ? -1 : kernel.nCols;
            break;
        case 2:
            kernel.anchorY = random.oneIn(2) ? -1 : kernel.nRows;
            break;
        case 3:
            (random.oneIn(2) ? kernel.nRows : kernel.nCols) = 0;
            break;
        case 4:
            set.none = true;
            break;
        default:
            set.count = random.pick({0, -1, 11});
            break;
    }
}

}  // namespace

std::string DrawnKernels::describe() const {
    std::string text = std::to_string(count) + " kernels, method " + std::to_string(method);
    for (std::size_t k = 0; k < records.size(); ++k) {
        const ZetConvKernel& r = records[k];
        text += "; " + std::to_string(r.nCols) + "x" + std::to_string(r.nRows) + " anchor " +
                std::to_string(r.anchorX) + "," + std::to_string(r.anchorY) + " shift " + std::to_string(r.nShift) +
                " [";
        for (std::size_t i = 0; i < values[k].size() && i < 36; ++i) text += " " + std::to_string(values[k][i]);
        text += " ]";
    }
    return text;
}

std::shared_ptr<DrawnKernels> drawKernels(Random& random, Weights weights, std::int32_t far) {
    auto set = std::make_shared<DrawnKernels>();
    set->count = random.oneIn(2) ? 1 : random.oneIn(15) ? 10 : random.between(2, 4);
    set->method = random.oneIn(40) ? random.pick({-1, 5, 7}) : random.below(5);
    for (std::int32_t k = 0; k < set->count; ++k) {
        set->values.emplace_back();
        set->records.push_back(drawKernel(random, weights, far, set->values.back()));
    }
    for (std::size_t k = 0; k < set->records.size(); ++k) {
        set->records[k].values = set->values[k].data();
        set->pointers.push_back(&set->records[k]);
    }
    if (random.oneIn(40)) breakOne(random, *set);
    return set;
}

}  // namespace zetpxl::test
