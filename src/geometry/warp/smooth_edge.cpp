#include <algorithm>
#include <cmath>

#include "frame/memory.h"
#include "geometry/warp/request.h"
#include "geometry/warp/sample_pixel.h"

// In every column that a flat edge passes, and in every row that a steep one passes, the pixel in which the edge meets
// the line through the centres becomes a mixture of its two neighbours on that line, by the part of it that lies
// inside. Its own value does not count: it is either image or background, and each neighbour is one of them. Edges on
// the region's own sides, and pixels without one of the two neighbours in the region, stay as they are.

namespace norvala {
namespace {

template <class T>
void BlendEdge(const WarpRequest& request, const Box& region, const Point& p, const Point& q, bool clockwise) {
  const bool isOnSide = (p.x == q.x && (p.x == region.left || p.x == region.right)) ||
                        (p.y == q.y && (p.y == region.top || p.y == region.bottom));
  if (isOnSide) return;
  // Flat edges are walked from column to column and blended vertically, steep ones the other way round.
  const bool isFlat = std::fabs(q.x - p.x) > std::fabs(q.y - p.y);
  const auto along = isFlat ? &Point::x : &Point::y;
  const auto across = isFlat ? &Point::y : &Point::x;
  const double low = isFlat ? region.top : region.left;
  const double high = isFlat ? region.bottom : region.right;
  // Going along the edge of a clockwise polygon, the inside lies to the right on the screen: for a flat edge to the
  // right and for a steep one upwards, that is where the coordinate across the edge is larger.
  const bool largerIsInside = (isFlat ? q.x > p.x : q.y < p.y) == clockwise;
  const std::int32_t inward = largerIsInside ? 1 : -1;
  const auto [from, to] = std::minmax(p, q, [&](const Point& a, const Point& b) { return a.*along < b.*along; });
  const double slope = (to.*across - from.*across) / (to.*along - from.*along);
  const double end = std::floor(to.*along);
  for (double a = std::ceil(from.*along); a <= end; ++a) {
    const double crossing = (a - from.*along) * slope + from.*across;
    const double b = std::floor(crossing + 0.5);
    if (!(b - 1 >= low && b + 1 <= high)) continue;
    const double smaller = std::clamp(crossing + 0.5 - b, 0.0, 1.0);  // the part of the pixel before the crossing
    const double inside = largerIsInside ? 1 - smaller : smaller;
    const auto step = static_cast<std::int32_t>(a);
    const auto middle = static_cast<std::int32_t>(b);
    const auto at = [&request, isFlat, step, middle](std::int32_t offset) {
      auto* const pixel =
          isFlat ? request.DestinationPixel(step, middle + offset) : request.DestinationPixel(middle + offset, step);
      return reinterpret_cast<Unaligned<T>*>(pixel);
    };
    const double sum = inside * static_cast<double>(*at(inward)) + (1 - inside) * static_cast<double>(*at(-inward));
    *at(0) = ToPixel<T>(sum);
  }
}

}  // namespace

void SmoothEdge(const WarpRequest& request, const Quadrilateral& quad, bool clockwise) {
  const Box region = request.DestinationBox();
  const Polygon polygon = ClipPolygon(Polygon(quad), region);
  if (polygon.count < 3) return;
  const auto blendEdge = request.depth == PixelDepthCode::Unsigned8 ? BlendEdge<BW8> : BlendEdge<FLOAT32>;
  for (int i = 0; i < polygon.count; ++i) blendEdge(request, region, polygon.vertices[i], polygon.After(i), clockwise);
}

}  // namespace norvala
