/*
 * zetpxl: image-processing operations on plain records.
 *
 * Rules common to all operations, told once. A docstring below says only what is its own.
 *
 * Pixels and coordinates. Pixel (x, y) is column x, row y, both from 0; integer coordinates lie on pixel
 * centres, and nowhere is there a half-pixel shift. Row 0 is the first row in memory, whatever `origin` says:
 * only zetPutPixel and zetTranslateDIB give `origin` a meaning. In 1U images the leftmost pixel is the most
 * significant bit of its byte.
 *
 * Region. An operation works on the rectangle of the image's `roi`, cut at the right and bottom edge, or on the
 * whole image without one. With several images the smallest width and the smallest height count, and pixel
 * (i, j) of one region pairs with pixel (i, j) of the other; nothing is scaled. A region that lies outside its
 * image is no failure: nothing happens and nothing is reported.
 *
 * Channels. `roi->coi` above 0 selects that one channel, the alpha channel included. `coi` 0, or no region,
 * selects all channels but the alpha channel.
 *
 * Mask. A mask is a valid 1U image in one block. A pixel takes part if the mask's bit at the same offset of the
 * mask's own region is 1; the mask's region also limits the size. A mask's own mask is checked and otherwise
 * ignored.
 *
 * Tiles. An image with `tileInfo` hands out its pixels through the tile callback: one call before a tile is read
 * or written, one to release it. A fetch that leaves `tileData` null has failed and gets no release. Two calls
 * must not work at one time on images that share a tile record.
 *
 * Borders. `borderMode` and `borderConst` hold one word a side (top, bottom, left, right) and say what lies outside
 * the image, for a row a b c d: constant kk|abcd|kk, replicate aa|abcd|dd, reflect ba|abcd|dc, wrap cd|abcd|ab.
 * At a corner the top or bottom side decides, unless an operation says otherwise.
 *
 * Arithmetic. Integer results saturate at the limits of the depth where an operation says so; what divides or
 * converts truncates toward zero unless an operation says otherwise. Results are the same to the bit on every
 * processor and build.
 *
 * In place. Where source and destination may be one record the docstring says so. Two records whose pixels
 * overlap at different positions are not protected.
 *
 * Failures. A failed check is stored as the calling thread's status, passed to its report callback with the
 * words given here, and ends the call with nothing written. THE DEFAULTS END THE PROCESS: a new thread has mode
 * ZET_ErrorModeLeaf and zetNulDevReport, which exits silently with code 1 at the first failure. A program that
 * wants to see its errors calls zetRedirectError(zetStdErrReport) and zetSetErrMode(ZET_ErrorModeParent) in each
 * thread. The status is sticky: success does not clear it, and several operations stop when they find an old
 * negative status; clear it with zetSetErrStatus(0). "Incorrect Image" means that an image record failed its
 * check, and the status says which field.
 *
 * Threads. Status, mode and report callback belong to the thread; nothing else is kept between calls. Any thread
 * may call anything. An image must not be used by a second thread while an operation works on it.
 */
#ifndef ZETPXL_H
#define ZETPXL_H

#include <stdint.h>

#if defined(_WIN32)
#define ZET_API __declspec(dllexport)
#elif defined(__GNUC__)
#define ZET_API __attribute__((visibility("default")))
#else
#define ZET_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status and reports ------------------------------------------------------------------------------------ */

/* Status codes. A failing mask gives the status of its own failure minus 100, once more for a mask's mask. */
enum {
    ZET_StatusOk = 0,
    ZET_StatusBacktrace = -1, /* reported by a caller of a failed step; never replaces the stored status */
    ZET_StatusError = -2,
    ZET_StatusInternal = -3,
    ZET_StatusNoMemory = -4,
    ZET_StatusBadArgument = -5,
    ZET_StatusUnsupported = -6,
    ZET_StatusNoConvergence = -7,
    ZET_StatusAutotrace = -8, /* the application's own; never replaces the stored status */
    ZET_StatusNullImage = -9,
    ZET_StatusBadImageSize = -10,
    ZET_StatusBadRoiOffset = -11,
    ZET_StatusNoImageData = -12,
    ZET_StatusBadWidthStep = -13,
    ZET_StatusBadColorModel = -14,
    ZET_StatusBadChannels = -15,
    ZET_StatusBadChannels1U = -16,
    ZET_StatusBadDepth = -17,
    ZET_StatusBadAlpha = -18,
    ZET_StatusBadOrder = -19,
    ZET_StatusBadOrigin = -20,
    ZET_StatusBadAlign = -21,
    ZET_StatusNoTileCallback = -22,
    ZET_StatusBadTileSize = -23,
    ZET_StatusBadCoi = -24,
    ZET_StatusBadRoiSize = -25,
    ZET_StatusMaskTiled = -26,
    ZET_StatusNullPointer = -27,
    ZET_StatusBadVectorLength = -28,
    ZET_StatusBadFilter = -29,
    ZET_StatusBadTransformKernel = -30,
    ZET_StatusBadFilterOffset = -31
};

/* Error modes of a thread. */
enum {
    ZET_ErrorModeLeaf = 0,   /* a report ends the process (the box reporter asks whether to); the default */
    ZET_ErrorModeParent = 1, /* a report is shown and the call returns to its caller */
    ZET_ErrorModeSilent = 2  /* reports do nothing */
};

/* A report callback: status, name of the reporting operation, text of the failed condition or a fixed message,
 * name of the reporting source without its extension, source line. Runs on the thread that failed. Its result
 * becomes the result of zetError. */
typedef int32_t (*ZetErrorCallback)(int32_t status, const char* funcName, const char* context, const char* fileName,
                                    int32_t line);

typedef struct ZetLibVersion {
    int32_t major;
    int32_t minor;
    int32_t build;
    const char* libraryName;
    const char* versionText;
    const char* buildText;
    const char* dateText;
    const char* toolText;
} ZetLibVersion;

/* The calling thread's stored status, 0 in a new thread. */
ZET_API int32_t zetGetErrStatus(void);

/* Stores any value as the calling thread's status, without a report. */
ZET_API void zetSetErrStatus(int32_t status);

/* The calling thread's error mode, ZET_ErrorModeLeaf in a new thread. */
ZET_API int32_t zetGetErrMode(void);

/* Stores any value as the calling thread's error mode. A value that is no mode acts as ZET_ErrorModeParent in the
 * null and stream reporters; the box reporter then shows no box. */
ZET_API void zetSetErrMode(int32_t mode);

/* Installs a report callback for the calling thread (null: zetNulDevReport) and gives the one before. */
ZET_API ZetErrorCallback zetRedirectError(ZetErrorCallback callback);

