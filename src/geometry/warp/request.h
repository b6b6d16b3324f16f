#pragma once

#include <cstdint>

#include "frame/status.h"
#include "geometry/shapes.h"
#include "geometry/warp/sampling.h"

namespace norvala {

// The two quadrilaterals of a warp between quadrilaterals.
struct QuadPair {
  Quadrilateral source;
  Quadrilateral destination;
  bool clockwise;     // order of the destination's vertices on the screen
  bool sourceInside;  // all source vertices lie in the effective source region
};

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

  // All checks of a warp between quadrilaterals, in order; fills `quads` on success.
  StatusCode CheckQuads(const double* srcQuad, const double* dstQuad, QuadPair& quads) const;

  bool HasSmoothEdge() const { return interpolation < 0; }

  Interpolation AskedKernel() const { return static_cast<Interpolation>(interpolation & INT32_MAX); }

  // The asked kernel or the one in its place that the source is large enough for.
  Interpolation Kernel() const;

  // The source region limited to the image; it must not miss the image.
  Rect EffectiveRegion() const { return LimitToImage(srcRegion, srcSize); }

  // The destination region's corner pixels. Nothing lies beyond the 32-bit range, wherever the region ends.
  Box DestinationBox() const;

  SourceImage Source() const { return {src, srcStep, srcSize}; }

  // Where a destination pixel lies; addresses wrap in its row as they do from row to row.
  char* DestinationPixel(std::ptrdiff_t x, std::ptrdiff_t y) const {
    return Row(Row(static_cast<char*>(dst), dstStep, y), PixelBytes(depth), x);
  }
};

// Softens the edges of a warped quadrilateral inside the destination region.
void SmoothEdge(const WarpRequest& request, const Quadrilateral& quad, bool clockwise);

}  // namespace norvala
