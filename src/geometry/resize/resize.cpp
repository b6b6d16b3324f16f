#include <algorithm>

#include "geometry/geometry.h"
#include "geometry/resize/plan.h"
#include "geometry/shapes.h"

namespace norvala {
namespace {

enum class ResizeInterpolation : std::int32_t { Nearest = 1, Linear = 2, Cubic = 4, Reduce = 8, EightPoint = 16 };

bool IsKnown(ResizeInterpolation interpolation, double xFactor, double yFactor) {
  switch (interpolation) {
    case ResizeInterpolation::Nearest:
    case ResizeInterpolation::Linear:
    case ResizeInterpolation::Cubic:
    case ResizeInterpolation::EightPoint:
      return true;
    case ResizeInterpolation::Reduce:
      return xFactor <= 1.0 && yFactor <= 1.0;
  }
  return false;
}

// The interpolation that the source image has enough pixels for. All but Reduce rank by the pixels that they need.
ResizeInterpolation LimitToSource(ResizeInterpolation interpolation, RegionSize srcSize) {
  if (interpolation == ResizeInterpolation::Reduce) return interpolation;
  const std::int32_t side = std::min(srcSize.width, srcSize.height);
  const auto widest = side >= 8   ? ResizeInterpolation::EightPoint
                      : side >= 4 ? ResizeInterpolation::Cubic
                      : side >= 2 ? ResizeInterpolation::Linear
                                  : ResizeInterpolation::Nearest;
  return std::min(interpolation, widest);
}

// Extends over no pixel where the result is less than half a pixel long.
ResizeAxis PlanAxis(std::int32_t length, double factor, std::int32_t dstLength) {
  constexpr double kExtentTolerance = 1e-7;  // rounding in length * factor must not lose a pixel
  const double scaled = static_cast<double>(length) * factor + kExtentTolerance;
  // Compared before it is truncated: any factor may have come, infinity included.
  if (scaled >= dstLength) return {length, dstLength, factor};
  return {length, scaled < 0.5 ? 0 : std::max(static_cast<std::int32_t>(scaled), 1), factor};
}

}  // namespace

StatusCode ResizeFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                         std::int32_t interpolation) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize) || IsOutOfRange(srcRegion)) return StatusCode::NonPositiveSize;
  if (Misses(srcRegion, srcSize)) return StatusCode::NoSourceOverlap;
  if (IsEmpty(dstSize)) return StatusCode::NonPositiveSize;
  if (!(xFactor > 0.0) || !(yFactor > 0.0)) return StatusCode::BadResizeFactor;
  const auto asked = static_cast<ResizeInterpolation>(interpolation);
  if (!IsKnown(asked, xFactor, yFactor)) return StatusCode::UnknownInterpolation;

  const Rect region = LimitToImage(srcRegion, srcSize);
  const ResizeAxis columns = PlanAxis(region.width, xFactor, dstSize.width);
  const ResizeAxis rows = PlanAxis(region.height, yFactor, dstSize.height);
  if (columns.extent == 0 || rows.extent == 0) return StatusCode::ResultRegionEmpty;
  const ResizePlan plan = {Row(src, srcStep, region.y) + region.x, srcStep, dst, dstStep, columns, rows};

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
