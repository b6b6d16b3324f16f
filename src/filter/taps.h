#pragma once

#include <cstdint>
#include <numeric>

// What is asked of the taps of a kernel before a method is chosen for it.

namespace norvala {

// The greatest divisor that a divisor and all taps share. Without it the quotients of sums stay the same.
template <class TapAt>
std::int32_t CommonDivisor(std::int32_t divisor, std::int32_t count, TapAt tap) {
  for (std::int32_t i = 0; i < count && divisor != 1; ++i) divisor = std::gcd(divisor, std::int32_t{tap(i)});
  return divisor;
}

// Values or sums from `low` to `high`, 0 among them.
template <class T>
struct ValueRange {
  T low;
  T high;
};

// The sums of the products of all taps with values of a range.
template <class T, class TapAt>
ValueRange<T> RangeOfSums(std::int32_t count, TapAt tap, ValueRange<T> values) {
  T positive = 0;
  T negative = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const T value{tap(i)};
    (value < 0 ? negative : positive) += value;
  }
  return {positive * values.low + negative * values.high, positive * values.high + negative * values.low};
}

}  // namespace norvala
