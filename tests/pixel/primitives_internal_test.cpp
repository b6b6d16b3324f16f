#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "pixel/pixel.h"

namespace norvala {
namespace {

constexpr RegionSize kNone = {0, 0};
constexpr RegionSize kOne = {1, 1};

TEST(ConvertStatusTest, ChecksInOrder) {
  BW32 a[4] = {};
  BW32 b[4] = {};
  const auto check = [&](auto convert) {
    EXPECT_EQ(convert(nullptr, 0, b, 0, kNone), StatusCode::NullPointer);
    EXPECT_EQ(convert(a, 0, nullptr, 0, kNone), StatusCode::NullPointer);
    EXPECT_EQ(convert(a, 0, b, 0, {1, 0}), StatusCode::NonPositiveSize);
    EXPECT_EQ(convert(a, 0, b, 0, {0, 1}), StatusCode::NonPositiveSize);
    EXPECT_EQ(convert(a, 0, b, 4, kOne), StatusCode::NonPositiveStep);
    EXPECT_EQ(convert(a, 4, b, 0, kOne), StatusCode::NonPositiveStep);
    EXPECT_EQ(convert(a, 4, b, 4, kOne), StatusCode::Success);
  };
  const auto with = [](const auto& table, auto source, auto destination, auto... mode) {
    return [&table, mode...](const void* src, int srcStep, void* dst, int dstStep, RegionSize size) {
      return table(static_cast<const decltype(source)*>(src), srcStep, static_cast<decltype(destination)*>(dst),
                   dstStep, size, mode...);
    };
  };
  check(with(kConvertFLOAT32toBW8, FLOAT32(), BW8(), 1));
  check(with(kConvertFLOAT32toBW16, FLOAT32(), BW16(), 0));
  check(with(kConvertBW8toFLOAT32, BW8(), FLOAT32()));
  check(with(kConvertBW8toBW16, BW8(), BW16()));
  check(with(kConvertBW16ToBW8, BW16(), BW8()));
  check(with(kConvertBW16toBW32, BW16(), BW32()));
}

TEST(LogicStatusTest, ChecksStepsBeforeSizes) {
  BW32 a[4] = {};
  for (const auto& table : {kAndBW32, kOrBW32}) {
    EXPECT_EQ(table(nullptr, 0, a, 0, a, 0, kNone), StatusCode::NullPointer);
    EXPECT_EQ(table(a, 0, nullptr, 0, a, 0, kNone), StatusCode::NullPointer);
    EXPECT_EQ(table(a, 0, a, 0, nullptr, 0, kNone), StatusCode::NullPointer);
    EXPECT_EQ(table(a, 0, a, 4, a, 4, kNone), StatusCode::NonPositiveStep);
    EXPECT_EQ(table(a, 4, a, 0, a, 4, kNone), StatusCode::NonPositiveStep);
    EXPECT_EQ(table(a, 4, a, 4, a, 0, kNone), StatusCode::NonPositiveStep);
    EXPECT_EQ(table(a, 4, a, 4, a, 4, {1, 0}), StatusCode::NonPositiveSize);
    EXPECT_EQ(table(a, 4, a, 4, a, 4, {0, 1}), StatusCode::NonPositiveSize);
    EXPECT_EQ(table(a, 4, a, 4, a, 4, kOne), StatusCode::Success);
  }
}

// The constant operations, at counts for each of their ways to work, with separate source and destination.
TEST(LogicStatusTest, ConstantOperationsCheckStepsBeforeSizes) {
  const auto check = [](const auto& table, auto constant, auto pixel, auto expected) {
    using T = decltype(pixel);
    const T src[2] = {pixel, pixel};
    T dst[2] = {};
    EXPECT_EQ(table(constant, nullptr, 0, dst, 0, kNone), StatusCode::NullPointer);
    EXPECT_EQ(table(constant, src, 0, nullptr, 0, kNone), StatusCode::NullPointer);
    EXPECT_EQ(table(constant, src, 0, dst, 4, kNone), StatusCode::NonPositiveStep);
    EXPECT_EQ(table(constant, src, 4, dst, 0, kNone), StatusCode::NonPositiveStep);
    EXPECT_EQ(table(constant, src, 4, dst, 4, {1, 0}), StatusCode::NonPositiveSize);
    EXPECT_EQ(table(constant, src, 4, dst, 4, {0, 1}), StatusCode::NonPositiveSize);
    EXPECT_EQ(table(constant, src, 8, dst, 8, kOne), StatusCode::Success);
    EXPECT_EQ(dst[0], expected);
    EXPECT_EQ(dst[1], 0);
  };
  check(kAndCBW16, BW16{0x0FF0}, BW16{0x1234}, BW16{0x0230});
  check(kRShiftCBW16, 0U, BW16{0x8000}, BW16{0x8000});
  check(kRShiftCBW16, 15U, BW16{0x8000}, BW16{1});
  check(kRShiftCBW16, 16U, BW16{0x8000}, BW16{0});
  check(kRShiftCBW32, 0U, BW32{0x80000000}, BW32{0x80000000});
  check(kRShiftCBW32, 4U, BW32{0x80000000}, BW32{0xF8000000});
  check(kRShiftCBW32, 32U, BW32{0x80000000}, BW32{0xFFFFFFFF});
  check(kLShiftCBW32, 0U, BW32{5}, BW32{5});
  check(kLShiftCBW32, 31U, BW32{5}, BW32{0x80000000});
  check(kLShiftCBW32, 32U, BW32{5}, BW32{0});
}

TEST(ArithmeticStatusTest, ChecksInOrder) {
  FLOAT32 a[4] = {};
  FLOAT32 b[4] = {};
  const FLOAT32 nan = std::numeric_limits<FLOAT32>::quiet_NaN();
  EXPECT_EQ(kAddFLOAT32_C1IR(nullptr, 0, b, 0, kNone), StatusCode::NullPointer);
  EXPECT_EQ(kAddFLOAT32_C1IR(a, 0, nullptr, 0, kNone), StatusCode::NullPointer);
  EXPECT_EQ(kAddFLOAT32_C1IR(a, 0, b, 0, {1, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kAddFLOAT32_C1IR(a, 0, b, 0, {0, 1}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kAddFLOAT32_C1IR(a, -4, b, 0, kOne), StatusCode::Success);
  EXPECT_EQ(kDivCFLOAT32_C1IR(nan, nullptr, 0, kNone), StatusCode::NullPointer);
  EXPECT_EQ(kDivCFLOAT32_C1IR(nan, a, 0, {1, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kDivCFLOAT32_C1IR(nan, a, 0, kOne), StatusCode::NonPositiveStep);
  EXPECT_EQ(kDivCFLOAT32_C1IR(nan, a, 4, kOne), StatusCode::DivisionByZero);
  EXPECT_EQ(kDivCFLOAT32_C1IR(-0.0F, a, 4, kOne), StatusCode::DivisionByZero);
  EXPECT_EQ(kDivCFLOAT32_C1IR(1.0F, a, 4, kOne), StatusCode::Success);
}

TEST(StatisticsStatusTest, ChecksInOrder) {
  BW8 a[8] = {};
  FLOAT32 f[2] = {};
  FLOAT64 mean = 0.0;
  EXPECT_EQ(kMeanBW8_C1R(a, 0, kNone, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kMeanBW8_C1R(nullptr, 0, kNone, &mean), StatusCode::NullPointer);
  EXPECT_EQ(kMeanBW8_C1R(a, 0, kNone, &mean), StatusCode::NonPositiveStep);
  EXPECT_EQ(kMeanBW8_C1R(a, 1, {1, 0}, &mean), StatusCode::NonPositiveSize);
  EXPECT_EQ(kMeanBW8_C1R(a, 1, {0, 1}, &mean), StatusCode::NonPositiveSize);
  EXPECT_EQ(kMeanFLOAT32_C1R(f, 0, kNone, nullptr, 0), StatusCode::NullPointer);
  EXPECT_EQ(kMeanFLOAT32_C1R(nullptr, 0, kNone, &mean, 0), StatusCode::NullPointer);
  EXPECT_EQ(kMeanFLOAT32_C1R(f, 0, kNone, &mean, 0), StatusCode::NonPositiveStep);
  EXPECT_EQ(kMeanFLOAT32_C1R(f, 4, kNone, &mean, 0), StatusCode::NonPositiveSize);
  BW8 maximum;
  std::int32_t x;
  std::int32_t y;
  EXPECT_EQ(kMaxIndx_BW8(nullptr, 0, kNone, &maximum, &x, &y), StatusCode::NullPointer);
  EXPECT_EQ(kMaxIndx_BW8(a, 0, kNone, nullptr, &x, &y), StatusCode::NullPointer);
  EXPECT_EQ(kMaxIndx_BW8(a, 0, kNone, &maximum, nullptr, &y), StatusCode::NullPointer);
  EXPECT_EQ(kMaxIndx_BW8(a, 0, kNone, &maximum, &x, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kMaxIndx_BW8(a, 0, {1, 0}, &maximum, &x, &y), StatusCode::NonPositiveSize);
  EXPECT_EQ(kMaxIndx_BW8(a, 0, {0, 1}, &maximum, &x, &y), StatusCode::NonPositiveSize);
  EXPECT_EQ(kMaxIndx_BW8(a, 0, kOne, &maximum, &x, &y), StatusCode::NonPositiveStep);
}

TEST(GreyStatusTest, ChecksInOrder) {
  BW8 a[3] = {};
  BW8 b[1] = {};
  EXPECT_EQ(kRGBToGray_BW8_C3C1R(nullptr, 0, b, 0, kNone), StatusCode::NullPointer);
  EXPECT_EQ(kRGBToGray_BW8_C3C1R(a, 0, nullptr, 0, kNone), StatusCode::NullPointer);
  EXPECT_EQ(kRGBToGray_BW8_C3C1R(a, 0, b, 0, {1, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kRGBToGray_BW8_C3C1R(a, 0, b, 0, {0, 1}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kRGBToGray_BW8_C3C1R(a, -3, b, 0, kOne), StatusCode::Success);
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
      {{0.299F, 0.587F, 0.114F}, {1225, 2404, 467}},     {{1.0F, 0.0F, 0.0F}, {4096, 0, 0}},
      {{0.25F, 0.5F, 0.25F}, {1024, 2048, 1024}},        {{0.5F / 4096, 0.49F / 4096, 1.5F / 4096}, {1, 0, 2}},
      {{0.5F, 0.5F, 0.5F}, {2048, 2048, 2048}},          {{-1.0F, 1.0F, 2.5F}, {0U - 4095U, 4096, 10240}},
      {{nan, huge, -huge}, {0, 0x7FFFFFFF, 0x80000000}},
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
