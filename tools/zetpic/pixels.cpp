// zetpic set, copy and add.
#include "transform.h"

namespace zetpic {

int runSet(const Arguments& arguments) {
    const std::int32_t value = *arguments.options.value;
    return transform(arguments, Start::kSource, [&](ZetImage*, ZetImage* result) { zetSet(result, value); });
}

int runCopy(const Arguments& arguments) {
    Sheet source, target, result;
    Failure failure = openSheet(arguments.files[0], arguments.options, &source);
    if (failure.empty()) failure = openSheet(arguments.files[1], arguments.options, &target);
    if (!failure.empty()) return fail(failure);
    failure = makeSheet(arguments, target.form(), target.form().width, target.form().height, &result);
    if (failure.empty()) failure = copySheet(target, result);
    if (!failure.empty()) return fail(failure);
    Options placed = arguments.options;
    placed.mask.clear();
    const std::int32_t coi = placed.region ? placed.region->coi : 0;
    placed.region = ZetROI{coi, placed.at.x, placed.at.y, INT32_MAX, INT32_MAX};
    Canvas from, to;
    failure = from.open(source, arguments.options);
    if (failure.empty()) failure = to.open(result, placed);
    if (!failure.empty()) return fail(failure);
    to.showProgress();
    zetCopy(from.image(), to.image());
    to.hideProgress();
    if (target.file && target.file->failed()) return fail(arguments.files[1] + ": damaged");
    return finish(arguments, source, result);
}

int runAdd(const Arguments& arguments) {
    Sheet second;
    Failure failure = openSheet(arguments.files[1], arguments.options, &second);
    if (!failure.empty()) return fail(failure);
    Options unmasked = arguments.options;
    unmasked.mask.clear();
    Canvas other;
    failure = other.open(second, unmasked);
    if (!failure.empty()) return fail(failure);
    return transform(arguments, Start::kSource,
                     [&](ZetImage* source, ZetImage* result) { zetAdd(source, other.image(), result); });
}

}  // namespace zetpic
