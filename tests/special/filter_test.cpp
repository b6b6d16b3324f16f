#include "filter/filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <numeric>
#include <utility>
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

// Every sum that a window can make: a flat one, and pixels one brighter whose weights add up to the rest.
TEST(GaussTest, RoundsEverySum) {
  static constexpr int kWeights3[] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
  static constexpr int kWeights5[] = {2,  7,  12, 7,  2,  7,  31, 52, 31, 7,  12, 52, 127,
                                      52, 12, 7,  31, 52, 31, 7,  2,  7,  12, 7,  2};
  const auto check = [](const auto& weights, int side, int mask, auto expected) {
    const int total = std::accumulate(std::begin(weights), std::end(weights), 0);
    BW8 brighter[572][25] = {};
    bool isMade[572] = {true};
    for (int i = 0; i < side * side; ++i) {
      for (int rest = total; rest >= weights[i]; --rest) {
        if (isMade[rest] || !isMade[rest - weights[i]]) continue;
        isMade[rest] = true;
        std::copy_n(brighter[rest - weights[i]], 25, brighter[rest]);
        brighter[rest][i] = 1;
      }
    }
    for (int sum = 0; sum < total * 255; ++sum) {
      const int rest = sum % total;
      BW8 window[25];
      for (int i = 0; i < 25; ++i) window[i] = static_cast<BW8>(sum / total + brighter[rest][i]);
      BW8 dst = 0;
      ASSERT_EQ(kFilterGauss(window + side * side / 2, side, &dst, 1, {1, 1}, mask), StatusCode::Success);
      ASSERT_TRUE(!isMade[rest] || dst == expected(sum)) << sum;
    }
  };
  check(kWeights3, 3, 33, [](int sum) { return (sum + (sum / 16 & 1) + 7) / 16; });
  check(kWeights5, 5, 55, [](int sum) { return (sum * 2 + 571) / (2 * 571); });
}

// What no export can ask for.
TEST(PyramidTest, KnowsItsElementTypes) {
  std::int32_t size = 7;
  PyramidLayerState* state = nullptr;
  const std::int16_t taps[] = {1, 2, 1};
  const auto create = [&](std::int32_t elementType, std::int32_t channels) {
    const StatusCode status = kPyramidLayerDownInitAlloc(&state, {9, 8}, 2, taps, 3, 2, elementType, channels);
    kPyramidLayerDownFree(std::exchange(state, nullptr));
    return status;
  };
  for (const int type : {-1, 0, 1, 2, 3, 8, 9, 10}) {
    const auto status = [&](bool isKnown) { return isKnown ? StatusCode::Success : StatusCode::UnsupportedDataType; };
    EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(11, type, 3, &size), status(type == 1 || type == 2 || type == 9));
    EXPECT_EQ(create(type, 3), status(type == 1 || type == 3 || type == 9));
    for (const int channels : {-1, 0, 2, 4}) {
      EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(11, type, channels, &size), StatusCode::UnsupportedChannels);
      EXPECT_EQ(create(type, channels), StatusCode::UnsupportedChannels);
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
