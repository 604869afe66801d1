// Regions, channels and addresses against the model, which counts pixels and asks where one lies.
#include "core/region.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/support/differential.h"
#include "tests/support/draw.h"
#include "tests/support/model_tiles.h"

namespace zetpxl::test {
namespace {

template <class... Values>
std::string text(const Values&... values) {
    std::ostringstream stream;
    ((stream << values << ' '), ...);
    return stream.str();
}

TestImage& drawImage(Scene& scene, Random& random, const char* name = "image") {
    ImageShape shape = drawShape(random, {.tiles = false});
    shape.roi = drawRegion(shape, random);
    TestImage& image = scene.add(name, shape, random);
    return image;
}

// Offsets and sizes as no checked image has them.
void makeRegionOdd(TestImage& image, Random& random) {
    image.record.roi = &image.roi;
    image.roi = {0, random.between(-20, 50), random.between(-20, 50), random.between(-5, 60), random.between(-5, 60)};
}

// A region that begins left of or above the image and ends there too has no stated size.
bool sizeIsStated(const ZetImage& image) {
    const ZetROI* roi = image.roi;
    return !roi || (roi->xOffset + roi->width > 0 && roi->yOffset + roi->height > 0);
}

TEST(Region, Size) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& image = drawImage(scene, random);
        if (random.oneIn(3)) makeRegionOdd(image, random);
        const std::int32_t clip = random.below(2);
        return Call{text("clip", clip),
                    [&image, clip] {
                        std::int32_t height = 0, width = 0;
                        const std::int32_t result = ownRoiSize(&image.record, &height, &width, clip);
                        return result && (clip == 0 || sizeIsStated(image.record)) ? text(result, height, width) : "0";
                    },
                    [&image, clip](Model&) {
                        const ModelSize size = modelSize(image.record, clip != 0);
                        const bool stated = clip == 0 || sizeIsStated(image.record);
                        return size.result && stated ? text(size.result, size.height, size.width) : "0";
                    }};
    });
}

std::string commonSize(const std::vector<const ZetImage*>& images, bool clip) {
    ModelSize all{1, INT32_MAX, INT32_MAX};
    for (const ZetImage* image : images) {
        if (!image) continue;
        const ModelSize size = modelSize(*image, clip);
        if (!size.result) return "0";
        all.height = std::min(all.height, size.height);
        all.width = std::min(all.width, size.width);
    }
    return text(1, all.height, all.width);
}

TEST(Region, CommonSize) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& a = drawImage(scene, random, "a");
        TestImage& b = drawImage(scene, random, "b");
        TestImage& c = drawImage(scene, random, "c");
        const ZetImage* third = random.oneIn(2) ? &c.record : nullptr;
        const std::int32_t clip = random.below(2);
        const bool three = random.oneIn(2);
        return Call{text("clip", clip),
                    [&a, &b, third, clip, three] {
                        std::int32_t height = 0, width = 0;
                        const std::int32_t result =
                            three ? ownCommonSize3(&a.record, &b.record, third, &height, &width, clip)
                                  : ownCommonSize(&a.record, third, &height, &width, clip);
                        return result ? text(result, height, width) : "0";
                    },
                    [&a, &b, third, clip, three](Model&) {
                        return commonSize({&a.record, three ? &b.record : nullptr, third}, clip != 0);
                    }};
    });
}

std::string modelBounds(const ZetImage& image, bool clip) {
    if (!image.roi) return text(1, 0, 0, image.width - 1, image.height - 1);
    const ZetROI& roi = *image.roi;
    if (roi.width < 1 || roi.height < 1) return "0";
    const std::int32_t x1 = roi.xOffset + roi.width - 1, y1 = roi.yOffset + roi.height - 1;
    if (!clip) return text(1, roi.xOffset, roi.yOffset, x1, y1);
    if (x1 < 0 || y1 < 0 || roi.xOffset >= image.width || roi.yOffset >= image.height) return "0";
    return text(1, std::max(roi.xOffset, 0), std::max(roi.yOffset, 0), std::min(x1, image.width - 1),
                std::min(y1, image.height - 1));
}

TEST(Region, Bounds) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& image = drawImage(scene, random);
        if (random.oneIn(2)) makeRegionOdd(image, random);
        const std::int32_t clip = random.below(2);
        return Call{text("clip", clip),
                    [&image, clip] {
                        ZetRoiBounds b{};
                        const std::int32_t result = ownRoiBounds(&image.record, &b, clip);
                        return result ? text(result, b.x0, b.y0, b.x1, b.y1) : "0";
                    },
                    [&image, clip](Model&) { return modelBounds(image.record, clip != 0); }};
    });
}

