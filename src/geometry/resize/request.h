#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/status.h"
#include "frame/types.h"

namespace norvala {

enum class ResizeInterpolation : std::int32_t { Nearest = 1, Linear = 2, Cubic = 4, Reduce = 8, EightPoint = 16 };

// One direction of a resize: `extent` destination pixels drawn from `length` source pixels.
struct ResizeAxis {
  std::int32_t length;
  std::int32_t extent;
  double factor;
};

// What is to be computed: the region lies inside the source image, every pixel of the extent is written.
struct ResizePlan {
  const FLOAT32* src;  // first pixel of the region
  std::ptrdiff_t srcStep;
  FLOAT32* dst;
  std::ptrdiff_t dstStep;
  ResizeAxis columns;
  ResizeAxis rows;
};

// What a resize is given.
struct ResizeRequest {
  const FLOAT32* src;
  RegionSize srcSize;
  std::int32_t srcStep;
  Rect srcRegion;
  FLOAT32* dst;
  std::int32_t dstStep;
  RegionSize dstSize;
  double xFactor;
  double yFactor;
  std::int32_t interpolation;

  // Pointers, sizes, factors and interpolation, in this order.
  StatusCode Check() const;

  // The interpolation that the source image has enough pixels for.
  ResizeInterpolation Kernel() const;

  // Cuts the region to the image and finds the extent. The request has passed Check.
  StatusCode Plan(ResizePlan& plan) const;
};

}  // namespace norvala
