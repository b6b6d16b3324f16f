#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

constexpr int kNearest = 1;
constexpr int kLinear = 2;
constexpr int kCubic = 4;
constexpr int kReduce = 8;
constexpr int kEightPoint = 16;
constexpr int kResampling[] = {kNearest, kLinear, kCubic, kEightPoint};
constexpr int kAll[] = {kNearest, kLinear, kCubic, kReduce, kEightPoint};

struct Factors {
  double x;
  double y;
};

int Resize(const Image<FLOAT32>& src, Rect region, const Image<FLOAT32>& dst, Factors factors, int interpolation) {
  return Norvala_Resize(src.data(), src.width(), src.height(), src.step(), &region, dst.data(), dst.step(), dst.width(),
                        dst.height(), factors.x, factors.y, interpolation);
}

Rect Whole(const Image<FLOAT32>& image) { return {0, 0, image.width(), image.height()}; }

// Pixels to be written, or 0 for a failure.
int Extent(int length, double factor, int dstLength) {
  const double scaled = length * factor + 1e-7;
  if (scaled >= dstLength) return dstLength;
  if (scaled >= 1.0) return static_cast<int>(scaled);
  return scaled < 0.5 ? 0 : 1;
}

double Sinc(double x) { return x == 0.0 ? 1.0 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x); }

double Kernel(int interpolation, double x) {
  const double a = std::fabs(x);
  switch (interpolation) {
    case kLinear:
      return std::max(0.0, 1.0 - a);
    case kCubic:
      if (a < 1.0) return (1.0 - a * a) * (2.0 - a) / 2.0;
      return a < 2.0 ? (1.0 - a) * (2.0 - a) * (3.0 - a) / 6.0 : 0.0;
    default:
      return a < 4.0 ? Sinc(x) * Sinc(x / 4.0) : 0.0;
  }
}

// The weight of every source pixel in one direction for destination pixel `d`, from the definitions.
std::vector<double> Weights(int interpolation, int length, double factor, int d) {
  std::vector<double> weights(static_cast<std::size_t>(length));
  const auto weight = [&](int i) -> double& { return weights[static_cast<std::size_t>(std::clamp(i, 0, length - 1))]; };
  const double position = (d + 0.5) / factor - 0.5;
  if (interpolation == kNearest) {
    weight(static_cast<int>(position + 0.5)) = 1.0;
  } else if (interpolation == kReduce) {
    for (int i = 0; i < length; ++i) {
      weight(i) = std::max(0.0, std::min(i + 1.0, (d + 1) / factor) - std::max(1.0 * i, d / factor));
    }
  } else {
    const int centre = static_cast<int>(std::floor(position));
    for (int i = centre - 3; i <= centre + 4; ++i) weight(i) += Kernel(interpolation, position - i);
  }
  double sum = 0.0;
  for (const double w : weights) sum += w;
  for (double& w : weights) w /= sum;
  return weights;
}

// Whether a weight counts: what rounding leaves of one does not.
bool Counts(double weight) { return std::fabs(weight) > 1e-12; }

class ResizeDefinitionTest : public testing::TestWithParam<int> {};

