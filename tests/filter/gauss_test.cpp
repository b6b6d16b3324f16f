#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

constexpr std::array<std::array<int, 3>, 3> kMask3 = {{{1, 2, 1}, {2, 4, 2}, {1, 2, 1}}};
constexpr std::array<std::array<int, 5>, 5> kMask5 = {
    {{2, 7, 12, 7, 2}, {7, 31, 52, 31, 7}, {12, 52, 127, 52, 12}, {7, 31, 52, 31, 7}, {2, 7, 12, 7, 2}}};

BW8 Round3(std::uint32_t sum) { return static_cast<BW8>((sum + ((sum >> 4) & 1) + 7) >> 4); }
BW8 Round5(std::uint32_t sum) { return static_cast<BW8>(((sum + 286) * 29382) >> 24); }

template <std::size_t n>
std::uint32_t MaskSum(const std::array<std::array<int, n>, n>& mask, const Image<BW8>& src, int x, int y) {
  constexpr int kReach = n / 2;
  int sum = 0;
  for (int j = -kReach; j <= kReach; ++j) {
    for (int i = -kReach; i <= kReach; ++i) {
      sum += mask[static_cast<std::size_t>(j + kReach)][static_cast<std::size_t>(i + kReach)] * src.Get(x + i, y + j);
    }
  }
  return static_cast<std::uint32_t>(sum);
}

BW8 Expected(int maskCode, const Image<BW8>& src, int x, int y) {
  return maskCode == 33 ? Round3(MaskSum(kMask3, src, x, y)) : Round5(MaskSum(kMask5, src, x, y));
}

TEST(GaussTest, FiltersAsDefined) {
  Random random(1);
  for (int round = 0; round < 400; ++round) {
    const int maskCode = round % 2 == 0 ? 33 : 55;
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 12);
    Image<BW8> src(width, height, RandomLayout(random, maskCode == 33 ? 1 : 2),
                   round % 4 < 2 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    const bool extreme = RandomInt(random, 0, 3) == 0;
    src.Fill([&] { return static_cast<BW8>(extreme ? 255 * RandomInt(random, 0, 1) : RandomInt(random, 0, 255)); });
    Image<BW8> dst(width, height, RandomLayout(random));
    Image<BW8> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) expected.Set(x, y, Expected(maskCode, src, x, y));
    }
    ASSERT_EQ(Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), width, height, maskCode), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height << " mask " << maskCode;
  }
}

TEST(GaussTest, KeepsConstantImages) {
  for (const int maskCode : {33, 55}) {
    for (int value = 0; value < 256; ++value) {
      Image<BW8> src(19, 2, {2, 0, 0});
      src.Fill([&] { return static_cast<BW8>(value); });
      Image<BW8> dst(19, 2);
      ASSERT_EQ(Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), 19, 2, maskCode), 0);
      for (int x = 0; x < 19; ++x) ASSERT_EQ(dst.Get(x, 1), value);
    }
  }
}

// Writes pixels below the mask whose weighted sum is `sum`, if it finds any: as much as goes of the largest weights
// first, where one pixel of weight 7 makes the rest even. Sums of the upper half are made of inverse pixels.
template <std::size_t n>
bool FillForSum(const std::array<std::array<int, n>, n>& mask, int sum, int largest, Image<BW8>& src, int x) {
  constexpr int kReach = n / 2;
  struct Cell {
    int weight, x, y;
  };
  std::vector<Cell> cells;
  for (int j = -kReach; j <= kReach; ++j) {
    for (int i = -kReach; i <= kReach; ++i) {
      cells.push_back({mask[static_cast<std::size_t>(j + kReach)][static_cast<std::size_t>(i + kReach)], x + i, j});
    }
  }
  std::sort(cells.begin(), cells.end(), [](const Cell& a, const Cell& b) { return a.weight > b.weight; });
  const bool inverse = sum > largest / 2;
  for (int sevens = 0; sevens < 8; ++sevens) {
    int rest = (inverse ? largest - sum : sum) - 7 * sevens;
    int left = sevens;
    for (const Cell& cell : cells) {
      int value = std::clamp(rest / cell.weight, 0, 255);
      if (cell.weight == 7) {
        value = left;
        left = 0;
      } else {
        rest -= value * cell.weight;
      }
      src.Set(cell.x, cell.y, static_cast<BW8>(inverse ? 255 - value : value));
    }
    if (rest == 0) return true;
  }
  return false;
}

// One result for nearly every sum that can be: rounding has no exceptions.
TEST(GaussTest, RoundsEverySum) {
  const auto check = [](const auto& mask, int maskCode, int largest, int fewest) {
    const int n = static_cast<int>(mask.size());
    int reached = 0;
    for (int first = 0; first <= largest; first += 4096) {
      const int count = std::min(4096, largest - first + 1);
      Image<BW8> src(count * n, 1, {n / 2, 0, 0});
      src.Fill([] { return BW8{0}; });
      Image<BW8> dst(count * n, 1);
      std::vector<bool> made(static_cast<std::size_t>(count));
      for (int i = 0; i < count; ++i) {
        made[static_cast<std::size_t>(i)] = FillForSum(mask, first + i, largest, src, i * n + n / 2);
        reached += made[static_cast<std::size_t>(i)];
      }
      ASSERT_EQ(Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), count * n, 1, maskCode), 0);
      for (int i = 0; i < count; ++i) {
        const auto sum = static_cast<std::uint32_t>(first + i);
        if (!made[static_cast<std::size_t>(i)]) continue;
        ASSERT_EQ(MaskSum(mask, src, i * n + n / 2, 0), sum);
        ASSERT_EQ(dst.Get(i * n + n / 2, 0), maskCode == 33 ? Round3(sum) : Round5(sum)) << "sum " << sum;
      }
    }
    EXPECT_GE(reached, fewest);
  };
  check(kMask3, 33, 16 * 255, 16 * 255 + 1);
  check(kMask5, 55, 571 * 255, 571 * 255 - 5);
}

TEST(GaussFailureTest, WritesNothing) {
  Image<BW8> src(5, 5, {2, 0, 0});
  Image<BW8> dst(5, 5);
  const auto before = dst.Bytes();
  EXPECT_EQ(Norvala_FilterGauss(nullptr, 9, dst.data(), 5, 5, 5, 33), -1);
  EXPECT_EQ(Norvala_FilterGauss(src.data(), 9, nullptr, 5, 5, 5, 33), -1);
  EXPECT_EQ(Norvala_FilterGauss(src.data(), 9, dst.data(), 5, 0, 5, 33), -1);
  EXPECT_EQ(Norvala_FilterGauss(src.data(), 9, dst.data(), 5, 5, INT32_MIN, 55), -1);
  EXPECT_EQ(Norvala_FilterGauss(src.data(), 0, dst.data(), 5, 5, 5, 55), -1);
  EXPECT_EQ(Norvala_FilterGauss(src.data(), 9, dst.data(), -5, 5, 5, 55), -1);
  for (const int maskCode : {0, 3, 35, 53, INT32_MIN}) {
    EXPECT_EQ(Norvala_FilterGauss(src.data(), 9, dst.data(), 5, 5, 5, maskCode), -1);
  }
  EXPECT_EQ(dst.Bytes(), before);
}

}  // namespace
}  // namespace norvala_test
