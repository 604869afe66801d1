#include "ratio.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace bench {
namespace {

constexpr double kMostRounds = 31;
constexpr double kRowSeconds = 0.4;       // spent on the calls of a row, but for rows whose calls are slow
constexpr double kShortestSample = 2e-4;  // seconds: far above what the clock can tell
constexpr double kSmallRatio = 1.2;

double seconds(const Call& call, int times) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / times;
}

// How often a call goes into one sample. The first call brings pages and tables in and is not counted.
int repeats(const Call& call) {
    int times = 1;
    const double first = seconds(call, 1);
    if (first > kRowSeconds) return 1;
    while (seconds(call, times) * times < kShortestSample && times < 1 << 24) times *= 2;
    return times;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// An odd number of rounds, for a median; a call of more than a second is timed once.
int rounds(double sample) {
    if (sample > 1) return 1;
    return static_cast<int>(std::clamp(kRowSeconds / sample, 3.0, kMostRounds)) | 1;
}

struct Timing {
    double call;
    double ratio;
};

// Each round has a ratio of its own, so that what slows the machine for a while slows both sides of it. Where rounds are few
// each has several samples of the quick side.
Timing compare(const Call& call, const Call& other) {
    const int callTimes = repeats(call);
    const int otherTimes = repeats(other);
    const int count = rounds(seconds(call, callTimes) * callTimes);
    std::vector<double> calls, ratios;
    while (static_cast<int>(calls.size()) < count) {
        std::vector<double> others;
        while (static_cast<int>(others.size()) < std::max(1, 9 / count)) others.push_back(seconds(other, otherTimes));
        calls.push_back(seconds(call, callTimes));
        ratios.push_back(calls.back() / median(others));
    }
    return {median(calls), median(ratios)};
}

Timing measure(const Row& row) {
    const Call call = row.prepare();
    if (row.other) {
        const Timing timing = compare(call, row.other());
        return {timing.call, timing.ratio * static_cast<double>(row.otherPixels) / static_cast<double>(row.pixels)};
    }
    std::vector<std::uint8_t> source(static_cast<std::size_t>(std::max<std::ptrdiff_t>(row.bytes, 1)), 1);
    std::vector<std::uint8_t> destination(source.size());
    return compare(call, [&] {
        std::memcpy(destination.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    });
}

constexpr const char* kPlace = "%-16s %-30s %-12s";

void printRow(const std::string& name, double nanoseconds, double ratio, double atMost) {
    const std::size_t first = name.find('|'), second = name.rfind('|');
    std::printf(kPlace, name.substr(0, first).c_str(), name.substr(first + 1, second - first - 1).c_str(),
                name.substr(second + 1).c_str());
    std::printf(" %11.3f", nanoseconds);
    ratio > 0 ? std::printf(" %9.2f", ratio) : std::printf(" %9s", "-");
    const bool isShort = (ratio > 0 ? ratio : nanoseconds) > atMost;
    if (atMost > 0) std::printf(" %8.6g%s", atMost, isShort ? "  short" : "");
    std::printf("\n");
}

class TableReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override {
        std::printf(kPlace, "operation", "form", "image");
        std::printf(" %11s %9s %8s\n", "ns a pixel", "to memcpy", "at most");
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            printRow(run.run_name.function_name, run.counters.at("nsPerPixel").value, run.counters.at("ratio").value,
                     run.counters.at("atMost").value);
        std::fflush(stdout);
    }
};

std::uint64_t nextWord(std::uint64_t* state) {
    *state ^= *state << 13;
    *state ^= *state >> 7;
    *state ^= *state << 17;
    return *state;
}

void fillRandom(ZetImage* image) {
    auto* const bytes = static_cast<std::uint8_t*>(image->imageData);
    std::uint64_t state = 88172645463325252u;
    for (std::int32_t i = 0; i + 8 <= image->imageSize; i += 8) {
        const std::uint64_t word = nextWord(&state);
        std::memcpy(bytes + i, &word, 8);
    }
    if (image->depth != ZET_DEPTH_32F) return;
    for (std::int32_t i = 0; i + 4 <= image->imageSize; i += 4) {
        std::uint32_t word;
        std::memcpy(&word, bytes + i, 4);
        const float value = static_cast<float>(word) / 16843010.0F;
        std::memcpy(bytes + i, &value, 4);
    }
}

}  // namespace

std::int64_t pixelsOf(const Form& form) { return std::int64_t{form.size} * form.size; }

std::ptrdiff_t bytesOf(const Form& form) {
    return pixelsOf(form) * form.nChannels * (form.depth & ~ZET_DEPTH_SIGN) / 8;
}

SharedImage makeImage(const Form& form) {
    const bool grey = form.nChannels == 1;
    SharedImage image(zetCreateImageHeader(form.nChannels, 0, form.depth, grey ? "GRAY" : "RGB", grey ? "G\0\0" : "RGB",
                                           0, 0, 32, form.size, form.size, nullptr, nullptr, nullptr, nullptr),
                      ImageDeleter());
    if (form.depth == ZET_DEPTH_32F)
        zetAllocateImageFP(image.get(), 0, 0);
    else
        zetAllocateImage(image.get(), 0, 0);
    if (!image || !image->imageData) std::abort();
    fillRandom(image.get());
    return image;
}

void add(Row row) {
    const std::string name = row.operation + "|" + row.detail + "|" + row.image;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [row = std::move(row)](benchmark::State& state) {
                                     for (auto _ : state) {
                                         const Timing timing = measure(row);
                                         state.SetIterationTime(timing.call);
                                         state.counters["nsPerPixel"] =
                                             timing.call * 1e9 / static_cast<double>(row.pixels);
                                         state.counters["ratio"] = row.bytes != 0 ? timing.ratio : 0;
                                         state.counters["atMost"] = row.atMost;
                                     }
                                 })
        ->Iterations(1)
        ->UseManualTime();
}

void add(const std::string& operation, const std::string& detail, const Form& form, double atMost,
         const Operation& prepare) {
    add({operation, detail, form.name, pixelsOf(form), bytesOf(form), [=] { return prepare(form); }, atMost});
}

void addSmall(const std::string& operation, const std::string& detail, const Form& form, const Operation& prepare) {
    const Form small = sized(form, 256);
    add({operation, detail + ", 256 to large", form.name, pixelsOf(small), bytesOf(small),
         [=] { return prepare(small); }, kSmallRatio, [=] { return prepare(form); }, pixelsOf(form)});
}

Operation between(const std::function<void(ZetImage*, ZetImage*)>& operation) {
    return [=](const Form& form) -> Call {
        const SharedImage source = makeImage(form), destination = makeImage(form);
        for (int side = 0; side < 4; ++side) source->borderMode[side] = ZET_BORDER_REPLICATE;
        return [=] { operation(source.get(), destination.get()); };
    };
}

int run(int argc, char** argv) {
    zetRedirectError(zetStdErrReport);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    TableReporter table;
    benchmark::RunSpecifiedBenchmarks(&table);
    return 0;
}

}  // namespace bench
