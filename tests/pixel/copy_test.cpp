#include <bit>
#include <cstring>

#include "norvala.h"
#include "pixel/pixelwise.h"

namespace norvala_test {
namespace {

int Copy(const BW8* src, int srcStep, BW8* dst, int dstStep, int width, int height) {
  return Norvala_CopyBW8(src, srcStep, dst, dstStep, width, height);
}
int Copy(const BW16* src, int srcStep, BW16* dst, int dstStep, int width, int height) {
  return Norvala_CopyBW16(src, srcStep, dst, dstStep, width, height);
}
// Floats as the bits that must survive.
int Copy(const BW32* src, int srcStep, BW32* dst, int dstStep, int width, int height) {
  return Norvala_CopyFLOAT32(reinterpret_cast<const FLOAT32*>(src), srcStep, reinterpret_cast<FLOAT32*>(dst), dstStep,
                             width, height);
}

template <class T>
class CopyTest : public testing::Test {};
using CopyTypes = testing::Types<BW8, BW16, BW32>;
TYPED_TEST_SUITE(CopyTest, CopyTypes);

TYPED_TEST(CopyTest, CopiesTheRegionAndNothingElse) {
  CheckPixelwise<TypeParam, TypeParam>(
      300, [](auto... arguments) { return Copy(arguments...); }, [](TypeParam pixel, TypeParam) { return pixel; });
}

// Every distance between source and destination that makes rows overlap, forwards and backwards, and steps that make
// the rows of one image overlap each other or be one row.
TYPED_TEST(CopyTest, OverlapsAsPixelByPixelForwards) {
  constexpr int kSize = sizeof(TypeParam);
  constexpr int kHeight = 3;
  constexpr int kOrigin = 400;
  for (const int width : {1, 5, 40}) {
    for (int distance = -45 * kSize; distance <= 45 * kSize; ++distance) {
      for (const int step : {0, -3, 7, width * kSize}) {
        std::vector<unsigned char> actual(1200);
        for (std::size_t i = 0; i < actual.size(); ++i) actual[i] = static_cast<unsigned char>(i * 7);
        std::vector<unsigned char> expected = actual;
        for (int y = 0; y < kHeight; ++y) {
          for (int x = 0; x < width; ++x) {
            unsigned char* const pixel = expected.data() + kOrigin + y * step + x * kSize;
            std::memmove(pixel + distance, pixel, kSize);
          }
        }
        auto* src = reinterpret_cast<TypeParam*>(actual.data() + kOrigin);
        auto* dst = reinterpret_cast<TypeParam*>(actual.data() + kOrigin + distance);
        ASSERT_EQ(Copy(src, step, dst, step, width, kHeight), 0);
        ASSERT_EQ(actual, expected) << "width " << width << " distance " << distance << " step " << step;
      }
    }
  }
}

TEST(SetTest, FillsTheRegionWithAnyBits) {
  for (const std::uint32_t bits : {0x00000000U, 0x80000000U, 0x12345678U, 0x7F812345U}) {  // the last signals
    CheckPixelwise<BW8>(
        50, [&](auto... arguments) { return Norvala_SetBW8(static_cast<BW8>(bits), arguments...); },
        [&](BW8) { return static_cast<BW8>(bits); });
    CheckPixelwise<BW32>(
        50,
        [&](BW32* dst, auto... arguments) {
          return Norvala_SetFLOAT32(std::bit_cast<FLOAT32>(bits), reinterpret_cast<FLOAT32*>(dst), arguments...);
        },
        [&](BW32) { return bits; });
  }
}

}  // namespace
}  // namespace norvala_test
