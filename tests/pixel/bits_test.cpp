// Runs of bits at any offsets: nothing outside the run changes and nothing outside its bytes is touched.
#include "pixel/bits.h"

#include <gtest/gtest.h>

#include "tests/support/guarded.h"

namespace zetpxl::test {
namespace {

bool bitAt(const std::uint8_t* bytes, std::ptrdiff_t bit) { return (bytes[bit / 8] >> (7 - bit % 8)) & 1; }

// Exactly the bytes that the run touches, so that guards begin right behind it.
std::size_t bytesOfRun(std::ptrdiff_t bit, std::ptrdiff_t length) {
    return static_cast<std::size_t>((bit + length + 7) / 8);
}

void copyOnce(Random& random, std::ptrdiff_t from, std::ptrdiff_t to, std::ptrdiff_t length) {
    GuardedBuffer source(bytesOfRun(from, length), 1, random);
    GuardedBuffer destination(bytesOfRun(to, length), 1, random);
    const std::vector<std::uint8_t> before(destination.data(), destination.data() + destination.size());
    source.allow(GuardedBuffer::Access::kData);
    destination.allow(GuardedBuffer::Access::kData);
    ownCopyBits(source.data(), destination.data(), from, to, length);
    for (std::ptrdiff_t bit = 0; bit < static_cast<std::ptrdiff_t>(destination.size()) * 8; ++bit) {
        const bool inside = bit >= to && bit < to + length;
        const bool expected = inside ? bitAt(source.data(), bit - to + from) : bitAt(before.data(), bit);
        ASSERT_EQ(bitAt(destination.data(), bit), expected)
            << "bit " << bit << " of a run of " << length << " from " << from << " to " << to;
    }
}

TEST(Bits, EveryPairOfOffsets) {
    Random random(1);
    for (std::ptrdiff_t from = 0; from < 20; ++from)
        for (std::ptrdiff_t to = 0; to < 20; ++to)
            for (const std::ptrdiff_t length : {0, 1, 2, 7, 8, 9, 15, 16, 17, 31, 64, 65, 130, 200})
                copyOnce(random, from, to, length);
}

TEST(Bits, RandomRuns) {
    Random random(2);
    for (std::int32_t i = 0; i < 3000; ++i)
        copyOnce(random, random.below(70), random.below(70), random.below(random.oneIn(5) ? 3000 : 300));
}

}  // namespace
}  // namespace zetpxl::test
