// Plain model of the frame that median and fixed filters share: channels, pieces and the tiles that they ask for.
#pragma once

#include <functional>

#include "tests/support/model.h"

namespace zetpxl::test {

struct FrameWindow {
    std::int32_t nCols, nRows, anchorX, anchorY;
};

// Gives a source sample of the window by its row and column.
using WindowSample = std::function<std::uint32_t(std::int32_t row, std::int32_t col)>;
using WindowResult = std::function<std::uint32_t(const WindowSample& sample)>;

void modelFilterFrame(ZetImage* src, ZetImage* dst, const FrameWindow& window, const WindowResult& result);

// The checks that both operations end with, from the channel count on; false when the call is over.
struct FrameChecks {
    const char* name;
    std::int32_t coiStatus;
};
bool modelFrameChannels(Model& model, const ZetImage& src, const ZetImage& dst, const FrameChecks& checks);

}  // namespace zetpxl::test
