#include <algorithm>
#include <bit>

#include "filter/filter.h"
#include "filter/separable/tile.h"
#include "filter/taps.h"
#include "frame/aligned_memory.h"
#include "frame/memory.h"

// The filters of float and 16-bit pixels. Those of 16 bits are read and written as signed.

namespace norvala {
namespace {

// ---- Float pixels ----

struct FloatTraits {
  using Pixel = FLOAT32;
  static constexpr bool isExact = false;
  static constexpr double tapScale = 1.0;
  // The six sums of a block, a tap and a product are as many as the registers of a 32-bit build.
  static constexpr int vectors = sizeof(void*) == 8 ? 4 : 6;

  void Widen(const void* pixels, F64x2 (&values)[vectors]) const {
    const Unaligned<FLOAT32>* const from = static_cast<const Unaligned<FLOAT32>*>(pixels);
    for (int k = 0; k < vectors; k += 2) {
      const F64x2x2 four = ConvertToDoubles(LoadUnaligned<F32x4>(from + 2 * k));
      values[k] = four.low;
      values[k + 1] = four.high;
    }
  }
  void Narrow(const F64x2 (&sums)[vectors], void* pixels) const {
    Unaligned<FLOAT32>* const to = static_cast<Unaligned<FLOAT32>*>(pixels);
    for (int k = 0; k < vectors; k += 2) StoreUnaligned(to + 2 * k, ConvertFromDoubles<F32x4>(sums[k], sums[k + 1]));
  }
};

void FilterRegion(const SeparableCall<FLOAT32, FLOAT32>& call) { SeparableTile<FloatTraits>(call).Filter(); }

// ---- 16-bit pixels ----

// Exact sums are those whose products may be added in any order; they are always numbers. Sums of kernels that stay in
// the range of the pixels need no clamping.
template <bool exact, bool clamps>
struct ShortTraits {
  using Pixel = BW16;
  static constexpr bool isExact = exact;
  static constexpr double tapScale = exact ? 2.0 : 1.0;  // exact sums are twice what they are, see HalveRounded
  static constexpr int vectors = 4;

  F64x2 lowest = Splat<F64x2>(Opaque(-32768.0 * tapScale));
  F64x2 highest = Splat<F64x2>(Opaque(32767.0 * tapScale));

  void Widen(const void* from, F64x2 (&values)[4]) const {
    const auto pixels = LoadUnaligned<I16x8>(from);
    const F64x2x2 low = ConvertToDoubles(BitCastLanes<I32x4>(InterleaveLow(pixels, pixels)) >> 16);
    const F64x2x2 high = ConvertToDoubles(BitCastLanes<I32x4>(InterleaveHigh(pixels, pixels)) >> 16);
    values[0] = low.low;
    values[1] = low.high;
    values[2] = high.low;
    values[3] = high.high;
  }

  // Rounds half away from zero and saturates. The bounds are whole numbers, so that they may as well come first. A sum
  // that is not a number becomes 0.
  void Narrow(const F64x2 (&sums)[4], void* pixels) const {
    F64x2 values[4];
    for (int k = 0; k < 4; ++k) {
      values[k] = clamps ? MaxLanes(MinLanes(sums[k], highest), lowest) : sums[k];
      if constexpr (!exact)
        values[k] = BitCastLanes<F64x2>(BitCastLanes<I64x2>(AddHalf(values[k])) & IsNumber(sums[k]));
    }
    auto low = ConvertFromDoubles<I32x4>(values[0], values[1]);
    auto high = ConvertFromDoubles<I32x4>(values[2], values[3]);
    if constexpr (exact) {
      low = HalveRounded(low);
      high = HalveRounded(high);
    }
    StoreUnaligned(pixels, EvenLanes(BitCastLanes<U16x8>(low), BitCastLanes<U16x8>(high)));
  }

  static I64x2 IsNumber(F64x2 values) { return values == values; }

  // A half more on the side of the sign, for cutting off. The sum of 0.5 and the number before it is 1.
  static F64x2 AddHalf(F64x2 values) {
    const I64x2 sign = BitCastLanes<I64x2>(values) & INT64_MIN;
    return values + BitCastLanes<F64x2>(sign | BitCastLanes<I64x2>(F64x2{0.5, 0.5}));
  }

