// A small image of one channel from a list of samples.
#pragma once

#include <utility>
#include <vector>

#include "zetpxl.h"

namespace zetpxl::test {

template <class T>
struct Grid {
    std::vector<T> samples;
    ZetImage image{};

    Grid(std::uint32_t depth, std::int32_t width, std::vector<T> values, std::int32_t border = ZET_BORDER_CONSTANT)
        : samples(std::move(values)) {
        image.nChannels = 1;
        image.depth = depth;
        image.align = 4;
        image.width = width;
        image.height = static_cast<std::int32_t>(samples.size()) / width;
        image.widthStep = width * static_cast<std::int32_t>(sizeof(T));
        image.imageSize = static_cast<std::int32_t>(samples.size() * sizeof(T));
        image.imageData = samples.data();
        for (std::int32_t& mode : image.borderMode) mode = border;
    }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;
};

}  // namespace zetpxl::test