TEST(Region, Rect) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& image = drawImage(scene, random);
        return Call{"",
                    [&image] {
                        ZetRoiRect r{};
                        ownRoiRect(&image.record, &r);
                        return text(r.xOffset, r.yOffset, std::max(r.height, 0), std::max(r.width, 0));
                    },
                    [&image](Model&) {
                        const Area area = modelRegion(image.record);
                        return text(area.x, area.y, area.height, area.width);
                    }};
    });
}

std::string modelOrigin(const ZetImage& image, bool firstChannel) {
    if (!image.roi && image.alphaChannel && image.nChannels == 1) return "0";
    const ChannelRange channels = modelChannels(image);
    const Area area = modelRegion(image);
    const std::int32_t bit = image.depth == ZET_DEPTH_1U ? area.x : -1;
    // A 1U row begins at its first byte; the bit offset does the rest.
    const std::int32_t x = image.depth == ZET_DEPTH_1U ? 0 : area.x;
    const auto* data = sampleByte(image, channels.first, area.y, x);
    return text(1, data - static_cast<std::uint8_t*>(image.imageData), image.widthStep, channels.count,
                std::int64_t{image.height} * image.widthStep, bit) +
           (firstChannel ? text(channels.first, image.nChannels) : "");
}

TEST(Region, Origin) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& image = drawImage(scene, random);
        return Call{"",
                    [&image] {
                        std::uint8_t* data = nullptr;
                        std::ptrdiff_t rowStep = 0, planeStep = 0;
                        std::int32_t nProc = 0, bit = -1;
                        if (!ownRoiOrigin(&image.record, &data, &rowStep, &nProc, &planeStep, &bit))
                            return std::string("0");
                        return text(1, data - image.buffers[0]->data(), rowStep, nProc, planeStep, bit);
                    },
                    [&image](Model&) { return modelOrigin(image.record, false); }};
    });
}

TEST(Region, Layout) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& image = drawImage(scene, random);
        const std::int32_t clip = random.below(2);
        return Call{text("clip", clip),
                    [&image, clip] {
                        ZetRoiLayout l{};
                        l.bitOffset = -1;
                        if (!ownRoiLayout(&image.record, &l, clip)) return std::string("0");
                        if (image.record.depth != ZET_DEPTH_1U) l.bitOffset = -1;
                        return text(1, l.data - image.buffers[0]->data(), l.rowStep, l.nProc, l.planeStep,
                                    l.bitOffset) +
                               text(l.firstChannel, l.nChannels);
                    },
                    [&image](Model&) { return modelOrigin(image.record, true); }};
    });
}

TEST(Region, NegativeOffsetsCountAsZero) {
    Random random(4);
    Scene scene;
    ImageShape shape;
    shape.nChannels = 3;
    shape.width = shape.height = 9;
    shape.roi = ZetROI{2, -3, -4, 5, 6};
    TestImage& image = scene.add("image", shape, random);
    std::uint8_t* data = nullptr;
    std::ptrdiff_t rowStep = 0, planeStep = 0;
    std::int32_t nProc = 0, bit = 0;
    EXPECT_EQ(ownRoiOrigin(&image.record, &data, &rowStep, &nProc, &planeStep, &bit), 1);
    EXPECT_EQ(data - image.buffers[0]->data(), 1);
    ZetRoiLayout layout{};
    EXPECT_EQ(ownRoiLayout(&image.record, &layout, 1), 1);
    EXPECT_EQ(layout.data, data);
    image.roi.coi = 0;
    TestImage& mask = addMask(scene, "mask", 9, 9, random);
    mask.record.roi = &mask.roi;
    mask.roi = {0, -1, -1, 2, 2};
    EXPECT_EQ(ownMaskOrigin(&mask.record, &data, &rowStep, &bit), 1);
    EXPECT_EQ(data, mask.record.imageData);
    EXPECT_EQ(bit, 0);
}

TEST(Region, Start) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& image = drawImage(scene, random);
        const std::int32_t channel = random.below(image.record.nChannels);
        return Call{text("channel", channel),
                    [&image, channel] {
                        std::int32_t width = 0, height = 0, bit = -1;
                        const auto* data = ownRoiStart(&image.record, &width, &height, channel, &bit);
                        return text(data - image.buffers[0]->data(), width, height, bit);
                    },
                    [&image, channel](Model&) {
                        const Area area = modelRegion(image.record);
                        const std::int32_t used = image.record.roi ? channel : 0;
                        const auto* data = sampleByte(image.record, used, area.y, area.x);
                        return text(data - image.buffers[0]->data(), area.width, area.height, area.x & 7);
                    }};
    });
}

