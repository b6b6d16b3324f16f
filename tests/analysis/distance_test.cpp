#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Weights {
  float straight;
  float diagonal;
};

// Both raster passes in double precision, a pixel at a time: the distances start at 0 or the largest float, and each
// pass lowers those above the threshold to their least sum over the neighbours that it has seen.
void Reference(const Image<BW8>& mask, Image<float>& distances, Weights weights) {
  const int width = mask.width();
  const int height = mask.height();
  const double straight = weights.straight;
  const double diagonal = weights.diagonal;
  const bool cheapDiagonal = std::min(width, height) > 1 && straight > diagonal;
  const double threshold = cheapDiagonal ? diagonal : straight;
  for (const int before : {-1, 1}) {
    const bool forward = before < 0;
    for (int i = 0; i < width * height; ++i) {
      const int pixel = forward ? i : width * height - 1 - i;
      const int x = pixel % width;
      const int y = pixel / width;
      double value = !forward ? distances.Get(x, y) : mask.Get(x, y) != 0 ? kLargest : 0;
      const auto lower = [&](int dx, int dy, double weight) {
        if (x + dx < 0 || x + dx >= width || y + dy < 0 || y + dy >= height) return;
        value = std::min(value, distances.Get(x + dx, y + dy) + weight);
      };
      if (forward ? mask.Get(x, y) != 0 : value > threshold) {
        if (cheapDiagonal && y == height - 1) lower(2 * before, 0, 2 * diagonal);
        lower(before, 0, straight);
        lower(0, before, straight);
        if (2 * straight > diagonal) {
          lower(-1, before, diagonal);
          lower(1, before, diagonal);
        }
      }
      distances.Set(x, y, static_cast<float>(value));
    }
  }
}

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
  unsigned char misaligned[12];
  unsigned char* const metrics = misaligned + RandomInt(random, 0, 3);
  std::memcpy(metrics, &weights, sizeof weights);
  const auto flush = random() % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End;
  Image<float> distances(width, height, {0, 4 * RandomInt(random, 0, 3), RandomInt(random, 0, 3)}, flush);
  Image<float> expected(distances);
  Reference(mask, expected, weights);
  ASSERT_EQ(Norvala_DistanceTransform3x3_BW8ToFLOAT32(mask.data(), mask.step(), distances.data(), distances.step(),
                                                      width, height, reinterpret_cast<const float*>(metrics)),
            0);
  ASSERT_EQ(distances.Bytes(), expected.Bytes())
      << width << "x" << height << ", weights " << weights.straight << " " << weights.diagonal;
}

TEST(DistanceTest, EqualsTwoPassesInDouble) {
  Random random(1);
  for (int height = 1; height <= 30; ++height) {
    for (int width = 1; width <= 50; ++width) {
      for (int round = 0; round < 4; ++round) ASSERT_NO_FATAL_FAILURE(ExpectDistances(width, height, random));
    }
  }
  for (int round = 0; round < 150; ++round) {
    ASSERT_NO_FATAL_FAILURE(ExpectDistances(RandomSize(random), RandomInt(random, 1, 120), random));
  }
}

}  // namespace
}  // namespace norvala_test
