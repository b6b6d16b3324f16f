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
