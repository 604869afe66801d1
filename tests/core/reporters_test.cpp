// The stock reporters, byte for byte, and whether they come back.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/child.h"
#include "tests/support/events.h"

namespace zetpxl::test {
namespace {

struct ReportCase {
    const char* what;
    std::int32_t mode;
    std::int32_t status;
    const char* funcName;
    const char* context;
    const char* fileName;
    std::int32_t line;
    const char* bytes;
    int exitCode;
};

constexpr int kBack = kChildReturned;
constexpr int kGone = 1;

constexpr ReportCase kStreamCases[] = {
    {"plain", 1, -5, "zetAdd", "a==b", "zetadd", 12,
     "\nZET Library Error: Bad argument \n\tin function [zetadd:12]:zetAdd(): a==b\n", kBack},
    {"backtrace", 1, -1, "zetCopy", "", "zetsce", 7, "\tcalled from [zetsce:7]:zetCopy(): \n", kBack},
    {"autotrace", 1, -8, "app", "loop", "main", 3, "\tcalled from [main:3]:app(loop)\n", kBack},
    {"file with line 0", 1, -4, "f", "c", "s", 0,
     "\nZET Library Error: Insufficient memory \n\tin function [s:0]:f(): c\n", kBack},
    {"file with a negative line", 1, -4, "f", "c", "s", -2,
     "\nZET Library Error: Insufficient memory \n\tin function [s:-2]:f(): c\n", kBack},
    {"no file, line 0", 1, -4, "f", "c", nullptr, 0,
     "\nZET Library Error: Insufficient memory \n\tin function:f(): c\n", kBack},
    {"no file, negative line", 1, -4, "f", "c", nullptr, -1,
     "\nZET Library Error: Insufficient memory \n\tin function:f(): c\n", kBack},
    {"no file, a line", 1, -4, "f", "c", nullptr, 5,
     "\nZET Library Error: Insufficient memory \n\tin function [<unknown>:5]:f(): c\n", kBack},
    {"no function", 1, -4, nullptr, "c", "s", 5,
     "\nZET Library Error: Insufficient memory \n\tin function [s:5]:<unknown>(): c\n", kBack},
    {"no context", 1, -4, "f", nullptr, "s", 5, "\nZET Library Error: Insufficient memory \n\tin function [s:5]:f\n",
     kBack},
    {"autotrace without context", 1, -8, nullptr, nullptr, nullptr, 0, "\tcalled from:<unknown>\n", kBack},
    {"positive status", 1, 5, "f", "c", "s", 5,
     "\nZET Library Error: Unknown error or status code \n\tin function [s:5]:f(): c\n", kBack},
    {"percent signs", 1, -4, "%s%n", "%d", "%x", 5,
     "\nZET Library Error: Insufficient memory \n\tin function [%x:5]:%s%n(): %d\n", kBack},
    {"silent", 2, -5, "f", "c", "s", 1, "", kBack},
    {"unknown mode", 17, -5, "f", "c", "s", 1, "\nZET Library Error: Bad argument \n\tin function [s:1]:f(): c\n",
     kBack},
    {"leaf", 0, -5, "f", "c", "s", 1,
     "\nZET Library Error: Bad argument \n\tin function [s:1]:f(): c\n"
     "ZET Library Error\nErrMode=ZET_ErrModeLeaf\nterminating the application",
     kGone},
    {"leaf backtrace", 0, -1, "f", "", "s", 1,
     "\tcalled from [s:1]:f(): \nZET Library Error\nErrMode=ZET_ErrModeLeaf\nterminating the application", kGone},
};

TEST(Reporters, StreamWritesExactBytes) {
    for (const ReportCase& c : kStreamCases) {
        SCOPED_TRACE(c.what);
        const ChildResult child = runInChild([&] {
            zetSetErrMode(c.mode);
            if (zetStdErrReport(c.status, c.funcName, c.context, c.fileName, c.line) != c.status) std::abort();
        });
        EXPECT_EQ(child.errors, c.bytes);
        EXPECT_EQ(child.output, "");
        EXPECT_EQ(child.exitCode, c.exitCode);
    }
}

TEST(Reporters, StreamTakesTextsOfAnyLength) {
    const std::string longText(100000, 'x');
    const ChildResult child = runInChild([&] {
        zetSetErrMode(ZET_ErrorModeParent);
        zetStdErrReport(-5, longText.c_str(), longText.c_str(), longText.c_str(), 1);
    });
    EXPECT_EQ(child.exitCode, kBack);
    EXPECT_EQ(child.errors, "\nZET Library Error: Bad argument \n\tin function [" + longText + ":1]:" + longText +
                                "(): " + longText + "\n");
}

TEST(Reporters, NullReporterSaysNothingAndEndsInLeafModeOnly) {
    for (const std::int32_t mode : {0, 1, 2, 9}) {
        const ChildResult child = runInChild([&] {
            zetSetErrMode(mode);
            if (zetNulDevReport(-5, "f", "c", "s", 1) != -5) std::abort();
        });
        EXPECT_EQ(child.errors + child.output, "") << mode;
        EXPECT_EQ(child.exitCode, mode == 0 ? kGone : kBack) << mode;
    }
}

TEST(Reporters, StockReportersLeaveTheStatusAlone) {
    EventLog log;
    const Recorder recorder(log, -7);
    zetSetErrMode(ZET_ErrorModeSilent);
    EXPECT_EQ(zetStdErrReport(-5, "f", "c", "s", 1), -5);
    EXPECT_EQ(zetNulDevReport(-5, "f", "c", "s", 1), -5);
    EXPECT_EQ(zetGetErrStatus(), -7);
}

TEST(Reporters, AFreshProcessEndsSilentlyAtItsFirstFailure) {
    const ChildResult child = runInChild([] {
        zetRedirectError(nullptr);
        zetSetErrMode(ZET_ErrorModeLeaf);
        zetPutPixel(nullptr, 0, 0, nullptr);
    });
    EXPECT_EQ(child.errors, "");
    EXPECT_EQ(child.exitCode, kGone);
}

}  // namespace
}  // namespace zetpxl::test
