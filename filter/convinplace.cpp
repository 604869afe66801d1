// Convolution of an image in one block into itself.
//   inplace.1 a stripe is as high as the kernels reach, or more: the copy of the next one is taken before this one is written,
//             and no later one needs its old pixels
//   inplace.2 rows below the image that wrapped borders take from the top are copied before anything is written
//   inplace.3 scratch is bounded by the stripes and does not grow with the image's height
#include <algorithm>
#include <array>

#include "filter/convdriver.h"

namespace zetpxl {

namespace {

constexpr std::int32_t kLeastRows = 64;

struct InPlace {
    Convolution* c;
    ZetROI region;
    std::int32_t maskY;
    std::int32_t stripeRows;
    std::int32_t count;
    std::int32_t firstLate;  // the stripes from here on reach below the image
    std::array<BorderedCopy, 2> lateCopies;
    std::int32_t lateMade;
};

std::int32_t topOf(const InPlace& p, std::int32_t k) { return k * p.stripeRows; }

std::int32_t heightOf(const InPlace& p, std::int32_t k) {
    return std::min(p.stripeRows, p.region.height - topOf(p, k));
}

bool copyStripe(const InPlace& p, std::int32_t k, BorderedCopy* copy) {
    p.c->srcRect.yOffset = p.region.yOffset + topOf(p, k);
    p.c->srcRect.height = heightOf(p, k);
    return ownBorderedCopy(&p.c->src, p.c->margins, copy);
}

std::int32_t writeStripe(const InPlace& p, std::int32_t k, BorderedCopy* copy) {
    p.c->dstRect.yOffset = p.region.yOffset + topOf(p, k);
    p.c->maskRect.yOffset = p.maskY + topOf(p, k);
    copy->image->roi = &copy->roi;
    return ownConvolveRegion(copy->image, &p.c->dst, &p.c->plan, p.c->margins);
}

// Stripes are at least as high as the kernels reach, so at most the last two reach below the image.
void findLateStripes(InPlace* p) {
    const Convolution& c = *p->c;
    p->firstLate = p->count;
    if ((c.src.borderMode[1] & 3) != ZET_BORDER_WRAP) return;
    while (p->firstLate > 0 && p->count - p->firstLate < 2) {
        const std::int32_t k = p->firstLate - 1;
        const std::int64_t end = std::int64_t{p->region.yOffset} + topOf(*p, k) + heightOf(*p, k);
        if (end + c.margins.bottom <= c.src.height) return;
        p->firstLate = k;
    }
}

bool copyLateStripes(InPlace* p) {
    for (std::int32_t k = p->firstLate; k < p->count; ++k, ++p->lateMade)
        if (!copyStripe(*p, k, &p->lateCopies[static_cast<std::size_t>(p->lateMade)])) return false;
    return true;
}

bool takeStripe(const InPlace& p, std::int32_t k, BorderedCopy* copy) {
    if (k < p.firstLate) return copyStripe(p, k, copy);
    *copy = p.lateCopies[static_cast<std::size_t>(k - p.firstLate)];
    return true;
}

void freeLateStripes(const InPlace& p, std::int32_t from) {
    for (std::int32_t k = std::max(from, p.firstLate); k < p.firstLate + p.lateMade; ++k) {
        BorderedCopy copy = p.lateCopies[static_cast<std::size_t>(k - p.firstLate)];
        freeBorderedCopy(&copy);
    }
}

std::int32_t writeStripes(const InPlace& p, BorderedCopy current) {
    for (std::int32_t k = 0; k < p.count; ++k) {
        BorderedCopy next{};
        const bool isLast = k + 1 == p.count;
        std::int32_t result = isLast || takeStripe(p, k + 1, &next) ? kConvDone : kConvNoMemory;
        const bool hasNext = !isLast && result == kConvDone;
        if (result == kConvDone) result = writeStripe(p, k, &current);
        freeBorderedCopy(&current);
        if (result != kConvDone) {
            if (hasNext) freeBorderedCopy(&next);
            freeLateStripes(p, hasNext ? k + 2 : k + 1);
            return result;
        }
        current = next;
    }
    return kConvDone;
}

}  // namespace

std::int32_t convolveInPlace(Convolution* c) {
    InPlace p{c, c->srcRect, c->maskRect.yOffset, 0, 0, 0, {}, 0};
    p.stripeRows = std::max(kLeastRows, std::max(c->margins.top, c->margins.bottom));
    p.count = (p.region.height - 1) / p.stripeRows + 1;
    findLateStripes(&p);
    BorderedCopy first;
    if (!copyLateStripes(&p) || !takeStripe(p, 0, &first)) {
        freeLateStripes(p, 0);
        return kConvNoMemory;
    }
    return writeStripes(p, first);
}

}  // namespace zetpxl
