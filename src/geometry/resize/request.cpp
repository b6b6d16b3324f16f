#include "geometry/resize/request.h"

#include <algorithm>

#include "frame/memory.h"
#include "geometry/shapes.h"

namespace norvala {
namespace {

// Rounding in length * factor must not lose a pixel.
constexpr double kExtentTolerance = 1e-7;

StatusCode PlanAxis(std::int32_t length, double factor, std::int32_t dstLength, ResizeAxis& axis) {
  const double scaled = static_cast<double>(length) * factor + kExtentTolerance;
  // Compared before it is truncated: any factor may have come, infinity included.
  std::int32_t extent = scaled >= static_cast<double>(dstLength) ? dstLength : static_cast<std::int32_t>(scaled);
  if (extent < 1) {
    if (scaled < 0.5) return StatusCode::ResultRegionEmpty;
    extent = 1;
  }
  axis = {length, extent, factor};
  return StatusCode::Success;
}

}  // namespace

StatusCode ResizeRequest::Check() const {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize) || IsOutOfRange(srcRegion)) return StatusCode::NonPositiveSize;
  if (srcSize.width <= srcRegion.x || srcSize.height <= srcRegion.y) return StatusCode::NoSourceOverlap;
  if (IsEmpty(dstSize)) return StatusCode::NonPositiveSize;
  if (!(xFactor > 0.0) || !(yFactor > 0.0)) return StatusCode::BadResizeFactor;
  switch (static_cast<ResizeInterpolation>(interpolation)) {
    case ResizeInterpolation::Nearest:
    case ResizeInterpolation::Linear:
    case ResizeInterpolation::Cubic:
    case ResizeInterpolation::EightPoint:
      return StatusCode::Success;
    case ResizeInterpolation::Reduce:
      if (xFactor <= 1.0 && yFactor <= 1.0) return StatusCode::Success;
      break;
  }
  return StatusCode::UnknownInterpolation;
}

ResizeInterpolation ResizeRequest::Kernel() const {
  auto kernel = static_cast<ResizeInterpolation>(interpolation);
  const std::int32_t side = std::min(srcSize.width, srcSize.height);
  if (side >= 8 || kernel == ResizeInterpolation::Reduce) return kernel;
  if (kernel == ResizeInterpolation::EightPoint) kernel = ResizeInterpolation::Cubic;
  if (side >= 4) return kernel;
  if (kernel == ResizeInterpolation::Cubic) kernel = ResizeInterpolation::Linear;
  if (side >= 2) return kernel;
  return ResizeInterpolation::Nearest;
}

StatusCode ResizeRequest::Plan(ResizePlan& plan) const {
  const std::int32_t width = std::min(srcRegion.width, srcSize.width - srcRegion.x);
  const std::int32_t height = std::min(srcRegion.height, srcSize.height - srcRegion.y);
  StatusCode status = PlanAxis(width, xFactor, dstSize.width, plan.columns);
  if (status != StatusCode::Success) return status;
  status = PlanAxis(height, yFactor, dstSize.height, plan.rows);
  if (status != StatusCode::Success) return status;
  plan.src = Row(src, srcStep, srcRegion.y) + srcRegion.x;
  plan.srcStep = srcStep;
  plan.dst = dst;
  plan.dstStep = dstStep;
  return StatusCode::Success;
}

}  // namespace norvala
