#include <cmath>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "pixel/pixel.h"

namespace norvala {
namespace {

constexpr int kFractionBits = 12;

// Of red, green and blue, as multiples of 1/4096.
using Weights = std::uint32_t[3];

// The luma weights of ITU-R BT.601: 0.299, 0.587 and 0.114, each rounded to 1/4096. Their sum is 4096, so that grey
// pixels keep their value.
constexpr Weights kLuma = {1225, 2404, 467};

// A perfect shuffle of 48 bytes: the first half goes to the even places, the second half to the odd ones. Four of them
// bring interleaved pixels to planes, because 3 * 2^4 = 1 modulo 47.
inline void Shuffle(U8x16& a, U8x16& b, U8x16& c) {
  const U8x16 evenLow = __builtin_shufflevector(a, b, 0, 24, 1, 25, 2, 26, 3, 27, 4, 28, 5, 29, 6, 30, 7, 31);
  const U8x16 evenMiddle = __builtin_shufflevector(a, c, 8, 16, 9, 17, 10, 18, 11, 19, 12, 20, 13, 21, 14, 22, 15, 23);
  const U8x16 evenHigh = __builtin_shufflevector(b, c, 0, 24, 1, 25, 2, 26, 3, 27, 4, 28, 5, 29, 6, 30, 7, 31);
  a = evenLow;
  b = evenMiddle;
  c = evenHigh;
}

// The fraction is cut off. The sums of kLuma fit a byte; those of other weights may not, and by contract keep the
// lowest 8 bits above the fraction.
void GreyRow(std::size_t count, const Unaligned<BW8>* src, Unaligned<BW8>* dst, const Weights& weights) {
  // The grey values times 256, modulo 2^16. With every weight split into 16 * high + low, floor(sum / 16) = sum of
  // high * c + floor(sum of low * c / 16), where only the first part can wrap.
  U16x8 high[3], low[3];
  for (int i = 0; i < 3; ++i) {
    high[i] = Splat<U16x8>(weights[i] >> 4);
    low[i] = Splat<U16x8>(weights[i] & 15);
  }
  const auto weigh = [&](U16x8 red, U16x8 green, U16x8 blue) {
    return red * high[0] + green * high[1] + blue * high[2] + ((red * low[0] + green * low[1] + blue * low[2]) >> 4);
  };
  std::size_t x = 0;
  for (; count - x >= 16; x += 16) {
    auto a = LoadUnaligned<U8x16>(src + 3 * x);
    auto b = LoadUnaligned<U8x16>(src + 3 * x + 16);
    auto c = LoadUnaligned<U8x16>(src + 3 * x + 32);
    for (int i = 0; i < 3; ++i) Shuffle(a, b, c);
    // One shuffle short: the halves in turn are red, green and blue of the even pixels, then of the odd ones.
    const U16x8 even = weigh(WidenLow(a), WidenHigh(a), WidenLow(b));
    const U16x8 odd = weigh(WidenHigh(b), WidenLow(c), WidenHigh(c));
    StoreUnaligned(dst + x, (even >> 8) | (odd & 0xFF00));
  }
  for (; x < count; ++x) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < 3; ++i) sum += src[3 * x + i] * weights[i];
    dst[x] = static_cast<BW8>(sum >> kFractionBits);
  }
}

StatusCode ToGrey(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                  const Weights& weights) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  for (std::int32_t y = 0; y < size.height; ++y) {
    GreyRow(static_cast<std::size_t>(size.width), Row(src, srcStep, y), Row(dst, dstStep, y), weights);
  }
  return StatusCode::Success;
}

// A multiple of 1/4096: 0.5 is added and the fraction cut off, which rounds weights that are not negative. NaN, and
// what a signed 32-bit integer does not hold, counts as 0.
std::uint32_t Scale(FLOAT32 weight) {
  const FLOAT64 scaled = static_cast<FLOAT64>(weight) * (1 << kFractionBits) + 0.5;
  return std::fabs(scaled) < 2147483648.0 ? static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled)) : 0;
}

}  // namespace

StatusCode RGBToGray_BW8_C3C1R(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size) {
  return ToGrey(src, srcStep, dst, dstStep, size, kLuma);
}

StatusCode WeighToGray_BW8_C3C1R(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                                 const FLOAT32 (&weights)[3]) {
  return ToGrey(src, srcStep, dst, dstStep, size, {Scale(weights[0]), Scale(weights[1]), Scale(weights[2])});
}

}  // namespace norvala
