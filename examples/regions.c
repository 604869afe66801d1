/* Work on a part of a picture, and move a part to another place. */
#include "show.h"

int main(void) {
    tellFailures();
    ZetImage* image = makeGrey(8, 5);
    ZetImage* other = makeGrey(8, 5);
    /* guide */
    ZetROI part = {0, 1, 1, 3, 2}; /* all channels; column 1, row 1; 3 columns, 2 rows */
    image->roi = &part;
    zetSet(image, 9);

    ZetROI place = {0, 6, 3, 100, 100}; /* cut at the right and bottom edge: 2 columns, 2 rows */
    other->roi = &place;
    zetCopy(image, other); /* the smaller of the two regions counts */

    image->roi = other->roi = NULL; /* before the regions go out of scope */
    /* end */
    show(image);
    printf("\n");
    show(other);
    releaseImage(image);
    releaseImage(other);
    return endOfExample();
}
