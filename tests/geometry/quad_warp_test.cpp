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

// A convex quadrilateral, its vertices near the corners of the rectangle, in either order; on half pixels if `snap`.
Quad RandomQuad(Random& random, const Rect& r, double deviation, bool snap = false) {
  Quad quad = CornersOf(r);
  deviation = std::min(deviation, 0.2 * (std::min(r.width, r.height) - 1));
  for (double& v : quad) v += RandomDouble(random, -deviation, deviation);
  if (snap) {
    for (double& v : quad) v = std::round(2 * v) / 2;
  }
  if (random() % 2 != 0) {
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

// The projection that takes one quadrilateral to another, from the linear equations for its eight unknowns.
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

struct Images {
  Images(Random& random, int round)
      : src(RandomInt(random, 8, 200), RandomInt(random, 8, 60), RandomLayout(random), Flush(round)),
        dst(RandomInt(random, 8, 200), RandomInt(random, 8, 60), RandomLayout(random), Flush(round)),
        to{RandomInt(random, 0, 3), RandomInt(random, 0, 3), 0, 0} {
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
    src.FillRandom(random);
    const Rect inner = {2, 2, src.width() - 4, src.height() - 4};
    const Quad srcQuad = RandomQuad(random, inner, 1.5, round % 4 == 0);
    Quad dstQuad = RandomQuad(random, to, 3, round % 4 < 2);
    if (round % 3 != 0) dstQuad = Parallelogram(dstQuad);  // else vertex 3 is off, and positions leave the image
    const NaiveSpans spans = SpansOf(dstQuad, to);
    if (spans.doubtful) continue;
    const int kernel = kKernels[round / 3 % 3];
    Image<BW8> expected(dst);
    NaiveAffineRows(src, expected, spans, ThreeVertexMap(dstQuad, srcQuad), kernel);
    Warp(Norvala_WarpAffineQuad, src, WholeOf(src), srcQuad, dst, to, dstQuad, kernel);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << round;
    ++done;
  }
  EXPECT_GT(done, 1000);
}

// Both warps, with source quadrilaterals inside the region and, every other time, partly outside: then positions
// outside the region are left out. A smooth picture makes a hair of position a hair of value.
TEST(QuadWarpTest, FollowsTheProjection) {
  Random random(4);
  for (int round = 0; round < 1200; ++round) {
    Images images(random, round);
    const auto& to = images.to;
    auto& src = images.src;
    auto& dst = images.dst;
    const double slopeX = RandomDouble(random, -100, 100) / src.width();
    const double slopeY = RandomDouble(random, -100, 100) / src.height();
    for (int y = 0; y < src.height(); ++y) {
      for (int x = 0; x < src.width(); ++x) {
        src.Set(x, y, static_cast<BW8>(128 + slopeX * (x - src.width() / 2) + slopeY * (y - src.height() / 2)));
      }
    }
    const bool affine = round % 4 < 2;
    const Rect from = round % 2 != 0 ? Rect{2, 1, src.width() - 4, src.height()} : WholeOf(src);
    const Rect effective = LimitTo(from, src.width(), src.height());
    Quad srcQuad = RandomQuad(random, {2, 2, src.width() - 4, src.height() - 4}, round % 2 != 0 ? 4 : 0.6);
    Quad dstQuad = RandomQuad(random, to, 3);
    if (affine) {
      srcQuad = Parallelogram(srcQuad);
      dstQuad = Parallelogram(dstQuad);
    }
    bool inside = true;
    for (std::size_t i = 0; i < 8; i += 2) inside &= Contains(effective, srcQuad[i], srcQuad[i + 1]);
    const std::array<double, 9> m = SolveProjection(dstQuad, srcQuad);
    const Image<BW8> before(dst);
    const int kernel = kKernels[round % 3];
    // Edges are smoothed neither where the source was cut nor by the perspective warp.
    const bool smooth = round % 5 == 0 && !(affine && inside);
    const int result = Warp(affine ? Norvala_WarpAffineQuad : Norvala_WarpPerspectiveQuad, src, from, srcQuad, dst, to,
                            dstQuad, kernel | (smooth ? kSmoothEdge : 0));
    ASSERT_TRUE(affine || result == 0 || dst.Bytes() == before.Bytes()) << round;
    for (int y = 0; y < dst.height(); ++y) {
      for (int x = 0; x < dst.width(); ++x) {
        const double w = m[6] * x + m[7] * y + m[8];
        const double u = (m[0] * x + m[1] * y + m[2]) / w;
        const double v = (m[3] * x + m[4] * y + m[5]) / w;
        const auto isWritten = [&](double margin) {
          return Contains(to, x, y) && Depth(dstQuad, x, y) >= -margin && (inside || Contains(effective, u, v, margin));
        };
        if (!isWritten(1e-7)) {
          ASSERT_EQ(dst.Get(x, y), before.Get(x, y)) << round << " at " << x << ", " << y;
        } else if (isWritten(-1e-7)) {
          const double step = kernel == kNearest ? std::fabs(slopeX) + std::fabs(slopeY) + 1 : 1;
          ASSERT_NEAR(dst.Get(x, y), NaiveSample(src, u, v, kernel), step) << round << " at " << x << ", " << y;
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
  for (int round = 0; round < 600; ++round) {
    const int x = RandomInt(random, 0, 50);
    const int y = RandomInt(random, 0, 30);
    const Rect part = {x, y, RandomInt(random, 2, 60 - x), RandomInt(random, 2, 40 - y)};
    const Quad quad = CornersOf(part);
    Image<BW8> dst(60, 40);
    Image<BW8> expected(dst);
    CopyRegion(src, expected, part);
    ASSERT_EQ(Warp(Norvala_WarpPerspectiveQuad, src, whole, quad, dst, whole, quad, kKernels[round % 3]), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << round;
  }
  // The affine warp reports a fourth vertex that does not fit, and warps by the others.
  const Rect part = {2, 3, 10, 8};
  const Quad quad = CornersOf(part);
  Image<BW8> dst(60, 40);
  Image<BW8> expected(dst);
  CopyRegion(src, expected, part);
  ASSERT_EQ(Warp(Norvala_WarpAffineQuad, src, whole, quad, dst, whole, quad, kLinear), 0);
  EXPECT_EQ(dst.Bytes(), expected.Bytes());
  Quad moved = quad;
  moved[7] += 1;
  expected.Set(2, 11, src.Get(2, 11));
  ASSERT_EQ(Warp(Norvala_WarpAffineQuad, src, whole, quad, dst, whole, moved, kLinear), -1);
  EXPECT_EQ(dst.Bytes(), expected.Bytes());
}

// Columns 5 to 55 of the last row show the source's last row at half its pitch, from border to border.
TEST(QuadWarpTest, PerspectiveReachesTheBorderOfTheRegion) {
  Random random(9);
  Image<BW8> src(26, 18);
  src.FillRandom(random);
  Image<BW8> dst(64, 35);
  Image<BW8> expected(dst);
  Warp(Norvala_WarpPerspectiveQuad, src, WholeOf(src), {-4, 0, 29, 0, 29, 17, -4, 17}, dst, WholeOf(dst),
       {13.5, 0, 46.5, 0, 63, 34, -3, 34}, kLinear);
  for (int x = 0; x < 26; ++x) EXPECT_EQ(dst.Get(5 + 2 * x, 34), src.Get(x, 17)) << x;
  for (const int x : {4, 56}) EXPECT_EQ(dst.Get(x, 34), expected.Get(x, 34)) << x;
}

TEST(QuadWarpTest, StaysInsideBothImages) {
  Random random(7);
  constexpr double kFar[] = {1e-300, 1e-12, 1e6, -1e6, 3e9, 1e18, -1e18, 1e155, -1e155, 1e308, -1e308, INFINITY, NAN};
  for (int round = 0; round < 20000; ++round) {
    Image<BW8> src(RandomInt(random, 1, 9), RandomInt(random, 1, 9));
    Image<BW8> dst(12, 12);
    src.FillRandom(random);
    Quad quads[2];
    for (Quad& quad : quads) {
      quad = RandomQuad(random, {0, 0, 12, 12}, RandomInt(random, 0, 1) != 0 ? 5 : 0);
      for (double& v : quad) {
        if (random() % 8 == 0) v = kFar[random() % std::size(kFar)];
      }
    }
    const Rect to = {3, 4, 6, 5};
    Image<BW8> expected(dst);
    Warp(round % 2 != 0 ? Norvala_WarpAffineQuad : Norvala_WarpPerspectiveQuad, src, WholeOf(src), quads[0], dst, to,
         quads[1], kKernels[round % 3] | (round % 4 == 0 ? kSmoothEdge : 0));
    CopyRegion(dst, expected, to);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << round;
  }
}

}  // namespace
}  // namespace norvala_test
