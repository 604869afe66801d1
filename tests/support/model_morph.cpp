#include "tests/support/model_morph.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "tests/support/model_patch.h"
#include "tests/support/model_point.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

constexpr std::array<const char*, 4> kNames{"zetDilate", "zetErode", "zetOpen", "zetClose"};

struct Op {
    Model& model;
    Morph kind;
    std::int32_t n;
    bool inPlace;
    // Tile callbacks see these two.
    ZetImage src, dst;
    Area from{}, to{};
    std::optional<Plane> mask{};
    Patch frame{};  // the region and one pixel around it

    bool twoPasses() const { return kind == Morph::kOpen || kind == Morph::kClose; }
    bool dilatesFirst() const { return kind == Morph::kDilate || kind == Morph::kClose; }
};

void say(const Op& op, std::int32_t status, const char* words) {
    op.model.report(status, kNames[static_cast<std::size_t>(op.kind)], words, "ownMorph");
}

// ---- checks and regions

const char* refusalOf(const ZetImage& src, const ZetImage& dst, std::int32_t n) {
    if (n < 1) return "Illegal number of iterations";
    const bool known = src.depth == ZET_DEPTH_1U || src.depth == ZET_DEPTH_8U || src.depth == ZET_DEPTH_16U;
    if (!known) return "Illegal image depth";
    if (src.depth != dst.depth) return "SRC and DST depth are different";
    if (src.dataOrder != dst.dataOrder) return "SRC and DST order are different";
    if (src.origin != dst.origin) return "SRC and DST orign are different";
    const bool alike = modelChannels(src).count == modelChannels(dst).count;
    return alike ? nullptr : "SRC and DST number of channels are different";
}

void takeRegions(Op& op) {
    op.from = modelRegion(op.src);
    op.to = modelRegion(op.dst);
    std::int32_t width = std::min(op.from.width, op.to.width);
    std::int32_t height = std::min(op.from.height, op.to.height);
    for (const ZetImage* image : {&op.src, &op.dst}) {
        if (!image->maskImage) continue;
        width = std::min(width, modelRegion(*image->maskImage).width);
        height = std::min(height, modelRegion(*image->maskImage).height);
    }
    op.from.width = op.to.width = width;
    op.from.height = op.to.height = height;
}

void takeMask(Op& op) {
    if (!op.src.maskImage && !op.dst.maskImage) return;
    op.mask.emplace(op.to.width, op.to.height, 1, 0, 8);
    std::fill(op.mask->bytes.begin(), op.mask->bytes.end(), std::uint8_t{255});
    ZetImage* plane = &op.mask->image;
    for (ZetImage* mask : {op.src.maskImage, op.dst.maskImage})
        if (mask) modelAnd(op.model, mask, plane, plane);
}

// A bit border is set by any constant but 0.
void takeFrame(Op& op) {
    ZetImage image = op.src;
    if (image.depth == ZET_DEPTH_1U)
        for (std::int32_t& word : image.borderConst) word = word != 0;
    op.frame = takePatch(image, {op.from.x - 1, op.from.y - 1, op.from.width + 2, op.from.height + 2});
}

// ---- pixels, by row and column of the region

using Plane2D = std::function<std::uint32_t(std::int32_t r, std::int32_t c)>;

std::uint32_t paddedSample(const Op& op, std::int32_t channel, std::int32_t r, std::int32_t c) {
    return op.frame.at(channel, op.from.y + std::clamp(r, -1, op.from.height),
                       op.from.x + std::clamp(c, -1, op.from.width));
}

std::uint32_t extreme(std::int32_t n, bool greatest, const Plane2D& plane, std::int32_t r, std::int32_t c) {
    std::uint32_t best = plane(r, c);
    for (std::int32_t dy = -n; dy <= n; ++dy)
        for (std::int32_t dx = -n; dx <= n; ++dx) {
            const std::uint32_t value = plane(r + dy, c + dx);
            best = greatest ? std::max(best, value) : std::min(best, value);
        }
    return best;
}

// What the second pass sees: the first one's results with the frame's own pixels around them.
std::vector<std::uint32_t> betweenPasses(const Op& op, const Plane2D& padded) {
    const std::int32_t n = op.n;
    std::vector<std::uint32_t> values;
    for (std::int32_t r = -n; r < op.from.height + n; ++r)
        for (std::int32_t c = -n; c < op.from.width + n; ++c) {
            const bool filtered = r >= 0 && r < std::max(op.from.height, n) && c >= 0 && c < op.from.width;
            values.push_back(filtered ? extreme(n, op.dilatesFirst(), padded, r, c) : padded(r, c));
        }
    return values;
}

std::vector<std::uint32_t> resultsOf(const Op& op, std::int32_t channel) {
    const Plane2D padded = [&](std::int32_t r, std::int32_t c) { return paddedSample(op, channel, r, c); };
    std::vector<std::uint32_t> between;
    Plane2D last = padded;
    if (op.twoPasses()) {
        between = betweenPasses(op, padded);
        last = [&](std::int32_t r, std::int32_t c) {
            return between[static_cast<std::size_t>((r + op.n) * (op.from.width + 2 * op.n) + c + op.n)];
        };
    }
    const bool greatest = op.dilatesFirst() != op.twoPasses();
    std::vector<std::uint32_t> results;
    for (std::int32_t r = 0; r < op.from.height; ++r)
        for (std::int32_t c = 0; c < op.from.width; ++c) results.push_back(extreme(op.n, greatest, last, r, c));
    return results;
}

// ---- tile calls

bool readTile(Op& op, ZetImage& image, std::int32_t col, std::int32_t row) {
    if (!modelFetch(image, col, row, ZET_TILE_READ)) {
        say(op, ZET_StatusError, "Error get tile to read");
        return false;
    }
    modelRelease(image, col, row);
    return true;
}

