#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "pixel/pixel.h"
#include "support/checks.h"

namespace norvala {
namespace {

using norvala_test::Check;
using Checks = std::initializer_list<Check<struct Arguments>>;

alignas(8) unsigned char memory[256];

// What the primitives take: images and results in their order, with the steps of the former.
struct Arguments {
  void* image[4] = {memory, memory + 64, memory + 128, memory + 192};
  std::int32_t step[3] = {16, 16, 16};
  RegionSize size = {1, 1};
  RegionSize outer = {3, 3};
  std::int32_t top = 1;
  std::int32_t left = 1;
  FLOAT32 divisor = 2.0F;

  template <class T>
  T* At(int i) const {
    return static_cast<T*>(image[i]);
  }
};

template <int i>
constexpr Check<Arguments> kNull = {StatusCode::NullPointer, [](Arguments& a) { a.image[i] = nullptr; }};
template <int i>
constexpr Check<Arguments> kStep = {StatusCode::NonPositiveStep, [](Arguments& a) { a.step[i] = 0; }};
constexpr Check<Arguments> kWidth = {StatusCode::NonPositiveSize, [](Arguments& a) { a.size.width = 0; }};
constexpr Check<Arguments> kHeight = {StatusCode::NonPositiveSize, [](Arguments& a) { a.size.height = 0; }};

template <class Call>
void Expect(const char* name, Call call, Checks checks) {
  norvala_test::ExpectChecks(name, memory, Arguments(), call, checks);
}

// A primitive of one source and one destination, with what else it takes before or after them.
template <class S, class D, class Table, class... After>
auto FromTo(const Table& table, After... after) {
  return [&table, after...](const Arguments& a) {
    return table(a.At<const S>(0), a.step[0], a.At<D>(1), a.step[1], a.size, after...);
  };
}
template <class T, class Table, class Constant>
auto WithConstant(const Table& table, Constant constant) {
  return [&table, constant](const Arguments& a) {
    return table(constant, a.At<const T>(0), a.step[0], a.At<T>(1), a.step[1], a.size);
  };
}

// The primitives that take any step.
template <class Call>
void ExpectNoStepChecks(const char* name, Call call) {
  const auto withAnySteps = [&](Arguments a) {
    a.step[0] = -1;
    a.step[1] = 0;
    return call(a);
  };
  Expect(name, withAnySteps, {kNull<0>, kNull<1>, kWidth, kHeight});
}

TEST(PixelStatusTest, CopyAddAndGrey) {
  ExpectNoStepChecks("copy 8", FromTo<BW8, BW8>(kCopyBW8));
  ExpectNoStepChecks("copy 16", FromTo<BW16, BW16>(kCopyBW16));
  ExpectNoStepChecks("copy float", FromTo<FLOAT32, FLOAT32>(kCopyFLOAT32));
  ExpectNoStepChecks("add", FromTo<FLOAT32, FLOAT32>(kAddFLOAT32_C1IR));
  ExpectNoStepChecks("grey", FromTo<BW8, BW8>(kRGBToGray_BW8_C3C1R));
}

TEST(PixelStatusTest, SetAndDivide) {
  const Checks checks = {kNull<0>, kWidth, kHeight, kStep<0>};
  Expect(
      "set 8", [](const Arguments& a) { return kSetBW8(1, a.At<BW8>(0), a.step[0], a.size); }, checks);
  Expect(
      "set float", [](const Arguments& a) { return kSetFLOAT32(1, a.At<FLOAT32>(0), a.step[0], a.size); }, checks);
  constexpr auto kZero = StatusCode::DivisionByZero;
  Expect("divide", [](const Arguments& a) { return kDivCFLOAT32_C1IR(a.divisor, a.At<FLOAT32>(0), a.step[0], a.size); },
         {kNull<0>,
          kWidth,
          kHeight,
          kStep<0>,
          {kZero, [](Arguments& a) { a.divisor = -0.0F; }},
          {kZero, [](Arguments& a) { a.divisor = std::numeric_limits<FLOAT32>::quiet_NaN(); }}});
}

TEST(PixelStatusTest, Border) {
  const auto border = [](const char* name, const auto& table, auto pixel) {
    const auto call = [&](const Arguments& a) {
      return table(a.At<decltype(pixel)>(1), a.step[0], a.size, a.outer, a.top, a.left);
    };
    constexpr auto kSize = StatusCode::NonPositiveSize;
    Expect(name, call,
           {kNull<1>,
            kStep<0>,
            kWidth,
            kHeight,
            {kSize, [](Arguments& a) { a.outer.width = 0; }},
            {kSize, [](Arguments& a) { a.outer.height = 0; }},
            {kSize, [](Arguments& a) { a.top = -1; }},
            {kSize, [](Arguments& a) { a.left = -1; }},
            {kSize, [](Arguments& a) { a.outer.width = 1; }},
            {kSize, [](Arguments& a) { a.outer.height = 1; }},
            {kSize, [](Arguments& a) { a.top = INT32_MAX; }},
            {kSize, [](Arguments& a) { a.left = INT32_MAX; }}});
    Arguments none;
    none.outer = none.size;
    none.top = none.left = 0;
    EXPECT_EQ(call(none), StatusCode::Success) << name;
  };
  border("border 8", kCopyReplicateBorderBW8, BW8());
  border("border 16", kCopyReplicateBorderBW16, BW16());
  border("border float", kCopyReplicateBorderFLOAT32, FLOAT32());
}

TEST(PixelStatusTest, Conversions) {
  const Checks checks = {kNull<0>, kNull<1>, kWidth, kHeight, kStep<0>, kStep<1>};
  Expect("float to 8", FromTo<FLOAT32, BW8>(kConvertFLOAT32toBW8, 1), checks);
  Expect("float to 16", FromTo<FLOAT32, BW16>(kConvertFLOAT32toBW16, 0), checks);
  Expect("8 to float", FromTo<BW8, FLOAT32>(kConvertBW8toFLOAT32), checks);
  Expect("8 to 16", FromTo<BW8, BW16>(kConvertBW8toBW16), checks);
  Expect("16 to 8", FromTo<BW16, BW8>(kConvertBW16ToBW8), checks);
  Expect("16 to 32", FromTo<BW16, BW32>(kConvertBW16toBW32), checks);
}

// Steps come before sizes, whatever way the count is served.
TEST(PixelStatusTest, LogicAndShifts) {
  for (const auto& table : {kAndBW32, kOrBW32}) {
    const auto call = [&](const Arguments& a) {
      return table(a.At<BW32>(0), a.step[0], a.At<BW32>(1), a.step[1], a.At<BW32>(2), a.step[2], a.size);
    };
    Expect("and, or", call, {kNull<0>, kNull<1>, kNull<2>, kStep<0>, kStep<1>, kStep<2>, kWidth, kHeight});
  }
  const Checks checks = {kNull<0>, kNull<1>, kStep<0>, kStep<1>, kWidth, kHeight};
  Expect("and constant", WithConstant<BW16>(kAndCBW16, BW16{1}), checks);
  for (const std::uint32_t count : {0U, 4U, 99U}) {
    Expect("right shift 16", WithConstant<BW16>(kRShiftCBW16, count), checks);
    Expect("right shift 32", WithConstant<BW32>(kRShiftCBW32, count), checks);
    Expect("left shift 32", WithConstant<BW32>(kLShiftCBW32, count), checks);
  }
}

TEST(PixelStatusTest, Statistics) {
  const Checks checks = {kNull<1>, kNull<0>, kStep<0>, kWidth, kHeight};
  Expect(
      "mean 8", [](const Arguments& a) { return kMeanBW8_C1R(a.At<BW8>(0), a.step[0], a.size, a.At<FLOAT64>(1)); },
      checks);
  Expect(
      "mean float",
      [](const Arguments& a) { return kMeanFLOAT32_C1R(a.At<FLOAT32>(0), a.step[0], a.size, a.At<FLOAT64>(1), 0); },
      checks);
  Expect("maximum",
         [](const Arguments& a) {
           return kMaxIndx_BW8(a.At<BW8>(0), a.step[0], a.size, a.At<BW8>(1), a.At<std::int32_t>(2),
                               a.At<std::int32_t>(3));
         },
         {kNull<0>, kNull<1>, kNull<2>, kNull<3>, kWidth, kHeight, kStep<0>});
}

// The exports pass one image as both; here source and destination are two.
TEST(ShiftTest, ServesASeparateDestination) {
  const BW16 word = 0x8000;
  const BW32 pixel = 0x80000005;
  for (const std::uint32_t count : {0U, 4U, 99U}) {
    BW16 shiftedWord = 1;
    BW32 right = 1;
    BW32 left = 1;
    kRShiftCBW16(count, &word, 2, &shiftedWord, 2, {1, 1});
    kRShiftCBW32(count, &pixel, 4, &right, 4, {1, 1});
    kLShiftCBW32(count, &pixel, 4, &left, 4, {1, 1});
    EXPECT_EQ(shiftedWord, count == 0 ? 0x8000 : count == 4 ? 0x0800 : 0);
    EXPECT_EQ(right, count == 0 ? pixel : count == 4 ? 0xF8000000 : 0xFFFFFFFF);
    EXPECT_EQ(left, count == 0 ? pixel : count == 4 ? 0x50U : 0U);
  }
}

// Weights of every kind: the usual ones, sums up to 1, sums beyond it, negative ones, and ones that cannot be scaled.
TEST(GreyWeightsTest, AreTakenAsMultiplesOf4096ths) {
  const float huge = 1e30F;
  const float nan = std::numeric_limits<float>::quiet_NaN();
  struct Case {
    FLOAT32 weights[3];
    std::uint32_t scaled[3];
  };
  const Case cases[] = {
      {{0.299F, 0.587F, 0.114F}, {1225, 2404, 467}},
      {{1.0F, 0.0F, 0.0F}, {4096, 0, 0}},
      {{0.25F, 0.5F, 0.25F}, {1024, 2048, 1024}},
      {{0.5F / 4096, 0.49F / 4096, 1.5F / 4096}, {1, 0, 2}},
      {{15.0F / 4096, 31.0F / 4096, 1039.0F / 4096}, {15, 31, 1039}},
      {{0.5F, 0.5F, 0.5F}, {2048, 2048, 2048}},
      {{-1.0F, 1.0F, 2.5F}, {0U - 4095U, 4096, 10240}},
      {{nan, 0.5F, -huge}, {0, 2048, 0}},
      {{huge, -5e5F, 5e5F}, {0, 0U - 2048000000U, 2048000000}},
  };
  std::mt19937 random(1);
  constexpr int kCount = 67;
  std::vector<BW8> src(3 * kCount);
  std::vector<BW8> dst(kCount);
  for (const Case& c : cases) {
    for (BW8& value : src) value = static_cast<BW8>(random());
    ASSERT_EQ(WeighToGray_BW8_C3C1R(src.data(), 0, dst.data(), 0, {kCount, 1}, c.weights), StatusCode::Success);
    for (std::size_t x = 0; x < kCount; ++x) {
      const std::uint32_t sum = src[3 * x] * c.scaled[0] + src[3 * x + 1] * c.scaled[1] + src[3 * x + 2] * c.scaled[2];
      ASSERT_EQ(dst[x], static_cast<BW8>(sum >> 12)) << c.weights[0] << ", pixel " << x;
    }
  }
}

}  // namespace
}  // namespace norvala
