#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/status.h"
#include "frame/types.h"

// What the row and the column filter of the pipeline share: the size of their work buffers, the sums of taps times
// values, and the division of the sums. A result is the product of the sum and the reciprocal of the divisor in double
// precision, truncated. Sums that fit 16 bits are divided as integers wherever that gives the same result.

namespace norvala {

using Tap = Unaligned<std::int16_t>;

inline StatusCode WritePipelineBufferSize(RegionSize size, std::int32_t kernelSize,
                                          Unaligned<std::int32_t>* bufferSize) {
  if (bufferSize == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size) || kernelSize < 1) return StatusCode::NonPositiveSize;
  const std::int64_t bytes = 4 * std::int64_t{kernelSize} + 64;
  if (bytes > INT32_MAX) return StatusCode::NonPositiveSize;
  *bufferSize = static_cast<std::int32_t>(bytes);
  return StatusCode::Success;
}

// ---- Sums ----

// Columns whose sums are formed at a time, on the stack.
inline constexpr std::int32_t kStrip = 1024;

// sums[x] = sums[x] + taps[0] * lines[0][x] + taps[1] * lines[1][x] + ..., where `fresh` sums count as 0. Out of line,
// since the loop vectorises only on its own.
template <bool fresh, int count, class Sum, class Line>
[[gnu::noinline]] void AddLines(const Line (&lines)[count], const std::int16_t (&taps)[count], std::int32_t width,
                                Sum* __restrict sums) {
  for (std::int32_t x = 0; x < width; ++x) {
    Sum sum = fresh ? Sum{0} : sums[x];
    for (int i = 0; i < count; ++i) sum = static_cast<Sum>(sum + static_cast<Sum>(taps[i] * lines[i][x]));
    sums[x] = sum;
  }
}

// The same for `count` lines and taps from index `first` on.
template <bool fresh, int count, class Sum, class LineAt, class TapAt>
inline void AddLinesFrom(std::int32_t first, LineAt line, TapAt tap, std::int32_t width, Sum* sums) {
  decltype(line(0)) lines[count];
  std::int16_t taps[count];
  for (int i = 0; i < count; ++i) {
    lines[i] = line(first + i);
    taps[i] = tap(first + i);
  }
  AddLines<fresh>(lines, taps, width, sums);
}

// sums[x] = sum over i of tap(i) * line(i)[x], added in the order of i. Sum is an unsigned integer, which wraps, or
// double.
template <class Sum, class LineAt, class TapAt>
inline void SumLines(LineAt line, TapAt tap, std::int32_t count, std::int32_t width, Sum* sums) {
  std::int32_t i = count >= 5 ? 5 : count >= 3 ? 3 : 1;
  switch (i) {
    case 5:
      AddLinesFrom<true, 5>(0, line, tap, width, sums);
      break;
    case 3:
      AddLinesFrom<true, 3>(0, line, tap, width, sums);
      break;
    default:
      AddLinesFrom<true, 1>(0, line, tap, width, sums);
  }
  for (; count - i >= 3; i += 3) AddLinesFrom<false, 3>(i, line, tap, width, sums);
  for (; i < count; ++i) AddLinesFrom<false, 1>(i, line, tap, width, sums);
}

// ---- Division in 16 bits ----

struct TapSums {
  std::int64_t magnitude = 0;
  bool negative = false;  // whether there is a negative tap
};

inline TapSums AddTaps(const Tap* kernel, std::int32_t kernelSize) {
  TapSums sums;
  for (std::int32_t i = 0; i < kernelSize; ++i) {
    const std::int32_t tap = kernel[i];
    sums.magnitude += tap < 0 ? -tap : tap;
    sums.negative |= tap < 0;
  }
  return sums;
}

// Quotients of unsigned 16-bit sums by a constant: a multiplication by its 16-bit reciprocal, rounded up (T. Granlund,
// P. L. Montgomery: Division by invariant integers using multiplication, 1994).
class Divider {
 public:
  explicit Divider(std::int32_t divisor) {
    if (divisor == 1) {
      whole_ = UINT16_MAX;
      largest_ = INT16_MAX;
    }
    // The truncated product with the rounded 1.0 / divisor is the integer quotient, unless some multiple t * divisor
    // comes out below t. A reciprocal that is too small by the relative error e takes t * (1 - e) there, and that
    // rounds back to t for every t as soon as it does for t = 1, where doubles lie closest below.
    if (divisor <= 1 || divisor * (1.0 / divisor) != 1.0) return;

    // No sum reaches 2^16, so that all larger divisors make the same quotient: 0.
    const auto d = static_cast<std::uint32_t>(std::min(divisor, 1 << 16));
    while ((2U << shift_) < d) ++shift_;
    const std::uint32_t scale = (1U << 16) << shift_;
    const std::uint32_t reciprocal = (scale - 1) / d + 1;
    reciprocal_ = static_cast<std::uint16_t>(reciprocal);
    // Rounding up makes the quotient of a sum too large by sum * excess / (d * scale), which must stay below 1 / d.
    const std::uint32_t excess = reciprocal * d - scale;
    largest_ = excess == 0 ? UINT16_MAX : std::min<std::uint32_t>(UINT16_MAX, (scale - 1) / excess);
  }

  // The largest sum that is served; 0 where the results would not be those of double precision.
  std::uint32_t largest() const { return largest_; }

  std::uint16_t operator()(std::uint16_t sum) const {
    const auto product = static_cast<std::uint16_t>((std::uint32_t{sum} * reciprocal_) >> 16);
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(product + (sum & whole_)) >> shift_);
  }

 private:
  std::uint16_t whole_ = 0;  // all bits, to take the sum itself, for the divisor 1
  std::uint16_t reciprocal_ = 0;
  std::uint16_t shift_ = 0;
  std::uint32_t largest_ = 0;
};

// Whether all sums over values of 0..largest can be formed and divided in 16 bits.
inline bool FitsSixteenBits(TapSums taps, std::int32_t largest, const Divider& divide) {
  const std::int64_t sum = taps.magnitude * largest;
  return sum <= divide.largest() && (!taps.negative || sum <= INT16_MAX);
}

// ---- Division in double precision ----

// dst[x] = sums[x] * factor, clamped to low..high and truncated, for up to kStrip sums.
template <class Sum, class Result>
[[gnu::noinline]] void ScaleSums(const Sum* __restrict sums, std::int32_t width, double factor, double low, double high,
                                 Result* __restrict dst) {
  // Two loops, each in lanes of one size, vectorise far better than one.
  std::int32_t scaled[kStrip];
  for (std::int32_t x = 0; x < width; ++x) {
    double v = sums[x] * factor;
    v = v > high ? high : v;
    v = v < low ? low : v;
    scaled[x] = static_cast<std::int32_t>(v);
  }
  for (std::int32_t x = 0; x < width; ++x) dst[x] = static_cast<Result>(scaled[x]);
}

}  // namespace norvala
