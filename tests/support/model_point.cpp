#include "tests/support/model_point.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

struct Source {
    ZetImage* image;
    const char* depthWords;
    const char* orderWords;
    const char* channelWords;
    const char* tileWords;
};

using Element = std::function<std::uint32_t(std::uint32_t depth, std::uint32_t a, std::uint32_t b)>;

struct Point {
    const char* name;
    const char* fileName;
    std::vector<Source> sources;
    ZetImage* dst;
    Element element;
    bool integersOnly;

    JoinedMask mask{};
    bool hasAlpha = false;

    bool alias(const Source& source) const { return source.image == dst; }
};

constexpr const char* kDstTile = "(dstImage->tileInfo->tileData == 0)";

std::vector<Source> twoSources(ZetImage* a, ZetImage* b) {
    return {{a, "(srcImageA->depth != dstImage->depth)", "(srcImageA->dataOrder != dstImage->dataOrder)",
             "(nChSrcA != nChDst)", "(srcImageA->tileInfo->tileData == 0)"},
            {b, "(srcImageB->depth != dstImage->depth)", "(srcImageB->dataOrder != dstImage->dataOrder)",
             "(nChSrcB != nChDst)", "(srcImageB->tileInfo->tileData == 0)"}};
}

std::vector<Source> oneSource(ZetImage* a) {
    return {{a, "(srcImage->depth != dstImage->depth)", "(srcImage->dataOrder != dstImage->dataOrder)",
             "(nChSrc != nChDst)", "(srcImage->tileInfo->tileData == 0)"}};
}

// ---- elements

std::uint32_t saturate(std::int64_t value, std::int64_t low, std::int64_t high) {
    return static_cast<std::uint32_t>(std::min(std::max(value, low), high));
}

std::uint32_t addFloats(std::uint32_t a, std::uint32_t b) {
    float left = 0, right = 0;
    std::memcpy(&left, &a, 4);
    std::memcpy(&right, &b, 4);
    const auto sum = static_cast<float>(static_cast<double>(left) + static_cast<double>(right));
    std::uint32_t pattern = 0;
    std::memcpy(&pattern, &sum, 4);
    return pattern;
}

std::uint32_t addElements(std::uint32_t depth, std::uint32_t a, std::uint32_t b) {
    const std::int64_t unsignedSum = std::int64_t{a} + b;
    switch (depth) {
        case ZET_DEPTH_8U:
            return saturate(unsignedSum, 0, 255);
        case ZET_DEPTH_16U:
            return saturate(unsignedSum, 0, 65535);
        case ZET_DEPTH_8S:
            return saturate(static_cast<std::int8_t>(a) + static_cast<std::int8_t>(b), -128, 127);
        case ZET_DEPTH_16S:
            return saturate(static_cast<std::int16_t>(a) + static_cast<std::int16_t>(b), -32768, 32767);
        case ZET_DEPTH_32S:
            return saturate(std::int64_t{static_cast<std::int32_t>(a)} + static_cast<std::int32_t>(b), INT32_MIN,
                            INT32_MAX);
        default:
            return addFloats(a, b);
    }
}

// ---- checks

bool refuseMismatch(Model& model, const Point& op) {
    const auto refuse = [&](const char* words) {
        model.report(ZET_StatusBadArgument, op.name, words, op.fileName);
        return true;
    };
    for (const Source& s : op.sources)
        if (s.image->depth != op.dst->depth) return refuse(s.depthWords);
    for (const Source& s : op.sources)
        if (op.dst->depth != ZET_DEPTH_1U && s.image->dataOrder != op.dst->dataOrder) return refuse(s.orderWords);
    for (const Source& s : op.sources)
        if (modelChannels(*s.image).count != modelChannels(*op.dst).count) return refuse(s.channelWords);
    return false;
}

