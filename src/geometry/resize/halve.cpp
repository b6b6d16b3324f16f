#include <cstdint>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "geometry/resize/resize.h"

namespace norvala {
namespace {

using SrcRow = const Unaligned<const FLOAT32>*;
using DstRow = Unaligned<FLOAT32>*;

FLOAT32 MeanOfFour(SrcRow upper, SrcRow lower) {
  const float sum = (upper[0] + lower[0]) + (upper[1] + lower[1]);
  if (sum - sum == 0.0F) return sum * 0.25F;
  return static_cast<FLOAT32>(((double{upper[0]} + lower[0]) + (double{upper[1]} + lower[1])) * 0.25);
}

// Returns whether all sums stayed in the range of a float; the means of those that left it may lie inside. The total
// tells, since it never gets finite again; where it leaves the range by itself, only time is lost.
bool HalveRow(SrcRow upper, SrcRow lower, DstRow dst, std::ptrdiff_t extent) {
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

bool IsHalving(const ResizeJob& job) {
  return job.columns.factor == 0.5 && job.rows.factor == 0.5 && job.columns.extent <= job.columns.length / 2 &&
         job.rows.extent <= job.rows.length / 2;
}

void Halve(const ResizeJob& job) {
  for (std::int32_t y = 0; y < job.rows.extent; ++y) {
    const auto upper = Row(job.src, job.srcStep, std::ptrdiff_t{y} * 2);
    const auto lower = Row(job.src, job.srcStep, std::ptrdiff_t{y} * 2 + 1);
    const auto dst = Row(job.dst, job.dstStep, y);
    if (HalveRow(upper, lower, dst, job.columns.extent)) continue;
    for (std::ptrdiff_t x = 0; x < job.columns.extent; ++x) dst[x] = MeanOfFour(upper + 2 * x, lower + 2 * x);
  }
}

}  // namespace norvala
