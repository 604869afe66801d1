// zetpic set, copy and add.
#include "transform.h"

namespace zetpic {

int runSet(const Arguments& arguments) {
    const std::int32_t value = *arguments.options.value;
    return transform(arguments, Start::kSource, [&](ZetImage*, ZetImage* result) { zetSet(result, value); });
}

int runCopy(const Arguments& arguments) {
    Picture source, target;
    Failure failure = readUpright(arguments.files[0], &source);
    if (failure.empty()) failure = readUpright(arguments.files[1], &target);
    if (!failure.empty()) return fail(failure);
    Options placed = arguments.options;
    placed.mask.clear();
    const std::int32_t coi = placed.region ? placed.region->coi : 0;
    placed.region = ZetROI{coi, placed.at.x, placed.at.y, INT32_MAX, INT32_MAX};
    Canvas from, to;
    failure = from.open(*source.image, arguments.options);
    if (failure.empty()) failure = to.open(*target.image, placed);
    if (!failure.empty()) return fail(failure);
    zetCopy(from.image(), to.image());
    return finish(arguments, *target.image);
}

int runAdd(const Arguments& arguments) {
    Picture second;
    Failure failure = readUpright(arguments.files[1], &second);
    if (!failure.empty()) return fail(failure);
    Options unmasked = arguments.options;
    unmasked.mask.clear();
    Canvas other;
    failure = other.open(*second.image, unmasked);
    if (!failure.empty()) return fail(failure);
    return transform(arguments, Start::kSource,
                     [&](ZetImage* source, ZetImage* result) { zetAdd(source, other.image(), result); });
}

}  // namespace zetpic
