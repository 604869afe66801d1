// The shared library as a program meets it: loaded and unloaded at run time, exported names only.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <future>
#include <thread>

#include "tests/support/child.h"
#include "zetpxl.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace zetpxl::test {
namespace {

class Library {
  public:
    Library() : handle_(dlopen(ZETPXL_SHARED_FILE, RTLD_NOW | RTLD_LOCAL)) {}
    ~Library() { close(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    bool loaded() const { return handle_ != nullptr; }
    void close() {
        if (handle_) dlclose(handle_);
        handle_ = nullptr;
    }

    template <class Function>
    Function* find(Function*, const char* name) const {
        return reinterpret_cast<Function*>(dlsym(handle_, name));
    }

  private:
    void* handle_;
};

#define FIND(library, name) (library).find(static_cast<decltype(&::name)>(nullptr), #name)

// Gone from memory, or the next load would not be a fresh one.
bool stillLoaded() {
    void* handle = dlopen(ZETPXL_SHARED_FILE, RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
}

TEST(SharedLibrary, InternalNamesAreHidden) {
    const Library library;
    ASSERT_TRUE(library.loaded());
    EXPECT_NE(FIND(library, zetPutPixel), nullptr);
    for (const char* name : {"zetOr", "zetAnd", "zetXorS", "ownCheckImage", "ownAlloc", "ownGetErrorContext"})
        EXPECT_EQ(library.find(static_cast<void (*)()>(nullptr), name), nullptr) << name;
}

// Each load takes one of the process's few slots and must give it back.
TEST(SharedLibrary, LoadsAndUnloadsAgainAndAgain) {
    for (std::int32_t i = 0; i < 1500; ++i) {
        Library library;
        ASSERT_TRUE(library.loaded()) << i;
        ASSERT_EQ(FIND(library, zetGetErrStatus)(), 0) << i;
        ASSERT_EQ(FIND(library, zetGetErrMode)(), ZET_ErrorModeLeaf) << i;
        FIND(library, zetSetErrStatus)(-5);
        FIND(library, zetSetErrMode)(ZET_ErrorModeSilent);
        library.close();
        ASSERT_FALSE(stillLoaded());
    }
}

TEST(SharedLibrary, ThreadsThatRanBeforeTheLoadHaveARecord) {
    std::promise<void (*)(std::int32_t)> setter;
    std::promise<std::int32_t (*)()> getter;
    std::int32_t before = -1;
    std::thread thread([&] {
        auto* get = getter.get_future().get();
        before = get();
        setter.get_future().get()(-9);
    });
    const Library library;
    getter.set_value(FIND(library, zetGetErrStatus));
    setter.set_value(FIND(library, zetSetErrStatus));
    thread.join();
    EXPECT_EQ(before, 0);
    EXPECT_EQ(FIND(library, zetGetErrStatus)(), 0);
}

// The slot is gone with the library, so nothing of it runs when the thread ends.
TEST(SharedLibrary, AThreadMayOutliveTheLibrary) {
    std::promise<void> used;
    std::promise<void> unloaded;
    Library library;
    auto* setStatus = FIND(library, zetSetErrStatus);
    std::thread thread([&] {
#if defined(__SANITIZE_ADDRESS__)
        const __lsan::ScopedDisabler leftToTheProcess;
#endif
        setStatus(-5);
        used.set_value();
        unloaded.get_future().wait();
    });
    used.get_future().wait();
    library.close();
    ASSERT_FALSE(stillLoaded());
    unloaded.set_value();
    thread.join();
}

void askThroughBox(std::int32_t mode, std::int32_t expected) {
    const Library library;
    FIND(library, zetSetErrMode)(mode);
    if (FIND(library, zetGuiBoxReport)(-5, "f", "c", "s", 1) != expected) std::abort();
}

TEST(SharedLibrary, WithoutATerminalTheBoxIsTextAndTheAnswerIsToGoOn) {
    for (const std::int32_t mode : {ZET_ErrorModeParent, ZET_ErrorModeLeaf}) {
        const ChildResult child = runInChild([mode] {
            setsid();
            askThroughBox(mode, -5);
        });
        EXPECT_EQ(child.exitCode, kChildReturned);
        EXPECT_NE(child.errors.find("In function f(): [file s, line 1]\nc\n\nBad argument\n(status: -5)"),
                  std::string::npos);
        EXPECT_NE(child.errors.find("ZET 2.5 Release"), std::string::npos);
    }
}

// In a session of its own whose terminal is one end of a pair; `keys` are typed at the other end.
void askAtTerminal(std::int32_t mode, const char* keys) {
    const int keyboard = posix_openpt(O_RDWR | O_NOCTTY);
    if (keyboard < 0 || grantpt(keyboard) != 0 || unlockpt(keyboard) != 0) std::abort();
    setsid();
    const int terminal = open(ptsname(keyboard), O_RDWR);
    if (terminal < 0 || ioctl(terminal, TIOCSCTTY, 0) != 0) std::abort();
    if (write(keyboard, keys, std::strlen(keys)) < 0) std::abort();
    askThroughBox(mode, -5);
}

TEST(SharedLibrary, AtATerminalThePersonDecides) {
    struct Case {
        std::int32_t mode;
        const char* keys;
        int exitCode;
    };
    constexpr Case kCases[] = {{ZET_ErrorModeParent, "\n", kChildReturned},
                               {ZET_ErrorModeParent, "o\n", kChildReturned},
                               {ZET_ErrorModeParent, "c\n\n", 1},
                               {ZET_ErrorModeLeaf, "n\n", kChildReturned},
                               {ZET_ErrorModeLeaf, "Y\n\n", 1}};
    for (const Case& c : kCases) {
        const ChildResult child = runInChild([&c] { askAtTerminal(c.mode, c.keys); });
        EXPECT_EQ(child.exitCode, c.exitCode) << c.mode << " " << c.keys;
        EXPECT_EQ(child.errors, "");
    }
}

}  // namespace
}  // namespace zetpxl::test