TEST(Region, PixelAddress) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& image = drawImage(scene, random);
        const std::int32_t x = random.below(image.record.width);
        const std::int32_t y = random.below(image.record.height);
        const std::int32_t channel = random.below(image.record.nChannels);
        return Call{text(x, y, channel),
                    [&image, x, y, channel] {
                        return text(ownPixelAddress(&image.record, x, y, channel) - image.buffers[0]->data());
                    },
                    [&image, x, y, channel](Model&) {
                        return text(sampleByte(image.record, channel, y, x) - image.buffers[0]->data());
                    }};
    });
}

TEST(Region, MaskOrigin) {
    compareWithModel([](Scene& scene, Random& random) {
        TestImage& mask = random.oneIn(5) ? drawImage(scene, random) : addMask(scene, "mask", 20, 20, random);
        return Call{"",
                    [&mask] {
                        std::uint8_t* data = nullptr;
                        std::ptrdiff_t step = 0;
                        std::int32_t bit = 0;
                        if (!ownMaskOrigin(&mask.record, &data, &step, &bit)) return std::string("0");
                        return text(data - mask.buffers[0]->data(), step, bit);
                    },
                    [&mask](Model&) {
                        if (mask.record.depth != ZET_DEPTH_1U) return std::string("0");
                        const Area area = modelRegion(mask.record);
                        const auto* data = sampleByte(mask.record, 0, area.y, area.x);
                        return text(data - mask.buffers[0]->data(), mask.record.widthStep, area.x & 7);
                    }};
    });
}

bool wholeImage(const ZetImage& image) {
    if (!image.roi) return true;
    const Area area = modelRegion(image);
    return area.x == 0 && area.y == 0 && area.width == image.width && area.height == image.height &&
           image.nChannels == 1 && image.roi->coi > 0;
}

TEST(Region, SameBlock) {
    compareWithModel([](Scene& scene, Random& random) {
        ImageShape shape = drawShape(random, {.tiles = false, .largest = 6});
        std::vector<const ZetImage*> images;
        for (const char* name : {"a", "b", "c"}) {
            ImageShape other = random.oneIn(5) ? drawPartner(shape, random, {.tiles = false, .largest = 6}) : shape;
            other.roi = random.oneIn(2) ? drawRegion(other, random) : std::nullopt;
            if (other.roi && random.oneIn(2)) other.roi->coi = 1;
            images.push_back(&scene.add(name, other, random).record);
        }
        if (random.oneIn(2)) images[2] = nullptr;
        const std::int32_t hasAlpha = random.oneIn(6) ? 1 : 0;
        return Call{
            text("alpha", hasAlpha), [=] { return text(ownSameBlock(images[0], images[1], images[2], hasAlpha)); },
            [=](Model&) {
                bool same = hasAlpha == 0;
                for (const ZetImage* image : images) {
                    if (!image) continue;
                    const ZetImage& a = *images[0];
                    same = same && wholeImage(*image) && image->imageSize == a.imageSize && image->height == a.height &&
                           image->width == a.width && image->align == a.align && image->widthStep == a.widthStep;
                }
                return text(same ? 1 : 0);
            }};
    });
}

TEST(Region, ExamplesOfSizes) {
    Random random(1);
    Scene scene;
    ImageShape shape;
    shape.width = 100;
    shape.height = 50;
    shape.roi = ZetROI{0, 95, 0, 10, 10};
    TestImage& image = scene.add("image", shape, random);
    std::int32_t height = 0, width = 0;
    EXPECT_EQ(ownRoiSize(&image.record, &height, &width, 1), 1);
    EXPECT_EQ(width, 5);
    EXPECT_EQ(height, 10);
    image.roi.xOffset = 100;
    EXPECT_EQ(ownRoiSize(&image.record, &height, &width, 1), 0);
    image.roi = {0, INT32_MAX - 5, 0, INT32_MAX, INT32_MAX};
    EXPECT_EQ(ownRoiSize(&image.record, &height, &width, 1), 0);
    image.roi = {0, 99, 49, INT32_MAX, INT32_MAX};
    EXPECT_EQ(ownRoiSize(&image.record, &height, &width, 1), 1);
    EXPECT_EQ(width, 1);
    EXPECT_EQ(height, 1);
    ZetRoiBounds bounds{};
    EXPECT_EQ(ownRoiBounds(&image.record, &bounds, 1), 1);
    EXPECT_EQ(bounds.x1, 99);
}

}  // namespace
}  // namespace zetpxl::test
