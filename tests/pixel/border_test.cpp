#include <gtest/gtest.h>

#include <algorithm>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

int Replicate(BW8* image, int step, RegionSize inner, RegionSize outer, int top, int left) {
  return Norvala_CopyReplicateBorderBW8(image, step, inner.width, inner.height, outer.width, outer.height, top, left);
}
int Replicate(BW16* image, int step, RegionSize inner, RegionSize outer, int top, int left) {
  return Norvala_CopyReplicateBorderBW16(image, step, inner.width, inner.height, outer.width, outer.height, top, left);
}
int Replicate(FLOAT32* image, int step, RegionSize inner, RegionSize outer, int top, int left) {
  return Norvala_CopyReplicateBorderFLOAT32(image, step, inner.width, inner.height, outer.width, outer.height, top,
                                            left);
}

template <class T>
class BorderTest : public testing::Test {};
using BorderTypes = testing::Types<BW8, BW16, FLOAT32>;
TYPED_TEST_SUITE(BorderTest, BorderTypes);

TYPED_TEST(BorderTest, TakesTheNearestInnerPixel) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    const RegionSize inner = {RandomInt(random, 1, 40), RandomInt(random, 1, 12)};
    const int left = RandomInt(random, 0, 9);
    const int top = RandomInt(random, 0, 5);
    const RegionSize outer = {left + inner.width + RandomInt(random, 0, 9),
                              top + inner.height + RandomInt(random, 0, 5)};
    Image<TypeParam> image(outer.width, outer.height, RandomLayout(random),
                           round % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    image.FillRandom(random);
    Image<TypeParam> expected(image);
    for (int y = 0; y < outer.height; ++y) {
      for (int x = 0; x < outer.width; ++x) {
        expected.Set(
            x, y, image.Get(std::clamp(x, left, left + inner.width - 1), std::clamp(y, top, top + inner.height - 1)));
      }
    }
    auto* first =
        reinterpret_cast<TypeParam*>(reinterpret_cast<unsigned char*>(image.data()) + top * image.step()) + left;
    ASSERT_EQ(Replicate(first, image.step(), inner, outer, top, left), 0);
    ASSERT_EQ(image.Bytes(), expected.Bytes());
  }
}

}  // namespace
}  // namespace norvala_test