/* The one entry of all reports. Stores `status`, unless it is -1 or -8, then calls the thread's callback with the
 * five arguments unchanged and gives its result. Status 0 is stored and reported to nobody; the result is 0. */
ZET_API int32_t zetError(int32_t status, const char* funcName, const char* context, const char* fileName, int32_t line);

/* The text of a status, owned by the library; "Unknown error or status code" for a value without one. */
ZET_API const char* zetErrorStr(int32_t status);

/* Stock reporter: prints nothing; in ZET_ErrorModeLeaf it ends the process with exit(1). Gives `status`. */
ZET_API int32_t zetNulDevReport(int32_t status, const char* funcName, const char* context, const char* fileName,
                                int32_t line);

/* Stock reporter: writes the report to the standard error stream; in ZET_ErrorModeLeaf it then ends the process with
 * exit(1), in ZET_ErrorModeSilent it writes nothing. Null `funcName` prints as "<unknown>"; so does a null
 * `fileName` with a `line` above 0. Gives `status`. */
ZET_API int32_t zetStdErrReport(int32_t status, const char* funcName, const char* context, const char* fileName,
                                int32_t line);

/* Stock reporter: shows the report and asks whether to go on (ZET_ErrorModeParent) or to end the process
 * (ZET_ErrorModeLeaf); other modes show nothing. Without a window system it asks on the controlling terminal if the
 * process is in its foreground group; otherwise the text goes to the standard error stream and the answer is to go
 * on. The text is as long as it needs to be; when memory for it cannot be had, nothing is shown. Gives `status`. */
ZET_API int32_t zetGuiBoxReport(int32_t status, const char* funcName, const char* context, const char* fileName,
                                int32_t line);

/* The constant version record. */
ZET_API const ZetLibVersion* zetGetLibVersion(void);

/* ---- Images ------------------------------------------------------------------------------------------------ */

/* Depths: the two-power bits of a sample, with the top bit set where it is signed. `depth & 0x7FFFFFFF` gives the
 * bits of a sample. */
#define ZET_DEPTH_SIGN 0x80000000u
#define ZET_DEPTH_1U 1u
#define ZET_DEPTH_8U 8u
#define ZET_DEPTH_16U 16u
#define ZET_DEPTH_32F 32u
#define ZET_DEPTH_8S 0x80000008u
#define ZET_DEPTH_16S 0x80000010u
#define ZET_DEPTH_32S 0x80000020u

/* Border sides, as flags of zetSetBorderMode; the side's index in `borderMode` is the flag's bit number. */
enum { ZET_SIDE_TOP = 1, ZET_SIDE_BOTTOM = 2, ZET_SIDE_LEFT = 4, ZET_SIDE_RIGHT = 8 };

/* Border modes; consumers look at the two lowest bits. */
enum { ZET_BORDER_CONSTANT = 0, ZET_BORDER_REPLICATE = 1, ZET_BORDER_REFLECT = 2, ZET_BORDER_WRAP = 3 };

/* Fourth argument of the tile callback. */
enum { ZET_TILE_READ = 1, ZET_TILE_WRITE = 2, ZET_TILE_RELEASE = 4 };

/* Flags of zetDeallocate. */
enum { ZET_IMAGE_HEADER = 1, ZET_IMAGE_DATA = 2, ZET_IMAGE_ROI = 4, ZET_IMAGE_TILE = 8, ZET_IMAGE_MASK = 16 };

typedef struct ZetImage ZetImage;

/* Region of interest. May reach past the image's right and bottom edge. */
typedef struct ZetROI {
    int32_t coi;     /* 0: all channels; 1 to nChannels: that channel */
    int32_t xOffset; /* left column, at least 0 */
    int32_t yOffset; /* top row, at least 0 */
    int32_t width;   /* columns, at least 1 */
    int32_t height;  /* rows, at least 1 */
} ZetROI;

/* The tile callback puts the address of tile (xIndex, yIndex) into image->tileInfo->tileData, or null if it cannot.
 * `image` is the application's record or, in operations that work on copies of it, such a copy with the same tile
 * record. */
typedef void (*ZetTileCallback)(ZetImage* image, int32_t xIndex, int32_t yIndex, int32_t mode);

/* Tiles of an image. A tile holds width x height pixels in the image's depth, channels and data order, rows padded
 * to the image's `align`, one plane after the other if planar; it is always whole, also where it reaches past the
 * image. Tile (0, 0) starts at the image's top left corner. */
typedef struct ZetTileInfo {
    ZetTileCallback callBack; /* not null */
    void* id;                 /* the application's word, never read by the library */
    void* tileData;           /* set by the callback */
    int32_t width;            /* a positive multiple of 8 */
    int32_t height;           /* a positive multiple of 8 */
} ZetTileInfo;

/* Image record. Pixel (x, y), channel c (from 0), with b bytes a sample, lies at
 *   interleaved: imageData + y * widthStep + (x * nChannels + c) * b
 *   planar:      imageData + c * height * widthStep + y * widthStep + x * b
 *   1U:          bit 7 - (x & 7) of the byte at imageData + y * widthStep + (x >> 3)
 * Exactly one of imageData and tileInfo is set. */
struct ZetImage {
    int32_t headerSize;     /* bytes of this record */
    int32_t headerId;       /* 0 */
    int32_t nChannels;      /* at least 1; 1 for 1U */
    int32_t alphaChannel;   /* 0, or nChannels: alpha is the last channel */
    uint32_t depth;         /* ZET_DEPTH_... */
    char colorModel[4];     /* four characters, no terminator */
    char channelSeq[4];     /* four characters, no terminator */
    int32_t dataOrder;      /* 0 pixel-interleaved, 1 planar */
    int32_t origin;         /* 0 or 1; see zetPutPixel */
    int32_t align;          /* 4, 8, 16 or 32 bytes */
    int32_t width;          /* pixels, at least 1 */
    int32_t height;         /* pixels, at least 1 */
    ZetROI* roi;            /* or null */
    ZetImage* maskImage;    /* or null */
    void* imageTag;         /* the application's word */
    ZetTileInfo* tileInfo;  /* or null */
    int32_t imageSize;      /* bytes of pixel data */
    void* imageData;        /* first byte of pixel data; null for a tiled image */
    int32_t widthStep;      /* bytes from row to row */
    int32_t borderMode[4];  /* ZET_BORDER_... of top, bottom, left, right */
    int32_t borderConst[4]; /* constant of each side */
    void* imageDataBase;    /* block behind imageData, null when the library does not own it */
};

