#pragma once

#include <algorithm>
#include <cmath>

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
  //
  // Without rounding, a quotient of two linear functions is monotone where its denominator keeps its sign. Rounded to
  // doubles, with u = 2^-53, the numerator is wrong by at most 2 u n and the denominator by 2 u d, where n and d are
  // the sums of the magnitudes of their terms, largest at the last pixel. The denominator as computed is monotone, so
  // that its least magnitude m is the one at the first or the last pixel.
  // - d <= 2^8 m: at both ends, and so between them, the exact denominator has the sign of the computed one.
  // - n <= 2^39 m besides: the exact quotients lie between those at the ends, which an image limits to 2^31, but for a
  //   millionth. A computed one differs from the exact one by at most (2 u n + 2^31 * 2 u d) / m + 2^31 u, which is
  //   4 u * 2^39 + 2^-22 = 2^-12 + 2^-22, but for a millionth.
  // One such error at the position and one at the end are less than 2^-10 together. Where m is not tiny and d not huge,
  // nothing overflows, and what underflows does not count. It holds for any part of the range: m is no smaller there,
  // n and d are no larger.
  double Slack(double first, double last) const {
    const double atFirst = Scale(first);
    const double atLast = Scale(last);
    const double m = std::min(std::fabs(atFirst), std::fabs(atLast));
    const double d = std::fabs(scaleStep) * last + std::fabs(scaleBase);
    const double nx = std::fabs(step[0]) * last + std::fabs(base[0]);
    const double ny = std::fabs(step[1]) * last + std::fabs(base[1]);
    const bool isNearlyMonotone = (atFirst > 0) == (atLast > 0) && d <= 0x1p8 * m && nx <= 0x1p39 * m &&
                                  ny <= 0x1p39 * m && m >= 1e-200 && d <= 1e200;
    return isNearlyMonotone ? 0x1p-10 : kAnyOrder;
  }
};

}  // namespace norvala
