#include <gtest/gtest.h>

#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

TEST(SampleDownTest, MeansOfBlocksWithFractionsUp) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 9);
    Image<BW8> src(2 * width, 2 * height, RandomLayout(random));
    Image<BW8> dst(width, height, RandomLayout(random));
    const int darkest = round % 4 == 0 ? 254 : 0;
    src.Fill([&] { return static_cast<BW8>(RandomInt(random, darkest, 255)); });
    Image<BW8> expected(dst);
    expected.FillAt([&](int x, int y) {
      const int sum =
          src.Get(2 * x, 2 * y) + src.Get(2 * x + 1, 2 * y) + src.Get(2 * x, 2 * y + 1) + src.Get(2 * x + 1, 2 * y + 1);
      return static_cast<BW8>((sum + 3) / 4);
    });
    // A source that is not there fails the call; its size is not used: any will do.
    ASSERT_EQ(Norvala_SampleDownH2V2_JPEGBW8(nullptr, src.step(), width, height, dst.data(), dst.step(), width, height),
              -1);
    ASSERT_EQ(Norvala_SampleDownH2V2_JPEGBW8(src.data(), src.step(), RandomSize(random), 1, dst.data(), dst.step(),
                                             width, height),
              0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height;
  }
}

}  // namespace
}  // namespace norvala_test
