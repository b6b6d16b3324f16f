#include "filter/separable/divisor.h"

#include <algorithm>
#include <bit>

namespace norvala {

DivisorScale DeriveDivisorScale(std::int32_t divisor) {
  const auto bits = static_cast<std::uint32_t>(divisor);
  if (divisor == 1) return {DivisorScale::None, 0, 0, 1.0F};
  if (((bits - 1) & (bits | 0x80000000U)) != 0) {
    return {DivisorScale::Reciprocal, 0, 0, static_cast<float>(1.0 / divisor)};
  }
  // Powers of two, and INT32_MIN, whose half never becomes 0: volatile keeps that loop a loop.
  volatile std::int32_t half = divisor / 2;
  std::uint32_t shift = 0;
  while (half != 0) {
    half = half >> 1;
    ++shift;
  }
  return {DivisorScale::Shift, static_cast<std::int32_t>(shift), static_cast<std::int32_t>(1U << ((shift + 31) % 32)),
          1.0F};
}

RoundedDivision RoundedDivision::Of(std::int32_t divisor, const DivisorScale& scale) {
  const bool halvesGoDown =
      scale.mode == DivisorScale::Reciprocal && divisor % 2 == 0 && static_cast<double>(scale.factor) * divisor < 1.0;
  return {divisor, divisor / 2 - (halvesGoDown ? 1 : 0)};
}

bool MultiplierU16::Find(std::int32_t divisor, std::int32_t limit, MultiplierU16* found) {
  const auto d = static_cast<std::uint32_t>(divisor);
  // The largest shift whose multiplier, 2^(16 + shift) / divisor rounded up, fits 16 bits.
  const int shift = static_cast<int>(std::bit_width(d - 1)) - 1;
  const std::uint32_t power = 1U << (16 + shift);
  const std::uint32_t multiplier = (power + d - 1) / d;
  if (multiplier > UINT16_MAX) return false;
  // Rounding up makes every product too large by value * excess / divisor; quotient q stays right up to its last value
  // q * divisor + divisor - 1 if (q + 1) * excess < multiplier.
  const std::uint32_t excess = multiplier * d - power;
  const std::uint32_t quotients = std::min(255U, static_cast<std::uint32_t>(limit) / d + 1);
  if (quotients * excess >= multiplier) return false;
  *found = {static_cast<std::uint16_t>(multiplier), shift};
  return true;
}

}  // namespace norvala
