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
inline constexpr std::int32_t kStrip = 256;

// sums[x] = sum over i of tap(i) * line(i)[x]. Sum is an unsigned integer, which wraps, or double. kTaps is the number
// of taps where the compiler knows it, otherwise 0.
template <int kTaps, class Sum, class Line, class TapAt>
inline void SumLines(Line line, TapAt tap, std::int32_t count, std::int32_t width, Sum* __restrict sums) {
  if constexpr (kTaps != 0) {
    decltype(line(0)) lines[kTaps];
    std::int16_t taps[kTaps];
    for (int i = 0; i < kTaps; ++i) {
      lines[i] = line(i);
      taps[i] = tap(i);
    }
    for (std::int32_t x = 0; x < width; ++x) {
      Sum sum = 0;
      for (int i = 0; i < kTaps; ++i) sum = static_cast<Sum>(sum + static_cast<Sum>(taps[i] * lines[i][x]));
      sums[x] = sum;
    }
  } else {
    for (std::int32_t x = 0; x < width; ++x) sums[x] = 0;
    for (std::int32_t i = 0; i < count; ++i) {
      const auto values = line(i);
      const std::int16_t weight = tap(i);
      for (std::int32_t x = 0; x < width; ++x) {
        sums[x] = static_cast<Sum>(sums[x] + static_cast<Sum>(weight * values[x]));
      }
    }
  }
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

// Whether the sums over values 0..largest can be formed and divided in 16 bits.
//
// The truncated product of a sum and the rounded reciprocal is the integer quotient unless some multiple t * divisor
// comes out below t. A reciprocal that is too small by the relative error e takes t * (1 - e) there, and that rounds
// back to t for every t as soon as it does for t = 1, where doubles lie closest below.
inline bool FitsSixteenBits(TapSums taps, std::int32_t largest, std::int32_t divisor) {
  if (divisor < 1 || divisor * (1.0 / divisor) != 1.0) return false;
  return taps.magnitude * largest <= (taps.negative || divisor == 1 ? INT16_MAX : UINT16_MAX);
}

// Quotients of unsigned 16-bit integers by a constant of at least 1 (any other is taken as 1): a multiplication by a
// reciprocal of 17 bits, whose leading 1 is added apart (T. Granlund, P. L. Montgomery: Division by invariant integers
// using multiplication, 1994).
class Divider {
 public:
  explicit Divider(std::int32_t divisor) {
    // No dividend reaches 2^16, so that all larger divisors make the same quotient: 0.
    const auto d = static_cast<std::uint32_t>(std::clamp(divisor, 1, 1 << 16));
    std::uint32_t bits = 0;
    while ((1U << bits) < d) ++bits;
    reciprocal_ = static_cast<std::uint16_t>((((1U << bits) - d) << 16) / d + 1);
    first_ = static_cast<std::uint16_t>(d > 1 ? 1 : 0);
    second_ = static_cast<std::uint16_t>(bits - first_);
  }

  std::uint16_t operator()(std::uint16_t n) const {
    const auto part = static_cast<std::uint16_t>((std::uint32_t{n} * reciprocal_) >> 16);
    const auto rest = static_cast<std::uint16_t>(static_cast<std::uint16_t>(n - part) >> first_);
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(part + rest) >> second_);
  }

 private:
  std::uint16_t reciprocal_;
  std::uint16_t first_;
  std::uint16_t second_;
};

// ---- Division in double precision ----

// dst[x] = sums[x] * factor, clamped to low..high and truncated, for up to kStrip sums.
template <class Sum, class Result>
inline void ScaleSums(const Sum* __restrict sums, std::int32_t width, double factor, double low, double high,
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
