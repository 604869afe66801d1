/* A picture of 20 by 12 pixels in tiles of 8 by 8, which lie one behind the other in one array. */
#include "show.h"

/* guide */
enum { kSide = 8, kAcross = 3, kDown = 2 };

static uint8_t tiles[kDown][kAcross][kSide][kSide]; /* whole tiles, also at the right and bottom edge */

static void serve(ZetImage* image, int32_t xIndex, int32_t yIndex, int32_t mode) {
    static const char* const names[] = {"", "read", "write", "", "release"};
    printf("%s (%d, %d)\n", names[mode], (int)xIndex, (int)yIndex);
    if (mode == ZET_TILE_RELEASE) return; /* here a program would write back or forget */
    image->tileInfo->tileData = tiles[yIndex][xIndex];
}

static void fillPart(void) {
    ZetTileInfo tileInfo = {serve, NULL, NULL, kSide, kSide};
    ZetROI part = {0, 6, 5, 6, 2}; /* across the corner of two tiles, in the upper row of tiles */
    ZetImage* image =
        zetCreateImageHeader(1, 0, ZET_DEPTH_8U, "GRAY", "G\0\0", 0, 0, 4, 20, 12, &part, NULL, NULL, &tileInfo);
    zetSet(image, 5);
    zetDeallocate(image, ZET_IMAGE_HEADER);
}
/* end */

int main(void) {
    tellFailures();
    fillPart();
    printf("row 5, columns 4 to 11:");
    for (int x = 4; x < 12; ++x) printf(" %d", tiles[0][x / kSide][5][x % kSide]);
    printf("\n");
    return endOfExample();
}
