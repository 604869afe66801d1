// Plain model of the noise: one stream of draws, one element at a time.
#pragma once

#include "tests/support/model.h"

namespace zetpxl::test {

class NoiseStream {
  public:
    explicit NoiseStream(std::uint32_t seed);
    std::uint32_t draw();
    // A value of the pair under way, whose factor is radius(): rounding depends on the order of their products.
    double gaussian();
    double radius() const { return radius_; }

  private:
    std::uint32_t lcg_, lag1_, lag2_, lag3_, borrow_;
    bool needPair_ = true;
    double radius_ = 0, pending_ = 0;
};

std::int32_t modelNoiseImage(Model& model, ZetImage* image, const ZetNoiseParam* param);

}  // namespace zetpxl::test
