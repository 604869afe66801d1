#include "tests/support/child.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace zetpxl::test {
namespace {

std::string contentOf(std::FILE* file) {
    std::string text;
    std::rewind(file);
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) text.push_back(static_cast<char>(c));
    std::fclose(file);
    return text;
}

}  // namespace

ChildResult runInChild(const std::function<void()>& body) {
    std::FILE* errors = std::tmpfile();
    std::FILE* output = std::tmpfile();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(fileno(errors), STDERR_FILENO);
        dup2(fileno(output), STDOUT_FILENO);
        body();
        std::fflush(nullptr);
        _exit(kChildReturned);
    }
    int state = 0;
    waitpid(child, &state, 0);
    return {contentOf(errors), contentOf(output), WIFEXITED(state) ? WEXITSTATUS(state) : -1};
}

}  // namespace zetpxl::test
