/* One channel of a picture alone: to change it, and to take it out. */
#include "show.h"

int main(void) {
    tellFailures();
    ZetImage* image = makeImage("RGB", 3, 0, ZET_DEPTH_8U, 3, 2);
    ZetImage* green = makeGrey(3, 2);
    /* guide */
    zetSet(image, 10); /* all three channels */

    ZetROI right = {2, 1, 0, 2, 2}; /* channel 2 of the two right columns */
    image->roi = &right;
    zetSet(image, 200);

    ZetROI whole = {2, 0, 0, 3, 2}; /* one channel in, one channel out */
    image->roi = &whole;
    zetCopy(image, green);
    image->roi = NULL;
    /* end */
    show(image);
    printf("\n");
    show(green);
    releaseImage(image);
    releaseImage(green);
    return endOfExample();
}
