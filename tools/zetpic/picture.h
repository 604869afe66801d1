// A picture in memory: an image of the library and, where the image points into a DIB, the DIB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zetpxl.h"

namespace zetpic {

struct ImageDeleter {
    void operator()(ZetImage* image) const { zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA); }
};
using Image = std::unique_ptr<ZetImage, ImageDeleter>;

struct Picture {
    std::vector<std::uint8_t> dib;
    Image image;
};

// What went wrong, for one line on the error stream; empty when nothing did.
using Failure = std::string;

// Which channel of an image holds what; -1 where there is none.
struct Channels {
    std::int32_t red, green, blue;  // all the same for grey
    std::int32_t alpha;
    bool grey;
};

// False for channels that are neither grey nor red, green and blue, each with or without alpha.
bool findChannels(const ZetImage& image, Channels* channels);

// Sample c of column x in a row of memory, for images of bytes and of 16-bit words.
const std::uint8_t* sampleAt(const ZetImage& image, std::int32_t x, std::int32_t row, std::int32_t channel);

// The row in memory that lies y rows below the top of the picture.
std::int32_t memoryRow(const ZetImage& image, std::int32_t y);

// A row's samples as grey or red, green and blue, with alpha behind, and without padding.
void packRow(const ZetImage& image, const Channels& channels, std::int32_t row, std::uint8_t* out);

std::string depthName(std::uint32_t depth);

}  // namespace zetpic
