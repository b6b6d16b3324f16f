#pragma once

#include <cstdint>

#include "geometry/resize/request.h"

// Where a destination pixel lies in the source, and with what weights the pixels around it are taken.

namespace norvala {

// Position of the centre of destination pixel `d` in the source, with pixel centres at whole numbers; never beyond the
// outer edges -0.5 and length - 0.5.
double SourcePosition(const ResizeAxis& axis, std::int32_t d);

// The source pixel that contains the position.
std::int32_t NearestPixel(const ResizeAxis& axis, std::int32_t d);

// The tap that the weights of all others are relative to: of 2, 4 or 8 taps, the last one not after the position.
template <int taps>
inline constexpr int kCentreTap = taps / 2 - 1;

// The taps of one destination pixel: the successive source pixels from `first` on, of which some may lie outside the
// source, and the weights of all but the centre tap, in order. The centre tap has what is left to 1.
template <int taps>
struct Taps {
  std::int32_t first;
  float weights[taps - 1];
};

// 2 taps: linear; 4 taps: cubic Lagrange; 8 taps: sinc under a sinc window. No tap reaches further than `taps` pixels
// outside the source.
template <int taps>
Taps<taps> PlaceTaps(const ResizeAxis& axis, std::int32_t d);

}  // namespace norvala
