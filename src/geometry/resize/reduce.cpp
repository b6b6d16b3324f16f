#include <algorithm>

#include "frame/aligned_memory.h"
#include "frame/memory.h"
#include "geometry/resize/plan.h"

// The reduction: the mean over the area that a destination pixel covers in the source. The rows of a footprint are
// added up first, then the columns of the sums. In double precision the sums of equal pixels are so close to exact
// that their mean rounds to the pixel.

namespace norvala {
namespace {

using SrcRow = const Unaligned<const FLOAT32>*;

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
  bool whole;         // the reciprocal is a whole number
  std::int32_t span;  // source pixels in reach

  explicit Footprints(const ResizeAxis& axis) : reciprocal(1.0 / axis.factor) {
    whole = reciprocal == static_cast<double>(static_cast<std::int64_t>(reciprocal));
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
    Footprint f = {first, last, 1.0, 0.0, 0.0};
    if (first == last) {
      f.scale = 1.0;
      return f;
    }
    f.firstPart = std::min(first + 1 - begin, 1.0);
    f.lastPart = std::min(end - last, 1.0);
    f.scale = 1.0 / (f.firstPart + (last - first - 1) + f.lastPart);
    return f;
  }
};

// Adds `n` rows with their parts to the sums, or starts the sums with them.
template <int n, bool weighted, bool start>
void AddRows(const SrcRow (&rows)[4], const double (&parts)[4], double* __restrict sums, std::int32_t count) {
  for (std::int32_t x = 0; x < count; ++x) {
    double sum = start ? 0.0 : sums[x];
#pragma GCC unroll 4
    for (int k = 0; k < n; ++k) {
      const double pixel = rows[k][x];
      const double part = weighted ? parts[k] * pixel : pixel;
      sum = start && k == 0 ? part : sum + part;
    }
    sums[x] = sum;
  }
}

template <bool weighted, bool start>
void AddSomeRows(int n, const SrcRow (&rows)[4], const double (&parts)[4], double* sums, std::int32_t count) {
  switch (n) {
    case 1:
      return AddRows<1, weighted, start>(rows, parts, sums, count);
    case 2:
      return AddRows<2, weighted, start>(rows, parts, sums, count);
    case 3:
      return AddRows<3, weighted, start>(rows, parts, sums, count);
    default:
      return AddRows<4, weighted, start>(rows, parts, sums, count);
  }
}

// Sums of a footprint's rows, four rows at a time.
template <bool whole>
void SumRows(const ResizePlan& plan, const Footprint& f, double* sums, std::int32_t count) {
  const std::int32_t height = f.last - f.first + 1;
  for (std::int32_t done = 0; done < height;) {
    const int n = std::min(height - done, 4);
    SrcRow rows[4];
    double parts[4];
    for (int k = 0; k < n; ++k) {
      const std::int32_t y = f.first + done + k;
      rows[k] = Row(plan.src, plan.srcStep, y);
      parts[k] = y == f.first ? f.firstPart : y == f.last ? f.lastPart : 1.0;
    }
    if (done == 0) {
      AddSomeRows<!whole, true>(n, rows, parts, sums, count);
    } else {
      AddSomeRows<!whole, false>(n, rows, parts, sums, count);
    }
    done += n;
  }
}

template <bool whole>
void MeanOfColumns(const double* sums, const Footprint* columns, double rowScale, Unaligned<FLOAT32>* dst,
                   std::int32_t extent) {
  for (std::int32_t x = 0; x < extent; ++x) {
    const Footprint& f = columns[x];
    double sum = whole ? sums[f.first] : f.firstPart * sums[f.first];
    for (std::int32_t i = f.first + 1; i < f.last; ++i) sum += sums[i];
    if (f.last > f.first) sum += whole ? sums[f.last] : f.lastPart * sums[f.last];
    dst[x] = static_cast<FLOAT32>(sum * (f.scale * rowScale));
  }
}

template <bool wholeColumns, bool wholeRows>
StatusCode ReduceBy(const ResizePlan& plan, const Footprints& columns, const Footprints& rows) {
  const AlignedVector<Footprint> table(plan.columns.extent);
  const AlignedVector<double> sums(columns.span);
  if (!table || !sums) return StatusCode::WorkBufferUnavailable;
  for (std::int32_t x = 0; x < plan.columns.extent; ++x) table[x] = columns[x];
  for (std::int32_t y = 0; y < plan.rows.extent; ++y) {
    const Footprint f = rows[y];
    SumRows<wholeRows>(plan, f, sums.data(), columns.span);
    MeanOfColumns<wholeColumns>(sums.data(), table.data(), f.scale, Row(plan.dst, plan.dstStep, y),
                                plan.columns.extent);
  }
  return StatusCode::Success;
}

}  // namespace

StatusCode Reduce(const ResizePlan& plan) {
  const Footprints columns(plan.columns);
  const Footprints rows(plan.rows);
  if (columns.whole) {
    return rows.whole ? ReduceBy<true, true>(plan, columns, rows) : ReduceBy<true, false>(plan, columns, rows);
  }
  return rows.whole ? ReduceBy<false, true>(plan, columns, rows) : ReduceBy<false, false>(plan, columns, rows);
}

}  // namespace norvala
