#include <cmath>

#include "frame/memory.h"
#include "geometry/geometry.h"
#include "geometry/warp/affine_rows.h"
#include "geometry/warp/request.h"
#include "geometry/warp/smooth_edge.h"

namespace norvala {
namespace {

// Relative to c00 c11, or absolute where that is tiny.
bool IsSingular(const AffineCoefficients& c) {
  const double p = c.c00 * c.c11;
  const double q = c.c01 * c.c10;
  const double test = std::fabs(p) > 1e-200 ? std::fabs((p - q) / p) : std::fabs(q);
  return !(test > 1e-12);
}

// The map from the quadrilateral back to the rectangle.
AffineCoefficients InvertToRectangle(const Quadrilateral& quad, const Box& box) {
  const Point& q0 = quad.vertices[0];
  const Point& q1 = quad.vertices[1];
  const Point& q2 = quad.vertices[2];
  const double a = q1.x - q0.x;
  const double b = q2.x - q1.x;
  const double c = q1.y - q0.y;
  const double e = q2.y - q1.y;
  const double determinant = a * e - b * c;
  const double sx = (box.right - box.left) / determinant;
  const double sy = (box.bottom - box.top) / determinant;
  AffineCoefficients d;
  d.c00 = e * sx;
  d.c01 = -b * sx;
  d.c02 = box.left - d.c01 * q0.y - d.c00 * q0.x;
  d.c10 = -c * sy;
  d.c11 = a * sy;
  d.c12 = box.top - d.c10 * q0.x - d.c11 * q0.y;
  return d;
}

}  // namespace

StatusCode WarpAffine(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, void* dst,
                      std::int32_t dstStep, Rect dstRegion, PixelDepthCode depth, const double* coefficients,
                      std::int32_t interpolation) {
  const WarpRequest request = {src, srcSize, srcStep, srcRegion, dst, dstStep, dstRegion, depth, interpolation};
  if (const StatusCode status = request.Check(); status != StatusCode::Success) return status;
  const auto forward = LoadUnaligned<AffineCoefficients>(coefficients);
  if (IsSingular(forward)) return StatusCode::BadCoefficients;
  if (request.SourceRegionMissesImage()) return StatusCode::NoSourceOverlap;
  const Rect region = request.EffectiveRegion();
  if (region.width < 2 || region.height < 2) return StatusCode::RegionTooSmall;

  const Box corners = Corners(region);
  const Quadrilateral quad = MapRectangleCorners(forward, corners);
  const QuadrilateralShape shape = ClassifyQuadrilateral(quad);
  if (!IsConvex(shape)) return StatusCode::BadCoefficients;
  const bool clockwise = shape == QuadrilateralShape::Clockwise;
  const Box box = request.DestinationBox();
  {
    const RowSpans spans(ClipPolygon(Polygon(quad), box), box, clockwise);
    if (!spans) return StatusCode::NoDestinationOverlap;
    WarpRowsAffine(request.Source(), InvertToRectangle(quad, corners), spans, depth, request.Kernel(), dst, dstStep);
  }
  if (request.HasSmoothEdge()) SmoothEdge(dst, dstStep, depth, quad, box, clockwise);
  return StatusCode::Success;
}

}  // namespace norvala
