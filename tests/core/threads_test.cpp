// Each thread has its own status, mode and callback, however it was started, and takes them along when it ends.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <thread>
#include <vector>

#include "core/status.h"
#include "tests/support/allocations.h"
#include "tests/support/child.h"
#include "tests/support/events.h"

namespace zetpxl::test {
namespace {

TEST(ThreadsStatus, ANewThreadInheritsNothing) {
    EventLog log;
    const Recorder recorder(log, -5);
    std::thread([] {
        EXPECT_EQ(zetGetErrStatus(), 0);
        EXPECT_EQ(zetGetErrMode(), ZET_ErrorModeLeaf);
        EXPECT_EQ(zetRedirectError(nullptr), &zetNulDevReport);
        zetSetErrMode(ZET_ErrorModeSilent);
        zetSetErrStatus(-31);
    }).join();
    EXPECT_EQ(zetGetErrStatus(), -5);
    EXPECT_EQ(zetGetErrMode(), ZET_ErrorModeParent);
}

void hammer(std::int32_t own, std::atomic<std::int32_t>& wrong) {
    EventLog log;
    const Recorder recorder(log);
    for (std::int32_t i = 1; i <= 500; ++i) {
        zetError(-own - i, "f", "c", "s", 1);
        if (zetGetErrStatus() != -own - i) ++wrong;
        ZetImage* image =
            zetCreateImageHeader(1, 0, ZET_DEPTH_8U, "GRAY", "G   ", 0, 0, 4, 8, 8, nullptr, nullptr, nullptr, nullptr);
        zetAllocateImage(image, 1, own);
        zetPutPixel(image, 9, 9, &own);
        if (zetGetErrStatus() != ZET_StatusBadArgument) ++wrong;
        zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
    }
    if (log.lines.size() != 1000) ++wrong;
}

TEST(ThreadsStatus, ThreadsDoNotSeeEachOther) {
    std::atomic<std::int32_t> wrong = 0;
    std::vector<std::thread> threads;
    for (std::int32_t i = 0; i < 4; ++i) threads.emplace_back([i, &wrong] { hammer(1000 * (i + 1), wrong); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

void* storeStatus(void* word) {
    zetSetErrStatus(-4);
    *static_cast<std::int32_t*>(word) = zetGetErrStatus();
    return nullptr;
}

TEST(ThreadsStatus, AThreadOfThePlatformHasItsRecordToo) {
    for (std::int32_t i = 0; i < 200; ++i) {
        std::int32_t word = 0;
        pthread_t thread{};
        ASSERT_EQ(pthread_create(&thread, nullptr, &storeStatus, &word), 0);
        pthread_join(thread, nullptr);
        EXPECT_EQ(word, -4);
    }
}

void* askWithoutMemory(void*) {
    const AllocationWatch watch(1);
    zetGetErrStatus();
    return nullptr;
}

TEST(ThreadsStatus, AThreadThatCannotHaveARecordEndsTheProcess) {
    const ChildResult child = runInChild([] {
        pthread_t thread{};
        pthread_create(&thread, nullptr, &askWithoutMemory, nullptr);
        pthread_join(thread, nullptr);
    });
    EXPECT_NE(child.errors.find("Problem to allocate memory for TLS ZET context."), std::string::npos);
    EXPECT_EQ(child.exitCode, 1);
}

struct LateUse {
    ~LateUse() { zetSetErrStatus(-6); }
};

// What still runs while a thread ends may call the library again.
TEST(ThreadsStatus, UseWhileAThreadEnds) {
    std::thread([] {
        thread_local LateUse late;
        static_cast<void>(&late);
        zetSetErrStatus(-5);
    }).join();
}

}  // namespace
}  // namespace zetpxl::test
