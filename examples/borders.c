/* What a filter finds beside the picture: a row of four letters and the two samples that each border mode gives it on
 * either side. */
#include <string.h>

#include "show.h"

/* result(x) = row(x + by), for `by` of -2 or 2. */
static void shift(ZetImage* row, ZetImage* result, int32_t by) {
    const int32_t weights[3] = {by > 0, 0, by < 0}; /* weight c counts for the source pixel x + anchor - c */
    ZetConvKernel* kernel = zetCreateConvKernel(3, 1, by > 0 ? 2 : 0, 0, weights, 0);
    const ZetConvKernel* const kernels[1] = {kernel};
    zetConvolve2D(row, result, kernels, 1, ZET_COMBINE_SUM);
    zetDeleteConvKernel(kernel);
}

static void showBorder(ZetImage* row, ZetImage* result, const char* name) {
    char left[3] = "", right[3] = "";
    shift(row, result, -2);
    memcpy(left, rowOf(result, 0), 2);
    shift(row, result, 2);
    memcpy(right, rowOf(result, 0) + 2, 2);
    printf("%-10s %s|%.4s|%s\n", name, left, (const char*)rowOf(row, 0), right);
}

int main(void) {
    tellFailures();
    ZetImage* row = makeGrey(4, 1);
    ZetImage* result = makeGrey(4, 1);
    memcpy(rowOf(row, 0), "abcd", 4);
    /* guide */
    zetSetBorderMode(row, ZET_BORDER_CONSTANT, ZET_SIDE_LEFT | ZET_SIDE_RIGHT, 'k');
    showBorder(row, result, "constant");
    zetSetBorderMode(row, ZET_BORDER_REPLICATE, ZET_SIDE_LEFT | ZET_SIDE_RIGHT, 0);
    showBorder(row, result, "replicate");
    zetSetBorderMode(row, ZET_BORDER_REFLECT, ZET_SIDE_LEFT | ZET_SIDE_RIGHT, 0);
    showBorder(row, result, "reflect");
    zetSetBorderMode(row, ZET_BORDER_WRAP, ZET_SIDE_LEFT | ZET_SIDE_RIGHT, 0);
    showBorder(row, result, "wrap");
    /* end */
    releaseImage(row);
    releaseImage(result);
    return endOfExample();
}
