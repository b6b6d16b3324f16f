#include <gtest/gtest.h>

#include <array>

#include "filter/filter.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

TEST(GaussStatusTest, ChecksInOrderAndKeepsOneVectorPerCall) {
  const std::array<BW8, 25> src{};
  const BW8* const middle = src.data() + 12;
  BW8 dst = 7;
  norvala_test::HeapWatch heap;
  EXPECT_EQ(kFilterGauss(nullptr, 0, &dst, 0, {0, 0}, 35), StatusCode::NullPointer);
  EXPECT_EQ(kFilterGauss(middle, 0, nullptr, 0, {0, 0}, 35), StatusCode::NullPointer);
  EXPECT_EQ(kFilterGauss(middle, 0, &dst, 0, {0, 1}, 35), StatusCode::NonPositiveSize);
  EXPECT_EQ(kFilterGauss(middle, 0, &dst, 0, {1, 0}, 35), StatusCode::NonPositiveSize);
  EXPECT_EQ(kFilterGauss(middle, 0, &dst, 1, {1, 1}, 35), StatusCode::NonPositiveStep);
  EXPECT_EQ(kFilterGauss(middle, 5, &dst, 0, {1, 1}, 35), StatusCode::NonPositiveStep);
  for (const std::int32_t mask : {0, 3, 35, 53, INT32_MIN}) {
    EXPECT_EQ(kFilterGauss(middle, 5, &dst, 1, {1, 1}, mask), StatusCode::UnsupportedMask);
  }
  for (const std::int32_t mask : {33, 55}) {
    dst = 7;
    heap.FailAt(0);
    // More than a vector can hold, and more than there is.
    EXPECT_EQ(kFilterGauss(middle, 5, &dst, 1, {INT32_MAX, 1}, mask), StatusCode::WorkBufferUnavailable);
    EXPECT_EQ(kFilterGauss(middle, 5, &dst, 1, {1, 1}, mask), StatusCode::WorkBufferUnavailable);
    EXPECT_EQ(dst, 7);
    heap.FailAt(-1);
    EXPECT_EQ(kFilterGauss(middle, 5, &dst, 1, {1, 1}, mask), StatusCode::Success);
    EXPECT_EQ(dst, 0);
    EXPECT_EQ(heap.allocations(), 1);
    EXPECT_EQ(heap.live(), 0);
  }
}

}  // namespace
}  // namespace norvala
