// The frame of point operations with two or three images: checks, masks, walk. An operation brings its words and a table
// of row routines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/depth.h"
#include "core/report.h"
#include "pixel/bitruns.h"
#include "pixel/maskrows.h"
#include "zetpxl.h"

namespace zetpxl {

// One row of pixels. Elements of a pixel that take part stand together (`group` of them); steps are in elements, from
// pixel to pixel. `b` is null for an operation on one image and a constant.
struct PointRow {
    const std::uint8_t* a;
    const std::uint8_t* b;
    std::uint8_t* d;
    MaskBits mask;
    std::ptrdiff_t width;
    std::int32_t group;
    std::int32_t stepA;
    std::int32_t stepB;
    std::int32_t stepD;
    std::int32_t bitA;  // 1U
    std::int32_t bitB;
    std::int32_t bitD;
    std::uint32_t constant;
};

using PointRowRoutine = void (*)(const PointRow& row);

struct PointRoutines {
    PointRowRoutine plain;
    PointRowRoutine masked;
};

using PointTable = std::array<PointRoutines, kDepthCount>;

// What an operation's reports say of a source.
struct PointSourceWords {
    const char* depth;
    const char* order;
    const char* channels;
    const char* tile;
};

struct PointOperation {
    Operation op;
    const PointTable* table;  // a null routine refuses the depth
};

// `sources` holds one image (and `constant` counts) or two.
struct PointImages {
    std::array<ZetImage*, 2> sources;
    std::int32_t nSources;
    ZetImage* dst;
    std::uint32_t constant;
};

void runPointOperation(const PointOperation& operation, const PointImages& images);

// --- Row routines from an element's arithmetic. `Element` has a sample type T and apply(a, b). ---

template <class T>
const T* samples(const std::uint8_t* bytes) {
    return reinterpret_cast<const T*>(bytes);
}

template <class T>
T* samples(std::uint8_t* bytes) {
    return reinterpret_cast<T*>(bytes);
}

// The destination may be a source: element by element, each is read before it is written.
template <class Element, class T = typename Element::T>
void elementRun(const T* a, const T* b, T* d, std::ptrdiff_t count, T constant) {
    if (b) {
#pragma GCC ivdep
        for (std::ptrdiff_t i = 0; i < count; ++i) d[i] = Element::apply(a[i], b[i]);
    } else {
#pragma GCC ivdep
        for (std::ptrdiff_t i = 0; i < count; ++i) d[i] = Element::apply(a[i], constant);
    }
}

template <class Element>
void plainPointRow(const PointRow& row) {
    using T = typename Element::T;
    const T* a = samples<T>(row.a);
    const T* b = row.b ? samples<T>(row.b) : nullptr;
    T* d = samples<T>(row.d);
    const T constant = std::bit_cast<T>(static_cast<std::make_unsigned_t<typename Element::Bits>>(row.constant));
    if (row.group == row.stepA && row.group == row.stepB && row.group == row.stepD)
        return elementRun<Element>(a, b, d, row.width * row.group, constant);
    for (std::ptrdiff_t x = 0; x < row.width; ++x)
        for (std::int32_t k = 0; k < row.group; ++k) {
            const T second = b ? b[x * row.stepB + k] : constant;
            d[x * row.stepD + k] = Element::apply(a[x * row.stepA + k], second);
        }
}

template <class Element>
void maskedPointRow(const PointRow& row) {
    using T = typename Element::T;
    const auto size = static_cast<std::ptrdiff_t>(sizeof(T));
    forMaskPieces(row.mask, row.width,
                  [&](std::ptrdiff_t first, std::ptrdiff_t count, MaskCover cover, const std::uint8_t* mask) {
                      PointRow piece = row;
                      piece.a += first * row.stepA * size;
                      piece.b = row.b ? row.b + first * row.stepB * size : nullptr;
                      piece.d += first * row.stepD * size;
                      piece.width = count;
                      if (cover == MaskCover::All) return plainPointRow<Element>(piece);
                      piece.width = 1;
                      for (std::ptrdiff_t x = 0; x < count; ++x) {
                          if (mask[x]) plainPointRow<Element>(piece);
                          piece.a += row.stepA * size;
                          if (piece.b) piece.b += row.stepB * size;
                          piece.d += row.stepD * size;
                      }
                  });
}

// `Bits` has apply(a, b) on words of bits.
template <class Bits>
void plainBitRow(const PointRow& row) {
    if (row.group == 0) return;
    if (!row.b) {
        const std::array<BitSource, 1> source = {{{row.a, row.bitA}}};
        const std::uint64_t constant = row.constant ? ~std::uint64_t{0} : 0;
        return combineBits(source, row.d, row.bitD, row.width,
                           [constant](std::uint64_t, const auto& s) { return Bits::apply(s[0], constant); });
    }
    const std::array<BitSource, 2> sources = {{{row.a, row.bitA}, {row.b, row.bitB}}};
    combineBits(sources, row.d, row.bitD, row.width,
                [](std::uint64_t, const auto& s) { return Bits::apply(s[0], s[1]); });
}

template <class Bits>
void maskedBitRow(const PointRow& row) {
    if (row.group == 0) return;
    const auto blend = [](std::uint64_t d, std::uint64_t result, std::uint64_t mask) {
        return (d & ~mask) | (result & mask);
    };
    const BitSource mask{row.mask.data, row.mask.bit};
    if (!row.b) {
        const std::array<BitSource, 2> sources = {{mask, {row.a, row.bitA}}};
        const std::uint64_t constant = row.constant ? ~std::uint64_t{0} : 0;
        return combineBits(sources, row.d, row.bitD, row.width,
                           [=](std::uint64_t d, const auto& s) { return blend(d, Bits::apply(s[1], constant), s[0]); });
    }
    const std::array<BitSource, 3> sources = {{mask, {row.a, row.bitA}, {row.b, row.bitB}}};
    combineBits(sources, row.d, row.bitD, row.width,
                [=](std::uint64_t d, const auto& s) { return blend(d, Bits::apply(s[1], s[2]), s[0]); });
}

template <class Element>
constexpr PointRoutines pointRoutines{plainPointRow<Element>, maskedPointRow<Element>};

template <class Bits>
constexpr PointRoutines bitRoutines{plainBitRow<Bits>, maskedBitRow<Bits>};

}  // namespace zetpxl
