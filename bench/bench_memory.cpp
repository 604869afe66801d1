// What memory alone costs: sources read and destinations written in the ways of the operations, with next to no arithmetic.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "ratio.h"

namespace {

using Words = std::vector<std::uint64_t>;

constexpr std::ptrdiff_t kWordBytes = 8;

// Each word of the destination from as many words of one long source.
template <std::ptrdiff_t Read>
void addReading(const char* detail, const bench::Form& form) {
    const auto count = static_cast<std::size_t>(bench::bytesOf(form) / kWordBytes);
    const auto prepare = [=]() -> bench::Call {
        const auto source = std::make_shared<Words>(count * Read, 1);
        const auto destination = std::make_shared<Words>(count, 2);
        return [=] {
            for (std::size_t i = 0; i < count; ++i) {
                std::uint64_t sum = 0;
                for (std::ptrdiff_t k = 0; k < Read; ++k) sum += (*source)[i + static_cast<std::size_t>(k) * count];
                (*destination)[i] = sum;
            }
        };
    };
    bench::add({"(memory)", detail, form.name, bench::pixelsOf(form), bench::bytesOf(form), prepare});
}

// An image that is allocated, filled and released.
void addFresh(std::int32_t planes) {
    const bench::Form form = bench::k8U;
    const auto prepare = [=]() -> bench::Call {
        return [=] {
            const bench::Image image(zetCreateImageHeader(planes, 0, form.depth, "RGB", "BGR", 1, 0, 32, form.size,
                                                          form.size, nullptr, nullptr, nullptr, nullptr));
            zetAllocateImage(image.get(), 0, 0);
            std::memset(image->imageData, 1, static_cast<std::size_t>(image->imageSize));
        };
    };
    bench::add({"(memory)", "fresh image, three planes", form.name, bench::pixelsOf(form),
                planes * bench::bytesOf(form), prepare});
}

constexpr std::ptrdiff_t kPiece = 64;
constexpr std::ptrdiff_t kBlockRows = 512;
constexpr std::ptrdiff_t kBlockColumns = 128;

// Pixels along a line at 30 degrees, whose places are known beforehand.
template <std::size_t Bytes>
struct Slant {
    std::ptrdiff_t size, rowStep;
    std::ptrdiff_t offsets[kPiece];

    explicit Slant(const ZetImage* image) : size(image->width), rowStep(image->widthStep) {
        for (std::ptrdiff_t i = 0; i < kPiece; ++i)
            offsets[i] =
                i / 2 * rowStep + static_cast<std::ptrdiff_t>(static_cast<double>(i) * 0.866) * std::ptrdiff_t{Bytes};
    }

    void copyPiece(const std::uint8_t* source, std::uint8_t* to, std::ptrdiff_t x, std::ptrdiff_t y) const {
        const double centre = static_cast<double>(size) / 2;
        const double dx = static_cast<double>(x) - centre, dy = static_cast<double>(y) - centre;
        const auto sx = static_cast<std::ptrdiff_t>(centre + 0.866 * dx - 0.5 * dy);
        const auto sy = static_cast<std::ptrdiff_t>(centre + 0.5 * dx + 0.866 * dy);
        if (sx < 0 || sy < 0 || sx + kPiece >= size || sy + kPiece >= size) return;
        const std::uint8_t* from = source + sy * rowStep + sx * std::ptrdiff_t{Bytes};
        for (std::ptrdiff_t i = 0; i < kPiece; ++i, to += Bytes) std::memcpy(to, from + offsets[i], Bytes);
    }

    void copy(const std::uint8_t* source, std::uint8_t* destination) const {
        for (std::ptrdiff_t top = 0; top < size; top += kBlockRows)
            for (std::ptrdiff_t left = 0; left < size; left += kBlockColumns)
                for (std::ptrdiff_t y = top; y < std::min(top + kBlockRows, size); ++y)
                    for (std::ptrdiff_t x = left; x < std::min(left + kBlockColumns, size); x += kPiece)
                        copyPiece(source, destination + y * rowStep + x * std::ptrdiff_t{Bytes}, x, y);
    }
};

template <std::size_t Bytes>
void addSlant(const bench::Form& form) {
    bench::add("(memory)", "pixels at 30 degrees", form, 0, bench::between([](ZetImage* source, ZetImage* destination) {
                   const Slant<Bytes> slant(source);
                   slant.copy(static_cast<const std::uint8_t*>(source->imageData),
                              static_cast<std::uint8_t*>(destination->imageData));
               }));
}

}  // namespace

int main(int argc, char** argv) {
    for (const bench::Form& form : {bench::k8U, bench::k16U, bench::k32F}) addReading<2>("two read, one written", form);
    for (const bench::Form& form : {bench::k8U, bench::k8UColours, bench::k32F}) {
        const bench::Form half = bench::sized(form, form.size / 2);
        addReading<4>("four read, one written", half);
        addReading<2>("half size, every second row", half);
    }
    addFresh(3);
    addSlant<1>(bench::k8U);
    addSlant<3>(bench::k8UColours);
    addSlant<4>(bench::k32F);
    return bench::run(argc, argv);
}
