/** \file zetpxl.h
 * \brief zetpxl: image-processing operations on plain records.
 *
 * Rules common to all operations, told once. A docstring below says only what is its own.
 *
 * \par Pixels and coordinates
 * Pixel (x, y) is column x, row y, both from 0; integer coordinates lie on pixel centres, and nowhere is there a
 * half-pixel shift. Row 0 is the first row in memory, whatever `origin` says: only zetPutPixel and zetTranslateDIB give
 * `origin` a meaning. In 1U images the leftmost pixel is the most significant bit of its byte.
 *
 * \par Region
 * An operation works on the rectangle of the image's `roi`, cut at the right and bottom edge, or on the whole image
 * without one. With several images the smallest width and the smallest height count, and pixel (i, j) of one region
 * pairs with pixel (i, j) of the other; nothing is scaled. A region that lies outside its image is no failure: nothing
 * happens and nothing is reported.
 *
 * \par Channels
 * `roi->coi` above 0 selects that one channel, the alpha channel included. `coi` 0, or no region, selects all channels
 * but the alpha channel.
 *
 * \par Mask
 * A mask is a valid 1U image in one block. A pixel takes part if the mask's bit at the same offset of the mask's own
 * region is 1; the mask's region also limits the size. A mask's own mask is checked and otherwise ignored.
 *
 * \par Tiles
 * An image with `tileInfo` hands out its pixels through the tile callback: one call before a tile is read or written,
 * one to release it. A fetch that leaves `tileData` null has failed and gets no release. Two calls must not work at one
 * time on images that share a tile record.
 *
 * \par Borders
 * `borderMode` and `borderConst` hold one word a side (top, bottom, left, right) and say what lies outside the image,
 * for a row a b c d: constant kk|abcd|kk, replicate aa|abcd|dd, reflect ba|abcd|dc, wrap cd|abcd|ab. At a corner the
 * top or bottom side decides, unless an operation says otherwise.
 *
 * \par Arithmetic
 * Integer results saturate at the limits of the depth where an operation says so; what divides or converts truncates
 * toward zero unless an operation says otherwise. Results are the same to the bit on every processor and build.
 *
 * \par In place
 * Where source and destination may be one record the docstring says so. Two records whose pixels overlap at different
 * positions are not protected.
 *
 * \par Failures
 * A failed check is stored as the calling thread's status, passed to its report callback with the words given here, and
 * ends the call with nothing written. THE DEFAULTS END THE PROCESS: a new thread has mode ZET_ErrorModeLeaf and
 * zetNulDevReport, which exits silently with code 1 at the first failure. A program that wants to see its errors calls
 * zetRedirectError(zetStdErrReport) and zetSetErrMode(ZET_ErrorModeParent) in each thread. The status is sticky:
 * success does not clear it, and several operations stop when they find an old negative status; clear it with
 * zetSetErrStatus(0). "Incorrect Image" means that an image record failed its check, and the status says which field; a
 * null image fails it too, with ZET_StatusNullImage.
 *
 * \par Lists of refusals
 * They stand in the order of the checks. A line gives the status, the words in quotes, and what they mean where the
 * words do not say it. "Each reported" marks checks that are all made before the call ends.
 *
 * \par Threads
 * Status, mode and report callback belong to the thread; nothing else is kept between calls. Any thread may call
 * anything. An image must not be used by a second thread while an operation works on it.
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

/** \defgroup status Status and reports
 * What a thread knows of failures, and who is told of them.
 * \{ */

/** Status codes. A failing mask gives the status of its own failure minus 100, once more for a mask's mask. */
enum {
    ZET_StatusOk = 0,                   /**< nothing failed since the status was cleared */
    ZET_StatusBacktrace = -1,           /**< reported by a caller of a failed step; never replaces the stored status */
    ZET_StatusError = -2,               /**< a failure without a status of its own, most often of a tile */
    ZET_StatusInternal = -3,            /**< a step inside failed */
    ZET_StatusNoMemory = -4,            /**< memory cannot be had */
    ZET_StatusBadArgument = -5,         /**< an argument, or two that do not go together */
    ZET_StatusUnsupported = -6,         /**< a function that is not supported; no operation reports it */
    ZET_StatusNoConvergence = -7,       /**< an iteration without an end; no operation reports it */
    ZET_StatusAutotrace = -8,           /**< the application's own; never replaces the stored status */
    ZET_StatusNullImage = -9,           /**< no image */
    ZET_StatusBadImageSize = -10,       /**< width or height below 1, or more data than 2147483647 bytes */
    ZET_StatusBadRoiOffset = -11,       /**< a region's offset below 0 */
    ZET_StatusNoImageData = -12,        /**< neither pixel data nor tiles, or both */
    ZET_StatusBadWidthStep = -13,       /**< a row step below 1 */
    ZET_StatusBadColorModel = -14,      /**< no colour model or channel sequence */
    ZET_StatusBadChannels = -15,        /**< fewer channels than 1, or a number that does not fit */
    ZET_StatusBadChannels1U = -16,      /**< 1U with other than one channel */
    ZET_StatusBadDepth = -17,           /**< no depth, or one that the operation does not take */
    ZET_StatusBadAlpha = -18,           /**< alpha is not the last channel */
    ZET_StatusBadOrder = -19,           /**< a data order other than 0 and 1, or two that differ */
    ZET_StatusBadOrigin = -20,          /**< an origin other than 0 and 1, or two that differ */
    ZET_StatusBadAlign = -21,           /**< an alignment other than 4, 8, 16 and 32 */
    ZET_StatusNoTileCallback = -22,     /**< a tile record without a callback */
    ZET_StatusBadTileSize = -23,        /**< a tile's side is no positive multiple of 8 */
    ZET_StatusBadCoi = -24,             /**< a channel of interest that is not there */
    ZET_StatusBadRoiSize = -25,         /**< a region narrower or lower than 1 */
    ZET_StatusMaskTiled = -26,          /**< a mask in tiles */
    ZET_StatusNullPointer = -27,        /**< a null pointer; no operation reports it */
    ZET_StatusBadVectorLength = -28,    /**< a vector's length; no operation reports it */
    ZET_StatusBadFilter = -29,          /**< a filter record; no operation reports it */
    ZET_StatusBadTransformKernel = -30, /**< a transform kernel; no operation reports it */
    ZET_StatusBadFilterOffset = -31     /**< a filter record; no operation reports it */
};

/** Error modes of a thread. */
enum {
    ZET_ErrorModeLeaf = 0,   /**< a report ends the process (the box reporter asks whether to); the default */
    ZET_ErrorModeParent = 1, /**< a report is shown and the call returns to its caller */
    ZET_ErrorModeSilent = 2  /**< reports do nothing */
};

/** A report callback. Runs on the thread that failed. Its result becomes the result of zetError.
 * \param status    status of the failure, below 0
 * \param funcName  name of the reporting operation
 * \param context   text of the failed condition or a fixed message
 * \param fileName  name of the reporting source without its extension
 * \param line      source line
 * \return any value
 */
typedef int32_t (*ZetErrorCallback)(int32_t status, const char* funcName, const char* context, const char* fileName,
                                    int32_t line);

/** What library this is. Its texts are constant. */
typedef struct ZetLibVersion {
    int32_t major;           /**< first number of the version */
    int32_t minor;           /**< second number */
    int32_t build;           /**< third number */
    const char* libraryName; /**< the library's name */
    const char* versionText; /**< name and version, to be shown */
    const char* buildText;   /**< what build this is */
    const char* dateText;    /**< when it was made */
    const char* toolText;    /**< with what it was compiled */
} ZetLibVersion;

/** Gives the calling thread's stored status.
 * \return a ZET_Status..., or whatever was stored; 0 in a new thread
 */
ZET_API int32_t zetGetErrStatus(void);

/** Stores any value as the calling thread's status, without a report.
 * \param status  any value; 0 clears what a failure left
 */
ZET_API void zetSetErrStatus(int32_t status);

/** Gives the calling thread's error mode.
 * \return a ZET_ErrorMode..., or whatever was stored; ZET_ErrorModeLeaf in a new thread
 */
ZET_API int32_t zetGetErrMode(void);

/** Stores any value as the calling thread's error mode. A value that is no mode acts as ZET_ErrorModeParent in the null
 * and stream reporters; the box reporter then shows no box.
 * \param mode  a ZET_ErrorMode...; any other value is stored too
 */
ZET_API void zetSetErrMode(int32_t mode);

/** Installs a report callback for the calling thread.
 * \param callback  the callback, or null for zetNulDevReport
 * \return the callback before
 */
ZET_API ZetErrorCallback zetRedirectError(ZetErrorCallback callback);

