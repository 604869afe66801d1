/* A picture far larger than memory: mapped FOLDER WIDTH HEIGHT draws one into FOLDER/source.tiles, blurs it into
 * FOLDER/result.tiles and says how much memory it took. A file holds one tile behind the other, so that a tile is a part
 * of the file that can be mapped by itself. Pictures of up to 16 million pixels are blurred in one block too, and the
 * results compared. */
#define _DEFAULT_SOURCE
#define _FILE_OFFSET_BITS 64
#include <fcntl.h>
#include <stdbool.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "show.h"

enum { kSide = 256, kTileBytes = kSide * kSide, kMostHeld = 64, kMostCompared = 1 << 24 };

/* guide */
/* A picture in a file, and the tiles of it that the library holds now. */
typedef struct MappedPicture {
    int file;
    int32_t tilesAcross;
    int64_t requests, wanted; /* of tiles to write */
    struct {
        int32_t xIndex, yIndex;
        void* address;
    } held[kMostHeld];
    int32_t heldCount;
} MappedPicture;

static void* mapTile(const MappedPicture* picture, int32_t xIndex, int32_t yIndex) {
    const off_t at = ((off_t)yIndex * picture->tilesAcross + xIndex) * kTileBytes;
    void* address = mmap(NULL, kTileBytes, PROT_READ | PROT_WRITE, MAP_SHARED, picture->file, at);
    return address == MAP_FAILED ? NULL : address;
}

static void releaseTile(MappedPicture* picture, int32_t xIndex, int32_t yIndex) {
    for (int32_t i = picture->heldCount - 1; i >= 0; --i) {
        if (picture->held[i].xIndex != xIndex || picture->held[i].yIndex != yIndex) continue;
        munmap(picture->held[i].address, kTileBytes);
        picture->held[i] = picture->held[--picture->heldCount];
        return;
    }
}

/* One line on a terminal, written again at each whole percent; `wanted` is one request for each tile. */
static void showProgress(MappedPicture* picture) {
    const int before = (int)(100 * picture->requests / picture->wanted);
    const int now = (int)(100 * ++picture->requests / picture->wanted);
    if (now != before && isatty(STDERR_FILENO)) fprintf(stderr, "\r%3d %%%s", now, now < 100 ? "" : "\n");
}

static void serveTile(ZetImage* image, int32_t xIndex, int32_t yIndex, int32_t mode) {
    MappedPicture* picture = image->tileInfo->id;
    if (mode == ZET_TILE_RELEASE) {
        releaseTile(picture, xIndex, yIndex);
        return;
    }
    image->tileInfo->tileData = NULL; /* what stays null has failed: the operation reports it and ends */
    if (picture->heldCount == kMostHeld) return;
    void* address = mapTile(picture, xIndex, yIndex);
    if (!address) return;
    picture->held[picture->heldCount].xIndex = xIndex;
    picture->held[picture->heldCount].yIndex = yIndex;
    picture->held[picture->heldCount++].address = address;
    image->tileInfo->tileData = address;
    if (mode == ZET_TILE_WRITE) showProgress(picture);
}
/* end */

static uint8_t drawn(int32_t x, int32_t y) { return (uint8_t)((x / 3 ^ y / 5) + (x * 7 + y * 11) % 64); }

static bool openPicture(MappedPicture* picture, const char* folder, const char* name, int32_t tilesAcross,
                        int32_t tilesDown) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", folder, name);
    memset(picture, 0, sizeof *picture);
    picture->tilesAcross = tilesAcross;
    picture->file = open(path, O_RDWR | O_CREAT | O_TRUNC, 0644);
    return picture->file >= 0 && ftruncate(picture->file, (off_t)tilesAcross * tilesDown * kTileBytes) == 0;
}

static bool drawPicture(const MappedPicture* picture, int32_t tilesDown) {
    for (int32_t tile = 0; tile < picture->tilesAcross * tilesDown; ++tile) {
        const int32_t xIndex = tile % picture->tilesAcross, yIndex = tile / picture->tilesAcross;
        uint8_t* pixel = mapTile(picture, xIndex, yIndex);
        if (!pixel) return false;
        for (int32_t i = 0; i < kTileBytes; ++i)
            pixel[i] = drawn(xIndex * kSide + i % kSide, yIndex * kSide + i / kSide);
        munmap(pixel, kTileBytes);
    }
    return true;
}

