// The box reporter over a box of the test's own, which notes what it was asked to show and answers from a list.
#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>

#include "core/platform.h"
#include "tests/support/allocations.h"
#include "tests/support/child.h"
#include "tests/support/events.h"

namespace {

struct Shown {
    std::string text;
    std::string title;
    std::uint32_t style;
};

std::deque<Shown> shown;
std::int32_t nextAnswer = zetpxl::platform::kAnswerOk;
bool tellOnErrorStream = false;

}  // namespace

// In place of the platform's box.
std::int32_t zetpxl::platform::showBox(const char* text, const char* title, std::uint32_t style) {
    shown.push_back({text, title, style});
    if (tellOnErrorStream) std::fprintf(stderr, "%s|%s|%x\n", text, title, style);
    return nextAnswer;
}

namespace zetpxl::test {
namespace {

class BoxReporter : public testing::Test {
  protected:
    void SetUp() override {
        shown.clear();
        nextAnswer = platform::kAnswerOk;
    }
    EventLog log_;
    Recorder recorder_{log_, -7};
};

constexpr const char* kContinue = "\n\nErrMode=ZET_ErrorModeParent\n\nContinue?";
constexpr const char* kTerminate = "\n\nErrMode=ZET_ErrorModeLeaf\n\nTerminate the application?";

TEST_F(BoxReporter, ParentModeAsksWhetherToContinue) {
    EXPECT_EQ(zetGuiBoxReport(-5, "zetAdd", "a==b", "zetadd", 12), -5);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(
        shown[0].text,
        std::string("In function zetAdd(): [file zetadd, line 12]\na==b\n\nBad argument\n(status: -5)") + kContinue);
    EXPECT_EQ(shown[0].title, "ZET 2.5 Release");
    EXPECT_EQ(shown[0].style, 0x2011u);
    EXPECT_EQ(zetGetErrStatus(), -7);
}

TEST_F(BoxReporter, TracesAreWordedAsCalls) {
    for (const std::int32_t status : {-1, -8}) {
        shown.clear();
        EXPECT_EQ(zetGuiBoxReport(status, "f", "", "s", 1), status);
        ASSERT_EQ(shown.size(), 1u);
        EXPECT_EQ(shown[0].text, "Called from f(): [file s, line 1]\n\n\n" + std::string(zetErrorStr(status)) +
                                     "\n(status: " + std::to_string(status) + ")" + kContinue);
    }
}

TEST_F(BoxReporter, MissingWordsAreReplaced) {
    zetGuiBoxReport(-5, nullptr, nullptr, nullptr, -4);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text,
              std::string("In function <unknown>(): [file , line 0]\n\n\nBad argument\n(status: -5)") + kContinue);
}

TEST_F(BoxReporter, LeafModeAsksWhetherToTerminate) {
    zetSetErrMode(ZET_ErrorModeLeaf);
    for (const std::int32_t answer : {platform::kAnswerNo, 0, platform::kAnswerCancel}) {
        shown.clear();
        nextAnswer = answer;
        EXPECT_EQ(zetGuiBoxReport(-5, "f", "c", "s", 1), -5);
        ASSERT_EQ(shown.size(), 1u);
        EXPECT_EQ(shown[0].text,
                  std::string("In function f(): [file s, line 1]\nc\n\nBad argument\n(status: -5)") + kTerminate);
        EXPECT_EQ(shown[0].style, 0x2014u);
    }
}

TEST_F(BoxReporter, YesAndCancelEndTheProcessWithAFurtherBox) {
    tellOnErrorStream = true;
    for (const auto& [mode, answer] : {std::pair{0, platform::kAnswerYes}, {1, platform::kAnswerCancel}}) {
        nextAnswer = answer;
        const ChildResult child = runInChild([mode = mode] {
            zetSetErrMode(mode);
            zetGuiBoxReport(-5, "f", "c", "s", 1);
        });
        EXPECT_EQ(child.exitCode, 1);
        const std::string last = "ZET Library: terminating the application|Win32: Application exit|2040\n";
        ASSERT_GT(child.errors.size(), last.size());
        EXPECT_EQ(child.errors.substr(child.errors.size() - last.size()), last);
    }
    tellOnErrorStream = false;
}

TEST_F(BoxReporter, OtherModesShowNothing) {
    for (const std::int32_t mode : {2, 3, -1}) {
        zetSetErrMode(mode);
        EXPECT_EQ(zetGuiBoxReport(-5, "f", "c", "s", 1), -5);
    }
    EXPECT_TRUE(shown.empty());
}

TEST_F(BoxReporter, LongNamesFit) {
    const std::string longText(5000, 'n');
    zetGuiBoxReport(-5, longText.c_str(), longText.c_str(), longText.c_str(), INT32_MAX);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "In function " + longText + "(): [file " + longText + ", line 2147483647]\n" + longText +
                                 "\n\nBad argument\n(status: -5)" + kContinue);
}

TEST_F(BoxReporter, WithoutMemoryThereIsNoBox) {
    const std::string longText(5000, 'n');
    const AllocationWatch watch(1);
    EXPECT_EQ(zetGuiBoxReport(-5, "f", longText.c_str(), "s", 1), -5);
    EXPECT_TRUE(shown.empty());
    EXPECT_TRUE(watch.failed());
}

TEST_F(BoxReporter, LeavesNoMemoryBehind) {
    const std::string longText(5000, 'n');
    const AllocationWatch watch;
    zetGuiBoxReport(-5, longText.c_str(), longText.c_str(), "s", 1);
    EXPECT_EQ(watch.live(), 0);
}

}  // namespace
}  // namespace zetpxl::test
