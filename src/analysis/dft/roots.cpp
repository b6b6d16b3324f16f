#include "analysis/dft/roots.h"

#include <cmath>

namespace norvala::dft {

AlignedVector<Root> MakeRoots(std::int64_t order) {
  AlignedVector<Root> roots(order);
  if (!roots) return roots;
  const double step = 6.283185307179586 / static_cast<double>(order);
  for (std::int64_t k = 0; k < order; ++k) {
    const double angle = static_cast<double>(k) * step;
    roots[static_cast<std::ptrdiff_t>(k)] = {static_cast<float>(std::cos(angle)), static_cast<float>(-std::sin(angle))};
  }
  return roots;
}

}  // namespace norvala::dft
