#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

using Complex = ComplexFLOAT32Number;

float Modulus(Complex z) {
  const double re = z.re;
  const double im = z.im;
  const double sum = re * re + im * im;
  return static_cast<float>(std::sqrt(sum));
}

// Takes the moduli of the image and compares every bit; any NaN stands for every NaN.
void ExpectModuli(const Image<Complex>& src, Layout layout) {
  Image<float> dst(src.width(), src.height(), layout);
  Image<float> expected(dst);
  ASSERT_EQ(Norvala_MagnitudeFLOAT32(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height()), 0);
  for (int y = 0; y < src.height(); ++y) {
    for (int x = 0; x < src.width(); ++x) {
      const Complex z = src.Get(x, y);
      const float actual = dst.Get(x, y);
      float modulus = Modulus(z);
      if (std::isnan(modulus) && std::isnan(actual)) modulus = actual;
      ASSERT_EQ(std::bit_cast<std::uint32_t>(actual), std::bit_cast<std::uint32_t>(modulus)) << z.re << " " << z.im;
      expected.Set(x, y, modulus);
    }
  }
  ASSERT_EQ(dst.Bytes(), expected.Bytes());
}

TEST(MagnitudeTest, EqualsDoubleArithmetic) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    Image<Complex> src(RandomSize(random), RandomInt(random, 1, 12), RandomLayout(random));
    src.Fill([&]() -> Complex { return {RandomFloat(random), RandomFloat(random)}; });
    ExpectModuli(src, RandomLayout(random));
  }
}

// Bit patterns of every magnitude, from the smallest subnormal number to NaN, one part or both zero now and then, and
// whole images of one kind.
TEST(MagnitudeTest, ServesEveryMagnitude) {
  Random random(2);
  for (int round = 0; round < 300; ++round) {
    const auto low = static_cast<std::uint32_t>(RandomInt(random, 0, 0x7F800001));
    const auto span = static_cast<std::uint32_t>(RandomInt(random, 1, round % 2 != 0 ? 0x100 : 0x7FFFFFFF));
    const auto part = [&] {
      const std::uint32_t bits = (low + static_cast<std::uint32_t>(random() % span)) & 0x7FFFFFFFU;
      return std::bit_cast<float>((random() % 9 == 0 ? 0U : bits) | (random() % 2 != 0 ? 0x80000000U : 0U));
    };
    Image<Complex> src(RandomInt(random, 1, 200), 8, RandomLayout(random));
    src.Fill([&]() -> Complex { return {part(), part()}; });
    ExpectModuli(src, RandomLayout(random));
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
    const double step = RandomInt(random, 0, 3) + 0.5;
    const double middle = re + step;
    return {static_cast<float>(re), sign * static_cast<float>(std::sqrt(middle * middle - re * re))};
  });
  ExpectModuli(src, {});
}

TEST(MagnitudeTest, RejectsBadArguments) {
  Complex z[2] = {{3, 4}, {1e30F, 1e30F}};
  float modulus[2] = {7, 7};
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(nullptr, 16, modulus, 8, 2, 1), -1);
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(z, 16, nullptr, 8, 2, 1), -1);
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(z, 0, modulus, 8, 2, 1), -1);
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(z, 16, modulus, -8, 2, 1), -1);
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(z, 16, modulus, 8, 0, 1), -1);
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(z, 16, modulus, 8, 2, INT32_MIN), -1);
  EXPECT_EQ(modulus[0], 7);
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(z, 16, modulus, 8, 2, 1), 0);
  EXPECT_EQ(modulus[0], 5);
  EXPECT_EQ(modulus[1], 1.4142135e30F);
}

}  // namespace
}  // namespace norvala_test