bool refuse(Model& model, Point& op) {
    std::vector<ZetImage*> images;
    for (const Source& s : op.sources) images.push_back(s.image);
    images.push_back(op.dst);
    for (ZetImage* image : images) {
        if (!model.checkImage(image)) continue;
        model.reportIncorrectImage(op.name, op.fileName);
        return true;
    }
    if (refuseMismatch(model, op)) return true;
    std::vector<const ZetImage*> masks;
    for (const ZetImage* image : images) {
        masks.push_back(image->maskImage);
        op.hasAlpha = op.hasAlpha || image->alphaChannel != 0;
    }
    op.mask = modelJoinMasks(masks);
    if (op.mask.kind == 3) return true;
    if (!op.integersOnly || op.dst->depth != ZET_DEPTH_32F) return false;
    model.report(ZET_StatusBadArgument, op.name, "This function does not support depth 32F", op.fileName);
    return true;
}

// ---- one rectangle of the common area

// What the operation works in at that moment: the whole image, or the tile that it holds.
struct View {
    std::uint8_t* data;
    std::int64_t width, height, step, size, align;
    bool whole;  // every pixel of it, in a way that lets it be taken as one run
};

View blockView(const ZetImage& image, bool asRegion, const Area& part) {
    const bool covered = part.x == 0 && part.y == 0 && part.width >= image.width && part.height >= image.height;
    const bool whole = asRegion ? covered && image.nChannels == 1 && coiOf(image) > 0 : true;
    return {static_cast<std::uint8_t*>(image.imageData),
            image.width,
            image.height,
            image.widthStep,
            image.imageSize,
            image.align,
            whole};
}

View tileView(const ZetImage& image, const Area& part) {
    const ZetTileInfo& tiles = *image.tileInfo;
    const std::int64_t step = plainRowBytes(image.dataOrder, image.depth, image.align, image.nChannels, tiles.width);
    const bool covered = part.x % tiles.width == 0 && part.y % tiles.height == 0 && part.width >= tiles.width &&
                         part.height >= tiles.height;
    auto* data = static_cast<TestImage*>(tiles.id)->tileAt(part.x / tiles.width, part.y / tiles.height)->data();
    return {data,
            tiles.width,
            tiles.height,
            step,
            step * tiles.height * (image.dataOrder == 1 ? image.nChannels : 1),
            image.align,
            covered && image.nChannels == 1 && coiOf(image) > 0};
}

bool sameBlock(const std::vector<View>& views, bool hasAlpha) {
    const View& first = views[0];
    return !hasAlpha && std::all_of(views.begin(), views.end(), [&](const View& v) {
        return v.whole && v.size == first.size && v.width == first.width && v.height == first.height &&
               v.align == first.align && v.step == first.step;
    });
}

// The whole of both memories, padding included.
void flatRun(const Point& op, const std::vector<View>& views) {
    const bool bits = op.dst->depth == ZET_DEPTH_1U;
    const std::size_t bytes = bits ? 1 : (op.dst->depth & 0x7FFFFFFFu) / 8;
    const View& dst = views.back();
    for (std::size_t at = 0; at + bytes <= static_cast<std::size_t>(dst.size); at += bytes) {
        std::uint32_t values[2] = {0, 0};
        for (std::size_t s = 0; s + 1 < views.size(); ++s) std::memcpy(&values[s], views[s].data + at, bytes);
        const std::uint32_t result = op.element(op.dst->depth, values[0], values[1]);
        std::memcpy(dst.data + at, &result, bytes);
    }
}

// `x`, `y` count from the corners of the regions.
void pixel(const Point& op, std::int32_t x, std::int32_t y) {
    if (op.mask.inForce() && !op.mask.at(x, y)) return;
    const ChannelRange target = modelChannels(*op.dst);
    for (std::int32_t c = 0; c < target.count; ++c) {
        std::uint32_t values[2] = {0, 0};
        for (std::size_t s = 0; s < op.sources.size(); ++s) {
            const ZetImage& image = *op.sources[s].image;
            const Area area = modelRegion(image);
            values[s] = getSample(image, modelChannels(image).first + c, area.y + y, area.x + x);
        }
        const Area area = modelRegion(*op.dst);
        putSample(*op.dst, target.first + c, area.y + y, area.x + x, op.element(op.dst->depth, values[0], values[1]));
    }
}