/** The one entry of all reports. Stores `status`, unless it is -1 or -8, then calls the thread's callback with the five
 * arguments unchanged. Status 0 is stored and reported to nobody.
 * \param status    any value
 * \param funcName  name of the reporting operation, or null
 * \param context   what failed, or null
 * \param fileName  name of the reporting source, or null
 * \param line      source line
 * \return the callback's result; 0 for status 0
 */
ZET_API int32_t zetError(int32_t status, const char* funcName, const char* context, const char* fileName, int32_t line);

/** Gives the text of a status.
 * \param status  any value
 * \return a text owned by the library; "Unknown error or status code" for a value without one
 */
ZET_API const char* zetErrorStr(int32_t status);

/** Stock reporter: prints nothing. In ZET_ErrorModeLeaf it ends the process with exit(1).
 * \param status    status of the failure
 * \param funcName  not looked at
 * \param context   not looked at
 * \param fileName  not looked at
 * \param line      not looked at
 * \return `status`
 */
ZET_API int32_t zetNulDevReport(int32_t status, const char* funcName, const char* context, const char* fileName,
                                int32_t line);

/** Stock reporter: writes the report to the standard error stream. In ZET_ErrorModeLeaf it then ends the process with
 * exit(1), in ZET_ErrorModeSilent it writes nothing.
 * \param status    status of the failure
 * \param funcName  name of the reporting operation; null prints as "<unknown>"
 * \param context   what failed
 * \param fileName  name of the reporting source; null prints as "<unknown>" with a `line` above 0
 * \param line      source line
 * \return `status`
 */
ZET_API int32_t zetStdErrReport(int32_t status, const char* funcName, const char* context, const char* fileName,
                                int32_t line);

/** Stock reporter: shows the report in a box and asks. The question is whether to go on (ZET_ErrorModeParent) or to end
 * the process (ZET_ErrorModeLeaf); other modes show nothing. Without a window system it asks on the controlling
 * terminal if the process is in its foreground group; otherwise the text goes to the standard error stream and the
 * answer is to go on. The text is as long as it needs to be; when memory for it cannot be had, nothing is shown.
 * \param status    status of the failure
 * \param funcName  name of the reporting operation
 * \param context   what failed
 * \param fileName  name of the reporting source
 * \param line      source line
 * \return `status`
 */
ZET_API int32_t zetGuiBoxReport(int32_t status, const char* funcName, const char* context, const char* fileName,
                                int32_t line);

/** Gives the version of the library.
 * \return the constant version record
 */
ZET_API const ZetLibVersion* zetGetLibVersion(void);

/** \} */

/* ---- Images ------------------------------------------------------------------------------------------------ */

/** \defgroup images Images
 * Records of images, regions and tiles: made, filled and released.
 * \{ */

/** \name Depths
 * The two-power bits of a sample, with the top bit set where it is signed. `depth & 0x7FFFFFFF` gives the bits of a
 * sample.
 * \{ */
#define ZET_DEPTH_SIGN 0x80000000u /**< the bit of signed depths */
#define ZET_DEPTH_1U 1u            /**< 1 bit, one channel */
#define ZET_DEPTH_8U 8u            /**< 0 to 255 */
#define ZET_DEPTH_16U 16u          /**< 0 to 65535 */
#define ZET_DEPTH_32F 32u          /**< single precision */
#define ZET_DEPTH_8S 0x80000008u   /**< -128 to 127 */
#define ZET_DEPTH_16S 0x80000010u  /**< -32768 to 32767 */
#define ZET_DEPTH_32S 0x80000020u  /**< -2147483648 to 2147483647 */
/** \} */

/** Border sides, as flags of zetSetBorderMode; the side's index in `borderMode` is the flag's bit number. */
enum {
    ZET_SIDE_TOP = 1,    /**< above row 0 */
    ZET_SIDE_BOTTOM = 2, /**< below the last row */
    ZET_SIDE_LEFT = 4,   /**< left of column 0 */
    ZET_SIDE_RIGHT = 8   /**< right of the last column */
};

/** Border modes; consumers look at the two lowest bits. */
enum {
    ZET_BORDER_CONSTANT = 0,  /**< kk|abcd|kk */
    ZET_BORDER_REPLICATE = 1, /**< aa|abcd|dd */
    ZET_BORDER_REFLECT = 2,   /**< ba|abcd|dc */
    ZET_BORDER_WRAP = 3       /**< cd|abcd|ab */
};

/** Fourth argument of the tile callback. */
enum {
    ZET_TILE_READ = 1,   /**< the tile will be read */
    ZET_TILE_WRITE = 2,  /**< the tile will be written, and may be read */
    ZET_TILE_RELEASE = 4 /**< the library has done with it */
};

/** Flags of zetDeallocate. */
enum {
    ZET_IMAGE_HEADER = 1, /**< the record itself */
    ZET_IMAGE_DATA = 2,   /**< pixel data, where the library owns it */
    ZET_IMAGE_ROI = 4,    /**< the region */
    ZET_IMAGE_TILE = 8,   /**< the tile record */
    ZET_IMAGE_MASK = 16   /**< the mask with all its parts */
};

/** Image record, told below. */
typedef struct ZetImage ZetImage;

/** Region of interest. May reach past the image's right and bottom edge. */
typedef struct ZetROI {
    int32_t coi;     /**< 0: all channels; 1 to nChannels: that channel */
    int32_t xOffset; /**< left column, at least 0 */
    int32_t yOffset; /**< top row, at least 0 */
    int32_t width;   /**< columns, at least 1 */
    int32_t height;  /**< rows, at least 1 */
} ZetROI;

/** The tile callback puts the address of tile (xIndex, yIndex) into image->tileInfo->tileData, or null if it cannot.
 * \param image   the application's record or, in operations that work on copies of it, such a copy with the same tile
 *                record
 * \param xIndex  column of the tile, from 0, in tiles
 * \param yIndex  row of the tile, from 0, in tiles
 * \param mode    ZET_TILE_READ, ZET_TILE_WRITE or ZET_TILE_RELEASE
 */
typedef void (*ZetTileCallback)(ZetImage* image, int32_t xIndex, int32_t yIndex, int32_t mode);

/** Tiles of an image. A tile holds width x height pixels in the image's depth, channels and data order, rows padded to
 * the image's `align`, one plane after the other if planar; it is always whole, also where it reaches past the image.
 * Tile (0, 0) starts at the image's top left corner. */
typedef struct ZetTileInfo {
    ZetTileCallback callBack; /**< not null */
    void* id;                 /**< the application's word, never read by the library */
    void* tileData;           /**< set by the callback */
    int32_t width;            /**< pixels, a positive multiple of 8 */
    int32_t height;           /**< pixels, a positive multiple of 8 */
} ZetTileInfo;

/** Image record. Pixel (x, y), channel c (from 0), with b bytes a sample, lies at
 * \verbatim
   interleaved: imageData + y * widthStep + (x * nChannels + c) * b
   planar:      imageData + c * height * widthStep + y * widthStep + x * b
   1U:          bit 7 - (x & 7) of the byte at imageData + y * widthStep + (x >> 3)
   \endverbatim
 * Exactly one of imageData and tileInfo is set. */
struct ZetImage {
    int32_t headerSize;     /**< bytes of this record */
    int32_t headerId;       /**< 0 */
    int32_t nChannels;      /**< at least 1; 1 for 1U */
    int32_t alphaChannel;   /**< 0, or nChannels: alpha is the last channel */
    uint32_t depth;         /**< ZET_DEPTH_... */
    char colorModel[4];     /**< four characters, no terminator */
    char channelSeq[4];     /**< four characters, no terminator */
    int32_t dataOrder;      /**< 0 pixel-interleaved, 1 planar */
    int32_t origin;         /**< 0 or 1; see zetPutPixel */
    int32_t align;          /**< 4, 8, 16 or 32 bytes */
    int32_t width;          /**< pixels, at least 1 */
    int32_t height;         /**< pixels, at least 1 */
    ZetROI* roi;            /**< or null */
    ZetImage* maskImage;    /**< or null */
    void* imageTag;         /**< the application's word */
    ZetTileInfo* tileInfo;  /**< or null */
    int32_t imageSize;      /**< bytes of pixel data */
    void* imageData;        /**< first byte of pixel data; null for a tiled image */
    int32_t widthStep;      /**< bytes from row to row */
    int32_t borderMode[4];  /**< ZET_BORDER_... of top, bottom, left, right */
    int32_t borderConst[4]; /**< constant of each side */
    void* imageDataBase;    /**< block behind imageData, null when the library does not own it */
};

