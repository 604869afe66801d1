// Kernel records: the turn of weights and anchor, refusals in their order, memory.
#include <gtest/gtest.h>

#include <array>

#include "tests/support/allocations.h"
#include "tests/support/events.h"

namespace zetpxl::test {
namespace {

std::string line(const char* name, std::int32_t status, const char* words) {
    return reportLine(status, name, words, "zetcnv2d");
}

std::string refusal(std::int32_t nCols, std::int32_t nRows, std::int32_t x, std::int32_t y,
                    const std::int32_t* values) {
    EventLog log;
    const Recorder recorder(log);
    EXPECT_EQ(zetCreateConvKernel(nCols, nRows, x, y, values, 0), nullptr);
    return log.lines.size() == 1 ? log.lines[0] : log.text();
}

TEST(ConvKernel, TurnsWeightsAndAnchor) {
    const std::array<std::int32_t, 6> caller{1, 2, 3, 4, 5, -6};
    std::array<std::int32_t, 6> values = caller;
    ZetConvKernel* kernel = zetCreateConvKernel(3, 2, 0, 1, values.data(), -40);
    ASSERT_NE(kernel, nullptr);
    values.fill(0);
    EXPECT_EQ(kernel->nCols, 3);
    EXPECT_EQ(kernel->nRows, 2);
    EXPECT_EQ(kernel->anchorX, 2);
    EXPECT_EQ(kernel->anchorY, 0);
    EXPECT_EQ(kernel->nShift, -40);
    for (std::size_t i = 0; i < caller.size(); ++i) EXPECT_EQ(kernel->values[i], caller[5 - i]);
    zetDeleteConvKernel(kernel);
}

TEST(ConvKernel, RefusalsInTheirOrder) {
    const std::array<std::int32_t, 4> values{};
    const auto fault = [](const char* words) { return line("zetCreateConvKernel", ZET_StatusBadArgument, words); };
    const std::string size = fault("(nRows<=0 || nCols<=0)");
    const std::string anchor = fault("(anchorX<0 ||anchorY<0 ||nRows<=anchorY || nCols<=anchorX)");
    EXPECT_EQ(refusal(1, 0, 5, 5, nullptr), fault("(values == 0)"));
    EXPECT_EQ(refusal(1, 0, -1, 0, values.data()), size);
    EXPECT_EQ(refusal(-2, 2, 0, 0, values.data()), size);
    EXPECT_EQ(refusal(2, 2, -1, 0, values.data()), anchor);
    EXPECT_EQ(refusal(2, 2, 0, -1, values.data()), anchor);
    EXPECT_EQ(refusal(2, 2, 2, 0, values.data()), anchor);
    EXPECT_EQ(refusal(2, 2, 0, 2, values.data()), anchor);
}

// The byte count neither wraps round nor turns negative.
TEST(ConvKernel, RefusesSizesThatOverflow) {
    const std::array<std::int32_t, 1> values{};
    const std::string none = line("zetCreateConvKernel", ZET_StatusNoMemory, "Allocation failure");
    EXPECT_EQ(refusal(1 << 15, 1 << 14, 0, 0, values.data()), none);
    EXPECT_EQ(refusal(1 << 16, 1 << 14, 0, 0, values.data()), none);
    EXPECT_EQ(refusal(1 << 16, 1 << 16, 0, 0, values.data()), none);
    EXPECT_EQ(refusal(INT32_MAX, INT32_MAX, 0, 0, values.data()), none);
}

TEST(ConvKernel, WithoutMemoryNothingStaysBehind) {
    const std::array<std::int32_t, 4> values{};
    for (const std::int32_t n : {1, 2}) {
        EventLog log;
        const Recorder recorder(log);
        const AllocationWatch watch(n);
        EXPECT_EQ(zetCreateConvKernel(2, 2, 0, 0, values.data(), 0), nullptr);
        EXPECT_EQ(watch.live(), 0);
        EXPECT_EQ(log.lines, std::vector{line("zetCreateConvKernel", ZET_StatusNoMemory, "Allocation failure")});
    }
}

TEST(ConvKernel, DeleteFreesBothBlocksOrRefuses) {
    const std::array<std::int32_t, 1> values{7};
    EventLog log;
    const Recorder recorder(log);
    {
        const AllocationWatch watch;
        zetDeleteConvKernel(zetCreateConvKernel(1, 1, 0, 0, values.data(), 0));
        EXPECT_EQ(watch.live(), 0);
    }
    ZetConvKernel hollow{};
    zetDeleteConvKernel(nullptr);
    zetDeleteConvKernel(&hollow);
    EXPECT_EQ(log.lines, (std::vector{line("zetDeleteConvKernel", ZET_StatusBadArgument, "kernel==0"),
                                      line("zetDeleteConvKernel", ZET_StatusBadArgument, "kernel->values==0")}));
}

}  // namespace
}  // namespace zetpxl::test
