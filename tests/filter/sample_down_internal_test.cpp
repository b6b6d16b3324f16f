#include <gtest/gtest.h>

#include "filter/filter.h"

namespace norvala {
namespace {

TEST(SampleDownStatusTest, ChecksInOrder) {
  BW8 src[4] = {};
  BW8 dst[1] = {};
  const auto status = [&](const BW8* from, int srcStep, RegionSize srcSize, BW8* to, int dstStep, RegionSize dstSize) {
    return kSampleDownH2V2_JPEGBW8(from, srcStep, srcSize, to, dstStep, dstSize);
  };
  EXPECT_EQ(status(nullptr, 0, {0, 0}, nullptr, 0, {0, 0}), StatusCode::NullPointer);
  EXPECT_EQ(status(src, 0, {0, 0}, nullptr, 0, {0, 0}), StatusCode::NonPositiveStep);
  EXPECT_EQ(status(src, 2, {0, 1}, nullptr, 0, {0, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(status(src, 2, {1, 0}, nullptr, 0, {0, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(status(src, 2, {1, 1}, nullptr, 0, {0, 0}), StatusCode::NullPointer);
  EXPECT_EQ(status(src, 2, {1, 1}, dst, 0, {0, 0}), StatusCode::NonPositiveStep);
  EXPECT_EQ(status(src, 2, {1, 1}, dst, 1, {0, 1}), StatusCode::NonPositiveSize);
  EXPECT_EQ(status(src, 2, {1, 1}, dst, 1, {1, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(status(src, 2, {1, 1}, dst, 1, {1, 1}), StatusCode::Success);
}

}  // namespace
}  // namespace norvala
