#include "analysis/dft/roots.h"

#include <cmath>

namespace norvala::dft {

const Root* SharedRoots::OfOrder(std::int64_t order) {
  if (roots_ && order == order_) return roots_.data();
  order_ = order;
  roots_ = AlignedVector<Root>(order);
  if (!roots_) return nullptr;
  const double step = 6.283185307179586 / static_cast<double>(order);
  for (std::int64_t k = 0; k < order; ++k) {
    const double angle = static_cast<double>(k) * step;
    roots_[static_cast<std::ptrdiff_t>(k)] = {static_cast<float>(std::cos(angle)),
                                              static_cast<float>(-std::sin(angle))};
  }
  return roots_.data();
}

}  // namespace norvala::dft
