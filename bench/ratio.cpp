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

constexpr int kRounds = 31;
constexpr double kShortestSample = 2e-4;  // seconds: far above what the clock can tell

double seconds(const std::function<void()>& call, int times) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / times;
}

// How often a call goes into one sample.
int repeats(const std::function<void()>& call) {
    int times = 1;
    while (seconds(call, times) * times < kShortestSample && times < 1 << 24) times *= 2;
    return times;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + kRounds / 2, values.end());
    return values[kRounds / 2];
}

struct Timing {
    double call;
    double ratio;
};

Timing measure(const Row& row) {
    std::vector<std::uint8_t> source(static_cast<std::size_t>(row.bytes), 1);
    std::vector<std::uint8_t> destination(source.size());
    const std::function<void()> copy = [&] {
        std::memcpy(destination.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    };
    const int callTimes = repeats(row.call);
    const int copyTimes = repeats(copy);
    std::vector<double> calls, copies;
    for (int i = 0; i < kRounds; ++i) {
        calls.push_back(seconds(row.call, callTimes));
        copies.push_back(seconds(copy, copyTimes));
    }
    return {median(calls), median(calls) / median(copies)};
}

class TableReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override {
        std::printf("%-20s %-28s %-10s %12s %12s\n", "operation", "form", "image", "ns a pixel", "to memcpy");
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const std::string name = run.run_name.function_name;
            const std::size_t first = name.find('/'), second = name.rfind('/');
            std::printf("%-20s %-28s %-10s %12.3f %12.2f\n", name.substr(0, first).c_str(),
                        name.substr(first + 1, second - first - 1).c_str(), name.substr(second + 1).c_str(),
                        run.counters.at("nsPerPixel").value, run.counters.at("ratio").value);
        }
        std::fflush(stdout);
    }
};

}  // namespace

Image makeImage(std::int32_t size, std::int32_t nChannels, std::uint32_t depth, std::int32_t dataOrder) {
    Image image(zetCreateImageHeader(nChannels, 0, depth, nChannels == 1 ? "GRAY" : "RGB",
                                     nChannels == 1 ? "G\0\0" : "RGB", dataOrder, 0, 32, size, size, nullptr, nullptr,
                                     nullptr, nullptr));
    if (depth == ZET_DEPTH_32F)
        zetAllocateImageFP(image.get(), 1, 1.0F);
    else
        zetAllocateImage(image.get(), 1, 1);
    if (!image || !image->imageData) std::abort();
    return image;
}

void add(Row row) {
    const std::string name = row.operation + "/" + row.form + "/" + row.image;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [row = std::move(row)](benchmark::State& state) {
                                     for (auto _ : state) {
                                         const Timing timing = measure(row);
                                         state.SetIterationTime(timing.call);
                                         state.counters["nsPerPixel"] =
                                             timing.call * 1e9 / static_cast<double>(row.pixels);
                                         state.counters["ratio"] = timing.ratio;
                                     }
                                 })
        ->Iterations(1)
        ->UseManualTime();
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
