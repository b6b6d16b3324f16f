#include "norvala.h"
#include "pixel/pixelwise.h"

namespace norvala_test {
namespace {

TEST(AddTest, RoundsTheSumOnce) {
  CheckPixelwise<FLOAT32, FLOAT32>(200, Norvala_AddFLOAT32_C1IR, [](float added, float old) {
    const volatile double sum = static_cast<double>(old) + static_cast<double>(added);
    return static_cast<float>(sum);
  });
}

// Steps are used as given: rows upwards, and one row for all.
TEST(AddTest, TakesAnyStep) {
  Image<FLOAT32> src(5, 3);
  src.FillAt([](int x, int y) { return static_cast<float>(10 * y + x); });
  Image<FLOAT32> sum(5, 3);
  sum.Fill([] { return 0.0F; });
  ASSERT_EQ(Norvala_AddFLOAT32_C1IR(src.data() + 10, -src.step(), sum.data(), 0, 5, 3), 0);
  ASSERT_EQ(Norvala_AddFLOAT32_C1IR(src.data() + 10, -src.step(), sum.data() + 5, sum.step(), 5, 2), 0);
  for (int x = 0; x < 5; ++x) {
    const auto column = static_cast<float>(x);
    EXPECT_EQ(sum.Get(x, 0), 30 + 3 * column);
    EXPECT_EQ(sum.Get(x, 1), 20 + column);
    EXPECT_EQ(sum.Get(x, 2), 10 + column);
  }
}

TEST(DivideTest, MultipliesByTheRoundedReciprocal) {
  for (const float divisor :
       {3.0F, -7.0F, 1e-40F, 3e38F, 0.1F, -0.3F, std::numeric_limits<float>::infinity(), 255.0F}) {
    const volatile double exact = 1.0 / static_cast<double>(divisor);
    const auto reciprocal = static_cast<float>(exact);
    CheckPixelwise<FLOAT32>(
        20, [&](auto... arguments) { return Norvala_DivCFLOAT32_C1IR(divisor, arguments...); },
        [&](float old) {
          const volatile double product = static_cast<double>(old) * static_cast<double>(reciprocal);
          return static_cast<float>(product);
        });
  }
}

}  // namespace
}  // namespace norvala_test
