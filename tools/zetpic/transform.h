// What commands share: pictures read right way up, the run of an operation and the writing of its result.
#pragma once

#include <functional>

#include "canvas.h"
#include "command.h"
#include "files.h"

namespace zetpic {

// Reads a picture as interleaved rows from top to bottom, so that pictures of all formats fit together.
Failure readUpright(const std::string& path, Picture* picture);

// An image of the same channels and depth, all bits 0.
Image makeLike(const ZetImage& image, std::int32_t width, std::int32_t height);

// A picture in memory or, with tiles asked for, a TIFF file in tiles that is read or written one by one.
Failure openSheet(const std::string& path, const Options& options, Sheet* sheet);
Failure makeSheet(const Arguments& arguments, const ZetImage& form, std::int32_t width, std::int32_t height,
                  Sheet* sheet);

// All of a picture to one of the same size.
Failure copySheet(const Sheet& source, const Sheet& result);

// Writes the result, unless an operation or a file failed.
int finish(const Arguments& arguments, const ZetImage& result);
int finish(const Arguments& arguments, const Sheet& source, const Sheet& result);

enum class Start { kSource, kBlank };

// IN OUT: runs an operation on the two images, both with the region and the tiles of the command line, the source with
// its borders and the result with its mask. The result starts as a copy of the source or blank.
using Operation = std::function<void(ZetImage* source, ZetImage* result)>;
int transform(const Arguments& arguments, Start start, const Operation& operation);

}  // namespace zetpic
