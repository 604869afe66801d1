// zetpic convert: a picture to another file, right way up.
#include "command.h"
#include "files.h"

namespace zetpic {

int runConvert(const Arguments& arguments) {
    Picture picture;
    Failure failure = readPicture(arguments.files[0], &picture);
    if (failure.empty()) failure = writePicture(arguments.files[1], *picture.image);
    return failure.empty() ? kOk : fail(failure);
}

}  // namespace zetpic
