// Picture files: BMP, PNG and TIFF, told apart by their first bytes when read and by their ending when written.
#pragma once

#include <string>
#include <vector>

#include "picture.h"

namespace zetpic {

using Bytes = std::vector<std::uint8_t>;

Failure readPicture(const std::string& path, Picture* picture);
Failure writePicture(const std::string& path, const ZetImage& image);

bool hasPictureEnding(const std::string& path);
bool hasTiffEnding(const std::string& path);

Failure decodeBmp(const Bytes& file, Picture* picture);
Failure decodePng(const Bytes& file, Picture* picture);
Failure encodeBmp(const ZetImage& image, Bytes* file);
Failure encodePng(const ZetImage& image, Bytes* file);

}  // namespace zetpic
