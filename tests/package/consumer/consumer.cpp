// The same program in C++, its image made by a DIB.
#include <zetpxl.h>

#include <cstdio>
#include <memory>

int main() {
    zetRedirectError(zetStdErrReport);
    zetSetErrMode(ZET_ErrorModeParent);
    struct {
        BITMAPINFOHEADER header;
        unsigned char pixels[8];
    } dib = {{40, 1, 2, 1, 24, 0, 0, 0, 0, 0, 0}, {}};
    const auto release = [](ZetImage* image) { zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA); };
    int32_t cloneData = -1;
    const std::unique_ptr<ZetImage, decltype(release)> image(zetTranslateDIB(&dib.header, &cloneData), release);
    if (!image || cloneData != 0) return 1;
    const unsigned char pixel[3] = {7, 8, 9};
    zetPutPixel(image.get(), 0, 1, pixel);
    const ZetLibVersion& version = *zetGetLibVersion();
    std::printf("zetpxl %d.%d.%d, pixel %d\n", version.major, version.minor, version.build, dib.pixels[0]);
}
