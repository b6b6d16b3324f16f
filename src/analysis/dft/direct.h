#pragma once

#include "analysis/dft/lanes.h"
#include "analysis/dft/roots.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

// Transforms of odd lengths m by the sum that defines them.

namespace norvala::dft {

// Inputs j and m - j meet only as their sum x[j] and difference x[m - j]. `x` may be the inputs, if they are
// contiguous.
template <class T>
inline void AddAndSubtract(const T* in, std::ptrdiff_t stride, T* x, std::ptrdiff_t m) {
  x[0] = in[0];
  for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
    const T a = in[j * stride], b = in[(m - j) * stride];
    x[j] = a + b;
    x[m - j] = a - b;
  }
}

// Calls emit(0, X[0], 0), then emit(k, even, odd) for k up to m / 2, where X[k] = even + i odd and
// X[m - k] = even - i odd, for m real or complex values. The roots have the order m; `widen` chooses the accumulators.
template <class T, class Widening, class Emit>
void SumDirectly(const T* x, std::ptrdiff_t m, const Root* roots, Widening widen, Emit emit) {
  const auto first = widen(x[0]), zero = widen(T{});
  auto total = first;
  for (std::ptrdiff_t j = 1; j <= m / 2; ++j) total = total + widen(x[j]);
  emit(std::ptrdiff_t{0}, total, zero);
  for (std::ptrdiff_t k = 1; k <= m / 2; ++k) {
    auto even = first, odd = zero;
    std::ptrdiff_t index = 0;  // j k mod m
    for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
      index += k;
      if (index >= m) index -= m;
      even = even + widen(x[j]) * roots[index].re;
      odd = odd + widen(x[m - j]) * roots[index].im;
    }
    emit(k, even, odd);
  }
}

struct DirectPlan {
  std::int32_t length = 0;    // m
  AlignedVector<Root> roots;  // of order m

  // The roots are taken from those of order m * stride.
  StatusCode Create(std::int32_t newLength, std::ptrdiff_t stride, SharedRoots& sharedRoots) {
    length = newLength;
    const Root* const allRoots = sharedRoots.OfOrder(length * std::int64_t{stride});
    roots = AlignedVector<Root>(length);
    if (allRoots == nullptr || !roots) return StatusCode::WorkBufferUnavailable;
    for (std::ptrdiff_t k = 0; k < length; ++k) roots[k] = allRoots[k * stride];
    return StatusCode::Success;
  }

  // SumDirectly with accumulators in double for real or complex values, which are overwritten.
  template <class T, class Emit>
  void Sum(T* data, Emit emit) const {
    AddAndSubtract(data, 1, data, length);
    SumDirectly(
        data, length, roots.data(), [](const T& value) { return Widen(value); }, emit);
  }
  // Transforms complex values, which are overwritten, to `work`, and returns it.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const {
    Sum(data, [work, m = std::ptrdiff_t{length}](std::ptrdiff_t k, auto even, auto odd) {
      work[k] = Narrow(k > 0 ? even - TimesMinusI(odd) : even);
      if (k > 0) work[m - k] = Narrow(even + TimesMinusI(odd));
    });
    return work;
  }
};

}  // namespace norvala::dft
