// The status word, the one entry of reports, the texts and the version record.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "core/status.h"
#include "tests/support/events.h"

namespace zetpxl::test {
namespace {

using Lines = std::vector<std::string>;

TEST(Status, NegativeAndPositiveAreStoredAndReported) {
    for (const std::int32_t status : {-2, -31, -1000, 1, 7, INT32_MIN, INT32_MAX}) {
        EventLog log;
        const Recorder recorder(log);
        EXPECT_EQ(zetError(status, "f", "c", "s", 9), status);
        EXPECT_EQ(zetGetErrStatus(), status);
        EXPECT_EQ(log.lines, Lines{reportLine(status, "f", "c", "s")});
    }
}

TEST(Status, BacktraceAndAutotraceAreReportedAndNeverStored) {
    for (const std::int32_t status : {-1, -8}) {
        EventLog log;
        const Recorder recorder(log, -5);
        EXPECT_EQ(zetError(status, nullptr, nullptr, nullptr, 1), status);
        EXPECT_EQ(zetGetErrStatus(), -5);
        EXPECT_EQ(log.lines, Lines{reportLine(status, nullptr, nullptr, nullptr)});
    }
}

TEST(Status, ZeroClearsWithoutAReport) {
    EventLog log;
    const Recorder recorder(log, -5);
    EXPECT_EQ(zetError(0, "f", "c", "s", 1), 0);
    EXPECT_EQ(zetGetErrStatus(), 0);
    EXPECT_TRUE(log.lines.empty());
}

TEST(Status, SetStoresAnyValueWithoutAReport) {
    EventLog log;
    const Recorder recorder(log);
    for (const std::int32_t status : {-1, -8, 5, INT32_MIN, 0}) {
        zetSetErrStatus(status);
        EXPECT_EQ(zetGetErrStatus(), status);
    }
    EXPECT_TRUE(log.lines.empty());
}

TEST(Status, ModeTakesAnyValue) {
    EventLog log;
    const Recorder recorder(log);
    EXPECT_EQ(zetGetErrMode(), ZET_ErrorModeParent);
    for (const std::int32_t mode : {2, -7, 99, 1}) {
        zetSetErrMode(mode);
        EXPECT_EQ(zetGetErrMode(), mode);
    }
}

std::int32_t answer77(std::int32_t, const char*, const char*, const char*, std::int32_t) { return 77; }

std::int32_t checkArguments(std::int32_t status, const char* funcName, const char* context, const char* fileName,
                            std::int32_t line) {
    EXPECT_EQ(status, -6);
    EXPECT_STREQ(funcName, "operation");
    EXPECT_EQ(context, nullptr);
    EXPECT_STREQ(fileName, "source");
    EXPECT_EQ(line, -3);
    EXPECT_EQ(zetGetErrStatus(), -6) << "stored before the callback runs";
    return 1;
}

TEST(Status, RedirectGivesTheCallbackBeforeAndItsResultIsTheResult) {
    EventLog log;
    const Recorder recorder(log);
    zetRedirectError(&answer77);
    EXPECT_EQ(zetError(-3, "f", "c", "s", 1), 77);
    EXPECT_EQ(zetRedirectError(&checkArguments), &answer77);
    EXPECT_EQ(zetError(-6, "operation", nullptr, "source", -3), 1);
    EXPECT_EQ(zetRedirectError(nullptr), &checkArguments);
    EXPECT_EQ(zetError(-3, "f", "c", "s", 1), -3);
    EXPECT_EQ(zetRedirectError(nullptr), &zetNulDevReport);
}

TEST(Status, TheRecordIsTheThreadsOwn) {
    EventLog log;
    const Recorder recorder(log, -9);
    EXPECT_EQ(ownGetErrorContext(), ownGetErrorContext());
    EXPECT_EQ(ownGetErrorContext()->status, -9);
    EXPECT_EQ(ownGetErrorContext()->errorMode, ZET_ErrorModeParent);
}

struct StatusText {
    std::int32_t status;
    const char* text;
};

constexpr StatusText kTexts[] = {
    {0, "No Error"},
    {-1, "Backtrace"},
    {-3, "Internal error (bad state)"},
    {-4, "Insufficient memory"},
    {-5, "Bad argument"},
    {-6, "Unsupported function"},
    {-7, "Iteration convergence failed"},
    {-8, "Autotrace call"},
    {-9, "Null pointer to an image header"},
    {-16, "Number of channels for 1U depth image must be one"},
    {-22, "Null pointer to callback function"},
    {-23, "Incorrect size of the tile"},
    {-26, "Mask image is taled"},
    {-27, "Null pointer"},
    {-28, "Incorrect vector length"},
    {-29, "Incorrect filter structure content"},
    {-30, "Incorrect transform kernel content"},
    {-31, "Incorrect filter ofset value"},
};

// Each exists for an image and, with a prefix, for a mask.
constexpr StatusText kImageTexts[] = {
    {-10, "Incorrect image size"},
    {-11, "Incorrect offset of ROI of the image"},
    {-12, "Image must be tiled or must have nonzero data pointer"},
    {-13, "Incorrect widthStep of the image"},
    {-14, "Incorrect Color model or channel sequence of the image"},
    {-15, "Incorrect number of channels in the image"},
    {-17, "Incorrect depth value in the image header"},
    {-18, "Incorrect alpha channel number in the image header"},
    {-19, "Incorrect data order value in the image header"},
    {-20, "Incorrect data origin value in the image header"},
    {-21, "Incorrect data alignment value in the image header"},
    {-24, "Incorrect COI of the image"},
    {-25, "Incorrect size of ROI in the image header"},
};

TEST(Status, EveryStatusHasItsText) {
    std::set<std::int32_t> known;
    for (const StatusText& entry : kTexts) {
        EXPECT_STREQ(zetErrorStr(entry.status), entry.text);
        known.insert(entry.status);
    }
    for (const StatusText& entry : kImageTexts) {
        EXPECT_STREQ(zetErrorStr(entry.status), entry.text);
        EXPECT_EQ(zetErrorStr(entry.status - 100), "Mask. " + std::string(entry.text));
        known.insert({entry.status, entry.status - 100});
    }
    EXPECT_EQ(known.size(), std::size(kTexts) + 2 * std::size(kImageTexts));
    for (std::int32_t status = -400; status < 40; ++status) {
        if (known.count(status)) continue;
        EXPECT_STREQ(zetErrorStr(status), "Unknown error or status code") << status;
    }
    EXPECT_STREQ(zetErrorStr(INT32_MIN), "Unknown error or status code");
    EXPECT_STREQ(zetErrorStr(INT32_MAX), "Unknown error or status code");
}

TEST(Status, VersionRecord) {
    const ZetLibVersion* version = zetGetLibVersion();
    EXPECT_EQ(version, zetGetLibVersion());
    EXPECT_EQ(version->major, 2);
    EXPECT_EQ(version->minor, 5);
    EXPECT_EQ(version->build, 2);
    EXPECT_STREQ(version->libraryName, "zetpxl.lib");
    EXPECT_STREQ(version->versionText, "2.5 Release");
    EXPECT_STREQ(version->buildText, "[2.5.2.82, 09/05/2000]");
    EXPECT_STREQ(version->dateText, "Sep  7 2000");
    EXPECT_STREQ(version->toolText, "Microsoft*");
}

}  // namespace
}  // namespace zetpxl::test