/* Makes an image record without pixel data; all borders are constant 0. `colorModel` and `channelSeq` are texts of at
 * least four characters. `roi`, `maskImage` and `tileInfo` may be null; only the mask is looked at. `widthStep` and
 * `imageSize` are worked out for tiled images too, which store 2147483647 where a word does not fit.
 * Gives null on failure: the status of the first wrong field with "Incorrect data-ins" (an untiled image whose row or
 * data passes 2147483647 bytes: ZET_StatusBadImageSize); null without a report when memory cannot be had.
 * Release with zetDeallocate(image, ZET_IMAGE_HEADER). A chain of masks is followed 16 deep; one more is refused as
 * a mask of wrong depth. */
ZET_API ZetImage* zetCreateImageHeader(int32_t nChannels, int32_t alphaChannel, uint32_t depth, const char* colorModel,
                                       const char* channelSeq, int32_t dataOrder, int32_t origin, int32_t align,
                                       int32_t width, int32_t height, ZetROI* roi, ZetImage* maskImage, void* imageTag,
                                       ZetTileInfo* tileInfo);

/* Gives an untiled image of integer depth its pixel data; works out widthStep and imageSize afresh. With `doFill` not 0
 * all bytes, padding included, are filled with `fillValue`, cut to the sample's bits and not clamped (1U: its lowest
 * bit). The record is unchanged on failure, but for imageDataBase when memory cannot be had.
 * Refusals, ZET_StatusBadArgument: "( image == ((void *)0) )", "( image->imageData != ((void *)0) )",
 * "( image->tileInfo != ((void *)0) )", "( image->depth == 32 )"; a wrong field: its status with "Incorrect data-ins";
 * ZET_StatusNoMemory: "for allocate image data". */
ZET_API void zetAllocateImage(ZetImage* image, int32_t doFill, int32_t fillValue);

/* The same for depth 32F; any other depth is refused with "( image->depth != 32 )". */
ZET_API void zetAllocateImageFP(ZetImage* image, int32_t doFill, float fillValue);

/* Releases the parts named by `flags`, in the order region, mask (with its header, data, region and tile record), tile
 * record, data, header. Region, tile record and header must be blocks of the library's allocator (zetCreateROI,
 * zetCreateImageHeader); data is freed only if imageDataBase is set. A null image is ignored. */
ZET_API void zetDeallocate(ZetImage* image, int32_t flags);

/* Makes a region, its values unchecked; null when memory cannot be had. */
ZET_API ZetROI* zetCreateROI(int32_t coi, int32_t xOffset, int32_t yOffset, int32_t width, int32_t height);

/* Releases a region or any other block of the library's allocator. Null is ignored. */
ZET_API void zetDeleteROI(void* roi);

/* Makes a new image in one block with the same header fields, region, border words and pixels; mask, tile record and
 * tag are left out. The pixels of a tiled image are not fetched: its clone's data is uninitialised. The copy is bounded
 * by the smaller imageSize of the two. Gives null on failure: "Incorrect Image"; ZET_StatusNoMemory with "Not enough
 * memory to allocate header for clone image", "... roi for clone image" or "... imageData for clone image" (the first
 * and the last arrive behind a report of the step that failed). Release with zetDeallocate(clone, 7). */
ZET_API ZetImage* zetCloneImage(const ZetImage* image);

/* Sets border mode and constant of the sides whose flag is in `sides`. The constant is clamped to the image's depth
 * (32S and 32F: stored as it is; 32F borders use its value as a float). `mode` is not checked; a null image is
 * ignored. */
ZET_API void zetSetBorderMode(ZetImage* image, int32_t mode, int32_t sides, int32_t constVal);

/* ---- Pixels ------------------------------------------------------------------------------------------------ */

/* Writes one pixel, all channels with alpha, at (x, y) in the image's own coordinates: with `origin` 1 row 0 is the
 * last row in memory. Region, coi and mask are ignored. `pixel` points to nChannels samples of the image's depth, for 1U
 * to one byte whose bit 0 counts; samples are copied as they stand.
 * Refusals: "Incorrect Image"; ZET_StatusBadArgument "((x>img->width-1) || (x<0))", "((y>img->height-1) || (y<0))";
 * a tile that cannot be had: ZET_StatusError "Error get tile to write", nothing written, no release. */
ZET_API void zetPutPixel(ZetImage* img, int32_t x, int32_t y, const void* pixel);

/* Fills the region of an image of any depth but 32F. `fillValue` is clamped to the depth: 1U 0..1, 8U 0..255, 8S
 * -128..127, 16U 0..65535, 16S -32768..32767. A 1U image under a mask inverts the mask's bits and restores them during
 * the call, so that mask must not be shared with another thread meanwhile; an old negative status then gives a Backtrace
 * report with "" behind the work.
 * Refusals: "Incorrect Image"; ZET_StatusBadDepth "You should use zetSetFP for this image"; a tile that cannot be had:
 * ZET_StatusError "Error get tile to write", tiles before it stay written. */
ZET_API void zetSet(ZetImage* dstImage, int32_t fillValue);

/* Fills the region of a 32F image with the bit pattern of `fillValue`; the image's depth is changed for the time of the
 * call. Refusals: ZET_StatusBadArgument "dstImage==0"; ZET_StatusBadDepth "You should use zetSet for this image"; those
 * of zetSet, in its name, followed by a Backtrace report, which an old negative status gives too. */
ZET_API void zetSetFP(ZetImage* dstImage, float fillValue);

/* Copies the region of one image into the region of another of the same depth, by bit pattern. The images need not have
 * the same channels but as many selected ones, taken in order. With masks on both images the AND of both counts, each
 * from its own region. Tiles are walked in the destination's grid, or in the source's if only that is tiled. Fields
 * `maskImage` of both records and of the mask change during a 1U copy under a mask, so all must be writable. Records that
 * share overlapping pixels get no guarantee. One record as source and destination is left alone.
 * Refusals: "Incorrect Image"; ZET_StatusBadArgument "srcImage->depth != dstImage->depth", "srcImage->origin !=
 * dstImage->origin", "srcImage->dataOrder != dstImage->dataOrder" (1U and one-channel images excepted), each reported, then
 * the call ends; an old negative status ends it without a report; ZET_StatusBadArgument "Number of processed channels of
 * srcImage != Number of processed channels of dstImage"; ZET_StatusError "Error get tile to read", "Error get tile to
 * write" (tiles before it stay copied); Backtrace with "" behind a failed step's own report. */
ZET_API void zetCopy(ZetImage* srcImage, ZetImage* dstImage);

