#include "geometry/warp/row_spans.h"

#include <algorithm>
#include <cmath>

namespace norvala {
namespace {

// A crossing this little beyond a pixel centre still takes that pixel in. From column 64 on, doubles lie further apart
// than this, and only the rounding of `x + 1` in First still does: the form of the two expressions is part of the
// result. Rows have no tolerance.
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
  const Point* v = polygon.vertices;
  Point low = v[0];
  Point high = v[0];
  int top = 0;
  for (int i = 1; i < polygon.count; ++i) {
    if (v[i].y < v[top].y) top = i;
    low = {std::min(low.x, v[i].x), std::min(low.y, v[i].y)};
    high = {std::max(high.x, v[i].x), std::max(high.y, v[i].y)};
  }
  const double firstRow = std::ceil(low.y);
  const double lastRow = std::floor(high.y);
  if (firstRow > lastRow || std::ceil(low.x) > std::floor(high.x)) return;

  const Columns columns = {region.left, region.right};
  firstRow_ = static_cast<std::int32_t>(firstRow);
  rows_ = static_cast<std::int32_t>(lastRow) - firstRow_ + 1;
  table_ = AlignedVector<RowSpan>(rows_);
  if (!table_) return;

  if (low.y == high.y) {
    table_[0] = {columns.First(low.x), columns.Last(high.x)};
    return;
  }
  // From the top vertex down both chains. Where two edges meet on a row, the lower one starts exactly at their vertex.
  for (const bool increasing : {false, true}) {
    const bool isLeft = increasing != clockwise;
    for (int i = top; v[i].y < high.y;) {
      const int next = increasing ? (i + 1) % polygon.count : (i + polygon.count - 1) % polygon.count;
      const Point from = v[i];
      const Point to = v[next];
      i = next;
      if (!(to.y > from.y)) continue;
      const double slope = (to.x - from.x) / (to.y - from.y);
      const double end = std::floor(to.y);
      for (double y = std::ceil(from.y); y <= end; ++y) {
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
