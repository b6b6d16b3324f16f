#include "geometry/warp/quad_checks.h"

#include "frame/memory.h"

namespace norvala {

StatusCode CheckQuadWarp(const WarpRequest& request, const double* srcQuad, const double* dstQuad, QuadPair& quads) {
  if (const StatusCode status = request.Check(); status != StatusCode::Success) return status;
  quads.source = LoadUnaligned<Quadrilateral>(srcQuad);
  quads.destination = LoadUnaligned<Quadrilateral>(dstQuad);
  const QuadrilateralShape shape = ClassifyQuadrilateral(quads.destination);
  if (!IsConvex(ClassifyQuadrilateral(quads.source)) || !IsConvex(shape)) return StatusCode::BadQuadrilateral;
  if (request.SourceRegionMissesImage()) return StatusCode::NoSourceOverlap;
  quads.clockwise = shape == QuadrilateralShape::Clockwise;
  const Box region = Corners(request.EffectiveRegion());
  quads.sourceInside = true;
  for (const Point& vertex : quads.source.vertices) quads.sourceInside &= Contains(region, vertex);
  return StatusCode::Success;
}

}  // namespace norvala
