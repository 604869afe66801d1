// Random DIBs, most of them sound, and memory that ends where a DIB ends.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/random.h"
#include "zetpxl.h"

namespace zetpxl::test {

struct DibFields {
    std::uint32_t size = 40;
    std::int32_t width = 1;
    std::int32_t height = 1;
    std::uint16_t planes = 1;
    std::uint16_t bitCount = 8;
    std::uint32_t compression = 0;
    std::uint32_t sizeImage = 0;
    std::uint32_t colorsUsed = 0;

    std::string text() const;
};

// The header's 40 bytes; the fields that nobody reads hold noise.
std::vector<std::uint8_t> headerBytes(const DibFields& fields);
void append(std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& more);
void appendWord(std::vector<std::uint8_t>& bytes, std::uint32_t word);

struct DibCase {
    DibFields fields;
    std::vector<std::uint8_t> bytes;  // longer than any decoder may read
    std::int32_t status = 0;          // left from before the call
};

DibCase drawDib(Random& random);

// Bytes copied to the end of a page behind which nothing can be read or written.
class PageEnd {
  public:
    explicit PageEnd(const std::vector<std::uint8_t>& bytes);
    ~PageEnd();
    PageEnd(const PageEnd&) = delete;
    PageEnd& operator=(const PageEnd&) = delete;

    std::uint8_t* data() const { return data_; }
    const BITMAPINFOHEADER* dib() const { return reinterpret_cast<const BITMAPINFOHEADER*>(data_); }

  private:
    std::uint8_t* data_;
    void* pages_;
    std::size_t length_;
};

}  // namespace zetpxl::test
