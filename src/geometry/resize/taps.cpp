#include "geometry/resize/taps.h"

#include <algorithm>
#include <cmath>

#include "geometry/cubic_weights.h"

namespace norvala {
namespace {

// The weights of all taps for a position `t` in [0, 1] after the centre tap.

void Weigh(double t, double (&weights)[2]) {
  weights[0] = 1.0 - t;
  weights[1] = t;
}

void Weigh(double t, double (&weights)[4]) { CubicWeights(t, weights); }

// The Lanczos kernel sinc(x) * sinc(x / 4), made to sum to 1. With x = t + 3 - k at tap k, sin(pi * x) is sin(pi * t)
// with alternating sign: common to all taps, it cancels out, as all constants do. What is left is
// (-1)^k * sin(pi * x / 4) / x^2, whose sines follow from those of t by eighths of a turn.
void Weigh(double t, double (&weights)[8]) {
  std::fill_n(weights, 8, 0.0);
  if (t == 0.0 || t == 1.0) {
    weights[t == 0.0 ? 3 : 4] = 1.0;
    return;
  }
  constexpr double kQuarterPi = 0.78539816339744830962;
  constexpr double kHalfRoot = 0.70710678118654752440;
  const double sine = std::sin(kQuarterPi * t);
  const double cosine = std::cos(kQuarterPi * t);
  const double diagonal = kHalfRoot * (cosine + sine);
  const double antidiagonal = kHalfRoot * (cosine - sine);
  const double alternating[8] = {antidiagonal, -cosine, diagonal, -sine, -antidiagonal, cosine, -diagonal, sine};
  double sum = 0.0;
  for (int k = 0; k < 8; ++k) {
    const double x = t + (3 - k);
    weights[k] = alternating[k] / (x * x);
    sum += weights[k];
  }
  for (double& weight : weights) weight /= sum;
}

}  // namespace

double SourcePosition(const ResizeAxis& axis, std::int32_t d) {
  const double position = (d + 0.5) / axis.factor - 0.5;
  return std::clamp(position, -0.5, axis.length - 0.5);
}

std::int32_t NearestPixel(const ResizeAxis& axis, std::int32_t d) {
  return std::min(static_cast<std::int32_t>(SourcePosition(axis, d) + 0.5), axis.length - 1);
}

template <int taps>
Taps<taps> PlaceTaps(const ResizeAxis& axis, std::int32_t d) {
  const double position = SourcePosition(axis, d);
  const std::int32_t centre = position < 0.0 ? -1 : static_cast<std::int32_t>(position);
  double weights[taps];
  Weigh(position - centre, weights);
  Taps<taps> placed;
  placed.first = centre - kCentreTap<taps>;
  for (int k = 0, i = 0; k < taps; ++k) {
    if (k != kCentreTap<taps>) placed.weights[i++] = static_cast<float>(weights[k]);
  }
  return placed;
}

template Taps<2> PlaceTaps(const ResizeAxis& axis, std::int32_t d);
template Taps<4> PlaceTaps(const ResizeAxis& axis, std::int32_t d);
template Taps<8> PlaceTaps(const ResizeAxis& axis, std::int32_t d);

}  // namespace norvala