/** Makes an image record without pixel data. All borders are constant 0. `widthStep` and `imageSize` are worked out for
 * tiled images too, which store 2147483647 where a word does not fit. A chain of masks is followed 16 deep; one more is
 * refused as a mask of wrong depth.
 * \param nChannels     channels with alpha, at least 1; 1 for 1U
 * \param alphaChannel  0, or `nChannels`
 * \param depth         ZET_DEPTH_...
 * \param colorModel    text of at least four characters, such as "RGB" with its terminator; null is a wrong field
 * \param channelSeq    text of at least four characters; null is a wrong field
 * \param dataOrder     0 pixel-interleaved, 1 planar
 * \param origin        0 or 1; see zetPutPixel
 * \param align         bytes that a row is padded to a multiple of: 4, 8, 16 or 32
 * \param width         pixels, at least 1
 * \param height        pixels, at least 1
 * \param roi           region, or null; not looked at
 * \param maskImage     mask, or null; checked
 * \param imageTag      the application's word
 * \param tileInfo      tile record, or null; not looked at
 * \return the record, to be released with zetDeallocate(image, ZET_IMAGE_HEADER); null on failure
 * \par Refusals
 * - the status of the first wrong field: "Incorrect data-ins"
 * - ZET_StatusBadImageSize: "Incorrect data-ins", an untiled image whose row or data passes 2147483647 bytes
 * - null without a report when memory cannot be had
 */
ZET_API ZetImage* zetCreateImageHeader(int32_t nChannels, int32_t alphaChannel, uint32_t depth, const char* colorModel,
                                       const char* channelSeq, int32_t dataOrder, int32_t origin, int32_t align,
                                       int32_t width, int32_t height, ZetROI* roi, ZetImage* maskImage, void* imageTag,
                                       ZetTileInfo* tileInfo);

/** Gives an untiled image of integer depth its pixel data. Works out widthStep and imageSize afresh. The record is
 * unchanged on failure, but for imageDataBase when memory cannot be had.
 * \param image      an image without data and tiles; null is refused
 * \param doFill     not 0: all bytes, padding included, are filled
 * \param fillValue  what with, cut to the sample's bits and not clamped (1U: its lowest bit)
 * \par Refusals
 * - ZET_StatusBadArgument: "( image == ((void *)0) )"
 * - ZET_StatusBadArgument: "( image->imageData != ((void *)0) )"
 * - ZET_StatusBadArgument: "( image->tileInfo != ((void *)0) )"
 * - ZET_StatusBadArgument: "( image->depth == 32 )"
 * - the status of a wrong field: "Incorrect data-ins"
 * - ZET_StatusNoMemory: "for allocate image data"
 */
ZET_API void zetAllocateImage(ZetImage* image, int32_t doFill, int32_t fillValue);

/** Gives an untiled image of depth 32F its pixel data, as zetAllocateImage does for the others.
 * \param image      an image without data and tiles; null is refused
 * \param doFill     not 0: all samples are filled
 * \param fillValue  what with
 * \par Refusals
 * - those of zetAllocateImage, with "( image->depth != 32 )" for any other depth
 */
ZET_API void zetAllocateImageFP(ZetImage* image, int32_t doFill, float fillValue);

/** Releases the parts of an image named by flags. Their order is region, mask (with its header, data, region and tile
 * record), tile record, data, header. Region, tile record and header must be blocks of the library's allocator
 * (zetCreateROI, zetCreateImageHeader); data is freed only if imageDataBase is set.
 * \param image  the image; null is ignored
 * \param flags  ZET_IMAGE_... added up
 */
ZET_API void zetDeallocate(ZetImage* image, int32_t flags);

/** Makes a region, its values unchecked.
 * \param coi      0, or a channel from 1
 * \param xOffset  left column
 * \param yOffset  top row
 * \param width    columns
 * \param height   rows
 * \return the region, to be released with zetDeleteROI; null when memory cannot be had
 */
ZET_API ZetROI* zetCreateROI(int32_t coi, int32_t xOffset, int32_t yOffset, int32_t width, int32_t height);

/** Releases a region or any other block of the library's allocator.
 * \param roi  the block; null is ignored
 */
ZET_API void zetDeleteROI(void* roi);

/** Makes a new image in one block with the same header fields, region, border words and pixels. Mask, tile record and
 * tag are left out. The pixels of a tiled image are not fetched: its clone's data is uninitialised. The copy is bounded
 * by the smaller imageSize of the two.
 * \param image  the image
 * \return the clone, to be released with zetDeallocate(clone, 7); null on failure
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusNoMemory: "Not enough memory to allocate header for clone image", behind the report of the step that
 *   failed
 * - ZET_StatusNoMemory: "Not enough memory to allocate roi for clone image"
 * - ZET_StatusNoMemory: "Not enough memory to allocate imageData for clone image", behind the report of the step that
 *   failed
 */
ZET_API ZetImage* zetCloneImage(const ZetImage* image);

/** Sets border mode and constant of some sides.
 * \param image     the image; null is ignored
 * \param mode      ZET_BORDER_..., not checked
 * \param sides     ZET_SIDE_... added up
 * \param constVal  the constant, clamped to the image's depth (32S and 32F: stored as it is; 32F borders use its value
 *                  as a float)
 */
ZET_API void zetSetBorderMode(ZetImage* image, int32_t mode, int32_t sides, int32_t constVal);

/** \} */

/* ---- Pixels ------------------------------------------------------------------------------------------------ */

/** \defgroup pixels Pixels
 * Single pixels, fills, copies and sums.
 * \{ */

/** Writes one pixel, all channels with alpha. Coordinates are the image's own: with `origin` 1 row 0 is the last row in
 * memory. Region, coi and mask are ignored.
 * \param img    image of any depth
 * \param x      column, 0 to width - 1
 * \param y      row, 0 to height - 1
 * \param pixel  nChannels samples of the image's depth, for 1U one byte whose bit 0 counts; copied as they stand; not
 *               null
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "((x>img->width-1) || (x<0))"
 * - ZET_StatusBadArgument: "((y>img->height-1) || (y<0))"
 * - ZET_StatusError: "Error get tile to write", a tile that cannot be had: nothing written, no release
 */
ZET_API void zetPutPixel(ZetImage* img, int32_t x, int32_t y, const void* pixel);

/** Fills the region of an image of any depth but 32F. A 1U image under a mask inverts the mask's bits and restores them
 * during the call, so that mask must not be shared with another thread meanwhile; an old negative status then gives a
 * Backtrace report with "" behind the work.
 * \image html set.png "a disc as the mask"
 * \param dstImage   the image
 * \param fillValue  clamped to the depth: 1U 0..1, 8U 0..255, 8S -128..127, 16U 0..65535, 16S -32768..32767
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadDepth: "You should use zetSetFP for this image"
 * - ZET_StatusError: "Error get tile to write", a tile that cannot be had: tiles before it stay written
 */
ZET_API void zetSet(ZetImage* dstImage, int32_t fillValue);

/** Fills the region of a 32F image with a bit pattern. The image's depth is changed for the time of the call.
 * \param dstImage   the image
 * \param fillValue  its bits become each sample's
 * \par Refusals
 * - ZET_StatusBadArgument: "dstImage==0"
 * - ZET_StatusBadDepth: "You should use zetSet for this image"
 * - those of zetSet, in its name, followed by a Backtrace report, which an old negative status gives too
 */
ZET_API void zetSetFP(ZetImage* dstImage, float fillValue);

/** Copies the region of one image into the region of another of the same depth, by bit pattern. The images need not
 * have the same channels but as many selected ones, taken in order. With masks on both images the AND of both counts,
 * each from its own region. Tiles are walked in the destination's grid, or in the source's if only that is tiled.
 * Fields `maskImage` of both records and of the mask change during a 1U copy under a mask, so all must be writable.
 * Records that share overlapping pixels get no guarantee. One record as source and destination is left alone.
 * \image html copy.png "another picture, copied through a disc"
 * \param srcImage  source
 * \param dstImage  destination
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "srcImage->depth != dstImage->depth", each reported with the next two
 * - ZET_StatusBadArgument: "srcImage->origin != dstImage->origin"
 * - ZET_StatusBadArgument: "srcImage->dataOrder != dstImage->dataOrder", 1U and one-channel images excepted
 * - an old negative status ends the call without a report
 * - ZET_StatusBadArgument: "Number of processed channels of srcImage != Number of processed channels of dstImage"
 * - ZET_StatusError: "Error get tile to read", "Error get tile to write"; tiles before it stay copied
 * - Backtrace with "" behind a failed step's own report
 */
ZET_API void zetCopy(ZetImage* srcImage, ZetImage* dstImage);

