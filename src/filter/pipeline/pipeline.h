#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/memory.h"
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

// The upper half of a 32-bit product: one operation on vectors of 16 bits.
inline std::uint16_t MulHigh(std::uint16_t a, std::uint16_t b) {
  return static_cast<std::uint16_t>((std::uint32_t{a} * b) >> 16);
}

// Divides by a power of two from 2 on.
struct PowerDivision {
  std::uint16_t operator()(std::uint16_t sum) const { return MulHigh(sum, reciprocal); }

  std::uint16_t reciprocal;  // 2^16 / divisor
};

// Divides by anything, using a reciprocal of more than 16 bits after the point (T. Granlund, P. L. Montgomery: Division
// by invariant integers using multiplication, 1994).
struct Division {
  // A shift by a variable number would not run in vectors of 16 bits.
  std::uint16_t operator()(std::uint16_t sum) const {
    const auto product = static_cast<std::uint16_t>(MulHigh(sum, reciprocal) + std::uint32_t{sum} * whole);
    return MulHigh(product, power);
  }

  std::uint16_t reciprocal;  // 2^16 * 2^shift / divisor, rounded up
  std::uint16_t whole;       // 2 for the divisor 1, whose reciprocal is 0 then
  std::uint16_t power;       // 2^16 / 2^shift
};

// How a divisor divides unsigned 16-bit sums.
class Divider {
 public:
  explicit Divider(std::int32_t divisor) {
    // The truncated product with the rounded 1.0 / divisor is the integer quotient, unless some multiple t * divisor
    // comes out below t. A reciprocal that is too small by the relative error e takes t * (1 - e) there, and that
    // rounds back to t for every t as soon as it does for t = 1, where doubles lie closest below.
    if (divisor < 1 || divisor * (1.0 / divisor) != 1.0) return;
    if (divisor == 1) {
      division_ = {0, 2, 1 << 15};
      largest_ = INT16_MAX;
      return;
    }
    // No sum reaches 2^16, so that all larger divisors make the same quotient: 0.
    const auto d = static_cast<std::uint32_t>(std::min(divisor, 1 << 16));
    std::uint32_t shift = 0;
    while ((2U << shift) < d) ++shift;
    const std::uint32_t scale = (1U << 16) << shift;
    const std::uint32_t reciprocal = (scale - 1) / d + 1;
    // Rounding up makes the quotient of a sum too large by sum * excess / (d * scale), which must stay below 1 / d.
    const std::uint32_t excess = reciprocal * d - scale;
    isPower_ = excess == 0 && d == 2U << shift;
    division_ = {static_cast<std::uint16_t>(isPower_ ? (1U << 16) / d : reciprocal), 0,
                 static_cast<std::uint16_t>((1U << 16) >> shift)};
    largest_ = excess == 0 ? UINT16_MAX : std::min<std::uint32_t>(UINT16_MAX, (scale - 1) / excess);
  }

  // The largest sum that is served; 0 where the results would not be those of double precision.
  std::uint32_t largest() const { return largest_; }

  // Calls use(division) with the cheaper of both that serves.
  template <class Use>
  void With(Use use) const {
    isPower_ ? use(PowerDivision{division_.reciprocal}) : use(division_);
  }

 private:
  Division division_ = {};
  bool isPower_ = false;
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
