#include <gtest/gtest.h>

#include <numbers>

#include "geometry/naive_warp.h"
#include "norvala.h"

namespace norvala_test {
namespace {

int Warp(const Image<BW8>& src, const Rect& from, const Image<BW8>& dst, const Rect& to, const Affine& c, int kernel) {
  return Norvala_WarpAffine_BW8(src.data(), src.width(), src.height(), src.step(), &from, dst.data(), dst.step(), &to,
                                c.data(), kernel);
}
int Warp(const Image<FLOAT32>& src, const Rect& from, const Image<FLOAT32>& dst, const Rect& to, const Affine& c,
         int kernel) {
  return Norvala_WarpAffine_FLOAT32(src.data(), src.width(), src.height(), src.step(), &from, dst.data(), dst.step(),
                                    &to, c.data(), kernel);
}

template <class T>
Rect WholeOf(const Image<T>& image) {
  return {0, 0, image.width(), image.height()};
}

// A rotation, scaling and shear that brings some point of one region to some point of the other.
Affine RandomAffine(Random& random, const Rect& from, const Rect& to) {
  const double angle = RandomDouble(random, 0, 2 * std::numbers::pi);
  const double scale = std::exp(RandomDouble(random, -1.5, 1.5));
  const double c = scale * std::cos(angle);
  const double s = scale * std::sin(angle);
  const double shear = RandomDouble(random, -0.5, 0.5);
  const double flip = RandomInt(random, 0, 1) != 0 ? 1 : -1;
  Affine m = {c, s + shear * c, 0, -s * flip, (c - shear * s) * flip, 0};
  const double x = from.x + RandomDouble(random, 0, from.width);
  const double y = from.y + RandomDouble(random, 0, from.height);
  m[2] = to.x + RandomDouble(random, 0, to.width) - m[0] * x - m[1] * y;
  m[5] = to.y + RandomDouble(random, 0, to.height) - m[3] * x - m[4] * y;
  return m;
}

template <class T>
class AffineWarpTest : public testing::Test {};
using WarpTypes = testing::Types<BW8, FLOAT32>;
TYPED_TEST_SUITE(AffineWarpTest, WarpTypes);

TYPED_TEST(AffineWarpTest, EqualsTheNaiveWarp) {
  Random random(1);
  int done = 0;
  int written = 0;
  for (int round = 0; round < 3000; ++round) {
    const auto flush = round % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End;
    Image<TypeParam> src(RandomInt(random, 2, 300), RandomInt(random, 2, 60), RandomLayout(random), flush);
    Image<TypeParam> dst(RandomInt(random, 2, 300), RandomInt(random, 2, 60), RandomLayout(random), flush);
    src.FillRandom(random);
    const Rect from = RandomRegion(random, src.width(), src.height(), 5);
    const Rect to = LimitTo(RandomRegion(random, dst.width(), dst.height(), 0), dst.width(), dst.height());
    const Rect effective = LimitTo(from, src.width(), src.height());
    const Affine c = RandomAffine(random, effective, to);
    const std::int32_t kernel = kKernels[round % 3];
    UnifyNaNs(dst);
    const Image<TypeParam> before(dst);
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

TYPED_TEST(AffineWarpTest, IdentityCopiesTheRegion) {
  Random random(2);
  for (const int kernel : kKernels) {
    for (int round = 0; round < 40; ++round) {
      Image<TypeParam> src(RandomInt(random, 2, 300), RandomInt(random, 2, 30), RandomLayout(random));
      src.Fill([&] { return static_cast<TypeParam>(random() % 3 == 0 ? 0 : random() % 256); });
      Image<TypeParam> dst(src.width(), src.height(), RandomLayout(random));
      const Rect region = {RandomInt(random, 0, src.width() - 2), RandomInt(random, 0, src.height() - 2), 1000, 1000};
      const Rect to = LimitTo(region, src.width(), src.height());
      Image<TypeParam> expected(dst);
      for (int y = to.y; y < to.y + to.height; ++y) {
        for (int x = to.x; x < to.x + to.width; ++x) expected.Set(x, y, src.Get(x, y));
      }
      ASSERT_EQ(Warp(src, region, dst, to, {1, 0, 0, 0, 1, 0}, kernel), 0);
      ASSERT_EQ(dst.Bytes(), expected.Bytes()) << src.width() << "x" << src.height() << " kernel " << kernel;
    }
  }
}

// Twice the size: positions are exact, half of them between pixels, where sums often end in exactly one half.
TYPED_TEST(AffineWarpTest, DoublesTheSize) {
  Random random(3);
  Image<TypeParam> src(150, 40, RandomLayout(random));
  src.Fill([&] { return static_cast<TypeParam>(random() % 256); });
  for (const int kernel : kKernels) {
    Image<TypeParam> dst(299, 79, RandomLayout(random));
    Image<TypeParam> expected(dst);
    for (int y = 0; y < dst.height(); ++y) {
      for (int x = 0; x < dst.width(); ++x) expected.Set(x, y, NaiveSample(src, x * 0.5, y * 0.5, kernel));
    }
    ASSERT_EQ(Warp(src, WholeOf(src), dst, WholeOf(dst), {2, 0, 0, 0, 2, 0}, kernel), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << kernel;
  }
}

TYPED_TEST(AffineWarpTest, QuarterTurnsAreExact) {
  Random random(4);
  Image<TypeParam> src(37, 21);
  src.FillRandom(random);
  Image<TypeParam> dst(21, 37);
  Image<TypeParam> expected(dst);
  for (int y = 0; y < 37; ++y) {
    for (int x = 0; x < 21; ++x) expected.Set(x, y, src.Get(36 - y, x));
  }
  ASSERT_EQ(Warp(src, WholeOf(src), dst, WholeOf(dst), {0, 1, 0, -1, 0, 36}, kNearest), 0);
  EXPECT_EQ(dst.Bytes(), expected.Bytes());

  // The axis swap, which lists the corners the other way round.
  for (int y = 0; y < 37; ++y) {
    for (int x = 0; x < 21; ++x) expected.Set(x, y, src.Get(y, x));
  }
  ASSERT_EQ(Warp(src, WholeOf(src), dst, WholeOf(dst), {0, 1, 0, 1, 0, 0}, kNearest), 0);
  EXPECT_EQ(dst.Bytes(), expected.Bytes());
}

TYPED_TEST(AffineWarpTest, OneRowAndOneColumnOfTheDestination) {
  Random random(5);
  Image<TypeParam> src(20, 20);
  src.FillRandom(random);
  Image<TypeParam> dst(20, 20);
  Image<TypeParam> expected(dst);
  const Affine identity = {1, 0, 0, 0, 1, 0};
  for (const Rect to : {Rect{3, 7, 12, 1}, Rect{5, 2, 1, 9}, Rect{19, 19, 1, 1}, Rect{0, 0, 20, 1}}) {
    for (int y = to.y; y < to.y + to.height; ++y) {
      for (int x = to.x; x < to.x + to.width; ++x) expected.Set(x, y, src.Get(x, y));
    }
    ASSERT_EQ(Warp(src, WholeOf(src), dst, to, identity, kNearest), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes());
  }
  // The mapped region only touches the destination: its last row, its last pixel.
  Image<TypeParam> touched(20, 20);
  Image<TypeParam> alone(touched);
  for (int x = 2; x < 20; ++x) alone.Set(x, 19, src.Get(x - 2, 0));
  ASSERT_EQ(Warp(src, WholeOf(src), touched, WholeOf(touched), {1, 0, 2, 0, 1, 19}, kLinear), 0);
  alone.Set(19, 0, src.Get(0, 19));
  ASSERT_EQ(Warp(src, WholeOf(src), touched, WholeOf(touched), {1, 0, 19, 0, 1, -19}, kNearest), 0);
  EXPECT_EQ(touched.Bytes(), alone.Bytes());
}

TYPED_TEST(AffineWarpTest, FailuresWriteNothing) {
  Random random(6);
  Image<TypeParam> src(10, 8);
  src.FillRandom(random);
  Image<TypeParam> dst(10, 8);
  const auto before = dst.Bytes();
  const Rect whole = {0, 0, 10, 8};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (const Affine& c :
       {Affine{1, 2, 0, 2, 4, 0}, Affine{0, 1e-7, 0, 1e-7, 0, 0}, Affine{0, 0, 0, 0, 0, 0}, Affine{nan, 0, 0, 0, 1, 0},
        Affine{nan, 1, 0, 1, nan, 0}, Affine{1, 0, nan, 0, 1, 0}, Affine{inf, 0, 0, 0, 1, 0},
        Affine{1, 0, inf, 0, 1, 0}, Affine{1e300, 0, 0, 0, 1e300, 0}, Affine{1, 0, 10, 0, 1, 0},
        Affine{1, 0, 0, 0, 1, -8}, Affine{0.01, 0, 0.5, 0, 0.01, 0.5}, Affine{1, 0, 1e18, 0, 1, 0}}) {
    for (const int kernel : kKernels) EXPECT_EQ(Warp(src, whole, dst, whole, c, kernel), -1) << c[0] << " " << c[2];
  }
  const Affine identity = {1, 0, 0, 0, 1, 0};
  for (const int kernel : {0, 3, 5, 6, 8, -1, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(Warp(src, whole, dst, whole, identity, kernel), -1) << kernel;
  }
  for (const Rect bad :
       {Rect{-1, 0, 5, 5}, Rect{0, -1, 5, 5}, Rect{0, 0, 0, 5}, Rect{0, 0, 5, 0}, Rect{0, 0, INT32_MIN, 1}}) {
    EXPECT_EQ(Warp(src, bad, dst, whole, identity, kNearest), -1);
    EXPECT_EQ(Warp(src, whole, dst, bad, identity, kNearest), -1);
  }
  for (const Rect outside : {Rect{10, 0, 5, 5}, Rect{0, 8, 5, 5}, Rect{9, 0, 5, 5}, Rect{0, 7, 5, 5},
                             Rect{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}}) {
    EXPECT_EQ(Warp(src, outside, dst, whole, identity, kNearest), -1);
  }
  const Rect far = {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX};
  EXPECT_EQ(Warp(src, whole, dst, far, identity, kNearest), -1);
  EXPECT_EQ(Warp(src, whole, dst, far, {3e8, 0, 0, 0, 5e8, 0}, kNearest), -1);
  EXPECT_EQ(dst.Bytes(), before);
}

// The two tests for singular coefficients, one relative, one absolute.
TEST(AffineWarpSingularTest, TinyScalesPassOnlyOnTheDiagonal) {
  Image<BW8> src(10, 8);
  Image<BW8> dst(10, 8);
  const Rect whole = {0, 0, 10, 8};
  EXPECT_EQ(Warp(src, whole, dst, whole, {0, 1, 0, 1, 0, 0}, kNearest), 0);
  EXPECT_EQ(Warp(src, whole, dst, {0, 0, 1, 1}, {1e-7, 0, 0, 0, 1e-7, 0}, kNearest), 0);
  EXPECT_EQ(Warp(src, whole, dst, whole, {0, 1e-7, 0, 1e-7, 0, 0}, kNearest), -1);
}

// Nearly singular and enormous maps: whatever they do, they read and write only where they may.
TYPED_TEST(AffineWarpTest, StaysInsideBothImages) {
  Random random(7);
  static constexpr double kValues[] = {0,
                                       1,
                                       -1,
                                       1e-7,
                                       -1e-7,
                                       1e-12,
                                       1e7,
                                       -1e7,
                                       1e15,
                                       1e-300,
                                       5e-324,
                                       0.5,
                                       1e18,
                                       -1e18,
                                       1e150,
                                       1e200,
                                       1e300,
                                       3,
                                       0.999,
                                       2e9,
                                       -2e9,
                                       1e-160,
                                       1.5,
                                       -0.0,
                                       std::numeric_limits<double>::infinity(),
                                       std::numeric_limits<double>::quiet_NaN()};
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
    const int kernel = kKernels[round % 3] | (round % 4 == 0 ? INT32_MIN : 0);
    Warp(src, WholeOf(src), dst, to, c, kernel);
    for (int y = to.y; y < to.y + to.height; ++y) {
      for (int x = to.x; x < to.x + to.width; ++x) expected.Set(x, y, dst.Get(x, y));
    }
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << round;
  }
}

}  // namespace
}  // namespace norvala_test
