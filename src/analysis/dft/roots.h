#pragma once

#include <cmath>
#include <cstdint>

#include "analysis/dft/lanes.h"
#include "frame/aligned_memory.h"

namespace norvala::dft {

// The roots of unity of the order taken last, shared by all that take the same order in succession.
class SharedRoots {
 public:
  // Entry k is exp(-2 pi i k / order), evaluated in double and rounded. Null where the memory cannot be had. Valid
  // until another order is taken.
  const Root* OfOrder(std::int64_t order) {
    if (roots_ && order == order_) return roots_.data();
    order_ = order;
    roots_ = AlignedVector<Root>(order);
    const double step = 6.283185307179586 / static_cast<double>(order);
    for (std::ptrdiff_t k = 0; roots_ && k < order; ++k) {
      const double angle = static_cast<double>(k) * step;
      roots_[k] = {static_cast<float>(std::cos(angle)), static_cast<float>(-std::sin(angle))};
    }
    return roots_.data();
  }

 private:
  std::int64_t order_ = 0;
  AlignedVector<Root> roots_;
};

}  // namespace norvala::dft
