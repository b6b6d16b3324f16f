#pragma once

#include <cstdint>

// Indices and counts along one direction of an image.

namespace norvala {

// The number of even indices in 0..count-1.
inline std::int32_t HalfCount(std::int32_t count) { return count / 2 + count % 2; }

// Reflects an index into 0..count-1 about the first and the last element, which are not repeated: -1 becomes 1, count
// becomes count - 2. With a single element every index becomes 0.
inline std::int64_t MirrorIndex(std::int64_t index, std::int64_t count) {
  if (index >= 0 && index < count) return index;
  if (count == 1) return 0;
  const std::int64_t period = 2 * (count - 1);
  const std::int64_t inPeriod = (index < 0 ? -index : index) % period;
  return inPeriod < count ? inPeriod : period - inPeriod;
}

}  // namespace norvala
