#include <algorithm>

#include "frame/aligned_memory.h"
#include "frame/lanes.h"
#include "frame/memory.h"
#include "geometry/resize/plan.h"

// The reduction: the mean over the area that a destination pixel covers in the source. The rows of a footprint are
// added up first, then the columns of the sums. In double precision the sums of equal pixels are so close to exact
// that their mean rounds to the pixel.

namespace norvala {
namespace {

// What a destination pixel covers in one direction: source pixels `first` to `last`, of the first and the last one
// only a part. Of a single pixel the part does not matter: its mean is the pixel, so that `firstPart` and `scale` are 1
// and `lastPart` is 0.
struct Footprint {
  std::int32_t first;
  std::int32_t last;
  double firstPart;
  double lastPart;
  double scale;  // 1 / the length covered
};

// One direction of a reduction.
struct Footprints {
  double reciprocal;  // source pixels for each destination pixel
  std::int32_t span;  // source pixels in reach

  explicit Footprints(const ResizeAxis& axis) : reciprocal(1.0 / axis.factor) {
    const double reach = (axis.extent + 1.0) * reciprocal;
    span = reach + 1.0 > axis.length ? axis.length : static_cast<std::int32_t>(reach) + 1;
  }

  Footprint operator[](std::int32_t d) const {
    // Parts below this come from rounding in the products and would only let in a neighbour that is not covered.
    constexpr double kSliver = 1e-9;
    const double begin = d * reciprocal;
    const double end = std::min((d + 1.0) * reciprocal, static_cast<double>(span));
    const std::int32_t first = std::min(static_cast<std::int32_t>(begin + kSliver), span - 1);
    const std::int32_t last = std::max(static_cast<std::int32_t>(end - kSliver), first);
    if (first == last) return {first, last, 1.0, 0.0, 1.0};
    const double firstPart = std::min(first + 1 - begin, 1.0);
    const double lastPart = std::min(end - last, 1.0);
    return {first, last, firstPart, lastPart, 1.0 / (firstPart + (last - first - 1) + lastPart)};
  }
};

// Adds `n` rows times their parts to the sums, or starts the sums with them.
constexpr int kMostRows = 4;
template <int n, bool start>
void AddRows(const SrcRow (&rows)[kMostRows], const double (&parts)[kMostRows], double* __restrict sums,
             std::int32_t count) {
  for (std::int32_t x = 0; x < count; ++x) {
    double sum = start ? parts[0] * rows[0][x] : sums[x];
#pragma GCC unroll 4
    for (int k = start ? 1 : 0; k < n; ++k) sum += parts[k] * rows[k][x];
    sums[x] = sum;
  }
}

// The sums of a footprint's rows.
void SumRows(const ResizePlan& plan, const Footprint& f, double* sums, std::int32_t count) {
  using Add = decltype(AddRows<1, true>);
  constexpr Add* kStart[] = {AddRows<1, true>, AddRows<2, true>, AddRows<3, true>, AddRows<4, true>};
  constexpr Add* kAdd[] = {AddRows<1, false>, AddRows<2, false>, AddRows<3, false>, AddRows<4, false>};
  for (std::int32_t y = f.first; y <= f.last; y += kMostRows) {
    const int n = std::min(f.last - y + 1, kMostRows);
    SrcRow rows[kMostRows];
    double parts[kMostRows];
    for (int k = 0; k < n; ++k) {
      rows[k] = plan.SourceRow(y + k);
      parts[k] = y + k == f.first ? f.firstPart : y + k == f.last ? f.lastPart : 1.0;
    }
    (y == f.first ? kStart : kAdd)[n - 1](rows, parts, sums, count);
  }
}

// The means of the columns of the sums.
void MeanOfColumns(const double* sums, const Footprint* columns, double rowScale, DstRow dst, std::int32_t extent) {
  for (std::int32_t x = 0; x < extent; ++x) {
    const Footprint& f = columns[x];
    double sum = f.firstPart * sums[f.first];
    for (std::int32_t i = f.first + 1; i < f.last; ++i) sum += sums[i];
    if (f.last > f.first) sum += f.lastPart * sums[f.last];
    dst[x] = static_cast<FLOAT32>(sum * (f.scale * rowScale));
  }
}

// ---- Halving ----
//
// By contract in single precision, rows first: four pixels at once and no conversions. So it differs from the general
// Reduce by rounding.

FLOAT32 MeanOfFour(SrcRow upper, SrcRow lower) {
  const float sum = (upper[0] + lower[0]) + (upper[1] + lower[1]);
  if (sum - sum == 0.0F) return sum * 0.25F;
  return static_cast<FLOAT32>(((double{upper[0]} + lower[0]) + (double{upper[1]} + lower[1])) * 0.25);
}

// Returns whether every sum is finite. The mean of four floats may be finite where their sum overflows: such rows must
// be computed again in double precision. Infinities and NaNs stay in `total` once they have entered it. It may also
// overflow while every sum is finite; the row is then computed again without need.
bool HalveRow(SrcRow upper, SrcRow lower, DstRow dst, std::ptrdiff_t extent) {
  F32x4 total = {};
  std::ptrdiff_t x = 0;
  for (; x + 4 <= extent; x += 4) {
    const auto left = LoadUnaligned<F32x4>(upper + 2 * x) + LoadUnaligned<F32x4>(lower + 2 * x);
    const auto right = LoadUnaligned<F32x4>(upper + 2 * x + 4) + LoadUnaligned<F32x4>(lower + 2 * x + 4);
    const F32x4 sum = EvenLanes(left, right) + OddLanes(left, right);
    total += sum;
    StoreUnaligned(dst + x, sum * 0.25F);
  }
  for (; x < extent; ++x) dst[x] = MeanOfFour(upper + 2 * x, lower + 2 * x);
  total -= total;
  return total[0] + total[1] + total[2] + total[3] == 0.0F;
}

}  // namespace

StatusCode Reduce(const ResizePlan& plan) {
  const Footprints columns(plan.columns);
  const Footprints rows(plan.rows);
  const AlignedVector<Footprint> table(plan.columns.extent);
  const AlignedVector<double> sums(columns.span);
  if (!table || !sums) return StatusCode::WorkBufferUnavailable;
  for (std::int32_t x = 0; x < plan.columns.extent; ++x) table[x] = columns[x];
  for (std::int32_t y = 0; y < plan.rows.extent; ++y) {
    const Footprint f = rows[y];
    SumRows(plan, f, sums.data(), columns.span);
    MeanOfColumns(sums.data(), table.data(), f.scale, plan.DestinationRow(y), plan.columns.extent);
  }
  return StatusCode::Success;
}

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
