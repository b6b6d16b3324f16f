#pragma once

#include "analysis/dft/complex_lanes.h"
#include "analysis/dft/factors.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

namespace norvala::dft {

// A transform by the factors of its length.
struct MixedRadixSpec {
  FactorList factors;
  AlignedVector<Root> twiddles;
  // The roots of every factor above 5, table after table; consecutive equal factors share one.
  AlignedVector<Root> factorRoots;

  // `factors` is filled; `roots` has the order length * stride.
  StatusCode Create(const Root* roots, std::ptrdiff_t stride);
  // Transforms `data`; `work` has the same size. Returns whichever of the two holds the result.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const;
};

}  // namespace norvala::dft
