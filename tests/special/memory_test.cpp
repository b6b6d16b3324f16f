#include <gtest/gtest.h>

#include <cstring>

#include "frame/aligned_memory.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

using norvala_test::HeapWatch;

TEST(AlignedMemoryTest, StoresTheRawBlockBeforeTheStart) {
  const HeapWatch heap;
  void* aligned = kMalloc1DBW8(100);
  void* raw;
  std::memcpy(&raw, static_cast<unsigned char*>(aligned) - sizeof raw, sizeof raw);
  const auto distance = static_cast<unsigned char*>(aligned) - static_cast<unsigned char*>(raw);
  EXPECT_GE(distance, static_cast<std::ptrdiff_t>(sizeof raw));
  EXPECT_LE(distance, static_cast<std::ptrdiff_t>(sizeof raw) + 31);
  EXPECT_EQ(heap.live(), 1);
  kFree1D(aligned);
  EXPECT_EQ(heap.live(), 0);
}

TEST(AlignedMemoryTest, RefusesWithoutTheHeapAndFailsWithIt) {
  HeapWatch heap;
  std::int32_t step = 0;
  EXPECT_EQ(kMalloc1DBW8(0), nullptr);
  EXPECT_EQ(kMalloc1DFLOAT32(INT32_MAX), nullptr);
  EXPECT_EQ(kMalloc1DINT32(0x3FFFFFF8), nullptr);  // the elements fit, the bookkeeping does not
  EXPECT_EQ(kMalloc1DFLOAT64(0x20000000), nullptr);
  EXPECT_EQ(kMalloc2DFLOAT32(1, 1, nullptr), nullptr);
  struct Refusal {
    std::int32_t width, height, step;
  };
  // The last two: the rows do not fit, the step does; the step does not fit.
  for (const Refusal r : {Refusal{0, 5, 0}, {5, 0, 0}, {5, INT32_MIN, 0}, {1, INT32_MAX, 32}, {INT32_MAX, 1, 0}}) {
    step = 77;
    EXPECT_EQ(kMalloc2DFLOAT32(r.width, r.height, &step), nullptr);
    EXPECT_EQ(step, r.step) << r.width << "x" << r.height;
  }
  EXPECT_EQ(heap.allocations(), 0);
  heap.FailAt(0);
  EXPECT_EQ(kMalloc1DFLOAT32(8), nullptr);
  heap.FailAt(0);
  EXPECT_EQ(kMalloc2DComplexFLOAT32Number(5, 8, &step), nullptr);
  EXPECT_EQ(step, 64);
  EXPECT_EQ(heap.live(), 0);
}

TEST(AlignedMemoryTest, LevelThreeAllocatesByItself) {
  const auto ownAtThree = [](const auto& table) {
    const auto* entries = table.entries;
    return entries[3] != entries[0] && entries[1] == entries[0] && entries[2] == entries[0] && entries[4] == entries[0];
  };
  EXPECT_TRUE(ownAtThree(kMalloc1DBW8) && ownAtThree(kMalloc1DFLOAT32) && ownAtThree(kMalloc1DINT32));
  EXPECT_TRUE(ownAtThree(kMalloc1DFLOAT64) && ownAtThree(kMalloc2DBW8) && ownAtThree(kMalloc2DFLOAT32));
  EXPECT_TRUE(ownAtThree(kMalloc2DComplexFLOAT32Number) && !ownAtThree(kFree1D));
  const HeapWatch heap;
  std::int32_t step = 0;
  void* image = kMalloc2DBW8.entries[3](33, 2, &step);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image) % kBufferAlignment, 0U);
  EXPECT_EQ(step, 64);
  kFree2D(image);
  EXPECT_EQ(heap.live(), 0);
}

TEST(AlignedVectorTest, OwnsItsBlock) {
  HeapWatch heap;
  {
    AlignedVector<float> a(10);
    ASSERT_TRUE(a);
    AlignedVector<float> b(std::move(a));
    EXPECT_FALSE(a);
    b = AlignedVector<float>(3);
    EXPECT_EQ(heap.live(), 1);
  }
  EXPECT_EQ(heap.live(), 0);
  EXPECT_FALSE(AlignedVector<double>(0));
  EXPECT_FALSE(AlignedVector<float>((std::int64_t{1} << 32) + 5));
  EXPECT_FALSE(AlignedVector<std::int16_t>(INT32_MAX));
  heap.FailAt(0);
  EXPECT_FALSE(AlignedVector<std::int16_t>(10));
}

}  // namespace
}  // namespace norvala
