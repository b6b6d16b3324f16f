#include "geometry/geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "geometry/warp/linear_run.h"
#include "geometry/warp/projected_row.h"
#include "geometry/warp/row_spans.h"
#include "support/choices.h"

namespace norvala {
namespace {

constexpr std::int32_t kSmoothEdge = INT32_MIN;

// Columns that end on pixels and a hair beside them.
TEST(RowSpansTest, TakesInPixelsAHairOutside) {
  for (const double beside : {-1e-9, 0.0, 5e-15, 2e-14}) {
    const Quadrilateral quad = {{{3 + beside, 1}, {9 - beside, 1}, {9 - beside, 3}, {3 + beside, 3}}};
    const RowSpans spans(Polygon(quad), {0, 0, 20, 20}, true);
    ASSERT_EQ(spans.rows(), 3);
    EXPECT_EQ(spans[1].first, beside > 1e-14 ? 4 : 3) << beside;
    EXPECT_EQ(spans[1].last, beside > 1e-14 ? 8 : 9) << beside;
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

// It may be off by a part of 1e-12, or, where the others map it to 0, by 1e-12.
TEST(QuadWarpTest, FourthVertexMustFit) {
  const BW8 src[81] = {};
  BW8 dst[256];
  const double from[] = {0, 0, 8, 0, 8, 8, 0, 8};
  for (const int coordinate : {6, 7}) {
    for (const double at : {0.0, 4.0}) {
      for (const double off : {-1.1e-12, -0.9e-12, 0.9e-12, 1.1e-12}) {
        double to[] = {at, at - 8, at + 8, at - 8, at + 8, at, at, at};
        to[coordinate] += at == 0 ? off : at * off;
        EXPECT_EQ(kWarpAffineQuad(src, {9, 9}, 9, {0, 0, 9, 9}, from, dst, 16, {0, 0, 16, 16}, to,
                                  PixelDepthCode::Unsigned8, 1),
                  std::fabs(off) < 1e-12 ? StatusCode::Success : StatusCode::QuadNotAffine);
      }
    }
  }
}

// Columns 5 to 55 of the last row show the source's last row at half its pitch, from border to border.
TEST(QuadWarpTest, PerspectiveReachesTheBorderOfTheRegion) {
  std::vector<BW8> src(26 * 18);
  for (std::size_t i = 0; i < src.size(); ++i) src[i] = static_cast<BW8>(1 + i % 251);
  std::vector<BW8> dst(64 * 35);
  const double from[] = {-4, 0, 29, 0, 29, 17, -4, 17};
  const double to[] = {13.5, 0, 46.5, 0, 63, 34, -3, 34};
  kWarpPerspectiveQuad(src.data(), {26, 18}, 26, {0, 0, 26, 18}, from, dst.data(), 64, {0, 0, 64, 35}, to,
                       PixelDepthCode::Unsigned8, 2);
  const BW8* const row = dst.data() + 34 * 64;
  for (std::size_t x = 0; x < 26; ++x) EXPECT_EQ(row[5 + 2 * x], src[17 * 26 + x]) << x;
  EXPECT_EQ(row[4] | row[56], 0);
}

// White on black under every angle: the pixels on an edge show how much of them lies inside, measured along the axis
// that meets the edge at the wider angle.
template <class T>
void SmoothEdgesShowCoverage(PixelDepthCode depth) {
  constexpr int kBytes = sizeof(T);
  const std::vector<T> src(60 * 60, T{255});
  for (int round = 0; round < 20; ++round) {
    const double c = std::cos(0.32 * round + 0.1);
    const double s = std::sin(0.32 * round + 0.1);
    const double flip = round % 2 != 0 ? 1 : -1;
    const double map[] = {c, s, 50 - 29.5 * (c + s), -s * flip, c * flip, 50 + 29.5 * (s - c) * flip};
    std::vector<T> dst(100 * 100);
    kWarpAffine(src.data(), {60, 60}, 60 * kBytes, {0, 0, 60, 60}, dst.data(), 100 * kBytes, {0, 0, 100, 100}, depth,
                map, 2 | kSmoothEdge);
    for (int i = 0; i < 100 * 100; ++i) {
      const double x = i % 100 - 50;
      const double y = (i / 100 - 50) * flip;
      const auto [least, most] = std::minmax({std::fabs(c * x - s * y), std::fabs(s * x + c * y)});
      if (least > 27) continue;  // a corner
      const double inside = std::clamp(0.5 + (29.5 - most) / std::max(std::fabs(c), std::fabs(s)), 0.0, 1.0);
      ASSERT_NEAR(dst.data()[i], 255 * inside, 1) << round << ": " << x << ", " << y;
    }
  }
}
TEST(SmoothEdgeTest, ShowsTheCoverage) {
  SmoothEdgesShowCoverage<BW8>(PixelDepthCode::Unsigned8);
  SmoothEdgesShowCoverage<FLOAT32>(PixelDepthCode::Float32);
}

// Columns 5.25 to 20 and rows 0.25 to 29 are shown: the pixels of the first row have no neighbour outside, and the last
// row is the region's own side.
TEST(SmoothEdgeTest, LeavesTheSidesOfTheRegion) {
  const std::vector<BW8> src(21 * 21, 200);
  std::vector<BW8> dst(30 * 30, 40);
  const double map[] = {14.75 / 20, 0, 5.25, 0, 28.75 / 20, 0.25};
  kWarpAffine(src.data(), {21, 21}, 21, {0, 0, 21, 21}, dst.data(), 30, {0, 0, 30, 30}, PixelDepthCode::Unsigned8, map,
              1 | kSmoothEdge);
  const int pixels[][3] = {{4, 15, 40}, {5, 15, 80},  {6, 15, 200},  {20, 15, 120},
                           {12, 0, 40}, {12, 1, 200}, {12, 28, 200}, {12, 29, 200}};
  for (const auto& [x, y, value] : pixels) EXPECT_EQ(dst.data()[30 * y + x], value) << x << ", " << y;
}

// ---- The ranges of the quick forms that sample rows of positions ----

std::vector<BW8> Pixels(norvala_test::Choices& c, int count, bool isBlackAndWhite) {
  std::vector<BW8> pixels(static_cast<std::size_t>(count));
  for (BW8& pixel : pixels) pixel = static_cast<BW8>(isBlackAndWhite ? c.Int(0, 1) * 255 : c.Int(0, 255));
  return pixels;
}

template <int count>
void EqualsPlain(Sampler& sampler, const Position (&positions)[count], double slack) {
  BW8 fast[count];
  BW8 plain[count];
  sampler(positions, count, slack, fast);
  for (int k = 0; k < count; ++k) sampler(positions + k, 1, kAnyOrder, plain + k);  // too few for a quick form
  ASSERT_TRUE(std::equal(fast, fast + count, plain));
}

// One sampler over lists of positions of which all, some or none are doubtful, so that the linear one goes to doubles
// and back: on ties, near them, and a hair before pixels where the slopes on both sides differ most, which is where
// single precision is furthest off.
TEST(SamplerTest, DoubtfulSumsEqualPlain) {
  norvala_test::Choices c(2);
  for (int round = 0; round < 40; ++round) {
    const auto pixels = Pixels(c, 100 * 50, round % 2 == 0);
    const SourceImage source = {pixels.data(), 100, {100, 50}};
    Sampler sampler(source, PixelDepthCode::Unsigned8, round < 20 ? Interpolation::Linear : Interpolation::Cubic);
    for (int list = 0; list < 100; ++list) {
      const int rarity = c.OneOf({1, 1, 1, 32, 1000});
      const int kind = c.Int(0, 3);
      const auto coordinate = [&](int size) {
        const double part = c.Real(0, 1);
        const double doubtful[] = {0.5, -1e-7 * part, std::round(255 * part) / 510, 0.5 + 1e-6 * (part - 0.5)};
        return c.Int(2, size - 3) + (c.OneIn(rarity) ? doubtful[kind] : part);
      };
      Position positions[160];
      for (Position& p : positions) p = Position{coordinate(100), coordinate(50)};
      EqualsPlain(sampler, positions, kAnyOrder);
    }
  }
}

// Both sides of the longest side that coordinates in single precision reach.
TEST(SamplerTest, LongImagesEqualPlain) {
  norvala_test::Choices c(3);
  for (const int longest : {(1 << 19) - 1, 1 << 19, (1 << 19) + 1, (1 << 19) + 100}) {
    const auto pixels = Pixels(c, 2 * longest, false);
    for (const RegionSize size : {RegionSize{longest, 2}, RegionSize{2, longest}}) {
      EXPECT_EQ(LinearInSingles::Serves(size), longest <= 1 << 19);
      Position positions[64];
      for (int k = 0; k < 64; ++k) {
        const double across = k / 126.0;
        const double along = longest - 1.5 - (63 - k) * 0.7;
        positions[k] = size.height == 2 ? Position{along, across} : Position{across, along};
      }
      const SourceImage source = {pixels.data(), size.width, size};
      Sampler sampler(source, PixelDepthCode::Unsigned8, Interpolation::Linear);
      EqualsPlain(sampler, positions, kMonotone);
    }
  }
}

// Just inside and just outside each of its conditions.
TEST(ProjectedRowTest, SlackHasConditions) {
  const ProjectedRow inside[] = {{{1, 1}, {0, 0}, 0, 1},
                                 {{1, 1}, {0, 0}, 0, -1},
                                 {{1, 1}, {0, 0}, -0.01, 1.5},  // the denominator falls to 0.5 at the last pixel
                                 {{1, 1}, {0, 0}, -1, 100 + 200.0 / 254.5},
                                 {{0x1p32, 0}, {0x1p39 - 100 * 0x1p32, 0}, 0, 1},
                                 {{0, -0x1p32}, {0, 0x1p39 - 100 * 0x1p32}, 0, 1},
                                 {{0, 0}, {0, 0}, 0, 1.001e-200},
                                 {{0, 0}, {0, 0}, 0, 0.999e200}};
  const ProjectedRow outside[] = {{{1, 1}, {0, 0}, 0, 0},
                                  {{1, 1}, {0, 0}, -0.01, 0.5},
                                  {{1, 1}, {0, 0}, -1, 100 + 200.0 / 255.5},
                                  {{0x1p32, 0}, {0x1p39 - 99 * 0x1p32, 0}, 0, 1},
                                  {{0, -0x1p32}, {0, 0x1p39 - 99 * 0x1p32}, 0, 1},
                                  {{0, 0}, {0, 0}, 0, 0.999e-200},
                                  {{0, 0}, {0, 0}, 0, 1.001e200},
                                  {{NAN, 0}, {0, 0}, 0, 1},
                                  {{0, 0}, {0, INFINITY}, 0, 1},
                                  {{0, 0}, {0, 0}, NAN, 1}};
  for (const auto& row : inside) EXPECT_EQ(row.Slack(0, 100), 0x1p-10) << &row - inside;
  for (const auto& row : outside) EXPECT_EQ(row.Slack(0, 100), kAnyOrder) << &row - outside;
}

// Cancelling terms make the quotients jump about: by less than the slack, wherever there is one.
TEST(ProjectedRowTest, SlackHolds) {
  norvala_test::Choices c(4);
  int held = 0;
  for (int round = 0; round < 20000; ++round) {
    const double first = c.OneIn(2) ? 0 : c.Int(0, 1 << 30);
    const double last = first + 255;
    const double step = std::ldexp(1.3, c.Int(0, 30));
    const double base = c.Real(-1000, 1000) - step * (c.OneIn(2) ? first : last);
    const double scale = c.Real(-1, 1);
    const ProjectedRow row = {{step, 0}, {base, 0}, scale, std::ldexp(1.7, c.Int(-3, 30)) - scale * last};
    const double slack = row.Slack(first, last);
    const auto [low, high] = std::minmax({row.At(first)[0], row.At(last)[0]});
    if (slack == kAnyOrder || low < -0x1p31 || high > 0x1p31) continue;
    ++held;
    for (double x = first; x <= last; ++x) ASSERT_NEAR(row.At(x)[0], std::clamp(row.At(x)[0], low, high), slack);
  }
  EXPECT_GT(held, 1000);
}

}  // namespace
}  // namespace norvala
