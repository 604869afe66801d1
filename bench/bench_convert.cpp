// DIBs that are converted, each call with the allocation and release of its image.
#include <algorithm>
#include <cstring>
#include <vector>

#include "ratio.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes dibOf(std::int32_t size, std::uint16_t bits, std::uint32_t compression, const Bytes& table, const Bytes& pixels) {
    const BITMAPINFOHEADER header{40, size, size, 1, bits, compression, 0, 0, 0, 0, 0};
    Bytes dib(sizeof header + table.size() + pixels.size());
    std::memcpy(dib.data(), &header, sizeof header);
    std::copy(table.begin(), table.end(), dib.begin() + sizeof header);
    std::copy(pixels.begin(), pixels.end(), dib.end() - static_cast<std::ptrdiff_t>(pixels.size()));
    return dib;
}

Bytes noise(std::size_t count) {
    Bytes bytes(count);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>((state = state * 1664525u + 1013904223u) >> 24);
    return bytes;
}

// Runs of 16 pixels and absolute runs of 16 in turn.
Bytes stream(std::int32_t size) {
    Bytes bytes;
    for (std::int32_t y = 0; y < size; ++y) {
        for (std::int32_t x = 0; x < size; x += 32) {
            bytes.insert(bytes.end(), {16, static_cast<std::uint8_t>(x), 0, 16});
            for (std::uint8_t i = 0; i < 16; ++i) bytes.push_back(i);
        }
        bytes.insert(bytes.end(), {0, 0});
    }
    bytes.insert(bytes.end(), {0, 1});
    return bytes;
}

void addTranslate(const char* form, std::int32_t size, std::int32_t planes, Bytes dib) {
    const auto translate = [dib = std::move(dib)] {
        std::int32_t cloneData = 0;
        const bench::Image image(zetTranslateDIB(reinterpret_cast<const BITMAPINFOHEADER*>(dib.data()), &cloneData));
    };
    const std::int64_t pixels = std::int64_t{size} * size;
    bench::add({"zetTranslateDIB", form, std::to_string(size), pixels, pixels * planes, translate});
}

}  // namespace

int main(int argc, char** argv) {
    for (const std::int32_t size : bench::kSizes) {
        const std::size_t pixels = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
        Bytes masks(12);
        const std::uint32_t fields[3] = {0xFF0000, 0xFF00, 0xFF};
        std::memcpy(masks.data(), fields, 12);
        addTranslate("8-bit palette", size, 3, dibOf(size, 8, 0, noise(1024), noise(pixels)));
        addTranslate("16 bits", size, 3, dibOf(size, 16, 0, {}, noise(2 * pixels)));
        addTranslate("32-bit fields", size, 4, dibOf(size, 32, 3, masks, noise(4 * pixels)));
        addTranslate("RLE8 palette", size, 3, dibOf(size, 8, 1, noise(1024), stream(size)));
    }
    return bench::run(argc, argv);
}
