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

// The integer division of sums must make what the product with a rounded reciprocal makes.
TEST(PipelineDividerTest, DividesEverySumAsDoublesDo) {
  EXPECT_EQ(Divider(49).largest(), 0U);
  EXPECT_EQ(Divider(3).largest(), 65535U);
  std::vector<std::int32_t> divisors = {1000, 4095, 4096, 4097, 9999, 32767, 32768, 32769, 65535, 65536, 65537};
  for (std::int32_t divisor = 1; divisor <= 600; ++divisor) divisors.push_back(divisor);
  for (const std::int32_t divisor : divisors) {
    const Divider divide(divisor);
    divide.With([&](auto division) {
      for (std::uint32_t sum = 0; sum <= divide.largest(); ++sum) {
        ASSERT_EQ(division(static_cast<std::uint16_t>(sum)), static_cast<int>(sum * (1.0 / divisor)))
            << sum << " / " << divisor;
      }
    });
  }
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
