#include "filter/blursource.h"

#include <algorithm>
#include <cfenv>

namespace zetpxl {

namespace {

constexpr std::int32_t kBandRows = 16;

bool fetchRows(BlurSource* s, std::int64_t first, std::int64_t rows, BlurBand* band) {
    const std::int64_t y = s->rect.y + first;
    if (y > INT32_MAX) return false;
    // Border constants become floats as the caller's rounding mode has it, also while means are being truncated.
    const int mode = std::fegetround();
    std::fesetround(s->roundingMode);
    band->data = static_cast<std::uint8_t*>(ownGetRect(s->image, s->rect.x, static_cast<std::int32_t>(y), s->rect.width,
                                                       static_cast<std::int32_t>(rows), &s->rowStep));
    std::fesetround(mode);
    band->planeStep = rows * s->rowStep;
    return band->data != nullptr;
}

bool fetchLateRows(BlurSource* s) {
    const std::int64_t below = std::int64_t{s->image->height} - s->rect.y;
    if (below >= s->rect.height) return true;
    s->lateFrom = static_cast<std::int32_t>(std::max<std::int64_t>(below, 0));
    return fetchRows(s, s->lateFrom, s->rect.height - s->lateFrom, &s->late);
}

}  // namespace

BlurSource::~BlurSource() {
    for (std::int32_t i = 0; slots && i < nSlots; ++i) ownFreeBlock(slots[static_cast<std::size_t>(i)].data);
    ownFreeBlock(late.data);
}

bool openBlurSource(BlurSource* source, ZetImage* image, const BlurRect& rect, std::int32_t windowRows, BlurFetch fetch,
                    bool inPlace) {
    source->image = image;
    source->rect = rect;
    source->roundingMode = std::fegetround();
    source->bandRows = fetch == BlurFetch::Whole ? rect.height : kBandRows;
    source->nSlots = windowRows / source->bandRows + 2;
    source->lateFrom = INT32_MAX;
    source->late = {-1, nullptr, 0};
    source->slots = allocBlock<BlurBand>(source->nSlots);
    if (!source->slots) return false;
    std::fill_n(source->slots.get(), source->nSlots, BlurBand{-1, nullptr, 0});
    if (inPlace && !fetchLateRows(source)) return false;
    std::ptrdiff_t planeStep = 0;
    return blurSourceRow(source, 0, &planeStep) != nullptr;
}

const std::uint8_t* blurSourceRow(BlurSource* source, std::int64_t r, std::ptrdiff_t* planeStep) {
    if (r >= source->lateFrom) {
        *planeStep = source->late.planeStep;
        return source->late.data + (r - source->lateFrom) * source->rowStep;
    }
    const std::int64_t index = r / source->bandRows;
    BlurBand& band = source->slots[static_cast<std::size_t>(index % source->nSlots)];
    if (band.index != index) {
        ownFreeBlock(band.data);
        band = {-1, nullptr, 0};
        const std::int64_t first = index * source->bandRows;
        const std::int64_t end = std::min<std::int64_t>(source->rect.height, source->lateFrom);
        if (!fetchRows(source, first, std::min<std::int64_t>(source->bandRows, end - first), &band)) return nullptr;
        band.index = index;
    }
    *planeStep = band.planeStep;
    return band.data + (r - index * source->bandRows) * source->rowStep;
}

}  // namespace zetpxl
