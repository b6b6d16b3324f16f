#include <gtest/gtest.h>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

constexpr auto ReplicateOf(BW8) { return &Norvala_CopyReplicateBorderBW8; }
constexpr auto ReplicateOf(BW16) { return &Norvala_CopyReplicateBorderBW16; }
constexpr auto ReplicateOf(FLOAT32) { return &Norvala_CopyReplicateBorderFLOAT32; }

// The steps of the replication in their order, pixel by pixel, on an image of the outer size.
template <class T>
void NaiveReplicate(Image<T>& image, RegionSize inner, int top, int left) {
  const int right = left + inner.width - 1;
  const int bottom = top + inner.height - 1;
  const auto widen = [&](int y) {
    for (int x = 0; x < left; ++x) image.Set(x, y, image.Get(left, y));
    for (int x = right + 1; x < image.width(); ++x) image.Set(x, y, image.Get(right, y));
  };
  const auto copyRow = [&](int from, int to) {
    for (int x = 0; x < image.width(); ++x) image.Set(x, to, image.Get(x, from));
  };
  widen(top);
  for (int y = 0; y < top; ++y) copyRow(top, y);
  for (int y = top + 1; y <= bottom; ++y) widen(y);
  for (int y = bottom + 1; y < image.height(); ++y) copyRow(bottom, y);
}

template <class T>
class BorderTest : public testing::Test {};
using BorderTypes = testing::Types<BW8, BW16, FLOAT32>;
TYPED_TEST_SUITE(BorderTest, BorderTypes);

// Every third image has a step that is too small for its rows, so that they overlap.
TYPED_TEST(BorderTest, WorksInTheFixedOrder) {
  Random random(1);
  for (int round = 0; round < 600; ++round) {
    const RegionSize inner = {RandomInt(random, 1, 40), RandomInt(random, 1, 12)};
    const int left = RandomInt(random, 0, 9);
    const int top = RandomInt(random, 0, 5);
    const int width = left + inner.width + RandomInt(random, 0, 9);
    const int height = top + inner.height + RandomInt(random, 0, 5);
    Layout layout = RandomLayout(random);
    if (round % 3 == 0) layout.padding = -RandomInt(random, 0, width * static_cast<int>(sizeof(TypeParam)) - 1);
    Image<TypeParam> image(width, height, layout,
                           round % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    image.FillRandom(random);
    Image<TypeParam> expected(image);
    NaiveReplicate(expected, inner, top, left);
    auto* first =
        reinterpret_cast<TypeParam*>(reinterpret_cast<unsigned char*>(image.data()) + top * image.step()) + left;
    ASSERT_EQ(ReplicateOf(TypeParam())(first, image.step(), inner.width, inner.height, width, height, top, left), 0);
    ASSERT_EQ(image.Bytes(), expected.Bytes()) << "step " << image.step();
  }
}

}  // namespace
}  // namespace norvala_test