void rectangle(const Point& op, const Area& part) {
    for (std::int32_t y = 0; y < part.height; ++y)
        for (std::int32_t x = 0; x < part.width; ++x) pixel(op, part.x + x, part.y + y);
}

Area moved(const ZetImage& image, const Area& part) {
    const Area area = modelRegion(image);
    return {area.x + part.x, area.y + part.y, part.width, part.height};
}

bool runTileFlat(const Point& op, const Area& part) {
    if (op.mask.inForce()) return false;
    std::vector<View> views;
    const auto add = [&](const ZetImage& image) {
        const Area own = moved(image, part);
        views.push_back(tiled(image) ? tileView(image, own) : blockView(image, true, own));
    };
    for (const Source& s : op.sources) add(*s.image);
    add(*op.dst);
    if (!sameBlock(views, op.hasAlpha)) return false;
    flatRun(op, views);
    return true;
}

// ---- the two ways through the common area

Area commonArea(const Point& op) {
    Area common = modelRegion(*op.dst);
    const auto shrink = [&](const Area& area) {
        common.width = std::min(common.width, area.width);
        common.height = std::min(common.height, area.height);
    };
    for (const Source& s : op.sources) shrink(modelRegion(*s.image));
    if (op.mask.inForce()) shrink(op.mask.area());
    return {0, 0, common.width, common.height};
}

void withoutTiles(const Point& op) {
    std::vector<View> views;
    const auto add = [&](const ZetImage& image) {
        views.push_back(blockView(image, image.roi != nullptr, modelRegion(image)));
    };
    for (const Source& s : op.sources) add(*s.image);
    add(*op.dst);
    if (!op.mask.inForce() && sameBlock(views, op.hasAlpha)) return flatRun(op, views);
    const Area common = commonArea(op);
    if (!common.empty()) rectangle(op, common);
}

struct Walker {
    ZetImage* image;
    std::int32_t mode;
    const char* words;
    std::int32_t x0, y0;

    std::int32_t col(std::int32_t x) const { return (x0 + x) / image->tileInfo->width; }
    std::int32_t row(std::int32_t y) const { return (y0 + y) / image->tileInfo->height; }
    std::int32_t leftX(std::int32_t x) const { return (col(x) + 1) * image->tileInfo->width - x0 - x; }
    std::int32_t leftY(std::int32_t y) const { return (row(y) + 1) * image->tileInfo->height - y0 - y; }
    bool entersTile(std::int32_t x) const { return (x0 + x) % image->tileInfo->width == 0; }
};

// The images that hand out tiles, in the order in which they are asked.
std::vector<Walker> walkersOf(const Point& op) {
    std::vector<Walker> walkers;
    const auto add = [&](ZetImage* image, std::int32_t mode, const char* words) {
        const Area area = modelRegion(*image);
        if (tiled(*image)) walkers.push_back({image, mode, words, area.x, area.y});
    };
    for (const Source& s : op.sources)
        if (!op.alias(s)) add(s.image, ZET_TILE_READ, s.tileWords);
    add(op.dst, ZET_TILE_WRITE, kDstTile);
    return walkers;
}

bool fetch(Model& model, const Point& op, const Walker& w, std::int32_t x, std::int32_t y) {
    if (modelFetch(*w.image, w.col(x), w.row(y), w.mode)) return true;
    model.report(ZET_StatusBadArgument, op.name, w.words, op.fileName);
    return false;
}

