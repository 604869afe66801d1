// The plain model of the frame that all operations share: status, reports, image check, region, one pixel at a time.
// Nothing here calls the library. Models of single operations build on it and are as slow and as obvious as can be.
#pragma once

#include <string>

#include "tests/support/events.h"
#include "zetpxl.h"

namespace zetpxl::test {

struct Model {
    EventLog& log;
    std::int32_t status = 0;

    // Stores and logs a report as an application would see it.
    void report(std::int32_t code, const char* funcName, const char* context, const char* fileName);
    void reportIncorrectImage(const char* funcName, const char* fileName);
    std::int32_t checkImage(const ZetImage* image);
};

// The status that the header fields deserve; does not look at data, tiles and region. Stores the status of a failing mask
// in the model.
std::int32_t modelCheckHeader(Model& model, const ZetImage& image, std::int32_t maskLevel = 0);

bool modelFits(const ZetImage& image);

// The part of the region that lies within the image; sizes of 0 when there is none.
struct Area {
    std::int32_t x = 0, y = 0, width = 0, height = 0;
    bool empty() const { return width <= 0 || height <= 0; }
};
Area modelRegion(const ZetImage& image);

// Channels that the region selects, in order.
struct ChannelRange {
    std::int32_t first = 0, count = 0;
};
ChannelRange modelChannels(const ZetImage& image);

std::int32_t coiOf(const ZetImage& image);

// One sample of an image in one block or in tiles, by absolute position; 1U gives 0 or 1. Integers of up to 32 bits and
// floats travel as their bit pattern.
std::uint32_t getSample(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x);
void putSample(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x, std::uint32_t pattern);

// The byte that holds a sample, without a look at the library's address arithmetic.
std::uint8_t* sampleByte(const ZetImage& image, std::int32_t channel, std::int32_t y, std::int32_t x);

bool maskBit(const ZetImage& mask, std::int32_t x, std::int32_t y);

inline bool tiled(const ZetImage& image) { return image.tileInfo != nullptr; }

// Tile calls as an operation would make them. A fetch gives false when the callback leaves no address.
bool modelFetch(ZetImage& image, std::int32_t col, std::int32_t row, std::int32_t mode);
void modelRelease(ZetImage& image, std::int32_t col, std::int32_t row);

}  // namespace zetpxl::test
