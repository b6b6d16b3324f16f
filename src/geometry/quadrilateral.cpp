#include "geometry/quadrilateral.h"

#include <algorithm>

#include "frame/memory.h"

namespace norvala {

Quadrilateral MapRectangleCorners(const AffineCoefficients& c, const Box& box) {
  return {{Map(c, box.left, box.top), Map(c, box.right, box.top), Map(c, box.right, box.bottom),
           Map(c, box.left, box.bottom)}};
}

QuadrilateralShape ClassifyQuadrilateral(const Quadrilateral& quad) {
  int positive = 0;
  for (int k = 0; k < 4; ++k) {
    const Point& before = quad.vertices[(k + 3) % 4];
    const Point& corner = quad.vertices[k];
    const Point& after = quad.vertices[(k + 1) % 4];
    const double cross = (corner.x - before.x) * (after.y - corner.y) - (corner.y - before.y) * (after.x - corner.x);
    if (!(cross < 0 || cross > 0)) return QuadrilateralShape::Degenerate;
    if (cross > 0) ++positive;
  }
  if (positive == 4) return QuadrilateralShape::Clockwise;
  return positive == 0 ? QuadrilateralShape::CounterClockwise : QuadrilateralShape::NotConvex;
}

StatusCode MapRegionToQuadrilateral(Rect region, Quadrilateral& quad, const double* coefficients) {
  if (IsOutOfRange(region)) return StatusCode::NonPositiveSize;
  quad = MapRectangleCorners(LoadUnaligned<AffineCoefficients>(coefficients), Corners(region));
  return IsConvex(ClassifyQuadrilateral(quad)) ? StatusCode::Success : StatusCode::BadCoefficients;
}

Box BoundOf(const Quadrilateral& quad) {
  const auto& v = quad.vertices;
  return {std::min(std::min(v[0].x, v[1].x), std::min(v[2].x, v[3].x)),
          std::min(std::min(v[0].y, v[1].y), std::min(v[2].y, v[3].y)),
          std::max(std::max(v[0].x, v[1].x), std::max(v[2].x, v[3].x)),
          std::max(std::max(v[0].y, v[1].y), std::max(v[2].y, v[3].y))};
}

}  // namespace norvala
