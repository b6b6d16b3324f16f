#include <algorithm>

#include "frame/memory.h"
#include "geometry/geometry.h"
#include "geometry/quadrilateral.h"
#include "geometry/resize/resize.h"

namespace norvala {
namespace {

// Rounding in length * factor must not lose a pixel.
constexpr double kExtentTolerance = 1e-7;

StatusCode PlanAxis(std::int32_t length, double factor, std::int32_t dstLength, ResizeAxis* axis) {
  const double scaled = static_cast<double>(length) * factor + kExtentTolerance;
  // Compared before it is truncated: any factor may have come, infinity included.
  std::int32_t extent = scaled >= static_cast<double>(dstLength) ? dstLength : static_cast<std::int32_t>(scaled);
  if (extent < 1) {
    if (scaled < 0.5) return StatusCode::ResultRegionEmpty;
    extent = 1;
  }
  *axis = {length, extent, factor};
  return StatusCode::Success;
}

}  // namespace

StatusCode CheckResize(const FLOAT32* src, RegionSize srcSize, Rect srcRegion, const FLOAT32* dst, RegionSize dstSize,
                       double xFactor, double yFactor) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize) || IsOutOfRange(srcRegion)) return StatusCode::NonPositiveSize;
  if (srcSize.width <= srcRegion.x || srcSize.height <= srcRegion.y) return StatusCode::NoSourceOverlap;
  if (IsEmpty(dstSize)) return StatusCode::NonPositiveSize;
  if (!(xFactor > 0.0) || !(yFactor > 0.0)) return StatusCode::BadResizeFactor;
  return StatusCode::Success;
}

ResizeInterpolation FitToSource(ResizeInterpolation interpolation, RegionSize srcSize) {
  const std::int32_t least = std::min(srcSize.width, srcSize.height);
  if (least >= 8) return interpolation;
  if (interpolation == ResizeInterpolation::EightPoint) interpolation = ResizeInterpolation::Cubic;
  if (least >= 4) return interpolation;
  if (interpolation == ResizeInterpolation::Cubic) interpolation = ResizeInterpolation::Linear;
  if (least >= 2) return interpolation;
  return ResizeInterpolation::Nearest;
}

StatusCode PlanResize(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                      std::int32_t dstStep, RegionSize dstSize, double xFactor, double yFactor, ResizeJob* job) {
  const std::int32_t width = std::min(srcRegion.width, srcSize.width - srcRegion.x);
  const std::int32_t height = std::min(srcRegion.height, srcSize.height - srcRegion.y);
  StatusCode status = PlanAxis(width, xFactor, dstSize.width, &job->columns);
  if (status != StatusCode::Success) return status;
  status = PlanAxis(height, yFactor, dstSize.height, &job->rows);
  if (status != StatusCode::Success) return status;
  job->src = Row(src, srcStep, srcRegion.y) + srcRegion.x;
  job->srcStep = srcStep;
  job->dst = dst;
  job->dstStep = dstStep;
  return StatusCode::Success;
}

StatusCode ResizeFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                         std::int32_t interpolation) {
  // A reduction that would enlarge is left to the resampler, which refuses it.
  if (interpolation == static_cast<std::int32_t>(ResizeInterpolation::Reduce) && xFactor <= 1.0 && yFactor <= 1.0) {
    return ReduceFLOAT32(src, srcSize, srcStep, srcRegion, dst, dstStep, dstSize, xFactor, yFactor);
  }
  return ResampleFLOAT32(src, srcSize, srcStep, srcRegion, dst, dstStep, dstSize, xFactor, yFactor, interpolation);
}

}  // namespace norvala
