#include "filter/pipeline/kernel.h"

#include <algorithm>

#include "filter/filter.h"

namespace norvala {
namespace {

bool IsSymmetric(const Unaligned<const std::int16_t>* taps, std::int32_t count) {
  for (std::int32_t i = 0; i < count / 2; ++i) {
    if (taps[i] != taps[count - 1 - i]) return false;
  }
  return true;
}

// Whether 16 bits hold the sums and the quotients by the reciprocal are exact.
bool WordsServe(const WordReciprocal& reciprocal, ValueRange<std::int64_t> sums) {
  if (sums.low >= 0) return sums.high <= reciprocal.largest;
  return std::max(-sums.low, sums.high) <= std::min<std::int64_t>(reciprocal.largest, INT16_MAX);
}

}  // namespace

StatusCode FilterPipelineGetBufferSizeBW8(RegionSize size, std::int32_t kernelSize, std::int32_t* bufferSize) {
  if (bufferSize == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size) || kernelSize < 1) return StatusCode::NonPositiveSize;
  const std::int64_t bytes = 4 * std::int64_t{kernelSize} + 64;
  if (bytes > INT32_MAX) return StatusCode::NonPositiveSize;
  StoreUnaligned(bufferSize, static_cast<std::int32_t>(bytes));
  return StatusCode::Success;
}

PipelineKernel::PipelineKernel(const std::int16_t* taps, std::int32_t count, std::int32_t divisor,
                               ValueRange<std::int64_t> values)
    : taps_(taps), count_(count), division_{.reciprocal = 1.0 / divisor} {
  const auto tapAt = [this](std::int32_t i) { return taps_[i]; };
  ValueRange sums = RangeOfSums(count, tapAt, values);
  if (count > kMostTaps || sums.low <= INT32_MIN || sums.high > INT32_MAX) return;
  arithmetic_ = Arithmetic::Double;
  std::int32_t factor = 1;
  std::int32_t scale = 1;
  std::int32_t weighed = count;
  // The truncated product with the rounded reciprocal is the integer quotient, unless some multiple t * divisor comes
  // out below t. A reciprocal that is too small by the relative error e takes t * (1 - e) there, and that rounds back
  // to t for every t as soon as it does for t = 1, where doubles lie closest below. No product of a 32-bit sum comes
  // near the quotient above its own: that is 1 / divisor away, more than 2^-52 of it.
  if (divisor >= 1 && divisor * (1.0 / divisor) == 1.0) {
    const bool isSymmetric = IsSymmetric(taps_, count);
    // An integer quotient stays the same without a factor that all taps share with the divisor.
    const std::int32_t common = CommonDivisor(divisor, count, tapAt);
    divisor /= common;
    sums = {sums.low / common, sums.high / common};
    // The reciprocal of 1 does not fit 16 bits: sums are doubled and divided by 2.
    const std::int32_t doubling = divisor == 1 ? 2 : 1;
    const WordReciprocal words(doubling * divisor);
    if (WordsServe(words, {doubling * sums.low, doubling * sums.high})) {
      arithmetic_ = isSymmetric ? Arithmetic::SymmetricWords : Arithmetic::Words;
      division_.words = words;
      division_.hasNegativeWords = sums.low < 0;
      factor = common;
      scale = doubling;
    } else if (std::max(-sums.low, sums.high) <= kLargestFloatDividend) {
      // Sums of 16 bits may wrap on the way, and so may the two values that are added first. Sums of 32 bits take words
      // as signed factors (MultiplyAddPairs): two values must fit one.
      const bool wordsHoldTwo = values.low >= INT16_MIN / 2 && values.high <= INT16_MAX / 2;
      arithmetic_ = isSymmetric && wordsHoldTwo ? Arithmetic::SymmetricSingle : Arithmetic::Single;
      if (arithmetic_ == Arithmetic::SymmetricSingle) weighed = (count + 1) / 2;
      // Beyond kLargestFloatDividend all divisors make the same quotient: 0.
      division_.singleReciprocal = FloatReciprocal(std::min(divisor, kLargestFloatDividend + 1));
      factor = common;
    }
  }
  const auto tap = [&](std::int32_t i) {
    return static_cast<std::int16_t>(i < weighed ? taps_[i] / factor * scale : 0);
  };
  const bool isWords = arithmetic_ == Arithmetic::SymmetricWords || arithmetic_ == Arithmetic::Words;
  for (std::int32_t i = 0; i < count; ++i) {
    tapVectors_[i] = isWords ? SplatPair(tap(i), tap(i)) : SplatPair(tap(2 * i), tap(2 * i + 1));
  }
}

}  // namespace norvala
