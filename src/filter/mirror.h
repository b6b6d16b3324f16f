#pragma once

#include <cstdint>

namespace norvala {

// The index that stands in for `index` outside 0..count-1: mirrored about the edges without repeating the edge itself
// (-1 is 1, count is count-2), as often as it takes. The only element of one stands for all.
inline std::int64_t MirrorIndex(std::int64_t index, std::int64_t count) {
  if (index >= 0 && index < count) return index;
  if (count == 1) return 0;
  const std::int64_t period = 2 * (count - 1);
  const std::int64_t inPeriod = (index < 0 ? -index : index) % period;
  return inPeriod < count ? inPeriod : period - inPeriod;
}

}  // namespace norvala
