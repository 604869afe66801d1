// Programs run on files of a folder that lasts as long as a test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/child.h"

namespace zetpxl::test {

using Bytes = std::vector<std::uint8_t>;

class Folder {
  public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string file(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

Bytes load(const std::string& path);
void save(const std::string& path, const Bytes& bytes);

// Words are separated by blanks; no word holds one.
ChildResult run(const std::string& program, const std::string& words);
ChildResult zetpic(const std::string& words);
void magick(const std::string& words);

// What ImageMagick reads: red, green, blue, alpha of `bits` bits, row by row.
Bytes magickPixels(const std::string& path, int bits = 8);

// The same file through zetpic.
Bytes zetpicPixels(const Folder& folder, const std::string& path, int bits = 8);

}  // namespace zetpxl::test
