#include <gtest/gtest.h>

#include <numbers>

#include "geometry/naive_warp.h"
#include "norvala.h"

namespace norvala_test {
namespace {

constexpr int kSmoothEdge = INT32_MIN;

// How much of the square around a pixel's centre a quadrilateral (clockwise or not) covers.
double Coverage(const Quad& q, int x, int y) {
  constexpr int kSamples = 32;
  int inside = 0;
  for (int j = 0; j < kSamples; ++j) {
    for (int i = 0; i < kSamples; ++i) {
      const double u = x - 0.5 + (i + 0.5) / kSamples;
      const double v = y - 0.5 + (j + 0.5) / kSamples;
      int left = 0;
      for (std::size_t k = 0; k < 8; k += 2) {
        const std::size_t n = (k + 2) % 8;
        left += (q[n] - q[k]) * (v - q[k + 1]) - (q[n + 1] - q[k + 1]) * (u - q[k]) > 0 ? 1 : 0;
      }
      inside += left == 4 || left == 0 ? 1 : 0;
    }
  }
  return static_cast<double>(inside) / (kSamples * kSamples);
}

// Distance of a point from a quadrilateral's outline.
double EdgeDistance(const Quad& q, double x, double y) {
  double least = 1e9;
  for (std::size_t k = 0; k < 8; k += 2) {
    const double dx = q[(k + 2) % 8] - q[k];
    const double dy = q[(k + 3) % 8] - q[k + 1];
    const double t = std::clamp(((x - q[k]) * dx + (y - q[k + 1]) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    least = std::min(least, std::hypot(x - q[k] - t * dx, y - q[k + 1] - t * dy));
  }
  return least;
}

// White on black: after smoothing, pixels show about how much of them the square covers; before, only 0 and 255.
TEST(SmoothEdgeTest, ShowsTheCoverage) {
  Random random(1);
  Image<BW8> src(60, 50);
  src.Fill([] { return BW8{255}; });
  const Rect from = {0, 0, 60, 50};
  for (int round = 0; round < 60; ++round) {
    Image<BW8> dst(100, 100, RandomLayout(random));
    dst.Fill([] { return BW8{0}; });
    const double angle = RandomDouble(random, 0, 2 * std::numbers::pi);
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double flip = round % 2 != 0 ? 1 : -1;
    const Affine m = {c, s, 50 - 30 * c - 25 * s, -s * flip, c * flip, 50 + (30 * s - 25 * c) * flip};
    const Rect to = {20, 15, 70, 80};
    const Quad quad = MapCorners(m, from);
    const auto warp = [&](int kernel) {
      return Norvala_WarpAffine_BW8(src.data(), 60, 50, src.step(), &from, dst.data(), dst.step(), &to, m.data(),
                                    kernel);
    };
    ASSERT_EQ(warp(kLinear), 0);
    const Image<BW8> plain(dst);
    ASSERT_EQ(warp(kLinear | kSmoothEdge), 0);
    double error = 0;
    double plainError = 0;
    for (int y = 0; y < 100; ++y) {
      for (int x = 0; x < 100; ++x) {
        const double distance = EdgeDistance(quad, x, y);
        if (distance > 1.5 || x < to.x || x >= to.x + to.width || y < to.y || y >= to.y + to.height) {
          ASSERT_EQ(dst.Get(x, y), plain.Get(x, y)) << x << ", " << y;
          continue;
        }
        bool atCorner = x <= to.x + 1 || x >= to.x + to.width - 2 || y <= to.y + 1 || y >= to.y + to.height - 2;
        for (std::size_t k = 0; k < 8; k += 2) atCorner |= std::hypot(x - quad[k], y - quad[k + 1]) < 3;
        if (atCorner) continue;
        const double coverage = 255 * Coverage(quad, x, y);
        ASSERT_NEAR(dst.Get(x, y), coverage, 40) << x << ", " << y;
        error += std::fabs(dst.Get(x, y) - coverage);
        plainError += std::fabs(plain.Get(x, y) - coverage);
      }
    }
    EXPECT_LT(error, plainError / 3);
  }
}

// Upright edges at known places: the crossed pixel is the mixture of its two neighbours.
TEST(SmoothEdgeTest, BlendsNeighboursByCoverage) {
  Image<BW8> src(40, 40);
  src.Fill([] { return BW8{200}; });
  Image<BW8> dst(30, 30);
  dst.Fill([] { return BW8{40}; });
  const Rect from = {0, 0, 40, 40};
  const Rect to = {0, 0, 30, 30};
  // Covers columns 5.25 to 20 and rows 6.75 to the last one, 29.
  const Quad quad = {5.25, 6.75, 20, 6.75, 20, 29, 5.25, 29};
  const Quad source = CornersOf({1, 1, 20, 20});
  const int result = Norvala_WarpAffineQuad(src.data(), 40, 40, src.step(), &from, source.data(), dst.data(),
                                            dst.step(), &to, quad.data(), kNearest | kSmoothEdge);
  ASSERT_EQ(result, 0);
  EXPECT_EQ(dst.Get(4, 15), 40);
  EXPECT_EQ(dst.Get(5, 15), 40 + 160 / 4);  // reaches from 4.5 to 5.5, inside from 5.25 on
  EXPECT_EQ(dst.Get(6, 15), 200);
  EXPECT_EQ(dst.Get(19, 15), 200);
  EXPECT_EQ(dst.Get(20, 15), 120);  // half of it
  EXPECT_EQ(dst.Get(21, 15), 40);
  EXPECT_EQ(dst.Get(12, 6), 40);
  EXPECT_EQ(dst.Get(12, 7), 40 + 160 * 3 / 4);  // inside from 6.75 to 7.5
  EXPECT_EQ(dst.Get(12, 8), 200);
  EXPECT_EQ(dst.Get(12, 29), 200);  // the destination's own side
}

// Without the source inside its region, the affine quadrilateral warp leaves edges as they are.
TEST(SmoothEdgeTest, IsLeftOutWhereTheSourceWasCut) {
  Random random(2);
  Image<BW8> src(20, 20);
  src.FillRandom(random);
  const Rect from = {0, 0, 20, 20};
  const Quad source = {-2.5, 1, 18, 1, 18, 17, -2.5, 17};
  const Quad quad = {3.3, 2.2, 25.1, 5.4, 22.2, 25.9, 0.4, 22.7};
  Image<BW8> plain(30, 30);
  Image<BW8> smooth(plain);
  const Rect to = {0, 0, 30, 30};
  const auto warp = [&](const Image<BW8>& dst, int kernel) {
    return Norvala_WarpAffineQuad(src.data(), 20, 20, src.step(), &from, source.data(), dst.data(), dst.step(), &to,
                                  quad.data(), kernel);
  };
  EXPECT_EQ(warp(plain, kCubic), warp(smooth, kCubic | kSmoothEdge));
  EXPECT_EQ(plain.Bytes(), smooth.Bytes());
  EXPECT_NE(plain.Bytes(), Image<BW8>(30, 30).Bytes());
}

}  // namespace
}  // namespace norvala_test
