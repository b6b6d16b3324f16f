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

// The lines and taps of a sum from index `first` on.
template <int count, class Pixel>
struct Run {
  template <class LineAt, class TapAt>
  Run(std::int32_t first, LineAt line, TapAt tap) {
    for (int i = 0; i < count; ++i) {
      lines[i] = line(first + i);
      taps[i] = tap(first + i);
    }
  }

  template <class Sum>
  Sum AddTo(Sum sum, std::int32_t x) const {
    for (int i = 0; i < count; ++i) sum = static_cast<Sum>(sum + static_cast<Sum>(taps[i] * lines[i][x]));
    return sum;
  }

  const Unaligned<Pixel>* lines[count];
  std::int16_t taps[count];
};

// The loops stand in functions of their own, since the compilers vectorise them only there.

template <int count, class Pixel, class Sum>
[[gnu::noinline]] void AddRun(const Run<count, Pixel>& run, std::int32_t width, Sum* __restrict sums) {
  for (std::int32_t x = 0; x < width; ++x) sums[x] = run.AddTo(sums[x], x);
}

// dst[x] = finish(sum of the run), with sums of type Sum.
template <class Sum, class Result, int count, class Pixel, class Finish>
[[gnu::noinline]] void FinishRun(const Run<count, Pixel>& run, std::int32_t width, Finish finish,
                                 Unaligned<Result>* __restrict dst) {
  for (std::int32_t x = 0; x < width; ++x) dst[x] = finish(run.AddTo(Sum{0}, x));
}

template <class Result, class Sum, class Finish>
[[gnu::noinline]] void FinishSums(const Sum* __restrict sums, std::int32_t width, Finish finish,
                                  Unaligned<Result>* __restrict dst) {
  for (std::int32_t x = 0; x < width; ++x) dst[x] = finish(sums[x]);
}

// sums[x] = sum over i of tap(i) * line(i)[x], added in the order of i; the lines hold values of type Pixel. Sum is an
// unsigned integer, which wraps, or double.
template <class Pixel, class Sum, class LineAt, class TapAt>
void SumLines(LineAt line, TapAt tap, std::int32_t count, std::int32_t width, Sum* sums) {
  const auto keep = [](Sum sum) { return sum; };
  std::int32_t i = 0;
  if (count >= 5) {
    FinishRun<Sum, Sum>(Run<5, Pixel>(0, line, tap), width, keep, sums);
    i = 5;
  } else if (count >= 3) {
    FinishRun<Sum, Sum>(Run<3, Pixel>(0, line, tap), width, keep, sums);
    i = 3;
  } else {
    FinishRun<Sum, Sum>(Run<1, Pixel>(0, line, tap), width, keep, sums);
    i = 1;
  }
  for (; count - i >= 3; i += 3) AddRun(Run<3, Pixel>(i, line, tap), width, sums);
  for (; i < count; ++i) AddRun(Run<1, Pixel>(i, line, tap), width, sums);
}

// dst[x] = finish(sum over i of tap(i) * line(i)[x]) with sums of 16 bits, for up to kStrip columns.
template <class Pixel, class Result, class LineAt, class TapAt, class Finish>
void FilterNarrow(LineAt line, TapAt tap, std::int32_t count, std::int32_t width, Finish finish,
                  Unaligned<Result>* dst) {
  switch (count) {
    case 3:
      return FinishRun<std::uint16_t, Result>(Run<3, Pixel>(0, line, tap), width, finish, dst);
    case 5:
      return FinishRun<std::uint16_t, Result>(Run<5, Pixel>(0, line, tap), width, finish, dst);
    default:
      std::uint16_t sums[kStrip];
      SumLines<Pixel>(line, tap, count, width, sums);
      FinishSums<Result>(sums, width, finish, dst);
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

// Quotients of unsigned 16-bit sums by a constant: a multiplication by its 16-bit reciprocal, rounded up (T. Granlund,
// P. L. Montgomery: Division by invariant integers using multiplication, 1994).
class Divider {
 public:
  explicit Divider(std::int32_t divisor) {
    // The truncated product with the rounded 1.0 / divisor is the integer quotient, unless some multiple t * divisor
    // comes out below t. A reciprocal that is too small by the relative error e takes t * (1 - e) there, and that
    // rounds back to t for every t as soon as it does for t = 1, where doubles lie closest below.
    if (divisor < 1 || divisor * (1.0 / divisor) != 1.0) return;
    if (divisor <= 2) {
      whole_ = static_cast<std::uint16_t>(divisor == 1 ? 2 : 1);
      power_ = 1U << 15;
      largest_ = divisor == 1 ? INT16_MAX : UINT16_MAX;
      return;
    }
    // No sum reaches 2^16, so that all larger divisors make the same quotient: 0.
    const auto d = static_cast<std::uint32_t>(std::min(divisor, 1 << 16));
    std::uint32_t shift = 1;
    while ((2U << shift) < d) ++shift;
    const std::uint32_t scale = (1U << 16) << shift;
    const std::uint32_t reciprocal = (scale - 1) / d + 1;
    reciprocal_ = static_cast<std::uint16_t>(reciprocal);
    power_ = static_cast<std::uint16_t>((1U << 16) >> shift);
    // Rounding up makes the quotient of a sum too large by sum * excess / (d * scale), which must stay below 1 / d.
    const std::uint32_t excess = reciprocal * d - scale;
    largest_ = excess == 0 ? UINT16_MAX : std::min<std::uint32_t>(UINT16_MAX, (scale - 1) / excess);
  }

  // The largest sum that is served; 0 where the results would not be those of double precision.
  std::uint32_t largest() const { return largest_; }

  // All four operations exist for vectors of 16 bits; a shift by a variable number would not be taken for one.
  std::uint16_t operator()(std::uint16_t sum) const {
    const auto product = static_cast<std::uint16_t>((std::uint32_t{sum} * reciprocal_) >> 16);
    const auto scaled = static_cast<std::uint16_t>(product + static_cast<std::uint16_t>(std::uint32_t{sum} * whole_));
    return static_cast<std::uint16_t>((std::uint32_t{scaled} * power_) >> 16);
  }

 private:
  std::uint16_t reciprocal_ = 0;  // 2^16 * 2^shift / divisor, for divisors from 3 on
  std::uint16_t whole_ = 0;       // the factor for the divisors 1 and 2
  std::uint16_t power_ = 0;       // 2^16 / 2^shift
  std::uint32_t largest_ = 0;
};

// Whether all sums over values of 0..largest can be formed and divided in 16 bits.
inline bool FitsSixteenBits(TapSums taps, std::int32_t largest, const Divider& divide) {
  const std::int64_t sum = taps.magnitude * largest;
  return sum <= divide.largest() && (!taps.negative || sum <= INT16_MAX);
}

// ---- Division in double precision ----

// dst[x] = sums[x] * factor, clamped to low..high and truncated, for up to kStrip sums.
template <class Result, class Sum>
[[gnu::noinline]] void ScaleSums(const Sum* __restrict sums, std::int32_t width, double factor, double low, double high,
                                 Unaligned<Result>* __restrict dst) {
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