/** Adds the regions of two images into a third, element by element. The images have one depth, data order and number of
 * selected channels. 8U, 8S, 16U, 16S and 32S saturate; 32F is rounded once and has no limit; 1U is OR, which then
 * reports as zetOr and asks for no data order. Any of the three may be one record. A pixel takes part if the bits of
 * all masks of the three images are set. Tiled images of any tile sizes are walked in lock step, at most one tile of
 * each held at a time; a source that is the destination's record is asked for once, for writing; after a failed fetch
 * the tiles then held are not released and rectangles already processed stay. Whole images of one layout are processed
 * with the padding of their rows.
 * \param srcImageA  one addend
 * \param srcImageB  the other
 * \param dstImage   the sum
 * \par Refusals
 * - ZET_StatusBadArgument: "srcImageA==0"
 * - ZET_StatusBadArgument: "(srcImageA->depth != dstImage->depth)", and so for B
 * - ZET_StatusBadArgument: "(srcImageA->dataOrder != dstImage->dataOrder)", and so for B
 * - ZET_StatusBadArgument: "(nChSrcA != nChDst)", and so for B
 * - ZET_StatusBadArgument: "(srcImageA->tileInfo->tileData == 0)", a failed fetch, and so for B and dstImage
 * - "Incorrect Image"
 * - ZET_StatusNoMemory: "Out of memory", when the masks cannot be joined
 */
ZET_API void zetAdd(ZetImage* srcImageA, ZetImage* srcImageB, ZetImage* dstImage);

/** \} */

/* ---- Filters ----------------------------------------------------------------------------------------------- */

/** \defgroup filters Filters
 * Each result comes from the pixels around its place.
 * \{ */

/** A convolution kernel. Weights and anchor are stored turned through 180 degrees; make records with
 * zetCreateConvKernel only. A kernel is read-only after that, and any number of threads may use it. */
typedef struct ZetConvKernel {
    int32_t nCols;   /**< columns */
    int32_t nRows;   /**< rows */
    int32_t anchorX; /**< nCols - 1 - the caller's */
    int32_t anchorY; /**< nRows - 1 - the caller's */
    int32_t* values; /**< the caller's weights in reversed order, owned by the record */
    int32_t nShift;  /**< bits that a result is shifted right by */
} ZetConvKernel;

/** How zetConvolve2D combines the results of several kernels. */
enum {
    ZET_COMBINE_SUM = 0,              /**< the sum; one kernel: the result */
    ZET_COMBINE_SUM_SQUARES = 1,      /**< the sum of squares; one kernel without a shift: the square */
    ZET_COMBINE_ROOT_SUM_SQUARES = 2, /**< the root of that sum; one kernel without a shift: the absolute value */
    ZET_COMBINE_MAX = 3,              /**< the largest; one kernel: the result */
    ZET_COMBINE_MIN = 4               /**< the smallest; one kernel: the result */
};

/** Makes a kernel of nCols x nRows whole weights. The weight at (row r, column c) multiplies the source sample at
 * (x + anchorX - c, y + anchorY - r) for the destination pixel (x, y): a true convolution.
 * \param nCols    columns, at least 1
 * \param nRows    rows, at least 1
 * \param anchorX  column of the anchor, 0 to nCols - 1
 * \param anchorY  row of the anchor, 0 to nRows - 1
 * \param values   nCols * nRows weights, row by row, top row first; copied
 * \param nShift   bits, modulo 32, that each result is shifted right by (toward minus infinity) before kernels are
 *                 combined; 0 leaves it as it is
 * \return the kernel, to be released with zetDeleteConvKernel; null on failure
 * \par Refusals
 * - ZET_StatusBadArgument: "(values == 0)"
 * - ZET_StatusBadArgument: "(nRows<=0 || nCols<=0)"
 * - ZET_StatusBadArgument: "(anchorX<0 ||anchorY<0 ||nRows<=anchorY || nCols<=anchorX)"
 * - ZET_StatusNoMemory: "Allocation failure", also when the weights pass 2147483647 bytes
 */
ZET_API ZetConvKernel* zetCreateConvKernel(int32_t nCols, int32_t nRows, int32_t anchorX, int32_t anchorY,
                                           const int32_t* values, int32_t nShift);

/** Releases a kernel.
 * \param kernel  the kernel; null is refused
 * \par Refusals
 * - ZET_StatusBadArgument: "kernel==0"
 * - ZET_StatusBadArgument: "kernel->values==0"
 */
ZET_API void zetDeleteConvKernel(ZetConvKernel* kernel);

/** Filters the region of one image into that of another with 1 to 10 kernels. Their results are combined by `method`.
 * All depths but 32F; the images have one depth and data order and as many channels without alpha, or a coi each.
 * Samples are handled in single precision and stored rounded to nearest, ties to even, and saturated; a result above
 * 0.5 sets a bit of 1U. Only pixels outside the image are made up, by the source's borders with constants limited to
 * the depth; neighbours outside the region are real pixels. A destination pixel is written where the masks of both
 * images are set; source pixels under clear bits are read as usual. Source and destination may be one record, with the
 * result of a separate destination. Tile callbacks are handed copies of the records with the same tile record.
 * \image html convolve.png "two edge kernels, combined by ZET_COMBINE_ROOT_SUM_SQUARES"
 * \param srcImage  source
 * \param dstImage  destination
 * \param kernel    the kernels; not null
 * \param nKernels  how many, 1 to 10
 * \param method    ZET_COMBINE_...; for one kernel other values mean the result unchanged
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadRoiOffset: "Bad ROI offsets", a region that begins outside its image
 * - ZET_StatusBadArgument: "kernel==0"
 * - ZET_StatusBadArgument: "(nKernels<=0 || nKernels>10)"
 * - ZET_StatusBadArgument: "Inadmissible method"
 * - ZET_StatusBadArgument: "kernel[i]==0"
 * - ZET_StatusBadArgument: "Bad kernel structure"
 * - ZET_StatusBadArgument: "Uncompatible images"
 * - ZET_StatusBadArgument: "32F images can be processed only with FP kernel"
 * - ZET_StatusBadArgument: "No channel to operate"
 * - ZET_StatusBadArgument: "One of the COI is not defined"
 * - ZET_StatusNoMemory: "Allocation failure", also for a source tile that cannot be had; pixels already written stay
 * - ZET_StatusError: "Error get tile to write"; pixels already written stay
 */
ZET_API void zetConvolve2D(ZetImage* srcImage, ZetImage* dstImage, const ZetConvKernel* const* kernel, int32_t nKernels,
                           int32_t method);

/** Replaces each pixel of the region by the mean of a rectangle around it. All depths; the images have one depth and as
 * many channels without alpha, or a coi each. The mean is the sum times the reciprocal of the count, which is rounded
 * to single precision, and truncated toward zero: a constant image may come out one lower. 1U gives 1 from one half on.
 * 32S and 32F keep column sums in single and row sums in double precision, each step rounded toward zero. Pixels
 * outside the image follow the source's borders; those outside the region are real pixels. A pixel is written where all
 * masks are set. Source and destination may be one record, tiled or not, with the result of a separate destination. A
 * rectangle of 1 by 1 is zetCopy. The cost of a pixel does not depend on the rectangle's size (running sums).
 * \image html blur.png "9 by 9"
 * \param srcImage  source
 * \param dstImage  destination
 * \param nCols     columns of the rectangle, at least 1
 * \param nRows     rows of the rectangle, at least 1
 * \param anchorX   columns to the left of the pixel that belong to it, 0 to nCols - 1
 * \param anchorY   rows above the pixel that belong to it, 0 to nRows - 1
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "(srcImage->depth!=dstImage->depth)"
 * - ZET_StatusBadOrder: "(srcImage->dataOrder!=dstImage->dataOrder)", unless both images have one channel
 * - ZET_StatusBadArgument: "(nRows<0||nCols<0)"
 * - ZET_StatusBadArgument: "(anchorX<0||anchorY<0)"
 * - ZET_StatusBadArgument: "(anchorX>=nCols||anchorY>=nRows)"
 * - ZET_StatusBadAlpha: "bad alpha channel's number", also of a mask
 * - ZET_StatusBadChannels: "bad channel's number"
 * - ZET_StatusNoMemory: "Allocation failure", also for a source tile that cannot be had and for a rectangle of more
 *   than 2147483647 pixels; pieces already written stay
 * - ZET_StatusError: "Error get tile to write", "Error get tile to read"; pieces already written stay
 * - Backtrace with "" behind an inner step's report or an old negative status; pieces already written stay
 */
ZET_API void zetBlur(ZetImage* srcImage, ZetImage* dstImage, int32_t nCols, int32_t nRows, int32_t anchorX,
                     int32_t anchorY);

