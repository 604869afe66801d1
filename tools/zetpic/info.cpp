// zetpic info: the image record in words.
#include <cstdio>
#include <cstring>

#include "command.h"
#include "files.h"

namespace zetpic {
namespace {

std::string word(const char (&name)[4]) { return {name, strnlen(name, sizeof name)}; }

std::string depthText(std::uint32_t depth) {
    const std::string bits = std::to_string(depth & ~ZET_DEPTH_SIGN) + (depth == ZET_DEPTH_1U ? " bit" : " bits");
    return bits +
           (depth == ZET_DEPTH_32F          ? " float"
            : (depth & ZET_DEPTH_SIGN) != 0 ? " signed"
                                            : " unsigned") +
           " (" + depthName(depth) + ")";
}

void line(const char* name, const std::string& text) { std::printf("%-12s%s\n", name, text.c_str()); }

}  // namespace

int runInfo(const Arguments& arguments) {
    Picture picture;
    const Failure failure = readPicture(arguments.files[0], &picture);
    if (!failure.empty()) return fail(failure);
    const ZetImage& image = *picture.image;
    const auto number = [](std::int64_t value) { return std::to_string(value); };
    line("size", number(image.width) + " x " + number(image.height) + " pixels");
    line("depth", depthText(image.depth));
    line("channels", number(image.nChannels) + ", in the order " + word(image.channelSeq) + " (colour model " +
                         word(image.colorModel) + ")");
    line("alpha", image.alphaChannel == 0 ? "none" : "channel " + number(image.alphaChannel));
    line("order", image.dataOrder == 0 ? "pixel-interleaved" : "planar");
    line("origin", number(image.origin) + (image.origin == 0 ? ": the first row in memory is the top row"
                                                             : ": the first row in memory is the bottom row"));
    line("row step", number(image.widthStep) + " bytes, aligned to " + number(image.align));
    line("data", number(image.imageSize) + " bytes, " +
                     (image.imageDataBase ? "the image's own" : "shared with the DIB in memory"));
    return kOk;
}

}  // namespace zetpic