/* Adds the regions of two images of one depth, data order and number of selected channels into a third, element by
 * element. 8U, 8S, 16U, 16S and 32S saturate; 32F is rounded once and has no limit; 1U is OR, which then reports as
 * zetOr and asks for no data order. Any of the three may be one record. A pixel takes part if the bits of all masks of
 * the three images are set. Tiled images of any tile sizes are walked in lock step, at most one tile of each held at
 * a time; a source that is the destination's record is asked for once, for writing; after a failed fetch the tiles then
 * held are not released and rectangles already processed stay. Whole images of one layout are processed with the padding
 * of their rows.
 * Refusals, ZET_StatusBadArgument: "srcImageA==0"; "(srcImageA->depth != dstImage->depth)" and so for B;
 * "(srcImageA->dataOrder != dstImage->dataOrder)" and so for B; "(nChSrcA != nChDst)" and so for B; a failed fetch:
 * "(srcImageA->tileInfo->tileData == 0)" and so for B and dstImage. "Incorrect Image". ZET_StatusNoMemory: "Out of
 * memory", when the masks cannot be joined. */
ZET_API void zetAdd(ZetImage* srcImageA, ZetImage* srcImageB, ZetImage* dstImage);

/* ---- Filters ----------------------------------------------------------------------------------------------- */

/* A convolution kernel. Weights and anchor are stored turned through 180 degrees; make records with zetCreateConvKernel
 * only. A kernel is read-only after that, and any number of threads may use it. */
typedef struct ZetConvKernel {
    int32_t nCols;
    int32_t nRows;
    int32_t anchorX; /* nCols - 1 - the caller's */
    int32_t anchorY; /* nRows - 1 - the caller's */
    int32_t* values; /* the caller's weights in reversed order, owned by the record */
    int32_t nShift;
} ZetConvKernel;

/* How zetConvolve2D combines the results of several kernels. */
enum {
    ZET_COMBINE_SUM = 0,              /* the sum; one kernel: the result */
    ZET_COMBINE_SUM_SQUARES = 1,      /* the sum of squares; one kernel without a shift: the square */
    ZET_COMBINE_ROOT_SUM_SQUARES = 2, /* the root of that sum; one kernel without a shift: the absolute value */
    ZET_COMBINE_MAX = 3,              /* the largest; one kernel: the result */
    ZET_COMBINE_MIN = 4               /* the smallest; one kernel: the result */
};

/* Makes a kernel of nCols x nRows whole weights, given row by row, top row first. The weight at (row r, column c)
 * multiplies the source sample at (x + anchorX - c, y + anchorY - r) for the destination pixel (x, y): a true convolution.
 * Each result is shifted right by `nShift` modulo 32 (toward minus infinity) before kernels are combined; 0 leaves it as
 * it is. The weights are copied. Gives null on failure: ZET_StatusBadArgument "(values == 0)", "(nRows<=0 || nCols<=0)",
 * "(anchorX<0 ||anchorY<0 ||nRows<=anchorY || nCols<=anchorX)"; ZET_StatusNoMemory "Allocation failure", also when the
 * weights pass 2147483647 bytes. */
ZET_API ZetConvKernel* zetCreateConvKernel(int32_t nCols, int32_t nRows, int32_t anchorX, int32_t anchorY,
                                           const int32_t* values, int32_t nShift);

/* Releases a kernel. ZET_StatusBadArgument: "kernel==0", "kernel->values==0". */
ZET_API void zetDeleteConvKernel(ZetConvKernel* kernel);

/* Filters the region of `srcImage` into that of `dstImage` with 1 to 10 kernels, whose results are combined by `method`
 * (not looked at for one kernel, whose other values mean the result unchanged). All depths but 32F; the images have one
 * depth and data order and as many channels without alpha, or a coi each. Samples are handled in single precision and
 * stored rounded to nearest, ties to even, and saturated; a result above 0.5 sets a bit of 1U. Only pixels outside the
 * image are made up, by the source's borders with constants limited to the depth; neighbours outside the region are real
 * pixels. A destination pixel is written where the masks of both images are set; source pixels under clear bits are read
 * as usual. Source and destination may be one record, with the result of a separate destination. Tile callbacks are handed
 * copies of the records with the same tile record.
 * Refusals: "Incorrect Image"; ZET_StatusBadRoiOffset "Bad ROI offsets" (a region that begins outside its image);
 * ZET_StatusBadArgument "kernel==0", "(nKernels<=0 || nKernels>10)", "Inadmissible method", "kernel[i]==0", "Bad kernel
 * structure", "Uncompatible images", "32F images can be processed only with FP kernel", "No channel to operate", "One of
 * the COI is not defined"; ZET_StatusNoMemory "Allocation failure", also for a source tile that cannot be had;
 * ZET_StatusError "Error get tile to write". After these last two pixels already written stay. */
ZET_API void zetConvolve2D(ZetImage* srcImage, ZetImage* dstImage, const ZetConvKernel* const* kernel, int32_t nKernels,
                           int32_t method);

/* Replaces each pixel of the region by the mean of the nCols x nRows source pixels around it: `anchorX` columns to its left
 * and `anchorY` rows above it belong to the rectangle. All depths; the images have one depth and as many channels without
 * alpha, or a coi each. The mean is the sum times the reciprocal of the count, which is rounded to single precision, and
 * truncated toward zero: a constant image may come out one lower. 1U gives 1 from one half on. 32S and 32F keep column sums
 * in single and row sums in double precision, each step rounded toward zero. Pixels outside the image follow the source's
 * borders; those outside the region are real pixels. A pixel is written where all masks are set. Source and destination may
 * be one record, tiled or not, with the result of a separate destination. A rectangle of 1 by 1 is zetCopy. The cost of a
 * pixel does not depend on the rectangle's size (running sums).
 * Refusals: "Incorrect Image"; ZET_StatusBadArgument "(srcImage->depth!=dstImage->depth)"; ZET_StatusBadOrder
 * "(srcImage->dataOrder!=dstImage->dataOrder)" unless both images have one channel; ZET_StatusBadArgument
 * "(nRows<0||nCols<0)", "(anchorX<0||anchorY<0)", "(anchorX>=nCols||anchorY>=nRows)"; ZET_StatusBadAlpha "bad alpha
 * channel's number" (also of a mask); ZET_StatusBadChannels "bad channel's number"; ZET_StatusNoMemory "Allocation failure"
 * (also for a source tile that cannot be had and for a rectangle of more than 2147483647 pixels); ZET_StatusError "Error get
 * tile to write", "Error get tile to read"; Backtrace with "" behind an inner step's report or an old negative status.
 * After these last pieces already written stay. */
