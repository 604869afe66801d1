// Many threads on one picture: threads [WIDTH HEIGHT THREADS]. Each filters a strip of rows, and the result is compared
// with that of one thread. Times go to the error stream.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "show.h"

namespace {

// guide
// A strip is a region. Region and records are the thread's own: an operation may change them while it works. The pixels
// are shared: threads read neighbours beyond their strips, and each writes its own rows only.
void blurStrip(const ZetImage& source, const ZetImage& result, std::int32_t top, std::int32_t rows) {
    tellFailures();  // status, mode and callback are the thread's own too
    ZetROI strip = {0, 0, top, source.width, rows};
    ZetImage from = source, to = result;
    from.roi = to.roi = &strip;
    zetBlur(&from, &to, 15, 15, 7, 7);
}

void blurInStrips(const ZetImage& source, const ZetImage& result, std::int32_t count) {
    std::vector<std::thread> threads;
    for (std::int32_t i = 0; i < count; ++i) {
        const auto top = static_cast<std::int32_t>(std::int64_t{source.height} * i / count);
        const auto below = static_cast<std::int32_t>(std::int64_t{source.height} * (i + 1) / count);
        if (below > top) threads.emplace_back(blurStrip, std::cref(source), std::cref(result), top, below - top);
    }
    for (std::thread& thread : threads) thread.join();
}
// end

// The best of three runs, for the first one touches the memory.
template <class Work>
double milliseconds(Work work) {
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        best = std::min(best, taken.count());
    }
    return best;
}

}  // namespace

int main(int argc, char** argv) {
    tellFailures();
    const std::int32_t width = argc > 2 ? std::atoi(argv[1]) : 1021, height = argc > 2 ? std::atoi(argv[2]) : 763;
    const std::int32_t count =
        argc > 3 ? std::atoi(argv[3]) : static_cast<std::int32_t>(std::thread::hardware_concurrency());
    ZetImage* const image = makeGrey(width, height);
    ZetImage* const one = makeGrey(width, height);
    ZetImage* const many = makeGrey(width, height);
    ZetNoiseParam noise{};
    zetNoiseUniformInit(&noise, 1, 0, 256);
    zetNoiseImage(image, &noise);
    zetSetBorderMode(image, ZET_BORDER_REFLECT, 15, 0);

    const double alone = milliseconds([&] { blurInStrips(*image, *one, 1); });
    const double together = milliseconds([&] { blurInStrips(*image, *many, count); });
    std::fprintf(stderr, "1 thread %.2f ms, %d threads %.2f ms: %.2f times as fast\n", alone, count, together,
                 alone / together);
    const bool same = std::memcmp(one->imageData, many->imageData, static_cast<std::size_t>(one->imageSize)) == 0;
    std::printf("the pixels %s\n", same ? "are the same" : "differ");
    for (ZetImage* const each : {image, one, many}) releaseImage(each);
    return same ? endOfExample() : EXIT_FAILURE;
}
