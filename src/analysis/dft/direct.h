#pragma once

#include "analysis/dft/complex_lanes.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

// Transforms of odd lengths m as the sum that defines them, with double accumulators. Inputs j and m - j meet only as
// their sum and difference: these replace them in memory, and yield the results k and m - k together.

namespace norvala::dft {

struct DirectSpec {
  AlignedVector<Root> roots;  // of order `length`

  // `allRoots` has the order length * stride.
  StatusCode Create(std::int32_t length, const Root* allRoots, std::ptrdiff_t stride);
};

// Replaces x[j] and x[m - j] by their sum and difference.
template <class T>
inline void Fold(T* x, std::ptrdiff_t m) {
  for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
    const T a = x[j], b = x[m - j];
    x[j] = a + b;
    x[m - j] = a - b;
  }
}

// Transforms m folded complex values: emit(0, X[0], X[0]), then emit(k, X[k], X[m - k]) for k up to m / 2.
template <class V, class Emit>
void RunDirect(const DirectSpec& spec, const Complex<V>* folded, std::ptrdiff_t m, Emit emit) {
  const auto re0 = Widen(folded[0].re), im0 = Widen(folded[0].im);
  auto totalRe = re0, totalIm = im0;
  for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
    totalRe = totalRe + Widen(folded[j].re);
    totalIm = totalIm + Widen(folded[j].im);
  }
  const Complex<V> total = {Narrow(totalRe), Narrow(totalIm)};
  emit(std::ptrdiff_t{0}, total, total);
  for (std::ptrdiff_t k = 1; k <= m / 2; ++k) {
    auto evenRe = re0, evenIm = im0;
    auto oddRe = WideZero<V>(), oddIm = WideZero<V>();
    std::ptrdiff_t index = 0;
    for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
      index += k;
      if (index >= m) index -= m;
      const double cosine = spec.roots[index].re, sine = spec.roots[index].im;
      evenRe = evenRe + Widen(folded[j].re) * cosine;
      evenIm = evenIm + Widen(folded[j].im) * cosine;
      oddRe = oddRe + Widen(folded[m - j].im) * sine;
      oddIm = oddIm + Widen(folded[m - j].re) * sine;
    }
    emit(k, Complex<V>{Narrow(evenRe - oddRe), Narrow(evenIm + oddIm)},
         Complex<V>{Narrow(evenRe + oddRe), Narrow(evenIm - oddIm)});
  }
}

// Transforms m folded real values: emitFirst(X[0]), then emit(k, X[k]) for k up to m / 2.
template <class V, class EmitFirst, class Emit>
void RunDirectReal(const DirectSpec& spec, const V* folded, std::ptrdiff_t m, EmitFirst emitFirst, Emit emit) {
  const auto first = Widen(folded[0]);
  auto total = first;
  for (std::ptrdiff_t j = 1; j <= m / 2; ++j) total = total + Widen(folded[j]);
  emitFirst(Narrow(total));
  for (std::ptrdiff_t k = 1; k <= m / 2; ++k) {
    auto re = first;
    auto im = WideZero<V>();
    std::ptrdiff_t index = 0;
    for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
      index += k;
      if (index >= m) index -= m;
      re = re + Widen(folded[j]) * static_cast<double>(spec.roots[index].re);
      im = im + Widen(folded[m - j]) * static_cast<double>(spec.roots[index].im);
    }
    emit(k, Complex<V>{Narrow(re), Narrow(im)});
  }
}

}  // namespace norvala::dft
