#include "analysis/dft/direct.h"

namespace norvala::dft {

StatusCode DirectSpec::Create(std::int32_t length, const Root* allRoots, std::ptrdiff_t stride) {
  roots = AlignedVector<Root>(length);
  if (!roots) return StatusCode::WorkBufferUnavailable;
  for (std::ptrdiff_t k = 0; k < length; ++k) roots[k] = allRoots[k * stride];
  return StatusCode::Success;
}

}  // namespace norvala::dft
