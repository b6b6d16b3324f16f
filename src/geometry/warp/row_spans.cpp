#include "geometry/warp/row_spans.h"

#include <algorithm>
#include <cmath>

namespace norvala {
namespace {

// Centres on an edge are inside, at both ends of a row. Crossings are rounded, so that a centre meant to lie on the
// edge may come out beside it: centres less than this outside count as lying on it. Beyond column 64 crossings are
// further apart than this and only exact ones count, besides those for which First rounds x + 1 down to a power of two:
// the form of the sums is part of the result. Rows have no tolerance.
constexpr double kTolerance = 1e-14;

struct Columns {
  double left;
  double right;

  // The first column of a row whose left crossing is x, the column behind the last one where there is none.
  std::int32_t First(double x) const {
    double column = std::ceil(x);
    if (x + 1 - column < kTolerance) column -= 1;
    if (!(column <= right)) column = right + 1;
    return static_cast<std::int32_t>(std::max(column, left));
  }

  // The last column of a row whose right crossing is x, the column before the first one where there is none.
  std::int32_t Last(double x) const {
    double column = std::floor(x);
    if (1 - (x - column) < kTolerance) column += 1;
    if (!(column >= left)) column = left - 1;
    return static_cast<std::int32_t>(std::min(column, right));
  }
};

}  // namespace

RowSpans::RowSpans(const Polygon& whole, const Box& region, bool clockwise) {
  const Polygon polygon = ClipPolygon(whole, region);
  if (polygon.count == 0) return;
  const Point* const v = polygon.vertices;
  const auto [left, right] = std::ranges::minmax_element(v, v + polygon.count, {}, &Point::x);
  const auto [top, bottom] = std::ranges::minmax_element(v, v + polygon.count, {}, &Point::y);
  const double firstRow = std::ceil(top->y);
  const double lastRow = std::floor(bottom->y);
  // The whole polygon has no tolerance: it may lie between two rows or two columns.
  if (firstRow > lastRow || std::ceil(left->x) > std::floor(right->x)) return;

  const Columns columns = {region.left, region.right};
  firstRow_ = static_cast<std::int32_t>(firstRow);
  rows_ = static_cast<std::int32_t>(lastRow) - firstRow_ + 1;
  table_ = AlignedVector<RowSpan>(rows_);
  if (!table_) return;

  if (top->y == bottom->y) {
    table_[0] = {columns.First(left->x), columns.Last(right->x)};
    return;
  }
  // From the top vertex down both chains. Where two edges meet on a row, the lower one starts exactly at their vertex.
  for (const bool increasing : {false, true}) {
    const bool isLeft = increasing != clockwise;
    for (auto i = top - v; v[i].y < bottom->y;) {
      const Point from = v[i];
      i = (i + (increasing ? 1 : polygon.count - 1)) % polygon.count;
      const Point to = v[i];
      if (!(to.y > from.y)) continue;
      const double slope = (to.x - from.x) / (to.y - from.y);
      const double last = std::floor(to.y);
      for (double y = std::ceil(from.y); y <= last; ++y) {
        const double x = (y - from.y) * slope + from.x;
        RowSpan& span = table_[static_cast<std::int32_t>(y) - firstRow_];
        if (isLeft) {
          span.first = columns.First(x);
        } else {
          span.last = columns.Last(x);
        }
      }
    }
  }
}

}  // namespace norvala
