#pragma once

#include "geometry/warp/request.h"

namespace norvala {

// Softens the edges of a warped quadrilateral inside the destination region: every pixel whose area an edge crosses
// becomes a mixture of its neighbour just inside and its neighbour just outside, by the part of it that lies inside.
// Neighbours are taken across the edge's longer axis. Edges on the region's own sides, and pixels without one of the
// two neighbours in the region, stay as they are.
void SmoothEdge(const WarpRequest& request, const Quadrilateral& quad, bool clockwise);

}  // namespace norvala
