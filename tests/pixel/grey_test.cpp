#include <gtest/gtest.h>

#include <array>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

using Colour = std::array<BW8, 3>;

BW8 Grey(const Colour& c) { return static_cast<BW8>((c[0] * 1225U + c[1] * 2404U + c[2] * 467U) >> 12); }

TEST(GreyTest, WeighsTheChannels) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 9);
    Image<Colour> src(width, height, RandomLayout(random));
    Image<BW8> dst(width, height, RandomLayout(random));
    src.Fill([&] {
      const auto bits = static_cast<std::uint32_t>(random());
      const bool extreme = bits >> 31 != 0;  // full or no intensity, where sums come nearest to overflowing
      const auto channel = [&](int i) { return static_cast<BW8>(extreme ? (bits >> i & 1) * 255 : bits >> 8 * i); };
      return Colour{channel(0), channel(1), channel(2)};
    });
    Image<BW8> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) expected.Set(x, y, Grey(src.Get(x, y)));
    }
    ASSERT_EQ(Norvala_RGBToGray_BW8_C3C1R(src.data()->data(), src.step(), dst.data(), dst.step(), width, height), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height;
  }
}

TEST(GreyTest, KnownColours) {
  const Colour colours[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}, {1, 1, 1}, {1, 0, 0}, {4, 0, 0}};
  const BW8 expected[] = {76, 149, 29, 255, 1, 0, 1};
  BW8 actual[7];
  ASSERT_EQ(Norvala_RGBToGray_BW8_C3C1R(colours[0].data(), 0, actual, 0, 7, 1), 0);
  for (int i = 0; i < 7; ++i) EXPECT_EQ(actual[i], expected[i]) << i;
}

TEST(GreyTest, TakesNegativeSteps) {
  Image<Colour> src(20, 4);
  Image<BW8> dst(20, 4);
  Random random(2);
  src.Fill([&] { return Colour{static_cast<BW8>(random()), static_cast<BW8>(random()), static_cast<BW8>(random())}; });
  ASSERT_EQ(Norvala_RGBToGray_BW8_C3C1R(src.data()[60].data(), -src.step(), dst.data(), dst.step(), 20, 4), 0);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 20; ++x) EXPECT_EQ(dst.Get(x, y), Grey(src.Get(x, 3 - y)));
  }
}

TEST(GreyTest, FailuresWriteNothing) {
  const BW8 src[12] = {};
  BW8 dst[4] = {9, 9, 9, 9};
  EXPECT_EQ(Norvala_RGBToGray_BW8_C3C1R(nullptr, 6, dst, 2, 2, 2), -1);
  EXPECT_EQ(Norvala_RGBToGray_BW8_C3C1R(src, 6, nullptr, 2, 2, 2), -1);
  EXPECT_EQ(Norvala_RGBToGray_BW8_C3C1R(src, 6, dst, 2, 0, 2), -1);
  EXPECT_EQ(Norvala_RGBToGray_BW8_C3C1R(src, 6, dst, 2, 2, -2), -1);
  for (BW8 pixel : dst) EXPECT_EQ(pixel, 9);
}

}  // namespace
}  // namespace norvala_test
