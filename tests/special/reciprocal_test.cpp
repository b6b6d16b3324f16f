#include "filter/reciprocal.h"

#include <gtest/gtest.h>

#include "filter/separable/bw8.h"

namespace norvala {
namespace {

TEST(WordReciprocalTest, DividesUpToTheLargestValue) {
  for (std::uint32_t divisor = 2; divisor < 70000; divisor += divisor < 400 ? 1 : divisor / 5) {
    const WordReciprocal reciprocal(static_cast<std::int32_t>(divisor));
    for (std::uint32_t value = 0; value <= UINT16_MAX; ++value) {
      const U16x8 quotients = reciprocal.Divide(Splat<U16x8>(value));
      // Beyond, the last multiple but one is too much: the bound is the best one.
      const bool isTooLarge = value > reciprocal.largest && value % divisor == divisor - 1;
      ASSERT_GE(quotients[0], value / divisor + (isTooLarge ? 1 : 0)) << value << " / " << divisor;
      ASSERT_TRUE(value > reciprocal.largest || quotients[0] == value / divisor) << value << " / " << divisor;
    }
  }
}

// Multiples of the divisor, from the smallest and from the largest on, and the sums just below them.
TEST(FloatReciprocalTest, DividesUpToTheLargestDividend) {
  for (std::int32_t divisor = 1; divisor < 1 << 29; divisor += divisor < 3000 ? 1 : divisor / 7) {
    const float reciprocal = FloatReciprocal(divisor);
    const auto divide = [=](std::int32_t sum) {
      return static_cast<std::int32_t>(static_cast<float>(sum) * reciprocal);
    };
    const std::int32_t most = kLargestFloatDividend / divisor;
    for (std::int32_t i = 0; i < 600; ++i) {
      const std::int32_t multiple = std::max(0, i < 300 ? std::min(most, i) : most - (i - 300)) * divisor;
      for (const std::int32_t sum : {multiple - 1, multiple, kLargestFloatDividend - i}) {
        ASSERT_EQ(divide(sum), sum / divisor) << sum << " / " << divisor;
        ASSERT_EQ(divide(-sum), -sum / divisor) << -sum << " / " << divisor;
      }
    }
    ASSERT_GE(divide(INT32_MAX / 2), most);
  }
}

// Sums half-way between two bytes and on both sides of it, and those beyond all bytes.
TEST(RoundingReciprocalTest, RoundsToTheSideOfHalves) {
  for (std::int32_t divisor = 3; divisor < kRoundingReciprocalEnd; ++divisor) {
    if (RoundedDivision::IsPowerOfTwo(divisor)) continue;
    for (const bool halvesGoDown : {false, true}) {
      const float reciprocal = RoundingReciprocal(divisor, halvesGoDown);
      const auto divide = [=](std::int32_t sum) {
        return RoundLanes(Splat<F32x4>(static_cast<float>(sum) * reciprocal))[0];
      };
      for (std::int32_t byte = 0; byte < 256; ++byte) {
        const std::int32_t half = byte * divisor + divisor / 2;
        const bool isUp = divisor % 2 == 0 && !halvesGoDown;
        ASSERT_EQ(divide(half - 1), byte) << half - 1 << " / " << divisor;
        ASSERT_EQ(divide(half), byte + (isUp ? 1 : 0)) << half << " / " << divisor;
        ASSERT_EQ(divide(half + 1), byte + 1) << half + 1 << " / " << divisor;
      }
      ASSERT_GE(divide(INT32_MAX), 256);
      ASSERT_LE(divide(INT32_MIN), 0);
    }
  }
}

}  // namespace
}  // namespace norvala
