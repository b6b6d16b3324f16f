#pragma once

#include <type_traits>

#include "analysis/dft/lanes.h"
#include "analysis/dft/roots.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

// Transforms of odd lengths m by the sum that defines them. Inputs j and m - j meet only as their sum and difference:
// these replace them in memory, and yield the results k and m - k together.

namespace norvala::dft {

template <class T>
inline void SumAndSubtract(T* x, std::ptrdiff_t m) {
  for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
    const T a = x[j], b = x[m - j];
    x[j] = a + b;
    x[m - j] = a - b;
  }
}

// Transforms m complex values, which are overwritten, with accumulators in double or float: emit(0, X[0], X[0]), then
// emit(k, X[k], X[m - k]) for k up to m / 2. The roots have the order m.
template <bool inDouble, class V, class Emit>
void SumDirectly(Complex<V>* x, std::ptrdiff_t m, const Root* roots, Emit emit) {
  const auto widen = [](V v) {
    if constexpr (inDouble) {
      return Widen(v);
    } else {
      return v;
    }
  };
  SumAndSubtract(x, m);
  const auto re0 = widen(x[0].re), im0 = widen(x[0].im);
  auto totalRe = re0, totalIm = im0;
  for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
    totalRe = totalRe + widen(x[j].re);
    totalIm = totalIm + widen(x[j].im);
  }
  const Complex<V> total = {Narrow(totalRe), Narrow(totalIm)};
  emit(std::ptrdiff_t{0}, total, total);
  for (std::ptrdiff_t k = 1; k <= m / 2; ++k) {
    auto evenRe = re0, evenIm = im0;
    auto oddRe = widen(V{}), oddIm = widen(V{});
    std::ptrdiff_t index = 0;  // j k mod m
    for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
      index += k;
      if (index >= m) index -= m;
      const std::conditional_t<inDouble, double, float> cosine = roots[index].re, sine = roots[index].im;
      evenRe = evenRe + widen(x[j].re) * cosine;
      evenIm = evenIm + widen(x[j].im) * cosine;
      oddRe = oddRe + widen(x[m - j].im) * sine;
      oddIm = oddIm + widen(x[m - j].re) * sine;
    }
    emit(k, Complex<V>{Narrow(evenRe - oddRe), Narrow(evenIm + oddIm)},
         Complex<V>{Narrow(evenRe + oddRe), Narrow(evenIm - oddIm)});
  }
}

struct DirectPlan {
  std::int32_t length = 0;    // m
  bool real = false;          // whether m real values are meant, not complex ones
  AlignedVector<Root> roots;  // of order m

  // The roots are taken from those of order m * stride.
  StatusCode Create(std::int32_t newLength, std::ptrdiff_t stride, SharedRoots& sharedRoots) {
    length = newLength;
    const Root* const allRoots = sharedRoots.OfOrder(length * std::int64_t{stride});
    if (allRoots == nullptr) return StatusCode::WorkBufferUnavailable;
    roots = AlignedVector<Root>(length);
    if (!roots) return StatusCode::WorkBufferUnavailable;
    for (std::ptrdiff_t k = 0; k < length; ++k) roots[k] = allRoots[k * stride];
    return StatusCode::Success;
  }

  // Transforms complex values as SumDirectly does.
  template <class V, class Emit>
  void Run(Complex<V>* data, Emit emit) const {
    SumDirectly<true>(data, length, roots.data(), emit);
  }
  // Transforms complex values, which are overwritten, to `work`, and returns it.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const {
    Run(data, [work, m = std::ptrdiff_t{length}](std::ptrdiff_t k, Complex<V> value, Complex<V> mirrored) {
      work[k] = value;
      if (k > 0) work[m - k] = mirrored;
    });
    return work;
  }
  // Transforms real values, which are overwritten: emit(0, {X[0], 0}), then emit(k, X[k]) for k up to m / 2.
  template <class V, class Emit>
  void RunReal(V* data, Emit emit) const {
    const std::ptrdiff_t m = length;
    SumAndSubtract(data, m);
    const auto first = Widen(data[0]);
    auto total = first;
    for (std::ptrdiff_t j = 1; j <= m / 2; ++j) total = total + Widen(data[j]);
    emit(std::ptrdiff_t{0}, Complex<V>{Narrow(total), V{}});
    for (std::ptrdiff_t k = 1; k <= m / 2; ++k) {
      auto re = first;
      auto im = Widen(V{});
      std::ptrdiff_t index = 0;  // j k mod m
      for (std::ptrdiff_t j = 1; j <= m / 2; ++j) {
        index += k;
        if (index >= m) index -= m;
        re = re + Widen(data[j]) * static_cast<double>(roots[index].re);
        im = im + Widen(data[m - j]) * static_cast<double>(roots[index].im);
      }
      emit(k, Complex<V>{Narrow(re), Narrow(im)});
    }
  }

  std::int64_t WorkLength() const { return length; }
  // The data of one transform: its results go straight to the destination.
  std::int64_t ScratchSize() const {
    return static_cast<std::int64_t>(real ? sizeof(float) : sizeof(Root)) * length + kScratchAlignment;
  }
};

}  // namespace norvala::dft
