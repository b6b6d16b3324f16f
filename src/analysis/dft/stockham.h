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
  // k = 1 .. factor - 1, and the roots of the order of the factor, which consecutive equal factors share.
  std::int32_t twiddles;
  std::int32_t roots;
};

// A pass of radix r takes time in proportion to r and holds r values at once: a length with a larger factor is left to
// other methods.
inline constexpr std::int32_t kLargestRadix = 150;
inline constexpr int kMaxFactors = 19;  // 3^19 is below 2^31, 3^20 is not

struct FactorList {
  int count = 0;
  FactorRecord records[kMaxFactors];

  const FactorRecord* begin() const { return records; }
  const FactorRecord* end() const { return records + count; }
  void Append(std::int32_t factor, std::int32_t length);
};

// Splits a length into factors 2 (at most one, in front), 4 and odd ones. Returns false, with the list unusable, for 1,
// for an odd prime, and where a factor exceeds kLargestRadix.
bool Factorise(std::int32_t length, FactorList& list);

struct StockhamPlan {
  std::int32_t length = 0;
  FactorList factors;
  AlignedVector<Root> tables;  // those of all passes; one pass alone, or none, needs no tables

  // `factors` is filled. The roots that the tables are taken from have the order length * stride.
  StatusCode Create(std::int32_t newLength, std::ptrdiff_t stride, SharedRoots& sharedRoots);
  // Transforms `data`, which is overwritten. Returns whichever of `data` and `work` holds the result.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const;

  std::int64_t WorkLength() const { return length; }
  // Three buffers of four transforms side by side, where one would do: with those of the image they hold four blocks of
  // columns and the work area, so that rows of the image are moved by 128 bytes at once.
  std::int64_t ScratchSize() const {
    return 3 * static_cast<std::int64_t>(sizeof(ComplexLanes)) * length + kScratchAlignment;
  }
};

}  // namespace norvala::dft
