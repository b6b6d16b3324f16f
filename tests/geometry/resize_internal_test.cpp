#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "geometry/geometry.h"
#include "geometry/resize/request.h"
#include "geometry/resize/taps.h"
#include "support/failing_heap.h"

namespace norvala_test {
namespace {

using namespace norvala;

const std::vector<float> from(256, 1.0F);
std::vector<float> to(256);

// Nearly all that is checked is wrong.
struct Arguments {
  const FLOAT32* src = nullptr;
  FLOAT32* dst = to.data();
  std::int32_t interpolation = 8;
  RegionSize srcSize = {0, 0};
  Rect region = {-1, -1, 0, 0};
  RegionSize dstSize = {0, 0};
  double xFactor = 0;
  double yFactor = std::nan("");
};

StatusCode Resize(const Arguments& a) {
  return kResizeFLOAT32(a.src, a.srcSize, 64, a.region, a.dst, 64, a.dstSize, a.xFactor, a.yFactor, a.interpolation);
}

TEST(ResizeStatusTest, ChecksInOrder) {
  constexpr auto kSize = StatusCode::NonPositiveSize;
  constexpr struct {
    StatusCode status;
    void (*mend)(Arguments&);
  } kChecks[] = {
      {StatusCode::NullPointer,
       [](Arguments& a) {
         a = {from.data(), nullptr, a.interpolation};
       }},
      {StatusCode::NullPointer, [](Arguments& a) { a.dst = to.data(); }},
      {kSize, [](Arguments& a) { a.srcSize.width = 4; }},
      {kSize, [](Arguments& a) { a.srcSize.height = 4; }},
      {kSize, [](Arguments& a) { a.region.x = 4; }},
      {kSize, [](Arguments& a) { a.region.y = INT32_MAX; }},
      {kSize, [](Arguments& a) { a.region.width = INT32_MAX; }},
      {kSize, [](Arguments& a) { a.region.height = INT32_MAX; }},
      {StatusCode::NoSourceOverlap, [](Arguments& a) { a.region.x = 0; }},
      {StatusCode::NoSourceOverlap, [](Arguments& a) { a.region.y = 0; }},
      {kSize, [](Arguments& a) { a.dstSize.width = 4; }},
      {kSize, [](Arguments& a) { a.dstSize.height = 4; }},
      {StatusCode::BadResizeFactor, [](Arguments& a) { a.xFactor = 0.12; }},
      {StatusCode::BadResizeFactor, [](Arguments& a) { a.yFactor = -1; }},
      {StatusCode::BadResizeFactor, [](Arguments& a) { a.yFactor = 0.12; }},
  };
  // The general way refuses its interpolation after these checks, the reduction has none to refuse.
  for (const int interpolation : {3, 8}) {
    Arguments a;
    a.interpolation = interpolation;
    to.assign(256, 0.0F);
    for (const auto& check : kChecks) {
      ASSERT_EQ(Resize(a), check.status) << &check - kChecks;
      check.mend(a);
    }
    for (const int unknown : {0, 3, 5, 6, 17, 32, -1, INT32_MIN, INT32_MIN + 2}) {
      if (interpolation == 8) continue;
      a.interpolation = unknown;
      ASSERT_EQ(Resize(a), StatusCode::UnknownInterpolation) << unknown;
    }
    a.interpolation = interpolation == 8 ? 8 : 16;
    ASSERT_EQ(Resize(a), StatusCode::ResultRegionEmpty);
    a.xFactor = 0.125;
    ASSERT_EQ(Resize(a), StatusCode::ResultRegionEmpty);
    ASSERT_EQ(to, std::vector<float>(256));
    a.yFactor = 0.125;
    ASSERT_EQ(Resize(a), StatusCode::Success);
  }
  // A reduction that would enlarge goes the general way, which refuses it.
  Arguments a = {from.data(), to.data(), 8, {4, 4}, {0, 0, 4, 4}, {4, 4}, 1.0, 1.0};
  EXPECT_EQ(Resize(a), StatusCode::Success);
  a.yFactor = 1.0000001;
  EXPECT_EQ(Resize(a), StatusCode::UnknownInterpolation);
  std::swap(a.xFactor, a.yFactor);
  EXPECT_EQ(Resize(a), StatusCode::UnknownInterpolation);
  a.yFactor = std::nan("");
  EXPECT_EQ(Resize(a), StatusCode::BadResizeFactor);
}

TEST(ResizeMemoryTest, ReportsAndReleases) {
  for (const int interpolation : {1, 2, 4, 8, 16}) {
    const double factor = interpolation == 8 ? 0.7 : 1.7;
    const Arguments a = {from.data(), to.data(), interpolation, {9, 9}, {0, 0, 9, 9}, {15, 15}, factor, factor};
    const int allocations = interpolation == 1 ? 1 : 2;
    HeapWatch watch;
    to.assign(256, 0.0F);
    for (int i = 0; i < allocations; ++i) {
      watch.FailAt(i);
      EXPECT_EQ(Resize(a), StatusCode::WorkBufferUnavailable);
      EXPECT_EQ(to, std::vector<float>(256));
    }
    watch.FailAt(allocations);
    EXPECT_EQ(Resize(a), StatusCode::Success);
    EXPECT_EQ(watch.live(), 0);
  }
}

// Pixels beyond any image that fits in memory: nothing overflows on the way.
TEST(ResizeTapsTest, StayInRangeForHugeAxes) {
  for (const double factor : {0.5 / INT32_MAX, 1e-9, 0.5, 1.0, 1e9, std::numeric_limits<double>::infinity()}) {
    const ResizeAxis axis = {INT32_MAX, INT32_MAX, factor};
    for (const int d : {0, 1, INT32_MAX - 1}) {
      const int nearest = NearestPixel(axis, d);
      EXPECT_TRUE(nearest >= 0 && nearest < INT32_MAX);
      EXPECT_GE(PlaceTaps<8>(axis, d).first, -4);
      EXPECT_LE(PlaceTaps<2>(axis, d).first, INT32_MAX - 1);
    }
  }
}

}  // namespace
}  // namespace norvala_test
