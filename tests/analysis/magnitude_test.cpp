#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

using Complex = ComplexFLOAT32Number;

// Takes the moduli of the image and compares every bit; any NaN stands for every NaN.
void ExpectModuli(const Image<Complex>& src, Layout layout) {
  Image<float> dst(src.width(), src.height(), layout);
  Image<float> expected(dst);
  ASSERT_EQ(Norvala_MagnitudeFLOAT32(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height()), 0);
  for (int y = 0; y < src.height(); ++y) {
    for (int x = 0; x < src.width(); ++x) {
      const double re = src.Get(x, y).re;
      const double im = src.Get(x, y).im;
      const float actual = dst.Get(x, y);
      const auto modulus = static_cast<float>(std::sqrt(re * re + im * im));
      expected.Set(x, y, std::isnan(modulus) && std::isnan(actual) ? actual : modulus);
      ASSERT_EQ(std::bit_cast<std::uint32_t>(actual), std::bit_cast<std::uint32_t>(expected.Get(x, y)))
          << re << " " << im;
    }
  }
  ASSERT_EQ(dst.Bytes(), expected.Bytes());
}

// Ordinary and special values, and bit patterns of every magnitude from the smallest subnormal number to NaN: either
// part zero now and then, whole images of one kind.
TEST(MagnitudeTest, EqualsDoubleArithmetic) {
  Random random(1);
  for (int round = 0; round < 500; ++round) {
    const auto low = static_cast<std::uint32_t>(RandomInt(random, 0, 0x7F800001));
    const auto span = static_cast<std::uint32_t>(RandomInt(random, 1, round % 2 != 0 ? 0x100 : 0x7FFFFFFF));
    const auto part = [&] {
      if (round % 5 < 2) return RandomFloat(random);
      const std::uint32_t bits = (low + static_cast<std::uint32_t>(random() % span)) & 0x7FFFFFFFU;
      return std::bit_cast<float>((random() % 9 == 0 ? 0U : bits) | (random() % 2 != 0 ? 0x80000000U : 0U));
    };
    Image<Complex> src(RandomSize(random), RandomInt(random, 1, 8), RandomLayout(random));
    src.Fill([&]() -> Complex { return {part(), part()}; });
    ASSERT_NO_FATAL_FAILURE(ExpectModuli(src, RandomLayout(random)));
  }
}

// Moduli that are exactly the middle between two floats (Pythagorean triples with a hypotenuse of 25 bits), and the
// nearest sums above and below such a middle that floats can form.
TEST(MagnitudeTest, RoundsTiesAsTheDoubleRootDoes) {
  Random random(3);
  Image<Complex> src(1000, 40);
  src.Fill([&]() -> Complex {
    const float sign = random() % 2 != 0 ? 1.0F : -1.0F;
    if (random() % 2 != 0) {
      const int p = RandomInt(random, 3600, 4090);
      const int q = RandomInt(random, 1500, 1990);
      const int hypotenuse = p * p + q * q;
      if (hypotenuse > 1 << 24 && hypotenuse % 2 != 0 && p * p - q * q < 1 << 24 && 2 * p * q < 1 << 24) {
        return {sign * static_cast<float>(p * p - q * q), static_cast<float>(2 * p * q)};
      }
    }
    const double re = RandomInt(random, 1 << 23, (1 << 24) - 1);
    const double middle = re + RandomInt(random, 0, 3) + 0.5;
    return {static_cast<float>(re), sign * static_cast<float>(std::sqrt(middle * middle - re * re))};
  });
  ExpectModuli(src, {});
}

}  // namespace
}  // namespace norvala_test
