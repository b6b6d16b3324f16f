#include <gtest/gtest.h>

#include <array>

#include "filter/filter.h"
#include "filter/separable_divisor.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

using norvala_test::HeapWatch;

TEST(DivisorScaleTest, DerivesTheModeFromTheDivisor) {
  const auto expect = [](std::int32_t divisor, std::int32_t mode, std::int32_t shift, std::int32_t addend,
                         float factor) {
    const DivisorScale scale = DeriveDivisorScale(divisor);
    EXPECT_EQ(scale.mode, mode) << divisor;
    EXPECT_EQ(scale.shift, shift) << divisor;
    EXPECT_EQ(scale.factor, factor) << divisor;
    if (mode == DivisorScale::Shift) {
      EXPECT_EQ(scale.addend, addend) << divisor;
    }
  };
  expect(1, 0, 0, 0, 1.0F);
  for (int shift = 1; shift <= 30; ++shift) expect(1 << shift, 1, shift, 1 << (shift - 1), 1.0F);
  expect(3, 2, 0, 0, 1.0F / 3.0F);
  expect(-1, 2, 0, 0, -1.0F);
  expect(-4, 2, 0, 0, -0.25F);
  expect(INT32_MAX, 2, 0, 0, 4.656612873e-10F);
  expect(-INT32_MAX, 2, 0, 0, -4.656612873e-10F);
}

// The integer rules against the stated one, at every threshold between two bytes and on both sides of it.
TEST(RoundedDivisionTest, EqualsTheScaleAtEveryThreshold) {
  for (std::int32_t divisor = 1; divisor <= (1 << 22);
       divisor += divisor < RoundedDivision::kLargestOther ? 1 : divisor) {
    ASSERT_TRUE(RoundedDivision::Serves(divisor));
    const DivisorScale scale = DeriveDivisorScale(divisor);
    const RoundedDivision division = RoundedDivision::Of(divisor, scale);
    const std::int32_t reachable = std::min(256 * divisor, UINT16_MAX - division.addend);
    MultiplierU16 multiplier{};
    const bool multiplies =
        divisor > 1 && reachable > 0 && MultiplierU16::Find(divisor, reachable + division.addend, &multiplier);
    if (divisor > 1 && divisor < 180) {
      EXPECT_TRUE(multiplies) << divisor;
    }
    for (std::int32_t byte = 0; byte < 256; ++byte) {
      const std::int32_t threshold = byte * divisor + (divisor + 1) / 2;
      for (std::int32_t sum = std::max(0, threshold - 2); sum <= threshold + 2; ++sum) {
        const int expected = ScaleSum(sum, scale);
        ASSERT_EQ(std::min(255, (sum + division.addend) / divisor), expected) << sum << " / " << divisor;
        if (!multiplies || sum > reachable) continue;
        const auto value = static_cast<std::uint32_t>(sum + division.addend);
        const auto quotient = static_cast<int>((value * multiplier.multiplier) >> 16 >> multiplier.shift);
        ASSERT_EQ(std::min(255, quotient), expected) << sum << " / " << divisor;
      }
    }
  }
}

TEST(SeparableStatusTest, ChecksInOrder) {
  std::array<BW8, 64> a{};
  const std::array<std::int32_t, 3> taps{1, 2, 1};
  const auto row = [&](const BW8* src, int srcStep, int dstStep, RegionSize size, int count, int divisor) {
    return kFilterRowBW8(src, srcStep, a.data() + 32, dstStep, size, taps.data(), count, 1, divisor);
  };
  const BW8* src = a.data() + 1;
  EXPECT_EQ(row(nullptr, 0, 0, {0, 0}, 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(kFilterRowBW8(src, 0, nullptr, 0, {0, 0}, taps.data(), 0, 1, 0), StatusCode::NullPointer);
  EXPECT_EQ(kFilterRowBW8(src, 0, a.data(), 0, {0, 0}, nullptr, 0, 1, 0), StatusCode::NullPointer);
  EXPECT_EQ(row(src, 0, 0, {0, 1}, 3, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(row(src, 0, 0, {1, 0}, 3, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(row(src, 0, 0, {1, 1}, 0, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(row(src, 0, 0, {1, 1}, 3, 0), StatusCode::ZeroDivisor);
  EXPECT_EQ(row(src, 9, 8, {8, 1}, 3, 4), StatusCode::NonPositiveStep);
  EXPECT_EQ(row(src, 10, 7, {8, 1}, 3, 4), StatusCode::NonPositiveStep);
  EXPECT_EQ(row(src, 10, 8, {8, 1}, 3, 4), StatusCode::Success);
}

// The kernel, its size, the divisor and the memory come before all else.
TEST(SeparableStatusTest, IntegerTapsOf16BitFiltersComeFirst) {
  const std::array<std::int32_t, 3> taps{1, 2, 1};
  std::array<BW16, 64> a{};
  for (const auto* filter : {&kFilterRowBW16, &kFilterColumnBW16}) {
    const auto call = [&](const BW16* src, int step, RegionSize size, const std::int32_t* kernel, int count,
                          int divisor) {
      return (*filter)(src, step, a.data() + 40, 16, size, kernel, count, 1, divisor);
    };
    HeapWatch heap;
    EXPECT_EQ(call(nullptr, 0, {0, 0}, nullptr, 0, 0), StatusCode::NullPointer);
    EXPECT_EQ(call(nullptr, 0, {0, 0}, taps.data(), 0, 0), StatusCode::NonPositiveSize);
    EXPECT_EQ(call(nullptr, 0, {0, 0}, taps.data(), 3, 0), StatusCode::ZeroDivisor);
    EXPECT_EQ(heap.allocations(), 0);
    heap.FailAt(0);
    EXPECT_EQ(call(nullptr, 0, {0, 0}, taps.data(), 3, 4), StatusCode::WorkBufferUnavailable);
    heap.FailAt(-1);
    EXPECT_EQ(call(nullptr, 0, {0, 0}, taps.data(), 3, 4), StatusCode::NullPointer);
    EXPECT_EQ(call(a.data() + 16, 0, {0, 1}, taps.data(), 3, 4), StatusCode::NonPositiveSize);
    EXPECT_EQ(call(a.data() + 16, 15, {8, 1}, taps.data(), 3, 4), StatusCode::NonPositiveStep);
    EXPECT_EQ(call(a.data() + 16, 20, {8, 1}, taps.data(), 3, 4), StatusCode::Success);
    EXPECT_EQ(heap.allocations(), 4);
    EXPECT_EQ(heap.live(), 0);
  }
}

TEST(SeparableMemoryTest, OnlyIntegerTapsOf16BitFiltersAllocate) {
  std::array<BW8, 64> bytes{};
  std::array<BW16, 64> shorts{};
  std::array<FLOAT32, 64> floats{};
  const std::array<std::int32_t, 3> taps{1, 2, 100000};
  const std::array<float, 3> weights{1, 2, 3};
  const HeapWatch heap;
  EXPECT_EQ(kFilterRowBW8(bytes.data() + 1, 20, bytes.data() + 32, 20, {8, 1}, taps.data(), 3, 1, 7),
            StatusCode::Success);
  EXPECT_EQ(kFilterColumn32fBW16(shorts.data() + 8, 16, shorts.data() + 32, 16, {8, 1}, weights.data(), 3, 1),
            StatusCode::Success);
  EXPECT_EQ(kFilterColumnFLOAT32(floats.data() + 8, 32, floats.data() + 32, 32, {8, 1}, weights.data(), 3, 1),
            StatusCode::Success);
  EXPECT_EQ(heap.allocations(), 0);
}

}  // namespace
}  // namespace norvala