bool walkBand(Model& model, const Point& op, const std::vector<Walker>& walkers, const Area& band) {
    for (std::int32_t x = 0; x < band.width;) {
        std::int32_t width = band.width - x;
        for (const Walker& w : walkers) {
            if (x > 0 && w.entersTile(x)) {
                modelRelease(*w.image, w.col(x - 1), w.row(band.y));
                if (!fetch(model, op, w, x, band.y)) return false;
            }
            width = std::min(width, w.leftX(x));
        }
        const Area part{x, band.y, width, band.height};
        if (!runTileFlat(op, part)) rectangle(op, part);
        x += width;
    }
    for (const Walker& w : walkers) modelRelease(*w.image, w.col(band.width - 1), w.row(band.y));
    return true;
}

void overTiles(Model& model, const Point& op) {
    const Area common = commonArea(op);
    if (common.empty()) return;
    const std::vector<Walker> walkers = walkersOf(op);
    for (std::int32_t y = 0; y < common.height;) {
        std::int32_t height = common.height - y;
        for (const Walker& w : walkers) {
            if (!fetch(model, op, w, 0, y)) return;
            height = std::min(height, w.leftY(y));
        }
        if (!walkBand(model, op, walkers, {0, y, common.width, height})) return;
        y += height;
    }
}

void run(Model& model, Point op) {
    if (refuse(model, op)) return;
    bool anyTiles = tiled(*op.dst);
    for (const Source& s : op.sources) anyTiles = anyTiles || tiled(*s.image);
    anyTiles ? overTiles(model, op) : withoutTiles(op);
}

}  // namespace

bool JoinedMask::at(std::int32_t x, std::int32_t y) const {
    return given ? maskBit(*given, x, y) : bits[static_cast<std::size_t>(y * width + x)];
}

JoinedMask modelJoinMasks(const std::vector<const ZetImage*>& masks) {
    std::vector<const ZetImage*> present;
    for (const ZetImage* mask : masks)
        if (mask) present.push_back(mask);
    JoinedMask joined;
    if (present.size() < 2) {
        joined.given = present.empty() ? nullptr : present[0];
        return joined;
    }
    joined.width = joined.height = INT32_MAX;
    for (const ZetImage* mask : present) {
        joined.width = std::min(joined.width, modelRegion(*mask).width);
        joined.height = std::min(joined.height, modelRegion(*mask).height);
    }
    joined.kind = joined.width < 1 || joined.height < 1 ? 3 : 1;
    for (std::int32_t y = 0; joined.kind == 1 && y < joined.height; ++y)
        for (std::int32_t x = 0; x < joined.width; ++x)
            joined.bits.push_back(std::all_of(present.begin(), present.end(),
                                              [&](const ZetImage* mask) { return maskBit(*mask, x, y); }));
    return joined;
}

void modelAdd(Model& model, ZetImage* a, ZetImage* b, ZetImage* dst) {
    if (!a) return model.report(ZET_StatusBadArgument, "zetAdd", "srcImageA==0", "zetadd");
    if (a->depth == ZET_DEPTH_1U) return modelOr(model, a, b, dst);
    run(model, {"zetAdd", "zetadd", twoSources(a, b), dst, &addElements, false});
}

void modelOr(Model& model, ZetImage* a, ZetImage* b, ZetImage* dst) {
    const auto element = [](std::uint32_t, std::uint32_t l, std::uint32_t r) { return l | r; };
    run(model, {"zetOr", "zetor", twoSources(a, b), dst, element, true});
}

void modelAnd(Model& model, ZetImage* a, ZetImage* b, ZetImage* dst) {
    const auto element = [](std::uint32_t, std::uint32_t l, std::uint32_t r) { return l & r; };
    run(model, {"zetAnd", "zetand", twoSources(a, b), dst, element, true});
}

void modelXorS(Model& model, ZetImage* src, ZetImage* dst, std::int32_t value) {
    const auto pattern = static_cast<std::uint32_t>(value);
    const auto element = [pattern](std::uint32_t depth, std::uint32_t l, std::uint32_t) {
        return l ^ (depth == ZET_DEPTH_1U ? (pattern & 1u ? 0xFFFFFFFFu : 0u) : pattern);
    };
    run(model, {"zetXorS", "zetxors", oneSource(src), dst, element, true});
}

}  // namespace zetpxl::test
