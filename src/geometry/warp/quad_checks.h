#pragma once

#include "geometry/warp/request.h"

namespace norvala {

// The two quadrilaterals of a warp.
struct QuadPair {
  Quadrilateral source;
  Quadrilateral destination;
  bool clockwise;     // order of the destination's vertices on the screen
  bool sourceInside;  // all source vertices lie in the effective source region
};

// All checks of a quadrilateral warp, in order; fills `quads` on success.
StatusCode CheckQuadWarp(const WarpRequest& request, const double* srcQuad, const double* dstQuad, QuadPair& quads);

}  // namespace norvala
