#include <array>

#include "norvala.h"
#include "pixel/pixelwise.h"

namespace norvala_test {

using Colour = std::array<BW8, 3>;

// Half of the colours have channels of full or no intensity only, where sums come nearest to overflowing.
template <>
Colour RandomValue<Colour>(Random& random) {
  const auto bits = static_cast<std::uint32_t>(random());
  const auto channel = [&](int i) { return static_cast<BW8>(bits >> 31 != 0 ? (bits >> i & 1) * 255 : bits >> 8 * i); };
  return {channel(0), channel(1), channel(2)};
}

namespace {

TEST(GreyTest, WeighsTheChannels) {
  CheckPixelwise<Colour, BW8>(
      300, [](const Colour* src, auto... arguments) { return Norvala_RGBToGray_BW8_C3C1R(src->data(), arguments...); },
      [](const Colour& c, BW8) { return static_cast<BW8>((c[0] * 1225 + c[1] * 2404 + c[2] * 467) / 4096); });
}

// A row for each of these from the last, whose steps are used as given.
TEST(GreyTest, KnownColours) {
  const Colour colours[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}, {1, 1, 1}, {1, 0, 0}, {4, 0, 0}};
  const std::array<BW8, 7> expected = {76, 149, 29, 255, 1, 0, 1};
  std::array<BW8, 7> actual;
  ASSERT_EQ(Norvala_RGBToGray_BW8_C3C1R(colours[6].data(), -3, &actual[6], -1, 1, 7), 0);
  EXPECT_EQ(actual, expected);
}

}  // namespace
}  // namespace norvala_test
