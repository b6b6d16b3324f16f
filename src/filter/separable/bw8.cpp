#include "filter/filter.h"
#include "filter/separable/divisor.h"
#include "filter/separable/narrow.h"
#include "filter/separable/tile.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// The low bytes of all lanes.
inline U8x16 PackBytes(I32x4 a, I32x4 b, I32x4 c, I32x4 d) {
  const auto even = [](U8x16 low, U8x16 high) {
    return __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  };
  return even(even(BitCastLanes<U8x16>(a), BitCastLanes<U8x16>(b)),
              even(BitCastLanes<U8x16>(c), BitCastLanes<U8x16>(d)));
}

inline void UnpackBytes(U8x16 bytes, I32x4 (&lanes)[4]) {
  const U8x16 zero{};
  const auto low = __builtin_shufflevector(bytes, zero, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const auto high = __builtin_shufflevector(bytes, zero, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  const auto words = [](U8x16 v, bool upper) {
    const auto w = BitCastLanes<U16x8>(v);
    const U16x8 none{};
    return BitCastLanes<I32x4>(upper ? __builtin_shufflevector(w, none, 4, 12, 5, 13, 6, 14, 7, 15)
                                     : __builtin_shufflevector(w, none, 0, 8, 1, 9, 2, 10, 3, 11));
  };
  lanes[0] = words(low, false);
  lanes[1] = words(low, true);
  lanes[2] = words(high, false);
  lanes[3] = words(high, true);
}

bool FloatsHold(std::int64_t magnitude, RoundedDivision division) {
  const std::int64_t limit = RoundedDivision::IsPowerOfTwo(division.divisor) ? 1 << 24 : 1 << 23;
  return magnitude * 255 + division.addend < limit;
}

// Sums of floats: exact below 2^24 in steps of 1 and below 2^23 in steps of 1/2. Kernels whose quotients never leave
// the range of bytes need no clamping. Along columns the pixels of a block may stand in any order: every fourth one
// makes a vector, which takes fewer instructions.
template <Direction direction, bool clamps>
struct FloatSums {
  using Pixel = BW8;
  using Sum = float;
  static constexpr bool isExact = true;
  static constexpr int tapScale = 1;
  static constexpr int vectors = 4;

  float start;
  F32x4 factor;
  F32x4 lowest = Splat<F32x4>(Opaque(0.0F));
  F32x4 highest = Splat<F32x4>(Opaque(255.0F));

  // Half a unit keeps the quotients of whole sums away from whole numbers by 1 / (2 * divisor), where the errors of the
  // float reciprocal and product, at most 2^-15 in the range of bytes, do not matter. The reciprocal of a power of two
  // has no error.
  explicit FloatSums(RoundedDivision division)
      : start(static_cast<float>(division.addend) + (RoundedDivision::IsPowerOfTwo(division.divisor) ? 0.0F : 0.5F)),
        factor(F32x4{} + 1.0F / static_cast<float>(division.divisor)) {}

  void Widen(const void* pixels, F32x4 (&values)[4]) const {
    I32x4 lanes[4];
    if constexpr (direction == Direction::AlongColumn) {
      const auto fours = LoadUnaligned<U32x4>(pixels);
      for (int k = 0; k < 4; ++k) lanes[k] = BitCastLanes<I32x4>(k < 3 ? fours >> (8 * k) & 255 : fours >> 24);
    } else {
      UnpackBytes(LoadUnaligned<U8x16>(pixels), lanes);
    }
    for (int k = 0; k < 4; ++k) values[k] = ConvertLanes<F32x4>(lanes[k]);
  }
  void Narrow(const F32x4 (&sums)[4], void* pixels) const {
    I32x4 bytes[4];
    for (int k = 0; k < 4; ++k) {
      const F32x4 value = sums[k] * factor;
      bytes[k] = ConvertLanes<I32x4>(clamps ? MinLanes(MaxLanes(value, lowest), highest) : value);
    }
    if constexpr (direction == Direction::AlongColumn) {
      StoreUnaligned(pixels, bytes[0] | bytes[1] << 8 | bytes[2] << 16 | bytes[3] << 24);
    } else {
      StoreUnaligned(pixels, PackBytes(bytes[0], bytes[1], bytes[2], bytes[3]));
    }
  }
};

// Sums of doubles, for those that 32 bits hold. All three modes of the output rule are one product here: the reciprocal
// of a power of two is exact, and half a unit added to the product is the addend added to the sum.
struct DoubleSums {
  using Pixel = BW8;
  using Sum = double;
  static constexpr bool isExact = true;
  static constexpr int tapScale = 1;
  static constexpr int vectors = 4;

  double start = 0.0;
  F64x2 factor;
  F64x2 lowest = Splat<F64x2>(Opaque(0.0));
  F64x2 highest = Splat<F64x2>(Opaque(255.0));

  explicit DoubleSums(std::int32_t divisor) : factor(F64x2{} + static_cast<float>(1.0 / divisor)) {}

  static bool Hold(std::int64_t magnitude) { return magnitude * 255 <= INT32_MAX; }

  void Widen(const void* pixels, F64x2 (&values)[4]) const {
    U8x16 bytes{};
    std::memcpy(&bytes, pixels, 8);
    I32x4 lanes[4];
    UnpackBytes(bytes, lanes);
    ConvertToDoubles(lanes[0], values[0], values[1]);
    ConvertToDoubles(lanes[1], values[2], values[3]);
  }
  void Narrow(const F64x2 (&sums)[4], void* pixels) const {
    F64x2 values[4];
    for (int k = 0; k < 4; ++k) values[k] = MinLanes(MaxLanes(sums[k] * factor, lowest), highest) + 0.5;
    const auto low = ConvertFromDoubles<I32x4>(values[0], values[1]);
    const auto high = ConvertFromDoubles<I32x4>(values[2], values[3]);
    const U8x16 bytes = PackBytes(low, high, low, high);
    std::memcpy(pixels, &bytes, 8);
  }
};

// Sums of 32 bits that wrap.
struct WrappingSums {
  using Pixel = BW8;
  using Sum = std::uint32_t;
  static constexpr bool isExact = true;
  static constexpr int tapScale = 1;
  static constexpr int vectors = 4;

  std::uint32_t start = 0;
  DivisorScale scale;

  void Widen(const void* pixels, U32x4 (&values)[4]) const {
    I32x4 lanes[4];
    UnpackBytes(LoadUnaligned<U8x16>(pixels), lanes);
    for (int k = 0; k < 4; ++k) values[k] = BitCastLanes<U32x4>(lanes[k]);
  }
  void Narrow(const U32x4 (&sums)[4], void* pixels) const {
    U8x16 bytes{};
    for (int i = 0; i < 16; ++i) bytes[i] = ScaleSum(static_cast<std::int32_t>(sums[i / 4][i % 4]), scale);
    StoreUnaligned(pixels, bytes);
  }
};

template <class Codec>
StatusCode FilterBy(const Codec& codec, const SeparableCallBW8& call) {
  SeparableTile<Codec>(codec).Filter(call);
  return StatusCode::Success;
}

template <Direction direction>
StatusCode FilterByFloats(RoundedDivision division, bool staysInRange, const SeparableCallBW8& call) {
  return staysInRange ? FilterBy(FloatSums<direction, false>(division), call)
                      : FilterBy(FloatSums<direction, true>(division), call);
}

StatusCode Filter(const SeparableCallBW8& call, std::int32_t divisor) {
  if (const StatusCode status = call.CheckPointersAndSizes(); status != StatusCode::Success) return status;
  if (divisor == 0) return StatusCode::ZeroDivisor;
  if (const StatusCode status = call.CheckSteps(); status != StatusCode::Success) return status;
  const DivisorScale scale = DeriveDivisorScale(divisor);

  // The narrowest sums that hold whatever the pixels are give the same bytes as 32-bit ones.
  std::int64_t positive = 0;
  std::int64_t negative = 0;
  for (std::int32_t j = 0; j < call.kernelSize; ++j) {
    const std::int64_t tap = call.MirroredTap(j);
    (tap > 0 ? positive : negative) += tap > 0 ? tap : -tap;
  }
  const std::int64_t magnitude = std::min(positive + negative, std::int64_t{INT32_MAX});
  if (RoundedDivision::Serves(divisor)) {
    const RoundedDivision division = RoundedDivision::Of(divisor, scale);
    if (FilterNarrow(call, positive, negative, division)) return StatusCode::Success;
    if (FloatsHold(magnitude, division)) {
      const bool staysInRange = negative == 0 && (positive * 255 + division.addend) / division.divisor <= 255;
      return call.direction == Direction::AlongRow
                 ? FilterByFloats<Direction::AlongRow>(division, staysInRange, call)
                 : FilterByFloats<Direction::AlongColumn>(division, staysInRange, call);
    }
  }
  if (DoubleSums::Hold(magnitude)) return FilterBy(DoubleSums(divisor), call);
  return FilterBy(WrappingSums{0, scale}, call);
}

}  // namespace

StatusCode FilterRowBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                        const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                        std::int32_t divisor) {
  return Filter({Direction::AlongRow, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor}, divisor);
}

StatusCode FilterColumnBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                           const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                           std::int32_t divisor) {
  return Filter({Direction::AlongColumn, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor}, divisor);
}

}  // namespace norvala
