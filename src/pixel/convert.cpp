#include <limits>

#include "pixel/pixel.h"
#include "pixel/rows.h"

namespace norvala {
namespace {

template <class S, class D, class Kernel>
StatusCode ConvertRows(const S* src, std::int32_t srcStep, D* dst, std::int32_t dstStep, RegionSize size,
                       Kernel kernel) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  ForEachRow(size, kernel, Rows{src, srcStep}, Rows{dst, dstStep});
  return StatusCode::Success;
}

// The low halves of consecutive groups of lanes, side by side.
inline U16x8 PackWords(I32x4 a, I32x4 b) { return EvenLanes(BitCastLanes<U16x8>(a), BitCastLanes<U16x8>(b)); }

// The same for low halves of at most 255. The first packs turn the high halves, which are not above 0, to zeros.
inline U8x16 PackBytes(I32x4 a, I32x4 b, I32x4 c, I32x4 d) {
  const U8x16 low = PackSaturated(BitCastLanes<I16x8>(a), BitCastLanes<I16x8>(b));
  const U8x16 high = PackSaturated(BitCastLanes<I16x8>(c), BitCastLanes<I16x8>(d));
  return PackSaturated(BitCastLanes<I16x8>(low), BitCastLanes<I16x8>(high));
}

// Saturates four floats at a time to integers of the range 0 .. 2^n - 1, n at most 16, in the low half of each lane;
// the high half is not above 0 as a signed number.
template <class D, bool kRound>
void NarrowFloats(std::size_t count, const void* srcRow, void* dstRow) {
  const Unaligned<FLOAT32>* const src = static_cast<const Unaligned<FLOAT32>*>(srcRow);
  Unaligned<D>* const dst = static_cast<Unaligned<D>*>(dstRow);
  const auto zero = Splat<F32x4>(Opaque(0.0F)), limit = Splat<F32x4>(Opaque<float>(std::numeric_limits<D>::max()));
  const auto toInteger = [=](F32x4 value) {
    const F32x4 clamped = MinLanes(MaxLanes(value, zero), limit);  // NaN becomes 0
    // -(2^23 + x) has no room for fractions: it rounds half to even, and its low bits hold the integer. The sign makes
    // the high half negative.
    return kRound ? BitCastLanes<I32x4>(-8388608.0F - clamped) : ConvertLanes<I32x4>(clamped);
  };
  const auto saturate = [&](std::size_t x) { return toInteger(LoadUnaligned<F32x4>(src + x)); };
  constexpr std::size_t kLanes = 16 / sizeof(D);
  std::size_t x = 0;
  for (; count - x >= kLanes; x += kLanes) {
    if constexpr (sizeof(D) == 1) {
      StoreUnaligned(dst + x, PackBytes(saturate(x), saturate(x + 4), saturate(x + 8), saturate(x + 12)));
    } else {
      StoreUnaligned(dst + x, PackWords(saturate(x), saturate(x + 4)));
    }
  }
  for (; x < count; ++x) dst[x] = static_cast<D>(toInteger(F32x4{src[x]})[0]);
}

template <class S, class D>
void Widen(std::size_t count, const void* srcRow, void* dstRow) {
  const Unaligned<S>* const src = static_cast<const Unaligned<S>*>(srcRow);
  Unaligned<D>* const dst = static_cast<Unaligned<D>*>(dstRow);
  for (std::size_t x = 0; x < count; ++x) dst[x] = static_cast<D>(src[x]);
}

void SaturateWords(std::size_t count, const void* srcRow, void* dstRow) {
  const Unaligned<BW16>* const src = static_cast<const Unaligned<BW16>*>(srcRow);
  Unaligned<BW8>* const dst = static_cast<Unaligned<BW8>*>(dstRow);
  // The smaller of value and 255, both less 2^15: the low byte is the same, and signed lanes have a minimum.
  constexpr std::int16_t kBias = INT16_MIN;
  const I16x8 limit = Splat<I16x8>(Opaque(static_cast<std::int16_t>(kBias + 255)));
  const auto saturate = [&](std::size_t x) {
    return BitCastLanes<U8x16>(MinLanes(LoadUnaligned<I16x8>(src + x) ^ kBias, limit));
  };
  std::size_t x = 0;
  for (; count - x >= 16; x += 16) StoreUnaligned(dst + x, EvenLanes(saturate(x), saturate(x + 8)));
  for (; x < count; ++x) dst[x] = static_cast<BW8>(src[x] < 255 ? src[x] : 255);
}

}  // namespace

template <class D>
StatusCode ConvertFloat(const FLOAT32* src, std::int32_t srcStep, D* dst, std::int32_t dstStep, RegionSize size,
                        std::int32_t rounding) {
  constexpr std::int32_t kRoundHalfToEven = 1;
  return ConvertRows(src, srcStep, dst, dstStep, size,
                     rounding == kRoundHalfToEven ? NarrowFloats<D, true> : NarrowFloats<D, false>);
}

template StatusCode ConvertFloat(const FLOAT32*, std::int32_t, BW8*, std::int32_t, RegionSize, std::int32_t);
template StatusCode ConvertFloat(const FLOAT32*, std::int32_t, BW16*, std::int32_t, RegionSize, std::int32_t);

template <class S, class D>
StatusCode Convert(const S* src, std::int32_t srcStep, D* dst, std::int32_t dstStep, RegionSize size) {
  return ConvertRows(src, srcStep, dst, dstStep, size, sizeof(D) < sizeof(S) ? SaturateWords : Widen<S, D>);
}

template StatusCode Convert(const BW8*, std::int32_t, FLOAT32*, std::int32_t, RegionSize);
template StatusCode Convert(const BW8*, std::int32_t, BW16*, std::int32_t, RegionSize);
template StatusCode Convert(const BW16*, std::int32_t, BW8*, std::int32_t, RegionSize);
template StatusCode Convert(const BW16*, std::int32_t, BW32*, std::int32_t, RegionSize);

}  // namespace norvala
