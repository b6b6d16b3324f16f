#include <algorithm>

#include "geometry/geometry.h"
#include "geometry/resize/plan.h"
#include "geometry/shapes.h"

namespace norvala {
namespace {

enum class ResizeInterpolation : std::int32_t { Nearest = 1, Linear = 2, Cubic = 4, Reduce = 8, EightPoint = 16 };

StatusCode CheckInterpolation(ResizeInterpolation interpolation, double xFactor, double yFactor) {
  switch (interpolation) {
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

// The interpolation that the source image has enough pixels for.
ResizeInterpolation LimitToSource(ResizeInterpolation interpolation, RegionSize srcSize) {
  const std::int32_t side = std::min(srcSize.width, srcSize.height);
  if (side >= 8 || interpolation == ResizeInterpolation::Reduce) return interpolation;
  if (interpolation == ResizeInterpolation::EightPoint) interpolation = ResizeInterpolation::Cubic;
  if (side >= 4) return interpolation;
  if (interpolation == ResizeInterpolation::Cubic) interpolation = ResizeInterpolation::Linear;
  return side >= 2 ? interpolation : ResizeInterpolation::Nearest;
}

StatusCode PlanAxis(std::int32_t length, double factor, std::int32_t dstLength, ResizeAxis& axis) {
  constexpr double kExtentTolerance = 1e-7;  // rounding in length * factor must not lose a pixel
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

StatusCode ResizeFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                         std::int32_t interpolation) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize) || IsOutOfRange(srcRegion)) return StatusCode::NonPositiveSize;
  if (srcSize.width <= srcRegion.x || srcSize.height <= srcRegion.y) return StatusCode::NoSourceOverlap;
  if (IsEmpty(dstSize)) return StatusCode::NonPositiveSize;
  if (!(xFactor > 0.0) || !(yFactor > 0.0)) return StatusCode::BadResizeFactor;
  const auto asked = static_cast<ResizeInterpolation>(interpolation);
  StatusCode status = CheckInterpolation(asked, xFactor, yFactor);
  if (status != StatusCode::Success) return status;

  // The part of the region that lies in the image.
  const std::int32_t width = std::min(srcRegion.width, srcSize.width - srcRegion.x);
  const std::int32_t height = std::min(srcRegion.height, srcSize.height - srcRegion.y);
  ResizePlan plan = {Row(src, srcStep, srcRegion.y) + srcRegion.x, srcStep, dst, dstStep, {}, {}};
  status = PlanAxis(width, xFactor, dstSize.width, plan.columns);
  if (status != StatusCode::Success) return status;
  status = PlanAxis(height, yFactor, dstSize.height, plan.rows);
  if (status != StatusCode::Success) return status;

  // With both factors 1, every interpolation takes the pixels as they are.
  if (xFactor == 1.0 && yFactor == 1.0) return ResizeNearest(plan);
  switch (LimitToSource(asked, srcSize)) {
    case ResizeInterpolation::Nearest:
      return ResizeNearest(plan);
    case ResizeInterpolation::Linear:
      return IsHalving(plan) ? Halve(plan) : Resample<2>(plan);
    case ResizeInterpolation::Cubic:
      return Resample<4>(plan);
    case ResizeInterpolation::EightPoint:
      return Resample<8>(plan);
    case ResizeInterpolation::Reduce:
      return IsHalving(plan) ? Halve(plan) : Reduce(plan);
  }
  return StatusCode::UnknownInterpolation;
}

}  // namespace norvala
