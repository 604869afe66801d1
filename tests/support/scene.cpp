#include "tests/support/scene.h"

#include <cstring>
#include <limits>

namespace zetpxl::test {
namespace {

using Access = GuardedBuffer::Access;

const char* depthName(std::uint32_t depth) {
    switch (depth) {
        case ZET_DEPTH_1U:
            return "1U";
        case ZET_DEPTH_8U:
            return "8U";
        case ZET_DEPTH_8S:
            return "8S";
        case ZET_DEPTH_16U:
            return "16U";
        case ZET_DEPTH_16S:
            return "16S";
        case ZET_DEPTH_32S:
            return "32S";
        case ZET_DEPTH_32F:
            return "32F";
        default:
            return "?";
    }
}

std::string number(std::int64_t value) { return std::to_string(value); }

void onRelease(TestImage& owner, std::int32_t col, std::int32_t row, GuardedBuffer* tile, std::string line) {
    std::int32_t& held = owner.held[static_cast<std::size_t>(row * owner.tileCols + col)];
    if (held == 0) line += " WAS NOT HELD";
    if (owner.tileInfo.tileData != tile->data()) line += " (another address)";
    if (held > 0 && --held == 0 && owner.scene->closesTiles) tile->allow(Access::kNone);
    owner.scene->log.add(line);
}

void onFetch(TestImage& owner, std::int32_t col, std::int32_t row, GuardedBuffer* tile, std::string line) {
    if (++owner.scene->fetches == owner.scene->failFetchAt) {
        owner.tileInfo.tileData = nullptr;
        owner.scene->log.add(line + " fails");
        return;
    }
    ++owner.held[static_cast<std::size_t>(row * owner.tileCols + col)];
    tile->allow(Access::kData);
    owner.tileInfo.tileData = tile->data();
    owner.scene->log.add(line);
}

void onTile(ZetImage* image, std::int32_t col, std::int32_t row, std::int32_t mode) {
    auto& owner = *static_cast<TestImage*>(image->tileInfo->id);
    const std::string word = mode == ZET_TILE_READ      ? "read"
                             : mode == ZET_TILE_WRITE   ? "write"
                             : mode == ZET_TILE_RELEASE ? "release"
                                                        : "UNKNOWN MODE " + number(mode);
    std::string line = word + " " + owner.name + " " + number(col) + " " + number(row);
    if (image != &owner.record) line += " (copied record)";
    GuardedBuffer* tile = owner.tileAt(col, row);
    if (!tile) {
        owner.tileInfo.tileData = nullptr;
        owner.scene->log.add(line + " OUTSIDE THE IMAGE");
        return;
    }
    mode == ZET_TILE_RELEASE ? onRelease(owner, col, row, tile, line) : onFetch(owner, col, row, tile, line);
}

float drawFloat(Random& random, Values values) {
    constexpr float kMax = std::numeric_limits<float>::max();
    if (values == Values::kExtreme && random.oneIn(3))
        return random.pick({kMax, -kMax, std::numeric_limits<float>::min(), std::numeric_limits<float>::denorm_min(),
                            std::numeric_limits<float>::infinity(), -0.0f, 1e-20f, 16777216.0f});
    return static_cast<float>(random.between(-40000, 40000)) / 128.0f;
}

std::uint32_t drawSample(std::uint32_t depth, Random& random, Values values) {
    if (depth == ZET_DEPTH_32F) {
        const float value = drawFloat(random, values);
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, 4);
        return bits;
    }
    if (values == Values::kExtreme && random.oneIn(2))
        return random.pick(
            {0u, 1u, 0xFFFFFFFFu, 0x7F7F7F7Fu, 0x80808080u, 0x7FFF7FFFu, 0x80008000u, 0x7FFFFFFFu, 0x80000000u});
    return values == Values::kSmall ? static_cast<std::uint32_t>(random.below(32)) : random.next() >> 20;
}

// Sample by sample over the whole buffer, padding included; what is left over keeps its random bytes.
void fillSamples(GuardedBuffer& buffer, std::uint32_t depth, Random& random, Values values) {
    if (values == Values::kAny && depth != ZET_DEPTH_32F) return;
    const std::size_t bytes = depth == ZET_DEPTH_1U ? 1 : (depth & 0x7FFFFFFFu) / 8;
    for (std::size_t i = 0; i + bytes <= buffer.size(); i += bytes) {
        const std::uint32_t sample = drawSample(depth, random, values);
        std::memcpy(buffer.data() + i, &sample, bytes);
    }
}

std::int64_t planesOf(const ImageShape& shape) { return shape.dataOrder == 1 ? shape.nChannels : 1; }

void makeTiles(TestImage& image, Random& random, Values values) {
    const ImageShape& s = image.shape;
    image.tileCols = (s.width + s.tileWidth - 1) / s.tileWidth;
    image.tileRows = (s.height + s.tileHeight - 1) / s.tileHeight;
    const std::int64_t step = plainRowBytes(s.dataOrder, s.depth, s.align, s.nChannels, s.tileWidth);
    const auto size = static_cast<std::size_t>(step * s.tileHeight * planesOf(s));
    for (std::int32_t i = 0; i < image.tileCols * image.tileRows; ++i) {
        image.buffers.push_back(std::make_unique<GuardedBuffer>(size, static_cast<std::size_t>(s.align), random));
        fillSamples(*image.buffers.back(), s.depth, random, values);
        image.buffers.back()->allow(Access::kNone);
    }
    image.held.resize(image.buffers.size());
    image.tileInfo = {&onTile, &image, nullptr, s.tileWidth, s.tileHeight};
    image.record.tileInfo = &image.tileInfo;
}

void makeBlock(TestImage& image, Random& random, Values values) {
    const ImageShape& s = image.shape;
    ZetImage& r = image.record;
    r.widthStep += s.extraStep * s.align;
    std::int64_t size = planesOf(s) * s.height * r.widthStep;
    const std::int64_t used = plainRowBytes(s.dataOrder, s.depth, 1, s.nChannels, s.width);
    if (s.cutTail) size -= r.widthStep - used;
    r.imageSize = static_cast<std::int32_t>(size);
    image.buffers.push_back(
        std::make_unique<GuardedBuffer>(static_cast<std::size_t>(size), static_cast<std::size_t>(s.align), random));
    fillSamples(*image.buffers.back(), s.depth, random, values);
    r.imageData = image.buffers.back()->data();
    image.buffers.back()->allow(Access::kData);
}

void fillRecord(TestImage& image) {
    const ImageShape& s = image.shape;
    ZetImage& r = image.record;
    r.headerSize = static_cast<std::int32_t>(sizeof(ZetImage));
    r.nChannels = s.nChannels;
    r.alphaChannel = s.alphaChannel;
    r.depth = s.depth;
    std::memcpy(r.colorModel, "RGBx", 4);
    std::memcpy(r.channelSeq, "BGRx", 4);
    r.dataOrder = s.dataOrder;
    r.origin = s.origin;
    r.align = s.align;
    r.width = s.width;
    r.height = s.height;
    if (s.roi) image.roi = *s.roi;
    r.roi = s.roi ? &image.roi : nullptr;
    r.imageTag = &image;
    r.widthStep = static_cast<std::int32_t>(plainRowBytes(s.dataOrder, s.depth, s.align, s.nChannels, s.width));
    r.imageSize = static_cast<std::int32_t>(planesOf(s) * s.height * r.widthStep);
    for (std::size_t side = 0; side < 4; ++side) {
        r.borderMode[side] = s.borderMode[side];
        r.borderConst[side] = s.borderConst[side];
    }
}

}  // namespace

