#include "geometry/warp/request.h"

#include <algorithm>

#include "frame/memory.h"

namespace norvala {

StatusCode WarpRequest::Check() const {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize) || IsOutOfRange(srcRegion) || IsOutOfRange(dstRegion)) return StatusCode::NonPositiveSize;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  switch (AskedKernel()) {
    case Interpolation::Nearest:
    case Interpolation::Linear:
    case Interpolation::Cubic:
      return StatusCode::Success;
  }
  return StatusCode::UnknownInterpolation;
}

StatusCode WarpRequest::CheckQuads(const double* srcQuad, const double* dstQuad, QuadPair& quads) const {
  if (const StatusCode status = Check(); status != StatusCode::Success) return status;
  quads.source = LoadUnaligned<Quadrilateral>(srcQuad);
  quads.destination = LoadUnaligned<Quadrilateral>(dstQuad);
  const QuadrilateralShape shape = ClassifyQuadrilateral(quads.destination);
  if (ClassifyQuadrilateral(quads.source) == QuadrilateralShape::NotConvex || shape == QuadrilateralShape::NotConvex) {
    return StatusCode::BadQuadrilateral;
  }
  if (Misses(srcRegion, srcSize)) return StatusCode::NoSourceOverlap;
  quads.clockwise = shape == QuadrilateralShape::Clockwise;
  const Box region = Corners(EffectiveRegion());
  quads.sourceInside = std::ranges::all_of(quads.source.vertices, [&](const Point& p) { return Contains(region, p); });
  return StatusCode::Success;
}

Interpolation WarpRequest::Kernel() const {
  const std::int32_t side = std::min(srcSize.width, srcSize.height);
  const auto widest = side >= 4 ? Interpolation::Cubic : side >= 2 ? Interpolation::Linear : Interpolation::Nearest;
  return std::min(AskedKernel(), widest);
}

Box WarpRequest::DestinationBox() const {
  constexpr double kLast = INT32_MAX - 1;
  const Box box = Corners(dstRegion);
  return {box.left, box.top, std::min(box.right, kLast), std::min(box.bottom, kLast)};
}

}  // namespace norvala