  // Of twice a value, its fraction cut off, the value rounded half away from zero: a half is what is left of a fraction
  // of a half or more, and the shift takes negative halves down. Differs from adding a half only at the number before
  // 0.5, which has more bits than exact sums of such a size can have.
  static I32x4 HalveRounded(I32x4 twice) { return (twice - (twice > -1)) >> 1; }
};

// Whether doubles hold every sum of products exactly: with taps of 24 bits and pixels of 16, the exponents of the taps
// must not lie too far apart. Most kernels pass.
bool SumsAreExact(const SeparableCall<BW16, FLOAT32>& call) {
  int highest = 1;
  int lowest = 254;
  for (std::int32_t j = 0; j < call.kernelSize; ++j) {
    const auto bits = std::bit_cast<std::uint32_t>(call.MirroredTap(j)) & 0x7FFFFFFFU;
    if (bits == 0) continue;
    const int exponent = std::max(static_cast<int>(bits >> 23), 1);
    if (exponent == 255) return false;
    highest = std::max(highest, exponent);
    lowest = std::min(lowest, exponent);
  }
  // Sums are multiples of the lowest tap's last bit, 2^(lowest - 150), and below kernelSize * 2^(highest - 126 + 15).
  const int bits = static_cast<int>(std::bit_width(static_cast<std::uint32_t>(call.kernelSize)));
  return highest - lowest + 39 + bits <= 53;
}

// Whether no pixels make a sum that rounds to more than a pixel, as of kernels that add up to one.
bool SumsStayInRange(const SeparableCall<BW16, FLOAT32>& call) {
  const auto tap = [&](std::int32_t j) { return call.MirroredTap(j); };
  const auto sums = RangeOfSums<double>(call.kernelSize, tap, {INT16_MIN, INT16_MAX});
  return sums.low > -32768.4 && sums.high < 32767.4;
}

void FilterRegion(const SeparableCall<BW16, FLOAT32>& call) {
  if (!SumsAreExact(call)) {
    SeparableTile<ShortTraits<false, true>>(call).Filter();
  } else if (SumsStayInRange(call)) {
    SeparableTile<ShortTraits<true, false>>(call).Filter();
  } else {
    SeparableTile<ShortTraits<true, true>>(call).Filter();
  }
}

}  // namespace

template <Axis axis, class T>
StatusCode Filter32f(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size,
                     const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  const SeparableCall<T, FLOAT32> call = {axis, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor};
  const StatusCode status = call.Check();
  if (status == StatusCode::Success) FilterRegion(call);
  return status;
}

template decltype(Filter32f<Axis::Row, BW16>) Filter32f<Axis::Row, BW16>;
template decltype(Filter32f<Axis::Column, BW16>) Filter32f<Axis::Column, BW16>;
template decltype(Filter32f<Axis::Row, FLOAT32>) Filter32f<Axis::Row, FLOAT32>;
template decltype(Filter32f<Axis::Column, FLOAT32>) Filter32f<Axis::Column, FLOAT32>;

// The divisor scales the taps, not the sums.
template <Axis axis>
StatusCode FilterBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                      const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor, std::int32_t divisor) {
  if (kernel == nullptr) return StatusCode::NullPointer;
  if (kernelSize < 1) return StatusCode::NonPositiveSize;
  if (divisor == 0) return StatusCode::ZeroDivisor;
  const AlignedVector<FLOAT32> scaled(kernelSize);
  if (!scaled) return StatusCode::WorkBufferUnavailable;
  const auto factor = static_cast<FLOAT32>(1.0 / divisor);
  // The product of two floats is exact in double precision: rounding it to float is the float product.
  for (std::int32_t i = 0; i < kernelSize; ++i) {
    scaled[i] = static_cast<FLOAT32>(LoadUnaligned<std::int32_t>(kernel + i)) * factor;
  }
  constexpr auto& kFilter = axis == Axis::Row ? kFilterRow32fBW16 : kFilterColumn32fBW16;
  return kFilter(src, srcStep, dst, dstStep, size, scaled.data(), kernelSize, anchor);
}

template decltype(FilterBW16<Axis::Row>) FilterBW16<Axis::Row>;
template decltype(FilterBW16<Axis::Column>) FilterBW16<Axis::Column>;

}  // namespace norvala
