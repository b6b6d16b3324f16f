#include <gtest/gtest.h>

#include <array>

#include "pixel/pixel.h"

namespace norvala {
namespace {

TEST(CopyStatusTest, ChecksInOrder) {
  std::array<BW8, 16> a{};
  EXPECT_EQ(kCopyBW8(nullptr, 0, a.data(), 0, {0, 0}), StatusCode::NullPointer);
  EXPECT_EQ(kCopyBW8(a.data(), 0, nullptr, 0, {0, 0}), StatusCode::NullPointer);
  EXPECT_EQ(kCopyBW8(a.data(), 0, a.data(), 0, {0, 1}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCopyBW8(a.data(), -1, a.data(), 0, {1, 1}), StatusCode::Success);
}

TEST(SetStatusTest, ChecksInOrder) {
  std::array<BW8, 16> a{};
  EXPECT_EQ(kSetBW8(1, nullptr, 0, {0, 0}), StatusCode::NullPointer);
  EXPECT_EQ(kSetBW8(1, a.data(), 0, {1, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kSetBW8(1, a.data(), 0, {1, 1}), StatusCode::NonPositiveStep);
  EXPECT_EQ(a[0], 0);
}

TEST(BorderStatusTest, ChecksInOrder) {
  std::array<BW8, 64> a{};
  BW8* inner = a.data() + 9;
  EXPECT_EQ(kCopyReplicateBorderBW8(nullptr, 0, {0, 0}, {0, 0}, -1, -1), StatusCode::NullPointer);
  EXPECT_EQ(kCopyReplicateBorderBW8(inner, 0, {0, 0}, {0, 0}, -1, -1), StatusCode::NonPositiveStep);
  const RegionSize one = {1, 1};
  const RegionSize three = {3, 3};
  EXPECT_EQ(kCopyReplicateBorderBW8(inner, 8, {0, 1}, three, 1, 1), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCopyReplicateBorderBW8(inner, 8, one, {3, 0}, 1, 1), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCopyReplicateBorderBW8(inner, 8, one, three, -1, 1), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCopyReplicateBorderBW8(inner, 8, one, three, 1, 3), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCopyReplicateBorderBW8(inner, 8, one, three, INT32_MAX, 1), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCopyReplicateBorderBW8(inner, 8, one, one, 0, 0), StatusCode::Success);
}

}  // namespace
}  // namespace norvala
