#include "command.h"

namespace zetpic {

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"info", "FILE", "say what image record a file becomes",
         "Prints size, depth, channels, order, origin, row step and data of the image that the library sees.", 0,
         runInfo},
        {"convert", "IN OUT", "write a picture to another file, right way up",
         "OUT becomes a PNG or a BMP file, by its ending. PNG holds 1, 8 and 16 bits a sample, BMP 1 and 8.", 0,
         runConvert},
        {"mark", "IN OUT", "draw a frame and a cross of single pixels",
         "The frame goes round the edge and the cross from corner to corner, in red, or white where there is no "
         "colour.",
         kTile, runMark},
    };
    return table;
}

}  // namespace zetpic
