#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "norvala.h"

namespace {

// A failed check of every export, among them sizes and steps that no sum may overflow on: -1, and nothing is written.
TEST(FailureTest, IsMinusOneAndWritesNothing) {
  alignas(8) unsigned char memory[256] = {1, 2, 3};
  const auto* const first = memory;
  BW8* const bytes = memory + 64;
  auto* const words = reinterpret_cast<BW16*>(bytes);
  auto* const pixels = reinterpret_cast<BW32*>(bytes);
  auto* const floats = reinterpret_cast<FLOAT32*>(bytes);
  auto* const mean = reinterpret_cast<FLOAT64*>(memory + 128);
  auto* const place = reinterpret_cast<int32_t*>(memory + 192);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const int results[] = {
      Norvala_CopyBW8(nullptr, 8, bytes, 8, 8, 8),
      Norvala_CopyBW16(words + 1, 8, words, 8, 0, 8),
      Norvala_CopyFLOAT32(floats + 1, 8, floats, 8, 2, INT32_MIN),
      Norvala_SetBW8(7, bytes, 0, 8, 8),
      Norvala_SetFLOAT32(7.0F, floats, 8, INT32_MIN, 8),
      Norvala_CopyReplicateBorderBW8(bytes, 8, 2, 2, INT32_MAX, 4, 1, INT32_MAX),
      Norvala_CopyReplicateBorderBW16(words, 8, 2, 2, 4, INT32_MAX, INT32_MAX, 1),
      Norvala_CopyReplicateBorderFLOAT32(floats, 16, 2, 2, 4, 4, -1, 1),
      Norvala_ConvertFLOAT32toBW8(floats + 8, 8, bytes, 8, 2, INT32_MIN, 1),
      Norvala_ConvertFLOAT32toBW16(floats + 8, INT32_MIN, words, 8, 2, 2, 0),
      Norvala_ConvertBW8toFLOAT32(nullptr, 8, floats, 8, 2, 2),
      Norvala_ConvertBW8toBW16(bytes + 32, 8, words, 0, 2, 2),
      Norvala_ConvertBW16ToBW8(words + 16, 0, bytes, 8, 2, 2),
      Norvala_ConvertBW16toBW32(words + 16, 8, pixels, 8, 0, 2),
      Norvala_AndBW32(pixels, 8, nullptr, 8, pixels, 8, 2, 2),
      Norvala_OrBW32(pixels, 8, pixels + 1, 0, pixels, 8, 2, 2),
      Norvala_AndCBW16(0, words, 0, 2, 2),
      Norvala_RShiftCBW16(16, words, 8, 0, 2),
      Norvala_RShiftCBW32(1, nullptr, 8, 2, 2),
      Norvala_LShiftCBW32(32, pixels, 8, 2, -1),
      Norvala_AddFLOAT32_C1IR(floats, 8, floats, 8, -2, 2),
      Norvala_DivCFLOAT32_C1IR(-0.0F, floats, 8, 2, 2),
      Norvala_DivCFLOAT32_C1IR(nan, floats, 8, 2, 2),
      Norvala_MeanBW8_C1R(bytes, 0, 2, 2, mean),
      Norvala_MeanFLOAT32_C1R(floats, 8, 2, INT32_MIN, mean, 1),
      Norvala_MaxIndx_BW8(bytes, 8, 0, 2, memory, place, place + 1),
      Norvala_RGBToGray_BW8_C3C1R(bytes + 32, 6, bytes, 2, 2, -2),
  };
  for (std::size_t i = 0; i < std::size(results); ++i) EXPECT_EQ(results[i], -1) << "call " << i;
  const unsigned char before[256] = {1, 2, 3};
  EXPECT_TRUE(std::equal(before, before + 256, first));
}

}  // namespace
