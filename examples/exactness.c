/* One picture through noise, a blur, a turn and a change of colours: its samples come out the same everywhere. */
#include "show.h"

/* FNV-1a over the samples, without the padding of the rows. */
static unsigned checksum(const ZetImage* image) {
    unsigned sum = 2166136261u;
    for (int32_t y = 0; y < image->height; ++y)
        for (int32_t i = 0; i < image->width * image->nChannels; ++i) sum = (sum ^ rowOf(image, y)[i]) * 16777619u;
    return sum & 0xFFFFFFFFu;
}

int main(void) {
    tellFailures();
    ZetImage* image = makeImage("RGB", 3, 0, ZET_DEPTH_8U, 257, 129);
    ZetImage* result = makeImage("RGB", 3, 0, ZET_DEPTH_8U, 257, 129);
    /* guide */
    ZetNoiseParam noise = {0};
    zetNoiseGaussianInit(&noise, 1, 0, 40); /* seed, mean, standard deviation */
    zetSet(image, 128);
    zetNoiseImage(image, &noise);
    printf("noise  %08x\n", checksum(image));
    zetBlur(image, result, 5, 5, 2, 2);
    printf("blur   %08x\n", checksum(result));
    zetRotate(image, result, 33.3, 20, 50, ZET_INTER_CUBIC);
    printf("turn   %08x\n", checksum(result));
    zetRGB2HLS(image, result);
    printf("colour %08x\n", checksum(result));
    /* end */
    releaseImage(image);
    releaseImage(result);
    return endOfExample();
}