std::int64_t plainRowBytes(std::int32_t dataOrder, std::uint32_t depth, std::int32_t align, std::int32_t nChannels,
                           std::int32_t width) {
    std::int64_t bits = static_cast<std::int64_t>(width) * static_cast<std::int64_t>(depth & 0x7FFFFFFFu);
    if (dataOrder == 0) bits *= nChannels;
    const std::int64_t unit = 8 * static_cast<std::int64_t>(align);
    return (bits + unit - 1) / unit * align;
}

GuardedBuffer* TestImage::tileAt(std::int32_t col, std::int32_t row) {
    if (col < 0 || row < 0 || col >= tileCols || row >= tileRows) return nullptr;
    return buffers[static_cast<std::size_t>(row * tileCols + col)].get();
}

void TestImage::setMask(TestImage* image) {
    mask = image;
    record.maskImage = image ? &image->record : nullptr;
}

std::string TestImage::describe() const {
    const ImageShape& s = shape;
    std::string text = name + ": " + depthName(s.depth) + (s.dataOrder == 1 ? " planar " : " interleaved ") +
                       number(s.nChannels) + "ch";
    if (s.alphaChannel) text += " alpha";
    text += " " + number(s.width) + "x" + number(s.height) + " origin " + number(s.origin) + " align " +
            number(s.align) + " step " + number(record.widthStep) + " size " + number(record.imageSize);
    if (s.tileWidth) text += " tiles " + number(s.tileWidth) + "x" + number(s.tileHeight);
    if (s.roi)
        text += " roi(" + number(s.roi->xOffset) + "," + number(s.roi->yOffset) + " " + number(s.roi->width) + "x" +
                number(s.roi->height) + " coi " + number(s.roi->coi) + ")";
    if (mask) text += " mask " + mask->name;
    return text;
}

TestImage& Scene::add(const std::string& name, const ImageShape& shape, Random& random, Values values) {
    images_.push_back(std::make_unique<TestImage>());
    TestImage& image = *images_.back();
    image.name = name;
    image.shape = shape;
    image.scene = this;
    fillRecord(image);
    shape.tileWidth ? makeTiles(image, random, values) : makeBlock(image, random, values);
    return image;
}

std::int32_t Scene::heldTiles() const {
    std::int32_t count = 0;
    for (const auto& image : images_)
        for (std::int32_t held : image->held) count += held;
    return count;
}

void Scene::allow(Access access) {
    for (const auto& image : images_)
        for (const auto& buffer : image->buffers) buffer->allow(access);
}

std::string Scene::describe() const {
    std::string text;
    for (const auto& image : images_) text += "  " + image->describe() + "\n";
    if (failFetchAt) text += "  fetch " + number(failFetchAt) + " fails\n";
    return text;
}

}  // namespace zetpxl::test
