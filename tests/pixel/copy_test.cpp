#include <gtest/gtest.h>

#include <bit>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

int Copy(const BW8* src, int srcStep, BW8* dst, int dstStep, int width, int height) {
  return Norvala_CopyBW8(src, srcStep, dst, dstStep, width, height);
}
int Copy(const BW16* src, int srcStep, BW16* dst, int dstStep, int width, int height) {
  return Norvala_CopyBW16(src, srcStep, dst, dstStep, width, height);
}
int Copy(const FLOAT32* src, int srcStep, FLOAT32* dst, int dstStep, int width, int height) {
  return Norvala_CopyFLOAT32(src, srcStep, dst, dstStep, width, height);
}

int Set(BW8 value, BW8* dst, int step, int width, int height) {
  return Norvala_SetBW8(value, dst, step, width, height);
}
int Set(FLOAT32 value, FLOAT32* dst, int step, int width, int height) {
  return Norvala_SetFLOAT32(value, dst, step, width, height);
}

template <class T>
class CopyTest : public testing::Test {};
using CopyTypes = testing::Types<BW8, BW16, FLOAT32>;
TYPED_TEST_SUITE(CopyTest, CopyTypes);

TYPED_TEST(CopyTest, CopiesTheRegionAndNothingElse) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 20);
    Image<TypeParam> src(width, height, RandomLayout(random));
    Image<TypeParam> dst(width, height, RandomLayout(random));
    src.FillRandom(random);
    Image<TypeParam> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) expected.Set(x, y, src.Get(x, y));
    }
    ASSERT_EQ(Copy(src.data(), src.step(), dst.data(), dst.step(), width, height), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height;
  }
}

// Every distance between source and destination that makes rows overlap, forwards and backwards, and steps that make
// the rows of one image overlap each other.
TYPED_TEST(CopyTest, OverlapsAsPixelByPixelForwards) {
  constexpr int kSize = sizeof(TypeParam);
  for (int width : {1, 5, 40}) {
    for (int distance = -45 * kSize; distance <= 45 * kSize; ++distance) {
      for (int step : {0, -3, 7, width * kSize}) {
        constexpr int kHeight = 3;
        constexpr int kOrigin = 400;
        std::vector<unsigned char> actual(1200);
        for (std::size_t i = 0; i < actual.size(); ++i) actual[i] = static_cast<unsigned char>(i * 7);
        std::vector<unsigned char> expected = actual;
        for (int y = 0; y < kHeight; ++y) {
          for (int x = 0; x < width; ++x) {
            unsigned char pixel[kSize];
            std::memcpy(pixel, &expected[static_cast<std::size_t>(kOrigin + y * step + x * kSize)], kSize);
            std::memcpy(&expected[static_cast<std::size_t>(kOrigin + distance + y * step + x * kSize)], pixel, kSize);
          }
        }
        auto* src = reinterpret_cast<TypeParam*>(actual.data() + kOrigin);
        auto* dst = reinterpret_cast<TypeParam*>(actual.data() + kOrigin + distance);
        ASSERT_EQ(Copy(src, step, dst, step, width, kHeight), 0);
        ASSERT_EQ(actual, expected) << "width " << width << " distance " << distance << " step " << step;
      }
    }
  }
}

TYPED_TEST(CopyTest, StepZeroLeavesTheLastRow) {
  Image<TypeParam> src(9, 4);
  Image<TypeParam> dst(9, 1);
  Random random(2);
  src.FillRandom(random);
  ASSERT_EQ(Copy(src.data(), src.step(), dst.data(), 0, 9, 4), 0);
  for (int x = 0; x < 9; ++x) {
    EXPECT_EQ(std::memcmp(src.data() + 27 + x, dst.data() + x, sizeof(TypeParam)), 0);
  }
}

template <class T>
class SetTest : public testing::Test {};
using SetTypes = testing::Types<BW8, FLOAT32>;
TYPED_TEST_SUITE(SetTest, SetTypes);

TYPED_TEST(SetTest, FillsTheRegionAndNothingElse) {
  Random random(3);
  for (int round = 0; round < 200; ++round) {
    Image<TypeParam> dst(RandomSize(random), RandomInt(random, 1, 20), RandomLayout(random));
    const auto value = RandomValue<TypeParam>(random);
    Image<TypeParam> expected(dst);
    expected.Fill([&] { return value; });
    ASSERT_EQ(Set(value, dst.data(), dst.step(), dst.width(), dst.height()), 0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes());
  }
}

TEST(SetFloatTest, KeepsASignallingNaN) {
  constexpr std::uint32_t kSignalling = 0x7F812345;
  Image<FLOAT32> dst(21, 3, {0, 5, 1});
  Image<std::uint32_t> expected(21, 3, {0, 5, 1});
  expected.Fill([] { return kSignalling; });
  float signalling;
  std::memcpy(&signalling, &kSignalling, sizeof signalling);
  ASSERT_EQ(Norvala_SetFLOAT32(signalling, dst.data(), dst.step(), 21, 3), 0);
  EXPECT_EQ(dst.Bytes(), expected.Bytes());
}

TEST(CopyFailureTest, WritesNothing) {
  Image<BW8> image(8, 8);
  const auto before = image.Bytes();
  EXPECT_EQ(Norvala_CopyBW8(nullptr, 8, image.data(), 8, 8, 8), -1);
  EXPECT_EQ(Norvala_CopyBW8(image.data(), 8, nullptr, 8, 8, 8), -1);
  EXPECT_EQ(Norvala_CopyBW8(image.data() + 1, 8, image.data(), 8, 0, 8), -1);
  EXPECT_EQ(Norvala_CopyBW8(image.data() + 1, 8, image.data(), 8, 7, -1), -1);
  EXPECT_EQ(Norvala_SetBW8(1, nullptr, 8, 8, 8), -1);
  EXPECT_EQ(Norvala_SetBW8(1, image.data(), 0, 8, 8), -1);
  EXPECT_EQ(Norvala_SetBW8(1, image.data(), 8, INT32_MIN, 8), -1);
  EXPECT_EQ(Norvala_CopyReplicateBorderBW8(image.data() + 9, 8, 2, 2, 3, 4, 1, 2), -1);
  EXPECT_EQ(Norvala_CopyReplicateBorderBW8(image.data() + 9, 8, 2, 2, 4, 2, 1, 1), -1);
  EXPECT_EQ(Norvala_CopyReplicateBorderBW8(image.data() + 9, 8, 2, 2, INT32_MAX, 4, 1, INT32_MAX), -1);
  EXPECT_EQ(Norvala_CopyReplicateBorderBW8(image.data() + 9, 8, 2, 2, 4, 4, -1, 1), -1);
  EXPECT_EQ(image.Bytes(), before);
}

}  // namespace
}  // namespace norvala_test
