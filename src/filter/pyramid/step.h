#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "filter/mirror.h"
#include "frame/memory.h"
#include "frame/status.h"
#include "frame/types.h"

// What both pixel types of the 5x5 pyramid step share: smoothing by the outer product of [1 4 6 4 1] with itself and
// keeping every second pixel of every second row (P. Burt, E. Adelson, "The Laplacian Pyramid as a Compact Image
// Code", 1983). Rows are filtered once each into accumulators in the caller's buffer, output rows combine five of them.

namespace norvala {

inline std::int32_t HalfSize(std::int32_t size) { return size / 2 + size % 2; }

// The six row accumulators in the caller's buffer, each with 4 bytes a destination pixel. Row y uses accumulator
// y mod 6, so the five rows around an output row are always there together.
template <class Sum>
class RowAccumulators {
 public:
  RowAccumulators(std::uint8_t* buffer, std::int32_t dstWidth)
      : first_(AlignUp(buffer, 32)), size_(AlignUp<std::size_t>(static_cast<std::size_t>(dstWidth) * 4, 16)) {}

  Sum* Of(std::int64_t row) const { return reinterpret_cast<Sum*>(first_ + static_cast<std::size_t>(row % 6) * size_); }

 private:
  static_assert(sizeof(Sum) <= 4);
  std::uint8_t* first_;
  std::size_t size_;
};

// Shared checks; `pixelSize` in bytes.
inline StatusCode CheckPyramidStep(const void* src, std::int32_t srcStep, const void* dst, std::int32_t dstStep,
                                   RegionSize size, const void* buffer, std::int64_t pixelSize) {
  if (src == nullptr || dst == nullptr || buffer == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (srcStep < size.width * pixelSize || dstStep < HalfSize(size.width) * pixelSize) {
    return StatusCode::NonPositiveStep;
  }
  return StatusCode::Success;
}

// Runs the step from top to bottom: filterRow(source row, accumulator) for every source row once, then
// combineRows(the accumulators of rows 2k-2 to 2k+2, destination row) for every output row k.
template <class Pixel, class Sum, class FilterRow, class CombineRows>
void ReduceRows(const Pixel* src, std::int32_t srcStep, Pixel* dst, std::int32_t dstStep, RegionSize size,
                const RowAccumulators<Sum>& accumulators, FilterRow filterRow, CombineRows combineRows) {
  const std::int64_t height = size.height;
  std::int64_t filtered = 0;
  for (std::int64_t y = 0; y < height; y += 2) {
    for (; filtered < std::min(y + 3, height); ++filtered) {
      filterRow(Row(src, srcStep, static_cast<std::ptrdiff_t>(filtered)), accumulators.Of(filtered));
    }
    const Sum* rows[5];
    for (int i = 0; i < 5; ++i) rows[i] = accumulators.Of(MirrorIndex(y - 2 + i, height));
    combineRows(rows, Row(dst, dstStep, static_cast<std::ptrdiff_t>(y / 2)));
  }
}

}  // namespace norvala