// Random sizes, regions, factors and layouts. Everything outside the region is NaN, so that reading it would show.
TEST_P(ResizeDefinitionTest, MatchesTheDefinition) {
  const int interpolation = GetParam();
  Random random(static_cast<unsigned>(interpolation));
  const double kFactors[] = {0.5, 1.0, 2.0, 0.25, 1.0 / 3.0, 0.1, 0.61, 1.7, 3.0};
  for (int round = 0; round < 400; ++round) {
    Image<FLOAT32> src(RandomInt(random, 8, 60), RandomInt(random, 8, 40), RandomLayout(random),
                       round % 2 == 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    const int x = RandomInt(random, 0, 3) == 0 ? RandomInt(random, 0, src.width() - 1) : RandomInt(random, 0, 2);
    const int y = RandomInt(random, 0, 3) == 0 ? RandomInt(random, 0, src.height() - 1) : RandomInt(random, 0, 2);
    Rect region = {x, y, RandomInt(random, 1, 70), RandomInt(random, 1, 50)};
    src.Fill([] { return std::numeric_limits<float>::quiet_NaN(); });
    const int width = std::min(region.width, src.width() - x);
    const int height = std::min(region.height, src.height() - y);
    for (int j = 0; j < height; ++j) {
      for (int i = 0; i < width; ++i) src.Set(x + i, y + j, static_cast<float>(RandomInt(random, -9999, 9999)) / 7.0F);
    }
    const auto factor = [&] {
      double f = RandomInt(random, 0, 1) == 0 ? kFactors[RandomInt(random, 0, 8)]
                                              : std::exp2(RandomInt(random, -2500, 2000) / 1000.0);
      return interpolation == kReduce && f > 1.0 ? 1.0 / f : f;
    };
    Factors factors = {factor(), factor()};
    if (RandomInt(random, 0, 3) == 0) factors.y = factors.x;
    Image<FLOAT32> dst(RandomInt(random, 1, 90), RandomInt(random, 1, 60), RandomLayout(random));
    const Image<FLOAT32> before(dst);
    const int columns = Extent(width, factors.x, dst.width());
    const int rows = Extent(height, factors.y, dst.height());
    SCOPED_TRACE(testing::Message() << width << "x" << height << " to " << columns << "x" << rows << " by " << factors.x
                                    << ", " << factors.y);
    const int expected = columns == 0 || rows == 0 ? -1 : 0;
    ASSERT_EQ(Resize(src, region, dst, factors, interpolation), expected);
    Image<FLOAT32> untouched(dst);
    for (int j = 0; expected == 0 && j < rows; ++j) {
      const std::vector<double> wy = Weights(interpolation, height, factors.y, j);
      for (int i = 0; i < columns; ++i) {
        const std::vector<double> wx = Weights(interpolation, width, factors.x, i);
        double sum = 0.0;
        double largest = 0.0;
        for (int v = 0; v < height; ++v) {
          const double w = wy[static_cast<std::size_t>(v)];
          if (!Counts(w)) continue;
          for (int u = 0; u < width; ++u) {
            const double pixel = src.Get(x + u, y + v);
            if (!Counts(wx[static_cast<std::size_t>(u)])) continue;
            sum += w * wx[static_cast<std::size_t>(u)] * pixel;
            largest = std::max(largest, std::fabs(pixel));
          }
        }
        const double tolerance = interpolation == kNearest ? 0.0 : largest * (interpolation == kReduce ? 1e-7 : 1e-6);
        ASSERT_NEAR(dst.Get(i, j), sum, tolerance) << "at " << i << ", " << j;
        untouched.Set(i, j, before.Get(i, j));
      }
    }
    ASSERT_EQ(untouched.Bytes(), before.Bytes());
  }
}

// A constant of any magnitude stays what it is, to the last bit, whatever the factors.
TEST_P(ResizeDefinitionTest, KeepsConstants) {
  const int interpolation = GetParam();
  Random random(7);
  for (const float value : {0.1F, -77.7F, 3e38F, -3.4028235e38F, 1e-45F, 1.2e-38F, 16777215.0F}) {
    for (int round = 0; round < 60; ++round) {
      Image<FLOAT32> src(RandomInt(random, 1, 50), RandomInt(random, 1, 50));
      src.Fill([&] { return value; });
      const double least = 0.51 / std::min(src.width(), src.height());
      const auto factor = [&] {
        if (RandomInt(random, 0, 2) == 0) return 0.5;
        return std::max(least, std::exp2(RandomInt(random, -4000, interpolation == kReduce ? 0 : 1500) / 1000.0));
      };
      const Factors factors = {factor(), factor()};
      Image<FLOAT32> dst(Extent(src.width(), factors.x, 1000), Extent(src.height(), factors.y, 1000));
      ASSERT_EQ(Resize(src, Whole(src), dst, factors, interpolation), 0);
      Image<FLOAT32> expected(dst);
      expected.Fill([&] { return value; });
      ASSERT_EQ(dst.Bytes(), expected.Bytes()) << value << " by " << factors.x << ", " << factors.y;
    }
  }
}

TEST_P(ResizeDefinitionTest, CopiesBitsWhereBothFactorsAreOne) {
  Random random(8);
  for (int round = 0; round < 50; ++round) {
    Image<std::uint32_t> src(RandomInt(random, 1, 50), RandomInt(random, 1, 20), RandomLayout(random));
    Image<std::uint32_t> dst(RandomInt(random, 1, 60), RandomInt(random, 1, 30), RandomLayout(random));
    src.FillRandom(random);
    Image<std::uint32_t> expected(dst);
    for (int y = 0; y < std::min(src.height(), dst.height()); ++y) {
      for (int x = 0; x < std::min(src.width(), dst.width()); ++x) expected.Set(x, y, src.Get(x, y));
    }
    const Rect all = {0, 0, src.width(), src.height()};
    ASSERT_EQ(Norvala_Resize(reinterpret_cast<FLOAT32*>(src.data()), src.width(), src.height(), src.step(), &all,
                             reinterpret_cast<FLOAT32*>(dst.data()), dst.step(), dst.width(), dst.height(), 1.0, 1.0,
                             GetParam()),
              0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes());
  }
}

INSTANTIATE_TEST_SUITE_P(Resize, ResizeDefinitionTest, testing::ValuesIn(kAll));

// A direction that is not scaled leaves pixels alone: no weight of 0 may meet an infinity.
TEST(ResizeTest, LeavesADirectionOfFactorOneAlone) {
  Random random(9);
  Image<FLOAT32> src(40, 30);
  src.Fill([&] { return RandomInt(random, 0, 3) == 0 ? INFINITY : -0.0F; });
  for (const int interpolation : {kLinear, kCubic, kEightPoint}) {
    Image<FLOAT32> wide(160, 30);
    ASSERT_EQ(Resize(src, Whole(src), wide, {4.0, 1.0}, interpolation), 0);
    for (int y = 0; y < 30; ++y) {
      Image<FLOAT32> row(160, 1);
      ASSERT_EQ(Resize(src, {0, y, 40, 1}, row, {4.0, 1.0}, interpolation), 0);
      ASSERT_EQ(std::memcmp(row.data(), wide.data() + 160 * y, 640), 0);
    }
    Image<FLOAT32> high(40, 120);
    Image<FLOAT32> column(1, 120);
    ASSERT_EQ(Resize(src, Whole(src), high, {1.0, 4.0}, interpolation), 0);
    for (int x = 0; x < 40; ++x) {
      ASSERT_EQ(Resize(src, {x, 0, 1, 30}, column, {1.0, 4.0}, interpolation), 0);
      for (int y = 0; y < 120; ++y) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(column.Get(0, y)), std::bit_cast<std::uint32_t>(high.Get(x, y)));
      }
    }
  }
}

