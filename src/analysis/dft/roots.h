#pragma once

#include <cstdint>

#include "analysis/dft/complex_lanes.h"
#include "frame/aligned_memory.h"

namespace norvala::dft {

// The roots of unity of the order taken last, shared by all that take the same order in succession.
class SharedRoots {
 public:
  // Entry k is exp(-2 pi i k / order), evaluated in double and rounded. Null where the memory cannot be had. Valid
  // until another order is taken.
  const Root* OfOrder(std::int64_t order);

 private:
  std::int64_t order_ = 0;
  AlignedVector<Root> roots_;
};

}  // namespace norvala::dft
