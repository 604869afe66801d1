// Plain model of the DIB translation: one pixel at a time, one byte at a time, every read checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zetpxl::model {

struct DibReport {
    std::int32_t status;
    std::string function;
    std::string context;
    std::string source;

    bool operator==(const DibReport&) const = default;
};

struct DibImage {
    std::int32_t nChannels = 0;
    std::int32_t alphaChannel = 0;
    std::uint32_t depth = 0;
    std::string colorModel;
    std::string channelSeq;
    std::int32_t dataOrder = 0;
    std::int32_t origin = 0;
    std::int32_t align = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int64_t widthStep = 0;
    std::int64_t imageSize = 0;

    bool operator==(const DibImage&) const = default;
};

struct DibOutcome {
    bool hasImage = false;
    std::int32_t cloneData = 0;
    DibImage image;
    std::int64_t sharedOffset = -1;    // of the pixels in the DIB, for a shared image
    bool pixelsSet = false;            // a converted image whose pixels are defined
    std::vector<std::uint8_t> pixels;  // channel by channel, row by row in memory order, without padding
    std::vector<DibReport> reports;
    std::int32_t status = 0;
    std::size_t bytesRead = 0;  // one past the last byte of the DIB that was needed
};

DibOutcome translateDib(const std::vector<std::uint8_t>& dib, std::int32_t cloneData, std::int32_t status);

}  // namespace zetpxl::model
