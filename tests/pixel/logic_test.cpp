#include <gtest/gtest.h>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

TEST(LogicTest, CombinesTwoImages) {
  Random random(1);
  for (int round = 0; round < 200; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 9);
    const auto layout = [&] { return round % 3 != 0 ? RandomLayout(random) : Layout{}; };
    Image<BW32> a(width, height, layout());
    Image<BW32> b(width, height, layout());
    Image<BW32> dst(width, height, layout());
    a.FillRandom(random);
    b.FillRandom(random);
    Image<BW32> both(dst);
    Image<BW32> either(b);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        both.Set(x, y, a.Get(x, y) & b.Get(x, y));
        either.Set(x, y, a.Get(x, y) | b.Get(x, y));
      }
    }
    ASSERT_EQ(Norvala_AndBW32(a.data(), a.step(), b.data(), b.step(), dst.data(), dst.step(), width, height), 0);
    ASSERT_EQ(dst.Bytes(), both.Bytes());
    // The destination is the second source.
    ASSERT_EQ(Norvala_OrBW32(a.data(), a.step(), b.data(), b.step(), b.data(), b.step(), width, height), 0);
    ASSERT_EQ(b.Bytes(), either.Bytes());
  }
}

// Runs an operation in place on random images and compares every byte.
template <class T, class Call, class Reference>
void CheckInPlace(unsigned seed, Call call, Reference reference) {
  Random random(seed);
  for (int round = 0; round < 40; ++round) {
    Image<T> image(RandomSize(random), RandomInt(random, 1, 9), round % 3 != 0 ? RandomLayout(random) : Layout{});
    image.FillRandom(random);
    Image<T> expected(image);
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) expected.Set(x, y, static_cast<T>(reference(image.Get(x, y))));
    }
    ASSERT_EQ(call(image.data(), image.step(), image.width(), image.height()), 0);
    ASSERT_EQ(image.Bytes(), expected.Bytes());
  }
}

TEST(LogicTest, MasksWithAConstant) {
  for (const BW16 constant : {BW16{0}, BW16{0xFFFF}, BW16{0x8001}, BW16{0x1234}}) {
    CheckInPlace<BW16>(
        2, [&](auto... arguments) { return Norvala_AndCBW16(constant, arguments...); },
        [&](BW16 x) { return x & constant; });
  }
}

// The counts that a caller may give: all in range, the first beyond, and negative ones taken as unsigned.
class ShiftTest : public testing::TestWithParam<std::uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Counts, ShiftTest,
                         testing::Values(0, 1, 7, 8, 14, 15, 16, 17, 30, 31, 32, 33, 64, 0x80000000U, 0xFFFFFFFFU));

TEST_P(ShiftTest, MovesBits) {
  const std::uint32_t count = GetParam();
  CheckInPlace<BW16>(
      3, [&](auto... arguments) { return Norvala_RShiftCBW16(count, arguments...); },
      [&](BW16 x) { return count > 15 ? 0 : x >> count; });
  CheckInPlace<BW32>(
      4, [&](auto... arguments) { return Norvala_RShiftCBW32(count, arguments...); },
      [&](BW32 x) { return static_cast<std::int32_t>(x) >> (count > 31 ? 31 : count); });
  CheckInPlace<BW32>(
      5, [&](auto... arguments) { return Norvala_LShiftCBW32(count, arguments...); },
      [&](BW32 x) { return count > 31 ? 0 : x << count; });
}

TEST(LogicTest, FailuresWriteNothing) {
  Image<BW32> image(4, 4);
  Image<BW16> words(4, 4);
  const auto before = image.Bytes();
  const auto wordsBefore = words.Bytes();
  EXPECT_EQ(Norvala_AndBW32(nullptr, 16, image.data(), 16, image.data(), 16, 4, 4), -1);
  EXPECT_EQ(Norvala_AndBW32(image.data(), 16, nullptr, 16, image.data(), 16, 4, 4), -1);
  EXPECT_EQ(Norvala_OrBW32(image.data(), 16, image.data(), 16, nullptr, 16, 4, 4), -1);
  EXPECT_EQ(Norvala_OrBW32(image.data(), 16, image.data(), 0, image.data(), 16, 4, 4), -1);
  EXPECT_EQ(Norvala_AndCBW16(0, words.data(), 0, 4, 4), -1);
  EXPECT_EQ(Norvala_RShiftCBW16(16, words.data(), 8, 0, 4), -1);
  EXPECT_EQ(Norvala_RShiftCBW32(3, nullptr, 16, 4, 4), -1);
  EXPECT_EQ(Norvala_LShiftCBW32(32, image.data(), 16, 4, -1), -1);
  EXPECT_EQ(image.Bytes(), before);
  EXPECT_EQ(words.Bytes(), wordsBefore);
}

}  // namespace
}  // namespace norvala_test
