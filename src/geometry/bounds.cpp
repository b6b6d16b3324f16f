#include "frame/lanes.h"
#include "frame/memory.h"
#include "geometry/geometry.h"
#include "geometry/quadrilateral.h"
#include "geometry/rotation.h"

namespace norvala {

StatusCode GetAffineBound(Rect region, double* bound, const double* coefficients) {
  Quadrilateral quad;
  const StatusCode status = MapRegionToQuadrilateral(region, quad, coefficients);
  if (status != StatusCode::Success && status != StatusCode::BadCoefficients) return status;
  StoreUnaligned(bound, BoundOf(quad));
  return status;
}

StatusCode GetRotateQuad(Rect region, double* quad, double angle, double xShift, double yShift) {
  if (IsOutOfRange(region)) return StatusCode::NonPositiveSize;
  StoreUnaligned(quad, MapRectangleCorners(RotationCoefficients(angle, xShift, yShift), Corners(region)));
  return StatusCode::Success;
}

StatusCode GetRotateBound(Rect region, double* bound, double angle, double xShift, double yShift) {
  Quadrilateral quad;
  const StatusCode status = kGetRotateQuad(region, &quad.vertices[0].x, angle, xShift, yShift);
  if (status == StatusCode::Success) StoreUnaligned(bound, BoundOf(quad));
  return status;
}

}  // namespace norvala
