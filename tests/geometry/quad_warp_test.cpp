#include <gtest/gtest.h>

#include "geometry/naive_warp.h"
#include "norvala.h"

namespace norvala_test {
namespace {

using WarpExport = decltype(Norvala_WarpAffineQuad);

int Warp(WarpExport* warp, const Image<BW8>& src, const Rect& from, const Quad& srcQuad, const Image<BW8>& dst,
         const Rect& to, const Quad& dstQuad, int kernel) {
  return warp(src.data(), src.width(), src.height(), src.step(), &from, srcQuad.data(), dst.data(), dst.step(), &to,
              dstQuad.data(), kernel);
}

Rect WholeOf(const Image<BW8>& image) { return {0, 0, image.width(), image.height()}; }

// A convex quadrilateral, its vertices near the corners of the rectangle, in either order.
Quad RandomQuad(Random& random, const Rect& r, double deviation, bool clockwise) {
  Quad quad = CornersOf(r);
  deviation = std::min(deviation, 0.2 * (std::min(r.width, r.height) - 1));
  for (std::size_t i = 0; i < 8; ++i) quad[i] += RandomDouble(random, -deviation, deviation);
  if (!clockwise) {
    std::swap(quad[2], quad[6]);
    std::swap(quad[3], quad[7]);
  }
  return quad;
}

// A parallelogram with the first three vertices of a quadrilateral.
Quad Parallelogram(Quad quad) {
  quad[6] = quad[0] + quad[4] - quad[2];
  quad[7] = quad[1] + quad[5] - quad[3];
  return quad;
}

Affine ThreeVertexMap(const Quad& s, const Quad& t) {
  const double a = s[2] - s[0];
  const double b = s[4] - s[2];
  const double c = s[3] - s[1];
  const double e = s[5] - s[3];
  const double k = 1 / (a * e - b * c);
  const double p = t[2] - t[0];
  const double q = t[4] - t[2];
  const double r = t[3] - t[1];
  const double u = t[5] - t[3];
  const double m0 = (e * p - q * c) * k;
  const double m1 = (q * a - p * b) * k;
  const double m3 = (e * r - c * u) * k;
  const double m4 = (u * a - b * r) * k;
  return {m0, m1, t[4] - m0 * s[4] - m1 * s[5], m3, m4, t[5] - m3 * s[4] - m4 * s[5]};
}

bool Inside(const Rect& r, double x, double y) {
  return x >= r.x && x <= r.x + r.width - 1 && y >= r.y && y <= r.y + r.height - 1;
}

bool Inside(const Rect& r, const Quad& q) {
  return Inside(r, q[0], q[1]) && Inside(r, q[2], q[3]) && Inside(r, q[4], q[5]) && Inside(r, q[6], q[7]);
}

struct Images {
  Images(Random& random, int round)
      : src(RandomInt(random, 8, 200), RandomInt(random, 8, 60), RandomLayout(random), Flush(round)),
        dst(RandomInt(random, 8, 200), RandomInt(random, 8, 60), RandomLayout(random), Flush(round)) {
    src.FillRandom(random);
    to = {RandomInt(random, 0, 3), RandomInt(random, 0, 3), 0, 0};
    to.width = dst.width() - to.x - RandomInt(random, 0, 3);
    to.height = dst.height() - to.y - RandomInt(random, 0, 3);
  }
  static GuardedMemory::Flush Flush(int round) {
    return round % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End;
  }

