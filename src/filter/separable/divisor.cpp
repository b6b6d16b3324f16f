#include "filter/separable/divisor.h"

namespace norvala {

DivisorScale DeriveDivisorScale(std::int32_t divisor) {
  const auto bits = static_cast<std::uint32_t>(divisor);
  if (divisor == 1) return {DivisorScale::None, 0, 0, 1.0F};
  if (((bits - 1) & (bits | 0x80000000U)) != 0) {
    return {DivisorScale::Reciprocal, 0, 0, static_cast<float>(1.0 / divisor)};
  }
  // INT32_MIN passes as a power of two, and halving it ends at -1: the loop does not end, which norvala.h warns of.
  // volatile keeps the compiler from assuming that it ends.
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

RoundedDivision RoundedDivision::Reduced(std::int32_t common) const {
  const bool halvesGoDown = addend < divisor / 2;
  const std::int32_t reduced = divisor / common;
  return {reduced, reduced / 2 - (halvesGoDown && reduced % 2 == 0 ? 1 : 0)};  // no sums lie half-way for odd ones
}

}  // namespace norvala