/** Replaces each sample of the region by the median of a window of its channel. Of an even number of samples the upper
 * of the two middle ones counts. All depths but 32F; on 1U set bits are counted. The images have one depth, data order
 * (1U excepted), channel count and alpha channel. Pixels outside the image follow the source's borders; those outside
 * the region are real pixels. A pixel is written where the masks of both images are set. Destination tiles outside the
 * region are not asked for. Small windows are sorted by exchanges over many pixels at once, large ones use sliding
 * histograms.
 * \image html pepper.png "single wrong pixels"
 * \image html median.png "their median, 3 by 3"
 * \param srcImage  source; not the destination's record
 * \param dstImage  destination
 * \param nCols     columns of the window, at least 1
 * \param nRows     rows of the window, at least 1
 * \param anchorX   columns to the left of the pixel that belong to it, 0 to nCols - 1
 * \param anchorY   rows above the pixel that belong to it, 0 to nRows - 1
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "(anchorX>=nCols)||(anchorX<0)"
 * - ZET_StatusBadArgument: "(anchorY>=nRows)||(anchorY<0)"
 * - ZET_StatusBadArgument: "(srcImage==dstImage)"
 * - ZET_StatusBadArgument: "srcImage->depth!=dstImage->depth"
 * - ZET_StatusBadArgument: "srcImage->depth==32"
 * - ZET_StatusBadArgument: "srcImage->nChannels!=dstImage->nChannels"
 * - ZET_StatusBadArgument: "srcImage->alphaChannel!=dstImage->alphaChannel"
 * - ZET_StatusBadArgument: "srcImage->dataOrder!=dstImage->dataOrder"
 * - ZET_StatusBadArgument: "Interst Channel of input Image more number of channels.", each reported with the next two
 * - ZET_StatusBadArgument: "Interst Channel of output Image more number of channels."
 * - ZET_StatusBadArgument: "Number of interset channel input and output Image is not equal."
 * - an old negative status ends the call without a report
 * - a tile or scratch memory that cannot be had ends the work, or leaves a piece as it was, silently
 */
ZET_API void zetMedianFilter(ZetImage* srcImage, ZetImage* dstImage, int32_t nCols, int32_t nRows, int32_t anchorX,
                             int32_t anchorY);

/** Fixed filters; weights in window position, the anchor at the centre. */
enum {
    ZET_FIXED_GRAD_X_FLAT = 0,   /**< 1 0 -1 / 1 0 -1 / 1 0 -1 */
    ZET_FIXED_GRAD_Y_FLAT = 1,   /**< -1 -1 -1 / 0 0 0 / 1 1 1 */
    ZET_FIXED_GRAD_X_PEAKED = 2, /**< 1 0 -1 / 2 0 -2 / 1 0 -1 */
    ZET_FIXED_GRAD_Y_PEAKED = 3, /**< -1 -2 -1 / 0 0 0 / 1 2 1 */
    ZET_FIXED_PEAK_3 = 4,        /**< 8 at the centre, -1 at the other 8 */
    ZET_FIXED_RING_5 = 5,        /**< -1 -3 -4 -3 -1 / -3 0 6 0 -3 / -4 6 20 6 -4 / -3 0 6 0 -3 / -1 -3 -4 -3 -1 */
    ZET_FIXED_SMOOTH_3 = 6,      /**< (1 2 1 / 2 4 2 / 1 2 1) / 16 */
    ZET_FIXED_SMOOTH_5 = 7,      /**< (2 7 12 7 2 / 7 31 52 31 7 / 12 52 127 52 12 / 7 31 52 31 7 / 2 7 12 7 2) / 571 */
    ZET_FIXED_PEAK_3B = 8,       /**< as ZET_FIXED_PEAK_3 */
    ZET_FIXED_PEAK_5 = 9,        /**< 24 at the centre, -1 at the other 24 */
    ZET_FIXED_CRISP_3 = 10       /**< (16 at the centre, -1 at the other 8) / 8 */
};

/** Applies a fixed filter to the region, on all depths. 8- and 16-bit images are exact in integers, saturated,
 * divisions rounded to nearest with ties to even; ZET_FIXED_SMOOTH_5, 32S and 32F go in single precision, each stage
 * rounded once, and whole samples are rounded to nearest, ties to even, and saturated. On 1U the gradients and the ring
 * give 1 above 0, the smoothings above about half, the peaks mark set pixels with a clear pixel in their window, and
 * ZET_FIXED_CRISP_3 is zetCopy. Images, borders, masks and tiles as in zetMedianFilter. The floating-point rounding
 * mode is kept; pending floating-point exceptions are cleared.
 * \image html fixed.png "ZET_FIXED_CRISP_3"
 * \param srcImage  source; not the destination's record
 * \param dstImage  destination
 * \param filter    ZET_FIXED_...
 * \return 0, also when there is nothing to do, or what tells the refusal
 * \par Refusals
 * - "Incorrect Image": the result is the stored status
 * - ZET_StatusBadArgument: "(srcImage==dstImage)", result -5
 * - ZET_StatusBadArgument: "srcImage->depth!=dstImage->depth", result -17
 * - ZET_StatusBadArgument: "srcImage->nChannels!=dstImage->nChannels", result -15
 * - ZET_StatusBadArgument: "srcImage->alphaChannel!=dstImage->alphaChannel", result -18
 * - ZET_StatusBadArgument: "srcImage->dataOrder!=dstImage->dataOrder", 1U excepted, result -1
 * - ZET_StatusBadArgument: "Unknow filter.", result -5
 * - ZET_StatusBadCoi: the channel texts of zetMedianFilter, each reported, result -24
 * - an old negative status is the result at once
 * - ZET_StatusNoMemory: "Allocation failure", scratch memory that cannot be had, result 0
 * - a tile or working block that cannot be had: silence, result 0
 */
ZET_API int32_t zetFixedFilter(ZetImage* srcImage, ZetImage* dstImage, int32_t filter);

/** Takes the greatest sample of a square around each pixel (on 1U OR). Morphology goes by a filled square of
 * 2 * nIterations + 1 pixels a side, applied at once. Depths 1U, 8U, 16U. Of what lies outside the region only the
 * frame of one pixel around it counts, replicated outwards; where the frame leaves the image the source's borders make
 * it (corners by the top or bottom side; modes above 3 by their two lowest bits). A pixel is written where the masks of
 * both images are set; a mask keeps no pixel out of a window. Source and destination may be one record, with the result
 * of a separate destination. Rows stream: memory is a ring of rows. Tile callbacks are handed copies of the records
 * with the same tile record. THE STATUS IS CLEARED ON ENTRY.
 * \image html text.png "black text"
 * \image html dilate.png "grown by its white"
 * \param srcImage     source
 * \param dstImage     destination
 * \param nIterations  half-size of the square in pixels, at least 1: a size and not a count
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "Illegal number of iterations", below 1
 * - ZET_StatusBadArgument: "Illegal image depth"
 * - ZET_StatusBadArgument: "SRC and DST depth are different"
 * - ZET_StatusBadArgument: "SRC and DST order are different"
 * - ZET_StatusBadArgument: "SRC and DST orign are different"
 * - ZET_StatusBadArgument: "SRC and DST number of channels are different"
 * - ZET_StatusError: "Error get tile to read", "Error get tile to write"; rows stored before stay
 * - memory that cannot be had: status ZET_StatusNoMemory without a report, nothing written
 */
ZET_API void zetDilate(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);

/** Takes the least sample of a square around each pixel (on 1U AND). All else as in zetDilate.
 * \image html erode.png "black text, thickened"
 * \param srcImage     source
 * \param dstImage     destination
 * \param nIterations  half-size of the square in pixels, at least 1
 * \par Refusals
 * - those of zetDilate
 */
ZET_API void zetErode(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);

/** Erodes and then dilates. The second pass sees the frame around the region unfiltered; all else as in zetDilate.
 * \image html open.png "gaps closed in black text"
 * \param srcImage     source
 * \param dstImage     destination
 * \param nIterations  half-size of the square in pixels, at least 1
 * \par Refusals
 * - those of zetDilate
 */
ZET_API void zetOpen(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);

/** Dilates and then erodes. The second pass sees the frame around the region unfiltered; all else as in zetDilate.
 * \image html close.png "thin black strokes gone"
 * \param srcImage     source
 * \param dstImage     destination
 * \param nIterations  half-size of the square in pixels, at least 1
 * \par Refusals
 * - those of zetDilate
 */
ZET_API void zetClose(ZetImage* srcImage, ZetImage* dstImage, int32_t nIterations);

/** \} */

/* ---- Geometry ---------------------------------------------------------------------------------------------- */

/** \defgroup geometry Geometry
 * Pixels that come from elsewhere, and changes of scale.
 * \{ */

/** Interpolations; the flag is added to one of the first three. */
enum {
    ZET_INTER_NN = 0,          /**< nearest neighbour */
    ZET_INTER_LINEAR = 1,      /**< between two samples an axis */
    ZET_INTER_CUBIC = 2,       /**< cubics through four samples an axis */
    ZET_INTER_SUPER = 3,       /**< area averaging, for changes of scale only */
    ZET_INTER_BLEND_EDGES = 16 /**< flag: softens slanted edges */
};

