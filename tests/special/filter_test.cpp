#include "filter/filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <vector>

#include "filter/pyramid/layer.h"
#include "filter/separable/divisor.h"
#ifndef _WIN32
#include <unistd.h>
#endif

namespace norvala {
namespace {

#ifndef _WIN32
// A second later the call has not returned.
TEST(FilterBW8DeathTest, NeverReturnsForTheLowestDivisor) {
  const BW8 src = 1;
  BW8 dst = 77;
  const std::int32_t tap = 1;
  const auto call = [&] {
    alarm(1);
    kFilterRowBW8(&src, 1, &dst, 1, {1, 1}, &tap, 1, 0, INT32_MIN);
  };
  EXPECT_EXIT(call(), testing::KilledBySignal(SIGALRM), "");
}
#endif

// The integer rule against the stated one, at every threshold between two bytes and on both sides of it.
TEST(RoundedDivisionTest, IsTheRuleAtEveryThreshold) {
  for (std::int32_t divisor = 1; divisor <= (1 << 22);
       divisor += divisor <= RoundedDivision::kLargestOther ? 1 : divisor) {
    ASSERT_TRUE(RoundedDivision::Serves(divisor));
    const RoundedDivision division = RoundedDivision::Of(divisor, DeriveDivisorScale(divisor));
    const auto factor = static_cast<double>(static_cast<float>(1.0 / divisor));
    for (std::int32_t byte = 0; byte < 256; ++byte) {
      const std::int32_t threshold = byte * divisor + (divisor + 1) / 2;
      for (std::int32_t sum = std::max(0, threshold - 2); sum <= threshold + 2; ++sum) {
        const int expected = static_cast<int>(std::min(sum * factor + 0.5, 255.0));
        ASSERT_EQ(std::min(255, (sum + division.addend) / divisor), expected) << sum << " / " << divisor;
      }
    }
  }
}

// Windows of one grey level, and one more at some places, whose sums lie on both sides of the middle between two levels
// or, for the 3x3 mask, right there.
TEST(GaussTest, RoundsAtEveryThreshold) {
  struct Case {
    int mask;
    const char* isBrighter;
    int (*step)(int level);
  };
  const auto down = [](int) { return 0; };
  const auto up = [](int) { return 1; };
  const auto toEven = [](int level) { return level % 2; };
  for (const Case& c : {Case{33, "110010000", down},
                        {33, "010110000", toEven},
                        {33, "110110000", up},
                        {55, "1000000100011100000000000", down},
                        {55, "0111111011100011111111111", up}}) {
    for (int level = 0; level < 255; ++level) {
      BW8 window[25];
      for (int i = 0; c.isBrighter[i] != 0; ++i) window[i] = static_cast<BW8>(level + (c.isBrighter[i] - '0'));
      const int side = c.mask / 11;
      BW8 dst = 0;
      ASSERT_EQ(kFilterGauss(window + side * side / 2, side, &dst, 1, {1, 1}, c.mask), StatusCode::Success);
      ASSERT_EQ(dst, level + c.step(level)) << c.isBrighter;
    }
  }
}

// What no export can ask for.
TEST(PyramidTest, KnowsItsElementTypes) {
  const std::int16_t taps[] = {1, 2, 1};
  const auto create = [&](std::int32_t elementType, std::int32_t channels) {
    PyramidLayerState* state = nullptr;
    const StatusCode status = kPyramidLayerDownInitAlloc(&state, {9, 8}, 2, taps, 3, 2, elementType, channels);
    kPyramidLayerDownFree(state);
    return status;
  };
  std::int32_t size = 7;
  for (const int type : {-1, 0, 1, 2, 3, 8, 9, 10}) {
    for (const int channels : {-1, 0, 2, 3, 4}) {
      const auto status = [&](bool isKnown) {
        return channels != 3 ? StatusCode::UnsupportedChannels
               : isKnown     ? StatusCode::Success
                             : StatusCode::UnsupportedDataType;
      };
      EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(11, type, channels, &size), status(type == 1 || type == 2 || type == 9));
      EXPECT_EQ(create(type, channels), status(type == 1 || type == 3 || type == 9));
    }
  }
  // Sizes that do not fit.
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(89478480, 1, 1, &size), StatusCode::Success);
  EXPECT_EQ(size, 89478480 * 24 + 32);
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(89478485, 1, 1, &size), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(INT32_MAX, 1, 3, &size), StatusCode::NonPositiveSize);
}

TEST(PyramidLayerTest, ChecksTheState) {
  const std::int16_t taps[] = {1, 2, 1};
  PyramidLayerState* state = nullptr;
  ASSERT_EQ(kPyramidLayerDownInitAlloc(&state, {10, 10}, 2, taps, 3, 2, 1, 1), StatusCode::Success);
  std::vector<BW8> pixels(256, 7);
  const auto reduce = [&](RegionSize srcSize, RegionSize dstSize) {
    return kPyramidLayerDownBW8(pixels.data(), 16, srcSize, pixels.data(), 16, dstSize, state);
  };
  // Larger than the state was made for.
  EXPECT_EQ(reduce({11, 10}, {6, 5}), StatusCode::NonPositiveSize);
  EXPECT_EQ(reduce({10, 11}, {5, 6}), StatusCode::NonPositiveSize);
  for (const float rate : {1.0F, 10.000001F}) {
    state->rate = rate;
    EXPECT_EQ(reduce({10, 10}, {5, 4}), StatusCode::BadArgument) << rate;
  }
  EXPECT_EQ(pixels, std::vector<BW8>(256, 7));
  kPyramidLayerDownFree(state);
}

}  // namespace
}  // namespace norvala
