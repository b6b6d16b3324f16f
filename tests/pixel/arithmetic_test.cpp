#include <gtest/gtest.h>

#include <cmath>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

// Equal bits, or both NaN: which of two NaN survives an addition is left open.
testing::AssertionResult SamePixels(const Image<FLOAT32>& actual, const Image<FLOAT32>& expected) {
  for (int y = 0; y < actual.height(); ++y) {
    for (int x = 0; x < actual.width(); ++x) {
      const float a = actual.Get(x, y);
      const float b = expected.Get(x, y);
      if (!(std::isnan(a) && std::isnan(b)) && std::memcmp(&a, &b, sizeof a) != 0) {
        return testing::AssertionFailure() << a << " instead of " << b << " at " << x << ", " << y;
      }
    }
  }
  return testing::AssertionSuccess();
}

TEST(AddTest, RoundsTheSumOnce) {
  Random random(1);
  for (int round = 0; round < 200; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 9);
    Image<FLOAT32> src(width, height, round % 3 != 0 ? RandomLayout(random) : Layout{});
    Image<FLOAT32> sum(width, height, round % 3 != 0 ? RandomLayout(random) : Layout{});
    src.FillRandom(random);
    sum.FillRandom(random);
    Image<FLOAT32> expected(sum);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const volatile double wide = static_cast<double>(sum.Get(x, y)) + static_cast<double>(src.Get(x, y));
        expected.Set(x, y, static_cast<float>(wide));
      }
    }
    ASSERT_EQ(Norvala_AddFLOAT32_C1IR(src.data(), src.step(), sum.data(), sum.step(), width, height), 0);
    ASSERT_TRUE(SamePixels(sum, expected));
  }
}

// Steps are used as given: rows upwards, and one row for all.
TEST(AddTest, TakesAnyStep) {
  Image<FLOAT32> src(5, 3);
  Image<FLOAT32> sum(5, 3);
  Random random(2);
  src.Fill([&] { return static_cast<float>(RandomInt(random, 0, 99)); });
  sum.Fill([] { return 0.0F; });
  ASSERT_EQ(Norvala_AddFLOAT32_C1IR(src.data() + 10, -src.step(), sum.data(), sum.step(), 5, 3), 0);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 5; ++x) EXPECT_EQ(sum.Get(x, y), src.Get(x, 2 - y));
  }
  sum.Fill([] { return 0.0F; });
  ASSERT_EQ(Norvala_AddFLOAT32_C1IR(src.data(), src.step(), sum.data(), 0, 5, 3), 0);
  for (int x = 0; x < 5; ++x) {
    EXPECT_EQ(sum.Get(x, 0), src.Get(x, 0) + src.Get(x, 1) + src.Get(x, 2));
    EXPECT_EQ(sum.Get(x, 1), 0.0F);
  }
}

TEST(DivideTest, MultipliesByTheRoundedReciprocal) {
  Random random(3);
  const float divisors[] = {3.0F, -7.0F, 1e-40F, 3e38F, 0.1F, -0.3F, std::numeric_limits<float>::infinity(), 255.0F};
  bool differsFromQuotient = false;
  for (int round = 0; round < 160; ++round) {
    const float divisor = divisors[round % 8];
    Image<FLOAT32> image(RandomSize(random), RandomInt(random, 1, 9), round % 3 != 0 ? RandomLayout(random) : Layout{});
    image.FillRandom(random);
    Image<FLOAT32> expected(image);
    const volatile double exact = 1.0 / static_cast<double>(divisor);
    const auto reciprocal = static_cast<float>(exact);
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const volatile double product = static_cast<double>(image.Get(x, y)) * static_cast<double>(reciprocal);
        expected.Set(x, y, static_cast<float>(product));
        differsFromQuotient |= static_cast<float>(product) != image.Get(x, y) / divisor;
      }
    }
    ASSERT_EQ(Norvala_DivCFLOAT32_C1IR(divisor, image.data(), image.step(), image.width(), image.height()), 0);
    ASSERT_TRUE(SamePixels(image, expected)) << divisor;
  }
  EXPECT_TRUE(differsFromQuotient);
}

TEST(ArithmeticTest, FailuresWriteNothing) {
  Image<FLOAT32> image(4, 4);
  const auto before = image.Bytes();
  EXPECT_EQ(Norvala_DivCFLOAT32_C1IR(0.0F, image.data(), 16, 4, 4), -1);
  EXPECT_EQ(Norvala_DivCFLOAT32_C1IR(-0.0F, image.data(), 16, 4, 4), -1);
  EXPECT_EQ(Norvala_DivCFLOAT32_C1IR(std::numeric_limits<float>::quiet_NaN(), image.data(), 16, 4, 4), -1);
  EXPECT_EQ(Norvala_DivCFLOAT32_C1IR(2.0F, nullptr, 16, 4, 4), -1);
  EXPECT_EQ(Norvala_DivCFLOAT32_C1IR(2.0F, image.data(), 0, 4, 4), -1);
  EXPECT_EQ(Norvala_DivCFLOAT32_C1IR(2.0F, image.data(), 16, 4, 0), -1);
  EXPECT_EQ(Norvala_AddFLOAT32_C1IR(nullptr, 16, image.data(), 16, 4, 4), -1);
  EXPECT_EQ(Norvala_AddFLOAT32_C1IR(image.data(), 16, nullptr, 16, 4, 4), -1);
  EXPECT_EQ(Norvala_AddFLOAT32_C1IR(image.data(), 16, image.data(), 16, -4, 4), -1);
  EXPECT_EQ(image.Bytes(), before);
}

}  // namespace
}  // namespace norvala_test
