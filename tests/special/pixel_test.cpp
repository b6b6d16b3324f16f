#include "pixel/pixel.h"

#include <gtest/gtest.h>

#include <vector>

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

}  // namespace
}  // namespace norvala
