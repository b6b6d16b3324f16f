#pragma once

#include "analysis/dft/complex_lanes.h"
#include "frame/aligned_memory.h"

namespace norvala::dft {

// The roots of unity of an order: entry k is exp(-2 pi i k / order), evaluated in double and rounded. Null where the
// memory is lacking.
AlignedVector<Root> MakeRoots(std::int64_t order);

}  // namespace norvala::dft