// The mean of a footprint takes in no value from beside it, not even one that rounding of the factors lets in by a
// hair, and leaves out none inside it.
TEST(ResizeTest, ReduceSeesItsFootprintOnly) {
  for (const int side : {2, 3, 5, 7, 10, 49}) {
    Image<FLOAT32> src(side * 4, side * 3);
    for (int bad = 0; bad < 12; ++bad) {
      src.Fill([] { return 1.0F; });
      src.Set(bad % 4 * side + side / 2, bad / 4 * side, std::numeric_limits<float>::quiet_NaN());
      src.Set(bad % 4 * side + side - 1, bad / 4 * side + side - 1, INFINITY);
      Image<FLOAT32> dst(4, 3);
      ASSERT_EQ(Resize(src, Whole(src), dst, {1.0 / side, 1.0 / side}, kReduce), 0);
      for (int i = 0; i < 12; ++i) {
        const float value = dst.Get(i % 4, i / 4);
        ASSERT_TRUE(i == bad ? std::isnan(value) : value == 1.0F) << side << ": " << i << " is " << value;
      }
    }
  }
}

// Sums beyond the range of a float whose mean lies inside it.
TEST(ResizeTest, HalvingDoesNotOverflow) {
  Image<FLOAT32> src(30, 2);
  for (int x = 0; x < 30; ++x) {
    src.Set(x, 0, 3e38F);
    src.Set(x, 1, x % 4 < 2 ? 3e38F : -3e38F);
  }
  for (const int interpolation : {kLinear, kReduce}) {
    Image<FLOAT32> dst(15, 1);
    ASSERT_EQ(Resize(src, Whole(src), dst, {0.5, 0.5}, interpolation), 0);
    for (int x = 0; x < 15; ++x) EXPECT_EQ(dst.Get(x, 0), x % 2 == 0 ? 3e38F : 0.0F) << x;
  }
}

