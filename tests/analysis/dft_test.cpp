#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "analysis/dft_reference.h"
#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

using SpectrumImage = Image<ComplexFLOAT32Number>;

int Transform(const Image<FLOAT32>& src, SpectrumImage& dst) {
  return Norvala_DFTFwdFLOAT32(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height());
}

std::vector<float> Pixels(const Image<FLOAT32>& image) {
  std::vector<float> pixels;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) pixels.push_back(image.Get(x, y));
  }
  return pixels;
}

double Error(const Image<FLOAT32>& src, const SpectrumImage& dst) {
  const Spectrum expected = ReferenceDft2D(Pixels(src), src.width(), src.height());
  RelativeError error;
  std::size_t i = 0;
  for (int y = 0; y < src.height(); ++y) {
    for (int x = 0; x < src.width(); ++x) {
      const ComplexFLOAT32Number value = dst.Get(x, y);
      error.Add(expected[i++], {value.re, value.im});
    }
  }
  return error.value();
}

// The bits of a float; the sign of a zero counts.
std::uint32_t Bits(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// Frequencies that are their own mirror image count as real: their imaginary part is +0.
void ExpectConjugateSymmetry(const SpectrumImage& spectrum) {
  const int width = spectrum.width();
  const int height = spectrum.height();
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int mirrorX = (width - x) % width;
      const int mirrorY = (height - y) % height;
      const ComplexFLOAT32Number value = spectrum.Get(x, y);
      const ComplexFLOAT32Number mirrored = spectrum.Get(mirrorX, mirrorY);
      ASSERT_EQ(Bits(value.re), Bits(mirrored.re)) << x << ", " << y;
      if (mirrorX == x && mirrorY == y) {
        ASSERT_EQ(Bits(value.im), 0U) << x << ", " << y;
      } else {
        ASSERT_EQ(Bits(value.im), Bits(mirrored.im) ^ 0x80000000U) << x << ", " << y;
      }
    }
  }
}

bool IsSmooth(int n) {
  for (const int factor : {2, 3, 5, 7, 11, 13}) {
    while (n % factor == 0) n /= factor;
  }
  return n == 1;
}

TEST(DftTest, EverySmallSize) {
  Random random(1);
  double worst = 0.0;
  for (int height = 1; height <= 64; ++height) {
    for (int width = 1; width <= 64; ++width) {
      Image<FLOAT32> src(width, height, RandomLayout(random));
      src.Fill([&] { return std::uniform_real_distribution<float>(-1.0F, 1.0F)(random); });
      SpectrumImage dst(width, height, RandomLayout(random));
      SpectrumImage expectedPadding(dst);
      ASSERT_EQ(Transform(src, dst), 0);
      const double error = Error(src, dst);
      ASSERT_LE(error, 2e-7 * std::sqrt(std::log2(std::max(2, width * height)))) << width << " x " << height;
      worst = std::max(worst, error);
      ExpectConjugateSymmetry(dst);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) expectedPadding.Set(x, y, dst.Get(x, y));
      }
      ASSERT_EQ(dst.Bytes(), expectedPadding.Bytes()) << "padding written";
      if (HasFatalFailure()) return;
    }
  }
  std::printf("relative error of all sizes up to 64 x 64: at most %.2e\n", worst);
}

// Every method and threshold along one axis, combined with a few lengths along the other.
TEST(DftTest, SpecialLengths) {
  Random random(2);
  for (const int length : {66,  81,  96,  98,  100, 121, 125, 127, 128, 131, 149, 150,  151,  154,  163,  169, 173, 178,
                           179, 180, 181, 191, 243, 250, 254, 256, 289, 294, 298, 302,  311,  343,  358,  361, 362, 386,
                           389, 449, 500, 509, 512, 540, 604, 625, 719, 729, 893, 1000, 1009, 1021, 1024, 1080}) {
    for (const int other : {1, 5, 12}) {
      double errors[2];
      for (const bool tall : {false, true}) {
        Image<FLOAT32> src(tall ? other : length, tall ? length : other);
        src.Fill([&] { return std::uniform_real_distribution<float>(-1.0F, 1.0F)(random); });
        SpectrumImage dst(src.width(), src.height());
        ASSERT_EQ(Transform(src, dst), 0);
        const double error = Error(src, dst);
        const double bits = std::log2(length * other);
        ASSERT_LE(error, (IsSmooth(length) ? 2e-7 : 4e-7) * std::sqrt(bits)) << src.width() << " x " << src.height();
        ExpectConjugateSymmetry(dst);
        errors[tall ? 1 : 0] = error / std::sqrt(bits);
      }
      if (other == 12) {
        std::printf("%5d x 12: relative error / sqrt(log2 N) %.2e wide, %.2e tall\n", length, errors[0], errors[1]);
      }
    }
  }
}

