#pragma once

#include "analysis/dft/lanes.h"
#include "analysis/dft/stockham.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

namespace norvala::dft {

// A transform of any length m as a convolution with a chirp, through transforms of a power of two (Bluestein, A linear
// filtering approach to the computation of discrete Fourier transform, 1970): with c[k] = exp(-pi i k^2 / m),
// X[k] = c[k] * sum over j of x[j] c[j] conj(c[k - j]).
struct BluesteinPlan {
  std::int32_t length = 0;     // m
  StockhamPlan fft;            // of the smallest power of two M not below 2 m - 1
  AlignedVector<Root> chirp;   // c
  AlignedVector<Root> kernel;  // the transform of conj(c), wrapped around M, divided by M

  // The chirp is taken from the roots of order 2 m, whatever the stride.
  StatusCode Create(std::int32_t newLength, std::ptrdiff_t stride, SharedRoots& sharedRoots);
  // Transforms `data` in place and returns it.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const;

  std::int64_t WorkLength() const { return 2 * std::int64_t{fft.length}; }
  // The FFT's own scratch (96 bytes a value) covers the work area of four transforms side by side (64).
  std::int64_t ScratchSize() const {
    return fft.ScratchSize() + static_cast<std::int64_t>(sizeof(Root)) * fft.length + kScratchAlignment;
  }
};

}  // namespace norvala::dft
