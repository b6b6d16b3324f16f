#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "geometry/geometry.h"
#include "geometry/resize.h"
#include "geometry/resize_taps.h"
#include "support/failing_heap.h"
#include "support/image.h"

namespace norvala_test {
namespace {

using namespace norvala;

TEST(ResizeStatusTest, ChecksInOrder) {
  float pixels[64] = {};
  const RegionSize none = {0, 0};
  const RegionSize four = {4, 4};
  const Rect all = {0, 0, 4, 4};
  // Both primitives, the general one with an interpolation that it refuses after all these checks.
  const auto expect = [&](StatusCode status, const float* src, RegionSize srcSize, Rect region, float* dst,
                          RegionSize dstSize, double xFactor, double yFactor) {
    EXPECT_EQ(ReduceFLOAT32(src, srcSize, 0, region, dst, 0, dstSize, xFactor, yFactor), status);
    EXPECT_EQ(ResampleFLOAT32(src, srcSize, 0, region, dst, 0, dstSize, xFactor, yFactor, 0), status);
  };
  expect(StatusCode::NullPointer, nullptr, none, {-1, 0, 0, 0}, pixels, none, 0, 0);
  expect(StatusCode::NullPointer, pixels, none, {-1, 0, 0, 0}, nullptr, none, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, {0, 4}, all, pixels, none, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, {4, 0}, all, pixels, none, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, four, {9, -1, 4, 4}, pixels, none, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, four, {-1, 9, 4, 4}, pixels, none, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, four, {9, 9, 0, 4}, pixels, none, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, four, {9, 9, 4, 0}, pixels, none, 0, 0);
  expect(StatusCode::NoSourceOverlap, pixels, four, {4, 0, 4, 4}, pixels, none, 0, 0);
  expect(StatusCode::NoSourceOverlap, pixels, four, {0, 4, 4, 4}, pixels, none, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, four, all, pixels, {0, 4}, 0, 0);
  expect(StatusCode::NonPositiveSize, pixels, four, all, pixels, {4, 0}, 0, 0);
  expect(StatusCode::BadResizeFactor, pixels, four, all, pixels, four, 0.0, 0.01);
  expect(StatusCode::BadResizeFactor, pixels, four, all, pixels, four, 0.01, std::nan(""));

  const auto resample = [&](double factor, int interpolation) {
    return ResampleFLOAT32(pixels, four, 16, all, pixels + 32, 16, four, factor, factor, interpolation);
  };
  EXPECT_EQ(resample(0.01, 8), StatusCode::UnknownInterpolation);
  EXPECT_EQ(resample(0.01, 2), StatusCode::ResultRegionEmpty);
  EXPECT_EQ(ReduceFLOAT32(pixels, four, 16, all, pixels + 32, 16, four, 0.1249999, 1.0), StatusCode::ResultRegionEmpty);
  EXPECT_EQ(ReduceFLOAT32(pixels, four, 16, all, pixels + 32, 16, four, 0.125, 1.0), StatusCode::Success);
}

TEST(ResizeStatusTest, RoutesReductionsOnly) {
  float pixels[32] = {};
  const auto resize = [&](double xFactor, double yFactor) {
    return kResizeFLOAT32(pixels, {4, 4}, 16, {0, 0, 4, 4}, pixels + 16, 16, {4, 4}, xFactor, yFactor, 8);
  };
  EXPECT_EQ(resize(1.0, 1.0), StatusCode::Success);
  EXPECT_EQ(resize(0.5, 1.5), StatusCode::UnknownInterpolation);
  EXPECT_EQ(resize(1.5, 0.5), StatusCode::UnknownInterpolation);
  EXPECT_EQ(resize(std::nan(""), 1.5), StatusCode::BadResizeFactor);
}

TEST(ResizeMemoryTest, ReportsAndReleases) {
  float src[256] = {};
  std::vector<float> dst(1024, -1.0F);
  const std::vector<float> before = dst;
  for (const int interpolation : {1, 2, 4, 8, 16}) {
    HeapWatch watch;
    const double factor = interpolation == 8 ? 0.7 : 1.7;
    const auto resize = [&] {
      return kResizeFLOAT32(src, {16, 16}, 64, {0, 0, 16, 16}, dst.data(), 128, {32, 32}, factor, factor,
                            interpolation);
    };
    const int allocations = interpolation == 1 ? 1 : 2;
    for (int i = 0; i < allocations; ++i) {
      watch.FailAt(i);
      EXPECT_EQ(resize(), StatusCode::WorkBufferUnavailable);
      EXPECT_EQ(dst, before);
    }
    watch.FailAt(allocations);
    EXPECT_EQ(resize(), StatusCode::Success);
    EXPECT_EQ(watch.live(), 0);
    dst = before;
  }
}

// Blending pixel by pixel from the tap tables, with every index clamped.
template <int taps>
float Blend(const float* pixels, const float* weights) {
  const float centre = pixels[kCentreTap<taps>];
  float sum = 0.0F;
  for (int k = 0, i = 0; k < taps; ++k) {
    if (k != kCentreTap<taps>) sum += weights[i++] * (pixels[k] - centre);
  }
  return centre + sum;
}

template <int taps>
float Pixel(const Image<float>& src, const ResizeAxis& columns, const ResizeAxis& rows, int x, int y) {
  const Taps<taps> across = PlaceTaps<taps>(columns, x);
  const Taps<taps> down = PlaceTaps<taps>(rows, y);
  float results[taps];
  for (int j = 0; j < taps; ++j) {
    float pixels[taps];
    for (int i = 0; i < taps; ++i) {
      pixels[i] =
          src.Get(std::clamp(across.first + i, 0, columns.length - 1), std::clamp(down.first + j, 0, rows.length - 1));
    }
    results[j] = Blend<taps>(pixels, across.weights);
  }
  return Blend<taps>(results, down.weights);
}

// The vector loops, their tails, the borders and the ring of rows give the bits of the pixel by pixel form.
template <int taps>
void CompareWithPixelByPixel(int interpolation) {
  Random random(taps);
  for (int round = 0; round < 60; ++round) {
    Image<float> src(RandomInt(random, 8, 90), RandomInt(random, 8, 40), RandomLayout(random));
    src.Fill([&] { return static_cast<float>(RandomInt(random, -9999, 9999)) / 7.0F; });
    const double xFactor = std::exp2(RandomInt(random, -2000, 2000) / 1000.0);
    const double yFactor = std::exp2(RandomInt(random, -2000, 2000) / 1000.0);
    const ResizeAxis columns = {src.width(), static_cast<int>(src.width() * xFactor), xFactor};
    const ResizeAxis rows = {src.height(), static_cast<int>(src.height() * yFactor), yFactor};
    Image<float> dst(columns.extent, rows.extent, RandomLayout(random));
    Image<float> expected(dst);
    for (int y = 0; y < rows.extent; ++y) {
      for (int x = 0; x < columns.extent; ++x) expected.Set(x, y, Pixel<taps>(src, columns, rows, x, y));
    }
    ASSERT_EQ(ResampleFLOAT32(src.data(), {src.width(), src.height()}, src.step(), {0, 0, src.width(), src.height()},
                              dst.data(), dst.step(), {dst.width(), dst.height()}, xFactor, yFactor, interpolation),
              StatusCode::Success);
    ASSERT_EQ(dst.Bytes(), expected.Bytes());
  }
}

TEST(ResizeBitsTest, LinearIsPixelByPixel) { CompareWithPixelByPixel<2>(2); }
TEST(ResizeBitsTest, CubicIsPixelByPixel) { CompareWithPixelByPixel<4>(4); }
TEST(ResizeBitsTest, EightPointIsPixelByPixel) { CompareWithPixelByPixel<8>(16); }

TEST(ResizeBitsTest, HalvingIsPixelByPixel) {
  Random random(2);
  for (int round = 0; round < 100; ++round) {
    Image<float> src(RandomInt(random, 2, 60), RandomInt(random, 2, 20), RandomLayout(random));
    src.Fill([&] { return static_cast<float>(RandomInt(random, -9999, 9999)) / 7.0F; });
    // Values that leave the range take their own pixel out of the common way, and no other.
    if (round % 2 == 0) src.Set(RandomInt(random, 0, src.width() - 1), RandomInt(random, 0, src.height() - 1), 3e38F);
    if (round % 4 == 0)
      src.Set(RandomInt(random, 0, src.width() - 1), RandomInt(random, 0, src.height() - 1), -INFINITY);
    Image<float> dst(src.width() / 2, src.height() / 2, RandomLayout(random));
    Image<float> expected(dst);
    for (int y = 0; y < dst.height(); ++y) {
      for (int x = 0; x < dst.width(); ++x) {
        const float left = src.Get(2 * x, 2 * y) + src.Get(2 * x, 2 * y + 1);
        const float right = src.Get(2 * x + 1, 2 * y) + src.Get(2 * x + 1, 2 * y + 1);
        expected.Set(x, y, (left + right) * 0.25F);
      }
    }
    for (const int interpolation : {2, 8}) {
      ASSERT_EQ(kResizeFLOAT32(src.data(), {src.width(), src.height()}, src.step(), {0, 0, src.width(), src.height()},
                               dst.data(), dst.step(), {dst.width(), dst.height()}, 0.5, 0.5, interpolation),
                StatusCode::Success);
      ASSERT_EQ(dst.Bytes(), expected.Bytes());
    }
  }
}

// Pixels beyond any image that fits in memory: nothing overflows on the way.
TEST(ResizeTapsTest, StayInRangeForHugeAxes) {
  for (const double factor : {0.5 / INT32_MAX, 1e-9, 0.5, 1.0, 1e9, std::numeric_limits<double>::infinity()}) {
    const ResizeAxis axis = {INT32_MAX, INT32_MAX, factor};
    for (const int d : {0, 1, INT32_MAX - 1}) {
      const int nearest = NearestPixel(axis, d);
      EXPECT_TRUE(nearest >= 0 && nearest < INT32_MAX);
      EXPECT_GE(PlaceTaps<8>(axis, d).first, -4);
      EXPECT_LE(PlaceTaps<2>(axis, d).first, INT32_MAX - 1);
    }
  }
}

}  // namespace
}  // namespace norvala_test
