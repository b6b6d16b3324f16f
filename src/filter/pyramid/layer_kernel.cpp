#include <algorithm>

#include "filter/pyramid/layer.h"
#include "frame/memory.h"

namespace norvala {

bool NormaliseLayerKernel(const std::int16_t* kernel, std::int32_t size, std::int16_t* normalised) {
  const auto* const taps = reinterpret_cast<const Unaligned<std::int16_t>*>(kernel);
  const std::ptrdiff_t centre = size / 2;
  const std::ptrdiff_t last = size - 1;
  bool symmetric = true;
  std::int64_t left = 0;
  for (std::ptrdiff_t i = 0; i < centre; ++i) {
    symmetric = symmetric && taps[i] == taps[last - i];
    left += taps[i];
  }
  const std::int64_t sum = taps[centre] + 2 * left;
  // Stored as they are, the left half mirrored one place further right: the first tap comes to lie behind the last.
  if (sum == 0) {
    normalised[centre] = taps[centre];
    for (std::ptrdiff_t i = 0; i < centre; ++i) normalised[i] = normalised[size - i] = taps[i];
    return symmetric;
  }
  const double half = 4.0 * static_cast<double>(sum) * 0.5;
  const auto scaled = [&](std::int16_t tap) {
    const auto fourteenBits = static_cast<std::int32_t>(4.0 * tap / half * 8192 + 0.5);
    return static_cast<std::int16_t>(static_cast<std::int16_t>(fourteenBits) >> 1);
  };
  normalised[centre] = scaled(taps[centre]);
  for (std::ptrdiff_t i = 0; i < centre; ++i) normalised[i] = normalised[last - i] = scaled(taps[i]);
  return symmetric;
}

// Sizes from upper(d - 1) + 1 to upper(d) reduce to d, so every size has one answer and the search finds it from any
// start. Products are rounded to single precision before their fraction is dropped.
std::int32_t ReducedSize(std::int32_t size, FLOAT32 rate) {
  const auto upper = [rate](std::int64_t d) {
    const auto product = static_cast<FLOAT32>(static_cast<double>(d) * rate);
    return std::max(d + 1, static_cast<std::int64_t>(product));
  };
  std::int64_t d = std::max(std::int64_t{1}, static_cast<std::int64_t>(size / double{rate} + 0.5));
  while (d > 1 && size <= upper(d - 1)) --d;
  while (size > upper(d)) ++d;
  return static_cast<std::int32_t>(d);
}

}  // namespace norvala
