// Colour, noise and DIBs, the latter with the allocation and release of their image in each call.
#include <algorithm>
#include <cstring>
#include <vector>

#include "ratio.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kSize = 4096;
constexpr std::ptrdiff_t kPixels = std::ptrdiff_t{kSize} * kSize;

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

// Runs of one colour, or absolute runs of noise.
Bytes stream(std::int32_t size, bool flat) {
    const Bytes pixels = noise(254);
    Bytes bytes;
    for (std::int32_t y = 0; y < size; ++y) {
        for (std::int32_t x = 0; x < size; x += 254) {
            const auto count = static_cast<std::uint8_t>(std::min(size - x, 254));
            const auto colour = static_cast<std::uint8_t>(x + y);
            bytes.insert(bytes.end(), {flat ? count : std::uint8_t{0}, flat ? colour : count});
            if (!flat) bytes.insert(bytes.end(), pixels.begin(), pixels.begin() + count);
        }
        bytes.insert(bytes.end(), {0, 0});
    }
    bytes.insert(bytes.end(), {0, 1});
    return bytes;
}

void addTranslate(const char* form, std::int32_t planes, double atMost, const std::function<Bytes()>& makeDib) {
    const bench::Prepare prepare = [=]() -> bench::Call {
        return [dib = makeDib()] {
            std::int32_t cloneData = 0;
            const bench::Image image(
                zetTranslateDIB(reinterpret_cast<const BITMAPINFOHEADER*>(dib.data()), &cloneData));
        };
    };
    bench::add({"zetTranslateDIB", form, "8U", kPixels, kPixels * planes, prepare, atMost});
}

Bytes fieldMasks() {
    Bytes masks(12);
    const std::uint32_t fields[3] = {0xFF0000, 0xFF00, 0xFF};
    std::memcpy(masks.data(), fields, 12);
    return masks;
}

void addDibs() {
    addTranslate("8-bit palette to 3 planes", 3, 3, [] { return dibOf(kSize, 8, 0, noise(1024), noise(kPixels)); });
    addTranslate("16 bits", 3, 4, [] { return dibOf(kSize, 16, 0, {}, noise(2 * kPixels)); });
    addTranslate("RLE8, flat", 3, 3.3, [] { return dibOf(kSize, 8, 1, noise(1024), stream(kSize, true)); });
    addTranslate("RLE8, noisy", 3, 3.3, [] { return dibOf(kSize, 8, 1, noise(1024), stream(kSize, false)); });
    addTranslate("32 bits, fields", 4, 0, [] { return dibOf(kSize, 32, 3, fieldMasks(), noise(4 * kPixels)); });
}

void nameChannels(ZetImage* image, const char* name) {
    std::memcpy(image->colorModel, name, 4);
    std::memcpy(image->channelSeq, name, 4);
}

void addColour(const bench::Form& form, double toHls, double toRgb) {
    bench::add("zetRGB2HLS", "whole", form, toHls, bench::between(zetRGB2HLS));
    bench::add("zetHLS2RGB", "whole", form, toRgb, bench::between([](ZetImage* source, ZetImage* destination) {
                   nameChannels(source, "HLS");
                   zetHLS2RGB(source, destination);
               }));
}

void addNoise(const bench::Form& form, std::int32_t kind, double atMost) {
    ZetNoiseParam param{};
    const auto init = kind == ZET_NOISE_UNIFORM ? zetNoiseUniformInit : zetNoiseGaussianInit;
    init(&param, 1, kind == ZET_NOISE_UNIFORM ? -20 : 0, 20);
    param.lowFP = static_cast<float>(param.lowInt);
    param.highFP = static_cast<float>(param.highInt);
    bench::add("zetNoiseImage", kind == ZET_NOISE_UNIFORM ? "uniform" : "Gaussian", form, atMost,
               bench::between([=](ZetImage*, ZetImage* image) { zetNoiseImage(image, &param); }));
}

}  // namespace

int main(int argc, char** argv) {
    addColour(bench::k8UColours, 12, 10);
    addColour({"16U x 3", 2048, 3, ZET_DEPTH_16U}, 7, 6);
    addNoise(bench::k8U, ZET_NOISE_UNIFORM, 20);
    addNoise(bench::k32F, ZET_NOISE_UNIFORM, 5);
    addNoise(bench::k8U, ZET_NOISE_GAUSSIAN, 45);
    addNoise(bench::k32F, ZET_NOISE_GAUSSIAN, 12);
    addDibs();
    return bench::run(argc, argv);
}
