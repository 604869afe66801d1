// zetpic dilate, erode, open and close, and the threshold that makes pictures of 1 bit for them.
#include <cstring>

#include "transform.h"

namespace zetpic {
namespace {

using Morphology = void (*)(ZetImage* source, ZetImage* result, std::int32_t halfSize);

int runMorphology(const Arguments& arguments, Morphology morphology) {
    return transform(arguments, Start::kSource,
                     [&](ZetImage* source, ZetImage* result) { morphology(source, result, arguments.options.extent); });
}

std::int64_t sample(const ZetImage& image, std::int32_t x, std::int32_t y, std::int32_t channel) {
    const std::uint8_t* const at = sampleAt(image, x, y, channel);
    if (image.depth == ZET_DEPTH_8U) return *at;
    std::uint16_t value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// Colours by the share that each has in what the eye takes for brightness.
std::int64_t brightness(const ZetImage& image, const Channels& channels, std::int32_t x, std::int32_t y) {
    return (54 * sample(image, x, y, channels.red) + 183 * sample(image, x, y, channels.green) +
            19 * sample(image, x, y, channels.blue)) /
           256;
}

}  // namespace

int runDilate(const Arguments& arguments) { return runMorphology(arguments, zetDilate); }
int runErode(const Arguments& arguments) { return runMorphology(arguments, zetErode); }
int runOpen(const Arguments& arguments) { return runMorphology(arguments, zetOpen); }
int runClose(const Arguments& arguments) { return runMorphology(arguments, zetClose); }

int runThreshold(const Arguments& arguments) {
    Picture source;
    const Failure failure = readUpright(arguments.files[0], &source);
    if (!failure.empty()) return fail(failure);
    const ZetImage& image = *source.image;
    if (image.depth == ZET_DEPTH_1U) return fail(arguments.files[0] + ": has 1 bit a pixel already");
    Channels channels;
    findChannels(image, &channels);
    const Image result(zetCreateImageHeader(1, 0, ZET_DEPTH_1U, "GRAY", "G\0\0", 0, 0, 4, image.width, image.height,
                                            nullptr, nullptr, nullptr, nullptr));
    if (!result) return kFailed;
    zetAllocateImage(result.get(), 1, 0);
    if (!result->imageData) return kFailed;
    const std::uint8_t white = 1;
    for (std::int32_t y = 0; y < image.height; ++y)
        for (std::int32_t x = 0; x < image.width; ++x)
            if (brightness(image, channels, x, y) >= *arguments.options.value) zetPutPixel(result.get(), x, y, &white);
    return finish(arguments, *result);
}

}  // namespace zetpic
