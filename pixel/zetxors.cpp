// The exclusive or of an image and a constant, on all depths but 32F. On 1U images an odd constant inverts, an even one
// copies.
#include "pixel/logic.h"
#include "pixel/logicrows.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetXorS", "zetxors"};

struct Xor {
    template <class Word>
    static constexpr Word apply(Word a, Word b) {
        return static_cast<Word>(a ^ b);
    }
};

}  // namespace

void zetXorS(ZetImage* srcImage, ZetImage* dstImage, std::int32_t value) {
    const bool isBits = srcImage && srcImage->depth == ZET_DEPTH_1U;
    const auto constant = static_cast<std::uint32_t>(isBits ? value & 1 : value);
    runPointOperation({op, &logicTable<Xor>}, {{srcImage, nullptr}, 1, dstImage, constant});
}

}  // namespace zetpxl
