#include "filter/reciprocal.h"

#include <gtest/gtest.h>

namespace norvala {
namespace {

std::uint32_t Divide(const WordReciprocal& reciprocal, std::uint32_t value) {
  const U16x8 quotients = reciprocal.Divide(Splat<U16x8>(value));
  return quotients[0];
}

TEST(WordReciprocalTest, DividesUpToTheLargestValue) {
  for (std::int32_t divisor = 2; divisor < 70000; divisor += divisor < 400 ? 1 : divisor / 5) {
    const WordReciprocal reciprocal(divisor);
    const auto d = static_cast<std::uint32_t>(divisor);
    for (std::uint32_t value = 0; value <= UINT16_MAX; ++value) {
      const std::uint32_t quotient = Divide(reciprocal, value);
      if (value <= reciprocal.largest) {
        ASSERT_EQ(quotient, value / d) << value << " / " << divisor;
      } else if (value % d == d - 1) {
        ASSERT_GT(quotient, value / d) << value << " / " << divisor;  // the bound is the best one
      } else {
        ASSERT_GE(quotient, value / d) << value << " / " << divisor;
      }
    }
  }
}

TEST(FloatReciprocalTest, DividesUpToTheLargestDividend) {
  const auto divide = [](std::int32_t sum, std::int32_t divisor) {
    return static_cast<std::int32_t>(static_cast<float>(sum) * FloatReciprocal(divisor));
  };
  for (std::int32_t divisor = 1; divisor < 1 << 29; divisor += divisor < 3000 ? 1 : divisor / 7) {
    for (std::int32_t i = 0; i < 600; ++i) {
      // Multiples of the divisor, from the smallest and from the largest on, and the sums just below them.
      const std::int32_t most = kLargestFloatDividend / divisor;
      const std::int32_t multiple = std::max(0, i < 300 ? std::min(most, i) : most - (i - 300)) * divisor;
      for (const std::int32_t sum : {multiple - 1, multiple, kLargestFloatDividend - i}) {
        ASSERT_EQ(divide(sum, divisor), sum / divisor) << sum << " / " << divisor;
        ASSERT_EQ(divide(-sum, divisor), -sum / divisor) << -sum << " / " << divisor;
      }
    }
    ASSERT_GE(divide(INT32_MAX / 2, divisor), kLargestFloatDividend / divisor);
  }
}

}  // namespace
}  // namespace norvala
