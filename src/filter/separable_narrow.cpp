#include "filter/separable_narrow.h"

#include "frame/lanes.h"

namespace norvala {
namespace {

constexpr std::int32_t kMostTaps = 32;

// What the call needs in the loop. Sums are kept modulo 2^16 with `bias` added, which makes them all positive:
// zero is at `zero`, and the rounding addend of the division is already in.
struct NarrowRule {
  std::int32_t taps;
  U16x8 tap[kMostTaps];
  U16x8 bias;
  U16x8 zero;
  U16x8 multiplier;
  std::int32_t shift;
};

U16x8 Broadcast(std::int64_t value) { return U16x8{} + static_cast<std::uint16_t>(value); }

U8x16 LoadBytes(const BW8* pixels, int count) {
  U8x16 bytes{};
  std::memcpy(&bytes, pixels, static_cast<std::size_t>(count));
  return bytes;
}

U16x8 WidenLow(U8x16 v) {
  return BitCastLanes<U16x8>(
      __builtin_shufflevector(v, U8x16{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
U16x8 WidenHigh(U8x16 v) {
  return BitCastLanes<U16x8>(
      __builtin_shufflevector(v, U8x16{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}

// The low bytes of all lanes.
U8x16 PackBytes(U16x8 low, U16x8 high) {
  return __builtin_shufflevector(BitCastLanes<U8x16>(low), BitCastLanes<U8x16>(high), 0, 2, 4, 6, 8, 10, 12, 14, 16, 18,
                                 20, 22, 24, 26, 28, 30);
}

// The high halves of the 32-bit products.
U16x8 MultiplyHigh(U16x8 a, U16x8 b) {
  U16x8 high;
  for (int i = 0; i < 8; ++i) high[i] = static_cast<std::uint16_t>((std::uint32_t{a[i]} * b[i]) >> 16);
  return high;
}

template <bool divides>
U16x8 ToByte(U16x8 sum, const NarrowRule& rule) {
  U16x8 value = (sum > rule.zero ? sum : rule.zero) - rule.zero;
  if (divides) value = MultiplyHigh(value, rule.multiplier) >> rule.shift;
  const U16x8 most = Broadcast(255);
  return value < most ? value : most;
}

// One step along the row: 16 * vectors pixels, or fewer than 16 if `count` says so.
template <bool divides, int vectors>
inline void FilterPixels(const NarrowRule& rule, const BW8* src, std::ptrdiff_t tapStep, BW8* dst, int count = 16) {
  U16x8 low[vectors];
  U16x8 high[vectors];
  for (int k = 0; k < vectors; ++k) low[k] = high[k] = rule.bias;
  for (std::int32_t j = 0; j < rule.taps; ++j) {
    const BW8* pixels = Row(src, tapStep, j);
    for (int k = 0; k < vectors; ++k) {
      const U8x16 bytes = LoadBytes(pixels + 16 * k, count);
      low[k] += WidenLow(bytes) * rule.tap[j];
      high[k] += WidenHigh(bytes) * rule.tap[j];
    }
  }
  for (int k = 0; k < vectors; ++k) {
    const U8x16 bytes = PackBytes(ToByte<divides>(low[k], rule), ToByte<divides>(high[k], rule));
    std::memcpy(dst + 16 * k, &bytes, static_cast<std::size_t>(count));
  }
}

template <bool divides>
void FilterRows(const SeparableCallBW8& call, const NarrowRule& rule) {
  const SeparableWindow<BW8> window(call);
  for (std::int32_t y = 0; y < call.size.height; ++y) {
    const BW8* src = window.Source(0, y, 0);
    BW8* dst = window.Destination(0, y);
    std::int32_t left = call.size.width;
    for (; left >= 32; left -= 32, src += 32, dst += 32) FilterPixels<divides, 2>(rule, src, window.tapStep, dst);
    if (left >= 16) {
      FilterPixels<divides, 1>(rule, src, window.tapStep, dst);
      left -= 16, src += 16, dst += 16;
    }
    if (left > 0) FilterPixels<divides, 1>(rule, src, window.tapStep, dst, left);
  }
}

}  // namespace

bool FilterNarrow(const SeparableCallBW8& call, std::int64_t positive, std::int64_t negative,
                  RoundedDivision division) {
  if (call.kernelSize > kMostTaps || positive > 257 || negative > 257) return false;
  const std::int64_t highest = positive * 255 + division.addend;
  const std::int64_t zero = negative * 255;
  if (zero + highest > UINT16_MAX) return false;
  MultiplierU16 multiplier{};
  if (division.divisor > 1 && !MultiplierU16::Find(division.divisor, static_cast<std::int32_t>(highest), &multiplier)) {
    return false;
  }
  NarrowRule rule;
  rule.taps = call.kernelSize;
  for (std::int32_t j = 0; j < rule.taps; ++j) rule.tap[j] = Broadcast(call.MirroredTap(j));
  rule.bias = Broadcast(zero + division.addend);
  rule.zero = Broadcast(zero);
  rule.multiplier = Broadcast(multiplier.multiplier);
  rule.shift = multiplier.shift;
  division.divisor > 1 ? FilterRows<true>(call, rule) : FilterRows<false>(call, rule);
  return true;
}

}  // namespace norvala
