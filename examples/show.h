/* What the examples share: small images, and their samples as text. */
#ifndef ZETPXL_EXAMPLES_SHOW_H
#define ZETPXL_EXAMPLES_SHOW_H

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <zetpxl.h>

/* Failures are told on the error stream, and calls return after them. A thread asks for this itself. */
static inline void tellFailures(void) {
    zetRedirectError(zetStdErrReport);
    zetSetErrMode(ZET_ErrorModeParent);
}

static inline int endOfExample(void) { return zetGetErrStatus() < 0 ? EXIT_FAILURE : EXIT_SUCCESS; }

/* Interleaved samples in one block, all 0. `model` names the channels too: "GRAY", "RGB" or "RGBA". */
static inline ZetImage* makeImage(const char* model, int32_t nChannels, int32_t alphaChannel, uint32_t depth,
                                  int32_t width, int32_t height) {
    const char* sequence = nChannels == 1 ? "G\0\0" : model;
    ZetImage* image = zetCreateImageHeader(nChannels, alphaChannel, depth, model, sequence, 0, 0, 4, width, height,
                                           NULL, NULL, NULL, NULL);
    zetAllocateImage(image, 1, 0);
    if (!image || !image->imageData) exit(EXIT_FAILURE);
    return image;
}

static inline ZetImage* makeGrey(int32_t width, int32_t height) {
    return makeImage("GRAY", 1, 0, ZET_DEPTH_8U, width, height);
}

static inline uint8_t* rowOf(const ZetImage* image, int32_t y) {
    return (uint8_t*)image->imageData + (ptrdiff_t)y * image->widthStep;
}

/* Samples of 8 bits, a row a line; channels of a pixel with commas between. */
static inline void show(const ZetImage* image) {
    for (int32_t y = 0; y < image->height; ++y) {
        const uint8_t* sample = rowOf(image, y);
        for (int32_t x = 0; x < image->width; ++x)
            for (int32_t c = 0; c < image->nChannels; ++c, ++sample)
                printf("%s%*d", c ? "," : x ? " " : "", image->nChannels == 1 ? 3 : 1, *sample);
        printf("\n");
    }
}

static inline void releaseImage(ZetImage* image) { zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA); }

#endif
