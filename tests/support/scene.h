// The images of one test case with all their memory. A scene built twice from one seed gives twins: the library works on
// one, the plain model on the other, and afterwards nothing may tell them apart.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/events.h"
#include "tests/support/guarded.h"
#include "tests/support/random.h"
#include "zetpxl.h"

namespace zetpxl::test {

struct ImageShape {
    std::uint32_t depth = ZET_DEPTH_8U;
    std::int32_t nChannels = 1;
    std::int32_t alphaChannel = 0;
    std::int32_t dataOrder = 0;
    std::int32_t origin = 0;
    std::int32_t align = 4;
    std::int32_t width = 1;
    std::int32_t height = 1;
    std::optional<ZetROI> roi{};
    std::int32_t tileWidth = 0;  // 0: one block
    std::int32_t tileHeight = 0;
    std::int32_t extraStep = 0;  // multiples of `align` by which a row is longer than it needs to be
    bool cutTail = false;        // the padding of the last row does not exist
    std::array<std::int32_t, 4> borderMode{};
    std::array<std::int32_t, 4> borderConst{};
};

class Scene;

struct TestImage {
    std::string name;
    ImageShape shape;
    ZetImage record{};
    ZetROI roi{};
    ZetTileInfo tileInfo{};
    TestImage* mask = nullptr;
    Scene* scene = nullptr;
    std::int32_t tileCols = 0;
    std::int32_t tileRows = 0;
    std::vector<std::unique_ptr<GuardedBuffer>> buffers;  // the block, or the tiles row by row
    std::vector<std::int32_t> held;                       // how often each tile is handed out

    GuardedBuffer* tileAt(std::int32_t col, std::int32_t row);
    void setMask(TestImage* image);
    std::string describe() const;
};

enum class Values { kAny, kSmall, kExtreme };

class Scene {
  public:
    EventLog log;
    std::int32_t failFetchAt = 0;  // from 1; 0: every tile is had
    std::int32_t fetches = 0;
    bool closesTiles = true;  // a tile that is not handed out cannot be touched, under AddressSanitizer

    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    TestImage& add(const std::string& name, const ImageShape& shape, Random& random, Values values = Values::kAny);
    const std::vector<std::unique_ptr<TestImage>>& images() const { return images_; }
    std::int32_t heldTiles() const;
    void allow(GuardedBuffer::Access access);
    std::string describe() const;

  private:
    std::vector<std::unique_ptr<TestImage>> images_;
};

// Bytes of a row by the layout rules, worked out in 64 bits.
std::int64_t plainRowBytes(std::int32_t dataOrder, std::uint32_t depth, std::int32_t align, std::int32_t nChannels,
                           std::int32_t width);

struct CompareRules {
    bool nanEqual = false;    // 32F: any NaN equals any other
    bool fieldsOnly = false;  // records, regions, tile records and guards, not pixels
};

// An empty text if the two scenes are alike in every byte and field, else the first difference.
std::string differenceOfScenes(Scene& library, Scene& model, const CompareRules& rules = {});

}  // namespace zetpxl::test