ZET_API void zetBlur(ZetImage* srcImage, ZetImage* dstImage, int32_t nCols, int32_t nRows, int32_t anchorX,
                     int32_t anchorY);

/* Replaces each sample of the region by the median of the nCols x nRows samples of its channel around it: `anchorX` columns
 * to its left and `anchorY` rows above it belong to the window; of an even number of samples the upper of the two middle
 * ones counts. All depths but 32F; on 1U set bits are counted. The images have one depth, data order (1U excepted), channel
 * count and alpha channel. Pixels outside the image follow the source's borders; those outside the region are real pixels.
 * A pixel is written where the masks of both images are set. Destination tiles outside the region are not asked for. Small
 * windows are sorted by exchanges over many pixels at once, large ones use sliding histograms.
 * Refusals: "Incorrect Image"; ZET_StatusBadArgument "(anchorX>=nCols)||(anchorX<0)", "(anchorY>=nRows)||(anchorY<0)",
 * "(srcImage==dstImage)", "srcImage->depth!=dstImage->depth", "srcImage->depth==32",
 * "srcImage->nChannels!=dstImage->nChannels", "srcImage->alphaChannel!=dstImage->alphaChannel",
 * "srcImage->dataOrder!=dstImage->dataOrder"; then, each reported, "Interst Channel of input Image more number of
 * channels.", "Interst Channel of output Image more number of channels.", "Number of interset channel input and output Image
 * is not equal."; an old negative status ends the call without a report. A tile or scratch memory that cannot be had ends
 * the work, or leaves a piece as it was, silently. */
ZET_API void zetMedianFilter(ZetImage* srcImage, ZetImage* dstImage, int32_t nCols, int32_t nRows, int32_t anchorX,
                             int32_t anchorY);

/* Fixed filters; weights in window position, the anchor at the centre. */
enum {
    ZET_FIXED_GRAD_X_FLAT = 0,   /* 1 0 -1 / 1 0 -1 / 1 0 -1 */
    ZET_FIXED_GRAD_Y_FLAT = 1,   /* -1 -1 -1 / 0 0 0 / 1 1 1 */
    ZET_FIXED_GRAD_X_PEAKED = 2, /* 1 0 -1 / 2 0 -2 / 1 0 -1 */
    ZET_FIXED_GRAD_Y_PEAKED = 3, /* -1 -2 -1 / 0 0 0 / 1 2 1 */
    ZET_FIXED_PEAK_3 = 4,        /* 8 at the centre, -1 at the other 8 */
    ZET_FIXED_RING_5 = 5,        /* -1 -3 -4 -3 -1 / -3 0 6 0 -3 / -4 6 20 6 -4 / -3 0 6 0 -3 / -1 -3 -4 -3 -1 */
    ZET_FIXED_SMOOTH_3 = 6,      /* (1 2 1 / 2 4 2 / 1 2 1) / 16 */
    ZET_FIXED_SMOOTH_5 = 7,      /* (2 7 12 7 2 / 7 31 52 31 7 / 12 52 127 52 12 / 7 31 52 31 7 / 2 7 12 7 2) / 571 */
    ZET_FIXED_PEAK_3B = 8,       /* as ZET_FIXED_PEAK_3 */
    ZET_FIXED_PEAK_5 = 9,        /* 24 at the centre, -1 at the other 24 */
    ZET_FIXED_CRISP_3 = 10       /* (16 at the centre, -1 at the other 8) / 8 */
};

/* Applies a fixed filter to the region, on all depths. 8- and 16-bit images are exact in integers, saturated, divisions
 * rounded to nearest with ties to even; ZET_FIXED_SMOOTH_5, 32S and 32F go in single precision, each stage rounded once, and
 * whole samples are rounded to nearest, ties to even, and saturated. On 1U the gradients and the ring give 1 above 0, the
 * smoothings above about half, the peaks mark set pixels with a clear pixel in their window, and ZET_FIXED_CRISP_3 is
 * zetCopy. Images, borders, masks and tiles as in zetMedianFilter. The floating-point rounding mode is kept; pending
 * floating-point exceptions are cleared.
 * The result is 0, also when there is nothing to do, or tells the refusal: "Incorrect Image" gives the stored status;
 * ZET_StatusBadArgument is reported with "(srcImage==dstImage)" (result -5), "srcImage->depth!=dstImage->depth" (-17),
 * "srcImage->nChannels!=dstImage->nChannels" (-15), "srcImage->alphaChannel!=dstImage->alphaChannel" (-18),
 * "srcImage->dataOrder!=dstImage->dataOrder" (1U excepted, -1), "Unknow filter." (-5); ZET_StatusBadCoi, each reported, with
 * the channel texts of zetMedianFilter (-24). An old negative status is the result at once. Scratch memory that cannot be
 * had: ZET_StatusNoMemory "Allocation failure", result 0; a tile or working block: silence, result 0. */
ZET_API int32_t zetFixedFilter(ZetImage* srcImage, ZetImage* dstImage, int32_t filter);

/* Morphology by a filled square of 2 * nIterations + 1 pixels a side, applied at once: `nIterations` is its half-size, not a
 * count. zetDilate takes the greatest sample of the square, zetErode the least (on 1U OR and AND); zetOpen erodes and then
 * dilates, zetClose dilates and then erodes. Depths 1U, 8U, 16U. Of what lies outside the region only the frame of one pixel
 * around it counts, replicated outwards; where the frame leaves the image the source's borders make it (corners by the top
 * or bottom side; modes above 3 by their two lowest bits). In zetOpen and zetClose the second pass sees the frame
 * unfiltered. A pixel is written where the masks of both images are set; a mask keeps no pixel out of a window. Source and
 * destination may be one record, with the result of a separate destination. Rows stream: memory is a ring of rows. Tile
 * callbacks are handed copies of the records with the same tile record. THE STATUS IS CLEARED ON ENTRY.
 * Refusals: "Incorrect Image"; ZET_StatusBadArgument "Illegal number of iterations" (below 1), "Illegal image depth", "SRC
 * and DST depth are different", "SRC and DST order are different", "SRC and DST orign are different", "SRC and DST number
 * of channels are different"; ZET_StatusError "Error get tile to read", "Error get tile to write" (rows stored before stay).
 * Memory that cannot be had: status ZET_StatusNoMemory without a report, nothing written. */
ZET_API void zetDilate(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);
ZET_API void zetErode(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);
ZET_API void zetOpen(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);
ZET_API void zetClose(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);

/* ---- Geometry ---------------------------------------------------------------------------------------------- */

