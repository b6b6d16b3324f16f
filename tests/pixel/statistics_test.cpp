#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

// The mean that a call writes, at an address with any alignment.
template <class Call>
double MeanBy(Call call, int misalign) {
  unsigned char memory[16];
  EXPECT_EQ(call(reinterpret_cast<double*>(memory + misalign)), 0);
  double mean;
  std::memcpy(&mean, memory + misalign, sizeof mean);
  return mean;
}

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
    const auto mean = [&](double* out) {
      return Norvala_MeanBW8_C1R(src.data(), src.step(), src.width(), src.height(), out);
    };
    ASSERT_EQ(MeanBy(mean, round % 8), total / (src.width() * src.height()));
  }
}

// The order of the sums decides the last bits: one sequence for even columns and one for odd columns, over all rows.
TEST(MeanTest, OfFloatsInTheFixedOrder) {
  Random random(2);
  for (int round = 0; round < 200; ++round) {
    Image<FLOAT32> src(RandomSize(random), RandomInt(random, 1, 9), RandomLayout(random));
    // Magnitudes so far apart that every addition rounds.
    src.Fill(
        [&] { return std::ldexp(std::uniform_real_distribution<float>(-1, 1)(random), RandomInt(random, 0, 90)); });
    volatile double sums[2] = {0.0, 0.0};
    for (int y = 0; y < src.height(); ++y) {
      for (int x = 0; x < src.width(); ++x) sums[x % 2] = sums[x % 2] + static_cast<double>(src.Get(x, y));
    }
    const auto mean = [&](double* out) {
      return Norvala_MeanFLOAT32_C1R(src.data(), src.step(), src.width(), src.height(), out, round - 100);
    };
    ASSERT_EQ(MeanBy(mean, round % 8), (sums[1] + sums[0]) / (src.width() * src.height()));
  }
}

// Rows may overlap, so that few bytes are many pixels. 65536 * 32768 of them count as -2^31, and the sum of a row of
// 2^24 exceeds 31 bits.
TEST(MeanTest, CountsAndSumsWrap) {
  double mean = 0.0;
  const std::vector<BW8> pixels(65536 + 32768, 3);
  ASSERT_EQ(Norvala_MeanBW8_C1R(pixels.data(), 1, 65536, 32768, &mean), 0);
  EXPECT_EQ(mean, -3.0);
  const std::vector<BW8> white((1 << 24) + 1, 255);
  ASSERT_EQ(Norvala_MeanBW8_C1R(white.data(), 1, 1 << 24, 2, &mean), 0);
  EXPECT_EQ(mean, -1.0);
}

TEST(MaximumTest, FirstInScanOrder) {
  Random random(3);
  for (int round = 0; round < 300; ++round) {
    Image<BW8> src(RandomSize(random), RandomInt(random, 1, 20), RandomLayout(random));
    const int limit = RandomInt(random, 0, 255);
    src.Fill([&] { return static_cast<BW8>(RandomInt(random, 0, limit)); });
    int bestX = 0;
    int bestY = 0;
    for (int y = 0; y < src.height(); ++y) {
      for (int x = 0; x < src.width(); ++x) {
        if (src.Get(x, y) <= src.Get(bestX, bestY)) continue;
        bestX = x;
        bestY = y;
      }
    }
    BW8 maximum = 0;
    int32_t column = -1;
    int32_t row = -1;
    ASSERT_EQ(Norvala_MaxIndx_BW8(src.data(), src.step(), src.width(), src.height(), &maximum, &column, &row), 0);
    ASSERT_EQ(maximum, src.Get(bestX, bestY));
    ASSERT_EQ(column, bestX);
    ASSERT_EQ(row, bestY);
  }
}

// Nothing exceeds 255: rows after it are not read, so that they need not exist. Results may lie at any address.
TEST(MaximumTest, StopsAfterARowWithWhite) {
  Image<BW8> src(40, 3);
  src.Fill([] { return BW8{9}; });
  src.Set(38, 2, 255);
  src.Set(7, 2, 255);
  unsigned char memory[16] = {};
  ASSERT_EQ(Norvala_MaxIndx_BW8(src.data(), src.step(), 40, 1000000, memory, reinterpret_cast<int32_t*>(memory + 1),
                                reinterpret_cast<int32_t*>(memory + 6)),
            0);
  const unsigned char expected[16] = {255, 7, 0, 0, 0, 0, 2};
  EXPECT_TRUE(std::equal(memory, memory + 16, expected));
}

}  // namespace
}  // namespace norvala_test
