#include <gtest/gtest.h>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

TEST(SampleDownTest, MeansOfBlocksWithFractionsUp) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 9);
    Image<BW8> src(2 * width, 2 * height, RandomLayout(random));
    Image<BW8> dst(width, height, RandomLayout(random));
    if (round % 4 == 0) {
      src.Fill([&] { return static_cast<BW8>(RandomInt(random, 254, 255)); });
    } else {
      src.FillRandom(random);
    }
    Image<BW8> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const int sum = src.Get(2 * x, 2 * y) + src.Get(2 * x + 1, 2 * y) + src.Get(2 * x, 2 * y + 1) +
                        src.Get(2 * x + 1, 2 * y + 1);
        expected.Set(x, y, static_cast<BW8>((sum + 3) / 4));
      }
    }
    // The source size is not used: any will do.
    ASSERT_EQ(Norvala_SampleDownH2V2_JPEGBW8(src.data(), src.step(), RandomSize(random), 1, dst.data(), dst.step(),
                                             width, height),
              0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height;
  }
}

TEST(SampleDownTest, FailuresWriteNothing) {
  Image<BW8> src(8, 8);
  Image<BW8> dst(4, 4);
  const auto before = dst.Bytes();
  EXPECT_EQ(Norvala_SampleDownH2V2_JPEGBW8(nullptr, 8, 8, 8, dst.data(), 4, 4, 4), -1);
  EXPECT_EQ(Norvala_SampleDownH2V2_JPEGBW8(src.data(), 0, 8, 8, dst.data(), 4, 4, 4), -1);
  EXPECT_EQ(Norvala_SampleDownH2V2_JPEGBW8(src.data(), 8, 8, 0, dst.data(), 4, 4, 4), -1);
  EXPECT_EQ(Norvala_SampleDownH2V2_JPEGBW8(src.data(), 8, 8, 8, nullptr, 4, 4, 4), -1);
  EXPECT_EQ(Norvala_SampleDownH2V2_JPEGBW8(src.data(), 8, 8, 8, dst.data(), -4, 4, 4), -1);
  EXPECT_EQ(Norvala_SampleDownH2V2_JPEGBW8(src.data(), 8, 8, 8, dst.data(), 4, 0, 4), -1);
  EXPECT_EQ(dst.Bytes(), before);
}

}  // namespace
}  // namespace norvala_test
