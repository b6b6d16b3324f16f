#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Weights {
  float straight;
  float diagonal;
};

// The two passes in double precision, candidate by candidate in their fixed order.
class Reference {
 public:
  Reference(const Image<BW8>& mask, Image<float>& distances, Weights weights)
      : mask_(mask),
        distances_(distances),
        width_(mask.width()),
        height_(mask.height()),
        straight_(weights.straight),
        diagonal_(weights.diagonal),
        cheapDiagonal_(std::min(width_, height_) > 1 && straight_ > diagonal_),
        threshold_(cheapDiagonal_ ? diagonal_ : straight_) {}

  void Run() {
    if (width_ == 1) {
      SingleColumn();
    } else if (2 * straight_ > diagonal_) {
      Forward();
      Backward();
    } else {
      FourNeighbours();
    }
  }

 private:
  using Candidate = std::pair<int, int>;  // offsets in x and y

  double Sum(int x, int y, Candidate from, double weight) const {
    return double{distances_.Get(x + from.first, y + from.second)} + weight;
  }
  double WeightOf(Candidate from) const {
    return std::abs(from.first) + std::abs(from.second) == 1 ? straight_ : from.second == 0 ? 2 * diagonal_ : diagonal_;
  }
  bool Inside(int x, int y) const { return x >= 0 && x < width_ && y >= 0 && y < height_; }

  void Update(int x, int y, std::initializer_list<Candidate> candidates) {
    if (mask_.Get(x, y) == 0) return distances_.Set(x, y, 0);
    bool first = true;
    double value = kLargest;
    for (const Candidate& from : candidates) {
      if (!Inside(x + from.first, y + from.second)) continue;
      const double sum = Sum(x, y, from, WeightOf(from));
      if (first) {
        value = sum >= kLargest ? kLargest : sum;
      } else if (sum < value) {
        value = sum;
      }
      first = false;
    }
    distances_.Set(x, y, static_cast<float>(value));
  }

  void Lower(int x, int y, std::initializer_list<Candidate> candidates) {
    double value = distances_.Get(x, y);
    if (!(value > threshold_)) return;
    for (const Candidate& from : candidates) {
      if (!Inside(x + from.first, y + from.second)) continue;
      const double sum = Sum(x, y, from, WeightOf(from));
      if (sum < value) value = sum;
    }
    distances_.Set(x, y, static_cast<float>(value));
  }

  void SingleColumn() {
    Update(0, 0, {});
    for (int y = 1; y < height_; ++y) Update(0, y, {{0, -1}});
    for (int y = height_ - 2; y >= 0; --y) Lower(0, y, {{0, 1}});
  }

  void FourNeighbours() {
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) Update(x, y, {{-1, 0}, {0, -1}});
    }
    for (int y = height_ - 1; y >= 0; --y) {
      for (int x = width_ - 1; x >= 0; --x) Lower(x, y, {{1, 0}, {0, 1}});
    }
  }

  void Forward() {
    for (int x = 0; x < width_; ++x) Update(x, 0, {{-1, 0}});
    const int last = cheapDiagonal_ ? height_ - 1 : height_;
    for (int y = 1; y < last; ++y) {
      for (int x = 0; x < width_; ++x) Update(x, y, {{-1, 0}, {-1, -1}, {0, -1}, {1, -1}});
    }
    if (!cheapDiagonal_) return;
    for (int x = 0; x < width_; ++x) Update(x, last, {{-2, 0}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}});
  }

  void Backward() {
    for (int x = width_ - 2; x >= 0; --x) {
      if (cheapDiagonal_) {
        Lower(x, height_ - 1, {{2, 0}, {1, 0}});
      } else {
        Lower(x, height_ - 1, {{1, 0}});
      }
    }
    for (int y = height_ - 2; y >= 0; --y) {
      for (int x = width_ - 1; x >= 0; --x) Lower(x, y, {{1, 0}, {1, 1}, {0, 1}, {-1, 1}});
    }
  }

  const Image<BW8>& mask_;
  Image<float>& distances_;
  int width_;
  int height_;
  double straight_;
  double diagonal_;
  bool cheapDiagonal_;
  double threshold_;
};

Weights RandomWeights(Random& random) {
  static constexpr Weights kUsual[] = {
      {1.0F, 1.5F},       {3.0F, 4.0F},      {1.0F, 1.0F},       {0.955F, 1.3693F},    {1.0F, 1.4142135F},
      {1.5F, 1.0F},       {7.0F, 3.0F},      {1.0F, 0.3F},       {1.0F, 2.0F},         {1.0F, 1.9999999F},
      {1.0F, 100.0F},     {1e38F, 1.3e38F},  {2e38F, 1.9e38F},   {kLargest, kLargest}, {kLargest, 1.0F},
      {1.0F, kLargest},   {kInfinity, 1.0F}, {1.0F, kInfinity},  {1e-45F, 2e-45F},     {4e-45F, 3e-45F},
      {1e-39F, 1.1e-38F}, {1e-8F, 1.5e-8F},  {1.0F, 1e-9F},      {kInfinity, 3e38F},   {kInfinity, kInfinity},
      {2.1e32F, 1.9e32F}, {1e31F, 1.5e31F},  {1e-30F, 1.9e-30F}, {16777217.0F, 1.0F}};
  if (random() % 3 != 0) return kUsual[random() % std::size(kUsual)];
  std::uniform_real_distribution<float> unit(0.01F, 3.0F);
  return {unit(random), unit(random)};
}

