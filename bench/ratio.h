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
using SharedImage = std::shared_ptr<ZetImage>;

// What an image is like; interleaved, rows aligned to 32 bytes.
struct Form {
    const char* name;
    std::int32_t size;  // of each side
    std::int32_t nChannels;
    std::uint32_t depth;
};

inline constexpr Form k1U{"1U", 16384, 1, ZET_DEPTH_1U};
inline constexpr Form k8U{"8U", 4096, 1, ZET_DEPTH_8U};
inline constexpr Form k8UColours{"8U x 3", 2048, 3, ZET_DEPTH_8U};
inline constexpr Form k16U{"16U", 4096, 1, ZET_DEPTH_16U};
inline constexpr Form k32F{"32F", 4096, 1, ZET_DEPTH_32F};

constexpr Form sized(Form form, std::int32_t size) {
    form.size = size;
    return form;
}

std::int64_t pixelsOf(const Form& form);
std::ptrdiff_t bytesOf(const Form& form);

// Random samples; floats from 0 to 255.
SharedImage makeImage(const Form& form);

// What is timed, and what makes it: images live only while their row runs.
using Call = std::function<void()>;
using Prepare = std::function<Call()>;

struct Row {
    std::string operation;
    std::string detail;
    std::string image;
    std::int64_t pixels;   // written by one call
    std::ptrdiff_t bytes;  // of the destination; 0 compares nothing
    Prepare prepare;
    double atMost = 0;        // of the ratio, or of nanoseconds where nothing is compared; 0: no figure
    Prepare other = nullptr;  // instead of memcpy: the same on other images, per pixel
    std::int64_t otherPixels = 0;
};

// Times the row and registers it as a benchmark, whose counters are the table's columns.
void add(Row row);

// A row of one image form, and for a filter one that compares 256 by 256 with it.
using Operation = std::function<Call(const Form& form)>;
void add(const std::string& operation, const std::string& detail, const Form& form, double atMost,
         const Operation& prepare);
void addSmall(const std::string& operation, const std::string& detail, const Form& form, const Operation& prepare);

// From a source to a destination of one form.
Operation between(const std::function<void(ZetImage* source, ZetImage* destination)>& operation);

// Prints the table; the arguments are Google Benchmark's.
int run(int argc, char** argv);

}  // namespace bench
