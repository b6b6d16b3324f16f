#include <cmath>

#include "frame/memory.h"
#include "geometry/geometry.h"
#include "geometry/shapes.h"

// What lets a caller plan an affine warp without performing it.

namespace norvala {
namespace {

// The angle in 0..360 degrees; not a number where the angle is not finite.
double ReduceAngle(double angle) {
  const double turns = std::trunc(angle / 360);
  const double reduced = angle - turns * 360;
  return reduced < 0 ? reduced + 360 : reduced;
}

struct CosineAndSine {
  double cosine;
  double sine;
};

// One place computes them, so that shift and quadrilateral agree to the last bit.
CosineAndSine CosineAndSineOf(double reducedAngle) {
  const double radians = reducedAngle / 180 * 3.141592653589793;
  return {std::cos(radians), std::sin(radians)};
}

// The matrix of a rotation by `angle` degrees, counter-clockwise on the screen, followed by a shift. At 90, 180 and 270
// degrees its elements are exact.
AffineCoefficients RotationCoefficients(double angle, double xShift, double yShift) {
  const double a = ReduceAngle(angle);
  if (a == 90) return {0, 1, xShift, -1, 0, yShift};
  if (a == 180) return {-1, 0, xShift, 0, -1, yShift};
  if (a == 270) return {0, -1, xShift, 1, 0, yShift};
  const CosineAndSine r = CosineAndSineOf(a);
  return {r.cosine, r.sine, xShift, -r.sine, r.cosine, yShift};
}

}  // namespace

StatusCode GetAffineBound(Rect region, double* bound, const double* coefficients) {
  if (IsOutOfRange(region)) return StatusCode::NonPositiveSize;
  const auto forward = LoadUnaligned<AffineCoefficients>(coefficients);
  const Quadrilateral quad = MapRectangleCorners(forward, Corners(region));
  StoreUnaligned(bound, BoundOf(quad));  // of a quadrilateral that is not convex, too
  const bool isConvex = ClassifyQuadrilateral(quad) != QuadrilateralShape::NotConvex;
  return isConvex ? StatusCode::Success : StatusCode::BadCoefficients;
}

StatusCode GetRotateShift(double xCentre, double yCentre, double angle, double* xShift, double* yShift) {
  if (xShift == nullptr || yShift == nullptr) return StatusCode::NullPointer;
  const double a = ReduceAngle(angle);
  Point shift;
  if (a == 0) {
    shift = {0, 0};
  } else if (a == 90) {
    shift = {xCentre - yCentre, xCentre + yCentre};
  } else if (a == 180) {
    shift = {2 * xCentre, 2 * yCentre};
  } else if (a == 270) {
    shift = {xCentre + yCentre, yCentre - xCentre};
  } else {
    const CosineAndSine r = CosineAndSineOf(a);
    shift = {xCentre - xCentre * r.cosine - yCentre * r.sine, yCentre - yCentre * r.cosine + xCentre * r.sine};
  }
  StoreUnaligned(xShift, shift.x);
  StoreUnaligned(yShift, shift.y);
  return StatusCode::Success;
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
