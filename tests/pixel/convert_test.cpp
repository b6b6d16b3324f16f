#include <algorithm>
#include <bit>
#include <cmath>

#include "norvala.h"
#include "pixel/pixelwise.h"

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

TEST(ConvertTest, FloatToIntegersAsTheRuleSays) {
  for (const int rounding : {1, 0, 2, -1, 0x10101}) {
    CheckPixelwise<FLOAT32, BW8>(
        150, [&](auto... arguments) { return Norvala_ConvertFLOAT32toBW8(arguments..., rounding); },
        [&](float x, BW8) { return Saturated<BW8>(x, rounding); });
    CheckPixelwise<FLOAT32, BW16>(
        150, [&](auto... arguments) { return Norvala_ConvertFLOAT32toBW16(arguments..., rounding); },
        [&](float x, BW16) { return Saturated<BW16>(x, rounding); });
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
    for (const std::uint32_t low : {0x0000U, 0x0001U, 0xFFFFU})
      values.push_back(std::bit_cast<float>(high << 16 | low));
  }
  const auto count = static_cast<int>(values.size());
  std::vector<BW8> bytes(values.size());
  std::vector<BW16> words(values.size());
  for (const int rounding : {0, 1}) {
    ASSERT_EQ(Norvala_ConvertFLOAT32toBW8(values.data(), 4 * count, bytes.data(), count, count, 1, rounding), 0);
    ASSERT_EQ(Norvala_ConvertFLOAT32toBW16(values.data(), 4 * count, words.data(), 2 * count, count, 1, rounding), 0);
    for (std::size_t i = 0; i < values.size(); ++i) {
      ASSERT_EQ(bytes[i], Saturated<BW8>(values[i], rounding)) << values[i];
      ASSERT_EQ(words[i], Saturated<BW16>(values[i], rounding)) << values[i];
    }
  }
}

TEST(ConvertTest, IntegersKeepTheirValueOrSaturate) {
  CheckPixelwise<BW8, FLOAT32>(200, Norvala_ConvertBW8toFLOAT32,
                               [](BW8 x, FLOAT32) { return static_cast<FLOAT32>(x); });
  CheckPixelwise<BW8, BW16>(200, Norvala_ConvertBW8toBW16, [](BW8 x, BW16) { return x; });
  CheckPixelwise<BW16, BW32>(200, Norvala_ConvertBW16toBW32, [](BW16 x, BW32) { return x; });
  CheckPixelwise<BW16, BW8>(200, Norvala_ConvertBW16ToBW8,
                            [](BW16 x, BW8) { return static_cast<BW8>(std::min<int>(x, 255)); });
}

}  // namespace
}  // namespace norvala_test
