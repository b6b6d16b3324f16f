#pragma once

#include "geometry/warp/sampling.h"

namespace norvala {

// One row of the destination under a projection: its pixel x lies at (step x + base) / (scaleStep x + scaleBase) in the
// source.
struct ProjectedRow {
  Position step;
  Position base;
  double scaleStep;
  double scaleBase;

  double Scale(double x) const { return scaleStep * x + scaleBase; }
  Position At(double x) const { return (step * x + base) / Scale(x); }

  // How far the positions of the pixels from `first` to `last`, neither below 0, may lie outside the box between those
  // two positions, if these lie inside an image.
  double Slack(double first, double last) const;
};

}  // namespace norvala
