#pragma once

#include "filter/separable/divisor.h"
#include "filter/separable/window.h"

// The 8-bit separable filters with sums of 16 bits, for kernels of small taps.

namespace norvala {

using SeparableCallBW8 = SeparableCall<BW8, std::int32_t>;

// Filters the whole region if 16 bits hold every sum and its rounding; otherwise does nothing and returns false. The
// sums of the taps above and below zero are given without their signs.
bool FilterNarrow(const SeparableCallBW8& call, std::int64_t positive, std::int64_t negative, RoundedDivision division);

}  // namespace norvala