/** Maps the source region onto the destination by a matrix. Source pixel (x, y) lands at (c0 * x + c1 * y + c2,
 * c3 * x + c4 * y + c5) of the destination, in whole-image coordinates; regions only cut what is made. Only pixels
 * inside the region's image, a parallelogram, are written; a position at most 1e-14 outside a column counts as on it.
 * Depths 1U (nearest neighbour always), 8U, 16U, 32F. ZET_INTER_CUBIC runs cubics through four samples an axis; sources
 * narrower or lower than 4 pixels take ZET_INTER_LINEAR for it, those of one column or row ZET_INTER_NN.
 * ZET_INTER_BLEND_EDGES softens slanted edges. Masks and borders play no part. With tiles on either side the
 * destination is made cell by cell from blocks of the source, whose positions may differ from the direct way in the
 * last bit. Positions that no 32-bit index holds count as outside.
 * \image html warp.png "onto a parallelogram, with soft edges"
 * \param srcImage     source; not the destination's record
 * \param dstImage     destination
 * \param coeffs       the six coefficients c0 to c5; not null
 * \param interpolate  ZET_INTER_NN, ZET_INTER_LINEAR or ZET_INTER_CUBIC, with or without ZET_INTER_BLEND_EDGES
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "srcImage->depth != dstImage->depth", each reported with the next four; then, with an old
 *   negative status too, the call ends
 * - ZET_StatusBadArgument: "srcImage->origin != dstImage->origin"
 * - ZET_StatusBadArgument: "srcImage->dataOrder != dstImage->dataOrder", 1U and one-channel images excepted
 * - ZET_StatusBadArgument: "srcImage->depth & ZET_DEPTH_SIGN"
 * - ZET_StatusBadArgument: "This function is not in-place function"
 * - ZET_StatusBadArgument: "Determinant of transform matrix == 0.0", at most 1e-7
 * - ZET_StatusBadArgument: "Bad rect ROI", as zetGetAffineQuad, a Backtrace behind it
 * - ZET_StatusBadArgument: "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate !=
 *   ZET_INTER_CUBIC"
 * - ZET_StatusBadArgument: "srcImage Rectangle ROI is degenerate to length or point"
 * - ZET_StatusBadArgument: "Number of processed channels of srcImage != Number of processed channels of dstImage"
 * - ZET_StatusError: "Error get tile to write"
 * - Backtrace with "" for source pixels or memory that cannot be had
 */
ZET_API void zetWarpAffine(ZetImage* srcImage, ZetImage* dstImage, const double* coeffs, int32_t interpolate);

/** Gives the matrix that maps the source region onto a parallelogram.
 * \param srcImage  image whose region counts
 * \param coeffs    receives the six coefficients of zetWarpAffine; not null
 * \param quad      x and y of four corners, (x0, y0) to (x3, y3), which take the region's left top, right top, right
 *                  bottom and left bottom pixel; not null
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "Quadrangle is degenerate to triangle or length or point"
 * - ZET_StatusBadArgument: "Quadrangle is concave"
 * - ZET_StatusBadArgument: "Quadrangle is not parallelogram", to 1e-7
 * - ZET_StatusBadArgument: "Bad rect ROI"
 * - ZET_StatusBadArgument: "srcImage Rectangle ROI is degenerate to length or point"
 */
ZET_API void zetGetAffineTransform(const ZetImage* srcImage, double* coeffs, const double* quad);

/** Turns the source region about the image's origin and shifts it. Source pixel (x, y) lands at (cos a * x + sin a * y
 * + xShift, -sin a * x + cos a * y + yShift). A turn of exactly 90, 180 or 270 degrees by whole shifts on untiled
 * images copies pixels as they are, for any `interpolate`; all else is zetWarpAffine. An angle that is no number makes
 * no pixel.
 * \image html rotate.png "30 degrees about the centre"
 * \param srcImage     source; not the destination's record
 * \param dstImage     destination
 * \param angle        degrees, against the clock on a screen whose rows go downward
 * \param xShift       pixels to the right
 * \param yShift       pixels downward
 * \param interpolate  as in zetWarpAffine
 * \par Refusals
 * - those of zetWarpAffine, followed by a Backtrace report with "", which an old negative status gives too
 * - the exact turn reports the checks of zetWarpAffine down to the in-place one, and the number of processed channels,
 *   in its own name
 */
ZET_API void zetRotate(ZetImage* srcImage, ZetImage* dstImage, double angle, double xShift, double yShift,
                       int32_t interpolate);

/** Slants the source region. Source pixel (x, y) lands at (x + xShear * y + xShift, yShear * x + y + yShift).
 * \image html shear.png "0.3 columns a row"
 * \param srcImage     source; not the destination's record
 * \param dstImage     destination
 * \param xShear       columns a row
 * \param yShear       rows a column
 * \param xShift       pixels to the right
 * \param yShift       pixels downward
 * \param interpolate  as in zetWarpAffine
 * \par Refusals
 * - those of zetWarpAffine, followed by a Backtrace report with ""
 */
ZET_API void zetShear(ZetImage* srcImage, ZetImage* dstImage, double xShear, double yShear, double xShift,
                      double yShift, int32_t interpolate);

/** Adds to both shifts what makes zetRotate turn about a point. An angle of 0 changes nothing.
 * \param xCenter  column of the point, in pixels
 * \param yCenter  row of the point, in pixels
 * \param angle    degrees, as in zetRotate
 * \param xShift   is added to; not null
 * \param yShift   is added to; not null
 */
ZET_API void zetGetRotateShift(double xCenter, double yCenter, double angle, double* xShift, double* yShift);

/** Fills the destination region from positions of the source that two maps give. The value of `xMap` and `yMap` at a
 * pixel of their regions is the column and row of the source for that pixel of the destination's region, in whole-image
 * coordinates. A position outside the source's region, or NaN, leaves its pixel as it was. Interpolations, depths and
 * channels as in zetWarpAffine; the flag for edges has no effect. Masks and borders play no part. With tiles a tiled
 * source is held whole, the rest goes tile by tile.
 * \image html remap.png "a swirl"
 * \param srcImage     source; not the destination's record
 * \param xMap         columns in pixels: 32F, one channel, no alpha
 * \param yMap         rows in pixels: 32F, one channel, no alpha
 * \param dstImage     destination
 * \param interpolate  as in zetWarpAffine
 * \par Refusals
 * - those of zetWarpAffine down to the in-place one, with "(srcImage->depth & ZET_DEPTH_SIGN)" for the sign
 * - "xMap->depth != ZET_DEPTH_32F || xMap->nChannels != 1 || xMap->alphaChannel != 0", each reported with those before,
 *   and so for yMap
 * - then the interpolation, the number of processed channels, "Error get tile to write" and Backtrace as there
 */
ZET_API void zetRemap(ZetImage* srcImage, ZetImage* xMap, ZetImage* yMap, ZetImage* dstImage, int32_t interpolate);

/** Shrinks the source region into the destination region, by at most 1 an axis. Column i and row j of the region come
 * from source position (i * xSrc / xDst, j * ySrc / yDst) of the source's region: position 0 is the centre of the first
 * pixel, no half-pixel shift. As many pixels are made as the scaled source region has and the destination's takes; the
 * rest stays. Samples beyond the source's region are read where interpolation reaches them, beyond the image the last
 * ones. ZET_INTER_NN takes the sample below the position, which a factor that is not the reciprocal of a whole number
 * shifts by 0.5; ZET_INTER_LINEAR and ZET_INTER_CUBIC cut fractions off (8U, 16U); ZET_INTER_SUPER averages the area
 * that a pixel covers, rounded. Sources below 4 by 4, results of less than a pixel and, but for areas, two factors that
 * are both reciprocals of whole numbers take ZET_INTER_NN, as does an area larger than the source's tiles. 1U: nearest
 * or area, an area of at least half set bits is 1. Area means of 8U and 16U are not limited to the depth: sums that
 * drift past 65535.5 in long rows of white 16U wrap to 0. Depths 1U, 8U, 16U, 32F; alpha is a channel like others.
 * Masks and borders play no part. With tiles the source is walked tile by tile, with rectangles over several where an
 * interpolation looks ahead.
 * \image html decimate-nn.png "fine rings, halved by ZET_INTER_NN: rings that are not there"
 * \image html decimate-super.png "the same by ZET_INTER_SUPER"
 * \param srcImage     source; not the destination's record
 * \param dstImage     destination
 * \param xDst         numerator of the factor along x, 1 to xSrc
 * \param xSrc         its denominator
 * \param yDst         numerator of the factor along y, 1 to ySrc
 * \param ySrc         its denominator
 * \param interpolate  ZET_INTER_NN, ZET_INTER_LINEAR, ZET_INTER_CUBIC or ZET_INTER_SUPER
 * \par Refusals, in the name "Decimate"
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "srcImage == dstImage", each reported with all up to "yDst > ySrc"; then, with an old
 *   negative status too, the call ends
 * - ZET_StatusBadDepth: "srcImage->depth != dstImage->depth"
 * - ZET_StatusBadDepth: "depth != 1U, 8U, 16U or 32F"
 * - ZET_StatusBadOrigin: "srcImage->origin != dstImage->origin"
 * - ZET_StatusBadOrder: "srcImage->dataOrder != dstImage->dataOrder"
 * - ZET_StatusBadCoi: "srcImage->roi->coi > 0 && dstImage->roi->coi == 0" and the reverse (the other image has more
 *   than one channel)
 * - ZET_StatusBadChannels: "srcImage->nChannels != dstImage->nChannels"
 * - ZET_StatusBadArgument: "interpolate != ZET_INTER_NN, ZET_INTER_LINEAR, ZET_INTER_CUBIC or ZET_INTER_SUPER"
 * - ZET_StatusBadArgument: "xDst <= 0", "xSrc <= 0", "yDst <= 0", "ySrc <= 0"
 * - ZET_StatusBadArgument: "xDst > xSrc", "yDst > ySrc"
 * - ZET_StatusInternal: "srcImage->tileInfo->callBack crash" or "dstImage->tileInfo->callBack crash"; what was made
 *   stays
 * - ZET_StatusNoMemory: "Can't create temporary buffer for interpolate = ZET_INTER_SUPER"; the block at hand stays as
 *   it was
 */
