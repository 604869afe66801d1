#include "tests/support/model_put.h"

#include <cstring>

namespace zetpxl::test {
namespace {

constexpr const char* kName = "zetPutPixel";
constexpr const char* kSource = "zetPutPx";

std::uint32_t sampleOf(const ZetImage& image, const void* pixel, std::int32_t channel) {
    const auto* bytes = static_cast<const std::uint8_t*>(pixel);
    if (image.depth == ZET_DEPTH_1U) return bytes[0] & 1u;
    const std::size_t size = (image.depth & 0x7FFFFFFFu) / 8;
    std::uint32_t pattern = 0;
    std::memcpy(&pattern, bytes + static_cast<std::size_t>(channel) * size, size);
    return pattern;
}

}  // namespace

void modelPutPixel(Model& model, ZetImage* image, std::int32_t x, std::int32_t y, const void* pixel) {
    if (model.checkImage(image)) return model.reportIncorrectImage(kName, kSource);
    if (x < 0 || x >= image->width)
        return model.report(ZET_StatusBadArgument, kName, "((x>img->width-1) || (x<0))", kSource);
    if (y < 0 || y >= image->height)
        return model.report(ZET_StatusBadArgument, kName, "((y>img->height-1) || (y<0))", kSource);
    if (image->origin == 1) y = image->height - 1 - y;
    const std::int32_t col = image->tileInfo ? x / image->tileInfo->width : 0;
    const std::int32_t row = image->tileInfo ? y / image->tileInfo->height : 0;
    if (tiled(*image) && !modelFetch(*image, col, row, ZET_TILE_WRITE))
        return model.report(ZET_StatusError, kName, "Error get tile to write", kSource);
    for (std::int32_t c = 0; c < image->nChannels; ++c) putSample(*image, c, y, x, sampleOf(*image, pixel, c));
    if (tiled(*image)) modelRelease(*image, col, row);
}

}  // namespace zetpxl::test
