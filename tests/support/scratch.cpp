#include "tests/support/scratch.h"

#include "tests/support/allocations.h"

namespace zetpxl::test {

std::size_t peakScratch(const ImageShape& shape, bool inPlace, const std::function<void(ZetImage*, ZetImage*)>& call) {
    Scene scene;
    Random random(11);
    ZetImage* src = &scene.add("src", shape, random).record;
    ZetImage* dst = inPlace ? src : &scene.add("dst", shape, random).record;
    const Recorder recorder(scene.log);
    const AllocationWatch watch;
    call(src, dst);
    return scene.log.lines.empty() ? watch.peakBytes() : SIZE_MAX;
}

}  // namespace zetpxl::test
