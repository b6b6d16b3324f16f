#pragma once

#include "frame/status.h"
#include "geometry/resize/request.h"

// The ways to carry out a resize; WorkBufferUnavailable where one cannot get its memory, with nothing written.

namespace norvala {

// Moves the nearest pixels as bit patterns.
StatusCode ResizeNearest(const ResizePlan& plan);

// The weighted mean of 2, 4 or 8 taps in each direction.
template <int taps>
StatusCode Resample(const ResizePlan& plan);
extern template StatusCode Resample<2>(const ResizePlan& plan);
extern template StatusCode Resample<4>(const ResizePlan& plan);
extern template StatusCode Resample<8>(const ResizePlan& plan);

// The mean over the area that a destination pixel covers in the source.
StatusCode Reduce(const ResizePlan& plan);

// The means over 2 x 2 pixels, for plans that IsHalving accepts.
bool IsHalving(const ResizePlan& plan);
StatusCode Halve(const ResizePlan& plan);

}  // namespace norvala
