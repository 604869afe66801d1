/* Operations leave alpha alone until they are asked for it. */
#include "show.h"

int main(void) {
    tellFailures();
    ZetImage* image = makeImage("RGBA", 4, 4, ZET_DEPTH_8U, 2, 2);
    /* guide */
    zetSet(image, 90); /* red, green and blue */

    ZetROI alpha = {4, 0, 0, 1, 2}; /* channel 4 of the left column */
    image->roi = &alpha;
    zetSet(image, 255);
    image->roi = NULL;

    const uint8_t clear[4] = {1, 2, 3, 0};
    zetPutPixel(image, 1, 1, clear); /* a pixel has all its channels */
    /* end */
    show(image);
    releaseImage(image);
    return endOfExample();
}
