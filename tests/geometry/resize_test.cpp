#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

constexpr int kNearest = 1;
constexpr int kLinear = 2;
constexpr int kCubic = 4;
constexpr int kReduce = 8;
constexpr int kEightPoint = 16;
constexpr int kAll[] = {kNearest, kLinear, kCubic, kReduce, kEightPoint};

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

struct Factors {
  double x;
  double y;
};

int Resize(const Image<FLOAT32>& src, const Rect& region, const Image<FLOAT32>& dst, Factors factors,
           int interpolation) {
  // The rectangle may lie anywhere, too.
  unsigned char bytes[sizeof region + 1];
  std::memcpy(bytes + 1, &region, sizeof region);
  return Norvala_Resize(src.data(), src.width(), src.height(), src.step(), reinterpret_cast<const Rect*>(bytes + 1),
                        dst.data(), dst.step(), dst.width(), dst.height(), factors.x, factors.y, interpolation);
}

Rect Whole(const Image<FLOAT32>& image) { return {0, 0, image.width(), image.height()}; }

void FillWithIntegers(Image<FLOAT32>& image, Random& random) {
  image.Fill([&] { return static_cast<float>(RandomInt(random, 0, 255)); });
}

// Pixels to be written, or 0 for a failure.
int Extent(int length, double factor, int dstLength) {
  const double scaled = length * factor + 1e-7;
  if (scaled >= dstLength) return dstLength;
  if (scaled >= 1.0) return static_cast<int>(scaled);
  return scaled < 0.5 ? 0 : 1;
}

double Kernel(int interpolation, double x) {
  const auto sinc = [](double v) { return v == 0.0 ? 1.0 : std::sin(std::numbers::pi * v) / (std::numbers::pi * v); };
  const double a = std::fabs(x);
  switch (interpolation) {
    case kLinear:
      return std::max(0.0, 1.0 - a);
    case kCubic:
      if (a < 1.0) return (1.0 - a * a) * (2.0 - a) / 2.0;
      return a < 2.0 ? (1.0 - a) * (2.0 - a) * (3.0 - a) / 6.0 : 0.0;
    default:
      return a < 4.0 ? sinc(x) * sinc(x / 4.0) : 0.0;
  }
}

// The weight of every source pixel in one direction for destination pixel `d`, from the definitions. What rounding
// leaves of a weight does not count.
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
  for (double& w : weights) w = std::fabs(w / sum) > 1e-12 ? w / sum : 0.0;
  return weights;
}

class ResizeDefinitionTest : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Resize, ResizeDefinitionTest, testing::ValuesIn(kAll));

