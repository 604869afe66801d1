// The bitwise OR of two images, on all depths but 32F.
#include "pixel/logic.h"
#include "pixel/logicrows.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetOr", "zetor"};

struct Or {
    template <class Word>
    static constexpr Word apply(Word a, Word b) {
        return static_cast<Word>(a | b);
    }
};

}  // namespace

void zetOr(ZetImage* srcImageA, ZetImage* srcImageB, ZetImage* dstImage) {
    runPointOperation({op, &logicTable<Or>}, {{srcImageA, srcImageB}, 2, dstImage, 0});
}

}  // namespace zetpxl