ZET_API void zetDecimate(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
                         int32_t interpolate);

/** Enlarges the source region into the destination region, by at least 1 an axis. The first and last pixels of the two
 * regions meet: positions rise by (source size - 1) / (made size - 1); only ZET_INTER_NN by whole factors repeats each
 * pixel instead. As many pixels are made as the scaled source region has (at least 1) and the destination's takes; the
 * rest stays, and so do pixels under a clear bit of a mask: a mask of the source is scaled with it. Sources of one
 * column or row take ZET_INTER_NN, those below 4 by 4 lines for cubics. Depths 1U (nearest always), 8U and 16U
 * (fractions are cut off, cubics held within the depth), 32F (as it comes). Alpha is left alone unless a coi names it.
 * `origin` and borders play no part. With tiles the destination goes tile by tile, or in blocks of 64 by 64, each from
 * a copy of the rectangle that it reads; the records of images and masks are not changed meanwhile. The interpolation
 * is Newton's through four equally spaced samples.
 * \image html zoom-nn.png "a part five times as large by ZET_INTER_NN"
 * \image html zoom-linear.png "by ZET_INTER_LINEAR"
 * \image html zoom-cubic.png "by ZET_INTER_CUBIC"
 * \param srcImage     source; not the destination's record
 * \param dstImage     destination
 * \param xDst         numerator of the factor along x, at least xSrc
 * \param xSrc         its denominator, at least 1
 * \param yDst         numerator of the factor along y, at least ySrc
 * \param ySrc         its denominator, at least 1
 * \param interpolate  ZET_INTER_NN, ZET_INTER_LINEAR or ZET_INTER_CUBIC
 * \par Refusals
 * - ZET_StatusBadArgument: "xDst < xSrc || yDst < ySrc"
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "interpolate != ZET_INTER_NN && interpolate != ZET_INTER_LINEAR && interpolate !=
 *   ZET_INTER_CUBIC", each reported with the next five; then, with an old negative status too, the call ends
 * - ZET_StatusBadArgument: "srcImage->depth != dstImage->depth"
 * - ZET_StatusBadArgument: "srcImage->depth != ZET_DEPTH_1U && srcImage->depth != ZET_DEPTH_8U && srcImage->depth !=
 *   ZET_DEPTH_16U && srcImage->depth != ZET_DEPTH_32F"
 * - ZET_StatusBadArgument: "srcImage->dataOrder != dstImage->dataOrder"
 * - ZET_StatusBadArgument: "xDst <= 0 || xSrc <= 0"
 * - ZET_StatusBadArgument: "yDst <= 0 || ySrc <= 0"
 * - ZET_StatusBadArgument: "This function isn`t in-plase function"
 * - ZET_StatusError: "srcImage COI != dstImage COI"
 * - ZET_StatusError: "Error get tile to write"
 * - ZET_StatusNoMemory: "Allocation failure", for a scaled mask
 * - Backtrace with "" after a mask that could not be scaled or joined
 * - source pixels that cannot be had end the call without a report
 */
ZET_API void zetZoom(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
                     int32_t interpolate);

/** Changes the scale in either direction, each axis for itself. ZET_INTER_SUPER is zetDecimate, for factors of at most
 * 1; all others go zetZoom's way, up and down.
 * \param srcImage     source; not the destination's record
 * \param dstImage     destination
 * \param xDst         numerator of the factor along x, at least 1
 * \param xSrc         its denominator, at least 1
 * \param yDst         numerator of the factor along y, at least 1
 * \param ySrc         its denominator, at least 1
 * \param interpolate  ZET_INTER_NN, ZET_INTER_LINEAR, ZET_INTER_CUBIC or ZET_INTER_SUPER
 * \par Refusals
 * - ZET_StatusBadArgument: "(xDst > xSrc || yDst > ySrc)", with ZET_INTER_SUPER
 * - those of zetDecimate with ZET_INTER_SUPER, else those of zetZoom in this operation's name
 * - a Backtrace report with "" follows any negative status
 */
ZET_API void zetResize(ZetImage* srcImage, ZetImage* dstImage, int32_t xDst, int32_t xSrc, int32_t yDst, int32_t ySrc,
                       int32_t interpolate);

/** \} */

/* ---- Colour, noise, DIB ------------------------------------------------------------------------------------ */

/** \defgroup colour Colour, noise, DIB
 * Hue, lightness and saturation, noise of two kinds, and device-independent bitmaps.
 * \{ */

/** Converts a whole RGB image to hue, lightness and saturation. The three channels are H, L, S, hue scaled from 0 to
 * 360 degrees to the range of the depth, lightness and saturation as fractions of full scale (32S counts from
 * -2147483648). Depths 8U, 16U, 32S; doubles, results cut toward zero. A fourth channel of the source is ignored, and
 * so are masks. The destination's colorModel and channelSeq become "HLS" for good, also when the depth is then refused.
 * Untiled images are converted over their common size; with tiles the whole destination is, what lies beyond the source
 * following its borders. One record may be both sides. A destination tile that cannot be had ends its row of tiles
 * silently, and the walk if the next row's first one fails too.
 * \image html hls.png "hue turned by 120 degrees on the way back"
 * \param srcImage  source: colour model "RGB", channels "RGB" or "BGR", no region
 * \param dstImage  destination of three channels, no region
 * \par Refusals
 * - "Incorrect Image"
 * - ZET_StatusBadArgument: "colorModel must be RGB instead of <name> "
 * - ZET_StatusBadArgument: "channelSeq must be RGB or BGR instead of <name> "
 * - ZET_StatusBadArgument: "src & dst roi must be NULL"
 * - ZET_StatusBadArgument: "(src->nChannels < 3 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) ||
 *   (src->dataOrder != dst->dataOrder) || (src->origin != dst->origin)"
 * - "Error input depth. 32S,16U,8U are valid now", in the name ownRGB2HLS, once per tile
 * - Backtrace with "" when source pixels cannot be had
 */
ZET_API void zetRGB2HLS(ZetImage* srcImage, ZetImage* dstImage);

/** Converts a whole image of hue, lightness and saturation back to RGB. A saturation of 0 gives the lightness unchanged
 * in all three channels. No name is written. All else as in zetRGB2HLS.
 * \param srcImage  source: colour model and channels "HLS", no region
 * \param dstImage  destination: colour model "RGB", channels "RGB" or "BGR", no region
 * \par Refusals
 * - those of zetRGB2HLS, with the RGB side the destination, and
 * - "src-> colorModel must be HLS instead of <name>"
 * - "src-> channelSeq must be HLS instead of <name>"
 * - the depth in the name ownHLS2RGB
 */
ZET_API void zetHLS2RGB(ZetImage* srcImage, ZetImage* dstImage);

/** Kinds of noise. */
enum {
    ZET_NOISE_UNIFORM = 0, /**< each value of a range as often as any other */
    ZET_NOISE_GAUSSIAN = 1 /**< about a mean, with a standard deviation */
};

/** What noise to add. Integer depths read the integers, 32F the floats, which no init operation sets. */
typedef struct ZetNoiseParam {
    int32_t noise;   /**< ZET_NOISE_... */
    uint32_t seed;   /**< any value */
    int32_t lowInt;  /**< uniform: one end of the range; Gaussian: the mean */
    int32_t highInt; /**< uniform: the other end, which is not reached; Gaussian: the standard deviation */
    float lowFP;     /**< as lowInt, for 32F */
    float highFP;    /**< as highInt, for 32F */
} ZetNoiseParam;

