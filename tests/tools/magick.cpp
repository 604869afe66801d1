#include "tests/tools/magick.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace zetpxl::test {

Folder::Folder() {
    char name[] = "/tmp/zetpic-test-XXXXXX";
    path_ = mkdtemp(name);
}

Folder::~Folder() { std::filesystem::remove_all(path_); }

Bytes load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void save(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

ChildResult run(const std::string& program, const std::string& words) {
    std::vector<std::string> parts = {program};
    std::istringstream stream(words);
    for (std::string word; stream >> word;) parts.push_back(word);
    std::vector<char*> arguments;
    for (std::string& part : parts) arguments.push_back(part.data());
    arguments.push_back(nullptr);
    return runInChild([&] { execv(program.c_str(), arguments.data()); });
}

ChildResult zetpic(const std::string& words) { return run(ZETPIC_PROGRAM, words); }

void magick(const std::string& words) {
    ASSERT_STRNE(MAGICK_PROGRAM, "") << "ImageMagick was not found when the build tree was made";
    const ChildResult result = run(MAGICK_PROGRAM, words);
    ASSERT_EQ(result.exitCode, 0) << words << "\n" << result.errors;
}

Bytes magickPixels(const std::string& path, int bits) {
    const std::string raw = path + ".rgba";
    magick(path + " -depth " + std::to_string(bits) + " rgba:" + raw);
    return load(raw);
}

Bytes zetpicPixels(const Folder& folder, const std::string& path, int bits) {
    const std::string png = folder.file("decoded.png");
    const ChildResult result = zetpic("convert " + path + " " + png);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    return magickPixels(png, bits);
}

}  // namespace zetpxl::test