TEST(DftTest, LargeImages) {
  Random random(3);
  for (const auto& [width, height] : {std::pair(256, 256), {270, 480}, {250, 500}, {257, 263}}) {
    Image<FLOAT32> src(width, height);
    // A photograph's values: one large mean, which dwarfs all other frequencies.
    src.Fill([&] { return static_cast<float>(RandomInt(random, 0, 255)); });
    SpectrumImage dst(width, height);
    ASSERT_EQ(Transform(src, dst), 0);
    const double error = Error(src, dst);
    std::printf("%d x %d: relative error %.2e\n", width, height, error);
    EXPECT_LE(error, 2e-7 * std::sqrt(std::log2(width * height)));
    ExpectConjugateSymmetry(dst);
  }
}

TEST(DftTest, ConstantImage) {
  for (const auto& [width, height] : {std::pair(1, 1), {1, 9}, {16, 1}, {8, 32}, {12, 10}, {7, 13}, {191, 4}}) {
    Image<FLOAT32> src(width, height);
    src.Fill([] { return 2.5F; });
    SpectrumImage dst(width, height);
    ASSERT_EQ(Transform(src, dst), 0);
    const float total = 2.5F * static_cast<float>(width * height);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const bool zeroFrequency = x == 0 && y == 0;
        EXPECT_NEAR(dst.Get(x, y).re, zeroFrequency ? total : 0.0F, 1e-6F * total);
        EXPECT_NEAR(dst.Get(x, y).im, 0.0F, zeroFrequency ? 0.0F : 1e-6F * total);
      }
    }
  }
}

// A wave of known phase: the sign convention and the order of the axes.
TEST(DftTest, SingleWave) {
  constexpr int kWidth = 24, kHeight = 20, kX = 5, kY = 3;
  Image<FLOAT32> src(kWidth, kHeight);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const double angle =
          2.0 * 3.141592653589793 * (static_cast<double>(kX * x) / kWidth + static_cast<double>(kY * y) / kHeight);
      src.Set(x, y, static_cast<float>(std::cos(angle - 0.5)));
    }
  }
  SpectrumImage dst(kWidth, kHeight);
  ASSERT_EQ(Transform(src, dst), 0);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const bool wave = x == kX && y == kY;
      const bool mirrored = x == kWidth - kX && y == kHeight - kY;
      const double half = wave || mirrored ? kWidth * kHeight / 2.0 : 0.0;
      EXPECT_NEAR(dst.Get(x, y).re, half * std::cos(0.5), 1e-3);
      EXPECT_NEAR(dst.Get(x, y).im, half * std::sin(wave ? -0.5 : 0.5), 1e-3);
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
      EXPECT_EQ(Bits(dst.Get(0, 0).im), 0U);
    }
  }
}

TEST(DftTest, BadArgumentsWriteNothing) {
  Image<FLOAT32> src(8, 8);
  src.Fill([] { return 1.0F; });
  SpectrumImage dst(8, 8);
  const auto untouched = dst.Bytes();
  const auto run = [&](const FLOAT32* s, int srcStep, ComplexFLOAT32Number* d, int dstStep, int width, int height) {
    return Norvala_DFTFwdFLOAT32(s, srcStep, d, dstStep, width, height);
  };
  EXPECT_EQ(run(nullptr, 32, dst.data(), 64, 8, 8), -1);
  EXPECT_EQ(run(src.data(), 32, nullptr, 64, 8, 8), -1);
  EXPECT_EQ(run(src.data(), 32, dst.data(), 64, 0, 8), -1);
  EXPECT_EQ(run(src.data(), 32, dst.data(), 64, 8, 0), -1);
  EXPECT_EQ(run(src.data(), 32, dst.data(), 64, -1, INT32_MIN), -1);
  EXPECT_EQ(run(src.data(), 0, dst.data(), 64, 8, 8), -1);
  EXPECT_EQ(run(src.data(), -32, dst.data(), 64, 8, 8), -1);
  EXPECT_EQ(run(src.data(), 32, dst.data(), 0, 8, 8), -1);
  EXPECT_EQ(run(src.data(), 32, dst.data(), -64, 8, 8), -1);
  EXPECT_EQ(run(src.data(), 32, dst.data(), 64, INT32_MAX, INT32_MAX), -1);
  EXPECT_EQ(run(src.data(), 32, dst.data(), 64, 65536, 65536), -1);
  EXPECT_EQ(dst.Bytes(), untouched);
}

}  // namespace
}  // namespace norvala_test
