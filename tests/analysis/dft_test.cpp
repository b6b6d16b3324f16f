#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdio>
#include <limits>
#include <map>
#include <vector>

#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

using SpectrumImage = Image<ComplexFLOAT32Number>;
using Spectrum = std::vector<std::complex<double>>;

const Spectrum& Roots(std::size_t order) {
  static std::map<std::size_t, Spectrum> tables;
  Spectrum& table = tables[order];
  for (std::size_t k = table.size(); k < order; ++k) {
    const long double angle =
        -2.0L * 3.14159265358979323846264338327950288L * static_cast<long double>(k) / static_cast<long double>(order);
    table.emplace_back(static_cast<double>(std::cos(angle)), static_cast<double>(std::sin(angle)));
  }
  return table;
}

// The transform of `n` values that lie `stride` apart, in double precision: the defining sum, split by the smallest
// prime factor of the length so that large sizes can be checked too.
Spectrum ReferenceDft(const std::complex<double>* x, std::size_t n, std::size_t stride) {
  if (n == 1) return {*x};
  std::size_t factor = 2;
  while (n % factor != 0) ++factor;
  const Spectrum& roots = Roots(n);
  Spectrum result(n);
  for (std::size_t j = 0; j < factor; ++j) {
    const Spectrum part = ReferenceDft(x + j * stride, n / factor, stride * factor);
    for (std::size_t k = 0; k < n; ++k) {
      const auto v = part[k % part.size()];
      const auto w = roots[j * k % n];
      result[k] += std::complex(v.real() * w.real() - v.imag() * w.imag(), v.real() * w.imag() + v.imag() * w.real());
    }
  }
  return result;
}

// Replaces the rows, then the columns of an image by their transforms.
void ReferenceDft2D(Spectrum& image, std::size_t width, std::size_t height) {
  for (std::size_t y = 0; y < height; ++y) {
    const Spectrum row = ReferenceDft(&image[y * width], width, 1);
    for (std::size_t x = 0; x < width; ++x) image[y * width + x] = row[x];
  }
  for (std::size_t x = 0; x < width; ++x) {
    const Spectrum column = ReferenceDft(&image[x], height, width);
    for (std::size_t y = 0; y < height; ++y) image[y * width + x] = column[y];
  }
}

int Transform(const Image<FLOAT32>& src, SpectrumImage& dst) {
  return Norvala_DFTFwdFLOAT32(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height());
}

// The sign of a zero counts. Frequencies that are their own mirror image count as real: their imaginary part is +0.
void ExpectConjugateSymmetry(const SpectrumImage& spectrum) {
  for (int y = 0; y < spectrum.height(); ++y) {
    for (int x = 0; x < spectrum.width(); ++x) {
      const int mirrorX = (spectrum.width() - x) % spectrum.width();
      const int mirrorY = (spectrum.height() - y) % spectrum.height();
      const ComplexFLOAT32Number value = spectrum.Get(x, y);
      const ComplexFLOAT32Number mirrored = spectrum.Get(mirrorX, mirrorY);
      const float conjugate = mirrorX == x && mirrorY == y ? 0.0F : -mirrored.im;
      ASSERT_EQ(std::bit_cast<std::uint32_t>(value.re), std::bit_cast<std::uint32_t>(mirrored.re)) << x << ", " << y;
      ASSERT_EQ(std::bit_cast<std::uint32_t>(value.im), std::bit_cast<std::uint32_t>(conjugate)) << x << ", " << y;
    }
  }
}

// The relative error of the spectrum of random values in the Euclidean norm, divided by the root of the bits of its
// size.
double Error(int width, int height, Random& random, Layout srcLayout = {}, Layout dstLayout = {}) {
  Image<FLOAT32> src(width, height, srcLayout);
  src.Fill([&] { return std::uniform_real_distribution<float>(-1.0F, 1.0F)(random); });
  SpectrumImage dst(width, height, dstLayout);
  SpectrumImage padding(dst);
  EXPECT_EQ(Transform(src, dst), 0);
  Spectrum expected;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) expected.emplace_back(src.Get(x, y));
  }
  ReferenceDft2D(expected, static_cast<std::size_t>(width), static_cast<std::size_t>(height));
  double error = 0.0, size = 0.0;
  auto next = expected.begin();
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, ++next) {
      const ComplexFLOAT32Number value = dst.Get(x, y);
      error += std::norm(*next - std::complex<double>(value.re, value.im));
      size += std::norm(*next);
      padding.Set(x, y, value);
    }
  }
  EXPECT_EQ(dst.Bytes(), padding.Bytes()) << "padding written";
  ExpectConjugateSymmetry(dst);
  return std::sqrt(error / size / std::log2(std::max(2, width * height)));
}

// All results lie well below what is promised; the defining sum in double precision is more accurate still.
constexpr double kBound = 1e-7;
constexpr double kDirectBound = 3e-8;
constexpr int kDirect[] = {127, 131, 149, 151, 163, 173, 178, 179, 254, 298};  // of real values

TEST(DftTest, EverySmallSize) {
  Random random(1);
  double worst = 0.0;
  for (int height = 1; height <= 64; ++height) {
    for (int width = 1; width <= 64; ++width) {
      const double error = Error(width, height, random, RandomLayout(random), RandomLayout(random));
      ASSERT_LE(error, kBound) << width << " x " << height;
      ASSERT_FALSE(HasFailure()) << width << " x " << height;
      worst = std::max(worst, error);
    }
  }
  std::printf("all sizes up to 64 x 64: relative error / sqrt(log2 N) at most %.2e\n", worst);
}

// Every method and threshold along one axis, combined with a few lengths along the other.
TEST(DftTest, SpecialLengths) {
  Random random(2);
  for (const int length : {66,  81,  96,  98,  100, 121, 125, 127, 128, 131, 149, 150,  151,  154,  163,  169, 173, 178,
                           179, 180, 181, 191, 243, 250, 254, 256, 289, 294, 298, 302,  311,  343,  358,  361, 362, 386,
                           389, 449, 500, 509, 512, 540, 604, 625, 719, 729, 893, 1000, 1009, 1021, 1024, 1080}) {
    for (const int other : {1, 5, 12}) {
      const double wide = Error(length, other, random);
      const double tall = Error(other, length, random);
      ASSERT_LE(wide, std::ranges::count(kDirect, length) != 0 ? kDirectBound : kBound) << length << " x " << other;
      ASSERT_LE(tall, kBound) << other << " x " << length;
      ASSERT_FALSE(HasFailure()) << length << ", " << other;
      if (other == 12) std::printf("%5d: relative error / sqrt(log2 N) %.2e wide, %.2e tall\n", length, wide, tall);
    }
  }
}

TEST(DftTest, SpecialValuesSpread) {
  for (const float special : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3e38F}) {
    for (const auto& [width, height] : {std::pair(1, 1), {1, 7}, {6, 4}, {15, 9}, {191, 5}, {5, 302}, {64, 64}}) {
      Image<FLOAT32> src(width, height);
      src.Fill([&] { return special; });
      SpectrumImage dst(width, height);
      ASSERT_EQ(Transform(src, dst), 0);
      EXPECT_FALSE(std::isfinite(dst.Get(0, 0).re) && width * height > 1);
      EXPECT_EQ(std::bit_cast<std::uint32_t>(dst.Get(0, 0).im), 0U);
    }
  }
}

}  // namespace
}  // namespace norvala_test
