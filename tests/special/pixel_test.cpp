#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "pixel/pixel.h"

namespace norvala {
namespace {

// Rows may overlap, so that few bytes are many pixels. 65536 * 32768 of them count as -2^31, and the sum of a row of
// 2^24 exceeds 31 bits.
TEST(MeanTest, CountsAndSumsWrap) {
  double mean = 0.0;
  const std::vector<BW8> pixels(65536 + 32768, 3);
  ASSERT_EQ(kMeanBW8_C1R(pixels.data(), 1, {65536, 32768}, &mean), StatusCode::Success);
  EXPECT_EQ(mean, -3.0);
  const std::vector<BW8> white((1 << 24) + 1, 255);
  ASSERT_EQ(kMeanBW8_C1R(white.data(), 1, {1 << 24, 2}, &mean), StatusCode::Success);
  EXPECT_EQ(mean, -1.0);
}

// Weights of every kind: the usual ones, sums up to 1, sums beyond it, negative ones, and ones that cannot be scaled.
TEST(GreyWeightsTest, AreTakenAsMultiplesOf4096ths) {
  const float huge = 1e30F;
  const float nan = std::numeric_limits<float>::quiet_NaN();
  struct Case {
    FLOAT32 weights[3];
    std::uint32_t scaled[3];
  };
  const Case cases[] = {
      {{0.299F, 0.587F, 0.114F}, {1225, 2404, 467}},
      {{1.0F, 0.0F, 0.0F}, {4096, 0, 0}},
      {{0.25F, 0.5F, 0.25F}, {1024, 2048, 1024}},
      {{0.5F / 4096, 0.49F / 4096, 1.5F / 4096}, {1, 0, 2}},
      {{15.0F / 4096, 31.0F / 4096, 1039.0F / 4096}, {15, 31, 1039}},
      {{0.5F, 0.5F, 0.5F}, {2048, 2048, 2048}},
      {{-1.0F, 1.0F, 2.5F}, {0U - 4095U, 4096, 10240}},
      {{nan, 0.5F, -huge}, {0, 2048, 0}},
      {{huge, -5e5F, 5e5F}, {0, 0U - 2048000000U, 2048000000}},
  };
  std::mt19937 random(1);
  constexpr int kCount = 67;
  std::vector<BW8> src(3 * kCount);
  std::vector<BW8> dst(kCount);
  for (const Case& c : cases) {
    for (BW8& value : src) value = static_cast<BW8>(random());
    ASSERT_EQ(WeighToGray_BW8_C3C1R(src.data(), 0, dst.data(), 0, {kCount, 1}, c.weights), StatusCode::Success);
    for (std::size_t x = 0; x < kCount; ++x) {
      const std::uint32_t sum = src[3 * x] * c.scaled[0] + src[3 * x + 1] * c.scaled[1] + src[3 * x + 2] * c.scaled[2];
      ASSERT_EQ(dst[x], static_cast<BW8>(sum >> 12)) << c.weights[0] << ", pixel " << x;
    }
  }
}

}  // namespace
}  // namespace norvala
