//   fixedsmooth.1 with weights of 24 bits and samples of 16 all that a stage along a row adds up is exact in double, in any order
//                 and fused; so is the sum of the five stages
//   fixedsmooth.2 each stage and their sum are rounded once to single precision, as the mode in force has it
#include "filter/fixedsmooth.h"

#include <algorithm>

#include "core/vectors.h"

namespace zetpxl {

namespace {

constexpr std::ptrdiff_t kPiece = 256;
constexpr std::ptrdiff_t kMostBeside = 32;  // samples of a window right of its first

// A piece of the five rows, widened once.
using WideRow = double[kPiece + kMostBeside];

double stage(const double* row, std::ptrdiff_t step, double outer, double inner, double centre) {
    double sum = centre * row[2 * step];
    sum = exactProductSum(inner, row[step], sum);
    sum = exactProductSum(inner, row[3 * step], sum);
    sum = exactProductSum(outer, row[0], sum);
    return static_cast<double>(static_cast<float>(exactProductSum(outer, row[4 * step], sum)));
}

void smoothPiece(const WideRow (&rows)[5], std::ptrdiff_t step, std::ptrdiff_t count, float* __restrict out) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        out[i] = static_cast<float>(stage(rows[0] + i, step, kSmoothA, kSmoothB, kSmoothC) +
                                    stage(rows[1] + i, step, kSmoothB, kSmoothD, kSmoothE) +
                                    stage(rows[2] + i, step, kSmoothC, kSmoothE, kSmoothF) +
                                    stage(rows[3] + i, step, kSmoothB, kSmoothD, kSmoothE) +
                                    stage(rows[4] + i, step, kSmoothA, kSmoothB, kSmoothC));
}

}  // namespace

template <class T>
bool smoothRow(const FixedWindow<T>& window, float* out) {
    const std::ptrdiff_t step = window.step;
    if (4 * step > kMostBeside) return false;
    WideRow rows[5];
    for (std::ptrdiff_t first = 0; first < window.count; first += kPiece) {
        const std::ptrdiff_t count = std::min(kPiece, window.count - first);
        for (std::size_t r = 0; r < 5; ++r)
            for (std::ptrdiff_t i = 0; i < count + 4 * step; ++i)
                rows[r][i] = static_cast<double>(window.rows[r][first + i]);
        smoothPiece(rows, step, count, out + first);
    }
    return true;
}

template bool smoothRow(const FixedWindow<std::uint8_t>& window, float* out);
template bool smoothRow(const FixedWindow<std::int8_t>& window, float* out);
template bool smoothRow(const FixedWindow<std::uint16_t>& window, float* out);
template bool smoothRow(const FixedWindow<std::int16_t>& window, float* out);

}  // namespace zetpxl
