#include "norvala.h"
#include "pixel/pixelwise.h"

namespace norvala_test {
namespace {

TEST(LogicTest, CombinesTwoImages) {
  CheckPixelwise<BW32, BW32, BW32>(200, Norvala_AndBW32, [](BW32 a, BW32 b, BW32) { return a & b; });
  CheckPixelwise<BW32, BW32, BW32>(200, Norvala_OrBW32, [](BW32 a, BW32 b, BW32) { return a | b; });
}

TEST(LogicTest, DestinationMayBeASource) {
  CheckPixelwise<BW32, BW32>(
      100,
      [](const BW32* src, int srcStep, BW32* dst, int dstStep, int width, int height) {
        return Norvala_OrBW32(src, srcStep, dst, dstStep, dst, dstStep, width, height);
      },
      [](BW32 a, BW32 b) { return a | b; });
}

TEST(LogicTest, MasksWithAConstant) {
  for (const BW16 constant : {BW16{0}, BW16{0xFFFF}, BW16{0x8001}, BW16{0x1234}}) {
    CheckPixelwise<BW16>(
        40, [&](auto... arguments) { return Norvala_AndCBW16(constant, arguments...); },
        [&](BW16 x) { return static_cast<BW16>(x & constant); });
  }
}

// All kinds of counts: in range, the first beyond, and negative ones taken as unsigned.
TEST(ShiftTest, MovesBits) {
  for (const std::uint32_t count :
       {0U, 1U, 7U, 8U, 14U, 15U, 16U, 17U, 30U, 31U, 32U, 33U, 64U, 0x80000000U, 0xFFFFFFFFU}) {
    CheckPixelwise<BW16>(
        40, [&](auto... arguments) { return Norvala_RShiftCBW16(count, arguments...); },
        [&](BW16 x) { return static_cast<BW16>(count > 15 ? 0 : x >> count); });
    CheckPixelwise<BW32>(
        40, [&](auto... arguments) { return Norvala_RShiftCBW32(count, arguments...); },
        [&](BW32 x) { return static_cast<BW32>(static_cast<std::int32_t>(x) >> (count > 31 ? 31 : count)); });
    CheckPixelwise<BW32>(
        40, [&](auto... arguments) { return Norvala_LShiftCBW32(count, arguments...); },
        [&](BW32 x) { return count > 31 ? 0 : x << count; });
  }
}

}  // namespace
}  // namespace norvala_test