/** Fills the record for uniform noise, but for its floats. Nothing is checked.
 * \param noiseParam  the record; must not be null
 * \param seed        any value
 * \param low         one end of the range
 * \param high        the other end, which is not reached
 */
ZET_API void zetNoiseUniformInit(ZetNoiseParam* noiseParam, uint32_t seed, int32_t low, int32_t high);

/** Fills the record for Gaussian noise, but for its floats. Nothing is checked.
 * \param noiseParam  the record; must not be null
 * \param seed        any value
 * \param mean        mean
 * \param stDev       standard deviation
 */
ZET_API void zetNoiseGaussianInit(ZetNoiseParam* noiseParam, uint32_t seed, int32_t mean, int32_t stDev);

/** Adds noise to the region of an image, in place; all depths but 1U. Integer depths saturate; a uniform range is cut
 * to the width of 8- and 16-bit depths. The same record gives the same noise on every machine: the generator starts
 * afresh from `seed`, and draws are taken plane by plane or pixel by pixel, channel by channel; elements that are
 * masked out take none. A tiled image is walked tile by tile, so its noise differs from that of the same image in one
 * block.
 * \image html noise.png "Gaussian, with a standard deviation of 25"
 * \param image       the image
 * \param noiseParam  what noise; null is refused
 * \return 0, or what tells the refusal: its status, but ZET_StatusInternal for a tile that cannot be had
 * \par Refusals
 * - "Incorrect Image": the result is the status
 * - ZET_StatusBadArgument: "(noiseParam == 0)"
 * - ZET_StatusBadArgument: "(image->depth == 1)"
 * - ZET_StatusBadArgument: "((noiseParam->noise != ZET_NOISE_UNIFORM) && (noiseParam->noise != ZET_NOISE_GAUSSIAN))"
 * - ZET_StatusBadArgument: "(image->tileInfo->tileData == 0)", a tile that cannot be had, result ZET_StatusInternal
 */
ZET_API int32_t zetNoiseImage(ZetImage* image, const ZetNoiseParam* noiseParam);

/** The header of a device-independent bitmap, as published. Where the platform declares it itself, that declaration is
 * used; a program that brings its own defines ZETPXL_NO_BITMAPINFOHEADER before it includes this header. */
typedef struct tagBITMAPINFOHEADER BITMAPINFOHEADER;
#if !defined(_WIN32) && !defined(ZETPXL_NO_BITMAPINFOHEADER)
/** The header of a device-independent bitmap, as published. */
struct tagBITMAPINFOHEADER {
    uint32_t biSize;         /**< 40 */
    int32_t biWidth;         /**< pixels, at least 1 */
    int32_t biHeight;        /**< rows: positive, stored bottom to top; negative, stored top to bottom */
    uint16_t biPlanes;       /**< 1 */
    uint16_t biBitCount;     /**< 1, 4, 8, 16, 24 or 32 */
    uint32_t biCompression;  /**< 0 BI_RGB, 1 BI_RLE8, 2 BI_RLE4, 3 BI_BITFIELDS */
    uint32_t biSizeImage;    /**< read for RLE only: bytes of the stream, 0 where not known */
    int32_t biXPelsPerMeter; /**< not looked at */
    int32_t biYPelsPerMeter; /**< not looked at */
    uint32_t biClrUsed;      /**< entries of the colour table; 0 is the default of the bit count */
    uint32_t biClrImportant; /**< not looked at */
};
#endif

/** Turns a DIB in memory into an image. The DIB is a header; a colour table of 4-byte entries blue, green, red,
 * reserved, or the three masks red, green, blue of BI_BITFIELDS; rows of a multiple of 4 bytes. It may lie at any
 * address.
 * \verbatim
   bits  condition                  *cloneData  image
   1     grey table                 0           1U, "GRAY" "G"
   4     grey table                 1           8U, "GRAY" "G"
   8     grey table, not BI_RLE8    0           8U, "GRAY" "G", the indices as they are
   8     grey table, BI_RLE8        1           8U, "GRAY" "G"
   1, 4, 8  other table             1           8U, "RGB" "BGR"
   16                               1           8U, "RGB" "BGR"
   24                               0           8U, "RGB" "BGR"
   32    BI_BITFIELDS               1           8U, "RGBA" "BGRA", alphaChannel 4
   32    other                      0           8U, "RGBA" "BGRA", alphaChannel 4, the reserved byte as alpha
   \endverbatim
 * With `*cloneData` 0 the image is interleaved, `align` 4, and its imageData points into the DIB, which must outlive it
 * and is written by whoever writes the image. With `*cloneData` 1 it is planar, `align` 32, and owns its data. Rows
 * keep their order in memory; `origin` is 1 for rows stored bottom to top, else 0. Release either with
 * zetDeallocate(image, ZET_IMAGE_HEADER | ZET_IMAGE_DATA), which leaves the DIB alone.
 *
 * A grey table has at least two entries, in each red, green and blue alike and equal to i * 255 / (entries - 1); a
 * table of one entry is never grey. Converted grey is (54 red + 183 green + 18 blue) >> 8: white becomes 254. Fields of
 * 16 and 32 bits are shifted to 8 bits, their low bits not filled: 31 of 5 bits becomes 248. A field is the run of set
 * bits from the lowest one of its mask; a mask of 0 gives the value 0. Alpha of BI_BITFIELDS is what lies above the
 * topmost field, or the whole word's top 8 bits where nothing does.
 *
 * A DIB may come from anywhere. Its length is not known here, so the caller answers for header, table and rows being
 * there; everything else is checked. A palette index behind the table gives black. An RLE stream must end with its
 * end-of-bitmap command; biSizeImage, where it is not 0, bounds it. Pixels that a delta passes over are index 0. Sizes
 * that overflow are refused before anything is allocated.
 *
 * Cost: shared images cost a header; RLE takes a block of one plane of the DIB for the time of the call.
 * \param dib        the DIB; null is refused
 * \param cloneData  receives 0 for an image that shares the DIB's pixels, 1 for one with its own; null is refused
 * \return the image; null on failure
 * \par Refusals
 * - ZET_StatusBadArgument: "( dib == 0 )"
 * - ZET_StatusBadArgument: "( cloneData == 0 )"
 * - ZET_StatusBadArgument: "( dib->biSize != sizeof(BITMAPINFOHEADER) )"
 * - ZET_StatusBadArgument: "(dib->biPlanes != 1)"
 * - ZET_StatusBadArgument: "(dib->biCompression != 0) && (dib->biCompression != 1) && (dib->biCompression != 2) &&
 *   (dib->biCompression != 3)", above 3
 * - ZET_StatusBadArgument: "(dib->biBitCount != 8) && (dib->biCompression == 1)"
 * - ZET_StatusBadArgument: "(dib->biBitCount != 4) && (dib->biCompression == 2)"
 * - ZET_StatusBadArgument: "(dib->biHeight < 0) && ( (dib->biCompression == 1) || (dib->biCompression == 2) )"
 * - ZET_StatusBadArgument: "(dib->biClrUsed > 0x8000)"
 * - ZET_StatusBadArgument: "( dib->biBitCount==8 && dib->biClrUsed>256 )"
 * - ZET_StatusBadArgument: "( dib->biBitCount==4 && dib->biClrUsed>16 )"
 * - ZET_StatusBadArgument: "dib->biBitCount is bad"; from here on `*cloneData` is written
 * - ZET_StatusNoMemory: "Not enough memory to allocate header for destination image", behind the report of
 *   zetCreateImageHeader: a width below 1, a height of 0 or one without a magnitude in 32 bits, sizes past 2147483647
 *   bytes
 * - ZET_StatusNoMemory: "Not enough memory to allocate data for destination image", behind that of zetAllocateImage
 *
 * \par Failures that still give the image, its pixels unset
 * Ask zetGetErrStatus.
 * - a negative status left from before
 * - an RLE stream that cannot be decoded, ZET_StatusBadArgument: "Incorrect format of BI_RLE8 DIB (mismatch biWidth)",
 *   "(mismatch biHeight)", "(bad Delta command)" or "(mismatch biHeight or biWidth)" (BI_RLE4 alike; the last one also
 *   for a stream that passes its bound), and then ZET_StatusInternal: "Impossible to decompress RLE DIB"
 * - memory for it, ZET_StatusNoMemory: "Not enough memory to decompress BI_RLE8 DIB at DIB", and then the same
 */
ZET_API ZetImage* zetTranslateDIB(const BITMAPINFOHEADER* dib, int32_t* cloneData);

/** \} */

#ifdef __cplusplus
}
#endif

#endif
