// A seeded generator whose sequence is the same on every machine, so that a seed names a case.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace zetpxl::test {

class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    // splitmix64
    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    // 0 to n - 1
    std::int32_t below(std::int32_t n) { return static_cast<std::int32_t>(next() % static_cast<std::uint64_t>(n)); }
    std::int32_t between(std::int32_t low, std::int32_t high) { return low + below(high - low + 1); }
    bool oneIn(std::int32_t n) { return below(n) == 0; }
    bool percent(std::int32_t n) { return below(100) < n; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(next() >> 32); }
    std::int32_t word() { return static_cast<std::int32_t>(next() >> 16); }

    template <class T>
    T pick(std::initializer_list<T> values) {
        return values.begin()[below(static_cast<std::int32_t>(values.size()))];
    }

  private:
    std::uint64_t state_;
};

}  // namespace zetpxl::test