/* Interpolations; the flag is added to one of the first three. */
enum {
    ZET_INTER_NN = 0,
    ZET_INTER_LINEAR = 1,
    ZET_INTER_CUBIC = 2,
    ZET_INTER_SUPER = 3, /* area averaging, for changes of scale only */
    ZET_INTER_BLEND_EDGES = 16
};

/* Maps the source region onto the destination: source pixel (x, y) lands at (c0 * x + c1 * y + c2, c3 * x + c4 * y + c5) of
 * the destination, in whole-image coordinates; regions only cut what is made. Only pixels inside the region's image, a
 * parallelogram, are written; a position at most 1e-14 outside a column counts as on it. Depths 1U (nearest neighbour
 * always), 8U, 16U, 32F. ZET_INTER_CUBIC runs cubics through four samples an axis; sources narrower or lower than 4 pixels
 * take ZET_INTER_LINEAR for it, those of one column or row ZET_INTER_NN. ZET_INTER_BLEND_EDGES softens slanted edges. Masks
 * and borders play no part. With tiles on either side the destination is made cell by cell from blocks of the source, whose
 * positions may differ from the direct way in the last bit. Positions that no 32-bit index holds count as outside.
 * Refusals: "Incorrect Image"; ZET_StatusBadArgument, each reported: "srcImage->depth != dstImage->depth",
 * "srcImage->origin != dstImage->origin", "srcImage->dataOrder != dstImage->dataOrder" (1U and one-channel images
 * excepted), "srcImage->depth & ZET_DEPTH_SIGN", "This function is not in-place function"; then, with an old negative status
 * too, the call ends. ZET_StatusBadArgument "Determinant of transform matrix == 0.0" (at most 1e-7), "Bad rect ROI" (as
 * zetGetAffineQuad, a Backtrace behind it), "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate !=
 * ZET_INTER_CUBIC", "srcImage Rectangle ROI is degenerate to length or point", "Number of processed channels of srcImage !=
 * Number of processed channels of dstImage"; ZET_StatusError "Error get tile to write"; Backtrace with "" for source pixels
 * or memory that cannot be had. */
ZET_API void zetWarpAffine(ZetImage* srcImage, ZetImage* dstImage, const double* coeffs, int32_t interpolate);

/* The matrix that maps the source region onto a parallelogram: corners (x0, y0) to (x3, y3) take the region's left top,
 * right top, right bottom and left bottom pixel. Refusals, in this order: "Incorrect Image"; ZET_StatusBadArgument
 * "Quadrangle is degenerate to triangle or length or point", "Quadrangle is concave", "Quadrangle is not parallelogram" (to
 * 1e-7), "Bad rect ROI", "srcImage Rectangle ROI is degenerate to length or point". */
ZET_API void zetGetAffineTransform(const ZetImage* srcImage, double* coeffs, const double* quad);

/* Turns the source region about the image's origin and shifts it: source pixel (x, y) lands at (cos a * x + sin a * y +
 * xShift, -sin a * x + cos a * y + yShift), `angle` in degrees, against the clock on a screen whose rows go downward. A turn
 * of exactly 90, 180 or 270 degrees by whole shifts on untiled images copies pixels as they are, for any `interpolate`; all
 * else is zetWarpAffine with its refusals, followed by a Backtrace report with "" (an old negative status gives one too).
 * The exact turn reports the checks of zetWarpAffine down to the in-place one, and the number of processed channels, in its
 * own name. An angle that is no number makes no pixel. */
ZET_API void zetRotate(ZetImage* srcImage, ZetImage* dstImage, double angle, double xShift, double yShift,
                       int32_t interpolate);

/* Source pixel (x, y) lands at (x + xShear * y + xShift, yShear * x + y + yShift): zetWarpAffine with its refusals, followed
 * by a Backtrace report with "". */
ZET_API void zetShear(ZetImage* srcImage, ZetImage* dstImage, double xShear, double yShear, double xShift,
                      double yShift, int32_t interpolate);

/* Adds to both shifts what makes zetRotate turn about (xCenter, yCenter). An angle of 0 changes nothing. */
ZET_API void zetGetRotateShift(double xCenter, double yCenter, double angle, double* xShift, double* yShift);

/* Fills the destination region from source positions: the value of `xMap` and `yMap` (32F, one channel, no alpha) at a
 * pixel of their regions is the column and row of the source for that pixel of the destination's region, in whole-image
 * coordinates. A position outside the source's region, or NaN, leaves its pixel as it was. Interpolations, depths and
 * channels as in zetWarpAffine; the flag for edges has no effect. Masks and borders play no part. With tiles a tiled source
 * is held whole, the rest goes tile by tile.
 * Refusals as of zetWarpAffine down to the in-place one, with "(srcImage->depth & ZET_DEPTH_SIGN)", and "xMap->depth !=
 * ZET_DEPTH_32F || xMap->nChannels != 1 || xMap->alphaChannel != 0" and so for yMap, each reported; then the interpolation,
 * the number of processed channels, "Error get tile to write" and Backtrace as there. */
ZET_API void zetRemap(ZetImage* srcImage, ZetImage* xMap, ZetImage* yMap, ZetImage* dstImage, int32_t interpolate);

/* Shrinks the source region into the destination region by xDst / xSrc and yDst / ySrc, each at most 1. Column i and row j
 * of the region come from source position (i * xSrc / xDst, j * ySrc / yDst) of the source's region: position 0 is the
 * centre of the first pixel, no half-pixel shift. As many pixels are made as the scaled source region has and the
 * destination's takes; the rest stays. Samples beyond the source's region are read where interpolation reaches them, beyond
 * the image the last ones. ZET_INTER_NN takes the sample below the position, which a factor that is not the reciprocal of a
 * whole number shifts by 0.5; ZET_INTER_LINEAR and ZET_INTER_CUBIC cut fractions off (8U, 16U); ZET_INTER_SUPER averages the
 * area that a pixel covers, rounded. Sources below 4 by 4, results of less than a pixel and, but for areas, two factors that
 * are both reciprocals of whole numbers take ZET_INTER_NN, as does an area larger than the source's tiles. 1U: nearest or
 * area, an area of at least half set bits is 1. Area means of 8U and 16U are not limited to the depth: sums that drift past
 * 65535.5 in long rows of white 16U wrap to 0. Depths 1U, 8U, 16U, 32F; alpha is a channel like others. Masks and borders
 * play no part. With tiles the source is walked tile by tile, with rectangles over several where an interpolation looks
 * ahead.
 * Refusals, in the name "Decimate": "Incorrect Image"; then each reported: ZET_StatusBadArgument "srcImage == dstImage",
 * ZET_StatusBadDepth "srcImage->depth != dstImage->depth" and "depth != 1U, 8U, 16U or 32F", ZET_StatusBadOrigin
 * "srcImage->origin != dstImage->origin", ZET_StatusBadOrder "srcImage->dataOrder != dstImage->dataOrder", ZET_StatusBadCoi
 * "srcImage->roi->coi > 0 && dstImage->roi->coi == 0" and the reverse (the other image has more than one channel),
 * ZET_StatusBadChannels "srcImage->nChannels != dstImage->nChannels", ZET_StatusBadArgument "interpolate != ZET_INTER_NN,
 * ZET_INTER_LINEAR, ZET_INTER_CUBIC or ZET_INTER_SUPER", "xDst <= 0", "xSrc <= 0", "yDst <= 0", "ySrc <= 0", "xDst > xSrc",
 * "yDst > ySrc"; then, with an old negative status too, the call ends. ZET_StatusInternal "srcImage->tileInfo->callBack
 * crash" or "dstImage->tileInfo->callBack crash": what was made stays. ZET_StatusNoMemory "Can't create temporary buffer for
 * interpolate = ZET_INTER_SUPER": the block at hand stays as it was. */
