#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "norvala.h"
#include "support/guarded_memory.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

// The generator, a value at a time, in 64-bit arithmetic.
std::vector<BW8> Sequence(int length, int low, int high, std::uint32_t seed) {
  const auto next = [](std::int64_t word) { return (word * 69069 + 1013904243) & 0xFFFFFFFF; };
  const auto toSigned = [](std::int64_t word) { return word >= 0x80000000 ? word - 0x100000000 : word; };
  const double mid = (low + high) * 0.5;
  const double scale = (high - low) * 2.3283064365387e-10;
  std::int64_t lcg = 1131199209;
  std::int64_t x1 = seed;
  std::int64_t x2 = next(x1);
  std::int64_t x3 = next(x2);
  std::int64_t borrow = -1;
  std::vector<BW8> values;
  for (int i = 0; i < length; ++i) {
    lcg = next(lcg);
    std::int64_t t = (x2 - x3 + borrow) & 0xFFFFFFFF;
    borrow = toSigned(t) < 0 ? -1 : 0;
    if (borrow != 0) t = (t - 18) & 0xFFFFFFFF;
    x3 = x2;
    x2 = x1;
    x1 = t;
    const double product = static_cast<double>(toSigned((t + lcg) & 0xFFFFFFFF)) * scale;
    values.push_back(static_cast<BW8>(static_cast<std::int64_t>(std::trunc(product + mid))));
  }
  return values;
}

TEST(RandUniformTest, GivesTheSequence) {
  Random random(1);
  for (int round = 0; round < 200; ++round) {
    const int length = round == 0 ? 200'000 : RandomInt(random, 1, 3000);
    const int low = RandomInt(random, 0, 255);
    const int high = round % 8 == 0 ? low : RandomInt(random, 0, 255);
    const std::uint32_t seed =
        round < 2 ? 0U - static_cast<std::uint32_t>(round) : static_cast<std::uint32_t>(random());
    const GuardedMemory memory(static_cast<std::size_t>(length));
    // Bits above the low eight of a bound do not count.
    const int noise = RandomInt(random, -1000, 1000) * 256;
    ASSERT_EQ(Norvala_RandUniform_BW8(memory.data(), length, low + noise, high - noise, seed), 0);
    const std::vector<BW8> values(memory.data(), memory.data() + length);
    ASSERT_EQ(values, Sequence(length, low, high, seed)) << low << ".." << high << " seed " << seed;
  }
}

}  // namespace
}  // namespace norvala_test
