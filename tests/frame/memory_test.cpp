#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "norvala.h"

namespace {

bool IsAligned(const void* p) { return reinterpret_cast<std::uintptr_t>(p) % 32 == 0; }

TEST(VersionTest, IsOneConstantText) {
  EXPECT_STREQ(Norvala_GetVersion(), "1.0.0.0");
  EXPECT_EQ(Norvala_GetVersion(), Norvala_GetVersion());
}

// Every vector is aligned and wholly writable, whatever its length.
template <class T>
void ExpectVectors(T* (*allocate)(std::int32_t)) {
  for (const std::int32_t count : {1, 7, 8, 31, 32, 33, 100003}) {
    T* vector = allocate(count);
    ASSERT_NE(vector, nullptr);
    EXPECT_TRUE(IsAligned(vector));
    std::memset(vector, 0x5A, static_cast<std::size_t>(count) * sizeof(T));
    EXPECT_EQ(Norvala_1DFree(vector), 1);
  }
  for (const std::int32_t count : {0, -1, INT32_MIN}) EXPECT_EQ(allocate(count), nullptr);
}

TEST(MemoryTest, VectorsAreAligned) {
  ExpectVectors<BW8>([](std::int32_t n) { return Norvala_1DMallocBW8(n); });
  ExpectVectors<FLOAT32>([](std::int32_t n) { return Norvala_1DMallocFLOAT32(n); });
  ExpectVectors<INT32>([](std::int32_t n) { return Norvala_1DMallocINT32(n); });
  ExpectVectors<FLOAT64>([](std::int32_t n) { return Norvala_1DMallocFLOAT64(n); });
}

TEST(MemoryTest, RefusesByteCountsPast32Bits) {
  EXPECT_EQ(Norvala_1DMallocFLOAT32(INT32_MAX), nullptr);
  EXPECT_EQ(Norvala_1DMallocINT32(0x40000000), nullptr);
  EXPECT_EQ(Norvala_1DMallocINT32(0x3FFFFFF8), nullptr);  // the elements fit, the bookkeeping does not
  EXPECT_EQ(Norvala_1DMallocFLOAT64(0x20000000), nullptr);
}

template <class T>
void ExpectImages(T* (*allocate)(std::int32_t, std::int32_t, std::int32_t*)) {
  for (const std::int32_t width : {1, 3, 4, 5, 8, 9, 31, 32, 33, 1000}) {
    std::int32_t step = -1;
    T* image = allocate(width, 7, &step);
    ASSERT_NE(image, nullptr);
    EXPECT_TRUE(IsAligned(image));
    EXPECT_EQ(step, (width * static_cast<std::int32_t>(sizeof(T)) + 31) / 32 * 32);
    std::memset(image, 0x5A, static_cast<std::size_t>(step) * 7);
    Norvala_2DFree(image);
  }
  EXPECT_EQ(allocate(5, 5, nullptr), nullptr);
  struct Refusal {
    std::int32_t width, height, step;
  };
  // The last two: the rows do not fit, the step does; the step does not fit.
  for (const Refusal r : {Refusal{0, 5, 0}, {5, 0, 0}, {5, -1, 0}, {1, INT32_MAX, 32}, {INT32_MAX, 1, 0}}) {
    std::int32_t step = 77;
    EXPECT_EQ(allocate(r.width, r.height, &step), nullptr);
    EXPECT_EQ(step, r.step) << r.width << "x" << r.height;
  }
}

TEST(MemoryTest, ImagesHaveAlignedRows) {
  ExpectImages<BW8>([](auto... arguments) { return Norvala_2DMallocBW8(arguments...); });
  ExpectImages<FLOAT32>([](auto... arguments) { return Norvala_2DMallocFLOAT32(arguments...); });
  ExpectImages<ComplexFLOAT32Number>(
      [](auto... arguments) { return Norvala_2DMallocComplexFLOAT32Number(arguments...); });
}

TEST(MemoryTest, ReleasingNullDoesNothing) {
  EXPECT_EQ(Norvala_1DFree(nullptr), 1);
  Norvala_2DFree(nullptr);
}

}  // namespace
