#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "pixel/pixel.h"
#include "support/checks.h"

namespace norvala {
namespace {

using norvala_test::Check;
using norvala_test::ExpectChecks;

alignas(8) unsigned char memory[256];

// What the primitives take. The images are the sources, then the destination.
struct Arguments {
  void* image[3] = {memory, memory + 64, memory + 128};
  std::int32_t step[3] = {16, 16, 16};
  RegionSize size = {1, 1};
  RegionSize outer = {3, 3};
  std::int32_t top = 1;
  std::int32_t left = 1;
  FLOAT32 divisor = 2.0F;
  FLOAT64* mean = reinterpret_cast<FLOAT64*>(memory + 192);
  BW8* maximum = memory + 192;
  std::int32_t* column = reinterpret_cast<std::int32_t*>(memory + 196);
  std::int32_t* row = reinterpret_cast<std::int32_t*>(memory + 200);
};

template <int i>
constexpr Check<Arguments> kNull = {StatusCode::NullPointer, [](Arguments& a) { a.image[i] = nullptr; }};
template <int i>
constexpr Check<Arguments> kStep = {StatusCode::NonPositiveStep, [](Arguments& a) { a.step[i] = 0; }};
constexpr Check<Arguments> kWidth = {StatusCode::NonPositiveSize, [](Arguments& a) { a.size.width = 0; }};
constexpr Check<Arguments> kHeight = {StatusCode::NonPositiveSize, [](Arguments& a) { a.size.height = 0; }};

// Steps that no check looks at.
constexpr Arguments WithAnySteps() {
  Arguments arguments;
  arguments.step[0] = -1;
  arguments.step[1] = 0;
  return arguments;
}

// Calls a primitive of one source and one destination, with what else it takes before and after them.
template <class S, class D, class Table, class... After>
auto FromTo(const Table& table, After... after) {
  return [&table, after...](const Arguments& a) {
    return table(static_cast<const S*>(a.image[0]), a.step[0], static_cast<D*>(a.image[1]), a.step[1], a.size,
                 after...);
  };
}

// Calls a primitive that takes a constant, a source and a destination.
template <class T, class Table, class Constant>
auto WithConstant(const Table& table, Constant constant) {
  return [&table, constant](const Arguments& a) {
    return table(constant, static_cast<const T*>(a.image[0]), a.step[0], static_cast<T*>(a.image[1]), a.step[1],
                 a.size);
  };
}

TEST(PixelStatusTest, CopySetAndBorder) {
  const auto copy = [](const char* name, auto call) {
    ExpectChecks(name, memory, WithAnySteps(), call, {kNull<0>, kNull<1>, kWidth, kHeight});
  };
  copy("copy 8", FromTo<BW8, BW8>(kCopyBW8));
  copy("copy 16", FromTo<BW16, BW16>(kCopyBW16));
  copy("copy float", FromTo<FLOAT32, FLOAT32>(kCopyFLOAT32));

  const auto set = [](const char* name, auto call) {
    ExpectChecks(name, memory, Arguments(), call, {kNull<0>, kWidth, kHeight, kStep<0>});
  };
  set("set 8", [](const Arguments& a) { return kSetBW8(1, static_cast<BW8*>(a.image[0]), a.step[0], a.size); });
  set("set float",
      [](const Arguments& a) { return kSetFLOAT32(1, static_cast<FLOAT32*>(a.image[0]), a.step[0], a.size); });

  const auto border = [](const char* name, const auto& table, auto pixel) {
    const auto call = [&](const Arguments& a) {
      return table(static_cast<decltype(pixel)*>(a.image[1]), a.step[0], a.size, a.outer, a.top, a.left);
    };
    constexpr auto kSize = StatusCode::NonPositiveSize;
    ExpectChecks(name, memory, Arguments(), call,
                 {kNull<1>,
                  kStep<0>,
                  kWidth,
                  kHeight,
                  {kSize, [](Arguments& a) { a.outer.width = 0; }},
                  {kSize, [](Arguments& a) { a.outer.height = 0; }},
                  {kSize, [](Arguments& a) { a.top = -1; }},
                  {kSize, [](Arguments& a) { a.left = -1; }},
                  {kSize, [](Arguments& a) { a.outer.width = a.left + a.size.width - 1; }},
                  {kSize, [](Arguments& a) { a.outer.height = a.top + a.size.height - 1; }},
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
  const auto convert = [](const char* name, auto call) {
    ExpectChecks(name, memory, Arguments(), call, {kNull<0>, kNull<1>, kWidth, kHeight, kStep<0>, kStep<1>});
  };
  convert("float to 8", FromTo<FLOAT32, BW8>(kConvertFLOAT32toBW8, 1));
  convert("float to 16", FromTo<FLOAT32, BW16>(kConvertFLOAT32toBW16, 0));
  convert("8 to float", FromTo<BW8, FLOAT32>(kConvertBW8toFLOAT32));
  convert("8 to 16", FromTo<BW8, BW16>(kConvertBW8toBW16));
  convert("16 to 8", FromTo<BW16, BW8>(kConvertBW16ToBW8));
  convert("16 to 32", FromTo<BW16, BW32>(kConvertBW16toBW32));
}

// Steps come before sizes, whatever way the count is served.
TEST(PixelStatusTest, LogicAndShifts) {
  for (const auto& table : {kAndBW32, kOrBW32}) {
    const auto call = [&](const Arguments& a) {
      return table(static_cast<const BW32*>(a.image[0]), a.step[0], static_cast<const BW32*>(a.image[1]), a.step[1],
                   static_cast<BW32*>(a.image[2]), a.step[2], a.size);
    };
    ExpectChecks("and, or", memory, Arguments(), call,
                 {kNull<0>, kNull<1>, kNull<2>, kStep<0>, kStep<1>, kStep<2>, kWidth, kHeight});
  }
  const auto constant = [](const char* name, auto call) {
    ExpectChecks(name, memory, Arguments(), call, {kNull<0>, kNull<1>, kStep<0>, kStep<1>, kWidth, kHeight});
  };
  constant("and constant", WithConstant<BW16>(kAndCBW16, BW16{1}));
  for (const std::uint32_t count : {0U, 4U, 99U}) {
    constant("right shift 16", WithConstant<BW16>(kRShiftCBW16, count));
    constant("right shift 32", WithConstant<BW32>(kRShiftCBW32, count));
    constant("left shift 32", WithConstant<BW32>(kLShiftCBW32, count));
  }
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

TEST(PixelStatusTest, ArithmeticStatisticsAndGrey) {
  ExpectChecks("add", memory, WithAnySteps(), FromTo<FLOAT32, FLOAT32>(kAddFLOAT32_C1IR),
               {kNull<0>, kNull<1>, kWidth, kHeight});
  ExpectChecks("grey", memory, WithAnySteps(), FromTo<BW8, BW8>(kRGBToGray_BW8_C3C1R),
               {kNull<0>, kNull<1>, kWidth, kHeight});
  constexpr auto kZero = StatusCode::DivisionByZero;
  ExpectChecks("divide", memory, Arguments(),
               [](const Arguments& a) {
                 return kDivCFLOAT32_C1IR(a.divisor, static_cast<FLOAT32*>(a.image[0]), a.step[0], a.size);
               },
               {kNull<0>,
                kWidth,
                kHeight,
                kStep<0>,
                {kZero, [](Arguments& a) { a.divisor = -0.0F; }},
                {kZero, [](Arguments& a) { a.divisor = std::numeric_limits<FLOAT32>::quiet_NaN(); }}});
  const auto mean = [](const char* name, auto call) {
    ExpectChecks(
        name, memory, Arguments(), call,
        {{StatusCode::NullPointer, [](Arguments& a) { a.mean = nullptr; }}, kNull<0>, kStep<0>, kWidth, kHeight});
  };
  mean("mean 8",
       [](const Arguments& a) { return kMeanBW8_C1R(static_cast<const BW8*>(a.image[0]), a.step[0], a.size, a.mean); });
  mean("mean float", [](const Arguments& a) {
    return kMeanFLOAT32_C1R(static_cast<const FLOAT32*>(a.image[0]), a.step[0], a.size, a.mean, 0);
  });
  constexpr auto kNoResult = StatusCode::NullPointer;
  ExpectChecks("maximum", memory, Arguments(),
               [](const Arguments& a) {
                 return kMaxIndx_BW8(static_cast<const BW8*>(a.image[0]), a.step[0], a.size, a.maximum, a.column,
                                     a.row);
               },
               {kNull<0>,
                {kNoResult, [](Arguments& a) { a.maximum = nullptr; }},
                {kNoResult, [](Arguments& a) { a.column = nullptr; }},
                {kNoResult, [](Arguments& a) { a.row = nullptr; }},
                kWidth,
                kHeight,
                kStep<0>});
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
