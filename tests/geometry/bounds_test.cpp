#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

using Bound = std::array<double, 4>;
using Quad = std::array<double, 8>;
using Shift = std::array<double, 2>;

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
  Bound bound{};
  const Rect region = {2, 3, 4, 5};
  const std::array<double, 6> identity = {1, 0, 0, 0, 1, 0};
  EXPECT_EQ(Norvala_GetAffineBound(&region, bound.data(), identity.data()), 0);
  EXPECT_EQ(bound, (Bound{2, 3, 5, 7}));
  const std::array<double, 6> turned = {0, -2, 1, 3, 0, -1};
  EXPECT_EQ(Norvala_GetAffineBound(&region, bound.data(), turned.data()), 0);
  EXPECT_EQ(bound, (Bound{-13, 5, -5, 14}));
  const Rect last = {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX};
  EXPECT_EQ(Norvala_GetAffineBound(&last, bound.data(), identity.data()), 0);
  EXPECT_EQ(bound, (Bound{2147483647.0, 2147483647.0, 4294967293.0, 4294967293.0}));
}

TEST(BoundsTest, ADegenerateMapStillGivesItsBound) {
  const Rect region = {2, 3, 4, 5};
  Bound bound{9, 9, 9, 9};
  EXPECT_EQ(Norvala_GetAffineBound(&region, bound.data(), std::array<double, 6>{}.data()), -1);
  EXPECT_EQ(bound, Bound{});
  const Rect column = {2, 3, 1, 5};
  EXPECT_EQ(Norvala_GetAffineBound(&column, bound.data(), std::array<double, 6>{1, 0, 0, 0, 1, 0}.data()), -1);
  EXPECT_EQ(bound, (Bound{2, 3, 2, 7}));
}

TEST(BoundsTest, RegionsOutOfRangeWriteNothing) {
  const std::array<double, 6> identity = {1, 0, 0, 0, 1, 0};
  for (const Rect region : {Rect{-1, 0, 2, 2}, Rect{0, -1, 2, 2}, Rect{0, 0, 0, 2}, Rect{0, 0, 2, 0}}) {
    Quad quad{5};
    Bound bound{5};
    EXPECT_EQ(Norvala_GetAffineBound(&region, bound.data(), identity.data()), -1);
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
  EXPECT_EQ(RotateShift(3.25, 7.5, 0), (Shift{0, 0}));
  EXPECT_EQ(RotateShift(3.25, 7.5, 720), (Shift{0, 0}));
  EXPECT_EQ(RotateShift(3.25, 7.5, 90), (Shift{-4.25, 10.75}));
  EXPECT_EQ(RotateShift(3.25, 7.5, 450), (Shift{-4.25, 10.75}));
  EXPECT_EQ(RotateShift(3.25, 7.5, 180), (Shift{6.5, 15}));
  EXPECT_EQ(RotateShift(3.25, 7.5, -180), (Shift{6.5, 15}));
  EXPECT_EQ(RotateShift(3.25, 7.5, 270), (Shift{10.75, 4.25}));
  EXPECT_EQ(RotateShift(3.25, 7.5, -90), (Shift{10.75, 4.25}));
  EXPECT_EQ(RotateShift(3.25, 7.5, 90.0 + 360.0 * 2147483647.0), (Shift{-4.25, 10.75}));

  const Rect region = {0, 0, 10, 5};
  EXPECT_EQ(RotateQuad(region, 90, {0, 0}), (Quad{0, 0, 0, -9, 4, -9, 4, 0}));
  EXPECT_EQ(RotateQuad(region, 180, {1, 2}), (Quad{1, 2, -8, 2, -8, -2, 1, -2}));
  EXPECT_EQ(RotateQuad(region, 270, {0, 0}), (Quad{0, 0, 0, 9, -4, 9, -4, 0}));
  EXPECT_EQ(RotateQuad(region, -360, {0.5, 0}), (Quad{0.5, 0, 9.5, 0, 9.5, 4, 0.5, 4}));
  Bound bound{};
  EXPECT_EQ(Norvala_GetRotateBound(&region, bound.data(), 90, 0, 0), 0);
  EXPECT_EQ(bound, (Bound{0, -9, 4, 0}));
}

TEST(RotationTest, ShiftAndQuadrilateralAgree) {
  Random random(1);
  for (int round = 0; round < 1000; ++round) {
    const int x = RandomInt(random, 0, 500);
    const int y = RandomInt(random, 0, 500);
    const double angle = std::uniform_real_distribution<double>(-2000, 2000)(random);
    const Shift shift = RotateShift(x, y, angle);
    // The centre's own pixel as a region: all four corners must stay where they are.
    const Rect centre = {x, y, 1, 1};
    const Quad quad = RotateQuad(centre, angle, shift);
    for (std::size_t i = 0; i < 8; i += 2) {
      ASSERT_NEAR(quad[i], x, 1e-11);
      ASSERT_NEAR(quad[i + 1], y, 1e-11);
    }
    const Rect region = {RandomInt(random, 0, 50), RandomInt(random, 0, 50), RandomInt(random, 1, 90), 7};
    const Quad corners = RotateQuad(region, angle, shift);
    Bound bound{};
    ASSERT_EQ(Norvala_GetRotateBound(&region, bound.data(), angle, shift[0], shift[1]), 0);
    ASSERT_EQ(bound[0], std::min({corners[0], corners[2], corners[4], corners[6]}));
    ASSERT_EQ(bound[3], std::max({corners[1], corners[3], corners[5], corners[7]}));
    // Counter-clockwise on the screen: the first side turns upwards for small positive angles.
    const double radians = angle * 3.141592653589793 / 180;
    ASSERT_NEAR(corners[2] - corners[0], (region.width - 1) * std::cos(radians), 1e-9);
    ASSERT_NEAR(corners[3] - corners[1], -(region.width - 1) * std::sin(radians), 1e-9);
  }
}

TEST(RotationTest, SurvivesAnglesWithoutMeaning) {
  const double inf = std::numeric_limits<double>::infinity();
  const Rect region = {0, 0, 10, 5};
  for (const double angle : {inf, -inf, std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300}) {
    RotateShift(1, 2, angle);
    RotateQuad(region, angle, {0, 0});
  }
}

}  // namespace
}  // namespace norvala_test
