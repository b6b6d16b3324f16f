#include "geometry/shapes.h"

namespace norvala {
namespace {

// One side of the box: keeps the points whose coordinate `along` is at most (or at least) the limit.
struct Side {
  double Point::*along;
  double Point::*across;
  double limit;
  bool keepsAbove;

  bool Keeps(const Point& p) const { return keepsAbove ? p.*along >= limit : p.*along <= limit; }

  Point Crossing(const Point& p, const Point& q) const {
    // Measured from the same end for both directions of the edge.
    const auto [from, to] = std::minmax(p, q, [&](const Point& a, const Point& b) { return a.*along < b.*along; });
    Point crossing;
    crossing.*along = limit;
    crossing.*across = (limit - from.*along) * ((to.*across - from.*across) / (to.*along - from.*along)) + from.*across;
    return crossing;
  }
};

// One step of the clipping by Sutherland and Hodgman ("Reentrant polygon clipping", 1974).
Polygon ClipToSide(const Polygon& polygon, const Side& side) {
  Polygon clipped;
  for (int i = 0; i < polygon.count; ++i) {
    const Point& p = polygon.vertices[i];
    const Point& q = polygon.After(i);
    if (side.Keeps(p)) clipped.Append(p);
    if (side.Keeps(p) != side.Keeps(q)) clipped.Append(side.Crossing(p, q));
  }
  while (clipped.count > 1 && clipped.vertices[0] == clipped.vertices[clipped.count - 1]) --clipped.count;
  return clipped;
}

}  // namespace

QuadrilateralShape ClassifyQuadrilateral(const Quadrilateral& quad) {
  int positive = 0;
  for (int k = 0; k < 4; ++k) {
    const Point& before = quad.vertices[(k + 3) % 4];
    const Point& corner = quad.vertices[k];
    const Point& after = quad.vertices[(k + 1) % 4];
    const double cross = Cross(corner - before, after - corner);
    if (!(cross < 0 || cross > 0)) return QuadrilateralShape::NotConvex;
    if (cross > 0) ++positive;
  }
  if (positive == 4) return QuadrilateralShape::Clockwise;
  return positive == 0 ? QuadrilateralShape::CounterClockwise : QuadrilateralShape::NotConvex;
}

Box BoundOf(const Quadrilateral& quad) {
  const auto& v = quad.vertices;
  return {std::min(std::min(v[0].x, v[1].x), std::min(v[2].x, v[3].x)),
          std::min(std::min(v[0].y, v[1].y), std::min(v[2].y, v[3].y)),
          std::max(std::max(v[0].x, v[1].x), std::max(v[2].x, v[3].x)),
          std::max(std::max(v[0].y, v[1].y), std::max(v[2].y, v[3].y))};
}

Polygon::Polygon(const Quadrilateral& quad) {
  for (const Point& vertex : quad.vertices) Append(vertex);
}

void Polygon::Append(const Point& p) {
  if (count > 0 && p == vertices[count - 1]) return;
  if (count < kCapacity) vertices[count++] = p;
}

Polygon ClipPolygon(const Polygon& polygon, const Box& box) {
  Polygon clipped = ClipToSide(polygon, {&Point::x, &Point::y, box.left, true});
  clipped = ClipToSide(clipped, {&Point::x, &Point::y, box.right, false});
  clipped = ClipToSide(clipped, {&Point::y, &Point::x, box.top, true});
  clipped = ClipToSide(clipped, {&Point::y, &Point::x, box.bottom, false});
  // Rounding moves a crossing by far less than a pixel; more comes from coordinates near the end of the range.
  const Box around = {box.left - 0.5, box.top, box.right + 0.5, box.bottom};
  const auto liesAround = [&](const Point& p) { return Contains(around, p); };
  return std::all_of(clipped.vertices, clipped.vertices + clipped.count, liesAround) ? clipped : Polygon();
}

}  // namespace norvala
