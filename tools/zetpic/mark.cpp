// zetpic mark: a frame and a cross of single pixels, through zetPutPixel.
#include <algorithm>

#include "canvas.h"
#include "command.h"
#include "files.h"

namespace zetpic {
namespace {

// A pixel in the image's own samples, for 8 and 16 bits and for 1U.
struct Pen {
    std::uint8_t bytes[8];
};

Pen markPen(const ZetImage& image) {
    Pen pen{};
    Channels channels;
    const bool known = findChannels(image, &channels);
    const std::size_t sampleBytes = std::max<std::size_t>(1, (image.depth & ~ZET_DEPTH_SIGN) / 8);
    for (std::int32_t c = 0; c < std::min(image.nChannels, 4); ++c) {
        const bool lit = !known || c == channels.red || c == channels.alpha;
        std::fill_n(pen.bytes + static_cast<std::size_t>(c) * sampleBytes, sampleBytes, lit ? 255 : 0);
    }
    return pen;
}

void drawFrame(ZetImage* image, const Pen& pen) {
    for (std::int32_t x = 0; x < image->width; ++x) {
        zetPutPixel(image, x, 0, pen.bytes);
        zetPutPixel(image, x, image->height - 1, pen.bytes);
    }
    for (std::int32_t y = 0; y < image->height; ++y) {
        zetPutPixel(image, 0, y, pen.bytes);
        zetPutPixel(image, image->width - 1, y, pen.bytes);
    }
}

// One pixel a step of the longer side, so that the lines have no gaps.
void drawCross(ZetImage* image, const Pen& pen) {
    const std::int64_t right = image->width - 1;
    const std::int64_t bottom = image->height - 1;
    const std::int64_t steps = std::max<std::int64_t>({right, bottom, 1});
    for (std::int64_t i = 0; i <= steps; ++i) {
        const auto x = static_cast<std::int32_t>(i * right / steps);
        const auto y = static_cast<std::int32_t>(i * bottom / steps);
        zetPutPixel(image, x, y, pen.bytes);
        zetPutPixel(image, image->width - 1 - x, y, pen.bytes);
    }
}

}  // namespace

int runMark(const Arguments& arguments) {
    Picture picture;
    Canvas canvas;
    Failure failure = readPicture(arguments.files[0], &picture);
    if (failure.empty()) failure = canvas.open(*picture.image, arguments.options);
    if (!failure.empty()) return fail(failure);
    const Pen pen = markPen(*picture.image);
    drawFrame(canvas.image(), pen);
    drawCross(canvas.image(), pen);
    if (zetGetErrStatus() < 0) return kFailed;
    failure = writePicture(arguments.files[1], *picture.image);
    return failure.empty() ? kOk : fail(failure);
}

}  // namespace zetpic
