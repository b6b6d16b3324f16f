#pragma once

#include <cstdint>

// How the 8-bit separable filters turn the sum of a pixel's products into a byte.

namespace norvala {

// The output rule of one call, derived from its divisor.
struct DivisorScale {
  enum Mode : std::int32_t { None = 0, Shift = 1, Reciprocal = 2 };

  std::int32_t mode;
  std::int32_t shift;
  std::int32_t addend;
  float factor;
};

// Never returns for INT32_MIN; zero has no rule.
DivisorScale DeriveDivisorScale(std::int32_t divisor);

inline std::uint8_t ScaleSum(std::int32_t sum, const DivisorScale& scale) {
  if (scale.mode == DivisorScale::Reciprocal) {
    const double value = sum * static_cast<double>(scale.factor);
    return static_cast<std::uint8_t>((value > 0.0 ? value < 255.0 ? value : 255.0 : 0.0) + 0.5);
  }
  if (sum <= 0) return 0;
  const std::uint32_t value =
      (static_cast<std::uint32_t>(sum) + static_cast<std::uint32_t>(scale.addend)) >> scale.shift;
  return static_cast<std::uint8_t>(value < 255 ? value : 255);
}

// The same rule as an integer division: the byte is floor((sum + addend) / divisor), clamped to 0..255.
//
// For a power of two this is the rule itself. Otherwise the reciprocal is off by at most one part in 2^24, so that
// sum * factor misses sum / divisor by at most 2^-16 wherever the byte is below 255. Sums that do not lie half-way
// between two bytes keep a distance of at least 1 / (2 * divisor) from there, which is more than that up to the largest
// divisor served. Sums that do lie half-way, of even divisors only, all go up or all go down, as the reciprocal was
// rounded: the double product keeps the reciprocal's error.
struct RoundedDivision {
  static constexpr std::int32_t kLargestOther = 8192;

  std::int32_t divisor;
  std::int32_t addend;

  static bool IsPowerOfTwo(std::int32_t divisor) { return divisor > 0 && (divisor & (divisor - 1)) == 0; }
  static bool Serves(std::int32_t divisor) {
    return IsPowerOfTwo(divisor) || (divisor > 0 && divisor <= kLargestOther);
  }
  static RoundedDivision Of(std::int32_t divisor, const DivisorScale& scale);
};

}  // namespace norvala
