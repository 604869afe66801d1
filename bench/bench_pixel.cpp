// Single pixels.
#include "ratio.h"

namespace {

void addPutPixel(std::int32_t size, std::int32_t nChannels, std::uint32_t depth, const char* form) {
    const std::shared_ptr<ZetImage> image = bench::makeImage(size, nChannels, depth, 0);
    const auto everyPixel = [image, size] {
        const std::uint8_t pixel[16] = {};
        for (std::int32_t y = 0; y < size; ++y)
            for (std::int32_t x = 0; x < size; ++x) zetPutPixel(image.get(), x, y, pixel);
    };
    bench::add({"zetPutPixel", form, std::to_string(size), std::int64_t{size} * size, image->imageSize, everyPixel});
}

}  // namespace

int main(int argc, char** argv) {
    addPutPixel(256, 1, ZET_DEPTH_1U, "1U");
    addPutPixel(256, 1, ZET_DEPTH_8U, "8U");
    addPutPixel(256, 3, ZET_DEPTH_8U, "8U, 3 channels");
    addPutPixel(256, 1, ZET_DEPTH_32F, "32F");
    return bench::run(argc, argv);
}
