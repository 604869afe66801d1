// Says where two twin scenes differ.
#include <cmath>
#include <cstring>

#include "tests/support/scene.h"

namespace zetpxl::test {
namespace {

std::string number(std::int64_t value) { return std::to_string(value); }

bool bothNaN(const GuardedBuffer& a, const GuardedBuffer& b, std::ptrdiff_t offset) {
    const std::ptrdiff_t start = offset & ~std::ptrdiff_t{3};
    if (offset < 0 || start + 4 > static_cast<std::ptrdiff_t>(a.size())) return false;
    std::uint8_t bytes[2][4];
    float values[2];
    for (int i = 0; i < 4; ++i) {
        bytes[0][i] = a.at(start + i);
        bytes[1][i] = b.at(start + i);
    }
    std::memcpy(values, bytes, sizeof values);
    return std::isnan(values[0]) && std::isnan(values[1]);
}

// Where in the image a byte of a block or tile lies.
std::string place(const TestImage& image, std::size_t buffer, std::ptrdiff_t offset) {
    const ImageShape& s = image.shape;
    const bool tiled = s.tileWidth != 0;
    const std::int64_t height = tiled ? s.tileHeight : s.height;
    const std::int64_t step =
        tiled ? plainRowBytes(s.dataOrder, s.depth, s.align, s.nChannels, s.tileWidth) : image.record.widthStep;
    std::string text = image.name + " byte " + number(offset);
    if (tiled)
        text += " of tile " + number(static_cast<std::int64_t>(buffer) % image.tileCols) + "," +
                number(static_cast<std::int64_t>(buffer) / image.tileCols);
    if (offset < 0 || offset >= static_cast<std::ptrdiff_t>(image.buffers[buffer]->size())) return text + " (guard)";
    const std::int64_t column = offset % step;
    const std::int64_t used = plainRowBytes(s.dataOrder, s.depth, 1, s.nChannels, tiled ? s.tileWidth : s.width);
    text += " (plane " + number(offset / step / height) + " row " + number(offset / step % height) + " byte " +
            number(column);
    return text + (column >= used ? " padding)" : ")");
}

std::string byteDifference(const TestImage& a, const TestImage& b, const CompareRules& rules) {
    constexpr auto kGuard = static_cast<std::ptrdiff_t>(GuardedBuffer::kGuard);
    for (std::size_t i = 0; i < a.buffers.size(); ++i) {
        const GuardedBuffer& left = *a.buffers[i];
        const GuardedBuffer& right = *b.buffers[i];
        const auto size = static_cast<std::ptrdiff_t>(left.size());
        for (std::ptrdiff_t k = -kGuard; k < size + kGuard; ++k) {
            if (left.at(k) == right.at(k)) continue;
            if (rules.fieldsOnly && k >= 0 && k < size) continue;
            if (rules.nanEqual && a.shape.depth == ZET_DEPTH_32F && bothNaN(left, right, k)) continue;
            return place(a, i, k) + ": library " + number(left.at(k)) + ", model " + number(right.at(k));
        }
    }
    return "";
}

std::string pointerName(const TestImage& image, const void* pointer) {
    if (!pointer) return "null";
    if (pointer == &image.roi) return "own region";
    if (pointer == &image.tileInfo) return "own tile record";
    if (pointer == &image) return "own tag";
    for (const auto& other : image.scene->images())
        if (pointer == &other->record) return "record of " + other->name;
    for (std::size_t i = 0; i < image.buffers.size(); ++i)
        if (pointer == image.buffers[i]->data()) return "buffer " + number(static_cast<std::int64_t>(i));
    return "elsewhere";
}

struct FieldList {
    std::vector<std::pair<const char*, std::string>> fields;
    void add(const char* name, std::int64_t value) { fields.emplace_back(name, number(value)); }
    void add(const char* name, std::string value) { fields.emplace_back(name, std::move(value)); }
};

void listRecord(const TestImage& image, FieldList& list) {
    const ZetImage& r = image.record;
    list.add("headerSize", r.headerSize);
    list.add("headerId", r.headerId);
    list.add("nChannels", r.nChannels);
    list.add("alphaChannel", r.alphaChannel);
    list.add("depth", r.depth);
    list.add("colorModel", std::string(r.colorModel, 4));
    list.add("channelSeq", std::string(r.channelSeq, 4));
    list.add("dataOrder", r.dataOrder);
    list.add("origin", r.origin);
    list.add("align", r.align);
    list.add("width", r.width);
    list.add("height", r.height);
    list.add("roi", pointerName(image, r.roi));
    list.add("maskImage", pointerName(image, r.maskImage));
    list.add("imageTag", pointerName(image, r.imageTag));
    list.add("tileInfo", pointerName(image, r.tileInfo));
    list.add("imageSize", r.imageSize);
    list.add("imageData", pointerName(image, r.imageData));
    list.add("widthStep", r.widthStep);
    for (int side = 0; side < 4; ++side) {
        list.add("borderMode", r.borderMode[side]);
        list.add("borderConst", r.borderConst[side]);
    }
    list.add("imageDataBase", pointerName(image, r.imageDataBase));
}

FieldList listFields(const TestImage& image, const CompareRules& rules) {
    FieldList list;
    listRecord(image, list);
    list.add("roi.coi", image.roi.coi);
    list.add("roi.xOffset", image.roi.xOffset);
    list.add("roi.yOffset", image.roi.yOffset);
    list.add("roi.width", image.roi.width);
    list.add("roi.height", image.roi.height);
    list.add("tile.id", pointerName(image, image.tileInfo.id));
    list.add("tile.width", image.tileInfo.width);
    list.add("tile.height", image.tileInfo.height);
    if (!rules.fieldsOnly) list.add("tile.tileData", pointerName(image, image.tileInfo.tileData));
    return list;
}

std::string fieldDifference(const TestImage& a, const TestImage& b, const CompareRules& rules) {
    const FieldList left = listFields(a, rules);
    const FieldList right = listFields(b, rules);
    for (std::size_t i = 0; i < left.fields.size(); ++i)
        if (left.fields[i] != right.fields[i])
            return a.name + "." + left.fields[i].first + ": library " + left.fields[i].second + ", model " +
                   right.fields[i].second;
    return "";
}

}  // namespace

std::string differenceOfScenes(Scene& library, Scene& model, const CompareRules& rules) {
    library.allow(GuardedBuffer::Access::kAll);
    model.allow(GuardedBuffer::Access::kAll);
    for (std::size_t i = 0; i < library.images().size(); ++i) {
        const TestImage& a = *library.images()[i];
        const TestImage& b = *model.images()[i];
        std::string text = fieldDifference(a, b, rules);
        if (text.empty()) text = byteDifference(a, b, rules);
        if (!text.empty()) return text;
    }
    return "";
}

}  // namespace zetpxl::test
