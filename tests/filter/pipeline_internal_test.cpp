#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "filter/filter.h"
#include "filter/pipeline/pipeline.h"

namespace norvala {
namespace {

TEST(PipelineBufferSizeTest, ChecksInOrder) {
  for (const auto& query : {kFilterRowBorderPipelineGetBufferSizeBW8, kFilterColumnPipelineGetBufferSizeBW8}) {
    std::int32_t size = 7;
    EXPECT_EQ(query({0, 0}, 0, nullptr), StatusCode::NullPointer);
    EXPECT_EQ(query({0, 1}, 1, &size), StatusCode::NonPositiveSize);
    EXPECT_EQ(query({1, 0}, 1, &size), StatusCode::NonPositiveSize);
    EXPECT_EQ(query({1, 1}, 0, &size), StatusCode::NonPositiveSize);
    EXPECT_EQ(query({1, 1}, 536870896, &size), StatusCode::NonPositiveSize);  // does not fit
    EXPECT_EQ(size, 7);
    EXPECT_EQ(query({INT32_MAX, INT32_MAX}, 536870895, &size), StatusCode::Success);
    EXPECT_EQ(size, 2147483644);
  }
}

// The arithmetic on each side of every bound; pipeline_test.cpp checks the results there.
TEST(PipelineKernelTest, ChoosesTheNarrowestArithmeticThatServes) {
  using Taps = std::vector<std::int16_t>;
  constexpr auto kWords = Arithmetic::Words, kSingle = Arithmetic::Single, kShift = Arithmetic::Shift,
                 kDouble = Arithmetic::Double;
  constexpr ValueRange kBytes = {0, 255};
  const struct {
    Arithmetic expected;
    Taps taps;
    std::int32_t divisor;
    ValueRange values;
  } cases[] = {
      {kWords, {200, 57}, 3, kBytes},  // sums up to 65535
      {kSingle, {200, 58}, 3, kBytes},
      {kWords, {128, -1}, 3, kBytes},   // signed sums up to 32640
      {kSingle, {129, -1}, 3, kBytes},  // 32895
      {kSingle, {1, -129}, 3, kBytes},
      {kWords, {128}, 1, kBytes},    // twice the sums up to 65280
      {kSingle, {129}, 1, kBytes},   // 65790
      {kWords, {3}, 7, {0, 14563}},  // 43689: the reciprocal of 7 serves sums up to 43690
      {kSingle, {3}, 7, {0, 14564}},
      {kWords, {100, 400, 100}, 600, kBytes},
      {kSingle, {100, 400, 101}, 601, kBytes},
      {kSingle, {20000, 1931}, 1007, kBytes},  // kLargestFloatDividend
      {kDouble, {20000, 1932}, 1007, kBytes},
      {kShift, {20001, 1931}, 64, kBytes},
      {kSingle, {1}, 1007, {-kLargestFloatDividend, 0}},
      {kDouble, {1}, 1007, {-kLargestFloatDividend - 1, 0}},
      {kShift, {1}, 64, {-2147483648LL, 2147483647}},
      {kDouble, {1}, 64, {-2147483649LL, 2147483647}},
      {kDouble, {1}, 64, {-2147483648LL, 2147483648LL}},
      {kDouble, {1}, 49, kBytes},  // 49 * (1.0 / 49) < 1
      {kDouble, {49}, 49 * 2, kBytes},
      {kDouble, {1}, -3, kBytes},
  };
  for (const auto& c : cases) {
    const PipelineKernel kernel(c.taps.data(), static_cast<std::int32_t>(c.taps.size()), c.divisor, c.values,
                                TapLayout::RowPairs);
    EXPECT_EQ(kernel.arithmetic(), c.expected) << c.taps[0] << " / " << c.divisor << " up to " << c.values.high;
  }
  // Longer kernels keep the factor.
  const std::int32_t most = PipelineKernel::kMostKeptTaps;
  const Taps taps(static_cast<std::size_t>(most) + 1, 100);
  EXPECT_EQ(PipelineKernel(taps.data(), most, 100 * most, kBytes, TapLayout::RowPairs).arithmetic(), kWords);
  EXPECT_EQ(PipelineKernel(taps.data(), most + 1, 100 * (most + 1), kBytes, TapLayout::RowPairs).arithmetic(), kSingle);
}

// Every call fails all later checks as well, but for null rows among the others.
TEST(RowPipelineStatusTest, ChecksInOrder) {
  const std::array<BW8, 8> src = {7, 7, 7, 7, 7, 7, 7, 7};
  std::array<std::int16_t, 8> first{};
  std::array<std::int16_t, 8> last{};
  std::int16_t* const rows[] = {first.data(), nullptr, last.data()};
  const std::int16_t taps[] = {1, 1, 1};
  std::array<BW8, 76> buffer;
  const auto filter = kFilterRowBorderPipelineBW8;
  const auto call = [&](std::int32_t srcStep, RegionSize size, std::int32_t kernelSize, std::int32_t anchor,
                        std::int32_t borderType, std::int32_t divisor) {
    return filter(src.data(), srcStep, rows, size, taps, kernelSize, anchor, borderType, 0, divisor, buffer.data());
  };
  EXPECT_EQ(filter(nullptr, 0, rows, {0, 0}, taps, 0, -1, -1, 0, 0, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(filter(src.data(), 0, nullptr, {0, 0}, taps, 0, -1, -1, 0, 0, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(filter(src.data(), 0, rows, {0, 0}, nullptr, 0, -1, -1, 0, 0, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(filter(src.data(), 0, rows, {0, 0}, taps, 0, -1, -1, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(0, {8, 0}, 3, -1, -1, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(0, {0, 3}, 3, -1, -1, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(0, {8, 3}, 0, -1, -1, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(0, {8, 3}, 3, -1, -1, 0), StatusCode::AnchorOutsideKernel);
  EXPECT_EQ(call(0, {8, 3}, 3, 3, -1, 0), StatusCode::AnchorOutsideKernel);
  EXPECT_EQ(call(7, {8, 3}, 3, 1, -1, 0), StatusCode::NonPositiveStep);
  EXPECT_EQ(call(8, {8, 3}, 3, 1, -1, 1), StatusCode::BadArgument);
  EXPECT_EQ(call(8, {8, 3}, 3, 1, 5, 1), StatusCode::BadArgument);
  EXPECT_EQ(call(8, {8, 3}, 3, 1, 1, 0), StatusCode::BadArgument);
  EXPECT_EQ(first, last);
  EXPECT_EQ(call(0x7FFFFFF8, {8, 3}, 3, 1, 1, 2), StatusCode::NullPointer);
  EXPECT_EQ(first, (std::array<std::int16_t, 8>{10, 10, 10, 10, 10, 10, 10, 10}));
  EXPECT_EQ(last, (std::array<std::int16_t, 8>{}));
  EXPECT_EQ(call(8, {8, 1}, 3, 1, 0, 1), StatusCode::Success);
}

TEST(ColumnPipelineStatusTest, ChecksInOrder) {
  const std::array<std::int16_t, 8> row{};
  const std::int16_t* const rows[] = {row.data(), row.data(), row.data(), nullptr};
  std::array<BW8, 16> dst;
  dst.fill(7);
  const std::int16_t taps[] = {1, 1, 1};
  std::array<BW8, 76> buffer;
  const auto filter = kFilterColumnPipelineBW8;
  const auto call = [&](std::int32_t dstStep, RegionSize size, std::int32_t kernelSize, std::int32_t divisor,
                        BW8* work) { return filter(rows, dst.data(), dstStep, size, taps, kernelSize, divisor, work); };
  EXPECT_EQ(filter(nullptr, dst.data(), 0, {0, 0}, taps, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(filter(rows, nullptr, 0, {0, 0}, taps, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(filter(rows, dst.data(), 0, {0, 0}, nullptr, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(0, {8, 0}, 3, 0, nullptr), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(0, {0, 1}, 3, 0, nullptr), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(0, {8, 1}, 0, 0, nullptr), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(7, {8, 2}, 3, 0, nullptr), StatusCode::NonPositiveStep);
  EXPECT_EQ(call(8, {8, 2}, 3, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(8, {8, 2}, 3, 0, buffer.data()), StatusCode::BadArgument);
  EXPECT_EQ(call(8, {8, 2}, 3, 1, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(call(8, {8, INT32_MAX}, INT32_MAX, 1, buffer.data()), StatusCode::NullPointer);
  EXPECT_TRUE(std::all_of(dst.begin(), dst.end(), [](BW8 pixel) { return pixel == 7; }));
  EXPECT_EQ(call(8, {8, 1}, 3, 1, buffer.data()), StatusCode::Success);
}

}  // namespace
}  // namespace norvala
