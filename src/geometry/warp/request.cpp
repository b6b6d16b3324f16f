#include "geometry/warp/request.h"

#include <algorithm>

#include "frame/memory.h"

namespace norvala {
namespace {

constexpr std::int32_t kKernelBits = INT32_MAX;

}  // namespace

StatusCode WarpRequest::Check() const {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize) || IsOutOfRange(srcRegion) || IsOutOfRange(dstRegion)) return StatusCode::NonPositiveSize;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  switch (static_cast<Interpolation>(interpolation & kKernelBits)) {
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
  if (!IsConvex(ClassifyQuadrilateral(quads.source)) || !IsConvex(shape)) return StatusCode::BadQuadrilateral;
  if (SourceRegionMissesImage()) return StatusCode::NoSourceOverlap;
  quads.clockwise = shape == QuadrilateralShape::Clockwise;
  const Box region = Corners(EffectiveRegion());
  quads.sourceInside = true;
  for (const Point& vertex : quads.source.vertices) quads.sourceInside &= Contains(region, vertex);
  return StatusCode::Success;
}

Interpolation WarpRequest::Kernel() const {
  const auto kernel = static_cast<Interpolation>(interpolation & kKernelBits);
  const std::int32_t side = std::min(srcSize.width, srcSize.height);
  if (side == 1) return Interpolation::Nearest;
  return kernel == Interpolation::Cubic && side < 4 ? Interpolation::Linear : kernel;
}

Rect WarpRequest::EffectiveRegion() const {
  return {srcRegion.x, srcRegion.y, std::min(srcSize.width - srcRegion.x, srcRegion.width),
          std::min(srcSize.height - srcRegion.y, srcRegion.height)};
}

Box WarpRequest::DestinationBox() const {
  constexpr double kLast = INT32_MAX - 1;
  const Box box = Corners(dstRegion);
  return {box.left, box.top, std::min(box.right, kLast), std::min(box.bottom, kLast)};
}

}  // namespace norvala
