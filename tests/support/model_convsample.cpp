#include "tests/support/model_convsample.h"

#include <algorithm>
#include <cmath>

#include "tests/support/model_patch.h"

namespace zetpxl::test {
namespace {

enum class Walk { kOnce, kUnits, kPaired, kSparse };

Walk walkOf(const ZetConvKernel& kernel, std::int32_t step) {
    const std::int64_t n = std::int64_t{kernel.nCols} * kernel.nRows;
    const std::int32_t* values = kernel.values;
    const std::int32_t* end = values + n;
    const std::int64_t zeros = std::count(values, end, 0);
    const std::int64_t units = std::count(values, end, 1) + std::count(values, end, -1);
    const bool square = kernel.nCols == kernel.nRows && (kernel.nCols == 3 || kernel.nCols == 5);
    if (zeros * 100 > n * 66) return Walk::kSparse;
    if (square && (step == 1 || step == 3)) return Walk::kOnce;
    if (units * 4 > n) return Walk::kUnits;
    return zeros * 10 <= n ? Walk::kPaired : Walk::kSparse;
}

// One kernel over the neighbourhood of one sample.
struct Sum {
    const ZetConvKernel& kernel;
    const Neighbour& sample;
    float acc = 0;

    std::int32_t weight(std::int32_t r, std::int32_t q) const { return kernel.values[r * kernel.nCols + q]; }
    double product(std::int32_t r, std::int32_t q) const {
        const double value = sample(r - kernel.anchorY, q - kernel.anchorX);
        return value * static_cast<double>(static_cast<float>(weight(r, q)));
    }
    void add(double term) { acc = static_cast<float>(static_cast<double>(acc) + term); }

    void weightByWeight(std::int32_t r) {
        for (std::int32_t q = 0; q < kernel.nCols; ++q)
            if (weight(r, q) != 0) add(product(r, q));
    }
    void pairOfRows(std::int32_t r) {
        for (std::int32_t q = 0; q < kernel.nCols; ++q) add(product(r, q) + product(r + 1, q));
    }
    void once() {
        double sum = 0;
        for (std::int32_t r = 0; r < kernel.nRows; ++r)
            for (std::int32_t q = 0; q < kernel.nCols; ++q) sum += product(r, q);
        acc = static_cast<float>(sum);
    }
};

float kernelValue(const ZetConvKernel& kernel, std::int32_t step, const Neighbour& sample) {
    Sum sum{kernel, sample};
    const Walk walk = walkOf(kernel, step);
    std::int32_t r = 0;
    if (walk == Walk::kOnce) sum.once();
    if (walk == Walk::kOnce) return sum.acc;
    for (; walk == Walk::kPaired && r + 1 < kernel.nRows; r += 2) sum.pairOfRows(r);
    for (; r < kernel.nRows; ++r) sum.weightByWeight(r);
    return sum.acc;
}

std::int32_t shifted(float value, std::int32_t shift) {
    // From 2^55 on a single-precision number has no bits among the lowest 32.
    if (std::fabs(value) >= 0x1p55f) return 0;
    const auto whole = static_cast<std::int64_t>(std::nearbyint(static_cast<double>(value)));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(whole)) >> (shift & 31);
}

float square(float a, float b) {
    return static_cast<float>(static_cast<double>(b) + static_cast<double>(a) * static_cast<double>(a));
}

float oneKernel(const KernelSet& set, float a) {
    if (const std::int32_t shift = set.kernels[0]->nShift) return static_cast<float>(shifted(a, shift));
    if (set.method == ZET_COMBINE_SUM_SQUARES) return square(a, 0);
    return set.method == ZET_COMBINE_ROOT_SUM_SQUARES ? std::fabs(a) : a;
}

float combined(std::int32_t method, float a, float b) {
    switch (method) {
        case ZET_COMBINE_SUM:
            return static_cast<float>(static_cast<double>(b) + static_cast<double>(a));
        case ZET_COMBINE_MAX:
            return a >= b ? a : b;
        case ZET_COMBINE_MIN:
            return a <= b ? a : b;
        default:
            return square(a, b);
    }
}

}  // namespace

float modelConvValue(const KernelSet& set, std::int32_t step, const Neighbour& sample) {
    float sum = 0;
    for (std::int32_t k = 0; k < set.count; ++k) {
        const ZetConvKernel& kernel = *set.kernels[k];
        float a = kernelValue(kernel, step, sample);
        if (set.count == 1) return oneKernel(set, a);
        const bool squares = set.method == ZET_COMBINE_SUM_SQUARES || set.method == ZET_COMBINE_ROOT_SUM_SQUARES;
        if (kernel.nShift && set.method == ZET_COMBINE_SUM && k > 0) {
            // The shifted number is added with all its bits.
            sum = static_cast<float>(static_cast<double>(sum) + shifted(a, kernel.nShift));
            continue;
        }
        if (kernel.nShift) a = static_cast<float>(shifted(a, kernel.nShift));
        sum = k == 0 ? (squares ? square(a, 0) : a) : combined(set.method, a, sum);
    }
    return set.method == ZET_COMBINE_ROOT_SUM_SQUARES ? std::sqrt(sum) : sum;
}

std::uint32_t modelConvStore(std::uint32_t depth, float value) {
    if (depth == ZET_DEPTH_1U) return value > 0.5f;
    return nearestSample(depth, static_cast<double>(value));
}

}  // namespace zetpxl::test
