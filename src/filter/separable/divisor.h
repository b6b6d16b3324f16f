#pragma once

#include <cstdint>

// How the 8-bit separable filters turn the sum of a pixel's products into a byte.

namespace norvala {

// The output rule of one call, derived from its divisor: the byte is the sum, (sum + addend) >> shift or
// floor(sum * factor + 0.5), limited to 0..255. The filters take it as a RoundedDivision or in doubles (parts.cpp).
struct DivisorScale {
  enum Mode : std::int32_t { None = 0, Shift = 1, Reciprocal = 2 };

  std::int32_t mode;
  std::int32_t shift;
  std::int32_t addend;
  float factor;
};

// Does not return for INT32_MIN, as norvala.h warns; the divisor is not 0.
DivisorScale DeriveDivisorScale(std::int32_t divisor);

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
  static RoundedDivision Of(std::int32_t divisor, const DivisorScale& scale);

  // The division of sums that are multiples of `common`, a divisor of the divisor, and stand without it.
  RoundedDivision Reduced(std::int32_t common) const;
};

}  // namespace norvala
