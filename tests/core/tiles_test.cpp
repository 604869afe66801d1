// The tile grid of a region, bands over it, and images shown as one of their tiles.
#include "core/tiles.h"

#include <gtest/gtest.h>

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

TEST(Tiles, Grid) {
    compareWithModel([](Scene& scene, Random& random) {
        ImageShape shape = drawShape(random, {.largest = 300});
        shape.roi = drawRegion(shape, random);
        if (shape.roi && shape.roi->xOffset >= shape.width) shape.roi->xOffset = 0;
        if (shape.roi && shape.roi->yOffset >= shape.height) shape.roi->yOffset = 0;
        TestImage& image = scene.add("image", shape, random);
        const Area area = modelRegion(image.record);
        return Call{
            text(area.width, area.height),
            [&image, area] {
                ModelGrid g;
                ownTileGrid(&image.record, area.height, area.width, &g.startX, &g.startY, &g.tileHeight, &g.tileWidth,
                            &g.firstCol, &g.firstRow, &g.nCols, &g.nRows);
                return text(g.startX, g.startY, g.tileHeight, g.tileWidth, g.firstCol, g.firstRow, g.nCols, g.nRows);
            },
            [&image, area](Model&) {
                const ModelGrid g = modelGrid(image.record, area.height, area.width);
                return text(g.startX, g.startY, g.tileHeight, g.tileWidth, g.firstCol, g.firstRow, g.nCols, g.nRows);
            }};
    });
}

TEST(Tiles, Bands) {
    for (std::int32_t start = 0; start < 16; ++start)
        for (std::int32_t size = 1; size < 60; ++size) {
            ZetTileInfo tiles{nullptr, nullptr, nullptr, 16, 8};
            ZetROI roi{0, 32 + start, 0, size, 1};
            ZetImage image{};
            image.roi = &roi;
            image.tileInfo = &tiles;
            const TileBands bands = tileGrid(&image, 1, size).x;
            std::int32_t passed = 0;
            for (std::int32_t i = 0; i < bands.count; ++i) {
                const Band band = modelBand(roi.xOffset, size, 16, bands.first + i);
                EXPECT_EQ(bands.bandSize(i), band.size);
                EXPECT_EQ(bands.distance(i), passed);
                EXPECT_EQ(bands.offset(i), band.start % 16);
                passed += band.size;
            }
            EXPECT_EQ(passed, size);
        }
}

TEST(Tiles, ViewsOfTiles) {
    Random random(2);
    Scene scene;
    ImageShape shape = {.depth = ZET_DEPTH_16S, .nChannels = 3, .width = 40, .height = 20};
    shape.tileWidth = 16;
    shape.tileHeight = 8;
    shape.roi = ZetROI{2, 5, 5, 9, 9};
    TestImage& image = scene.add("image", shape, random);
    image.setMask(&addMask(scene, "mask", 40, 20, random));
    TileView view;
    makeView(&view, &image.record);
    EXPECT_EQ(view.image.tileInfo, nullptr);
    EXPECT_EQ(view.image.maskImage, nullptr);
    EXPECT_EQ(view.image.roi, &view.roi);
    EXPECT_EQ(view.roi.coi, 2);
    EXPECT_EQ(view.image.width, 40);
    setTileGeometry(&view, &image.record);
    EXPECT_EQ(view.image.width, 16);
    EXPECT_EQ(view.image.height, 8);
    EXPECT_EQ(view.image.widthStep, 96);
    TestImage& mask = *image.mask;
    mask.record.roi = &mask.roi;
    mask.roi = {1, 0, 0, 3, 3};
    TileView maskView;
    makeMaskView(&maskView, &mask.record);
    EXPECT_EQ(maskView.roi.coi, 0);
    EXPECT_EQ(maskView.image.roi, &maskView.roi);
    EXPECT_EQ(maskView.image.imageData, mask.record.imageData);
}

}  // namespace
}  // namespace zetpxl::test
