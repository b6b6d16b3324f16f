#pragma once

#include <cstdint>

#include "filter/separable/window.h"

// The forms of the 8-bit separable filters; bw8.cpp lists what each one serves.

namespace norvala {

// ---- Output rule ----

// How the sum of a pixel's products becomes a byte, by the divisor of the call: the byte is the sum,
// (sum + addend) >> shift or floor(sum * factor + 0.5), limited to 0..255. This is the rule as it is stated; the
// filters apply it as a RoundedDivision, which needs the factor alone (1 for powers of two), or in doubles
// (FilterPlainly).
struct DivisorScale {
  enum Mode : std::int32_t { None = 0, Shift = 1, Reciprocal = 2 };

  std::int32_t mode;
  std::int32_t shift;
  std::int32_t addend;
  float factor;
};

// Does not return for INT32_MIN, as norvala.h warns; the divisor is not 0.
inline DivisorScale DeriveDivisorScale(std::int32_t divisor) {
  const auto bits = static_cast<std::uint32_t>(divisor);
  if (divisor == 1) return {DivisorScale::None, 0, 0, 1.0F};
  if (((bits - 1) & (bits | 0x80000000U)) != 0) {
    return {DivisorScale::Reciprocal, 0, 0, static_cast<float>(1.0 / divisor)};
  }
  // INT32_MIN passes as a power of two, and halving it ends at -1: the loop does not end, which norvala.h warns of.
  // volatile keeps the compiler from assuming that it ends.
  volatile std::int32_t half = divisor / 2;
  std::uint32_t shift = 0;
  for (; half != 0; ++shift) half = half >> 1;
  return {DivisorScale::Shift, static_cast<std::int32_t>(shift), divisor / 2, 1.0F};
}

// The same rule as an integer division: the byte is floor((sum + addend) / divisor), clamped to 0..255.
//
// For a power of two this is the rule itself. Otherwise the reciprocal is off by at most one part in 2^24, so that
// sum * factor misses sum / divisor by at most 2^-16 wherever the byte is below 255. Sums that do not lie half-way
// between two bytes keep a distance of at least 1 / (2 * divisor) from there, which is more than 2^-15 up to the
// largest divisor served. Sums that do lie half-way, of even divisors only, all go up where the reciprocal was rounded
// up and all go down where it was rounded down: the double product keeps the reciprocal's error.
struct RoundedDivision {
  static constexpr std::int32_t kLargestOther = (1 << 14) - 1;

  std::int32_t divisor;
  std::int32_t addend;

  static bool IsPowerOfTwo(std::int32_t divisor) { return divisor > 0 && (divisor & (divisor - 1)) == 0; }
  static bool Serves(std::int32_t divisor) {
    return IsPowerOfTwo(divisor) || (divisor > 0 && divisor <= kLargestOther);
  }
  static RoundedDivision Of(std::int32_t divisor, const DivisorScale& scale) {
    const bool halvesGoDown = divisor % 2 == 0 && static_cast<double>(scale.factor) * divisor < 1.0;
    return {divisor, divisor / 2 - (halvesGoDown ? 1 : 0)};
  }

  // The division of sums that are multiples of `common`, a divisor of the divisor, and stand without it.
  RoundedDivision Reduced(std::int32_t common) const {
    const std::int32_t reduced = divisor / common;
    return {reduced, reduced / 2 - (HalvesGoDown() && reduced % 2 == 0 ? 1 : 0)};  // odd ones have no halves
  }
  bool HalvesGoDown() const { return addend < divisor / 2; }
};

// ---- Forms ----

using SeparableCallBW8 = SeparableCall<BW8, std::int32_t>;

// A kernel of at most kMostReducedTaps taps and a divisor that RoundedDivision serves, without their common divisor. No
// sum of products leaves 32 bits.
constexpr std::int32_t kMostReducedTaps = 64;
struct ReducedKernel {
  const SeparableCallBW8& call;
  std::int32_t common;
  RoundedDivision division;
  std::int64_t highest;  // the largest sum and the rounding of the division
  std::int64_t lowest;   // the smallest sum, at most 0

  std::int32_t MirroredTap(std::int32_t j) const { return call.MirroredTap(j) / common; }
};

// A tap of 32 bits is 2^16 * HighHalf(tap) + LowHalf(tap), modulo 2^32.
inline std::int16_t LowHalf(std::int32_t tap) { return static_cast<std::int16_t>(tap); }
inline std::int16_t HighHalf(std::int32_t tap) {
  return static_cast<std::int16_t>((static_cast<std::uint32_t>(tap) - static_cast<std::uint32_t>(LowHalf(tap))) >> 16);
}

void FilterInWords(const ReducedKernel& kernel);
void FilterInPairs(const ReducedKernel& kernel);

}  // namespace norvala
