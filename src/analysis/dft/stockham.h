#pragma once

#include "analysis/dft/lanes.h"
#include "analysis/dft/roots.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

// The self-sorting transform by the factors of the length (Stockham; see Van Loan, Computational Frameworks for the
// Fast Fourier Transform, section 1.7): one pass a factor, each by decimation in frequency from one buffer to another.
// A pass writes its results where the next one reads them in order, so that no reordering by reversed digits is needed.

namespace norvala::dft {

// One pass.
struct FactorRecord {
  std::int32_t factor;
  std::int32_t remaining;  // the length divided by all factors up to and including this one
  std::int32_t before;     // the product of the factors before this one
  // Where in the plan's tables lie, for each p below `remaining`, the twiddle factors w^(p k before) for
  // k = 1 .. factor - 1, and the roots of the order of the factor.
  std::int32_t twiddles;
  std::int32_t roots;
};

// A pass of radix r takes time in proportion to r and holds r values at once: a length with a larger factor is left to
// other methods.
inline constexpr std::int32_t kLargestRadix = 150;
inline constexpr int kMaxFactors = 19;  // 3^19 is below 2^31, 3^20 is not

struct StockhamPlan {
  std::int32_t length = 0;
  std::size_t factorCount = 0;
  FactorRecord factors[kMaxFactors];
  AlignedVector<Root> tables;  // those of all passes; one pass alone, or none, needs no tables

  // Sets the length and splits it into factors 2 (at most one, in front), 4 and odd ones. Returns whether the method
  // suits the length: not where it is 1 or an odd prime, nor where a factor exceeds kLargestRadix.
  bool Factorise(std::int32_t newLength);
  // The roots that the tables are taken from have the order length * stride.
  StatusCode Create(std::ptrdiff_t stride, SharedRoots& sharedRoots);
  // Transforms `data`, which is overwritten. Returns whichever of `data` and `work`, of the same length, holds the
  // result.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const;
};

}  // namespace norvala::dft
