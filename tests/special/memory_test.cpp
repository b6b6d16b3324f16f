#include <gtest/gtest.h>

#include "frame/aligned_memory.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

using norvala_test::HeapWatch;

TEST(AlignedMemoryTest, StoresTheRawBlockBeforeTheStart) {
  const HeapWatch heap;
  auto* const aligned = static_cast<unsigned char*>(kMalloc1DBW8(100));
  unsigned char* const raw = reinterpret_cast<unsigned char**>(aligned)[-1];
  EXPECT_LE(static_cast<std::size_t>(aligned - raw) - sizeof raw, 31U);
  EXPECT_EQ(heap.live(), 1);
  kFree1D(aligned);
  EXPECT_EQ(heap.live(), 0);
}

TEST(AlignedMemoryTest, RefusesWithoutTheHeapAndFailsWithIt) {
  HeapWatch heap;
  heap.FailAt(0);
  EXPECT_EQ(kMalloc1DBW8(0), nullptr);
  EXPECT_EQ(kMalloc1DFLOAT32(INT32_MAX), nullptr);
  EXPECT_EQ(kMalloc1DINT32(0x3FFFFFF8), nullptr);  // the elements fit, the bookkeeping does not
  EXPECT_EQ(kMalloc1DFLOAT64(0x20000000), nullptr);
  EXPECT_EQ(kMalloc2DFLOAT32(1, 1, nullptr), nullptr);
  // The step does not fit, or the rows do not; what the heap refuses has its step.
  const int sizes[][3] = {{0, 5, 0}, {5, 0, 0}, {5, INT32_MIN, 0}, {0x20000001, 1, 0}, {1, INT32_MAX, 32}, {9, 8, 64}};
  for (const auto& [width, height, expected] : sizes) {
    EXPECT_EQ(heap.allocations(), 0);
    std::int32_t step = 77;
    EXPECT_EQ(kMalloc2DFLOAT32(width, height, &step), nullptr);
    EXPECT_EQ(step, expected) << width << " x " << height;
  }
  heap.FailAt(0);
  EXPECT_EQ(kMalloc1DFLOAT32(8), nullptr);
  EXPECT_EQ(heap.live(), 0);
}

TEST(AlignedMemoryTest, LevelThreeAllocatesTheSame) {
  std::int32_t step = 0;
  void* const image = kMalloc2DBW8.entries[3](33, 2, &step);
  EXPECT_TRUE(image != nullptr && reinterpret_cast<std::uintptr_t>(image) % kBufferAlignment == 0 && step == 64);
  kFree2D(image);
}

TEST(AlignedVectorTest, OwnsItsBlock) {
  HeapWatch heap;
  AlignedVector<float> a(10);
  ASSERT_TRUE(a);
  AlignedVector<float> b(std::move(a));
  EXPECT_FALSE(a);
  b = AlignedVector<float>(3);
  EXPECT_EQ(heap.live(), 1);
  b = AlignedVector<float>(0);
  EXPECT_EQ(heap.live(), 0);
  EXPECT_FALSE(AlignedVector<double>(0));
  EXPECT_FALSE(AlignedVector<float>((std::int64_t{1} << 32) + 5));
  EXPECT_FALSE(AlignedVector<std::int16_t>(INT32_MAX));
  heap.FailAt(0);
  EXPECT_FALSE(AlignedVector<std::int16_t>(10));
}

}  // namespace
}  // namespace norvala
