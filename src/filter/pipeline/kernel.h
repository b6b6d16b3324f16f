#pragma once

#include <cstdint>

#include "filter/reciprocal.h"
#include "filter/taps.h"
#include "frame/lanes.h"
#include "frame/memory.h"

// What the row and the column filter of the pipeline share: kernels, and the division of sums. A result is the product
// of a sum and the reciprocal of the divisor in double precision, clamped and truncated; narrower arithmetic is used
// wherever it makes the same.

namespace norvala {

// How sums are formed and divided, from the fastest way to the slowest. All but the last two need a divisor by which
// truncated products are integer quotients. The symmetric ones serve kernels whose opposite taps are equal: opposite
// values are added before they are weighed.
enum class Arithmetic {
  SymmetricWords,
  Words,  // sums of 16 bits, or 15 and a sign, divided by a WordReciprocal
  SymmetricSingle,
  Single,  // sums of 32 bits up to kLargestFloatDividend, times a FloatReciprocal
  Double,  // sums of 32 bits but -2^31, as -2^31 / -1 has more, times the reciprocal in double precision
  Plain,   // one result at a time, for sums of more than 32 bits and long kernels: wrapping in rows, double in columns.
           // Images narrower than a block are filtered like this whatever their arithmetic is.
};

// Division of sums, truncated towards zero. Quotients in 16 bits are limited to them; those in 32 bits are not yet.
struct TruncatedDivision {
  WordReciprocal words{2};
  bool hasNegativeWords = false;
  float singleReciprocal = 0;
  double reciprocal;

  I16x8 Divide(U16x8 sums) const {
    if (!hasNegativeWords) return BitCastLanes<I16x8>(words.Divide(sums));
    const auto sign = BitCastLanes<U16x8>(BitCastLanes<I16x8>(sums) >> 15);
    return BitCastLanes<I16x8>((words.Divide((sums ^ sign) - sign) ^ sign) - sign);
  }
  I32x4 DivideInSingle(U32x4 sums) const {
    return ConvertLanes<I32x4>(ConvertLanes<F32x4>(BitCastLanes<I32x4>(sums)) * singleReciprocal);
  }
  I32x4 DivideInDouble(U32x4 sums) const {
    return ConvertFromDoubles<I32x4>(ConvertToDoubles(BitCastLanes<I32x4>(sums)) * reciprocal);
  }
  std::int16_t Divide(double sum) const {
    const double quotient = sum * reciprocal;
    return static_cast<std::int16_t>(quotient > INT16_MAX ? INT16_MAX : quotient < INT16_MIN ? INT16_MIN : quotient);
  }
};

// A kernel and its divisor, with the arithmetic that serves for a range of values.
class PipelineKernel {
 public:
  PipelineKernel(const std::int16_t* taps, std::int32_t count, std::int32_t divisor, ValueRange<std::int64_t> values);

  std::int32_t count() const { return count_; }
  Arithmetic arithmetic() const { return arithmetic_; }
  const TruncatedDivision& division() const { return division_; }

  // The taps as they are.
  const Unaligned<const std::int16_t>* taps() const { return taps_; }

  // The taps as the arithmetic weighs them: for words and in single precision without the factor that they share with
  // the divisor, and doubled where that leaves a divisor of 1 for words. Vector i has tap i in all lanes for sums of 16
  // bits, and taps 2 i and 2 i + 1 in turns for sums of 32 bits. Not of plain arithmetic.
  const I16x8* tapVectors() const { return tapVectors_; }

  static constexpr std::int32_t kMostTaps = 64;  // of kernels that are not plain

 private:
  const Unaligned<const std::int16_t>* taps_;
  std::int32_t count_;
  Arithmetic arithmetic_ = Arithmetic::Plain;
  TruncatedDivision division_;
  I16x8 tapVectors_[kMostTaps] = {};
};

}  // namespace norvala
