#include "analysis/dft/stockham.h"

#include <span>
#include <utility>

#include "analysis/dft/direct.h"

namespace norvala::dft {

bool StockhamPlan::Factorise(std::int32_t newLength) {
  length = newLength;
  factorCount = 0;
  std::int32_t before = 1;
  const auto append = [&](std::int32_t factor) {
    factors[factorCount++] = {factor, length / (before * factor), before, 0, 0};
    before *= factor;
  };
  std::int32_t remainder = length;
  int fours = 0;
  for (; remainder % 4 == 0; remainder /= 4) ++fours;
  if (remainder % 2 == 0) {
    remainder /= 2;
    append(2);
  }
  for (int i = 0; i < fours; ++i) append(4);
  for (std::int32_t factor = 3; remainder >= factor * factor; factor += 2) {
    if (factor > kLargestRadix) return false;
    for (; remainder >= factor * factor && remainder % factor == 0; remainder /= factor) append(factor);
  }
  const bool isProduct = factorCount > 0;
  if (remainder > 1) append(remainder);
  return isProduct && remainder <= kLargestRadix;
}

namespace {

// ---- Butterflies: the transforms of in[0], in[jump], in[2 * jump], ... ----

template <class V>
inline void Butterfly(const Complex<V>* in, std::ptrdiff_t jump, Complex<V> (&x)[2]) {
  const Complex<V> a = in[0], b = in[jump];
  x[0] = a + b;
  x[1] = a - b;
}

// In double precision, each result rounded once. The sine of 60 degrees has these seven digits on purpose.
template <class V>
inline void Butterfly(const Complex<V>* in, std::ptrdiff_t jump, Complex<V> (&x)[3]) {
  const V* const from[6] = {&in[0].re, &in[jump].re, &in[2 * jump].re, &in[0].im, &in[jump].im, &in[2 * jump].im};
  V v[6];
  InDouble(from, v, [](auto& d) {
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
inline void Butterfly(const Complex<V>* in, std::ptrdiff_t jump, Complex<V> (&x)[4]) {
  const Complex<V> a = in[0] + in[2 * jump], b = in[0] - in[2 * jump];
  const Complex<V> c = in[jump] + in[3 * jump], d = TimesMinusI(in[jump] - in[3 * jump]);
  x[0] = a + c;
  x[1] = b + d;
  x[2] = a - c;
  x[3] = b - d;
}

template <class V>
inline void Butterfly(const Complex<V>* in, std::ptrdiff_t jump, Complex<V> (&x)[5]) {
  constexpr float kRoot5Quarter = 0.5590169943749475F;
  constexpr float kSin1 = 0.9510565162951535F;  // sin(2 pi / 5)
  constexpr float kSin2 = 0.5877852522924731F;  // sin(4 pi / 5)
  const Complex<V> first = in[0];
  const Complex<V> s1 = in[jump] + in[4 * jump], d1 = in[jump] - in[4 * jump];
  const Complex<V> s2 = in[2 * jump] + in[3 * jump], d2 = in[2 * jump] - in[3 * jump];
  const Complex<V> sum = s1 + s2, difference = s1 - s2;
  const Complex<V> middle = first - sum * 0.25F, apart = difference * kRoot5Quarter;
  const Complex<V> a1 = middle + apart, a2 = middle - apart;
  const Complex<V> b1 = TimesMinusI(d1 * kSin1 + d2 * kSin2), b2 = TimesMinusI(d1 * kSin2 - d2 * kSin1);
  x[0] = first + sum;
  x[1] = a1 + b1;
  x[2] = a2 + b2;
  x[3] = a2 - b2;
  x[4] = a1 - b1;
}

// Of any odd radix.
template <class V>
void OddButterfly(const Complex<V>* in, std::ptrdiff_t jump, std::ptrdiff_t radix, const Root* roots, Complex<V>* x) {
  Complex<V> sums[kLargestRadix];
  AddAndSubtract(in, jump, sums, radix);
  const auto keep = [](auto value) { return value; };
  SumDirectly(sums, radix, roots, keep, [=](std::ptrdiff_t k, Complex<V> even, Complex<V> odd) {
    x[k] = k > 0 ? even - TimesMinusI(odd) : even;
    if (k > 0) x[radix - k] = even + TimesMinusI(odd);
  });
}

// ---- Passes ----

// How the loops of a pass run: the first one has a stride of 1, so that its inner loop is a single step; the last one
// needs no twiddle factors.
enum class PassKind { First, Middle, Last };

// A pass of the radix or, where that is 0, of any odd one.
template <int radix, PassKind kind, class V>
void RunPass(const Complex<V>* __restrict in, Complex<V>* __restrict out, const FactorRecord& record,
             const Root* tables) {
  const std::ptrdiff_t factor = radix > 0 ? radix : record.factor;
  const std::ptrdiff_t stride = kind == PassKind::First ? 1 : record.before;
  const std::ptrdiff_t jump = stride * record.remaining;
  constexpr bool twiddled = kind != PassKind::Last;
  const Root* __restrict twiddles = tables + record.twiddles;
  const std::ptrdiff_t twiddleStep = twiddled ? factor - 1 : 0;  // a plan of one pass has no tables
  for (std::ptrdiff_t p = 0; p < record.remaining; ++p, twiddles += twiddleStep, out += (factor - 1) * stride) {
    for (std::ptrdiff_t q = 0; q < stride; ++q, ++in, ++out) {
      Complex<V> x[radix > 0 ? radix : kLargestRadix];
      if constexpr (radix > 0) {
        Butterfly(in, jump, x);
      } else {
        OddButterfly(in, jump, factor, tables + record.roots, x);
      }
      out[0] = x[0];
#pragma GCC unroll 8
      for (std::ptrdiff_t k = 1; k < factor; ++k) out[k * stride] = twiddled ? Multiply(x[k], twiddles[k - 1]) : x[k];
    }
  }
}

template <int radix, class V>
void RunPass(const Complex<V>* in, Complex<V>* out, const FactorRecord& record, const Root* tables) {
  if (record.remaining == 1) {
    RunPass<radix, PassKind::Last>(in, out, record, tables);
  } else if (record.before == 1) {
    RunPass<radix, PassKind::First>(in, out, record, tables);
  } else {
    RunPass<radix, PassKind::Middle>(in, out, record, tables);
  }
}

}  // namespace

StatusCode StockhamPlan::Create(std::ptrdiff_t stride, SharedRoots& sharedRoots) {
  if (factorCount <= 1) return StatusCode::Success;
  const Root* const roots = sharedRoots.OfOrder(length * std::int64_t{stride});
  if (roots == nullptr) return StatusCode::WorkBufferUnavailable;
  const std::span passes(factors, factorCount);
  std::int64_t size = 0;
  for (const FactorRecord& record : passes)
    size += record.factor + std::int64_t{record.remaining} * (record.factor - 1);
  tables = AlignedVector<Root>(size);
  if (!tables) return StatusCode::WorkBufferUnavailable;
  std::int32_t next = 0;
  for (FactorRecord& record : passes) {
    const std::ptrdiff_t step = record.before * stride;
    record.twiddles = next;
    for (std::ptrdiff_t p = 0; p < record.remaining; ++p) {
      for (std::ptrdiff_t k = 1; k < record.factor; ++k) tables[next++] = roots[p * k * step];
    }
    record.roots = next;
    for (std::ptrdiff_t k = 0; k < record.factor; ++k) tables[next++] = roots[k * record.remaining * step];
  }
  return StatusCode::Success;
}

template <class V>
Complex<V>* StockhamPlan::Run(Complex<V>* data, Complex<V>* work) const {
  for (const FactorRecord& record : std::span(factors, factorCount)) {
    if (record.factor == 2) {
      RunPass<2>(data, work, record, tables.data());
    } else if (record.factor == 3) {
      RunPass<3>(data, work, record, tables.data());
    } else if (record.factor == 4) {
      RunPass<4>(data, work, record, tables.data());
    } else if (record.factor == 5) {
      RunPass<5>(data, work, record, tables.data());
    } else {
      RunPass<0>(data, work, record, tables.data());
    }
    std::swap(data, work);
  }
  return data;
}

template Complex<float>* StockhamPlan::Run(Complex<float>*, Complex<float>*) const;
template ComplexLanes* StockhamPlan::Run(ComplexLanes*, ComplexLanes*) const;

}  // namespace norvala::dft
