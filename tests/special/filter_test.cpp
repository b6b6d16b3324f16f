#include "filter/filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <tuple>
#include <vector>

#include "filter/pyramid/layer.h"
#include "filter/separable/bw8.h"
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
    const DivisorScale scale = DeriveDivisorScale(divisor);
    const bool isPower = RoundedDivision::IsPowerOfTwo(divisor);
    const int mode = !isPower ? 2 : divisor > 1 ? 1 : 0;
    ASSERT_EQ(std::tuple(scale.mode, scale.shift, scale.addend),
              std::tuple(mode, isPower ? std::ilogb(divisor) : 0, isPower ? divisor / 2 : 0));
    const RoundedDivision division = RoundedDivision::Of(divisor, scale);
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

// Values of which words hold twice as much, and one more.
TEST(PipelineTest, AddsOppositeValuesThatFitAWord) {
  for (const int value : {16383, 16384, -16384, -16385}) {
    const auto sign = static_cast<std::int16_t>(value < 0 ? -1 : 1);
    const std::int16_t kernel[] = {sign, static_cast<std::int16_t>(200 * sign), sign};
    const std::vector<std::int16_t> row(16, static_cast<std::int16_t>(value));
    const std::int16_t* const rows[] = {row.data(), row.data(), row.data()};
    BW8 dst[16];
    BW8 buffer[4 * 3 + 64];
    ASSERT_EQ(kFilterColumnPipelineBW8(rows, dst, 16, {16, 1}, kernel, 3, 13131, buffer), StatusCode::Success);
    for (const BW8 pixel : dst) EXPECT_EQ(pixel, value * sign * 202 / 13131) << value;
  }
}

// The lines of a layer lie one behind the other, up to the end of the area that is reserved for them.
TEST(PyramidLayerTest, LinesFillTheirArea) {
  for (const std::int32_t width : {1, 8, 9, 300}) {
    std::vector<std::uint8_t> area(static_cast<std::size_t>(LayerLines::ByteCount(width, 17)));
    const LayerLines lines(area.data(), width, 17);
    EXPECT_EQ(reinterpret_cast<std::uint8_t*>(lines.fine + lines.columns), area.data() + area.size()) << width;
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

}  // namespace
}  // namespace norvala
