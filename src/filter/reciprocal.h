#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "frame/lanes.h"

// Integer division of many values by one divisor: products with a reciprocal that is rounded up.

namespace norvala {

// Division of words (T. Granlund, P. L. Montgomery: Division by invariant integers using multiplication, 1994):
// floor(value / divisor) is (value * multiplier) >> 16 >> shift for every value up to `largest`, and no less beyond.
struct WordReciprocal {
  // The divisor is at least 2.
  //
  // With the largest shift whose multiplier fits 16 bits, multiplier * divisor = 2^(16 + shift) + excess. Rounding up
  // makes the product of a value too large by value * excess / divisor in units of 2^-(16 + shift), which must stay
  // below one part in `divisor`, the distance of a quotient to the next whole number: value * excess < 2^(16 + shift).
  explicit WordReciprocal(std::int32_t divisor) {
    const auto d = static_cast<std::uint32_t>(std::min(divisor, 1 << 16));  // all larger ones make the same quotient: 0
    shift = static_cast<int>(std::bit_width(d - 1)) - 1;
    const std::uint32_t power = 1U << (16 + shift);
    const std::uint32_t rounded = (power + d - 1) / d;
    const std::uint32_t excess = rounded * d - power;
    multiplier = static_cast<std::uint16_t>(rounded);
    largest = excess == 0 ? UINT16_MAX : std::min<std::uint32_t>(UINT16_MAX, (power - 1) / excess);
  }

  U16x8 Divide(U16x8 values) const { return HighProducts(values, Splat<U16x8>(multiplier)) >> shift; }

  std::uint16_t multiplier;
  int shift;
  std::uint32_t largest;
};

// Division of 32-bit sums in single precision: the product of a sum and this reciprocal, cut off, is the quotient cut
// off for all sums from -kLargestFloatDividend to kLargestFloatDividend. Both conversion and product keep the order of
// sums, so that larger ones make no smaller quotients. The divisor lies between 1 and 2^29, where a double holds its
// product with a float.
//
// The reciprocal is no less than 1 / divisor, so that multiples of the divisor never fall below their quotient, which a
// float holds. It exceeds 1 / divisor by less than one part in 2^23, and rounding the product adds at most half of
// that: a sum just below a multiple stays below its quotient while sum / divisor * 1.5 * 2^-23 < 1 / divisor.
inline constexpr std::int32_t kLargestFloatDividend = ((1 << 24) - 1) / 3;

inline float FloatReciprocal(std::int32_t divisor) {
  const auto nearest = static_cast<float>(1.0 / divisor);
  const bool isLess = static_cast<double>(nearest) * divisor < 1.0;
  return isLess ? std::bit_cast<float>(std::bit_cast<std::uint32_t>(nearest) + 1) : nearest;
}

// Rounded division of 32-bit sums to bytes in single precision: the product of a sum and this reciprocal, rounded to
// the nearest whole number, is the quotient rounded to the nearest one, halves up or down, wherever that lies between 0
// and 255. Larger and smaller sums have no smaller and no larger products. The divisor is less than
// kRoundingReciprocalEnd and no power of two.
//
// Let u be 2^-24, the largest relative error of a float that is rounded to the nearest. Sums of such quotients,
// less than 2^24, are floats without an error.
// - Odd divisors: no quotient is nearer to half-way than 1 / (2 * divisor). The reciprocal is off by at most u and the
//   product by another, together less than that while sum * 2 u < 1 / 2, as it is up to 255.5 * kRoundingReciprocalEnd.
// - Even divisors have quotients half-way. Their reciprocals are moved by 2.002 u to the side where halves go, up or
//   down, and are then off by 1.002 u to 3.002 u to that side. A product is rounded to half-way only from within half
//   of the distance between floats, which is at most u of it: those of sums half-way are further away. The nearest
//   other quotients are 1 / divisor away from half-way and keep their side while sum * 4.002 u < 1, again up to 255.5 *
//   kRoundingReciprocalEnd.
inline constexpr std::int32_t kRoundingReciprocalEnd = 1 << 14;

inline float RoundingReciprocal(std::int32_t divisor, bool halvesGoDown) {
  constexpr double kMove = 0x1.004p-23;  // 2.002 u
  const double moved = divisor % 2 != 0 ? 1.0 : halvesGoDown ? 1.0 - kMove : 1.0 + kMove;
  return static_cast<float>(moved / divisor);
}

}  // namespace norvala
