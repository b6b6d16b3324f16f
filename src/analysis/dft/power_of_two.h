#pragma once

#include "analysis/dft/complex_lanes.h"
#include "analysis/dft/factors.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

namespace norvala::dft {

// A transform of 2^order complex values.
struct PowerOfTwoSpec {
  std::int32_t order = 0;
  std::int32_t normalisation = 0;  // recorded; whoever runs the transform scales its results
  std::int32_t hint = 0;           // recorded; there is one algorithm
  FactorList factors;
  AlignedVector<Root> twiddles;

  std::int64_t length() const { return std::int64_t{1} << order; }
  std::int64_t scratchSize() const;

  // `roots` has the order 2^order * stride.
  StatusCode Create(std::int32_t newOrder, std::int32_t newNormalisation, std::int32_t newHint, const Root* roots,
                    std::ptrdiff_t stride);
  // Transforms `data`; `work` has the same size. Returns whichever of the two holds the result.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const;
};

inline bool IsPowerOfTwo(std::int64_t n) { return (n & (n - 1)) == 0; }

}  // namespace norvala::dft
