#include <gtest/gtest.h>

#include <numbers>

#include "geometry/naive_warp.h"
#include "norvala.h"

namespace norvala_test {
namespace {

// `offset` is the column of the destination image that `dst` begins with.
template <class T>
int Warp(const Image<T>& src, const Rect& from, const Image<T>& dst, const Rect& to, const Affine& c, int kernel,
         std::uintptr_t offset = 0) {
  auto* first = reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(dst.data()) - offset * sizeof(T));
  const auto call = [&](auto* warp) {
    return warp(src.data(), src.width(), src.height(), src.step(), &from, first, dst.step(), &to, c.data(), kernel);
  };
  if constexpr (sizeof(T) == 1) {
    return call(Norvala_WarpAffine_BW8);
  } else {
    return call(Norvala_WarpAffine_FLOAT32);
  }
}

// A rotation, scaling and shear that brings some point of one region to some point of the other. Coefficients in
// units of `grain` (unless it is 0) put many edges and positions on pixels, or a rounding error beside them.
Affine RandomAffine(Random& random, const Rect& from, const Rect& to, double grain) {
  const auto snap = [&](double v) { return grain > 0 ? std::round(v / grain) * grain : v; };
  const double angle = RandomDouble(random, 0, 2 * std::numbers::pi);
  const double scale = std::exp(RandomDouble(random, -1.5, 1.5));
  const double c = scale * std::cos(angle);
  const double s = scale * std::sin(angle);
  const double shear = RandomDouble(random, -0.5, 0.5);
  const double flip = RandomInt(random, 0, 1) != 0 ? 1 : -1;
  Affine m = {snap(c), snap(s + shear * c), 0, snap(-s * flip), snap((c - shear * s) * flip), 0};
  const double x = from.x + RandomDouble(random, 0, from.width);
  const double y = from.y + RandomDouble(random, 0, from.height);
  m[2] = snap(to.x + RandomDouble(random, 0, to.width) - m[0] * x - m[1] * y);
  m[5] = snap(to.y + RandomDouble(random, 0, to.height) - m[3] * x - m[4] * y);
  return m;
}

// The way back from the image of a rectangle's corners to the rectangle.
Affine InverseOfCorners(const Quad& q, const Rect& r) {
  const double a = q[2] - q[0];
  const double b = q[4] - q[2];
  const double c = q[3] - q[1];
  const double e = q[5] - q[3];
  const double d = a * e - b * c;
  const double sx = (r.width - 1.0) / d;
  const double sy = (r.height - 1.0) / d;
  const double d0 = e * sx;
  const double d1 = -b * sx;
  const double d3 = -c * sy;
  const double d4 = a * sy;
  return {d0, d1, r.x - d1 * q[1] - d0 * q[0], d3, d4, r.y - d3 * q[0] - d4 * q[1]};
}

template <class T>
class AffineWarpTest : public testing::Test {};
using WarpTypes = testing::Types<BW8, FLOAT32>;
TYPED_TEST_SUITE(AffineWarpTest, WarpTypes);

TYPED_TEST(AffineWarpTest, EqualsTheNaiveWarp) {
  Random random(1);
  int done = 0;
  int written = 0;
  for (int round = 0; round < 4000; ++round) {
    const auto flush = round % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End;
    Image<TypeParam> src(RandomInt(random, 2, 300), RandomInt(random, 2, 60), RandomLayout(random), flush);
    Image<TypeParam> dst(RandomInt(random, 2, 300), RandomInt(random, 2, 60), RandomLayout(random), flush);
    src.FillRandom(random);
    UnifyNaNs(dst);
    const Image<TypeParam> before(dst);
    const Rect from = RandomRegion(random, src.width(), src.height(), 5);
    const Rect to = LimitTo(RandomRegion(random, dst.width(), dst.height(), 0), dst.width(), dst.height());
    const Rect effective = LimitTo(from, src.width(), src.height());
    constexpr double kGrains[] = {0, 0, 0.25, 1.0 / 3};
    const Affine c = RandomAffine(random, effective, to, kGrains[RandomInt(random, 0, 3)]);
    if (std::fabs(c[0] * c[4] - c[1] * c[3]) < 1e-3) continue;
    const std::int32_t kernel = kKernels[round % 3];
    const int result = Warp(src, from, dst, to, c, kernel);

    const Quad quad = MapCorners(c, effective);
    const NaiveSpans spans = SpansOf(quad, to);
    if (spans.doubtful) continue;
    Image<TypeParam> expected(before);
    if (effective.width >= 2 && effective.height >= 2) {
      NaiveAffineRows(src, expected, spans, InverseOfCorners(quad, effective), kernel);
    }
    UnifyNaNs(dst);
    UnifyNaNs(expected);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << "round " << round << " kernel " << kernel << " " << src.width() << "x"
                                             << src.height() << " to " << dst.width() << "x" << dst.height();
    if (result != 0) {
      ASSERT_EQ(dst.Bytes(), before.Bytes());
    }
    ++done;
    written += dst.Bytes() != before.Bytes() ? 1 : 0;
  }
  EXPECT_GT(done, 2500);
  EXPECT_GT(written, 2000);
}

// Maps whose inverses are exact, as those of sides below 50 pixels are: what lies on a pixel is copied, what lies
// between pixels is sampled there.
TYPED_TEST(AffineWarpTest, FollowsExactMaps) {
  Random random(2);
  for (int round = 0; round < 60; ++round) {
    Image<TypeParam> src(RandomInt(random, 2, 49), RandomInt(random, 2, 49), RandomLayout(random));
    src.Fill([&] { return static_cast<TypeParam>(random() % 3 == 0 ? 0 : random() % 256); });
    Image<TypeParam> dst(2 * src.width(), std::max(2 * src.height(), src.width()), RandomLayout(random));
    const double right = src.width() - 1;
    const double bottom = src.height() - 1;
    const struct {
      Affine forward;
      Affine inverse;
    } maps[] = {{{1, 0, 0, 0, 1, 0}, {1, 0, 0, 0, 1, 0}},
                {{2, 0, 0, 0, 2, 0}, {0.5, 0, 0, 0, 0.5, 0}},
                {{0, 1, 0, -1, 0, right}, {0, -1, right, 1, 0, 0}},  // a quarter turn
                {{0, 1, 0, 1, 0, 0}, {0, 1, 0, 1, 0, 0}},            // lists the corners the other way round
                // Only the last row, and only the last pixel, touches the destination.
                {{1, 0, 1, 0, 1, -bottom}, {1, 0, -1, 0, 1, bottom}},
                {{1, 0, -right, 0, 1, -bottom}, {1, 0, right, 0, 1, bottom}}};
    const Rect whole = WholeOf(dst);
    const Rect part = {src.width() / 4, src.height() / 4, 1000, 1000};
    for (const auto& [forward, inverse] : maps) {
      for (const Rect& from : {WholeOf(src), part}) {
        // One row and one column of the destination among them.
        for (const Rect& to : {whole, Rect{1, 0, whole.width - 1, 1}, Rect{1, 0, 1, whole.height}}) {
          const int kernel = kKernels[RandomInt(random, 0, 2)];
          const Rect effective = LimitTo(from, src.width(), src.height());
          if (effective.width < 2 || effective.height < 2) continue;
          Image<TypeParam> expected(dst);
          for (int y = to.y; y < to.y + to.height; ++y) {
            for (int x = to.x; x < to.x + to.width; ++x) {
              const double u = inverse[0] * x + inverse[1] * y + inverse[2];
              const double v = inverse[3] * x + inverse[4] * y + inverse[5];
              if (!Contains(effective, u, v)) continue;
              const bool onPixel = u == std::floor(u) && v == std::floor(v);
              expected.Set(x, y, onPixel ? src.Get(int(u), int(v)) : NaiveSample(src, u, v, kernel));
            }
          }
          const bool writes = dst.Bytes() != expected.Bytes();
          const int result = Warp(src, from, dst, to, forward, kernel);
          ASSERT_EQ(dst.Bytes(), expected.Bytes()) << forward[0] << " " << forward[1] << " of " << effective.width
                                                   << "x" << effective.height << " kernel " << kernel;
          ASSERT_TRUE(result == 0 || !writes);
        }
      }
    }
  }
}

// The first pixel of the destination image may lie far from what is written, farther than a signed offset reaches.
TYPED_TEST(AffineWarpTest, ReachesDistantRegions) {
  constexpr int kFar = 1 << 29;
  Image<TypeParam> src(7, 2);
  src.Fill([] { return TypeParam{9}; });
  Image<TypeParam> dst(7, 2);
  ASSERT_EQ(Warp(src, WholeOf(src), dst, {kFar, 0, 7, 2}, {1, 0, kFar, 0, 1, 0}, kLinear | kSmoothEdge, kFar), 0);
  EXPECT_EQ(dst.Bytes(), src.Bytes());
}

// Nearly singular and enormous maps: whatever they do, they read and write only where they may.
TYPED_TEST(AffineWarpTest, StaysInsideBothImages) {
  Random random(7);
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kValues[] = {0,    1,     -1,    1e-7,  -1e-7, 1e-12, 1e7,   -1e7, 1e15,    1e-300, 5e-324,    0.5,
                                1e18, -1e18, 1e150, 1e200, 1e300, 3,     0.999, 2e9,  -1e-160, 1.5,    kInfinity, NAN};
  for (int round = 0; round < 20000; ++round) {
    Image<TypeParam> src(RandomInt(random, 1, 9), RandomInt(random, 1, 9));
    Image<TypeParam> dst(12, 12);
    src.Fill([&] { return TypeParam{7}; });
    Affine c;
    for (double& v : c) v = kValues[static_cast<std::size_t>(RandomInt(random, 0, std::size(kValues) - 1))];
    if (round % 2 != 0) {
      const double k = RandomDouble(random, -2, 2);
      c[0] = RandomDouble(random, -2, 2);
      c[1] = RandomDouble(random, -2, 2);
      c[3] = k * c[0];
      c[4] = k * c[1] + RandomDouble(random, -1e-10, 1e-10);
    }
    const Rect to = {3, 4, 6, 5};
    Image<TypeParam> expected(dst);
    Warp(src, WholeOf(src), dst, to, c, kKernels[round % 3] | (round % 4 == 0 ? kSmoothEdge : 0));
    CopyRegion(dst, expected, to);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << round;
  }
}

}  // namespace
}  // namespace norvala_test