// Images too small for a kernel get the next smaller one; the size of the region does not count.
TEST(ResizeTest, FallsBackInSmallImages) {
  struct Case {
    int width, height, asked, used;
  };
  constexpr Case kCases[] = {{8, 7, kEightPoint, kCubic}, {7, 8, kEightPoint, kCubic},
                             {3, 100, kCubic, kLinear},   {100, 3, kEightPoint, kLinear},
                             {1, 100, kLinear, kNearest}, {1, 100, kEightPoint, kNearest},
                             {100, 1, kCubic, kNearest}};
  Random random(10);
  for (const Case& c : kCases) {
    Image<FLOAT32> src(c.width, c.height);
    src.Fill([&] { return static_cast<float>(RandomInt(random, 0, 255)); });
    Image<FLOAT32> asked(c.width * 5 / 2, c.height * 5 / 2);
    Image<FLOAT32> used(asked);
    ASSERT_EQ(Resize(src, Whole(src), asked, {2.5, 2.5}, c.asked), 0);
    ASSERT_EQ(Resize(src, Whole(src), used, {2.5, 2.5}, c.used), 0);
    EXPECT_EQ(asked.Bytes(), used.Bytes()) << c.width << "x" << c.height;
  }
  // 8 x 8 pixels are enough for all, whatever the region.
  Image<FLOAT32> src(8, 8);
  src.FillRandom(random);
  src.Fill([&] { return static_cast<float>(RandomInt(random, 0, 255)); });
  Image<FLOAT32> eight(5, 5);
  Image<FLOAT32> cubic(5, 5);
  ASSERT_EQ(Resize(src, {1, 1, 2, 2}, eight, {2.5, 2.5}, kEightPoint), 0);
  ASSERT_EQ(Resize(src, {1, 1, 2, 2}, cubic, {2.5, 2.5}, kCubic), 0);
  EXPECT_NE(eight.Bytes(), cubic.Bytes());
}

TEST(ResizeTest, ServesFactorsAtTheirLimits) {
  Image<FLOAT32> src(9, 9);
  Random random(11);
  src.Fill([&] { return static_cast<float>(RandomInt(random, 1, 255)); });
  for (const int interpolation : kResampling) {
    for (const double factor : {1e12, 1e300, std::numeric_limits<double>::infinity()}) {
      // So far enlarged, the first pixels all lie at the outer corner.
      Image<FLOAT32> dst(6, 5);
      ASSERT_EQ(Resize(src, Whole(src), dst, {factor, factor}, interpolation), 0);
      Image<FLOAT32> corner(1, 1);
      ASSERT_EQ(Resize(src, Whole(src), corner, {1e9, 1e9}, interpolation), 0);
      for (int i = 0; i < 30; ++i) EXPECT_NEAR(dst.Get(i % 6, i / 6), corner.Get(0, 0), 1e-4) << factor;
    }
  }
  for (const int interpolation : kAll) {
    Image<FLOAT32> dst(6, 5);
    const auto before = dst.Bytes();
    for (const double factor : {0.05, 1e-300, 5e-324}) {
      EXPECT_EQ(Resize(src, Whole(src), dst, {factor, 1.0}, interpolation), -1);
      EXPECT_EQ(Resize(src, Whole(src), dst, {1.0, factor}, interpolation), -1);
    }
    EXPECT_EQ(dst.Bytes(), before);
    // Between half a pixel and one, one is written.
    EXPECT_EQ(Resize(src, {2, 2, INT32_MAX, INT32_MAX}, dst, {0.5 / 7, 0.9 / 7}, interpolation), 0);
    EXPECT_NE(dst.Bytes(), before);
    Image<FLOAT32> rest(dst);
    rest.SetBytes(before);
    rest.Set(0, 0, dst.Get(0, 0));
    EXPECT_EQ(dst.Bytes(), rest.Bytes());
  }
}

