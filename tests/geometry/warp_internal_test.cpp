#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "geometry/geometry.h"
#include "geometry/polygon.h"
#include "geometry/row_spans.h"
#include "geometry/sample_pixel.h"
#include "support/failing_heap.h"
#include "support/image.h"

namespace norvala {
namespace {

using norvala_test::Image;
using norvala_test::Random;
using norvala_test::RandomInt;

constexpr Rect kWhole = {0, 0, 8, 6};
constexpr Rect kBad = {0, 0, 0, 1};
constexpr std::array<double, 6> kIdentity = {1, 0, 0, 0, 1, 0};
constexpr std::array<double, 6> kSingular = {1, 2, 0, 2, 4, 0};

class WarpStatusTest : public testing::Test {
 protected:
  static StatusCode Affine(const void* from, RegionSize size, int step, Rect region, void* to, int toStep,
                           Rect toRegion, const std::array<double, 6>& c, int kernel) {
    return kWarpAffine(from, size, step, region, to, toStep, toRegion, PixelDepthCode::Unsigned8, c.data(), kernel);
  }

  std::array<BW8, 48> src{};
  std::array<BW8, 48> dst{};
};

TEST_F(WarpStatusTest, AffineChecksInOrder) {
  const BW8* s = src.data();
  BW8* d = dst.data();
  EXPECT_EQ(Affine(nullptr, {0, 6}, 0, kBad, d, 0, kBad, kSingular, 3), StatusCode::NullPointer);
  EXPECT_EQ(Affine(s, {0, 6}, 0, kBad, nullptr, 0, kBad, kSingular, 3), StatusCode::NullPointer);
  EXPECT_EQ(Affine(s, {0, 6}, 0, kWhole, d, 0, kWhole, kSingular, 3), StatusCode::NonPositiveSize);
  EXPECT_EQ(Affine(s, {8, 6}, 0, kBad, d, 0, kWhole, kSingular, 3), StatusCode::NonPositiveSize);
  EXPECT_EQ(Affine(s, {8, 6}, 0, kWhole, d, 0, kBad, kSingular, 3), StatusCode::NonPositiveSize);
  EXPECT_EQ(Affine(s, {8, 6}, 0, kWhole, d, 8, kWhole, kSingular, 3), StatusCode::NonPositiveStep);
  EXPECT_EQ(Affine(s, {8, 6}, 8, kWhole, d, 0, kWhole, kSingular, 3), StatusCode::NonPositiveStep);
  EXPECT_EQ(Affine(s, {8, 6}, 8, kWhole, d, 8, kWhole, kSingular, 3), StatusCode::UnknownInterpolation);
  EXPECT_EQ(Affine(s, {8, 6}, 8, kWhole, d, 8, kWhole, kSingular, INT32_MIN), StatusCode::UnknownInterpolation);
  EXPECT_EQ(Affine(s, {8, 6}, 8, {8, 0, 1, 1}, d, 8, kWhole, kSingular, 1), StatusCode::BadCoefficients);
  EXPECT_EQ(Affine(s, {8, 6}, 8, {8, 0, 1, 1}, d, 8, kWhole, kIdentity, 1), StatusCode::NoSourceOverlap);
  EXPECT_EQ(Affine(s, {8, 6}, 8, {0, 6, 1, 1}, d, 8, kWhole, kIdentity, 1), StatusCode::NoSourceOverlap);
  EXPECT_EQ(Affine(s, {8, 6}, 8, {7, 0, 5, 5}, d, 8, kWhole, kIdentity, 1), StatusCode::RegionTooSmall);
  EXPECT_EQ(Affine(s, {8, 1}, 8, kWhole, d, 8, kWhole, kIdentity, 1), StatusCode::RegionTooSmall);
  EXPECT_EQ(Affine(s, {8, 6}, 8, kWhole, d, 8, kWhole, {1, 0, std::nan(""), 0, 1, 0}, 1), StatusCode::BadCoefficients);
  EXPECT_EQ(Affine(s, {8, 6}, 8, kWhole, d, 8, kWhole, {1, 0, 8, 0, 1, 0}, 1), StatusCode::NoDestinationOverlap);
  EXPECT_EQ(Affine(s, {8, 6}, 8, kWhole, d, 8, kWhole, kIdentity, 4), StatusCode::Success);
}

TEST_F(WarpStatusTest, QuadsCheckInOrder) {
  const std::array<double, 8> good = {0, 0, 7, 0, 7, 5, 0, 5};
  const std::array<double, 8> moved = {0, 0, 7, 0, 7, 5, 0, 4};
  const std::array<double, 8> crossed = {0, 0, 7, 5, 7, 0, 0, 5};
  const std::array<double, 8> away = {10, 0, 17, 0, 17, 5, 10, 5};
  for (const auto& warp : {kWarpAffineQuad, kWarpPerspectiveQuad}) {
    const auto run = [&](const void* from, RegionSize size, int step, Rect region, const auto& quad, Rect toRegion,
                         const auto& toQuad, int kernel) {
      return warp(from, size, step, region, quad.data(), dst.data(), 8, toRegion, toQuad.data(),
                  PixelDepthCode::Unsigned8, kernel);
    };
    const BW8* s = src.data();
    EXPECT_EQ(run(nullptr, {8, 6}, 0, kBad, crossed, kBad, crossed, 3), StatusCode::NullPointer);
    EXPECT_EQ(run(s, {8, 6}, 0, kBad, crossed, kWhole, crossed, 3), StatusCode::NonPositiveSize);
    EXPECT_EQ(run(s, {8, 6}, 0, kWhole, crossed, kBad, crossed, 3), StatusCode::NonPositiveSize);
    EXPECT_EQ(run(s, {8, 6}, 0, kWhole, crossed, kWhole, crossed, 3), StatusCode::NonPositiveStep);
    EXPECT_EQ(run(s, {8, 6}, 8, {8, 0, 1, 1}, crossed, kWhole, good, 3), StatusCode::UnknownInterpolation);
    EXPECT_EQ(run(s, {8, 6}, 8, {8, 0, 1, 1}, crossed, kWhole, good, 1), StatusCode::BadQuadrilateral);
    EXPECT_EQ(run(s, {8, 6}, 8, {8, 0, 1, 1}, good, kWhole, crossed, 1), StatusCode::BadQuadrilateral);
    EXPECT_EQ(run(s, {8, 6}, 8, {8, 0, 1, 1}, good, kWhole, good, 1), StatusCode::NoSourceOverlap);
    EXPECT_EQ(run(s, {8, 6}, 8, kWhole, good, kWhole, away, 1), StatusCode::NoDestinationOverlap);
    EXPECT_EQ(run(s, {8, 6}, 8, kWhole, good, kWhole, good, 1), StatusCode::Success);
    EXPECT_EQ(run(s, {8, 6}, 8, {3, 3, 1, 1}, good, kWhole, good, 1), StatusCode::Success);  // one pixel is enough
  }
  EXPECT_EQ(kWarpAffineQuad(src.data(), {8, 6}, 8, kWhole, good.data(), dst.data(), 8, kWhole, moved.data(),
                            PixelDepthCode::Unsigned8, 2),
            StatusCode::QuadNotAffine);
}

TEST_F(WarpStatusTest, WithoutMemoryNothingIsWritten) {
  src.fill(1);
  const std::array<double, 8> quad = {0, 0, 7, 0, 7, 5, 0, 5};
  norvala_test::HeapWatch heap;
  heap.FailAt(0);
  EXPECT_EQ(Affine(src.data(), {8, 6}, 8, kWhole, dst.data(), 8, kWhole, kIdentity, 1),
            StatusCode::NoDestinationOverlap);
  for (const auto& warp : {kWarpAffineQuad, kWarpPerspectiveQuad}) {
    heap.FailAt(0);
    EXPECT_EQ(warp(src.data(), {8, 6}, 8, kWhole, quad.data(), dst.data(), 8, kWhole, quad.data(),
                   PixelDepthCode::Unsigned8, 1),
              StatusCode::NoDestinationOverlap);
  }
  EXPECT_EQ(dst, (std::array<BW8, 48>{}));
  heap.FailAt(-1);
  EXPECT_EQ(Affine(src.data(), {8, 6}, 8, kWhole, dst.data(), 8, kWhole, kIdentity, 1), StatusCode::Success);
  EXPECT_EQ(heap.allocations(), 1);
  EXPECT_EQ(heap.live(), 0);
}

TEST(ClassifyTest, TurnsAtTheCorners) {
  EXPECT_EQ(ClassifyQuadrilateral({{{0, 0}, {4, 0}, {4, 4}, {0, 4}}}), 1);
  EXPECT_EQ(ClassifyQuadrilateral({{{0, 0}, {0, 4}, {4, 4}, {4, 0}}}), 0);
  EXPECT_EQ(ClassifyQuadrilateral({{{0, 0}, {4, 0}, {1, 1}, {0, 4}}}), -4);
  EXPECT_EQ(ClassifyQuadrilateral({{{0, 0}, {4, 4}, {4, 0}, {0, 4}}}), -4);
  EXPECT_EQ(ClassifyQuadrilateral({{{0, 0}, {4, 0}, {8, 0}, {0, 4}}}), -5);
  EXPECT_EQ(ClassifyQuadrilateral({{{0, 0}, {4, 0}, {4, 4}, {0, std::nan("")}}}), -5);
}

TEST(ClipPolygonTest, KeepsTheOrderAndCutsCorners) {
  const Box box = {0, 0, 10, 10};
  // A square on its tip, cut at all four tips.
  const Polygon cut = ClipPolygon(Polygon(Quadrilateral{{{5, -3}, {13, 5}, {5, 13}, {-3, 5}}}), box);
  const Point expected[] = {{8, 0}, {10, 2}, {10, 8}, {8, 10}, {2, 10}, {0, 8}, {0, 2}, {2, 0}};
  ASSERT_EQ(cut.count, 8);
  int first = 0;
  while (first < 7 && (cut.vertices[first].x != 8 || cut.vertices[first].y != 0)) ++first;
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(cut.vertices[(first + i) % 8].x, expected[i].x);
    EXPECT_EQ(cut.vertices[(first + i) % 8].y, expected[i].y);
  }
  EXPECT_EQ(ClipPolygon(Polygon(Quadrilateral{{{-5, -5}, {-1, -5}, {-1, -1}, {-5, -1}}}), box).count, 0);
  EXPECT_EQ(ClipPolygon(Polygon(Quadrilateral{{{-5, -5}, {0, -5}, {0, 0}, {-5, 0}}}), box).count, 1);  // one corner
  EXPECT_EQ(ClipPolygon(Polygon(Quadrilateral{{{2, -5}, {6, -5}, {6, 0}, {2, 0}}}), box).count, 2);    // one side
  EXPECT_EQ(ClipPolygon(Polygon(Quadrilateral{{{-9, -9}, {99, -9}, {99, 99}, {-9, 99}}}), box).count, 4);
}

// Spans of polygons whose ends lie on, or a hair beside, pixel centres.
TEST(RowSpansTest, TakesInPixelsAHairOutside) {
  const Box box = {0, 0, 20, 20};
  const auto span = [&](double left, double right) {
    const RowSpans spans(Polygon(Quadrilateral{{{left, 2}, {right, 2}, {right, 5}, {left, 5}}}), box, true);
    EXPECT_EQ(spans.firstRow(), 2);
    EXPECT_EQ(spans.rows(), 4);
    return std::pair<int, int>(spans[1].first, spans[1].last);
  };
  EXPECT_EQ(span(3, 9), (std::pair<int, int>(3, 9)));
  EXPECT_EQ(span(3 + 5e-15, 9 - 5e-15), (std::pair<int, int>(3, 9)));
  EXPECT_EQ(span(3 + 2e-14, 9 - 2e-14), (std::pair<int, int>(4, 8)));
  EXPECT_EQ(span(3 - 1e-9, 9 + 1e-9), (std::pair<int, int>(3, 9)));
  EXPECT_EQ(span(0, 20), (std::pair<int, int>(0, 20)));
}

TEST(RowSpansTest, DegeneratePolygons) {
  const Box box = {0, 0, 20, 20};
  const auto make = [&](std::initializer_list<Point> points) {
    Polygon polygon;
    for (const Point& p : points) polygon.Append(p);
    return RowSpans(polygon, box, true);
  };
  EXPECT_FALSE(make({}));
  EXPECT_FALSE(make({{2.5, 3}}));
  EXPECT_FALSE(make({{2.3, 3}, {2.7, 9}}));  // no column
  EXPECT_FALSE(make({{2, 3.2}, {9, 3.9}}));  // no row
  const RowSpans point = make({{2, 3}});
  ASSERT_TRUE(point);
  EXPECT_EQ(point.rows(), 1);
  EXPECT_EQ(point[0].first, 2);
  EXPECT_EQ(point[0].last, 2);
  const RowSpans row = make({{2.5, 3}, {9.5, 3}, {4, 3}});
  ASSERT_TRUE(row);
  EXPECT_EQ(row[0].first, 3);
  EXPECT_EQ(row[0].last, 9);
  const RowSpans column = make({{4, 1}, {4, 7}});
  ASSERT_TRUE(column);
  EXPECT_EQ(column.rows(), 7);
  EXPECT_EQ(column[6].first, 4);
  EXPECT_EQ(column[6].last, 4);
  const RowSpans slanted = make({{4, 1}, {5, 3}});  // pixels only where it passes through them
  ASSERT_TRUE(slanted);
  EXPECT_GT(slanted[1].first, slanted[1].last);
}

// The vectorised loops against the plain kernels, with positions on and around pixels, at borders and outside.
template <class T>
void CompareSamplers() {
  Random random(1);
  const auto coordinate = [&](int size) {
    const double whole = RandomInt(random, 0, size - 1);
    switch (RandomInt(random, 0, 15)) {
      case 0:
        return whole;
      case 1:
        return whole + 0.5;
      case 2:
        return whole - 5e-8;
      case 3:
        return whole - 1.5e-7;
      case 4:
        return std::nextafter(whole, -1.0);
      case 5:
        return std::nextafter(whole + 0.5, 0.0);
      case 6:
        return RandomInt(random, 0, 20) != 0 ? whole : std::nan("");
      case 7:
        return RandomInt(random, 0, 20) != 0 ? whole : whole * 1e12 - 1e6;
      default:
        return std::uniform_real_distribution<double>(0, size - 1)(random);
    }
  };
  for (int round = 0; round < 3000; ++round) {
    const int low = round % 4 == 0 ? 1 : 4;
    Image<T> src(RandomInt(random, low, 40), RandomInt(random, low, 40), norvala_test::RandomLayout(random));
    src.Fill([&] { return static_cast<T>(random() % 256); });
    const SourceImage source = {src.data(), src.step(), {src.width(), src.height()}};
    const int count = RandomInt(random, 1, 70);
    // Not on the heap, which need not be aligned for vectors.
    Position positions[70];
    for (Position& p : positions) p = Position{coordinate(src.width()), coordinate(src.height())};
    if (round % 2 != 0) {  // keep away from the borders, so that long runs take the fast loops
      for (Position& p : positions) {
        p = Position{p[0] * 0.4 + src.width() * 0.25, p[1] * 0.4 + src.height() * 0.25};
      }
    }
    Image<T> fast(count, 1, norvala_test::RandomLayout(random));
    Image<T> plain(fast);
    for (const auto kernel : {Interpolation::Nearest, Interpolation::Linear, Interpolation::Cubic}) {
      const int side = kernel == Interpolation::Nearest ? 1 : kernel == Interpolation::Linear ? 2 : 4;
      if (src.width() < side || src.height() < side) continue;
      SelectSampler(sizeof(T) == 1 ? PixelDepthCode::Unsigned8 : PixelDepthCode::Float32, kernel)(
          source, positions, count, Course::Free, fast.data());
      for (int k = 0; k < count; ++k) {
        const Position& p = positions[k];
        auto* pixel = Row(plain.data(), 0, 0) + k;
        if (kernel == Interpolation::Nearest) SampleNearest<T>(source, p[0], p[1], pixel);
        if (kernel == Interpolation::Linear) SampleLinear<T>(source, p[0], p[1], pixel);
        if (kernel == Interpolation::Cubic) SampleCubic<T>(source, p[0], p[1], pixel);
      }
      ASSERT_EQ(fast.Bytes(), plain.Bytes()) << static_cast<int>(kernel) << " round " << round;
    }
  }
}

TEST(SamplingTest, FastEqualsPlain8Bit) { CompareSamplers<BW8>(); }
TEST(SamplingTest, FastEqualsPlainFloat) { CompareSamplers<FLOAT32>(); }

}  // namespace
}  // namespace norvala
