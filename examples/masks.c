/* Only the pixels whose bit is set. */
#include "show.h"

int main(void) {
    tellFailures();
    ZetImage* image = makeGrey(8, 4);
    /* guide */
    ZetImage* mask = makeImage("GRAY", 1, 0, ZET_DEPTH_1U, 8, 4);
    for (int32_t y = 0; y < 4; ++y) *rowOf(mask, y) = (uint8_t)(0xE0 >> y); /* three set bits, further right each row */

    image->maskImage = mask;
    zetSet(image, 7);

    ZetROI part = {0, 0, 2, 8, 2};
    ZetROI same = part;
    image->roi = &part;
    mask->roi = &same; /* else the mask's own row 0 would belong to row 2 of the picture */
    zetSet(image, 9);
    image->maskImage = NULL;
    image->roi = mask->roi = NULL;
    /* end */
    show(image);
    releaseImage(mask);
    releaseImage(image);
    return endOfExample();
}
