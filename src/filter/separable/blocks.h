#pragma once

#include <algorithm>
#include <cstring>

#include "filter/separable/window.h"
#include "frame/memory.h"

// The blocks of pixels in which the 8-bit separable filters make a row: vectors that may read and write further than
// the caller's memory reaches. A block at the end of the row is filtered from a copy.

namespace norvala {

// Calls block(pixels, tapStep, x, count) for the results of a row from left to right: the sum for column x + i weighs
// pixels[i], pixels[i + tapStep] and so on, and `count` is `columns` but in the last blocks. A block may read `reach`
// pixels from `pixels` on along the row, no less than columns + taps - 1 and no more than kMostReach.
template <int columns, class Block>
[[gnu::always_inline]] inline void ForEachBlockOfRow(const BW8* src, int width, int taps, int reach, Block block) {
  constexpr int kMostReach = 192;
  const int last = width - std::max(columns, reach - taps + 1);
  int x = 0;
  for (; x <= last; x += columns) block(src + x, 1, x, columns);
  if (x == width) return;
  BW8 rest[columns + kMostReach] = {};
  std::memcpy(rest, src + x, static_cast<std::size_t>(width - x + taps - 1));
  for (const BW8* pixels = rest; x < width; x += columns, pixels += columns) {
    block(pixels, 1, x, std::min(columns, width - x));
  }
}

// The same for sums along columns, which read `rows` rows, no more than mostRows.
template <int columns, int mostRows, class Block>
[[gnu::always_inline]] inline void ForEachBlockOfColumns(const BW8* src, std::ptrdiff_t step, int width, int rows,
                                                         Block block) {
  int x = 0;
  for (; x + columns <= width; x += columns) block(src + x, step, x, columns);
  if (x == width) return;
  BW8 rest[mostRows * columns] = {};
  for (int j = 0; j < rows; ++j) {
    std::memcpy(rest + j * columns, Row(src, step, j) + x, static_cast<std::size_t>(width - x));
  }
  block(rest, columns, x, width - x);
}

}  // namespace norvala
