#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/status.h"
#include "frame/types.h"

// What the two ways of resizing share: checks, and how far each direction reaches.

namespace norvala {

enum class ResizeInterpolation : std::int32_t { Nearest = 1, Linear = 2, Cubic = 4, Reduce = 8, EightPoint = 16 };

// One direction of a resize: `extent` destination pixels drawn from `length` source pixels.
struct ResizeAxis {
  std::int32_t length;
  std::int32_t extent;
  double factor;
};

// A checked resize: the region lies inside the source image, every pixel of the extent is to be written.
struct ResizeJob {
  const FLOAT32* src;  // first pixel of the region
  std::ptrdiff_t srcStep;
  FLOAT32* dst;
  std::ptrdiff_t dstStep;
  ResizeAxis columns;
  ResizeAxis rows;
};

// The two ways: the general resampler and the reduction by area averaging.
StatusCode ResampleFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                           std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                           std::int32_t interpolation);
StatusCode ReduceFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor);

// The checks of the arguments that both make first.
StatusCode CheckResize(const FLOAT32* src, RegionSize srcSize, Rect srcRegion, const FLOAT32* dst, RegionSize dstSize,
                       double xFactor, double yFactor);

// The interpolation that an image of this size has enough pixels for.
ResizeInterpolation FitToSource(ResizeInterpolation interpolation, RegionSize srcSize);

// Cuts the region to the image and finds the extent. The arguments have passed CheckResize.
StatusCode PlanResize(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                      std::int32_t dstStep, RegionSize dstSize, double xFactor, double yFactor, ResizeJob* job);

// Moves the nearest pixels as bit patterns. Where both factors are 1, that is what every interpolation asks for.
StatusCode ResampleNearest(const ResizeJob& job);
inline bool IsCopy(const ResizeJob& job) { return job.columns.factor == 1.0 && job.rows.factor == 1.0; }

// Both factors are one half and no pixel reaches beyond the source: the means over 2 x 2 pixels, which lie in the
// middle between them, are then both what Reduce and what Linear asks for.
bool IsHalving(const ResizeJob& job);
void Halve(const ResizeJob& job);

}  // namespace norvala
