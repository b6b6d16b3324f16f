#include <gtest/gtest.h>

#include <array>

#include "filter/filter.h"
#include "filter/separable/divisor.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

TEST(DivisorScaleTest, DerivesTheModeFromTheDivisor) {
  const auto expect = [](std::int32_t divisor, DivisorScale expected) {
    const DivisorScale scale = DeriveDivisorScale(divisor);
    EXPECT_EQ(scale.mode, expected.mode) << divisor;
    EXPECT_EQ(scale.shift, expected.shift) << divisor;
    EXPECT_EQ(scale.addend, expected.addend) << divisor;
    EXPECT_EQ(scale.factor, expected.factor) << divisor;
  };
  expect(1, {DivisorScale::None, 0, 0, 1.0F});
  for (int shift = 1; shift <= 30; ++shift) {
    expect(1 << shift, {DivisorScale::Shift, shift, 1 << (shift - 1), 1.0F});
  }
  expect(3, {DivisorScale::Reciprocal, 0, 0, 1.0F / 3.0F});
  expect(-4, {DivisorScale::Reciprocal, 0, 0, -0.25F});
  expect(INT32_MAX, {DivisorScale::Reciprocal, 0, 0, 4.656612873e-10F});
}

// The output rule as it is stated.
std::uint8_t ScaleSum(std::int32_t sum, const DivisorScale& scale) {
  if (scale.mode == DivisorScale::Reciprocal) {
    const double value = sum * static_cast<double>(scale.factor);
    return static_cast<std::uint8_t>((value > 0.0 ? value < 255.0 ? value : 255.0 : 0.0) + 0.5);
  }
  if (sum <= 0) return 0;
  const std::uint32_t value =
      (static_cast<std::uint32_t>(sum) + static_cast<std::uint32_t>(scale.addend)) >> scale.shift;
  return static_cast<std::uint8_t>(value < 255 ? value : 255);
}

// The integer rules against the stated one, at every threshold between two bytes and on both sides of it.
TEST(RoundedDivisionTest, EqualsTheScaleAtEveryThreshold) {
  for (std::int32_t divisor = 1; divisor <= (1 << 22);
       divisor += divisor <= RoundedDivision::kLargestOther ? 1 : divisor) {
    ASSERT_TRUE(RoundedDivision::Serves(divisor));
    const DivisorScale scale = DeriveDivisorScale(divisor);
    const RoundedDivision division = RoundedDivision::Of(divisor, scale);
    for (std::int32_t byte = 0; byte < 256; ++byte) {
      const std::int32_t threshold = byte * divisor + (divisor + 1) / 2;
      for (std::int32_t sum = std::max(0, threshold - 2); sum <= threshold + 2; ++sum) {
        const int expected = ScaleSum(sum, scale);
        ASSERT_EQ(std::min(255, (sum + division.addend) / divisor), expected) << sum << " / " << divisor;
      }
    }
  }
}

TEST(RoundedDivisionTest, ServesDivisorsBelow2To14AndPowersOfTwo) {
  for (const std::int32_t divisor : {1, 3, (1 << 14) - 1, 1 << 14, 1 << 30}) {
    EXPECT_TRUE(RoundedDivision::Serves(divisor)) << divisor;
  }
  for (const std::int32_t divisor : {(1 << 14) + 1, INT32_MAX, -1, -4, INT32_MIN}) {
    EXPECT_FALSE(RoundedDivision::Serves(divisor)) << divisor;
  }
}

// Sums and divisors without a common divisor, at every threshold.
TEST(RoundedDivisionTest, StaysTheSameWithoutACommonDivisor) {
  for (std::int32_t common = 1; common < 40; ++common) {
    for (std::int32_t reduced = 1; reduced * common <= 4000; ++reduced) {
      const std::int32_t divisor = reduced * common;
      const DivisorScale scale = DeriveDivisorScale(divisor);
      const RoundedDivision division = RoundedDivision::Of(divisor, scale).Reduced(common);
      ASSERT_EQ(division.divisor, reduced);
      for (std::int32_t byte = 0; byte < 256; byte += 5) {
        for (std::int32_t sum = byte * reduced + reduced / 2 - 1; sum <= byte * reduced + reduced / 2 + 1; ++sum) {
          ASSERT_EQ(std::min(255, std::max(0, sum + division.addend) / reduced), ScaleSum(sum * common, scale))
              << sum << " * " << common << " / " << divisor;
        }
      }
    }
  }
}

