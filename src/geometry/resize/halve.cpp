#include "frame/lanes.h"
#include "frame/memory.h"
#include "geometry/resize/plan.h"

namespace norvala {
namespace {

using SrcRow = const Unaligned<const FLOAT32>*;

FLOAT32 MeanOfFour(SrcRow upper, SrcRow lower) {
  const float sum = (upper[0] + lower[0]) + (upper[1] + lower[1]);
  if (sum - sum == 0.0F) return sum * 0.25F;
  return static_cast<FLOAT32>(((double{upper[0]} + lower[0]) + (double{upper[1]} + lower[1])) * 0.25);
}

// Returns whether every sum is finite. The mean of four floats may be finite where their sum overflows: such rows must
// be computed again in double precision. Infinities and NaNs stay in `total` once they have entered it. It may also
// overflow while every sum is finite; the row is then computed again without need.
bool HalveRow(SrcRow upper, SrcRow lower, Unaligned<FLOAT32>* dst, std::ptrdiff_t extent) {
  F32x4 total = {};
  std::ptrdiff_t x = 0;
  for (; x + 4 <= extent; x += 4) {
    const auto left = LoadUnaligned<F32x4>(upper + 2 * x) + LoadUnaligned<F32x4>(lower + 2 * x);
    const auto right = LoadUnaligned<F32x4>(upper + 2 * x + 4) + LoadUnaligned<F32x4>(lower + 2 * x + 4);
    const F32x4 sum =
        __builtin_shufflevector(left, right, 0, 2, 4, 6) + __builtin_shufflevector(left, right, 1, 3, 5, 7);
    total += sum;
    StoreUnaligned(dst + x, sum * 0.25F);
  }
  for (; x < extent; ++x) dst[x] = MeanOfFour(upper + 2 * x, lower + 2 * x);
  total -= total;
  return total[0] + total[1] + total[2] + total[3] == 0.0F;
}

}  // namespace

// With factor 0.5, destination pixel d covers the source pixels 2 d and 2 d + 1 and is centred between them: Reduce and
// Linear both take the mean of four pixels, as long as the last of them lie inside the source.
bool IsHalving(const ResizePlan& plan) {
  return plan.columns.factor == 0.5 && plan.rows.factor == 0.5 && plan.columns.extent <= plan.columns.length / 2 &&
         plan.rows.extent <= plan.rows.length / 2;
}

StatusCode Halve(const ResizePlan& plan) {
  for (std::int32_t y = 0; y < plan.rows.extent; ++y) {
    const auto upper = plan.SourceRow(std::ptrdiff_t{y} * 2);
    const auto lower = plan.SourceRow(std::ptrdiff_t{y} * 2 + 1);
    const auto dst = plan.DestinationRow(y);
    if (HalveRow(upper, lower, dst, plan.columns.extent)) continue;
    for (std::ptrdiff_t x = 0; x < plan.columns.extent; ++x) dst[x] = MeanOfFour(upper + 2 * x, lower + 2 * x);
  }
  return StatusCode::Success;
}

}  // namespace norvala
