#include "filter/convrows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/depth.h"
#include "core/vectors.h"

namespace zetpxl {

namespace {

// Samples that are summed at a time: their sums stay in registers and in the first cache.
constexpr std::ptrdiff_t kChunk = 256;

const float* tapOf(const ConvSource& source, std::ptrdiff_t row, std::ptrdiff_t column) {
    return static_cast<const float*>(source.first) + row * source.rowStep + column * source.samplesPerPixel;
}

void addWeight(const float* __restrict tap, double weight, std::ptrdiff_t count, float* __restrict acc) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        acc[i] = static_cast<float>(static_cast<double>(acc[i]) + static_cast<double>(tap[i]) * weight);
}

void addPair(const float* __restrict upper, double upperWeight, const float* __restrict lower, double lowerWeight,
             std::ptrdiff_t count, float* __restrict acc) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double pair = static_cast<double>(upper[i]) * upperWeight + static_cast<double>(lower[i]) * lowerWeight;
        acc[i] = static_cast<float>(static_cast<double>(acc[i]) + pair);
    }
}

void addProduct(const float* __restrict tap, double weight, std::ptrdiff_t count, double* __restrict sums) {
    for (std::ptrdiff_t i = 0; i < count; ++i) sums[i] += static_cast<double>(tap[i]) * weight;
}

// Calls part(first, count) for the chunks of a row.
template <class Part>
void forChunks(std::ptrdiff_t count, Part part) {
    for (std::ptrdiff_t first = 0; first < count; first += kChunk) part(first, std::min(kChunk, count - first));
}

// Samples whose sums stay in registers while all taps are added.
constexpr std::ptrdiff_t kTile = 4 * kFloatLanes;
static_assert(kTile <= kConvSlack);

struct TileSums {
    FloatVector v[4];

    // Each by itself stays in a register; all at once become a string instruction.
    TileSums() {
        for (FloatVector& sum : v) sum = FloatVector{};
    }
};

// Adds the taps of a range, whose sums are the same in any order.
void addTaps(const ConvSlot& slot, std::int32_t begin, std::int32_t end, const float* first, TileSums* sums) {
    for (std::int32_t t = begin; t < end; ++t) {
        const ConvTap& tap = slot.taps[static_cast<std::size_t>(t)];
        for (std::ptrdiff_t v = 0; v < 4; ++v) {
            FloatVector samples;
            loadVector(first + tap.at + v * kFloatLanes, &samples);
            addExactProducts(samples, tap.weight, &sums->v[v]);
        }
    }
}

void storeTile(const TileSums& sums, float* row) {
    for (std::ptrdiff_t v = 0; v < 4; ++v) storeVector(sums.v[v], row + v * kFloatLanes);
}

bool isWithin(const TileSums& sums, float limit) {
    const FloatVector most = FloatVector{} + limit;
    using Flags [[gnu::vector_size(sizeof(FloatVector))]] = std::int32_t;
    Flags beyond{};
    for (const FloatVector& v : sums.v) beyond |= (v > most) | (v < -most);
    std::int32_t any = 0;
    for (std::ptrdiff_t i = 0; i < kFloatLanes; ++i) any |= beyond[i];
    return any == 0;
}

// Group after group; false when a sum leaves the bounds within which the next group is exact.
bool sumHopefully(const ConvSlot& slot, const float* first, TileSums* sums) {
    constexpr float limit = 8388608.0F;
    for (std::int32_t t = 0; t < slot.nTaps;) {
        if (t > 0 && !isWithin(*sums, limit)) return false;
        const std::int32_t end = slot.taps[static_cast<std::size_t>(t)].groupEnd;
        addTaps(slot, t, end, first, sums);
        t = end;
    }
    return true;
}

void clearRow(float* row, std::ptrdiff_t count) { std::fill_n(row, count, 0.0F); }

void addWeightsOfRow(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t row, std::ptrdiff_t first,
                     std::ptrdiff_t count, float* acc) {
    for (std::ptrdiff_t q = 0; q < slot.nCols; ++q) {
        const std::ptrdiff_t index = row * slot.nCols + q;
        if (slot.values[index] == 0) continue;
        addWeight(tapOf(source, row, q) + first, static_cast<double>(slot.weights[static_cast<std::size_t>(index)]),
                  count, acc);
    }
}

