#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

constexpr int Reach(int maskCode) { return maskCode == 33 ? 1 : 2; }
constexpr int Total(int maskCode) { return maskCode == 33 ? 16 : 571; }

int Weight(int maskCode, int dx, int dy) {
  static constexpr int kQuarterOf5x5[3][3] = {{127, 52, 12}, {52, 31, 7}, {12, 7, 2}};
  dx = std::abs(dx);
  dy = std::abs(dy);
  return maskCode == 33 ? (2 - dx) * (2 - dy) : kQuarterOf5x5[dy][dx];
}

std::uint32_t Sum(int maskCode, const Image<BW8>& src, int x, int y) {
  int sum = 0;
  for (int dy = -Reach(maskCode); dy <= Reach(maskCode); ++dy) {
    for (int dx = -Reach(maskCode); dx <= Reach(maskCode); ++dx) {
      sum += Weight(maskCode, dx, dy) * src.Get(x + dx, y + dy);
    }
  }
  return static_cast<std::uint32_t>(sum);
}

BW8 Divided(int maskCode, std::uint32_t sum) {
  return static_cast<BW8>(maskCode == 33 ? (sum + ((sum >> 4) & 1) + 7) >> 4 : ((sum + 286) * 29382) >> 24);
}

TEST(GaussTest, FiltersAsDefined) {
  Random random(1);
  for (int round = 0; round < 400; ++round) {
    const int maskCode = round % 2 == 0 ? 33 : 55;
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 12);
    Image<BW8> src(width, height, RandomLayout(random, Reach(maskCode)),
                   round % 4 < 2 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    const bool extreme = RandomInt(random, 0, 3) == 0;
    src.Fill([&] { return static_cast<BW8>(extreme ? 255 * RandomInt(random, 0, 1) : RandomInt(random, 0, 255)); });
    Image<BW8> dst(width, height, RandomLayout(random));
    Image<BW8> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) expected.Set(x, y, Divided(maskCode, Sum(maskCode, src, x, y)));
    }
    ASSERT_EQ(Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), width, height, maskCode), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height << " mask " << maskCode;
  }
}

// Writes pixels around (x, 0) whose weighted sum is `sum`, except for odd sums up to 5 of the 5x5 mask. Sums of the
// upper half are made of inverse pixels.
void MakeSum(Image<BW8>& src, int x, int maskCode, int sum) {
  const int total = Total(maskCode);
  const bool inverse = sum > total * 255 / 2;
  if (inverse) sum = total * 255 - sum;
  int base = sum / total;
  int rest = sum % total;
  if (maskCode == 55 && rest % 2 != 0 && base > 0) --base, rest += total;  // even weights make the rest
  const auto set = [&](int dx, int dy, int value) {
    src.Set(x + dx, dy, static_cast<BW8>(inverse ? 255 - value : value));
  };
  for (int dy = -Reach(maskCode); dy <= Reach(maskCode); ++dy) {
    for (int dx = -Reach(maskCode); dx <= Reach(maskCode); ++dx) set(dx, dy, base);
  }
  if (maskCode == 33) return set(-1, -1, base + rest);
  if (rest % 2 != 0 && rest > 6) set(-1, -2, base + 1), rest -= 7;
  set(-1, 0, base + rest / 52);
  set(-2, 0, base + rest % 52 / 12);
  set(-2, -2, base + rest % 52 % 12 / 2);
}

TEST(GaussTest, RoundsEverySum) {
  constexpr int kSums = 4096;
  Image<BW8> src(5 * kSums, 1, {2, 0, 0});
  Image<BW8> dst(5 * kSums, 1);
  for (const int maskCode : {33, 55}) {
    const int largest = Total(maskCode) * 255;
    for (int first = 0; first <= largest; first += kSums) {
      for (int i = 0; i < kSums; ++i) MakeSum(src, 5 * i + 2, maskCode, std::min(first + i, largest));
      ASSERT_EQ(Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), src.width(), 1, maskCode), 0);
      for (int i = 0; i < kSums && first + i <= largest; ++i) {
        const std::uint32_t sum = Sum(maskCode, src, 5 * i + 2, 0);
        if (maskCode == 33 || (first + i > 5 && first + i < largest - 5)) {
          ASSERT_EQ(static_cast<int>(sum), first + i);
        }
        ASSERT_EQ(dst.Get(5 * i + 2, 0), Divided(maskCode, sum)) << "sum " << sum;
      }
    }
  }
}

}  // namespace
}  // namespace norvala_test
