#include "geometry/geometry.h"
#include "geometry/resize/methods.h"

namespace norvala {

StatusCode ResizeFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                         std::int32_t interpolation) {
  const ResizeRequest request = {src,     srcSize, srcStep, srcRegion, dst,
                                 dstStep, dstSize, xFactor, yFactor,   interpolation};
  if (const StatusCode status = request.Check(); status != StatusCode::Success) return status;
  ResizePlan plan;
  if (const StatusCode status = request.Plan(plan); status != StatusCode::Success) return status;

  // With both factors 1, every interpolation takes the pixels as they are.
  if (plan.columns.factor == 1.0 && plan.rows.factor == 1.0) return ResizeNearest(plan);
  switch (request.Kernel()) {
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