// The reciprocal of the part of zero pixels; 0 for none at all.
void FillMask(Image<BW8>& mask, Random& random) {
  static constexpr unsigned kSparseness[] = {0, 1, 2, 5, 40, 300, 2000};
  const unsigned sparseness = kSparseness[random() % std::size(kSparseness)];
  mask.Fill([&] {
    const bool zero = sparseness != 0 && random() % sparseness == 0;
    return static_cast<BW8>(zero ? 0 : 1U << random() % 8);
  });
}

void ExpectDistances(int width, int height, Random& random) {
  Image<BW8> mask(width, height, RandomLayout(random));
  FillMask(mask, random);
  const Weights weights = RandomWeights(random);
  // Weights, like pixels, may lie at any address.
  const float metrics[2] = {weights.straight, weights.diagonal};
  unsigned char misaligned[12];
  unsigned char* const address = misaligned + RandomInt(random, 0, 3);
  std::memcpy(address, metrics, sizeof metrics);
  const auto flush = random() % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End;
  Image<float> distances(width, height, {0, 4 * RandomInt(random, 0, 3), RandomInt(random, 0, 3)}, flush);
  Image<float> expected(distances);
  Reference(mask, expected, weights).Run();
  ASSERT_EQ(Norvala_DistanceTransform3x3_BW8ToFLOAT32(mask.data(), mask.step(), distances.data(), distances.step(),
                                                      width, height, reinterpret_cast<const float*>(address)),
            0);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      ASSERT_EQ(distances.Get(x, y), expected.Get(x, y)) << "at " << x << "," << y << " of " << width << "x" << height
                                                         << ", weights " << metrics[0] << " " << metrics[1];
    }
  }
  ASSERT_EQ(distances.Bytes(), expected.Bytes());
}

TEST(DistanceTest, EqualsTwoPassesInDoubleForEverySmallSize) {
  Random random(1);
  for (int height = 1; height <= 30; ++height) {
    for (int width = 1; width <= 50; ++width) {
      for (int round = 0; round < 4; ++round) {
        ASSERT_NO_FATAL_FAILURE(ExpectDistances(width, height, random));
      }
    }
  }
}

TEST(DistanceTest, EqualsTwoPassesInDoubleForLargeSizes) {
  Random random(2);
  for (int round = 0; round < 150; ++round) {
    ASSERT_NO_FATAL_FAILURE(ExpectDistances(RandomSize(random), RandomInt(random, 1, 120), random));
  }
}

TEST(DistanceTest, GivesTheChamferDistance) {
  Image<BW8> mask(101, 81);
  mask.Fill([] { return BW8{255}; });
  mask.Set(50, 40, 0);
  Image<float> distances(101, 81);
  const float metrics[2] = {1.0F, 1.5F};
  ASSERT_EQ(Norvala_DistanceTransform3x3_BW8ToFLOAT32(mask.data(), mask.step(), distances.data(), distances.step(), 101,
                                                      81, metrics),
            0);
  for (int y = 0; y < 81; ++y) {
    for (int x = 0; x < 101; ++x) {
      const int dx = std::abs(x - 50);
      const int dy = std::abs(y - 40);
      const auto straight = static_cast<float>(std::abs(dx - dy));
      ASSERT_EQ(distances.Get(x, y), straight + 1.5F * static_cast<float>(std::min(dx, dy)));
    }
  }
}

TEST(DistanceTest, RejectsBadArguments) {
  const BW8 mask[6] = {1, 0, 1, 1, 1, 1};
  float distances[6] = {9, 9, 9, 9, 9, 9};
  const float good[2] = {1.0F, 1.5F};
  const auto run = [&](const float* metrics, int srcStep = 3, int dstStep = 12, int width = 3, int height = 2) {
    return Norvala_DistanceTransform3x3_BW8ToFLOAT32(mask, srcStep, distances, dstStep, width, height, metrics);
  };
  EXPECT_EQ(Norvala_DistanceTransform3x3_BW8ToFLOAT32(nullptr, 3, distances, 12, 3, 2, good), -1);
  EXPECT_EQ(Norvala_DistanceTransform3x3_BW8ToFLOAT32(mask, 3, nullptr, 12, 3, 2, good), -1);
  EXPECT_EQ(run(nullptr), -1);
  EXPECT_EQ(run(good, 2), -1);
  EXPECT_EQ(run(good, 3, 8), -1);
  EXPECT_EQ(run(good, 3, 14), -1);
  EXPECT_EQ(run(good, 3, -12), -1);
  EXPECT_EQ(run(good, INT32_MAX, INT32_MAX - 3, INT32_MAX), -1);
  EXPECT_EQ(run(good, 3, 12, 0), -1);
  EXPECT_EQ(run(good, 3, 12, 3, -1), -1);
  const float kNaN = std::numeric_limits<float>::quiet_NaN();
  for (const Weights bad :
       {Weights{0.0F, 1.0F}, {1.0F, 0.0F}, {-0.0F, 1.0F}, {1.0F, -1.0F}, {kNaN, 1.0F}, {1.0F, kNaN}}) {
    const float metrics[2] = {bad.straight, bad.diagonal};
    EXPECT_EQ(run(metrics), -1);
  }
  for (const float distance : distances) EXPECT_EQ(distance, 9);
  EXPECT_EQ(run(good), 0);
  EXPECT_EQ(distances[5], 1.5F);
}

}  // namespace
}  // namespace norvala_test
