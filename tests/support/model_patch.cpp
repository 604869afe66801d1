#include "tests/support/model_patch.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/support/model_rect.h"

namespace zetpxl::test {

Patch takePatch(const ZetImage& image, const Area& area) {
    Patch patch{area, {}};
    for (std::int32_t c = 0; c < image.nChannels; ++c)
        for (std::int32_t y = 0; y < area.height; ++y)
            for (std::int32_t x = 0; x < area.width; ++x)
                patch.samples.push_back(modelRectSample(image, c, area.y + y, area.x + x));
    return patch;
}

double sampleValue(std::uint32_t depth, std::uint32_t pattern) {
    if (depth == ZET_DEPTH_32F) {
        float value = 0;
        std::memcpy(&value, &pattern, 4);
        return value;
    }
    if (depth == ZET_DEPTH_8S) return static_cast<std::int8_t>(pattern);
    if (depth == ZET_DEPTH_16S) return static_cast<std::int16_t>(pattern);
    if (depth == ZET_DEPTH_32S) return static_cast<std::int32_t>(pattern);
    return pattern;
}

std::uint32_t floatPattern(float value) {
    std::uint32_t pattern = 0;
    std::memcpy(&pattern, &value, 4);
    return pattern;
}

std::uint32_t nearestSample(std::uint32_t depth, double value) {
    const bool isSigned = (depth & ZET_DEPTH_SIGN) != 0;
    const double range = std::ldexp(1.0, static_cast<int>(depth & 0x7FFFFFFFu));
    const double low = isSigned ? -range / 2 : 0.0;
    const double high = low + range - 1;
    const double whole = std::nearbyint(std::clamp(value, low, high));
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(whole));
}

Plane::Plane(std::int32_t width, std::int32_t height, std::int32_t dataOrder, std::int32_t origin, std::int32_t align) {
    image.nChannels = 1;
    image.depth = ZET_DEPTH_1U;
    image.dataOrder = dataOrder;
    image.origin = origin;
    image.align = align;
    image.width = width;
    image.height = height;
    image.widthStep = (width + 7) / 8;
    image.imageSize = image.widthStep * height;
    bytes.resize(static_cast<std::size_t>(image.imageSize));
    image.imageData = bytes.data();
}

}  // namespace zetpxl::test
