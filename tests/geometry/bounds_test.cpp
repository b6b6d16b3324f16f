#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

using Affine = std::array<double, 6>;
using Bound = std::array<double, 4>;
using Quad = std::array<double, 8>;
using Shift = std::array<double, 2>;

constexpr Affine kIdentity = {1, 0, 0, 0, 1, 0};

Shift RotateShift(double x, double y, double angle) {
  Shift shift{};
  EXPECT_EQ(Norvala_GetRotateShift(x, y, angle, &shift[0], &shift[1]), 0);
  return shift;
}

Quad RotateQuad(const Rect& region, double angle, const Shift& shift) {
  Quad quad{};
  EXPECT_EQ(Norvala_GetRotateQuad(&region, quad.data(), angle, shift[0], shift[1]), 0);
  return quad;
}

TEST(BoundsTest, AffineBound) {
  const struct {
    Rect region;
    Affine coefficients;
    int result;
    Bound bound;
  } cases[] = {
      {{2, 3, 4, 5}, kIdentity, 0, {2, 3, 5, 7}},
      {{2, 3, 4, 5}, {0, -2, 1, 3, 0, -1}, 0, {-13, 5, -5, 14}},
      {{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}, kIdentity, 0, {0x1p31 - 1, 0x1p31 - 1, 0x1p32 - 3, 0x1p32 - 3}},
      // A degenerate map still gives its bound.
      {{2, 3, 4, 5}, {}, -1, {}},
      {{2, 3, 1, 5}, kIdentity, -1, {2, 3, 2, 7}},
  };
  for (const auto& c : cases) {
    Bound bound = {9, 9, 9, 9};
    EXPECT_EQ(Norvala_GetAffineBound(&c.region, bound.data(), c.coefficients.data()), c.result);
    EXPECT_EQ(bound, c.bound);
  }
}

TEST(BoundsTest, BadArgumentsWriteNothing) {
  for (const Rect region : {Rect{-1, 0, 2, 2}, Rect{0, -1, 2, 2}, Rect{0, 0, 0, 2}, Rect{0, 0, 2, 0}}) {
    Quad quad{5};
    Bound bound{5};
    EXPECT_EQ(Norvala_GetAffineBound(&region, bound.data(), nullptr), -1);  // not read before the region has passed
    EXPECT_EQ(Norvala_GetRotateBound(&region, bound.data(), 10, 0, 0), -1);
    EXPECT_EQ(Norvala_GetRotateQuad(&region, quad.data(), 10, 0, 0), -1);
    EXPECT_EQ(bound, Bound{5});
    EXPECT_EQ(quad, Quad{5});
  }
  double shift = 5;
  EXPECT_EQ(Norvala_GetRotateShift(1, 2, 3, nullptr, &shift), -1);
  EXPECT_EQ(Norvala_GetRotateShift(1, 2, 3, &shift, nullptr), -1);
  EXPECT_EQ(shift, 5);
}

TEST(RotationTest, QuarterTurnsAreExact) {
  const struct {
    double angle;
    Shift shift;
  } shifts[] = {{0, {0, 0}},           {720, {0, 0}},        {90, {-4.25, 10.75}},
                {450, {-4.25, 10.75}}, {180, {6.5, 15}},     {-180, {6.5, 15}},
                {270, {10.75, 4.25}},  {-90, {10.75, 4.25}}, {90.0 + 360.0 * INT32_MAX, {-4.25, 10.75}}};
  for (const auto& s : shifts) EXPECT_EQ(RotateShift(3.25, 7.5, s.angle), s.shift) << s.angle;

  const Rect region = {0, 0, 10, 5};
  EXPECT_EQ(RotateQuad(region, 90, {0, 0}), (Quad{0, 0, 0, -9, 4, -9, 4, 0}));
  EXPECT_EQ(RotateQuad(region, 180, {1, 2}), (Quad{1, 2, -8, 2, -8, -2, 1, -2}));
  EXPECT_EQ(RotateQuad(region, 270, {0, 0}), (Quad{0, 0, 0, 9, -4, 9, -4, 0}));
  EXPECT_EQ(RotateQuad(region, -360, {0.5, 0}), (Quad{0.5, 0, 9.5, 0, 9.5, 4, 0.5, 4}));
}

// The formulas in the order that fixes their rounding, with one cosine and one sine for shift and quadrilateral.
TEST(RotationTest, FollowsTheFormulas) {
  Random random(1);
  for (int round = 0; round < 1000; ++round) {
    const int x = RandomInt(random, 0, 500);
    const int y = RandomInt(random, 0, 500);
    const double angle = std::uniform_real_distribution<double>(-2000, 2000)(random);
    const double reduced = angle - std::trunc(angle / 360) * 360;
    const double radians = (reduced < 0 ? reduced + 360 : reduced) / 180 * 3.141592653589793;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const Shift shift = RotateShift(x, y, angle);
    ASSERT_EQ(shift, (Shift{x - x * c - y * s, y - y * c + x * s}));

    const Rect region = {RandomInt(random, 0, 50), RandomInt(random, 0, 50), RandomInt(random, 1, 90), 7};
    const int right = region.x + region.width - 1;
    const int bottom = region.y + 6;
    const Quad quad = RotateQuad(region, angle, shift);
    ASSERT_EQ(quad[2], c * right + s * region.y + shift[0]);
    ASSERT_EQ(quad[7], -s * region.x + c * bottom + shift[1]);
    Bound bound{};
    ASSERT_EQ(Norvala_GetRotateBound(&region, bound.data(), angle, shift[0], shift[1]), 0);
    ASSERT_EQ(bound,
              (Bound{std::min({quad[0], quad[2], quad[4], quad[6]}), std::min({quad[1], quad[3], quad[5], quad[7]}),
                     std::max({quad[0], quad[2], quad[4], quad[6]}), std::max({quad[1], quad[3], quad[5], quad[7]})}));
  }
}

TEST(RotationTest, SurvivesAnglesWithoutMeaning) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double angle : {kInfinity, -kInfinity, std::nan(""), 1e300, -1e300}) {
    RotateShift(1, 2, angle);
    RotateQuad({0, 0, 10, 5}, angle, {0, 0});
  }
}

}  // namespace
}  // namespace norvala_test
