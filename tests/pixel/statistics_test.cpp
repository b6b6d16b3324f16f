#include <gtest/gtest.h>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

TEST(MeanTest, OfBytes) {
  Random random(1);
  for (int round = 0; round < 200; ++round) {
    const int width = round % 20 == 0 ? RandomInt(random, 4000, 20000) : RandomSize(random);
    Image<BW8> src(width, RandomInt(random, 1, 9), RandomLayout(random));
    src.FillRandom(random);
    if (round % 5 == 0) src.Fill([] { return BW8{255}; });
    double total = 0.0;
    for (int y = 0; y < src.height(); ++y) {
      for (int x = 0; x < src.width(); ++x) total += src.Get(x, y);
    }
    double mean = -1.0;
    ASSERT_EQ(Norvala_MeanBW8_C1R(src.data(), src.step(), src.width(), src.height(), &mean), 0);
    ASSERT_EQ(mean, total / (src.width() * src.height()));
  }
}

// The order of the sums decides the last bits: one sequence for even columns and one for odd columns, over all rows.
TEST(MeanTest, OfFloatsInTheFixedOrder) {
  Random random(2);
  for (int round = 0; round < 200; ++round) {
    Image<FLOAT32> src(RandomSize(random), RandomInt(random, 1, 9), RandomLayout(random));
    src.Fill(
        [&] { return std::uniform_real_distribution<float>(-1.0F, 1.0F)(random) * (round % 2 != 0 ? 1.0F : 1e20F); });
    volatile double even = 0.0;
    volatile double odd = 0.0;
    for (int y = 0; y < src.height(); ++y) {
      for (int x = 0; x < src.width(); ++x) {
        if (x % 2 == 0) {
          even = even + static_cast<double>(src.Get(x, y));
        } else {
          odd = odd + static_cast<double>(src.Get(x, y));
        }
      }
    }
    double mean = -1.0;
    ASSERT_EQ(Norvala_MeanFLOAT32_C1R(src.data(), src.step(), src.width(), src.height(), &mean, round - 100), 0);
    ASSERT_EQ(mean, (odd + even) / (src.width() * src.height()));
  }
}

// Rows may overlap, so that few bytes are many pixels: 65536 * 32768 of them count as -2^31.
TEST(MeanTest, CountWraps) {
  const std::vector<BW8> pixels(65536 + 32768, 3);
  double mean = 0.0;
  ASSERT_EQ(Norvala_MeanBW8_C1R(pixels.data(), 1, 65536, 32768, &mean), 0);
  EXPECT_EQ(mean, -3.0);
}

TEST(MaximumTest, FirstInScanOrder) {
  Random random(3);
  for (int round = 0; round < 300; ++round) {
    Image<BW8> src(RandomSize(random), RandomInt(random, 1, 20), RandomLayout(random));
    const int limit = RandomInt(random, 0, 255);
    src.Fill([&] { return static_cast<BW8>(RandomInt(random, 0, limit)); });
    int best = src.Get(0, 0);
    int bestX = 0;
    int bestY = 0;
    for (int y = 0; y < src.height(); ++y) {
      for (int x = 0; x < src.width(); ++x) {
        if (src.Get(x, y) > best) {
          best = src.Get(x, y);
          bestX = x;
          bestY = y;
        }
      }
    }
    BW8 maximum = 0;
    int32_t column = -1;
    int32_t row = -1;
    ASSERT_EQ(Norvala_MaxIndx_BW8(src.data(), src.step(), src.width(), src.height(), &maximum, &column, &row), 0);
    ASSERT_EQ(maximum, best);
    ASSERT_EQ(column, bestX);
    ASSERT_EQ(row, bestY);
  }
}

// Nothing exceeds 255: rows after it are not read, so that they need not exist.
TEST(MaximumTest, StopsAfterARowWithWhite) {
  Image<BW8> src(40, 3);
  src.Fill([] { return BW8{9}; });
  src.Set(38, 2, 255);
  src.Set(7, 2, 255);
  BW8 maximum = 0;
  int32_t column = -1;
  int32_t row = -1;
  ASSERT_EQ(Norvala_MaxIndx_BW8(src.data(), src.step(), 40, 1000000, &maximum, &column, &row), 0);
  EXPECT_EQ(maximum, 255);
  EXPECT_EQ(column, 7);
  EXPECT_EQ(row, 2);
}

TEST(StatisticsTest, ResultsMayLieAnywhere) {
  const BW8 pixels[] = {1, 2, 9, 4};
  const FLOAT32 floats[] = {0.5F, 1.0F};
  unsigned char memory[32] = {};
  auto* mean = reinterpret_cast<double*>(memory + 1);
  double result;
  ASSERT_EQ(Norvala_MeanBW8_C1R(pixels, 4, 4, 1, mean), 0);
  std::memcpy(&result, memory + 1, sizeof result);
  EXPECT_EQ(result, 4.0);
  ASSERT_EQ(Norvala_MeanFLOAT32_C1R(floats, 8, 2, 1, mean, 0), 0);
  std::memcpy(&result, memory + 1, sizeof result);
  EXPECT_EQ(result, 0.75);
  ASSERT_EQ(Norvala_MaxIndx_BW8(pixels, 2, 2, 2, memory, reinterpret_cast<int32_t*>(memory + 11),
                                reinterpret_cast<int32_t*>(memory + 18)),
            0);
  EXPECT_EQ(memory[0], 9);
  EXPECT_EQ(memory[11], 0);
  EXPECT_EQ(memory[18], 1);
}

TEST(StatisticsTest, FailuresWriteNothing) {
  const BW8 pixels[16] = {};
  const FLOAT32 floats[16] = {};
  double mean = 7.0;
  BW8 maximum = 7;
  int32_t column = 7;
  int32_t row = 7;
  EXPECT_EQ(Norvala_MeanBW8_C1R(pixels, 4, 4, 4, nullptr), -1);
  EXPECT_EQ(Norvala_MeanBW8_C1R(nullptr, 4, 4, 4, &mean), -1);
  EXPECT_EQ(Norvala_MeanBW8_C1R(pixels, 0, 4, 4, &mean), -1);
  EXPECT_EQ(Norvala_MeanFLOAT32_C1R(floats, 16, 0, 4, &mean, 1), -1);
  EXPECT_EQ(Norvala_MeanFLOAT32_C1R(floats, 16, 4, INT32_MIN, &mean, 1), -1);
  EXPECT_EQ(Norvala_MaxIndx_BW8(pixels, 4, 4, 4, nullptr, &column, &row), -1);
  EXPECT_EQ(Norvala_MaxIndx_BW8(pixels, 4, 4, 4, &maximum, nullptr, &row), -1);
  EXPECT_EQ(Norvala_MaxIndx_BW8(pixels, 4, 4, 4, &maximum, &column, nullptr), -1);
  EXPECT_EQ(Norvala_MaxIndx_BW8(pixels, -4, 4, 4, &maximum, &column, &row), -1);
  EXPECT_EQ(Norvala_MaxIndx_BW8(pixels, 4, 4, 0, &maximum, &column, &row), -1);
  EXPECT_EQ(mean, 7.0);
  EXPECT_EQ(maximum + column + row, 21);
}

}  // namespace
}  // namespace norvala_test
