#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

// The rule in its own words: clamp, then round half to even or truncate, on the value widened to double.
template <class D>
D Saturated(float value, int rounding) {
  const double x = value;
  const double limit = std::numeric_limits<D>::max();
  if (x >= limit) return std::numeric_limits<D>::max();
  if (!(x > 0.0)) return 0;
  if (rounding != 1) return static_cast<D>(x);
  const double y = x + 0.5;
  const auto t = static_cast<int>(y);
  return static_cast<D>(t % 2 != 0 && t == y ? t - 1 : t);
}

template <class S, class D>
using Export = int32_t (*)(const S*, int32_t, D*, int32_t, int32_t, int32_t);

// Converts random images with random layouts and compares every byte of the destination.
template <class S, class D, class Convert, class Reference>
void CheckConversion(unsigned seed, Convert convert, Reference reference) {
  Random random(seed);
  for (int round = 0; round < 250; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 12);
    const bool padded = round % 3 != 0;
    Image<S> src(width, height, padded ? RandomLayout(random) : Layout{});
    Image<D> dst(width, height, padded ? RandomLayout(random) : Layout{});
    src.FillRandom(random);
    Image<D> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) expected.Set(x, y, reference(src.Get(x, y)));
    }
    ASSERT_EQ(convert(src.data(), src.step(), dst.data(), dst.step(), width, height), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height;
  }
}

TEST(ConvertTest, FloatToIntegersAsTheRuleSays) {
  for (int rounding : {1, 0, 2, -1}) {
    CheckConversion<FLOAT32, BW8>(
        1, [&](auto... arguments) { return Norvala_ConvertFLOAT32toBW8(arguments..., rounding); },
        [&](float x) { return Saturated<BW8>(x, rounding); });
    CheckConversion<FLOAT32, BW16>(
        2, [&](auto... arguments) { return Norvala_ConvertFLOAT32toBW16(arguments..., rounding); },
        [&](float x) { return Saturated<BW16>(x, rounding); });
  }
}

// Every half from below 0 to beyond the 16-bit limit with both of its neighbours, and a float of every exponent.
TEST(ConvertTest, FloatTiesAndExtremes) {
  std::vector<float> values;
  for (int half = -4; half <= 2 * 65537; ++half) {
    const float value = static_cast<float>(half) * 0.5F;
    values.insert(values.end(), {std::nextafterf(value, -1e9F), value, std::nextafterf(value, 1e9F)});
  }
  for (std::uint32_t high = 0; high < 0x10000; ++high) {
    for (std::uint32_t low : {0x0000U, 0x0001U, 0xFFFFU}) {
      const std::uint32_t bits = high << 16 | low;
      float value;
      std::memcpy(&value, &bits, sizeof value);
      values.push_back(value);
    }
  }
  const auto count = static_cast<int>(values.size());
  std::vector<BW8> bytes(values.size());
  std::vector<BW16> words(values.size());
  for (int rounding : {0, 1}) {
    ASSERT_EQ(Norvala_ConvertFLOAT32toBW8(values.data(), 4 * count, bytes.data(), count, count, 1, rounding), 0);
    ASSERT_EQ(Norvala_ConvertFLOAT32toBW16(values.data(), 4 * count, words.data(), 2 * count, count, 1, rounding), 0);
    for (std::size_t i = 0; i < values.size(); ++i) {
      ASSERT_EQ(bytes[i], Saturated<BW8>(values[i], rounding)) << values[i];
      ASSERT_EQ(words[i], Saturated<BW16>(values[i], rounding)) << values[i];
    }
  }
}

TEST(ConvertTest, IntegersKeepTheirValue) {
  CheckConversion<BW8, FLOAT32>(3, Norvala_ConvertBW8toFLOAT32, [](BW8 x) { return static_cast<FLOAT32>(x); });
  CheckConversion<BW8, BW16>(4, Norvala_ConvertBW8toBW16, [](BW8 x) { return static_cast<BW16>(x); });
  CheckConversion<BW16, BW32>(5, Norvala_ConvertBW16toBW32, [](BW16 x) { return static_cast<BW32>(x); });
}

TEST(ConvertTest, WordsSaturateAtEightBits) {
  std::vector<BW16> words(65536);
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = static_cast<BW16>(i);
  std::vector<BW8> bytes(words.size());
  ASSERT_EQ(Norvala_ConvertBW16ToBW8(words.data(), 512, bytes.data(), 256, 256, 256), 0);
  for (int i = 0; i < 65536; ++i) ASSERT_EQ(bytes[static_cast<std::size_t>(i)], std::min(i, 255));
  CheckConversion<BW16, BW8>(6, Norvala_ConvertBW16ToBW8,
                             [](BW16 x) { return static_cast<BW8>(std::min<int>(x, 255)); });
}

TEST(ConvertTest, FailuresWriteNothing) {
  Image<FLOAT32> src(4, 4);
  Image<BW8> dst(4, 4);
  const auto before = dst.Bytes();
  EXPECT_EQ(Norvala_ConvertFLOAT32toBW8(nullptr, 16, dst.data(), 4, 4, 4, 1), -1);
  EXPECT_EQ(Norvala_ConvertFLOAT32toBW8(src.data(), 16, nullptr, 4, 4, 4, 1), -1);
  EXPECT_EQ(Norvala_ConvertFLOAT32toBW8(src.data(), 16, dst.data(), 4, 4, INT32_MIN, 1), -1);
  EXPECT_EQ(Norvala_ConvertFLOAT32toBW8(src.data(), 16, dst.data(), 4, 0, 4, 1), -1);
  EXPECT_EQ(Norvala_ConvertFLOAT32toBW8(src.data(), 0, dst.data(), 4, 4, 4, 1), -1);
  EXPECT_EQ(Norvala_ConvertFLOAT32toBW8(src.data(), 16, dst.data(), -4, 4, 4, 1), -1);
  EXPECT_EQ(dst.Bytes(), before);
}

}  // namespace
}  // namespace norvala_test