static ZetImage* describe(ZetTileInfo* tileInfo, int32_t width, int32_t height) {
    ZetImage* image =
        zetCreateImageHeader(1, 0, ZET_DEPTH_8U, "GRAY", "G\0\0", 0, 0, 4, width, height, NULL, NULL, NULL, tileInfo);
    if (!image) exit(EXIT_FAILURE);
    zetSetBorderMode(image, ZET_BORDER_REPLICATE, 15, 0);
    return image;
}

static void blurTiles(MappedPicture* from, MappedPicture* to, int32_t width, int32_t height) {
    ZetTileInfo fromTiles = {serveTile, from, NULL, kSide, kSide};
    ZetTileInfo toTiles = {serveTile, to, NULL, kSide, kSide};
    ZetImage* source = describe(&fromTiles, width, height);
    ZetImage* result = describe(&toTiles, width, height);
    zetBlur(source, result, 9, 9, 4, 4);
    zetDeallocate(source, ZET_IMAGE_HEADER);
    zetDeallocate(result, ZET_IMAGE_HEADER);
}

/* The same picture in one block, blurred in one block. */
static ZetImage* blurBlock(int32_t width, int32_t height) {
    ZetImage* source = makeGrey(width, height);
    ZetImage* result = makeGrey(width, height);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) rowOf(source, y)[x] = drawn(x, y);
    zetSetBorderMode(source, ZET_BORDER_REPLICATE, 15, 0);
    zetBlur(source, result, 9, 9, 4, 4);
    releaseImage(source);
    return result;
}

static int64_t differences(const MappedPicture* picture, const ZetImage* block, int32_t tilesDown) {
    int64_t count = 0;
    for (int32_t tile = 0; tile < picture->tilesAcross * tilesDown; ++tile) {
        const int32_t left = tile % picture->tilesAcross * kSide, top = tile / picture->tilesAcross * kSide;
        uint8_t* pixel = mapTile(picture, left / kSide, top / kSide);
        if (!pixel) return -1;
        for (int32_t i = 0; i < kTileBytes; ++i) {
            const int32_t x = left + i % kSide, y = top + i / kSide;
            if (x < block->width && y < block->height) count += rowOf(block, y)[x] != pixel[i];
        }
        munmap(pixel, kTileBytes);
    }
    return count;
}

/* The most memory that the process has held at a time, pages of mapped files included. */
static int peakMegabytes(void) {
    char line[256];
    int kilobytes = 0;
    FILE* status = fopen("/proc/self/status", "r");
    while (status && fgets(line, sizeof line, status)) sscanf(line, "VmHWM: %d", &kilobytes);
    if (status) fclose(status);
    return kilobytes / 1024;
}

int main(int argc, char** argv) {
    if (argc != 4 || atoi(argv[2]) < 1 || atoi(argv[3]) < 1) {
        fprintf(stderr, "usage: mapped FOLDER WIDTH HEIGHT\n");
        return 2;
    }
    tellFailures();
    const int32_t width = atoi(argv[2]), height = atoi(argv[3]);
    const int32_t tilesAcross = (width - 1) / kSide + 1, tilesDown = (height - 1) / kSide + 1;
    MappedPicture from, to;
    if (!openPicture(&from, argv[1], "source.tiles", tilesAcross, tilesDown) ||
        !openPicture(&to, argv[1], "result.tiles", tilesAcross, tilesDown) || !drawPicture(&from, tilesDown)) {
        perror(argv[1]);
        return EXIT_FAILURE;
    }
    to.wanted = (int64_t)tilesAcross * tilesDown;
    blurTiles(&from, &to, width, height);
    printf("blurred %lld pixels, %lld requests to write\n", (long long)width * height, (long long)to.requests);
    fprintf(stderr, "peak memory: %d MB\n", peakMegabytes());
    if ((int64_t)width * height > kMostCompared) return endOfExample();

    ZetImage* block = blurBlock(width, height);
    const int64_t different = differences(&to, block, tilesDown);
    printf("%lld pixels differ from those of one block\n", (long long)different);
    releaseImage(block);
    return different == 0 ? endOfExample() : EXIT_FAILURE;
}
