#include <gtest/gtest.h>

#include <numbers>

#include "geometry/naive_warp.h"
#include "norvala.h"

namespace norvala_test {
namespace {

// How much of the square around a pixel's centre a quadrilateral covers.
double Coverage(const Quad& q, int x, int y) {
  constexpr int kSamples = 16;
  int inside = 0;
  for (int j = 0; j < kSamples; ++j) {
    for (int i = 0; i < kSamples; ++i) {
      inside += Depth(q, x - 0.5 + (i + 0.5) / kSamples, y - 0.5 + (j + 0.5) / kSamples) > 0 ? 1 : 0;
    }
  }
  return static_cast<double>(inside) / (kSamples * kSamples);
}

// White on black: after smoothing, pixels show about how much of them the square covers; before, only 0 and 255.
template <class T>
void ShowsTheCoverage(int32_t (*call)(const T*, int32_t, int32_t, int32_t, const Rect*, T*, int32_t, const Rect*,
                                      const double*, int32_t)) {
  Random random(1);
  Image<T> src(60, 50);
  src.Fill([] { return T{255}; });
  const Rect from = WholeOf(src);
  const Rect to = {20, 15, 70, 80};
  for (int round = 0; round < 20; ++round) {
    Image<T> dst(100, 100, RandomLayout(random));
    dst.Fill([] { return T{0}; });
    const double angle = RandomDouble(random, 0, 2 * std::numbers::pi);
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double flip = round % 2 != 0 ? 1 : -1;
    const Affine m = {c, s, 50 - 30 * c - 25 * s, -s * flip, c * flip, 50 + (30 * s - 25 * c) * flip};
    const Quad quad = MapCorners(m, from);
    const auto warp = [&](int kernel) {
      return call(src.data(), 60, 50, src.step(), &from, dst.data(), dst.step(), &to, m.data(), kernel);
    };
    ASSERT_EQ(warp(kLinear), 0);
    const Image<T> plain(dst);
    ASSERT_EQ(warp(kLinear | kSmoothEdge), 0);
    double error = 0;
    double plainError = 0;
    for (int y = 0; y < 100; ++y) {
      for (int x = 0; x < 100; ++x) {
        if (std::fabs(Depth(quad, x, y)) > 1.5 || !Contains(to, x, y)) {
          ASSERT_EQ(dst.Get(x, y), plain.Get(x, y)) << x << ", " << y;
          continue;
        }
        bool atCorner = !Contains(to, x, y, -2);
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

TEST(SmoothEdgeTest, ShowsTheCoverage8Bit) { ShowsTheCoverage(Norvala_WarpAffine_BW8); }
TEST(SmoothEdgeTest, ShowsTheCoverageFloat) { ShowsTheCoverage(Norvala_WarpAffine_FLOAT32); }

// Upright edges at known places: the crossed pixel is the mixture of its two neighbours.
TEST(SmoothEdgeTest, BlendsNeighboursByCoverage) {
  Image<BW8> src(40, 40);
  src.Fill([] { return BW8{200}; });
  Image<BW8> dst(30, 30);
  dst.Fill([] { return BW8{40}; });
  const Rect from = WholeOf(src);
  const Rect to = WholeOf(dst);
  // Covers columns 5.25 to 20 and rows 6.75 to the last one, 29.
  const Quad quad = {5.25, 6.75, 20, 6.75, 20, 29, 5.25, 29};
  const Quad source = CornersOf({1, 1, 20, 20});
  ASSERT_EQ(Norvala_WarpAffineQuad(src.data(), 40, 40, src.step(), &from, source.data(), dst.data(), dst.step(), &to,
                                   quad.data(), kNearest | kSmoothEdge),
            0);
  const struct {
    int x, y, value;
  } pixels[] = {
      {4, 15, 40},   {5, 15, 40 + 160 / 4},
      {6, 15, 200},  // reaches from 4.5 to 5.5, inside from 5.25 on
      {19, 15, 200}, {20, 15, 120},
      {21, 15, 40},  // half of it
      {12, 6, 40},   {12, 7, 40 + 160 * 3 / 4},
      {12, 8, 200},                  // inside from 6.75 to 7.5
      {12, 28, 200}, {12, 29, 200},  // the destination's own side
  };
  for (const auto& p : pixels) EXPECT_EQ(dst.Get(p.x, p.y), p.value) << p.x << ", " << p.y;

  // Where the outer neighbour would lie outside the region, the crossed pixel stays as it is.
  const Quad atSide = {0.25, 6.75, 20, 6.75, 20, 29, 0.25, 29};
  dst.Fill([] { return BW8{40}; });
  ASSERT_EQ(Norvala_WarpAffineQuad(src.data(), 40, 40, src.step(), &from, source.data(), dst.data(), dst.step(), &to,
                                   atSide.data(), kNearest | kSmoothEdge),
            0);
  EXPECT_EQ(dst.Get(0, 15), 40);
  EXPECT_EQ(dst.Get(1, 15), 200);
}

}  // namespace
}  // namespace norvala_test
