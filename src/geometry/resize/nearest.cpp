#include <algorithm>
#include <cstring>

#include "frame/aligned_memory.h"
#include "frame/lanes.h"
#include "geometry/resize/plan.h"

namespace norvala {
namespace {

// The source pixel that contains the position of destination pixel `d`.
std::int32_t NearestPixel(const ResizeAxis& axis, std::int32_t d) {
  return std::min(static_cast<std::int32_t>(SourcePosition(axis, d) + 0.5), axis.length - 1);
}

void GatherRow(const Unaligned<const BW32>* src, const std::int32_t* columns, Unaligned<BW32>* dst,
               std::ptrdiff_t extent) {
  std::ptrdiff_t x = 0;
  for (; x + 4 <= extent; x += 4) {
    StoreUnaligned(dst + x, U32x4{src[columns[x]], src[columns[x + 1]], src[columns[x + 2]], src[columns[x + 3]]});
  }
  for (; x < extent; ++x) dst[x] = src[columns[x]];
}

}  // namespace

StatusCode ResizeNearest(const ResizePlan& plan) {
  const std::int32_t width = plan.columns.extent;
  const auto bytes = static_cast<std::size_t>(width) * sizeof(BW32);
  const bool copied = plan.columns.factor == 1.0;
  const AlignedVector<std::int32_t> columns(copied ? 0 : width);
  if (!copied) {
    if (!columns) return StatusCode::WorkBufferUnavailable;
    for (std::int32_t x = 0; x < width; ++x) columns[x] = NearestPixel(plan.columns, x);
  }
  std::int32_t above = -1;
  for (std::int32_t y = 0; y < plan.rows.extent; ++y) {
    const std::int32_t from = NearestPixel(plan.rows, y);
    const auto* src = reinterpret_cast<const Unaligned<const BW32>*>(plan.SourceRow(from));
    auto* dst = reinterpret_cast<Unaligned<BW32>*>(plan.DestinationRow(y));
    // Rows are moved, since those of a destination with a small step may overlap.
    if (copied) {
      std::memmove(dst, src, bytes);
    } else if (from == above) {
      std::memmove(dst, plan.DestinationRow(y - 1), bytes);
    } else {
      GatherRow(src, columns.data(), dst, width);
    }
    above = from;
  }
  return StatusCode::Success;
}

}  // namespace norvala
