#include "filter/pipeline/pipeline.h"

#include <bit>
#include <numeric>

namespace norvala {
namespace {

using Tap = Unaligned<const std::int16_t>;

// The sums of a kernel over values of a range.
ValueRange SumsOver(const Tap* taps, std::int32_t count, ValueRange values) {
  std::int64_t positive = 0;
  std::int64_t negative = 0;
  for (std::int32_t i = 0; i < count; ++i) (taps[i] < 0 ? negative : positive) += taps[i];
  return {positive * values.low + negative * values.high, positive * values.high + negative * values.low};
}

std::int32_t CommonFactor(const Tap* taps, std::int32_t count, std::int32_t divisor) {
  for (std::int32_t i = 0; i < count && divisor != 1; ++i) divisor = std::gcd(divisor, std::int32_t{taps[i]});
  return divisor;
}

}  // namespace

StatusCode WritePipelineBufferSize(RegionSize size, std::int32_t kernelSize, Unaligned<std::int32_t>* bufferSize) {
  if (bufferSize == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size) || kernelSize < 1) return StatusCode::NonPositiveSize;
  const std::int64_t bytes = 4 * std::int64_t{kernelSize} + 64;
  if (bytes > INT32_MAX) return StatusCode::NonPositiveSize;
  *bufferSize = static_cast<std::int32_t>(bytes);
  return StatusCode::Success;
}

// ---- Division ----

bool TruncatedDivision::UseWords(std::int32_t divisor, ValueRange sums) {
  const WordReciprocal reciprocal(divisor);
  const bool negative = sums.low < 0;
  const std::int64_t largest = negative ? std::min<std::int64_t>(reciprocal.largest, INT16_MAX) : reciprocal.largest;
  if (sums.largestMagnitude() > largest) return false;
  arithmetic_ = Arithmetic::Words;
  negativeWords_ = negative;
  words_ = reciprocal;
  return true;
}

void TruncatedDivision::UseShift(std::int32_t divisor) {
  arithmetic_ = Arithmetic::Shift;
  shift_ = std::countr_zero(static_cast<std::uint32_t>(divisor));
}

void TruncatedDivision::UseSingle(std::int32_t divisor) {
  arithmetic_ = Arithmetic::Single;
  // Beyond kLargestFloatDividend all divisors make the same quotient: 0.
  singleReciprocal_ = FloatReciprocal(std::min(divisor, kLargestFloatDividend + 1));
}

// ---- Kernels ----

PipelineKernel::PipelineKernel(const std::int16_t* taps, std::int32_t count, std::int32_t divisor, ValueRange values,
                               TapLayout pairs)
    : taps_(taps), count_(count), division_(1.0 / divisor) {
  ChooseArithmetic(divisor, values);
  layout_ = arithmetic() == Arithmetic::Words ? TapLayout::Words : pairs;
  if (count > kMostKeptTaps) return;
  for (std::int32_t i = 0; i < count + 2; ++i) keptVectors_[i] = TapVector(i);
}

void PipelineKernel::ChooseArithmetic(std::int32_t divisor, ValueRange values) {
  ValueRange sums = SumsOver(taps_, count_, values);
  sumsFit32Bits_ = sums.low >= INT32_MIN && sums.high <= INT32_MAX;
  // The truncated product with the rounded reciprocal is the integer quotient, unless some multiple t * divisor comes
  // out below t. A reciprocal that is too small by the relative error e takes t * (1 - e) there, and that rounds back
  // to t for every t as soon as it does for t = 1, where doubles lie closest below. No product of 32 bits comes near
  // the quotient above its own: that is 1 / divisor away, more than 2^-52 of it.
  if (divisor < 1 || divisor * (1.0 / divisor) != 1.0 || !sumsFit32Bits_) return;
  if (UseWords(divisor, sums)) return;

  // An integer quotient stays the same without a factor that all taps share with the divisor. The taps of longer
  // kernels would be divided in every sum.
  const std::int32_t factor = count_ <= kMostKeptTaps ? CommonFactor(taps_, count_, divisor) : 1;
  divisor /= factor;
  sums = {sums.low / factor, sums.high / factor};
  commonFactor_ = factor;
  if (UseWords(divisor, sums)) return;
  if (sums.largestMagnitude() <= kLargestFloatDividend) {
    division_.UseSingle(divisor);
  } else if (std::has_single_bit(static_cast<std::uint32_t>(divisor))) {
    division_.UseShift(divisor);
  } else {
    commonFactor_ = 1;  // Double divides by the whole divisor
  }
}

// The reciprocal of 1 does not fit 16 bits: sums are doubled and divided by 2.
bool PipelineKernel::UseWords(std::int32_t divisor, ValueRange sums) {
  const std::int32_t scale = divisor == 1 ? 2 : 1;
  if (!division_.UseWords(scale * divisor, {scale * sums.low, scale * sums.high})) return false;
  tapScale_ = scale;
  return true;
}

bool PipelineKernel::symmetric() const {
  for (std::int32_t i = 0; i < count_ / 2; ++i) {
    if (taps_[i] != taps_[count_ - 1 - i]) return false;
  }
  return true;
}

std::int16_t PipelineKernel::TapAt(std::int32_t i) const {
  if (i < 0 || i >= count_) return 0;
  const std::int32_t tap = commonFactor_ == 1 ? taps_[i] : taps_[i] / commonFactor_;
  return static_cast<std::int16_t>(tap * tapScale_);
}

I16x8 PipelineKernel::TapVector(std::int32_t i) const {
  const bool even = i % 2 == 0;
  std::int32_t first = i;
  std::int32_t second = i;
  if (layout_ == TapLayout::RowPairs) {
    first = even ? 2 * i : 2 * i - 1;
    second = first + 2;
  } else if (layout_ == TapLayout::ColumnPairs) {
    first = even ? i : i - 2;
    second = first + 1;
  }
  const auto low = static_cast<std::uint16_t>(TapAt(first));
  const auto high = static_cast<std::uint16_t>(TapAt(second));
  return BitCastLanes<I16x8>(Splat<U32x4>(low | static_cast<std::uint32_t>(high) << 16));
}

}  // namespace norvala
