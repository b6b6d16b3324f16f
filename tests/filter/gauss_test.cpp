#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

constexpr int Reach(int maskCode) { return maskCode == 33 ? 1 : 2; }

int Weight(int maskCode, int dx, int dy) {
  static constexpr int kQuarterOf5x5[3][3] = {{127, 52, 12}, {52, 31, 7}, {12, 7, 2}};
  dx = std::abs(dx);
  dy = std::abs(dy);
  return maskCode == 33 ? (2 - dx) * (2 - dy) : kQuarterOf5x5[dy][dx];
}

BW8 Naive(int maskCode, const Image<BW8>& src, int x, int y) {
  std::uint32_t sum = 0;
  for (int dy = -Reach(maskCode); dy <= Reach(maskCode); ++dy) {
    for (int dx = -Reach(maskCode); dx <= Reach(maskCode); ++dx) {
      sum += static_cast<std::uint32_t>(Weight(maskCode, dx, dy) * src.Get(x + dx, y + dy));
    }
  }
  return static_cast<BW8>(maskCode == 33 ? (sum + ((sum >> 4) & 1) + 7) >> 4 : ((sum + 286) * 29382) >> 24);
}

// Random images, those of the largest sums, and flat ones with a little noise: so many that the sums on both sides of
// every threshold between two results occur.
TEST(GaussTest, FiltersAsDefined) {
  Random random(1);
  for (int round = 0; round < 6000; ++round) {
    const int maskCode = round % 2 == 0 ? 33 : 55;
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 12);
    Image<BW8> src(width, height, RandomLayout(random, Reach(maskCode)),
                   round % 4 < 2 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    const int kind = RandomInt(random, 0, 3);
    const int level = kind < 2 ? RandomInt(random, 0, 254) : 0;
    const int noise = kind < 2 ? 1 : 255;
    src.Fill([&] {
      return static_cast<BW8>(kind == 2 ? 255 * RandomInt(random, 0, 1) : level + RandomInt(random, 0, noise));
    });
    Image<BW8> dst(width, height, RandomLayout(random));
    Image<BW8> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) expected.Set(x, y, Naive(maskCode, src, x, y));
    }
    ASSERT_EQ(Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), width, height, maskCode), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height << " mask " << maskCode;
  }
}

}  // namespace
}  // namespace norvala_test
