/* How failures show: a callback of the program's own, the status that stays, the status of a mask. */
#include "show.h"

/* guide */
static int32_t tell(int32_t status, const char* funcName, const char* context, const char* fileName, int32_t line) {
    (void)fileName, (void)line; /* of the library's source */
    printf("%s, %s: \"%s\"\n", funcName, zetErrorStr(status), context);
    return status;
}

static void failOnPurpose(ZetImage* image, ZetImage* greyAsMask) {
    const uint8_t value = 1;
    zetRedirectError(tell);            /* for this thread: the callback decides what a failure does */
    zetPutPixel(image, 99, 0, &value); /* outside: reported, nothing written */
    zetPutPixel(image, 0, 0, &value);  /* done, and the old status stays */
    printf("status %d\n", (int)zetGetErrStatus());

    zetSetErrStatus(ZET_StatusOk); /* else several operations would stop at once */
    image->maskImage = greyAsMask; /* a mask has 1 bit a pixel; this one has 8 */
    zetSet(image, 3);
    printf("status %d: %d - 100\n", (int)zetGetErrStatus(), ZET_StatusBadDepth);
    image->maskImage = NULL;
    zetSetErrStatus(ZET_StatusOk);
}
/* end */

int main(void) {
    ZetImage* image = makeGrey(4, 4);
    ZetImage* grey = makeGrey(4, 4);
    failOnPurpose(image, grey);
    releaseImage(image);
    releaseImage(grey);
    return endOfExample();
}
