// Operations timed against a memcpy of the same destination, both interleaved in the same run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "zetpxl.h"

namespace bench {

struct ImageDeleter {
    void operator()(ZetImage* image) const { zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA); }
};
using Image = std::unique_ptr<ZetImage, ImageDeleter>;

// In cache and out of it.
inline constexpr std::int32_t kSizes[] = {256, 4096};

Image makeImage(std::int32_t size, std::int32_t nChannels, std::uint32_t depth, std::int32_t dataOrder);

struct Row {
    std::string operation;
    std::string form;
    std::string image;
    std::int64_t pixels;   // written by one call
    std::ptrdiff_t bytes;  // of the destination
    std::function<void()> call;
};

// Times the row and registers it as a benchmark, whose counters are the table's columns.
void add(Row row);

// Prints the table; the arguments are Google Benchmark's.
int run(int argc, char** argv);

}  // namespace bench
