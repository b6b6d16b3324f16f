#include "geometry/warp/affine_rows.h"

#include <algorithm>

namespace norvala {
namespace {

// Each row's additions wait for one another; several rows at once keep the adder busy.
constexpr int kRows = 4;
constexpr std::int32_t kListLength = 128;

// From a source pixel to the first one of its neighbourhood that the next rows of the destination will sample: when the
// source is turned, its lines come from memory in no order that the processor's own prefetching recognises.
std::ptrdiff_t PrefetchOffset(const SourceImage& source, Position rowStep, PixelDepthCode depth) {
  constexpr double kReach = 3;  // of the largest kernel
  const auto pixelsAhead = [&](double step) {
    const double way = kRows * step + (step > 0 ? kReach : -kReach);
    return static_cast<std::uintptr_t>(way > -100 && way < 100 ? static_cast<std::intptr_t>(way) : 0);
  };
  return static_cast<std::ptrdiff_t>(pixelsAhead(rowStep[1]) * static_cast<std::uintptr_t>(source.step) +
                                     pixelsAhead(rowStep[0]) * static_cast<std::uintptr_t>(PixelBytes(depth)));
}

}  // namespace

void WarpRowsAffine(const SourceImage& image, const AffineCoefficients& inverse, const RowSpans& spans,
                    PixelDepthCode depth, Interpolation kernel, void* dst, std::int32_t dstStep) {
  const Position pixelStep = {inverse.c00, inverse.c10};
  const Position rowStep = {inverse.c01, inverse.c11};
  const double firstRow = spans.firstRow();
  SourceImage source = image;
  source.prefetchOffset = PrefetchOffset(image, rowStep, depth);
  Sampler sample(source, depth, kernel);
  Position base = {inverse.c01 * firstRow + inverse.c02, inverse.c11 * firstRow + inverse.c12};

  for (std::int32_t y = 0; y < spans.rows(); y += kRows) {
    Position next[kRows] = {};
    std::int64_t left[kRows] = {};
    char* out[kRows] = {};
    std::int64_t longest = 0;
    for (int r = 0; r < kRows && r < spans.rows() - y; ++r) {
      const RowSpan span = spans[y + r];
      next[r] = pixelStep * static_cast<double>(span.first) + base;
      base += rowStep;
      left[r] = std::int64_t{span.last} - span.first + 1;
      out[r] = PixelAddress(dst, dstStep, depth, span.first, std::ptrdiff_t{spans.firstRow()} + y + r);
      longest = std::max(longest, left[r]);
    }
    for (; longest > 0; longest -= kListLength) {
      Position lists[kRows][kListLength];
      const auto length = static_cast<std::int32_t>(std::min<std::int64_t>(longest, kListLength));
      for (std::int32_t k = 0; k < length; ++k) {
        for (int r = 0; r < kRows; ++r) {
          lists[r][k] = next[r];
          next[r] += pixelStep;
        }
      }
      for (int r = 0; r < kRows; ++r) {
        if (left[r] <= 0) continue;
        const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(left[r], length));
        sample(lists[r], count, kMonotone, out[r]);
        left[r] -= count;
        out[r] += count * PixelBytes(depth);
      }
    }
  }
}

}  // namespace norvala
