#pragma once

#include "analysis/dft/complex_lanes.h"
#include "analysis/dft/power_of_two.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

namespace norvala::dft {

// A transform of any length m as a convolution with a chirp, through transforms of a power of two (Bluestein, A linear
// filtering approach to the computation of discrete Fourier transform, 1970): with c[k] = exp(-pi i k^2 / m),
// X[k] = c[k] * sum over j of x[j] c[j] conj(c[k - j]).
struct LargePrimeSpec {
  std::int32_t length = 0;
  PowerOfTwoSpec fft;          // of the smallest power of two M not below 2 m - 1
  AlignedVector<Root> chirp;   // c
  AlignedVector<Root> kernel;  // the transform of conj(c), wrapped around M, divided by M

  std::int64_t scratchSize() const;

  // `roots` has the order 2 * newLength.
  StatusCode Create(std::int32_t newLength, const Root* roots);
  // Transforms `data` in place; `work` has room for 2 M values.
  template <class V>
  void Run(Complex<V>* data, Complex<V>* work) const;

 private:
  StatusCode MakeKernel();
};

}  // namespace norvala::dft
