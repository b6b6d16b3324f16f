#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "geometry/geometry.h"
#include "geometry/warp/row_spans.h"

namespace norvala {
namespace {

using Quad = std::array<double, 8>;
constexpr std::int32_t kSmoothEdge = INT32_MIN;

Quad CornersOf(double left, double top, double right, double bottom) {
  return {left, top, right, top, right, bottom, left, bottom};
}

// Columns that end on pixels and a hair beside them.
TEST(RowSpansTest, TakesInPixelsAHairOutside) {
  const struct {
    double beside;
    RowSpan span;
  } cases[] = {{0, {3, 9}}, {5e-15, {3, 9}}, {2e-14, {4, 8}}, {-1e-9, {3, 9}}};
  for (const auto& c : cases) {
    const double left = 3 + c.beside;
    const double right = 9 - c.beside;
    const RowSpans spans(Polygon(Quadrilateral{{{left, 1}, {right, 1}, {right, 3}, {left, 3}}}), {0, 0, 20, 20}, true);
    ASSERT_EQ(spans.rows(), 3);
    EXPECT_EQ(spans[1].first, c.span.first) << c.beside;
    EXPECT_EQ(spans[1].last, c.span.last) << c.beside;
  }
}

// The first pixel of the destination may lie farther from what is written than a signed offset reaches.
TEST(WarpTest, ReachesDistantRegions) {
  constexpr std::int32_t kFar = 1 << 29;
  const std::vector<FLOAT32> src(14, 9.0F);
  std::vector<FLOAT32> dst(14);
  const double shift[] = {1, 0, kFar, 0, 1, 0};
  auto* const origin =
      reinterpret_cast<FLOAT32*>(reinterpret_cast<std::uintptr_t>(dst.data()) - std::uintptr_t{kFar} * 4);
  ASSERT_EQ(kWarpAffine(src.data(), {7, 2}, 28, {0, 0, 7, 2}, origin, 28, {kFar, 0, 7, 2}, PixelDepthCode::Float32,
                        shift, 2 | kSmoothEdge),
            StatusCode::Success);
  EXPECT_EQ(dst, src);
}

// The rounding of the maps by three vertices and by four: what 400 random quadrilaterals show of noise.
TEST(QuadWarpTest, KeepsItsRounding) {
  std::mt19937 random(1);
  const auto real = [&](double low, double high) {
    return low + (high - low) * (static_cast<double>(random()) * 0x1p-32);
  };
  std::vector<BW8> src(120 * 50);
  for (BW8& pixel : src) pixel = static_cast<BW8>(random());
  std::uint64_t hash = 14695981039346656037ULL;
  for (int round = 0; round < 400; ++round) {
    Quad quads[2] = {CornersOf(6, 6, 113, 43), CornersOf(2, 2, 290, 30)};
    for (Quad& quad : quads) {
      for (double& v : quad) v += real(-2, 2);
    }
    std::vector<BW8> dst(300 * 32);
    const auto& warp = round % 2 != 0 ? kWarpAffineQuad : kWarpPerspectiveQuad;
    warp(src.data(), {120, 50}, 120, {0, 0, 120, 50}, quads[0].data(), dst.data(), 300, {0, 0, 300, 32},
         quads[1].data(), PixelDepthCode::Unsigned8, 1 << round % 3);
    for (const BW8 pixel : dst) hash = (hash ^ pixel) * 1099511628211ULL;
  }
  EXPECT_EQ(hash, 4343343050156775876ULL);
}

// Columns 5 to 55 of the last row show the source's last row at half its pitch, from border to border.
TEST(QuadWarpTest, PerspectiveReachesTheBorderOfTheRegion) {
  std::vector<BW8> src(26 * 18);
  for (std::size_t i = 0; i < src.size(); ++i) src[i] = static_cast<BW8>(1 + i % 251);
  std::vector<BW8> dst(64 * 35);
  const Quad from = CornersOf(-4, 0, 29, 17);
  const Quad to = {13.5, 0, 46.5, 0, 63, 34, -3, 34};
  kWarpPerspectiveQuad(src.data(), {26, 18}, 26, {0, 0, 26, 18}, from.data(), dst.data(), 64, {0, 0, 64, 35}, to.data(),
                       PixelDepthCode::Unsigned8, 2);
  const BW8* const row = dst.data() + 34 * 64;
  for (std::size_t x = 0; x < 26; ++x) EXPECT_EQ(row[5 + 2 * x], src[17 * 26 + x]) << x;
  EXPECT_EQ(row[4] | row[56], 0);
}

template <class T>
class SmoothEdgeTest : public testing::Test {};
using PixelTypes = testing::Types<BW8, FLOAT32>;
TYPED_TEST_SUITE(SmoothEdgeTest, PixelTypes);

// Upright edges at known places: the crossed pixel is the mixture of its two neighbours by how much of it is covered.
TYPED_TEST(SmoothEdgeTest, BlendsNeighboursByCoverage) {
  const std::vector<TypeParam> src(40 * 40, TypeParam{200});
  constexpr auto kDepth = sizeof(TypeParam) == 1 ? PixelDepthCode::Unsigned8 : PixelDepthCode::Float32;
  constexpr int kStep = 30 * static_cast<int>(sizeof(TypeParam));
  std::vector<TypeParam> dst;
  const auto warp = [&](double left) {
    // Shows the columns from `left` to 20 and the rows from 6.75 to the last one, 29.
    dst.assign(30 * 30, TypeParam{40});
    const double x = (20 - left) / 20;
    const double y = 22.25 / 20;
    const double map[] = {x, 0, left - x, 0, y, 6.75 - y};
    ASSERT_EQ(kWarpAffine(src.data(), {40, 40}, 40 * static_cast<int>(sizeof(TypeParam)), {1, 1, 21, 21}, dst.data(),
                          kStep, {0, 0, 30, 30}, kDepth, map, 1 | kSmoothEdge),
              StatusCode::Success);
  };
  const auto pixel = [&](int x, int y) { return dst[static_cast<std::size_t>(y * 30 + x)]; };
  warp(5.25);
  const struct {
    int x, y, value;
  } pixels[] = {{4, 15, 40},   {5, 15, 40 + 160 / 4},
                {6, 15, 200},  // reaches from 4.5 to 5.5, inside from 5.25 on
                {19, 15, 200}, {20, 15, 120},
                {21, 15, 40},  // half of it
                {12, 6, 40},   {12, 7, 40 + 160 * 3 / 4},
                {12, 8, 200},                   // inside from 6.75 to 7.5
                {12, 28, 200}, {12, 29, 200}};  // the destination's own side
  for (const auto& p : pixels) EXPECT_EQ(pixel(p.x, p.y), p.value) << p.x << ", " << p.y;
  // Where the outer neighbour would lie outside the region, the crossed pixel stays as it is.
  warp(0.25);
  EXPECT_EQ(pixel(0, 15), 40);
  EXPECT_EQ(pixel(1, 15), 200);
}

// White on black under every angle: pixels show about how much of them the turned square covers.
TYPED_TEST(SmoothEdgeTest, ShowsTheCoverage) {
  const std::vector<TypeParam> src(60 * 60, TypeParam{255});
  constexpr auto kDepth = sizeof(TypeParam) == 1 ? PixelDepthCode::Unsigned8 : PixelDepthCode::Float32;
  for (int round = 0; round < 20; ++round) {
    const double c = std::cos(0.32 * round + 0.1);
    const double s = std::sin(0.32 * round + 0.1);
    const double flip = round % 2 != 0 ? 1 : -1;
    const double map[] = {c, s, 50 - 29.5 * (c + s), -s * flip, c * flip, 50 + 29.5 * (s - c) * flip};
    std::vector<TypeParam> dst(100 * 100);
    ASSERT_EQ(kWarpAffine(src.data(), {60, 60}, 60 * static_cast<int>(sizeof(TypeParam)), {0, 0, 60, 60}, dst.data(),
                          100 * static_cast<int>(sizeof(TypeParam)), {0, 0, 100, 100}, kDepth, map, 2 | kSmoothEdge),
              StatusCode::Success);
    for (int y = 0; y < 100; ++y) {
      for (int x = 0; x < 100; ++x) {
        int covered = 0;
        double nearest = 0;  // how far the pixel lies towards a corner of the square
        for (int i = 0; i < 256; ++i) {
          const double dx = x - 50 + (i % 16 - 7.5) / 16;
          const double dy = (y - 50 + (i / 16 - 7.5) / 16) * flip;
          const double u = std::fabs(c * dx - s * dy);
          const double v = std::fabs(s * dx + c * dy);
          covered += u < 29.5 && v < 29.5 ? 1 : 0;
          nearest = std::max(nearest, std::min(u, v));
        }
        if (nearest > 26) continue;
        ASSERT_NEAR(dst[static_cast<std::size_t>(y * 100 + x)], covered * 255 / 256, 40) << round;
      }
    }
  }
}

TEST(RotationTest, SurvivesAnglesWithoutMeaning) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double angle : {kInfinity, -kInfinity, std::nan(""), 1e300, -1e300}) {
    double result[8];
    EXPECT_EQ(kGetRotateShift(1, 2, angle, &result[0], &result[1]), StatusCode::Success);
    EXPECT_EQ(kGetRotateQuad({0, 0, 10, 5}, result, angle, 0, 0), StatusCode::Success);
  }
}

}  // namespace
}  // namespace norvala
