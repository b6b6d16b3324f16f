#include <gtest/gtest.h>

#include <array>

#include "filter/filter.h"

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

TEST(RowPipelineStatusTest, ChecksInOrder) {
  const std::array<BW8, 8> src{};
  std::array<std::int16_t, 8> row{};
  std::int16_t* const rows[] = {row.data()};
  std::int16_t* const none[] = {nullptr};
  const std::int16_t taps[] = {1, 1, 1};
  std::array<BW8, 76> buffer;
  const auto call = kFilterRowBorderPipelineBW8;
  EXPECT_EQ(call(nullptr, 0, rows, {0, 0}, taps, 0, -1, -1, 0, 0, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(call(src.data(), 0, nullptr, {0, 0}, taps, 0, -1, -1, 0, 0, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(call(src.data(), 0, rows, {0, 0}, nullptr, 0, -1, -1, 0, 0, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(call(src.data(), 0, rows, {0, 0}, taps, 0, -1, -1, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(src.data(), 0, rows, {8, 0}, taps, 3, -1, -1, 0, 0, buffer.data()), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(src.data(), 0, rows, {0, 1}, taps, 3, -1, -1, 0, 0, buffer.data()), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(src.data(), 0, rows, {8, 1}, taps, 0, -1, -1, 0, 0, buffer.data()), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(src.data(), 0, rows, {8, 1}, taps, 3, -1, -1, 0, 0, buffer.data()), StatusCode::AnchorOutsideKernel);
  EXPECT_EQ(call(src.data(), 0, rows, {8, 1}, taps, 3, 3, -1, 0, 0, buffer.data()), StatusCode::AnchorOutsideKernel);
  EXPECT_EQ(call(src.data(), 7, rows, {8, 1}, taps, 3, 1, -1, 0, 0, buffer.data()), StatusCode::NonPositiveStep);
  EXPECT_EQ(call(src.data(), 8, rows, {8, 1}, taps, 3, 1, -1, 0, 1, buffer.data()), StatusCode::BadArgument);
  EXPECT_EQ(call(src.data(), 8, rows, {8, 1}, taps, 3, 1, 5, 0, 1, buffer.data()), StatusCode::BadArgument);
  EXPECT_EQ(call(src.data(), 8, none, {8, 1}, taps, 3, 1, 0, 0, 0, buffer.data()), StatusCode::BadArgument);
  EXPECT_EQ(call(src.data(), 8, none, {8, 1}, taps, 3, 1, 0, 0, 1, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(call(src.data(), 8, rows, {8, 1}, taps, 3, 1, 0, 0, 1, buffer.data()), StatusCode::Success);
}

TEST(ColumnPipelineStatusTest, ChecksInOrder) {
  const std::array<std::int16_t, 8> row{};
  const std::int16_t* const rows[] = {row.data(), row.data(), row.data()};
  const std::int16_t* const holed[] = {row.data(), row.data(), nullptr};
  std::array<BW8, 8> dst{};
  const std::int16_t taps[] = {1, 1, 1};
  std::array<BW8, 76> buffer;
  const auto call = kFilterColumnPipelineBW8;
  EXPECT_EQ(call(nullptr, dst.data(), 0, {0, 0}, taps, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(rows, nullptr, 0, {0, 0}, taps, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(rows, dst.data(), 0, {0, 0}, nullptr, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(rows, dst.data(), 0, {8, 0}, taps, 3, 0, nullptr), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(rows, dst.data(), 0, {0, 1}, taps, 3, 0, nullptr), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(rows, dst.data(), 0, {8, 1}, taps, 0, 0, nullptr), StatusCode::NonPositiveSize);
  EXPECT_EQ(call(rows, dst.data(), 7, {8, 1}, taps, 3, 0, nullptr), StatusCode::NonPositiveStep);
  EXPECT_EQ(call(rows, dst.data(), 8, {8, 1}, taps, 3, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(call(holed, dst.data(), 8, {8, 1}, taps, 3, 0, buffer.data()), StatusCode::BadArgument);
  EXPECT_EQ(call(holed, dst.data(), 8, {8, 1}, taps, 3, 1, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(call(holed, dst.data(), 8, {8, INT32_MAX}, taps, INT32_MAX, 1, buffer.data()), StatusCode::NullPointer);
  EXPECT_EQ(call(rows, dst.data(), 8, {8, 1}, taps, 3, 1, buffer.data()), StatusCode::Success);
}

}  // namespace
}  // namespace norvala
