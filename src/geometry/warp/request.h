#pragma once

#include <cstdint>

#include "frame/status.h"
#include "geometry/quadrilateral.h"
#include "geometry/warp/sampling.h"

namespace norvala {

// What all warps are given, and the steps that they share.
struct WarpRequest {
  const void* src;
  RegionSize srcSize;
  std::int32_t srcStep;
  Rect srcRegion;
  void* dst;
  std::int32_t dstStep;
  Rect dstRegion;
  PixelDepthCode depth;
  std::int32_t interpolation;

  // Pointers, sizes, steps and interpolation, in this order.
  StatusCode Check() const;

  bool HasSmoothEdge() const { return interpolation < 0; }

  // The kernel that the source is large enough for.
  Interpolation Kernel() const;

  bool SourceRegionMissesImage() const { return srcRegion.x >= srcSize.width || srcRegion.y >= srcSize.height; }

  // The source region limited to the image; it must not miss the image.
  Rect EffectiveRegion() const;

  // The destination region's corner pixels. Nothing lies beyond the 32-bit range, wherever the region ends.
  Box DestinationBox() const;

  SourceImage Source() const { return {src, srcStep, srcSize}; }
};

}  // namespace norvala
