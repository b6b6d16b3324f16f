#pragma once

#include <cstddef>

#include "analysis/dft/complex_lanes.h"
#include "analysis/dft/factors.h"
#include "frame/aligned_memory.h"

// Passes of the self-sorting transform (Stockham; see Van Loan, Computational Frameworks for the Fast Fourier
// Transform, section 1.7): decimation in frequency that writes each pass's results where the next one reads them in
// order, from one buffer to another, so that no reordering by reversed digits is needed.

namespace norvala::dft {

// The twiddle factors of all passes in the order of their use: for each pass and each p below `remaining`, the roots
// w^(p k before) for k = 1 .. factor - 1; those of the last pass are all 1 and not used. `roots` has the order length *
// stride.
AlignedVector<Root> MakeTwiddles(const FactorList& factors, const Root* roots, std::ptrdiff_t stride);

template <class V>
inline void Butterfly(Complex<V> (&x)[2]) {
  const Complex<V> a = x[0], b = x[1];
  x[0] = a + b;
  x[1] = a - b;
}

// In double from the float inputs, each result rounded once.
template <class V>
inline void Butterfly(Complex<V> (&x)[3]) {
  V v[6] = {x[0].re, x[1].re, x[2].re, x[0].im, x[1].im, x[2].im};
  InDouble(v, [](auto& d) {
    const auto sumRe = d[1] + d[2], turnedIm = (d[1] - d[2]) * -0.8660254;
    const auto sumIm = d[4] + d[5], turnedRe = (d[4] - d[5]) * -0.8660254;
    const auto halfRe = d[0] + sumRe * -0.5, halfIm = d[3] + sumIm * -0.5;
    d[0] += sumRe;
    d[1] = halfRe - turnedRe;
    d[2] = halfRe + turnedRe;
    d[3] += sumIm;
    d[4] = halfIm + turnedIm;
    d[5] = halfIm - turnedIm;
  });
  for (int k = 0; k < 3; ++k) x[k] = {v[k], v[k + 3]};
}

template <class V>
inline void Butterfly(Complex<V> (&x)[4]) {
  const Complex<V> a = x[0] + x[2], b = x[0] - x[2];
  const Complex<V> c = x[1] + x[3], d = TimesMinusI(x[1] - x[3]);
  x[0] = a + c;
  x[1] = b + d;
  x[2] = a - c;
  x[3] = b - d;
}

template <class V>
inline void Butterfly(Complex<V> (&x)[5]) {
  constexpr float kRoot5Quarter = 0.5590169943749475F;
  constexpr float kSin1 = 0.9510565162951535F;  // sin(2 pi / 5)
  constexpr float kSin2 = 0.5877852522924731F;  // sin(4 pi / 5)
  const Complex<V> s1 = x[1] + x[4], d1 = x[1] - x[4];
  const Complex<V> s2 = x[2] + x[3], d2 = x[2] - x[3];
  const Complex<V> sum = s1 + s2, difference = s1 - s2;
  const Complex<V> middle = {x[0].re - sum.re * 0.25F, x[0].im - sum.im * 0.25F};
  const Complex<V> apart = {difference.re * kRoot5Quarter, difference.im * kRoot5Quarter};
  const Complex<V> a1 = middle + apart, a2 = middle - apart;
  const Complex<V> b1 = TimesMinusI(Complex<V>{d1.re * kSin1 + d2.re * kSin2, d1.im * kSin1 + d2.im * kSin2});
  const Complex<V> b2 = TimesMinusI(Complex<V>{d1.re * kSin2 - d2.re * kSin1, d1.im * kSin2 - d2.im * kSin1});
  x[0] = x[0] + sum;
  x[1] = a1 + b1;
  x[2] = a2 + b2;
  x[3] = a2 - b2;
  x[4] = a1 - b1;
}

// How the loops of a pass run: the first one has a stride of 1, so that its inner loop is a single step; the last one
// needs no twiddle factors.
enum class PassKind { First, Middle, Last };

template <int radix, PassKind kind, class V>
void FixedRadixPass(const Complex<V>* __restrict in, Complex<V>* __restrict out, const FactorRecord& record,
                    const Root* __restrict twiddles) {
  constexpr bool twiddled = kind != PassKind::Last;
  const std::ptrdiff_t stride = kind == PassKind::First ? 1 : record.before;
  const std::ptrdiff_t jump = stride * record.remaining;
  for (std::ptrdiff_t p = 0; p < record.remaining; ++p, twiddles += radix - 1, out += (radix - 1) * stride) {
    Complex<V> w[radix];
    if constexpr (twiddled) {
      for (int k = 1; k < radix; ++k) w[k] = Broadcast<V>(twiddles[k - 1]);
    }
    for (std::ptrdiff_t q = 0; q < stride; ++q, ++in, ++out) {
      Complex<V> x[radix];
#pragma GCC unroll 8
      for (int j = 0; j < radix; ++j) x[j] = in[j * jump];
      Butterfly(x);
      out[0] = x[0];
#pragma GCC unroll 8
      for (int k = 1; k < radix; ++k) out[k * stride] = twiddled ? Multiply(x[k], w[k]) : x[k];
    }
  }
}

// Runs a pass of one of the radices that have a butterfly of their own.
template <int radix, class V>
inline void Pass(const Complex<V>* in, Complex<V>* out, const FactorRecord& record, const Root* twiddles) {
  if (record.remaining == 1) {
    FixedRadixPass<radix, PassKind::Last>(in, out, record, twiddles);
  } else if (record.before == 1) {
    FixedRadixPass<radix, PassKind::First>(in, out, record, twiddles);
  } else {
    FixedRadixPass<radix, PassKind::Middle>(in, out, record, twiddles);
  }
}

}  // namespace norvala::dft
