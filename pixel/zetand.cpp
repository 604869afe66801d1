// The bitwise AND of two images, on all depths but 32F.
#include "pixel/logic.h"
#include "pixel/logicrows.h"

namespace zetpxl {

namespace {

constexpr Operation op{"zetAnd", "zetand"};

struct And {
    template <class Word>
    static constexpr Word apply(Word a, Word b) {
        return static_cast<Word>(a & b);
    }
};

}  // namespace

void zetAnd(ZetImage* srcImageA, ZetImage* srcImageB, ZetImage* dstImage) {
    runPointOperation({op, &logicTable<And>}, {{srcImageA, srcImageB}, 2, dstImage, 0});
}

}  // namespace zetpxl