// The low 32 bits of a rounded sample, shifted arithmetically. From 2^63 on they are all 0.
std::int32_t shifted(float sample, std::int32_t shift) {
    constexpr float limit = 9223372036854775808.0F;
    if (!(std::fabs(sample) < limit)) return 0;
    const auto whole = static_cast<std::int64_t>(std::rint(sample));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(whole)) >> (shift & 31);
}

template <class T>
void loadSamples(const std::uint8_t* row, std::ptrdiff_t pixelStep, std::ptrdiff_t count, void* ringRow) {
    const T* from = reinterpret_cast<const T*>(row);
    float* samples = static_cast<float*>(ringRow);
    if (pixelStep == 1) {
        for (std::ptrdiff_t i = 0; i < count; ++i) samples[i] = static_cast<float>(from[i]);
        return;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i) samples[i] = static_cast<float>(from[i * pixelStep]);
}

// Adding and taking away 1.5 * 2^23 rounds a number below 2^22 to the nearest whole one, ties to even, on any processor.
float nearest(float value) {
    constexpr float magic = 12582912.0F;
    return (value + magic) - magic;
}

template <class T>
struct Unsigned {
    static T store(float v) {
        constexpr auto greatest = static_cast<float>(std::numeric_limits<T>::max());
        return static_cast<T>(static_cast<std::int32_t>(nearest(std::clamp(v, 0.0F, greatest))));
    }
};

// Half a unit beyond the greatest value both limits begin; the lower one is one further out.
template <class T>
struct Signed {
    static T store(float v) {
        constexpr auto greatest = static_cast<float>(std::numeric_limits<T>::max());
        constexpr float limit = greatest + 0.5F;
        const float low = v <= -limit ? -greatest - 1.0F : v;
        const float cut = v >= limit ? greatest : low;
        return static_cast<T>(static_cast<std::int32_t>(nearest(cut)));
    }
};

struct Signed32 {
    static std::int32_t store(float v) {
        constexpr float limit = 2147483648.0F;
        if (v >= limit) return std::numeric_limits<std::int32_t>::max();
        if (v <= -limit) return std::numeric_limits<std::int32_t>::min();
        return static_cast<std::int32_t>(std::rint(v));
    }
};

struct Bit {
    static std::uint8_t store(float v) { return v > 0.5F ? 1 : 0; }
};

template <class T, class Sample>
void storeSamples(const float* __restrict row, void* out, std::ptrdiff_t count) {
    T* __restrict samples = static_cast<T*>(out);
    for (std::ptrdiff_t i = 0; i < count; ++i) samples[i] = Sample::store(row[i]);
}

// 1U rows are loaded and stored as one byte a bit; the engine packs them.
constexpr std::array<LoadRow, kDepthCount> loadRows = {loadSamples<std::uint8_t>,
                                                       loadSamples<std::uint8_t>,
                                                       loadSamples<std::int8_t>,
                                                       loadSamples<std::uint16_t>,
                                                       loadSamples<std::int16_t>,
                                                       loadSamples<std::int32_t>,
                                                       nullptr};

constexpr std::array<StoreRow, kDepthCount> storeRows = {storeSamples<std::uint8_t, Bit>,
                                                         storeSamples<std::uint8_t, Unsigned<std::uint8_t>>,
                                                         storeSamples<std::int8_t, Signed<std::int8_t>>,
                                                         storeSamples<std::uint16_t, Unsigned<std::uint16_t>>,
                                                         storeSamples<std::int16_t, Signed<std::int16_t>>,
                                                         storeSamples<std::int32_t, Signed32>,
                                                         nullptr};

}  // namespace

void rowSparse(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow) {
    forChunks(count, [&](std::ptrdiff_t first, std::ptrdiff_t part) {
        clearRow(accRow + first, part);
        for (std::ptrdiff_t r = 0; r < slot.nRows; ++r) addWeightsOfRow(slot, source, r, first, part, accRow + first);
    });
}