ZET_API void zetDecimate(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
                         int32_t interpolate);

/* Enlarges the source region into the destination region by xDst / xSrc and yDst / ySrc, each at least 1. The first and last
 * pixels of the two regions meet: positions rise by (source size - 1) / (made size - 1); only ZET_INTER_NN by whole factors
 * repeats each pixel instead. As many pixels are made as the scaled source region has (at least 1) and the destination's
 * takes; the rest stays, and so do pixels under a clear bit of a mask: a mask of the source is scaled with it. Sources of one
 * column or row take ZET_INTER_NN, those below 4 by 4 lines for cubics. Depths 1U (nearest always), 8U and 16U (fractions are
 * cut off, cubics held within the depth), 32F (as it comes). Alpha is left alone unless a coi names it. `origin` and borders
 * play no part. With tiles the destination goes tile by tile, or in blocks of 64 by 64, each from a copy of the rectangle
 * that it reads; the records of images and masks are not changed meanwhile. The interpolation is Newton's through four
 * equally spaced samples.
 * Refusals: ZET_StatusBadArgument "xDst < xSrc || yDst < ySrc"; "Incorrect Image"; each reported: ZET_StatusBadArgument
 * "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate != ZET_INTER_CUBIC", "srcImage->depth !=
 * dstImage->depth", "srcImage->depth != ZET_DEPTH_1U && srcImage->depth != ZET_DEPTH_8U && srcImage->depth != ZET_DEPTH_16U &&
 * srcImage->depth != ZET_DEPTH_32F", "srcImage->dataOrder != dstImage->dataOrder", "xDst <= 0 || xSrc <= 0", "yDst <= 0 ||
 * ySrc <= 0"; then, with an old negative status too, the call ends. ZET_StatusBadArgument "This function isn`t in-plase
 * function"; ZET_StatusError "srcImage COI != dstImage COI" and "Error get tile to write"; ZET_StatusNoMemory "Allocation
 * failure" for a scaled mask; Backtrace with "" after a mask that could not be scaled or joined. Source pixels that cannot be
 * had end the call without a report. */
ZET_API void zetZoom(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
                     int32_t interpolate);

/* Changes the scale in either direction, each axis for itself: ZET_INTER_SUPER is zetDecimate, for factors of at most 1 (else
 * ZET_StatusBadArgument "(xDst > xSrc || yDst > ySrc)"); all others go zetZoom's way, up and down, with its reports in its
 * name. A Backtrace report with "" follows any negative status. */
ZET_API void zetResize(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
                       int32_t interpolate);

/* ---- Colour, noise, DIB ------------------------------------------------------------------------------------ */

/* Converts a whole RGB image to hue, lightness and saturation: three channels H, L, S, hue scaled from 0 to 360 degrees to
 * the range of the depth, lightness and saturation as fractions of full scale (32S counts from -2147483648). Depths 8U, 16U,
 * 32S; doubles, results cut toward zero. A fourth channel of the source is ignored, and so are masks. The destination's
 * colorModel and channelSeq become "HLS" for good, also when the depth is then refused. Untiled images are converted over
 * their common size; with tiles the whole destination is, what lies beyond the source following its borders. One record may
 * be both sides. A destination tile that cannot be had ends its row of tiles silently, and the walk if the next row's first
 * one fails too.
 * Refusals: "Incorrect Image"; ZET_StatusBadArgument "colorModel must be RGB instead of <name> ", "channelSeq must be RGB or
 * BGR instead of <name> ", "src & dst roi must be NULL", "(src->nChannels < 3 ) || (dst->nChannels != 3 ) || (src->depth !=
 * dst->depth) || (src->dataOrder != dst->dataOrder) || (src->origin != dst->origin)"; in the name ownRGB2HLS, once per tile,
 * "Error input depth. 32S,16U,8U are valid now"; Backtrace with "" when source pixels cannot be had. */
ZET_API void zetRGB2HLS(ZetImage* srcImage, ZetImage* dstImage);

/* The way back. A saturation of 0 gives the lightness unchanged in all three channels. Refusals as of zetRGB2HLS, with the
 * RGB side the destination, and "src-> colorModel must be HLS instead of <name>", "src-> channelSeq must be HLS instead of
 * <name>"; the depth in the name ownHLS2RGB. No name is written. */
ZET_API void zetHLS2RGB(ZetImage* srcImage, ZetImage* dstImage);

enum { ZET_NOISE_UNIFORM = 0, ZET_NOISE_GAUSSIAN = 1 };

/* What noise to add. Integer depths read the integers, 32F the floats, which no init operation sets. */
typedef struct ZetNoiseParam {
    int32_t noise; /* ZET_NOISE_... */
    uint32_t seed;
    int32_t lowInt;  /* uniform: one end of the range; Gaussian: the mean */
    int32_t highInt; /* uniform: the other end, which is not reached; Gaussian: the standard deviation */
    float lowFP;
    float highFP;
} ZetNoiseParam;

/* Fill the record but for its floats. Nothing is checked; `noiseParam` must not be null. */
ZET_API void zetNoiseUniformInit(ZetNoiseParam* noiseParam, uint32_t seed, int32_t low, int32_t high);
ZET_API void zetNoiseGaussianInit(ZetNoiseParam* noiseParam, uint32_t seed, int32_t mean, int32_t stDev);

