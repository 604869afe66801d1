// Programs and the library agree on records by their bytes: the layout must never move.
#include <cstddef>

#include "zetpxl.h"

namespace {

constexpr bool wide = sizeof(void*) == 8;

static_assert(sizeof(ZetImage) == (wide ? 144 : 112));
static_assert(offsetof(ZetImage, headerSize) == 0 && offsetof(ZetImage, headerId) == 4);
static_assert(offsetof(ZetImage, nChannels) == 8 && offsetof(ZetImage, alphaChannel) == 12);
static_assert(offsetof(ZetImage, depth) == 16 && offsetof(ZetImage, colorModel) == 20);
static_assert(offsetof(ZetImage, channelSeq) == 24 && offsetof(ZetImage, dataOrder) == 28);
static_assert(offsetof(ZetImage, origin) == 32 && offsetof(ZetImage, align) == 36);
static_assert(offsetof(ZetImage, width) == 40 && offsetof(ZetImage, height) == 44);
static_assert(offsetof(ZetImage, roi) == 48);
static_assert(offsetof(ZetImage, maskImage) == (wide ? 56 : 52));
static_assert(offsetof(ZetImage, imageTag) == (wide ? 64 : 56));
static_assert(offsetof(ZetImage, tileInfo) == (wide ? 72 : 60));
static_assert(offsetof(ZetImage, imageSize) == (wide ? 80 : 64));
static_assert(offsetof(ZetImage, imageData) == (wide ? 88 : 68));
static_assert(offsetof(ZetImage, widthStep) == (wide ? 96 : 72));
static_assert(offsetof(ZetImage, borderMode) == (wide ? 100 : 76));
static_assert(offsetof(ZetImage, borderConst) == (wide ? 116 : 92));
static_assert(offsetof(ZetImage, imageDataBase) == (wide ? 136 : 108));

static_assert(sizeof(ZetROI) == 20 && offsetof(ZetROI, coi) == 0 && offsetof(ZetROI, xOffset) == 4);
static_assert(offsetof(ZetROI, yOffset) == 8 && offsetof(ZetROI, width) == 12 && offsetof(ZetROI, height) == 16);

static_assert(sizeof(ZetTileInfo) == (wide ? 32 : 20) && offsetof(ZetTileInfo, callBack) == 0);
static_assert(offsetof(ZetTileInfo, id) == (wide ? 8 : 4) && offsetof(ZetTileInfo, tileData) == (wide ? 16 : 8));
static_assert(offsetof(ZetTileInfo, width) == (wide ? 24 : 12) && offsetof(ZetTileInfo, height) == (wide ? 28 : 16));

static_assert(sizeof(ZetLibVersion) == (wide ? 56 : 32) && offsetof(ZetLibVersion, libraryName) == (wide ? 16 : 12));

}  // namespace
