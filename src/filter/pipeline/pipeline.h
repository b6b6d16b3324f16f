#pragma once

#include <algorithm>
#include <cstdint>

#include "filter/reciprocal.h"
#include "frame/lanes.h"
#include "frame/memory.h"
#include "frame/status.h"
#include "frame/types.h"

// What the row and the column filter of the pipeline share: the size of their work buffers, kernels, and the division
// of sums. A result is the product of a sum and the reciprocal of the divisor in double precision, clamped and
// truncated; narrower arithmetic is used wherever it makes the same.

namespace norvala {

StatusCode WritePipelineBufferSize(RegionSize size, std::int32_t kernelSize, Unaligned<std::int32_t>* bufferSize);

// Values or sums from `low` to `high`, 0 among them.
struct ValueRange {
  std::int64_t low;
  std::int64_t high;

  std::int64_t largestMagnitude() const { return std::max(-low, high); }
};

// How sums are formed and divided, from the fastest way to the slowest. All but Double need sums of at most 32 bits and
// a divisor by which truncated products are integer quotients (see PipelineKernel).
enum class Arithmetic {
  Words,   // sums of 16 bits, or 15 and a sign, divided by a WordReciprocal
  Single,  // sums of 32 bits up to kLargestFloatDividend, times a FloatReciprocal
  Shift,   // sums of 32 bits, divided by a power of two
  Double,  // sums of 32 bits or more, times the reciprocal in double precision
};

// Division of sums, truncated towards zero and limited to 16 bits.
class TruncatedDivision {
 public:
  explicit TruncatedDivision(double reciprocal) : doubleReciprocal_(reciprocal) {}

  // The narrower ways, for a positive divisor. Words serve from 2 on, and only where UseWords returns true.
  bool UseWords(std::int32_t divisor, ValueRange sums);
  void UseShift(std::int32_t divisor);
  void UseSingle(std::int32_t divisor);

  Arithmetic arithmetic() const { return arithmetic_; }

  I16x8 Divide(U16x8 sums) const {
    if (!negativeWords_) return BitCastLanes<I16x8>(words_.Divide(sums));
    const auto sign = BitCastLanes<U16x8>(BitCastLanes<I16x8>(sums) >> 15);
    return BitCastLanes<I16x8>((words_.Divide((sums ^ sign) - sign) ^ sign) - sign);
  }
  // The arithmetic is the one in use, known to the compiler.
  template <Arithmetic arithmetic>
  I16x8 Divide(U32x4 lowSums, U32x4 highSums) const {
    const auto low = BitCastLanes<I32x4>(lowSums);
    const auto high = BitCastLanes<I32x4>(highSums);
    if constexpr (arithmetic == Arithmetic::Single) {
      return PackSaturated(ConvertLanes<I32x4>(ConvertLanes<F32x4>(low) * singleReciprocal_),
                           ConvertLanes<I32x4>(ConvertLanes<F32x4>(high) * singleReciprocal_));
    } else if constexpr (arithmetic == Arithmetic::Shift) {
      return PackSaturated(ShiftTowardsZero(low), ShiftTowardsZero(high));
    } else {
      return Divide(ConvertToDoubles(low), ConvertToDoubles(high));
    }
  }
  I16x8 Divide(F64x2x2 low, F64x2x2 high) const { return PackSaturated(Scale(low), Scale(high)); }

 private:
  I32x4 ShiftTowardsZero(I32x4 sums) const { return (sums + ((sums >> 31) & ((1 << shift_) - 1))) >> shift_; }
  I32x4 Scale(F64x2x2 sums) const {
    const auto limited = [](F64x2 v) {
      return MaxLanes(MinLanes(v, Splat<F64x2>(INT16_MAX)), Splat<F64x2>(INT16_MIN));
    };
    const F64x2x2 scaled = sums * doubleReciprocal_;
    return ConvertFromDoubles<I32x4>(limited(scaled.low), limited(scaled.high));
  }

  Arithmetic arithmetic_ = Arithmetic::Double;
  bool negativeWords_ = false;
  WordReciprocal words_{2};
  std::int32_t shift_ = 0;
  float singleReciprocal_ = 0;
  double doubleReciprocal_;
};

// Which taps the lanes of a tap vector have in turns. For sums of 32 bits, pairs of taps meet pairs of values in
// MultiplyAddPairs.
enum class TapLayout {
  Words,        // vector i: tap i
  RowPairs,     // vectors 0, 1, 2, 3 and so on: taps 0 and 2, 1 and 3, 4 and 6, 5 and 7
  ColumnPairs,  // vectors 0, 2, 4 and so on: taps 0 and 1, 2 and 3, 4 and 5; vectors 1, 3, 5: 0 alone, 1 and 2, 3 and 4
};

// A kernel and its divisor, with the arithmetic that serves for a range of values.
class PipelineKernel {
 public:
  // `pairs` is the layout for sums of 32 bits.
  PipelineKernel(const std::int16_t* taps, std::int32_t count, std::int32_t divisor, ValueRange values,
                 TapLayout pairs);

  std::int32_t count() const { return count_; }
  const TruncatedDivision& division() const { return division_; }
  Arithmetic arithmetic() const { return division_.arithmetic(); }
  bool sumsFit32Bits() const { return sumsFit32Bits_; }
  bool symmetric() const;

  // A tap as it goes into the sums, scaled together with the divisor; 0 outside the kernel.
  std::int16_t TapAt(std::int32_t i) const;
  I16x8 TapVector(std::int32_t i) const;

  // All tap vectors of kernels that are not longer than this, and of a tap of 0 behind the last.
  static constexpr std::int32_t kMostKeptTaps = 30;
  const I16x8* keptVectors() const { return keptVectors_; }

 private:
  void ChooseArithmetic(std::int32_t divisor, ValueRange values);
  bool UseWords(std::int32_t divisor, ValueRange sums);

  const Unaligned<const std::int16_t>* taps_;
  std::int32_t count_;
  std::int32_t commonFactor_ = 1;
  std::int32_t tapScale_ = 1;
  bool sumsFit32Bits_;
  TruncatedDivision division_;
  TapLayout layout_;
  I16x8 keptVectors_[kMostKeptTaps + 2];
};

// How many taps the blocks of a filter are made for, if not for a fixed number: up to kMostKeptTaps, or any.
inline constexpr int kAnyKeptTaps = -1;
inline constexpr int kAnyTaps = 0;

// The tap vectors of a kernel. A fixed number of them are held by value, so that they stay in registers.
template <int taps>
class TapVectors {
 public:
  explicit TapVectors(const PipelineKernel& kernel) : kernel_(kernel) {
    for (int i = 0; i < kFixed; ++i) fixed_[i] = kernel.keptVectors()[i];
  }

  std::int32_t count() const { return taps > 0 ? taps : kernel_.count(); }
  I16x8 operator[](std::int32_t i) const {
    return taps > 0 ? fixed_[i] : taps == kAnyKeptTaps ? kernel_.keptVectors()[i] : kernel_.TapVector(i);
  }

 private:
  static constexpr int kFixed = taps > 0 ? taps + 1 : 0;

  const PipelineKernel& kernel_;
  I16x8 fixed_[kFixed + 1];
};

}  // namespace norvala
