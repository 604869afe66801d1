// The one list of depths: index, sample type, limits, bits. Nothing else switches on depth.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "zetpxl.h"

namespace zetpxl {

inline constexpr std::array<std::uint32_t, 7> kDepths = {ZET_DEPTH_1U,  ZET_DEPTH_8U,  ZET_DEPTH_8S, ZET_DEPTH_16U,
                                                         ZET_DEPTH_16S, ZET_DEPTH_32S, ZET_DEPTH_32F};

// Indices of per-depth tables.
enum DepthIndex : std::int32_t { k1U, k8U, k8S, k16U, k16S, k32S, k32F, kDepthCount, kNoDepth = -1 };

constexpr std::int32_t depthIndex(std::uint32_t depth) {
    for (std::size_t i = 0; i < kDepths.size(); ++i)
        if (kDepths[i] == depth) return static_cast<std::int32_t>(i);
    return kNoDepth;
}

constexpr std::int32_t sampleBits(std::uint32_t depth) { return static_cast<std::int32_t>(depth & 0x7FFFFFFFu); }

// 0 for 1U, whose samples share bytes.
constexpr std::int32_t sampleBytes(std::uint32_t depth) { return sampleBits(depth) / 8; }

// Tables by element size, for operations that only move samples: 0 1U, 1 bytes, 2 words of 16, 3 words of 32 bits.
constexpr std::int32_t sizeIndex(std::uint32_t depth) {
    const std::int32_t bytes = sampleBytes(depth);
    return bytes == 4 ? 3 : bytes;
}

// Limits of integer samples; 32-bit depths take any value.
constexpr std::int32_t clampToDepth(std::uint32_t depth, std::int32_t value) {
    switch (depth) {
        case ZET_DEPTH_1U:
            return std::clamp(value, 0, 1);
        case ZET_DEPTH_8U:
            return std::clamp(value, 0, 255);
        case ZET_DEPTH_8S:
            return std::clamp(value, -128, 127);
        case ZET_DEPTH_16U:
            return std::clamp(value, 0, 65535);
        case ZET_DEPTH_16S:
            return std::clamp(value, -32768, 32767);
        default:
            return value;
    }
}
static_assert(clampToDepth(ZET_DEPTH_8U, 300) == 255 && clampToDepth(ZET_DEPTH_8S, -200) == -128);
static_assert(clampToDepth(ZET_DEPTH_1U, 2) == 1 && clampToDepth(ZET_DEPTH_32S, 1000000) == 1000000);

// A value cut to the depth's samples and repeated over 32 bits; 32F takes the bits as they are.
constexpr std::uint32_t repeatedSample(std::uint32_t depth, std::uint32_t value) {
    switch (sampleBits(depth)) {
        case 1:
            return value & 1 ? 0xFFFFFFFFu : 0;
        case 8:
            return (value & 0xFFu) * 0x01010101u;
        case 16:
            return (value & 0xFFFFu) * 0x00010001u;
        default:
            return value;
    }
}
static_assert(repeatedSample(ZET_DEPTH_8U, 0x1234) == 0x34343434u);
static_assert(repeatedSample(ZET_DEPTH_16S, 0x12345) == 0x23452345u);
static_assert(repeatedSample(ZET_DEPTH_1U, 2) == 0 && repeatedSample(ZET_DEPTH_1U, 3) == 0xFFFFFFFFu);

}  // namespace zetpxl