/* Adds noise to the region of an image, in place; all depths but 1U. Integer depths saturate; a uniform range is cut to the
 * width of 8- and 16-bit depths. The same record gives the same noise on every machine: the generator starts afresh from
 * `seed`, and draws are taken plane by plane or pixel by pixel, channel by channel; elements that are masked out take none.
 * A tiled image is walked tile by tile, so its noise differs from that of the same image in one block.
 * The result is 0, or tells the refusal: "Incorrect Image" gives the status; ZET_StatusBadArgument for "(noiseParam == 0)",
 * "(image->depth == 1)", "((noiseParam->noise != ZET_NOISE_UNIFORM) && (noiseParam->noise != ZET_NOISE_GAUSSIAN))";
 * ZET_StatusInternal for a tile that cannot be had, reported as ZET_StatusBadArgument "(image->tileInfo->tileData == 0)". */
ZET_API int32_t zetNoiseImage(ZetImage* image, const ZetNoiseParam* noiseParam);

/* The header of a device-independent bitmap, as published. Where the platform declares it itself, that declaration is
 * used; a program that brings its own defines ZETPXL_NO_BITMAPINFOHEADER before it includes this header. */
typedef struct tagBITMAPINFOHEADER BITMAPINFOHEADER;
#if !defined(_WIN32) && !defined(ZETPXL_NO_BITMAPINFOHEADER)
struct tagBITMAPINFOHEADER {
    uint32_t biSize;        /* 40 */
    int32_t biWidth;        /* pixels, at least 1 */
    int32_t biHeight;       /* rows: positive, stored bottom to top; negative, stored top to bottom */
    uint16_t biPlanes;      /* 1 */
    uint16_t biBitCount;    /* 1, 4, 8, 16, 24 or 32 */
    uint32_t biCompression; /* 0 BI_RGB, 1 BI_RLE8, 2 BI_RLE4, 3 BI_BITFIELDS */
    uint32_t biSizeImage;   /* read for RLE only: bytes of the stream, 0 where not known */
    int32_t biXPelsPerMeter;
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed; /* entries of the colour table; 0 is the default of the bit count */
    uint32_t biClrImportant;
};
#endif

/* Turns a DIB in memory (header; colour table of 4-byte entries blue, green, red, reserved, or the three masks red,
 * green, blue of BI_BITFIELDS; rows of a multiple of 4 bytes) into an image. The DIB may lie at any address.
 *
 *   bits  condition                  *cloneData  image
 *   1     grey table                 0           1U, "GRAY" "G"
 *   4     grey table                 1           8U, "GRAY" "G"
 *   8     grey table, not BI_RLE8    0           8U, "GRAY" "G", the indices as they are
 *   8     grey table, BI_RLE8        1           8U, "GRAY" "G"
 *   1, 4, 8  other table             1           8U, "RGB" "BGR"
 *   16                               1           8U, "RGB" "BGR"
 *   24                               0           8U, "RGB" "BGR"
 *   32    BI_BITFIELDS               1           8U, "RGBA" "BGRA", alphaChannel 4
 *   32    other                      0           8U, "RGBA" "BGRA", alphaChannel 4, the reserved byte as alpha
 *
 * With *cloneData 0 the image is interleaved, `align` 4, and its imageData points into the DIB, which must outlive it
 * and is written by whoever writes the image. With *cloneData 1 it is planar, `align` 32, and owns its data. Rows keep
 * their order in memory; `origin` is 1 for rows stored bottom to top, else 0. Release either with
 * zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA), which leaves the DIB alone.
 *
 * A grey table has at least two entries, in each red, green and blue alike and equal to i * 255 / (entries - 1); a table
 * of one entry is never grey. Converted grey is (54 red + 183 green + 18 blue) >> 8: white becomes 254. Fields of 16 and
 * 32 bits are shifted to 8 bits, their low bits not filled: 31 of 5 bits becomes 248. A field is the run of set bits from
 * the lowest one of its mask; a mask of 0 gives the value 0. Alpha of BI_BITFIELDS is what lies above the topmost field,
 * or the whole word's top 8 bits where nothing does.
 *
 * A DIB may come from anywhere. Its length is not known here, so the caller answers for header, table and rows being
 * there; everything else is checked. A palette index behind the table gives black. An RLE stream must end with its
 * end-of-bitmap command; biSizeImage, where it is not 0, bounds it. Pixels that a delta passes over are index 0. Sizes
 * that overflow are refused before anything is allocated.
 *
 * Refusals, in this order, ZET_StatusBadArgument and null: "( dib == 0 )", "( cloneData == 0 )",
 * "( dib->biSize != sizeof(BITMAPINFOHEADER) )", "(dib->biPlanes != 1)", a biCompression above 3
 * "(dib->biCompression != 0) && (dib->biCompression != 1) && (dib->biCompression != 2) && (dib->biCompression != 3)",
 * "(dib->biBitCount != 8) && (dib->biCompression == 1)", "(dib->biBitCount != 4) && (dib->biCompression == 2)",
 * "(dib->biHeight < 0) && ( (dib->biCompression == 1) || (dib->biCompression == 2) )", "(dib->biClrUsed > 0x8000)",
 * "( dib->biBitCount==8 && dib->biClrUsed>256 )", "( dib->biBitCount==4 && dib->biClrUsed>16 )",
 * "dib->biBitCount is bad". From here on *cloneData is written. A width below 1, a height of 0 or one without a
 * magnitude in 32 bits, and sizes past 2147483647 bytes: ZET_StatusNoMemory "Not enough memory to allocate header for
 * destination image", behind the report of zetCreateImageHeader. ZET_StatusNoMemory "Not enough memory to allocate data
 * for destination image", behind that of zetAllocateImage.
 *
 * Failures that still give the image, its pixels unset: a negative status left from before; an RLE stream that cannot be
 * decoded, which reports ZET_StatusBadArgument "Incorrect format of BI_RLE8 DIB (mismatch biWidth)", "(mismatch
 * biHeight)", "(bad Delta command)" or "(mismatch biHeight or biWidth)" (BI_RLE4 alike; the last one also for a stream
 * that passes its bound), or ZET_StatusNoMemory "Not enough memory to decompress BI_RLE8 DIB at DIB", and then
 * ZET_StatusInternal "Impossible to decompress RLE DIB". Ask zetGetErrStatus.
 *
 * Cost: shared images cost a header; RLE takes a block of one plane of the DIB for the time of the call. */
ZET_API ZetImage* zetTranslateDIB(const BITMAPINFOHEADER* dib, int32_t* cloneData);

#ifdef __cplusplus
}
#endif

#endif