// Random sizes, regions, factors and layouts. Everything outside the region is NaN, so that reading it would show.
TEST_P(ResizeDefinitionTest, MatchesTheDefinition) {
  const int interpolation = GetParam();
  Random random(static_cast<unsigned>(interpolation));
  constexpr double kFactors[] = {0.5, 1.0, 2.0, 0.25, 1.0 / 3.0, 0.1, 0.61, 1.7, 3.0};
  for (int round = 0; round < 400; ++round) {
    Image<FLOAT32> src(RandomInt(random, 8, 60), RandomInt(random, 8, 40), RandomLayout(random),
                       round % 2 == 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    const int x = RandomInt(random, 0, 3) == 0 ? RandomInt(random, 0, src.width() - 1) : RandomInt(random, 0, 2);
    const int y = RandomInt(random, 0, 3) == 0 ? RandomInt(random, 0, src.height() - 1) : RandomInt(random, 0, 2);
    const Rect region = {x, y, RandomInt(random, 1, 70), RandomInt(random, 1, 50)};
    const int width = std::min(region.width, src.width() - x);
    const int height = std::min(region.height, src.height() - y);
    src.Fill([] { return kNaN; });
    for (int j = 0; j < height; ++j) {
      for (int i = 0; i < width; ++i) src.Set(x + i, y + j, static_cast<float>(RandomInt(random, -9999, 9999)) / 7.0F);
    }
    const auto factor = [&] {
      const double f = RandomInt(random, 0, 1) == 0 ? kFactors[RandomInt(random, 0, 8)]
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
          for (int u = 0; u < width; ++u) {
            const double weight = wy[static_cast<std::size_t>(v)] * wx[static_cast<std::size_t>(u)];
            if (weight == 0.0) continue;
            const double pixel = src.Get(x + u, y + v);
            sum += weight * pixel;
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
      Image<FLOAT32> expected(dst);
      expected.Fill([&] { return value; });
      ASSERT_EQ(Resize(src, Whole(src), dst, factors, interpolation), 0);
      ASSERT_EQ(dst.Bytes(), expected.Bytes()) << value << " by " << factors.x << ", " << factors.y;
    }
  }
}

// With both factors 1 bits are copied, NaN payloads and all; with one of them 1, that direction is left alone, so that
// infinities in the odd rows (or columns) do not touch the even ones.
TEST_P(ResizeDefinitionTest, LeavesADirectionOfFactorOneAlone) {
  const int interpolation = GetParam();
  Random random(8);
  for (int round = 0; round < 30; ++round) {
    Image<FLOAT32> src(RandomInt(random, 8, 40), RandomInt(random, 8, 30), RandomLayout(random));
    src.Fill([&] { return std::bit_cast<float>(static_cast<std::uint32_t>(random())); });
    Image<FLOAT32> dst(RandomInt(random, 1, 60), RandomInt(random, 1, 30), RandomLayout(random));
    Image<FLOAT32> expected(dst);
    for (int y = 0; y < std::min(src.height(), dst.height()); ++y) {
      for (int x = 0; x < std::min(src.width(), dst.width()); ++x) expected.Set(x, y, src.Get(x, y));
    }
    ASSERT_EQ(Resize(src, Whole(src), dst, {1.0, 1.0}, interpolation), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes());

    for (const bool across : {true, false}) {
      for (int y = 0; y < src.height(); ++y) {
        for (int x = 0; x < src.width(); ++x) src.Set(x, y, (across ? y : x) % 2 != 0 ? INFINITY : 1.0F);
      }
      const double factor = interpolation == kReduce ? 0.4 : 2.5;
      ASSERT_EQ(Resize(src, Whole(src), dst, {across ? factor : 1.0, across ? 1.0 : factor}, interpolation), 0);
      for (int y = 0; across && y < std::min(src.height(), dst.height()); y += 2) ASSERT_EQ(dst.Get(0, y), 1.0F);
      for (int x = 0; !across && x < std::min(src.width(), dst.width()); x += 2) ASSERT_EQ(dst.Get(x, 0), 1.0F);
    }
  }
}

// Steps are used as given: a destination from bottom to top, a source row that stands for all.
TEST_P(ResizeDefinitionTest, UsesAnySteps) {
  Random random(12);
  Image<FLOAT32> src(20, 16);
  FillWithIntegers(src, random);
  const Rect all = Whole(src);
  Image<FLOAT32> upright(15, 12);
  Image<FLOAT32> other(15, 12);
  ASSERT_EQ(Resize(src, all, upright, {0.75, 0.75}, GetParam()), 0);
  const auto resize = [&](int srcStep, float* dst, int dstStep) {
    return Norvala_Resize(src.data(), 20, 16, srcStep, &all, dst, dstStep, 15, 12, 0.75, 0.75, GetParam());
  };
  ASSERT_EQ(resize(src.step(), other.data() + 11 * 15, -other.step()), 0);
  for (int i = 0; i < 15 * 12; ++i) ASSERT_EQ(other.Get(i % 15, i / 15), upright.Get(i % 15, 11 - i / 15));
  ASSERT_EQ(resize(0, other.data(), other.step()), 0);
  for (int i = 0; i < 15 * 12; ++i) ASSERT_EQ(other.Get(i % 15, i / 15), other.Get(i % 15, 0));
}

TEST_P(ResizeDefinitionTest, ServesFactorsAtTheirLimits) {
  const int interpolation = GetParam();
  Random random(11);
  Image<FLOAT32> src(9, 9);
  FillWithIntegers(src, random);
  Image<FLOAT32> dst(6, 5);
  const auto before = dst.Bytes();
  for (const double factor : {0.05, 1e-300, 5e-324}) {
    EXPECT_EQ(Resize(src, Whole(src), dst, {factor, 1.0}, interpolation), -1);
    EXPECT_EQ(Resize(src, Whole(src), dst, {1.0, factor}, interpolation), -1);
  }
  EXPECT_EQ(dst.Bytes(), before);
  // Between half a pixel and one, one is written.
  EXPECT_EQ(Resize(src, {2, 2, INT32_MAX, INT32_MAX}, dst, {0.5 / 7, 0.9 / 7}, interpolation), 0);
  Image<FLOAT32> rest(dst);
  rest.SetBytes(before);
  rest.Set(0, 0, dst.Get(0, 0));
  EXPECT_EQ(dst.Bytes(), rest.Bytes());
  // So far enlarged, the first pixels all lie at the outer corner.
  for (const double factor : {1e12, 1e300, std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(Resize(src, Whole(src), dst, {factor, factor}, interpolation), interpolation == kReduce ? -1 : 0);
    for (int i = 0; i < 30 && interpolation != kReduce; ++i) EXPECT_NEAR(dst.Get(i % 6, i / 6), dst.Get(0, 0), 1e-4);
  }
}

// The mean of a footprint takes in no value from beside it, not even one that rounding of the factors lets in by a
// hair, and leaves out none inside it.
TEST(ResizeTest, ReduceSeesItsFootprintOnly) {
  for (const int side : {2, 3, 5, 7, 10, 49}) {
    Image<FLOAT32> src(side * 4, side * 3);
    for (int bad = 0; bad < 12; ++bad) {
      src.Fill([] { return 1.0F; });
      src.Set(bad % 4 * side + side / 2, bad / 4 * side, kNaN);
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

// By halves Reduce and Linear are the mean of 2 x 2 pixels, in single precision unless the sum leaves its range. That
// takes a pixel out of the common way, and no other.
TEST(ResizeTest, HalvesByMeansOfFour) {
  Random random(2);
  for (int round = 0; round < 100; ++round) {
    Image<FLOAT32> src(RandomInt(random, 2, 60), RandomInt(random, 2, 20), RandomLayout(random));
    src.Fill([&] {
      if (round % 2 == 0 && RandomInt(random, 0, 9) == 0) return random() % 2 != 0 ? 3e38F : -3e38F;
      return round % 4 == 0 && RandomInt(random, 0, 50) == 0 ? -INFINITY
                                                             : static_cast<float>(RandomInt(random, -9999, 9999)) / 7;
    });
    for (const int interpolation : {kLinear, kReduce}) {
      Image<FLOAT32> dst(src.width() / 2, src.height() / 2, RandomLayout(random));
      Image<FLOAT32> expected(dst);
      for (int y = 0; y < dst.height(); ++y) {
        for (int x = 0; x < dst.width(); ++x) {
          const auto pixel = [&](int i, int j) { return double{src.Get(2 * x + i, 2 * y + j)}; };
          const float left = src.Get(2 * x, 2 * y) + src.Get(2 * x, 2 * y + 1);
          const float right = src.Get(2 * x + 1, 2 * y) + src.Get(2 * x + 1, 2 * y + 1);
          const float sum = left + right;
          const double exact = ((pixel(0, 0) + pixel(0, 1)) + (pixel(1, 0) + pixel(1, 1))) * 0.25;
          expected.Set(x, y, std::isfinite(sum) ? sum * 0.25F : static_cast<float>(exact));
        }
      }
      ASSERT_EQ(Resize(src, Whole(src), dst, {0.5, 0.5}, interpolation), 0);
      ASSERT_EQ(dst.Bytes(), expected.Bytes());
    }
  }
}

// Images too small for a kernel get the next smaller one; the size of the region does not count.
TEST(ResizeTest, FallsBackInSmallImages) {
  constexpr struct {
    int width, height, asked, used;
  } kCases[] = {{8, 7, kEightPoint, kCubic},    {7, 8, kEightPoint, kCubic},      {3, 100, kCubic, kLinear},
                {100, 3, kEightPoint, kLinear}, {1, 100, kLinear, kNearest},      {1, 100, kEightPoint, kNearest},
                {100, 1, kCubic, kNearest},     {8, 8, kEightPoint, kEightPoint}, {4, 4, kCubic, kCubic},
                {2, 2, kLinear, kLinear}};
  Random random(10);
  for (const auto& c : kCases) {
    Image<FLOAT32> src(c.width, c.height);
    FillWithIntegers(src, random);
    Image<FLOAT32> asked(5, 5);
    ASSERT_EQ(Resize(src, {0, 0, 2, 2}, asked, {2.5, 2.5}, c.asked), 0);
    for (const int other : {kNearest, kLinear, kCubic, kEightPoint}) {
      if (other > c.asked) continue;
      Image<FLOAT32> used(5, 5);
      ASSERT_EQ(Resize(src, {0, 0, 2, 2}, used, {2.5, 2.5}, other), 0);
      EXPECT_EQ(asked.Bytes() == used.Bytes(), other >= c.used) << c.width << "x" << c.height << " " << other;
    }
  }
}

}  // namespace
}  // namespace norvala_test
