/* A program of a stranger: makes an image, writes a pixel, reads it back. */
#include <stdio.h>
#include <zetpxl.h>

int main(void) {
    zetRedirectError(zetStdErrReport);
    zetSetErrMode(ZET_ErrorModeParent);
    const ZetLibVersion* version = zetGetLibVersion();
    ZetImage* image = zetCreateImageHeader(1, 0, ZET_DEPTH_8U, "GRAY", "G\0\0", 0, 0, 4, 5, 4, NULL, NULL, NULL, NULL);
    zetAllocateImage(image, 1, 0);
    if (zetGetErrStatus() < 0) return 1;
    const unsigned char seven = 7;
    zetPutPixel(image, 2, 3, &seven);
    printf("zetpxl %d.%d.%d, pixel %d\n", (int)version->major, (int)version->minor, (int)version->build,
           ((unsigned char*)image->imageData)[3 * image->widthStep + 2]);
    zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA);
    return 0;
}