bool readRun(Op& op, ZetImage& image, std::int32_t x, std::int32_t y, std::int32_t count) {
    const ZetTileInfo& tiles = *image.tileInfo;
    for (std::int32_t col = x / tiles.width; col <= (x + count - 1) / tiles.width; ++col)
        if (!readTile(op, image, col, y / tiles.height)) return false;
    return true;
}

std::int32_t moved(std::int32_t mode, std::int32_t v, std::int32_t size) {
    if (mode == ZET_BORDER_REPLICATE) return std::clamp(v, 0, size - 1);
    if (mode == ZET_BORDER_WRAP) return (v % size + size) % size;
    const std::int32_t p = (v % (2 * size) + 2 * size) % (2 * size);
    return p < size ? p : 2 * size - 1 - p;
}

std::int32_t sideOf(const ZetImage& image, std::int32_t x, std::int32_t y) {
    if (y < 0) return 0;
    if (y >= image.height) return 1;
    return x < 0 ? 2 : x >= image.width ? 3 : -1;
}

// A row that may reach one pixel past the image on either side.
bool readRow(Op& op, ZetImage& image, std::int32_t x, std::int32_t y, std::int32_t count) {
    if (!tiled(image)) return true;
    const std::int32_t end = x + count;
    while (x < end) {
        const std::int32_t next = x < 0 ? 0 : x < image.width ? std::min(end, image.width) : end;
        const std::int32_t side = sideOf(image, x, y);
        const std::int32_t mode = side < 0 ? ZET_BORDER_REPLICATE : image.borderMode[side] & 3;
        const bool asks = mode != ZET_BORDER_CONSTANT;
        if (asks && !readRun(op, image, moved(mode, x, image.width), moved(mode, y, image.height), next - x))
            return false;
        x = next;
    }
    return true;
}

// Rows that wrap come from above: in place they are taken before anything is written.
bool takesRowBelowFirst(const Op& op) {
    return op.inPlace && (op.src.borderMode[1] & 3) == ZET_BORDER_WRAP && op.from.y + op.from.height >= op.src.height;
}

bool readPadded(Op& op, std::int32_t r) {
    if (r >= op.from.height && takesRowBelowFirst(op)) return true;
    const std::int32_t y = op.from.y + std::clamp(r, -1, op.from.height);
    return readRow(op, op.src, op.from.x - 1, y, op.from.width + 2);
}

void storePixel(const Op& op, std::int32_t channel, std::int32_t y, std::int32_t x, std::uint32_t value) {
    if (!op.mask || maskBit(op.mask->image, x, y)) putSample(op.dst, channel, op.to.y + y, op.to.x + x, value);
}

bool storeRow(Op& op, std::int32_t channel, std::int32_t y, const std::uint32_t* values) {
    if (op.mask && !readRow(op, op.dst, op.to.x, op.to.y + y, op.to.width)) return false;
    const std::int32_t wide = tiled(op.dst) ? op.dst.tileInfo->width : op.dst.width;
    for (std::int32_t col = op.to.x / wide; col <= (op.to.x + op.to.width - 1) / wide; ++col) {
        const std::int32_t row = tiled(op.dst) ? (op.to.y + y) / op.dst.tileInfo->height : 0;
        if (tiled(op.dst) && !modelFetch(op.dst, col, row, ZET_TILE_WRITE)) {
            say(op, ZET_StatusError, "Error get tile to write");
            return false;
        }
        const Band band = modelBand(op.to.x, op.to.width, wide, col);
        for (std::int32_t x = band.start - op.to.x; x < band.start - op.to.x + band.size; ++x)
            storePixel(op, channel, y, x, values[x]);
        if (tiled(op.dst)) modelRelease(op.dst, col, row);
    }
    return true;
}

bool runChannel(Op& op, std::int32_t source, std::int32_t target) {
    const std::vector<std::uint32_t> results = resultsOf(op, source);
    const std::int32_t ahead = op.twoPasses() ? 2 * op.n : op.n - 1;
    if (takesRowBelowFirst(op) && !readRow(op, op.src, op.from.x - 1, op.from.y + op.from.height, op.from.width + 2))
        return false;
    for (std::int32_t r = -op.n; r <= ahead; ++r)
        if (!readPadded(op, r)) return false;
    for (std::int32_t y = 0; y < op.from.height; ++y) {
        const bool fetches = !op.twoPasses() || y < op.from.height - op.n;
        if (fetches && !readPadded(op, ahead + 1 + y)) return false;
        if (!storeRow(op, target, y, results.data() + std::ptrdiff_t{y} * op.from.width)) return false;
    }
    return true;
}

}  // namespace

void modelMorph(Model& model, Morph kind, ZetImage* src, ZetImage* dst, std::int32_t nIterations) {
    const char* name = kNames[static_cast<std::size_t>(kind)];
    model.status = 0;
    for (const ZetImage* image : {src, dst})
        if (model.checkImage(image)) return model.reportIncorrectImage(name, "ownMorph");
    if (const char* words = refusalOf(*src, *dst, nIterations))
        return model.report(ZET_StatusBadArgument, name, words, "ownMorph");
    Op op{model, kind, nIterations, src == dst, *src, *dst};
    takeRegions(op);
    if (op.to.empty()) return;
    takeMask(op);
    if (model.status) return;
    takeFrame(op);
    const ChannelRange source = modelChannels(op.src);
    const ChannelRange target = modelChannels(op.dst);
    for (std::int32_t c = 0; c < source.count; ++c)
        if (!runChannel(op, source.first + c, target.first + c)) return;
}

}  // namespace zetpxl::test