// Steps are used as given: a destination from bottom to top, a source row that stands for all.
TEST(ResizeTest, UsesAnySteps) {
  Random random(12);
  Image<FLOAT32> src(20, 16);
  src.Fill([&] { return static_cast<float>(RandomInt(random, 0, 255)); });
  const Rect all = {0, 0, 20, 16};
  for (const int interpolation : kResampling) {
    Image<FLOAT32> upright(35, 28);
    Image<FLOAT32> flipped(35, 28);
    ASSERT_EQ(Resize(src, all, upright, {1.75, 1.75}, interpolation), 0);
    ASSERT_EQ(Norvala_Resize(src.data(), 20, 16, src.step(), &all, flipped.data() + 27 * 35, -flipped.step(), 35, 28,
                             1.75, 1.75, interpolation),
              0);
    for (int y = 0; y < 28; ++y) {
      ASSERT_EQ(std::memcmp(upright.data() + 35 * y, flipped.data() + 35 * (27 - y), 140), 0);
    }
    Image<FLOAT32> same(35, 28);
    ASSERT_EQ(Norvala_Resize(src.data(), 20, 16, 0, &all, same.data(), same.step(), 35, 28, 1.75, 1.75, interpolation),
              0);
    for (int y = 1; y < 28; ++y) ASSERT_EQ(std::memcmp(same.data(), same.data() + 35 * y, 140), 0);
  }
}

TEST(ResizeFailureTest, WritesNothing) {
  Image<FLOAT32> src(20, 16);
  src.Fill([] { return 1.0F; });
  Image<FLOAT32> dst(20, 16);
  const auto before = dst.Bytes();
  const Rect all = {0, 0, 20, 16};
  const auto resize = [&](const float* from, Rect region, float* to, RegionSize size, Factors factors, int mode) {
    return Norvala_Resize(from, 20, 16, src.step(), &region, to, dst.step(), size.width, size.height, factors.x,
                          factors.y, mode);
  };
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(resize(nullptr, all, dst.data(), {20, 16}, {0.5, 0.5}, 2), -1);
  EXPECT_EQ(resize(src.data(), all, nullptr, {20, 16}, {0.5, 0.5}, 2), -1);
  for (const Rect bad : {Rect{-1, 0, 20, 16}, Rect{0, -1, 20, 16}, Rect{0, 0, 0, 16}, Rect{0, 0, 20, INT32_MIN},
                         Rect{20, 0, 1, 1}, Rect{0, 16, 1, 1}, Rect{INT32_MAX, 0, INT32_MAX, 1}}) {
    EXPECT_EQ(resize(src.data(), bad, dst.data(), {20, 16}, {0.5, 0.5}, 2), -1);
  }
  EXPECT_EQ(resize(src.data(), all, dst.data(), {0, 16}, {0.5, 0.5}, 2), -1);
  EXPECT_EQ(resize(src.data(), all, dst.data(), {20, -16}, {0.5, 0.5}, 2), -1);
  for (const double factor : {0.0, -0.5, -INFINITY * 1.0, static_cast<double>(nan)}) {
    for (const int mode : kAll) {
      EXPECT_EQ(resize(src.data(), all, dst.data(), {20, 16}, {factor, 0.5}, mode), -1);
      EXPECT_EQ(resize(src.data(), all, dst.data(), {20, 16}, {0.5, factor}, mode), -1);
    }
  }
  for (const int mode : {0, 3, 5, 6, 17, 32, -1, INT32_MIN, INT32_MIN + 2}) {
    EXPECT_EQ(resize(src.data(), all, dst.data(), {20, 16}, {0.5, 0.5}, mode), -1);
  }
  EXPECT_EQ(resize(src.data(), all, dst.data(), {20, 16}, {0.5, 2.0}, kReduce), -1);
  EXPECT_EQ(resize(src.data(), all, dst.data(), {20, 16}, {1.0000001, 0.5}, kReduce), -1);
  EXPECT_EQ(dst.Bytes(), before);
  EXPECT_EQ(resize(src.data(), all, dst.data(), {20, 16}, {0.5, 0.5}, kReduce), 0);
}

}  // namespace
}  // namespace norvala_test
