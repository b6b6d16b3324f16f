#include "analysis/dft/mixed_radix.h"

#include <utility>

#include "analysis/dft/stockham.h"

namespace norvala::dft {
namespace {

constexpr std::int32_t kLargestButterfly = 5;
constexpr std::int32_t kLargestFactor = 150;

// A pass of any odd radix r: inputs j and r - j meet only as their sum and difference, and yield results k and r - k
// together.
template <class V>
void OddRadixPass(const Complex<V>* __restrict in, Complex<V>* __restrict out, const FactorRecord& record,
                  const Root* __restrict twiddles, const Root* __restrict roots) {
  const std::ptrdiff_t radix = record.factor;
  const std::ptrdiff_t half = radix / 2;
  const std::ptrdiff_t stride = record.before;
  const std::ptrdiff_t jump = stride * record.remaining;
  const bool twiddled = record.remaining > 1;
  Complex<V> sum[kLargestFactor / 2 + 1];
  Complex<V> difference[kLargestFactor / 2 + 1];
  for (std::ptrdiff_t p = 0; p < record.remaining; ++p, twiddles += radix - 1, out += (radix - 1) * stride) {
    for (std::ptrdiff_t q = 0; q < stride; ++q, ++in, ++out) {
      const Complex<V> first = in[0];
      Complex<V> total = first;
      for (std::ptrdiff_t j = 1; j <= half; ++j) {
        const Complex<V> a = in[j * jump], b = in[(radix - j) * jump];
        sum[j] = a + b;
        difference[j] = a - b;
        total = total + sum[j];
      }
      out[0] = total;
      for (std::ptrdiff_t k = 1; k <= half; ++k) {
        Complex<V> even = first;
        Complex<V> odd = {V{}, V{}};
        std::ptrdiff_t index = 0;
        for (std::ptrdiff_t j = 1; j <= half; ++j) {
          index += k;
          if (index >= radix) index -= radix;
          const Complex<V> w = Broadcast<V>(roots[index]);
          even.re += sum[j].re * w.re;
          even.im += sum[j].im * w.re;
          odd.re += difference[j].im * w.im;
          odd.im += difference[j].re * w.im;
        }
        Complex<V> result = {even.re - odd.re, even.im + odd.im};
        Complex<V> mirrored = {even.re + odd.re, even.im - odd.im};
        if (twiddled) {
          result = Multiply(result, Broadcast<V>(twiddles[k - 1]));
          mirrored = Multiply(mirrored, Broadcast<V>(twiddles[radix - k - 1]));
        }
        out[k * stride] = result;
        out[(radix - k) * stride] = mirrored;
      }
    }
  }
}

}  // namespace

StatusCode MixedRadixSpec::Create(const Root* roots, std::ptrdiff_t stride) {
  twiddles = MakeTwiddles(factors, roots, stride);
  if (!twiddles) return StatusCode::WorkBufferUnavailable;
  std::int64_t count = 0;
  std::int32_t previous = 0;
  for (const FactorRecord& record : factors) {
    if (record.factor > kLargestButterfly && record.factor != previous) count += record.factor;
    previous = record.factor;
  }
  if (count == 0) return StatusCode::Success;
  factorRoots = AlignedVector<Root>(count);
  if (!factorRoots) return StatusCode::WorkBufferUnavailable;
  Root* next = factorRoots.data();
  previous = 0;
  for (const FactorRecord& record : factors) {
    if (record.factor > kLargestButterfly && record.factor != previous) {
      const std::ptrdiff_t step = stride * record.remaining * record.before;
      for (std::ptrdiff_t k = 0; k < record.factor; ++k) *next++ = roots[k * step];
    }
    previous = record.factor;
  }
  return StatusCode::Success;
}

template <class V>
Complex<V>* MixedRadixSpec::Run(Complex<V>* data, Complex<V>* work) const {
  const Root* w = twiddles.data();
  const Root* roots = factorRoots.data();
  std::int32_t previous = 0;
  for (const FactorRecord& record : factors) {
    if (record.factor != previous && previous > kLargestButterfly) roots += previous;
    switch (record.factor) {
      case 2:
        Pass<2>(data, work, record, w);
        break;
      case 3:
        Pass<3>(data, work, record, w);
        break;
      case 4:
        Pass<4>(data, work, record, w);
        break;
      case 5:
        Pass<5>(data, work, record, w);
        break;
      default:
        OddRadixPass(data, work, record, w, roots);
        break;
    }
    w += std::ptrdiff_t{record.remaining} * (record.factor - 1);
    previous = record.factor;
    std::swap(data, work);
  }
  return data;
}

template Complex<float>* MixedRadixSpec::Run(Complex<float>*, Complex<float>*) const;
template ComplexLanes* MixedRadixSpec::Run(ComplexLanes*, ComplexLanes*) const;

}  // namespace norvala::dft
