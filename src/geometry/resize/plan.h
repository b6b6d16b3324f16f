#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/memory.h"
#include "frame/status.h"
#include "frame/types.h"

namespace norvala {

using SrcRow = const Unaligned<const FLOAT32>*;
using DstRow = Unaligned<FLOAT32>*;

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

  SrcRow SourceRow(std::ptrdiff_t y) const { return Row(src, srcStep, y); }
  DstRow DestinationRow(std::ptrdiff_t y) const { return Row(dst, dstStep, y); }
};

// Position of the centre of destination pixel `d` in the source, with pixel centres at whole numbers; never beyond the
// outer edges -0.5 and length - 0.5.
inline double SourcePosition(const ResizeAxis& axis, std::int32_t d) {
  return std::clamp((d + 0.5) / axis.factor - 0.5, -0.5, axis.length - 0.5);
}

// ---- The ways to carry out a plan ----
//
// WorkBufferUnavailable where one cannot get its memory, with nothing written.

// Moves the nearest pixels as bit patterns.
StatusCode ResizeNearest(const ResizePlan& plan);

// The weighted mean of 2, 4 or 8 taps in each direction: linear, cubic Lagrange, sinc under a sinc window.
template <int taps>
StatusCode Resample(const ResizePlan& plan);

// The mean over the area that a destination pixel covers in the source.
StatusCode Reduce(const ResizePlan& plan);

// The means over 2 x 2 pixels, for plans that IsHalving accepts.
bool IsHalving(const ResizePlan& plan);
StatusCode Halve(const ResizePlan& plan);

}  // namespace norvala