  Image<BW8> src;
  Image<BW8> dst;
  Rect to;
};

TEST(AffineQuadTest, EqualsTheNaiveWarp) {
  Random random(1);
  int done = 0;
  for (int round = 0; round < 2000; ++round) {
    Images images(random, round);
    auto& [src, dst, to] = images;
    const Rect from = WholeOf(src);
    const Rect inner = {2, 2, src.width() - 4, src.height() - 4};
    const Quad srcQuad = RandomQuad(random, inner, 1.5, random() % 2 != 0);
    Quad dstQuad = RandomQuad(random, to, 3, random() % 2 != 0);
    if (round % 3 != 0) dstQuad = Parallelogram(dstQuad);  // else vertex 3 is off, and positions leave the image
    const NaiveSpans spans = SpansOf(dstQuad, to);
    if (spans.doubtful) continue;
    const int kernel = kKernels[round / 3 % 3];
    Image<BW8> expected(dst);
    NaiveAffineRows(src, expected, spans, ThreeVertexMap(dstQuad, srcQuad), kernel);
    Warp(Norvala_WarpAffineQuad, src, from, srcQuad, dst, to, dstQuad, kernel);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << round;
    ++done;
  }
  EXPECT_GT(done, 1500);
}

// A source quadrilateral that leaves the region: exactly what the region's part of it maps to is written.
TEST(AffineQuadTest, CutsTheSourceQuadrilateral) {
  Random random(2);
  for (int round = 0; round < 300; ++round) {
    Images images(random, round);
    auto& [src, dst, to] = images;
    const Rect from = {1, 2, src.width() - RandomInt(random, 1, 4), src.height() - RandomInt(random, 2, 4)};
    const Rect effective = LimitTo(from, src.width(), src.height());
    const Quad srcQuad = Parallelogram(RandomQuad(random, WholeOf(src), 6, random() % 2 != 0));
    const Quad dstQuad = Parallelogram(RandomQuad(random, to, 4, random() % 2 != 0));
    const Image<BW8> before(dst);
    const int kernel = kKernels[round % 3] | (round % 2 != 0 ? INT32_MIN : 0);
    Warp(Norvala_WarpAffineQuad, src, from, srcQuad, dst, to, dstQuad, kernel);
    if (Inside(effective, srcQuad)) continue;
    const Affine inverse = ThreeVertexMap(dstQuad, srcQuad);
    for (int y = 0; y < dst.height(); ++y) {
      const auto row = CrossRow(dstQuad, y);
      for (int x = 0; x < dst.width(); ++x) {
        const double u = inverse[0] * x + inverse[1] * y + inverse[2];
        const double v = inverse[3] * x + inverse[4] * y + inverse[5];
        const auto outside = [&](double margin) {
          return !Inside(to, x, y) || !row || x < row->low - margin || x > row->high + margin ||
                 u < effective.x - margin || u > effective.x + effective.width - 1 + margin ||
                 v < effective.y - margin || v > effective.y + effective.height - 1 + margin;
        };
        if (outside(1e-9)) {
          ASSERT_EQ(dst.Get(x, y), before.Get(x, y)) << round << " at " << x << ", " << y;
        } else if (!outside(-1e-9) && (kernel & INT32_MAX) != kNearest) {
          ASSERT_NEAR(dst.Get(x, y), NaiveSample(src, u, v, kernel & INT32_MAX), 1)
              << round << " at " << x << ", " << y;
        }
      }
    }
  }
}

TEST(AffineQuadTest, AMovedFourthVertexIsReportedAndWarped) {
  Random random(3);
  Image<BW8> src(16, 16);
  src.FillRandom(random);
  const Rect whole = WholeOf(src);
  const Quad quad = CornersOf({2, 3, 10, 8});
  Quad moved = quad;
  moved[7] += 1;
  Image<BW8> dst(16, 16);
  Image<BW8> expected(dst);
  for (int y = 3; y <= 10; ++y) {
    for (int x = 2; x <= 11; ++x) expected.Set(x, y, src.Get(x, y));
  }
  ASSERT_EQ(Warp(Norvala_WarpAffineQuad, src, whole, quad, dst, whole, quad, kLinear), 0);
  EXPECT_EQ(dst.Bytes(), expected.Bytes());
  expected.Set(2, 11, src.Get(2, 11));
  ASSERT_EQ(Warp(Norvala_WarpAffineQuad, src, whole, quad, dst, whole, moved, kLinear), -1);
  EXPECT_EQ(dst.Bytes(), expected.Bytes());
}

// The projection through exact rational arithmetic would be beyond a test; double precision by another route (a linear
// system for the eight unknowns) must agree closely, and all pixels of the quadrilateral must be there.
std::array<double, 9> SolveProjection(const Quad& from, const Quad& to) {
  std::array<std::array<long double, 9>, 8> a{};
  for (std::size_t i = 0; i < 4; ++i) {
    const long double x = from[2 * i];
    const long double y = from[2 * i + 1];
    const long double u = to[2 * i];
    const long double v = to[2 * i + 1];
    a[2 * i] = {x, y, 1, 0, 0, 0, -u * x, -u * y, u};
    a[2 * i + 1] = {0, 0, 0, x, y, 1, -v * x, -v * y, v};
  }
  for (std::size_t c = 0; c < 8; ++c) {
    std::size_t pivot = c;
    for (std::size_t r = c + 1; r < 8; ++r) {
      if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
    }
    std::swap(a[c], a[pivot]);
    for (std::size_t r = 0; r < 8; ++r) {
      if (r == c) continue;
      const long double factor = a[r][c] / a[c][c];
      for (std::size_t k = c; k < 9; ++k) a[r][k] -= factor * a[c][k];
    }
  }
  std::array<double, 9> m{};
  for (std::size_t i = 0; i < 8; ++i) m[i] = static_cast<double>(a[i][8] / a[i][i]);
  m[8] = 1;
  return m;
}

TEST(PerspectiveQuadTest, FollowsTheProjection) {
  Random random(4);
  for (int round = 0; round < 600; ++round) {
    Images images(random, round);
    auto& [src, dst, to] = images;
    // A smooth picture, so that a hair of position is a hair of value.
    const double slopeX = RandomDouble(random, -100, 100) / src.width();
    const double slopeY = RandomDouble(random, -100, 100) / src.height();
    for (int y = 0; y < src.height(); ++y) {
      for (int x = 0; x < src.width(); ++x) {
        src.Set(x, y, static_cast<BW8>(128 + slopeX * (x - src.width() / 2) + slopeY * (y - src.height() / 2)));
      }
    }
    const bool cut = round % 2 != 0;
    const Rect from = cut ? Rect{2, 1, src.width() - 4, src.height()} : WholeOf(src);
    const Rect effective = LimitTo(from, src.width(), src.height());
    const Rect inner = {2, 2, src.width() - 4, src.height() - 4};
    const Quad srcQuad = RandomQuad(random, inner, cut ? 2.5 : 1.9, random() % 2 != 0);
    const Quad dstQuad = RandomQuad(random, to, 3, random() % 2 != 0);
    const bool inside = Inside(effective, srcQuad);
    ASSERT_TRUE(cut || inside);
    const std::array<double, 9> m = SolveProjection(dstQuad, srcQuad);
    const Image<BW8> before(dst);
    const int kernel = kKernels[round % 3] | (round % 5 == 0 ? INT32_MIN : 0);
    ASSERT_EQ(Warp(Norvala_WarpPerspectiveQuad, src, from, srcQuad, dst, to, dstQuad, kernel), 0) << round;
    for (int y = 0; y < dst.height(); ++y) {
      const auto row = CrossRow(dstQuad, y);
      for (int x = 0; x < dst.width(); ++x) {
        const double w = m[6] * x + m[7] * y + m[8];
        const double u = (m[0] * x + m[1] * y + m[2]) / w;
        const double v = (m[3] * x + m[4] * y + m[5]) / w;
        const auto outside = [&](double margin) {
          if (!Inside(to, x, y) || !row || x < row->low - margin || x > row->high + margin) return true;
          return !inside && (u < effective.x - margin || u > effective.x + effective.width - 1 + margin ||
                             v < effective.y - margin || v > effective.y + effective.height - 1 + margin);
        };
        if (outside(1e-7)) {
          ASSERT_EQ(dst.Get(x, y), before.Get(x, y)) << round << " at " << x << ", " << y;
        } else if (!outside(-1e-7)) {
          const double step = (kernel & INT32_MAX) == kNearest ? std::fabs(slopeX) + std::fabs(slopeY) + 1 : 1;
          ASSERT_NEAR(dst.Get(x, y), NaiveSample(src, u, v, kernel & INT32_MAX), step)
              << round << " at " << x << ", " << y;
        }
      }
    }
  }
}

TEST(QuadWarpTest, EqualRectanglesCopy) {
  Random random(5);
  Image<BW8> src(60, 40);
  src.FillRandom(random);
  const Rect whole = WholeOf(src);
  for (int round = 0; round < 200; ++round) {
    const int x = RandomInt(random, 0, 50);
    const int y = RandomInt(random, 0, 30);
    const Rect part = {x, y, RandomInt(random, 2, 60 - x), RandomInt(random, 2, 40 - y)};
    for (const int kernel : kKernels) {
      Image<BW8> dst(60, 40);
      Image<BW8> expected(dst);
      for (int row = y; row < y + part.height; ++row) {
        for (int column = x; column < x + part.width; ++column) expected.Set(column, row, src.Get(column, row));
      }
      const Quad quad = CornersOf(part);
      ASSERT_EQ(Warp(Norvala_WarpPerspectiveQuad, src, whole, quad, dst, whole, quad, kernel), 0);
      ASSERT_EQ(dst.Bytes(), expected.Bytes()) << kernel;
    }
  }
}

TEST(QuadWarpTest, FailuresWriteNothing) {
  Random random(6);
  Image<BW8> src(10, 8);
  src.FillRandom(random);
  Image<BW8> dst(10, 8);
  const auto before = dst.Bytes();
  const Rect whole = {0, 0, 10, 8};
  const Quad good = CornersOf({1, 1, 6, 5});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (WarpExport* warp : {Norvala_WarpAffineQuad, Norvala_WarpPerspectiveQuad}) {
    for (const Quad& bad :
         {Quad{0, 0, 4, 4, 4, 0, 0, 4}, Quad{0, 0, 4, 0, 8, 0, 0, 4}, Quad{}, Quad{0, 0, 4, 0, 1, 1, 0, 4},
          Quad{nan, 0, 4, 0, 4, 4, 0, 4}, Quad{-inf, -inf, inf, -inf, inf, inf, -inf, inf}}) {
      for (const int kernel : kKernels) {
        EXPECT_EQ(Warp(warp, src, whole, bad, dst, whole, good, kernel), -1);
        EXPECT_EQ(Warp(warp, src, whole, good, dst, whole, bad, kernel), -1);
      }
    }
    EXPECT_EQ(Warp(warp, src, whole, good, dst, whole, good, 3), -1);
    EXPECT_EQ(Warp(warp, src, {0, 0, 0, 1}, good, dst, whole, good, kNearest), -1);
    EXPECT_EQ(Warp(warp, src, whole, good, dst, {0, -1, 1, 1}, good, kNearest), -1);
    EXPECT_EQ(Warp(warp, src, {10, 0, 1, 1}, good, dst, whole, good, kNearest), -1);
    EXPECT_EQ(Warp(warp, src, whole, good, dst, whole, CornersOf({20, 20, 5, 5}), kNearest), -1);
    EXPECT_EQ(Warp(warp, src, whole, good, dst, whole, {0.2, 0.2, 0.8, 0.2, 0.8, 0.8, 0.2, 0.8}, kNearest), -1);
    EXPECT_EQ(warp(nullptr, 10, 8, 10, &whole, good.data(), dst.data(), 10, &whole, good.data(), kNearest), -1);
    EXPECT_EQ(warp(src.data(), 10, 8, 10, &whole, good.data(), nullptr, 10, &whole, good.data(), kNearest), -1);
    EXPECT_EQ(warp(src.data(), 10, 8, 0, &whole, good.data(), dst.data(), 10, &whole, good.data(), kNearest), -1);
    EXPECT_EQ(warp(src.data(), 10, 8, 10, &whole, good.data(), dst.data(), 0, &whole, good.data(), kNearest), -1);
  }
  // The source quadrilateral misses the source region: nothing is left of it.
  EXPECT_EQ(Warp(Norvala_WarpAffineQuad, src, {8, 7, 2, 1}, good, dst, whole, good, kNearest), -1);
  EXPECT_EQ(dst.Bytes(), before);
}

TEST(QuadWarpTest, StaysInsideBothImages) {
  Random random(7);
  static constexpr double kFar[] = {1e-300, 1e-12, 1e6, -1e6, 3e9, -3e9, 1e18, -1e18, 1e155, -1e155, 1e308, -1e308};
  for (int round = 0; round < 20000; ++round) {
    Image<BW8> src(RandomInt(random, 1, 9), RandomInt(random, 1, 9));
    Image<BW8> dst(12, 12);
    src.FillRandom(random);
    Quad quads[2];
    for (Quad& quad : quads) {
      quad = RandomQuad(random, {0, 0, 12, 12}, RandomInt(random, 0, 1) != 0 ? 5 : 0, random() % 2 != 0);
      for (double& v : quad) {
        if (random() % 8 == 0) v = kFar[random() % std::size(kFar)];
      }
    }
    const Rect to = {3, 4, 6, 5};
    Image<BW8> expected(dst);
    const int kernel = kKernels[round % 3] | (round % 4 == 0 ? INT32_MIN : 0);
    Warp(round % 2 != 0 ? Norvala_WarpAffineQuad : Norvala_WarpPerspectiveQuad, src, WholeOf(src), quads[0], dst, to,
         quads[1], kernel);
    for (int y = to.y; y < to.y + to.height; ++y) {
      for (int x = to.x; x < to.x + to.width; ++x) expected.Set(x, y, dst.Get(x, y));
    }
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << round;
  }
}

}  // namespace
}  // namespace norvala_test
