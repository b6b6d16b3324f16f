#pragma once

#include "filter/separable/divisor.h"
#include "filter/separable/window.h"

// The forms of the 8-bit separable filters; bw8.cpp lists what each one serves.

namespace norvala {

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