void rowPaired(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow) {
    const float* weights = slot.weights.get();
    forChunks(count, [&](std::ptrdiff_t first, std::ptrdiff_t part) {
        float* acc = accRow + first;
        clearRow(acc, part);
        std::ptrdiff_t r = 0;
        for (; r + 1 < slot.nRows; r += 2)
            for (std::ptrdiff_t q = 0; q < slot.nCols; ++q)
                addPair(tapOf(source, r, q) + first, static_cast<double>(weights[r * slot.nCols + q]),
                        tapOf(source, r + 1, q) + first, static_cast<double>(weights[(r + 1) * slot.nCols + q]), part,
                        acc);
        if (r < slot.nRows) addWeightsOfRow(slot, source, r, first, part, acc);
    });
}

void rowAtOnce(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow) {
    forChunks(count, [&](std::ptrdiff_t first, std::ptrdiff_t part) {
        std::array<double, kChunk> sums;
        std::fill_n(sums.data(), part, 0.0);
        for (std::ptrdiff_t r = 0; r < slot.nRows; ++r)
            for (std::ptrdiff_t q = 0; q < slot.nCols; ++q)
                addProduct(tapOf(source, r, q) + first,
                           static_cast<double>(slot.weights[static_cast<std::size_t>(r * slot.nCols + q)]), part,
                           sums.data());
        for (std::ptrdiff_t i = 0; i < part; ++i)
            accRow[first + i] = static_cast<float>(sums[static_cast<std::size_t>(i)]);
    });
}

void rowExact(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow) {
    const auto* first = static_cast<const float*>(source.first);
    for (std::ptrdiff_t at = 0; at < count; at += kTile) {
        TileSums sums;
        addTaps(slot, 0, slot.nTaps, first + at, &sums);
        storeTile(sums, accRow + at);
    }
}

void rowHopeful(const ConvSlot& slot, const ConvSource& source, std::ptrdiff_t count, float* accRow) {
    const auto* first = static_cast<const float*>(source.first);
    for (std::ptrdiff_t at = 0; at < count; at += kTile) {
        TileSums sums;
        if (!sumHopefully(slot, first + at, &sums))
            return slot.literalRow(slot, {first + at, source.rowStep, source.samplesPerPixel}, count - at, accRow + at);
        storeTile(sums, accRow + at);
    }
}

void rowCopy(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    if (acc != target) std::copy_n(acc, count, target);
}

// The sum, product and root of single-precision numbers in double, rounded to single, are those rounded once.
void rowAdd(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] += acc[i];
}

void rowSquare(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] = acc[i] * acc[i];
}

void rowAddSquare(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto a = static_cast<double>(acc[i]);
        target[i] = static_cast<float>(static_cast<double>(target[i]) + a * a);
    }
}

// The same where the sums are whole numbers up to 2^24.
void rowAddExactSquare(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] += acc[i] * acc[i];
}

void rowAbs(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] = std::fabs(acc[i]);
}

void rowMax(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] = acc[i] >= target[i] ? acc[i] : target[i];
}

void rowMin(const float* acc, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] = acc[i] <= target[i] ? acc[i] : target[i];
}

void rowRoot(const float*, float* target, std::ptrdiff_t count, std::int32_t) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] = std::sqrt(target[i]);
}

void rowShift(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift) {
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] = static_cast<float>(shifted(acc[i], shift));
}

void rowShiftAdd(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        target[i] = static_cast<float>(static_cast<double>(target[i]) + shifted(acc[i], shift));
}

void rowShiftWhole(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift) {
    const std::int32_t bits = shift & 31;
    for (std::ptrdiff_t i = 0; i < count; ++i)
        target[i] = static_cast<float>(static_cast<std::int32_t>(acc[i]) >> bits);
}

void rowShiftAddWhole(const float* acc, float* target, std::ptrdiff_t count, std::int32_t shift) {
    const std::int32_t bits = shift & 31;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto shiftedSample = static_cast<double>(static_cast<std::int32_t>(acc[i]) >> bits);
        target[i] = static_cast<float>(static_cast<double>(target[i]) + shiftedSample);
    }
}

LoadRow loadRowOf(std::uint32_t depth) { return loadRows[static_cast<std::size_t>(depthIndex(depth))]; }

StoreRow storeRowOf(std::uint32_t depth) { return storeRows[static_cast<std::size_t>(depthIndex(depth))]; }

}  // namespace zetpxl
