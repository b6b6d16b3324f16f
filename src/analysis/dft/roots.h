#pragma once

#include "analysis/dft/complex_lanes.h"
#include "frame/aligned_memory.h"

namespace norvala::dft {

// The roots of unity of an order: entry k is exp(-2 pi i k / order), evaluated in double and rounded. Null where the
// memory is lacking.
AlignedVector<Root> MakeRoots(std::int64_t order);

// The table made last, which serves everyone who asks for the same order in succession.
class SharedRoots {
 public:
  // Null where the memory is lacking.
  const Root* OfOrder(std::int64_t order) {
    if (!roots_ || order != order_) roots_ = MakeRoots(order);
    order_ = order;
    return roots_.data();
  }

 private:
  std::int64_t order_ = 0;
  AlignedVector<Root> roots_;
};

}  // namespace norvala::dft
