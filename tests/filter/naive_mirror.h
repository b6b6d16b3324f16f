#pragma once

namespace norvala_test {

// The index that stands in for `i` outside 0..count-1: reflected at the edges, which are not repeated.
inline int Mirror(int i, int count) {
  if (count == 1) return 0;
  while (i < 0 || i >= count) i = i < 0 ? -i : 2 * (count - 1) - i;
  return i;
}

}  // namespace norvala_test
