/* A picture that the program holds itself, described by a record. */
#include "show.h"

int main(void) {
    tellFailures();
    /* guide */
    static uint8_t pixels[3 * 16]; /* 3 rows of 5 pixels of red, green and blue, padded to a multiple of 4 bytes */
    ZetImage* image = zetCreateImageHeader(3, 0, ZET_DEPTH_8U, "RGB", "RGB", 0, 0, 4, 5, 3, NULL, NULL, NULL, NULL);
    if (!image) return EXIT_FAILURE;
    image->imageData = pixels;
    printf("a row takes %d bytes, the picture %d\n", (int)image->widthStep, (int)image->imageSize);

    const uint8_t orange[3] = {255, 160, 0};
    zetPutPixel(image, 4, 2, orange);
    const uint8_t* green = pixels + 2 * image->widthStep + (4 * image->nChannels + 1);
    printf("pixel (4, 2), channel 1: %d\n", *green);

    zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA); /* leaves pixels that are not the library's alone */
    /* end */
    return endOfExample();
}