// Every call fails all later checks as well; nothing is written and nothing allocated.
template <class Pixel, class Tap, class Table>
void ExpectChecksInOrder(const Table& filter, bool alongRow) {
  constexpr int kPixel = sizeof(Pixel);
  constexpr bool kDivides = std::is_same_v<Tap, std::int32_t>;
  const int srcStep = (8 + (alongRow ? 2 : 0)) * kPixel;
  const int dstStep = 8 * kPixel;
  std::array<Pixel, 64> image{};
  image.fill(7);
  const std::array<Pixel, 64> before = image;
  const Pixel* const src = image.data() + 16;
  Pixel* const dst = image.data() + 40;
  const std::array<Tap, 3> taps{1, 2, 1};
  const auto call = [&](const Pixel* from, int fromStep, Pixel* to, int toStep, RegionSize size, const Tap* kernel,
                        int count, std::int32_t divisor) {
    if constexpr (kDivides) return filter(from, fromStep, to, toStep, size, kernel, count, 1, divisor);
    if constexpr (!kDivides) return filter(from, fromStep, to, toStep, size, kernel, count, 1);
  };
  const norvala_test::HeapWatch heap;
  EXPECT_EQ(call(nullptr, 0, dst, 0, {0, 0}, taps.data(), 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(call(src, 0, nullptr, 0, {0, 0}, taps.data(), 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(call(src, 0, dst, 0, {0, 0}, nullptr, 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(call(src, 0, dst, 0, {0, 1}, taps.data(), 3, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(src, 0, dst, 0, {1, 0}, taps.data(), 3, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(src, 0, dst, 0, {1, 1}, taps.data(), 0, 0), StatusCode::NonPositiveSize);
  if (kDivides) {
    EXPECT_EQ(call(src, 0, dst, 0, {8, 1}, taps.data(), 3, 0), StatusCode::ZeroDivisor);
  }
  // The divisor whose rule is never found comes after the steps.
  EXPECT_EQ(call(src, srcStep - 1, dst, dstStep, {8, 1}, taps.data(), 3, INT32_MIN), StatusCode::NonPositiveStep);
  EXPECT_EQ(call(src, srcStep, dst, dstStep - 1, {8, 1}, taps.data(), 3, INT32_MIN), StatusCode::NonPositiveStep);
  EXPECT_EQ(call(src, INT32_MIN, dst, dstStep, {8, 1}, taps.data(), 3, INT32_MIN), StatusCode::NonPositiveStep);
  EXPECT_EQ(call(src, INT32_MAX - 3, dst, dstStep, {INT32_MAX, 1}, taps.data(), 3, 4), StatusCode::NonPositiveStep);
  if (alongRow) {
    EXPECT_EQ(call(src, INT32_MAX, dst, dstStep, {8, 1}, taps.data(), INT32_MAX, 4), StatusCode::NonPositiveStep);
  }
  EXPECT_EQ(image, before);
  EXPECT_EQ(call(src, srcStep, dst, dstStep, {8, 1}, taps.data(), 3, 4), StatusCode::Success);
  EXPECT_EQ(heap.allocations(), 0);
}

TEST(SeparableStatusTest, ChecksInOrder) {
  ExpectChecksInOrder<BW8, std::int32_t>(kFilterRowBW8, true);
  ExpectChecksInOrder<BW8, std::int32_t>(kFilterColumnBW8, false);
  ExpectChecksInOrder<BW16, FLOAT32>(kFilterRow32fBW16, true);
  ExpectChecksInOrder<BW16, FLOAT32>(kFilterColumn32fBW16, false);
  ExpectChecksInOrder<FLOAT32, FLOAT32>(kFilterRowFLOAT32, true);
  ExpectChecksInOrder<FLOAT32, FLOAT32>(kFilterColumnFLOAT32, false);
}

// The kernel, its size, the divisor and the memory come before all else.
TEST(SeparableStatusTest, IntegerTapsOf16BitFiltersComeFirst) {
  const std::array<std::int32_t, 3> taps{1, 2, 1};
  std::array<BW16, 64> a{};
  for (const auto* filter : {&kFilterRowBW16, &kFilterColumnBW16}) {
    const auto call = [&](const BW16* src, int step, const std::int32_t* kernel, int count, int divisor) {
      return (*filter)(src, step, a.data() + 40, 16, {8, 1}, kernel, count, 1, divisor);
    };
    norvala_test::HeapWatch heap;
    EXPECT_EQ(call(nullptr, 0, nullptr, 0, 0), StatusCode::NullPointer);
    EXPECT_EQ(call(nullptr, 0, taps.data(), 0, 0), StatusCode::NonPositiveSize);
    EXPECT_EQ(call(nullptr, 0, taps.data(), 3, 0), StatusCode::ZeroDivisor);
    EXPECT_EQ(heap.allocations(), 0);
    heap.FailAt(0);
    EXPECT_EQ(call(nullptr, 0, taps.data(), 3, 4), StatusCode::WorkBufferUnavailable);
    heap.FailAt(-1);
    EXPECT_EQ(call(nullptr, 0, taps.data(), 3, 4), StatusCode::NullPointer);
    EXPECT_EQ(call(a.data() + 16, 15, taps.data(), 3, 4), StatusCode::NonPositiveStep);
    EXPECT_EQ(call(a.data() + 16, 20, taps.data(), 3, 4), StatusCode::Success);
    EXPECT_EQ(heap.allocations(), 3);
    EXPECT_EQ(heap.live(), 0);
  }
}

}  // namespace
}  // namespace norvala
